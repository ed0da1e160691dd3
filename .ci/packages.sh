# Sourced by check, check-vm and demo: says what is missing and installs it.
# shellcheck shell=sh disable=SC2034 # the lists are used there

# What is needed, a row each: probe, package on Debian, package on FreeBSD (- where the base
# system has it or there is no use for it). A probe is a command, a header with its path
# below an include folder, or a pattern of whole paths.
build_packages='
cmake           cmake           cmake
ninja           ninja-build     ninja
c++             g++             -
libconfig.h     libconfig-dev   libconfig
ps              procps          -
setpriv         util-linux      -
'
check_packages='
g++             g++             -
clang++         clang           -
gtest/gtest.h   libgtest-dev    googletest
shellcheck      shellcheck      hs-ShellCheck
clang-format    clang-format    -
clang-tidy      clang-tidy      -
ccache          ccache          ccache
mandoc          mandoc          -
qemu-system-x86_64 qemu-system-x86 qemu
/usr/lib/llvm-*/lib/clang/*/include/sanitizer/asan_interface.h libclang-rt-dev -
'
# The kernel and the shell of the guest are only unpacked, by check-vm itself.
vm_packages='
qemu-system-x86_64 qemu-system-x86 -
ipmitool        ipmitool        -
cpio            cpio            -
'

present() { # PROBE
    case $1 in
    /*)
        for path in $1; do [ ! -e "$path" ] || return 0; done
        return 1
        ;;
    *.h) [ -e "/usr/include/$1" ] || [ -e "/usr/local/include/$1" ] ;;
    *) command -v "$1" >/dev/null 2>&1 ;;
    esac
}

# missing_packages ROWS: the packages whose probes fail, on this system
missing_packages() {
    printf '%s\n' "$1" | while read -r probe debian freebsd; do
        [ -n "$probe" ] || continue
        case $(uname) in
        FreeBSD) package=$freebsd ;;
        *) package=$debian ;;
        esac
        [ "$package" = - ] || present "$probe" || printf ' %s' "$package"
    done
}

# install_packages ROWS: 0 when nothing is missing any more
install_packages() {
    packages=$(missing_packages "$1")
    [ -n "$packages" ] || return 0
    case $(uname) in
    FreeBSD) installer='pkg install -y' ;;
    *) installer='apt-get install -y --no-install-recommends' ;;
    esac
    if ! command -v "${installer%% *}" >/dev/null 2>&1; then
        echo "Missing:$packages. Please install them with this system's package manager."
        return 1
    fi
    as_root=
    if [ "$(id -u)" -ne 0 ]; then
        as_root='sudo -n'
        if ! sudo -n true 2>/dev/null; then
            echo "Missing:$packages. Please run as root: $installer$packages"
            return 1
        fi
    fi
    echo "Missing:$packages. Installing them: ${as_root:+$as_root }$installer$packages"
    # The words of these lists are separate arguments.
    # shellcheck disable=SC2086
    case $installer in
    apt-get*)
        $as_root apt-get update -q </dev/null &&
            $as_root env DEBIAN_FRONTEND=noninteractive $installer $packages </dev/null
        ;;
    *) $as_root env ASSUME_ALWAYS_YES=yes $installer $packages </dev/null ;;
    esac
    packages=$(missing_packages "$1")
    [ -z "$packages" ] && return 0
    echo "Still missing:$packages"
    return 1
}

processors() {
    nproc 2>/dev/null || sysctl -n hw.ncpu
}
