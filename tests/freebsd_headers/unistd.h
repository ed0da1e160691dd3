#pragma once
#include_next <unistd.h>

extern "C" int pipe2(int*, int);
