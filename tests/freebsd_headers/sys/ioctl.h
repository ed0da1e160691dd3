#pragma once

#define _IOC(inout, group, num, len)                                                               \
    ((unsigned long)((inout) | (((len)&0x1FFF) << 16) | ((group) << 8) | (num)))
#define _IOW(g, n, t)  _IOC(0x80000000, (g), (n), sizeof(t))
#define _IOWR(g, n, t) _IOC(0xC0000000, (g), (n), sizeof(t))
extern "C" int ioctl(int, unsigned long, ...);
