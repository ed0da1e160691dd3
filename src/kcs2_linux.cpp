#include "include_linux/kcs2_linux.h"

#include "include_linux/ipmi_oem.h"
#include "platform/platform.h"
#include "state/flags.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

ipmi_intf ipmi_open_intf = {
    "open",
    "Linux OpenIPMI Interface",
    -1,
    0,
    0,
    0x20,
    0x20,
    0,
    0,
    ipmi_openipmi_open,
    ipmi_openipmi_close,
    ipmi_openipmi_send_cmd,
};

namespace {

constexpr int SYSTEM_INTERFACE_ADDRESS = 0x0C; // address type
constexpr short BMC_CHANNEL = 0x0F;

ipmi_rs response_record; // the one response, reused by every request
long curr_seq = 0;       // message id of the next request

ipmi_rs* probePicmg(ipmi_intf* intf, std::uint8_t command) {
    std::uint8_t data = 0x00;
    ipmi_rq request{};
    request.msg.netfn = NETFN_PICMG & 0x3F;
    request.msg.cmd = command;
    request.msg.data = &data;
    request.msg.data_len = 1;
    ipmi_rs* response = intf->sendrecv(intf, &request);
    return response != nullptr && response->ccode == 0 ? response : nullptr;
}

// A board with the PICMG extension tells its own IPMB address.
void adoptPicmgAddress(ipmi_intf* intf) {
    const ipmi_rs* properties = probePicmg(intf, 0x00);
    if (properties == nullptr || properties->data_len < 2 || properties->data[0] != 0x00)
        return;
    const std::uint8_t version = properties->data[1];
    if (version != 0x02 && version != 0x12 && version != 0x22 && version != 0x32)
        return;
    const ipmi_rs* address = probePicmg(intf, 0x01);
    if (address != nullptr && address->data_len > 2)
        intf->my_addr = intf->target_addr = address->data[2];
}

bool configureDevice(ipmi_intf* intf) {
    return platform::ipmi_set_gets_events(intf->fd, 0) == 0 &&
           (intf->my_addr == 0 || platform::ipmi_set_my_address(intf->fd, intf->my_addr) == 0);
}

// Waits until the driver has a message: without a limit, but for a few seconds only once the
// process is to end.
bool waitForMessage(int fd) {
    constexpr int LOOK_MS = 1000, LOOKS_UNDER_STOP = 5;
    for (int looks_left = LOOKS_UNDER_STOP; looks_left > 0;) {
        const int ready = platform::ipmi_wait(fd, LOOK_MS);
        if (ready == 1 || (ready == -1 && errno != EINTR))
            return ready == 1;
        if (ready == 0 && stopRequested())
            --looks_left;
    }
    return false;
}

// Receives until the message with `msgid` has come; answers to earlier requests are dropped.
// Returns the length received, or -1.
int receiveAnswer(int fd, long msgid) {
    for (;;) {
        if (!waitForMessage(fd))
            return -1;

        platform::ipmi_addr address{};
        platform::ipmi_recv message{};
        message.addr = reinterpret_cast<std::uint8_t*>(&address);
        message.addr_len = sizeof address;
        message.msg.data = response_record.data.data();
        message.msg.data_len = IPMI_BUF_SIZE;
        int result;
        do
            result = platform::ipmi_receive_msg_trunc(fd, message);
        while (result == -1 && errno == EINTR);
        if (result == -1 && errno != EMSGSIZE)
            return -1;
        if (message.msgid == msgid)
            return std::min<int>(message.msg.data_len, IPMI_BUF_SIZE);
    }
}

} // namespace

int ipmi_openipmi_open(ipmi_intf* intf) {
    for (const char* pattern : {"/dev/ipmi%d", "/dev/ipmi/%d", "/dev/ipmidev/%d"}) {
        char path[32];
        std::snprintf(path, sizeof path, pattern, intf->devnum);
        intf->fd = platform::ipmi_open(path);
        if (intf->fd >= 0)
            break;
    }
    if (intf->fd < 0)
        return -1;
    if (!configureDevice(intf)) {
        intf->close(intf);
        return -1;
    }
    intf->opened = 1; // before the probe, which goes through sendrecv
    if (intf->my_addr == BMC_ADDRESS)
        adoptPicmgAddress(intf);
    return intf->fd;
}

void ipmi_openipmi_close(ipmi_intf* intf) {
    if (intf->fd >= 0)
        platform::ipmi_close(intf->fd);
    intf->fd = -1;
    intf->opened = 0;
}

ipmi_rs* ipmi_openipmi_send_cmd(ipmi_intf* intf, ipmi_rq* req) {
    if (intf->opened == 0 && intf->open(intf) < 0)
        return nullptr;

    platform::ipmi_system_interface_addr address{};
    address.addr_type = SYSTEM_INTERFACE_ADDRESS;
    address.channel = BMC_CHANNEL;
    address.lun = req->msg.lun;
    platform::ipmi_req request{};
    request.addr = reinterpret_cast<std::uint8_t*>(&address);
    request.addr_len = sizeof address;
    request.msgid = curr_seq++;
    request.msg.netfn = req->msg.netfn;
    request.msg.cmd = req->msg.cmd;
    request.msg.data = req->msg.data;
    request.msg.data_len = req->msg.data_len;
    if (platform::ipmi_send_command(intf->fd, request) != 0)
        return nullptr;

    const int length = receiveAnswer(intf->fd, request.msgid);
    if (length < 1)
        return nullptr;
    std::array<std::uint8_t, IPMI_BUF_SIZE>& data = response_record.data;
    response_record.ccode = data[0];
    response_record.data_len = length - 1;
    if (response_record.ccode == 0)
        std::copy(data.begin() + 1, data.begin() + length, data.begin());
    return &response_record;
}

namespace {

// Converts the frame to a driver request and the response record back to a frame.
int ipmi_send(ipmi_intf* intf, unsigned char* frame, int frame_length, unsigned char* response,
              int* response_length) {
    ipmi_rq request{};
    request.msg.netfn = (frame[0] >> 2) & 0x3F;
    request.msg.cmd = frame[1];
    if (frame_length > 2) {
        request.msg.data = frame + 2;
        request.msg.data_len = static_cast<std::uint16_t>(frame_length - 2);
    }
    const ipmi_rs* record = intf->sendrecv(intf, &request);
    if (record == nullptr)
        return -1;
    const int stored = std::min(record->data_len, FRAME_SIZE - 3);
    response[0] = response[1] = 0;
    response[2] = record->ccode;
    std::copy_n(record->data.begin(), stored, response + 3);
    *response_length = stored + 3;
    return 0;
}

} // namespace

int ipmiCmd(unsigned char* RequestCmd, unsigned char* ResponseBuf, int kcs_ReqLength,
            int* kcs_CurLength) {
    return ipmi_send(&ipmi_open_intf, RequestCmd, kcs_ReqLength, ResponseBuf, kcs_CurLength);
}
