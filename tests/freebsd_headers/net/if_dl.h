#pragma once
#include <sys/types.h>

struct sockaddr_dl {
    unsigned char sdl_len, sdl_family;
    unsigned short sdl_index;
    unsigned char sdl_type, sdl_nlen, sdl_alen, sdl_slen;
    char sdl_data[46];
};
