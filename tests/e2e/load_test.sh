#!/bin/sh
# load_test.sh [CYCLES]: the daemon on the largest host, with a BMC that takes 2 ms a request. From
# the tenth cycle on, in a short run from its last third on, nothing of it may grow; and all the
# while the BMC's requests must be fetched in time.
# shellcheck source=tests/daemon.sh
. "${VYN_SOURCE:?}/tests/daemon.sh"

# shellcheck disable=SC2317
furnish() { host=$work/host && "$source/hosts/large-host" "$host"; }
[ -n "${work-}" ] || scenarios "${1:-14}" '' \
    --do 'capability on 28' --do 'delay 2'

cycles=$1
# Resident KiB, threads, descriptors and attachments. Tools and looks at a flag come and go, so
# the lowest of some readings counts; the pipes of two tools may be open in all of them.
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
    while ask post 0 key 4; do
        done=$((done + 1))
        ask wait 60 released "$done" || return
    done
}

printf 'Config : { updateFreq = 1; };\n' >/opt/norvik/vyn.ini
export MALLOC_ARENA_MAX=1 # or what each thread's arena keeps for later looks like growth
agent start-service >/dev/null && bmc wait 120 next 202 2 || exit 1
pid=$(head -n 1 /var/run/vyn.pid)
requests >/dev/null 2>&1 &
base=$((cycles * 2 / 3))
[ "$base" -le 10 ] || base=10
cycle=2
echo 'cycle  resident KiB  threads  descriptors  attachments'
while [ "$cycle" -le "$cycles" ]; do
    figures >"$work/now"
    read -r rss threads fds attached <"$work/now"
    printf '%5d  %12d  %7d  %11d  %11d\n' "$cycle" "$rss" "$threads" "$fds" "$attached"
    [ "$cycle" -ne "$base" ] || cp "$work/now" "$work/base"
    [ "$cycle" -le "$base" ] || paste -d ' ' "$work/base" "$work/now" |
        awk '$5 > $1 + 512 || $6 > $2 || $7 > $3 + 2 || $8 > $4 { exit 1 }' || fail "growth in cycle $cycle"
    check "a cycle after $cycle" bmc wait 120 next 202
    cycle=$((cycle + 1))
done
for count in '195 count 31' '199 count 256' '206 count 48'; do
    # shellcheck disable=SC2086
    check "records of $count" bmc wait 60 selector $count
done
# From each posting to the fetch, at most the period of 5 seconds, and the time of one upload,
# whose chunks hold the poll's own.
ask show command | awk '$2 == "posted" { posted = $1 }
    $2 == "fetched" && posted { spent = $1 - posted; if (spent > most) most = spent; posted = 0; n++ }
    END { printf "%d requests of the BMC fetched, after %.1f s at most\n", n, most
          exit !(n > 0 && most < 5.5) }' || fail 'slow requests'
no_complaints
exit "$failed"
