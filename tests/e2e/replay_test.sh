#!/bin/sh
# The stand-in script: which recorded file answers which command line.
set -u
here=$(cd "$(dirname "$0")" && pwd)
replay=$here/../../hosts/replay
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin" "$work/out"
ln -s "$replay" "$work/bin/tool"
cd "$work/out" || exit 1
printf 'bare\n' >tool
printf 'no newline at end' >tool_-a_%2Fdev%2Fada%2A
printf 'half\n' >'tool_a%7Cb' && echo 'tool: device gone' >'tool_a%7Cb.stderr' && echo 5 >'tool_a%7Cb.rc'
echo 'tool: no such thing' >tool_gone.stderr && echo 64 >tool_gone.rc
# shellcheck disable=SC2016,SC2028 # expanded by the stand-in
echo 'printf "live:%s\n" "$2"; exit 3' >tool_live_x.sh
echo 0 >tool_silent.rc && : >tool_empty

failed=0
expect() { # label, status, stdout, stderr, then the arguments
    label=$1 status=$2 out=$3 err=$4
    shift 4
    "$work/bin/tool" "$@" >"$work/o" 2>"$work/e"
    got=$?
    if [ "$got" != "$status" ] || [ "$(cat "$work/o")" != "$out" ] || [ "$(cat "$work/e")" != "$err" ]; then
        echo "FAILED $label: status $got, '$(cat "$work/o")', '$(cat "$work/e")'"
        failed=1
    fi
}
expect 'no arguments' 0 'bare' ''
expect 'blanks, slashes, stars' 0 'no newline at end' '' -a '/dev/ada*'
expect 'bar, output, error and status' 5 'half' 'tool: device gone' 'a|b'
expect 'error and status without output' 64 '' 'tool: no such thing' gone
expect 'live stand-in' 3 'live:x' '' live x
expect 'status alone' 0 '' '' silent
expect 'nothing printed' 0 '' '' empty
expect 'not recorded' 1 '' 'tool: nothing recorded for em9 down' em9 down
echo 'every other' >tool.default
expect 'default' 0 'every other' '' em9 down
expect 'exact before default' 0 'bare' ''
VYN_REPLAY_LOG=$work/log "$work/bin/tool" -a '/dev/ada*' >/dev/null
[ "$(cat "$work/log")" = 'tool -a /dev/ada*' ] || { echo "FAILED log: $(cat "$work/log")"; failed=1; }
exit "$failed"
