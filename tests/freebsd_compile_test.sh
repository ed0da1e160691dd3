#!/bin/sh
# The whole agent with the FreeBSD platform passes the compiler as FreeBSD 10 and as FreeBSD 14
# declare their kernel's structures (tests/freebsd_headers). Syntax only: nothing is linked.
set -u
source=${VYN_SOURCE:-$(cd "$(dirname "$0")/.." && pwd)}
build=${VYN_BUILD:-$source/build}

if [ "$(uname)" = FreeBSD ]; then
    echo 'freebsd_compile: skipped: the build itself compiles the FreeBSD platform here'
    exit 77
fi
if ! command -v clang++ >/dev/null; then
    echo 'freebsd_compile: skipped: no clang++'
    exit 77
fi
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT

# The machine's own headers, which stand in for what is the same everywhere.
clang++ -E -v -x c++ /dev/null 2>&1 >/dev/null |
    sed -n '/^#include <\.\.\.>/,/^End of search/s/^ \(\/.*\)/-isystem \1/p' >"$work/system"

# compile DIALECT FILE...
compile() {
    dialect=$1
    shift
    # shellcheck disable=SC2046 # one word an option
    clang++ --target="x86_64-unknown-freebsd$dialect" "-DDIALECT=$dialect" \
        -D_XOPEN_SOURCE=700 -D_DEFAULT_SOURCE \
        -fsyntax-only -std=c++17 -Wall -Wextra -Wshadow -Wconversion -Werror -nostdinc -nostdinc++ \
        "-I$source/tests/freebsd_headers" "-I$source/src" "-I$build/src/embedded" \
        $(cat "$work/system") "$@"
}

failed=0
find "$source/src" -name '*.cpp' ! -path '*/platform/linux/*' ! -path '*/platform/simulated/*' \
    >"$work/files"
[ "$(grep -c platform/freebsd "$work/files")" -ge 4 ] || { echo 'FAILED: files are missing'; failed=1; }
for dialect in 10 14; do
    # shellcheck disable=SC2046 # no blank in a file's name
    compile "$dialect" $(cat "$work/files") || { echo "FAILED on FreeBSD $dialect"; failed=1; }
done

# A field's name with a slip in it is seen.
sed 's/\.ifi_ibytes;/.ifi_ibyte;/' "$source/src/platform/freebsd/cpu_network.cpp" >"$work/slip.cpp"
compile 10 "$work/slip.cpp" 2>&1 | grep -q "no member named 'ifi_ibyte'" ||
    { echo 'FAILED: a misspelt field went unseen'; failed=1; }
exit "$failed"
