// Read by this machine's <sys/types.h>: the integers that are wider or narrower on FreeBSD.
#pragma once
#include_next <bits/typesizes.h>

#undef __MODE_T_TYPE
#undef __KEY_T_TYPE
#undef __ID_T_TYPE
#define __MODE_T_TYPE __U16_TYPE
#define __KEY_T_TYPE  __SLONGWORD_TYPE
#define __ID_T_TYPE   __SQUAD_TYPE
#if DIALECT == 10
#undef __DEV_T_TYPE
#undef __INO_T_TYPE
#undef __NLINK_T_TYPE
#define __DEV_T_TYPE   __U32_TYPE
#define __INO_T_TYPE   __U32_TYPE
#define __NLINK_T_TYPE __U16_TYPE
#endif
