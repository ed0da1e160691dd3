#pragma once
#include <net/if.h>

#define NETLINK_GENERIC 0
#define IFMIB_IFDATA    2
#define IFDATA_GENERAL  1

struct ifmibdata {
    char ifmd_name[IFNAMSIZ];
    int ifmd_pcount, ifmd_flags, ifmd_snd_len, ifmd_snd_maxlen, ifmd_snd_drops, ifmd_filler[4];
    struct if_data ifmd_data;
};
