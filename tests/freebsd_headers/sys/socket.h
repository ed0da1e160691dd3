#pragma once
#include_next <sys/socket.h>

#undef AF_INET6
#undef PF_INET6
#define AF_INET6 28
#define PF_INET6 AF_INET6
#define AF_LINK  18
#define PF_LINK  AF_LINK
