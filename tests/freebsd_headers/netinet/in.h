#pragma once
#include_next <netinet/in.h>

#undef s6_addr16
#undef s6_addr32
