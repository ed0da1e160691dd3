#!/bin/sh
# The daemon beside a BMC that has a watchdog or none, restarts, and sees it leave.
# VYN_BUILD and VYN_SOURCE name the two folders.
# shellcheck disable=SC2317
set -u
build=${VYN_BUILD:?} source=${VYN_SOURCE:?}

if [ $# -eq 0 ]; then
    work=$(mktemp -d) || exit 1
    bmcsim_pid=
    trap '[ -z "$bmcsim_pid" ] || kill "$bmcsim_pid" 2>/dev/null; rm -rf "$work"' EXIT
    "$build/bmcsim" --listen "$work/bmc" --control "$work/control" </dev/null >"$work/log" 2>&1 &
    bmcsim_pid=$!
    cp "$0" "$work/scenario"
    export work VYN_SIM_BMC="$work/bmc"
    "$source/simulator/run-host" "$source/hosts/freebsd-10.1" sh "$work/scenario" inside
    exit
fi

failed=0
agent() { "$build/IPMIVYN-sim" -agent "$@"; }
bmc() { "$build/bmcsim" --ask "$work/control" "$@" >"$work/reply"; }
check() { # WHAT COMMAND...
    what=$1
    shift
    "$@" || { echo "FAILED $what: $(cat "$work/reply")"; failed=1; }
}
# start TRUE|FALSE...: a daemon that is past its first cycle and has logged its probes: NVMe, drive
# map, watchdog
start() {
    rm -f /opt/norvik/vyn.com.log-*
    agent start-service >/dev/null && bmc wait 60 next 202 2 || return 1
    probes=$(sed -n 's/.* support =   //p' /opt/norvik/vyn.com.log-* | tr '\n' ' ')
    [ "$probes" = "$* " ] || { echo "FAILED probes: $probes"; return 1; }
}
ended() { # SECONDS: waits until the daemon's pid is gone
    tries=$(($1 * 10))
    while kill -0 "$(head -n 1 /var/run/vyn.pid)" 2>/dev/null; do
        tries=$((tries - 1))
        [ "$tries" -gt 0 ] || return 1
        sleep 0.1
    done
}

check 'the simulator answers' bmc help
printf 'Config : { updateFreq = 1; };\n' >/opt/norvik/vyn.ini

bmc watchdog none
check 'start without a watchdog' start False False False
agent stop-service >/dev/null
check 'a prompt end without a watchdog' ended 15
for line in 'get watchdog timer' 'set watchdog timer' 'watchdog reset'; do
    [ "$(grep -c "\] $line  command fail" /opt/norvik/vyn.err.log-*)" -eq 1 ] || {
        echo "FAILED error lines of $line"
        failed=1
    }
done

bmc watchdog b3
bmc capability on 28
bmc file 09 preparing 100000
bmc drivemap S1234567890=3 WX1=261
bmc delay 100 # spares the machine most of the polling
check 'start with a file that is never ready' start False True True
bmc nofault
check 'the end of the polling' grep -q \
    '\] isSupportedNVMe ->  prepare file download done fail$' /opt/norvik/vyn.err.log-*
printf 'Hdd count,2\nS1234567890,3\nWX1,261\n' >"$work/map"
check 'the drive map' cmp -s "$work/map" /opt/norvik/vyn.hdd.ini
check 'the old watchdog runs' bmc wait 40 show watchdog running
agent stop-service >/dev/null
check 'a stop switches it off' bmc wait 1 show watchdog stopped
check 'end with a watchdog' ended 15
check 'it stays off' bmc wait 1 show watchdog stopped

bmc watchdog both
bmc capability on 28
check 'start with NVMe support' start True True True
check 'the new watchdog runs' bmc wait 40 show watchdog running
agent pause-service >/dev/null
check 'paused' bmc wait 5 show agent paused
bmc restart
# The end of a pause wakes the restart monitor before its minute is over.
agent resume-service >/dev/null
check 'the static pass after a restart' bmc wait 20 equals 192 'FreeBSD;'
check 'the restart is noticed' bmc wait 1 show bmc noticed
check 'the agent information' bmc wait 5 show agent running
check 'the watchdog after a restart' bmc wait 35 show watchdog running
bmc trace on
kill -TERM "$(head -n 1 /var/run/vyn.pid)"
check 'end by SIGTERM' ended 10
bmc log
# the last two requests but for the reply's "ok": the last value cleared, and the timer
[ "$(grep -v '^ok' "$work/reply" | tail -n 2 | awk '{ $1 = $2 = ""; print }' | tr -s ' ')" = \
    ' 06/58 CA 10 00 00 00 00 00 -> 00
 30/B6 03 00 00 -> 00' ] || { echo "FAILED cleared, then off: $(tail -n 3 "$work/reply")"; failed=1; }
bmc complaints
! grep -vx ok "$work/reply" || failed=1
exit "$failed"
