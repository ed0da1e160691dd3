#!/bin/sh
# load_test.sh [CYCLES]: the daemon on the largest host, with a BMC that takes 5 ms a request. From
# the tenth cycle on, in a short run from the middle on, nothing of it may grow; and all the while
# the BMC's requests must be fetched in time. VYN_BUILD and VYN_SOURCE name the two folders.
set -u
build=${VYN_BUILD:?} source=${VYN_SOURCE:?}
cycles=${1:-7}

if [ -z "${work-}" ]; then
    work=$(mktemp -d) || exit 1
    bmcsim_pid=
    trap '[ -z "$bmcsim_pid" ] || kill "$bmcsim_pid" 2>/dev/null; rm -rf "$work"' EXIT
    "$source/simulator/large-host" "$work/host" || exit 1
    "$build/bmcsim" --listen "$work/bmc" --control "$work/control" --do 'capability on 28' \
        --do 'delay 5' </dev/null >"$work/log" 2>&1 &
    bmcsim_pid=$!
    cp "$0" "$work/scenario"
    export work VYN_SIM_BMC="$work/bmc"
    "$source/simulator/run-host" "$work/host" sh "$work/scenario" "$cycles"
    exit
fi

failed=0
bmc() { "$build/bmcsim" --ask "$work/control" "$@"; }
fail() { echo "FAILED $*" && failed=1; }

# Resident KiB, threads, descriptors and attachments. Tools and looks at a flag come and go, so
# the lowest of some readings counts.
figures() {
    fds=999 attached=999
    for _ in 1 2 3 4 5; do
        set -- "/proc/$pid/fd"/*
        [ $# -ge "$fds" ] || fds=$#
        count=$(awk 'NR > 1 { sum += $7 } END { print sum + 0 }' /proc/sysvipc/shm)
        [ "$count" -ge "$attached" ] || attached=$count
    done
    awk -v rest="$fds $attached" '/^VmRSS/ { rss = $2 } /^Threads/ { threads = $2 }
        END { print rss, threads, rest }' "/proc/$pid/status"
}
# Requests of the BMC, one after the other: the seconds until each was done are the simulator's.
requests() {
    done=0
    while bmc post 0 key 4; do
        done=$((done + 1))
        bmc wait 60 released "$done" || return
    done
}

printf 'Config : { updateFreq = 1; };\n' >/opt/norvik/vyn.ini
"$build/IPMIVYN-sim" -agent start-service >/dev/null || exit 1
bmc wait 120 next 202 2 >/dev/null || exit 1
pid=$(head -n 1 /var/run/vyn.pid)
requests >/dev/null 2>&1 &
base=$((cycles / 2))
[ "$base" -le 10 ] || base=10
cycle=2
echo 'cycle  resident KiB  threads  descriptors  attachments'
while [ "$cycle" -le "$cycles" ]; do
    figures >"$work/now"
    read -r rss threads fds attached <"$work/now"
    printf '%5d  %12d  %7d  %11d  %11d\n' "$cycle" "$rss" "$threads" "$fds" "$attached"
    [ "$cycle" -ne "$base" ] || cp "$work/now" "$work/base"
    [ "$cycle" -le "$base" ] || paste -d ' ' "$work/base" "$work/now" |
        awk '$5 > $1 + 256 || $6 > $2 || $7 > $3 || $8 > $4 { exit 1 }' || fail "growth in cycle $cycle"
    bmc wait 120 next 202 >/dev/null || fail "no cycle after $cycle"
    cycle=$((cycle + 1))
done
for count in '195 count 31' '199 count 256' '206 count 48'; do
    # shellcheck disable=SC2086
    bmc wait 60 selector $count >/dev/null || fail "records of $count"
done
# From each posting to the fetch, at most the period of 5 seconds, and the time of one upload,
# whose chunks hold the poll's own.
bmc show command | awk '$2 == "posted" { posted = $1 }
    $2 == "fetched" && posted { spent = $1 - posted; if (spent > most) most = spent; posted = 0; n++ }
    END { printf "%d requests of the BMC fetched, after %.1f s at most\n", n, most
          exit !(n > 0 && most < 5.5) }' || fail 'slow requests'
bmc complaints | grep -vx ok && failed=1
exit "$failed"
