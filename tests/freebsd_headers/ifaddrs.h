#pragma once
#include <sys/socket.h>

struct ifaddrs {
    struct ifaddrs* ifa_next;
    char* ifa_name;
    unsigned int ifa_flags;
    struct sockaddr *ifa_addr, *ifa_netmask, *ifa_dstaddr;
    void* ifa_data;
};
extern "C" int getifaddrs(struct ifaddrs**);
extern "C" void freeifaddrs(struct ifaddrs*);
