#pragma once
#include <sys/socket.h>
#include <sys/time.h>

#define IFNAMSIZ     16
#define IFF_UP       0x1
#define IFF_LOOPBACK 0x8

#if DIALECT == 10
typedef unsigned long if_counter;
#else
typedef uint64_t if_counter;
#endif

struct if_data {
    uint8_t ifi_type, ifi_physical, ifi_addrlen, ifi_hdrlen, ifi_link_state, ifi_vhid;
#if DIALECT == 10
    uint8_t ifi_baudrate_pf, ifi_datalen;
    unsigned long ifi_mtu, ifi_metric;
#else
    uint16_t ifi_datalen;
    uint32_t ifi_mtu, ifi_metric;
#endif
    if_counter ifi_baudrate, ifi_ipackets, ifi_ierrors, ifi_opackets, ifi_oerrors, ifi_collisions,
        ifi_ibytes, ifi_obytes, ifi_imcasts, ifi_omcasts, ifi_iqdrops;
#if DIALECT != 10
    if_counter ifi_oqdrops;
#endif
    if_counter ifi_noproto;
    uint64_t ifi_hwassist;
    time_t ifi_epoch;
    struct timeval ifi_lastchange;
};
