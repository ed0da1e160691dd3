#pragma once
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>
#include <sys/uio.h>

typedef uint8_t sa_family_t;
typedef uint32_t socklen_t;
struct sockaddr {
    unsigned char sa_len;
    sa_family_t sa_family;
    char sa_data[14];
};
struct sockaddr_storage {
    unsigned char ss_len;
    sa_family_t ss_family;
    char pad[6];
    int64_t align;
    char rest[112];
};
#define AF_UNSPEC 0
#define AF_INET   2
#define AF_LINK   18
#define AF_INET6  28
#define PF_LINK   AF_LINK
