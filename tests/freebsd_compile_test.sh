#!/bin/sh
# What a FreeBSD machine compiles passes the compiler here: all of src and simulator as FreeBSD 14
# declares its structures and types (tests/freebsd_headers), and once more as FreeBSD 10 does every
# file that includes a header of the system. Syntax only: nothing is linked. The standard C++
# headers are compiled beforehand, so that this stays short; which of them a file forgot to include
# is not seen here.
set -u
source=${VYN_SOURCE:-$(cd "$(dirname "$0")/.." && pwd)}
cd "$source" || exit 1

if [ "$(uname)" = FreeBSD ]; then
    echo 'freebsd_compile: skipped: the build itself compiles everything here'
    exit 77
fi
if ! command -v clang++ >/dev/null; then
    echo 'freebsd_compile: skipped: no clang++'
    exit 77
fi
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
failed=0
fail() { echo "FAILED: $*" && failed=1; }

find src simulator -name '*.cpp' ! -path '*/platform/linux/*' | sort >"$work/files14"
xargs grep -l '^#include <[a-z_/0-9]*\.h>' <"$work/files14" >"$work/files10"
for folder in src/platform/freebsd src/platform/simulated simulator; do
    [ "$(grep -c "^$folder/" "$work/files14")" -ge 4 ] || fail "$folder: files are missing"
done

# What the options say is the same for every file of a release. The machine's own headers stand in
# for what is the same everywhere.
clang++ -E -v -x c++ /dev/null 2>&1 >/dev/null |
    sed -n '/^#include <\.\.\.>/,/^End of search/s/^ \(\/.*\)/-isystem \1/p' >"$work/system"
options() { # RELEASE
    echo "--target=x86_64-unknown-freebsd$1 -DDIALECT=$1 -D_XOPEN_SOURCE=700 -D_DEFAULT_SOURCE" \
        '-std=c++17 -Wall -Wextra -Wshadow -Wconversion -Werror -nostdinc -nostdinc++' \
        "-I$source/tests/freebsd_headers -Isrc $(tr '\n' ' ' <"$work/system")"
}
find src simulator \( -name '*.cpp' -o -name '*.h' \) -exec sed -n '/^#include <[a-z_]*>$/p' {} + |
    sort -u >"$work/standard.h"
precompile() { # RELEASE
    # shellcheck disable=SC2046 # one word an option
    clang++ $(options "$1") -fpch-instantiate-templates -x c++-header "$work/standard.h" \
        -o "$work/standard$1.pch"
}
# compile RELEASE <FILES: some at a time, on every processor
compile() {
    # shellcheck disable=SC2046
    xargs -n 6 -P "$(nproc 2>/dev/null || echo 2)" clang++ $(options "$1") -fsyntax-only \
        -include-pch "$work/standard$1.pch"
}

precompile 10 &
precompile 14 || fail 'the standard headers on FreeBSD 14'
wait $! || fail 'the standard headers on FreeBSD 10'
for release in 14 10; do
    compile "$release" <"$work/files$release" || fail "on FreeBSD $release"
done

absent='linux/|asm/|sys/(epoll|eventfd|inotify|io|prctl|random|signalfd|sysinfo|sysmacros|timerfd|vfs)\.h|(alloca|byteswap|endian|error|malloc|mntent|values)\.h'
xargs grep -nE "^#include <($absent)" <"$work/files14" && fail 'headers that FreeBSD does not have'

# A field's name with a slip in it is seen, and so is what FreeBSD 10 did not have yet.
sed 's/\.ifi_ibytes;/.ifi_ibyte;/' src/platform/freebsd/cpu_network.cpp >"$work/slip.cpp"
printf '#include <unistd.h>\nint main() { return fdatasync(0); }\n' >"$work/newer.cpp"
printf '%s\n' "$work/slip.cpp" "$work/newer.cpp" | compile 10 >"$work/said" 2>&1
for words in "no member named 'ifi_ibyte'" "'fdatasync' is unavailable"; do
    grep -q "$words" "$work/said" || fail "went unseen: $words"
done
exit "$failed"
