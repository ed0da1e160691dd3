# Builds for FreeBSD on another system, with clang and lld; the C++ library becomes a part of the
# program. docs/operations.md, "FreeBSD 10", tells what the two folders hold.
#
#   cmake -S . -B build-freebsd -DCMAKE_TOOLCHAIN_FILE=cmake/freebsd-cross.cmake
#         -DFREEBSD_SYSROOT=DIR -DBUILD_TESTING=OFF
#
# FREEBSD_SYSROOT  base system of the release to build for, with libconfig in usr/local
# FREEBSD_LIBCXX   libc++ with C++17, where the release's own has none: include/c++/v1 and lib

if(NOT IS_ABSOLUTE "${FREEBSD_SYSROOT}" OR NOT EXISTS "${FREEBSD_SYSROOT}/usr/include/sys/param.h")
  message(FATAL_ERROR "FREEBSD_SYSROOT wants the full path of a folder with usr/include/sys/param.h.")
endif()
file(STRINGS "${FREEBSD_SYSROOT}/usr/include/sys/param.h" version
     REGEX "^#define[ \t]+__FreeBSD_version[ \t]+[0-9]" LIMIT_COUNT 1)
string(REGEX REPLACE ".*version[ \t]+([0-9]+)([0-9][0-9])[0-9][0-9][0-9].*" "\\1.\\2" version
       "${version}")
string(REPLACE ".0" "." version "${version}")

set(CMAKE_SYSTEM_NAME FreeBSD)
set(CMAKE_SYSTEM_VERSION ${version})
set(CMAKE_SYSTEM_PROCESSOR amd64)
set(CMAKE_SYSROOT "${FREEBSD_SYSROOT}")
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FREEBSD_SYSROOT FREEBSD_LIBCXX)

if(NOT CMAKE_C_COMPILER)
  set(CMAKE_C_COMPILER clang)
endif()
if(NOT CMAKE_CXX_COMPILER)
  set(CMAKE_CXX_COMPILER clang++)
endif()
set(CMAKE_C_COMPILER_TARGET x86_64-unknown-freebsd${version})
set(CMAKE_CXX_COMPILER_TARGET x86_64-unknown-freebsd${version})

# By name, for not every clang knows -static-libstdc++ on this target.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -nostdlib++")
set(CMAKE_CXX_STANDARD_LIBRARIES_INIT "-Wl,-Bstatic -lc++ -lcxxrt -Wl,-Bdynamic -lm")
if(FREEBSD_LIBCXX)
  set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem ${FREEBSD_LIBCXX}/include/c++/v1")
  string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -L${FREEBSD_LIBCXX}/lib")
else()
  set(CMAKE_CXX_FLAGS_INIT "-stdlib=libc++")
endif()

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
