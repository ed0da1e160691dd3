#!/bin/sh
# The operations guide knows every text of the error log, and the manual page every command, setting
# and file of the agent.
set -u
cd "$(dirname "$0")/.." || exit 1

# Each line of standard input stands in the file.
known() { # FILE
    status=0
    while IFS= read -r text; do
        grep -qF -- "$text" "$1" || { printf 'FAILED: %s does not tell of: %s\n' "$1" "$text"; status=1; }
    done
    return $status
}
quoted() { grep -o '"[^"]*"' | sed 's/^" *//; s/ *"$//' | grep . | sort -u; }
enough() { [ "$(wc -l <"$1")" -ge "$2" ] || { echo "FAILED: few texts found: $(cat "$1")"; false; }; }

work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
{
    find src -name '*.cpp' -exec grep -h -A1 'printErr[A-Za-z]*Log(' {} + | quoted
    find src -name '*.cpp' -exec grep -hoE '"[^"]*(->| fail)"' {} + | quoted
} | grep -v '^\.' | sort -u >"$work/errors"
find src -name '*.cpp' -exec grep -hE '^ *syslog\(' {} + | quoted | sed 's/ %s.*//' >"$work/syslog"
sed -n 's/^    {"\([a-z-]*\)",.*/\1/p' src/ipmicfg.cpp >"$work/commands"
{
    grep -rohE '"(/var/run|/dev|/etc)/[a-z0-9./]+"' src/config src/service src/tools src/kcs_exchange.cpp
    sed -n 's/.*add[A-Z][a-z]*(group, \("[a-zA-Z0-9]*"\), [nir].*/\1/p' src/config/configuration.cpp
} | quoted | grep -v '^/dev/null$' >"$work/names"

enough "$work/errors" 50 && enough "$work/commands" 19 && enough "$work/names" 8 &&
    enough "$work/syslog" 6 || exit 1
failed=0
cat "$work/errors" "$work/syslog" | known docs/operations.md || failed=1
cat "$work/commands" "$work/names" | known packaging/freebsd/IPMIVYN.8 || failed=1
exit $failed
