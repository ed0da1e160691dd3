#pragma once

struct ipmi_msg {
    unsigned char netfn, cmd;
    unsigned short data_len;
    unsigned char* data;
};
struct ipmi_req {
    unsigned char* addr;
    unsigned int addr_len;
    long msgid;
    struct ipmi_msg msg;
};
struct ipmi_recv {
    int recv_type;
    unsigned char* addr;
    unsigned int addr_len;
    long msgid;
    struct ipmi_msg msg;
};
struct ipmi_addr {
    int addr_type;
    short channel;
    unsigned char data[32];
};
struct ipmi_system_interface_addr {
    int addr_type;
    short channel;
    unsigned char lun;
};
#define IPMICTL_RECEIVE_MSG_TRUNC   _IOWR('i', 11, struct ipmi_recv)
#define IPMICTL_SEND_COMMAND        _IOW('i', 13, struct ipmi_req)
#define IPMICTL_SET_GETS_EVENTS_CMD _IOW('i', 16, int)
#define IPMICTL_SET_MY_ADDRESS_CMD  _IOW('i', 17, unsigned int)
