// Read by this machine's socket headers: the first two bytes of every socket address.
#pragma once

typedef unsigned char sa_family_t;
#define __SOCKADDR_COMMON(prefix)                                                                  \
    unsigned char prefix##len;                                                                     \
    sa_family_t prefix##family
#define __SOCKADDR_COMMON_SIZE 2
#define _SS_SIZE               128
