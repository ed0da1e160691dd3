#!/bin/sh
# The daemon's life from the command line: start, second start, pause, resume, stop, signals, the
# pid file, and what the BMC is told of each.
# shellcheck source=tests/daemon.sh
. "${VYN_SOURCE:?}/tests/daemon.sh"

[ $# -ne 0 ] || scenarios 'life silent slow lost' "$source/hosts/freebsd-10.1"

# expect WHAT STATUS OUTPUT COMMAND...: exit status and standard output of a command
expect() {
    what=$1 status=$2 wanted=$3
    shift 3
    got=$("$@" 2>"$work/stderr")
    got_status=$?
    [ "$got_status" = "$status" ] && [ "$got" = "$wanted" ] && return
    fail "$what: status $got_status, printed: $got"
}
# shellcheck disable=SC2009,SC2317
one_service() { # a program that it is about to run shows as a second one
    [ "$(ps -x | grep -c '[I]PMIVYN-sim -agent start-service')" -eq 1 ]
}
# shellcheck disable=SC2317
started() { # a daemon that has reported once
    agent start-service >/dev/null && bmc wait 20 show agent running && bmc wait 30 next 202
}

if [ "$1" != life ]; then
    # a driver that never answers for its BMC, or late
    case $1 in silent) ms=1000000 ;; slow) ms=4900 ;; lost) ms=9000 ;; esac
    export VYN_SIM_TIMEOUT_MS="$ms"
    printf 'Config : { updateFreq = 1; };\n' >/opt/norvik/vyn.ini
    check 'start' started
    if [ "$1" = lost ]; then # one answer only
        check 'the watchdog' bmc wait 20 show watchdog running
        bmc fault 06/58 silent 1
        check 'a request that waits' bmc wait 20 quiet 5500
        kill -TERM "$(head -n 1 /var/run/vyn.pid)"
        check 'end by SIGTERM' ended 15
        check 'the blanking' bmc wait 1 equals 192 ''
        check 'the watchdog is off' bmc wait 1 show watchdog stopped
        exit "$failed"
    fi
    bmc fault all silent
    check 'requests under way' bmc wait 20 quiet 1500
    began=$(date +%s)
    agent stop-service >"$work/reply" 2>"$work/stderr" || fail 'status of the stop'
    check 'the stop ends' grep -qx 'close done' "$work/reply"
    check 'it tells of the BMC' grep -qx 'BMC not reached' "$work/stderr"
    check 'end with a silent BMC' ended 15
    [ $(($(date +%s) - began)) -le 16 ] || fail "the stop took $(($(date +%s) - began)) s"
    exit "$failed"
fi

expect 'usage without arguments' 31 "$(agent nonsense)" "$build/IPMIVYN-sim"
[ "$(agent nonsense | wc -l)" -eq 20 ] || fail 'usage lines'
expect 'usage for another first word' 31 "$(agent nonsense)" "$build/IPMIVYN-sim" -Agent version
expect 'usage for capitals' 31 "$(agent nonsense)" "$build/IPMIVYN-sim" -agent VERSION
expect version 0 'version 1.7.0 build 220503 protocol 0x01' agent version more words
expect 'status before' 0 'VYN is stop' agent status
for command in stop pause resume; do
    expect "$command without a daemon" 1 'no service' agent "$command-service"
done
[ -z "$(ls -A /opt/norvik)" ] || fail 'something was written'

printf 'Config : { updateFreq = 1; };\n' >/opt/norvik/vyn.ini
printf '99999999\nold\n' >/var/run/vyn.pid
# Of several starts at once one makes the service; whatever merely names it does not count.
sh -c 'sleep 30; : IPMIVYN' &
starters=
for n in 1 2 3 4; do
    agent start-service >"$work/start.$n" 2>&1 &
    starters="$starters $!"
    agent status >/dev/null &
done
check 'start' bmc wait 20 show agent running
# shellcheck disable=SC2086
wait $starters
[ "$(cat "$work"/start.* | sort -u | tr -d '0-9')" = 'Child process created: 
service existed' ] || fail "starts at once: $(cat "$work"/start.*)"
check 'one service after starts at once' until_true 10 one_service
check 'its cycle' bmc wait 30 next 202
expect 'status while running' 0 'VYN is running' agent status
expect 'a second start' 1 'service existed' agent start-service
check 'its error line' error_line '   service existed'
pid=$(head -n 1 /var/run/vyn.pid)
check 'the pid file' kill -0 "$pid"
check 'the log of the cycle' grep -q '^Time stamp -> 20' /opt/norvik/vyn.log

expect pause 0 'Corvane service pause...' agent pause-service
check 'paused at the BMC' bmc wait 5 show agent paused
expect 'status while paused' 0 'VYN is pause' agent status
expect 'a second pause' 0 'Corvane service pause...' agent pause-service
expect resume 0 'Corvane service resume...' agent resume-service
check 'running at the BMC' bmc wait 5 show agent running
check 'cycles after the resume' bmc wait 20 next 202 2
agent pause-service >/dev/null && agent resume-service >/dev/null
check 'cycles after pause and resume in one' bmc wait 20 next 202 2

agent pause-service >/dev/null
expect 'stop while paused' 0 'Corvane service stop...
close done' agent stop-service
check 'stopped at the BMC' bmc wait 5 show agent stopped
check 'end after a stop' ended 15
expect 'status after' 0 'VYN is stop' agent status
check 'the pid file stays' test -s /var/run/vyn.pid
[ "$(ipcs -m | grep -c '^0x0000162e')" -eq 0 ] || fail 'the stop flag stays'
[ "$(ipcs -m | grep -c '^0x0000162')" -eq 1 ] || fail 'the pause flag is gone'
[ "$(ipcs -m | grep -c '^0x00001630')" -eq 1 ] || fail 'current pause is gone'

check 'start again' started
kill -HUP "$(head -n 1 /var/run/vyn.pid)"
check 'life after SIGHUP' bmc wait 20 next 202 2
kill -INT "$(head -n 1 /var/run/vyn.pid)"
check 'end by SIGINT' ended 5
check 'SIGINT blanks nothing' bmc wait 1 equals 192 'FreeBSD;'

check 'start for SIGTERM' started
check 'the watchdog' bmc wait 20 show watchdog running
bmc fault 06/58/C3 code C3 1 # one time-out
kill -TERM "$(head -n 1 /var/run/vyn.pid)"
check 'end by SIGTERM' ended 5
for selector in 192 193 196 197 204; do
    check "SIGTERM blanks $selector" bmc wait 1 equals "$selector" ''
done
check 'SIGTERM switches the watchdog off' bmc wait 1 show watchdog stopped

rmdir /opt/norvik/* 2>/dev/null
rm -f /opt/norvik/*
mkdir /opt/norvik/vyn.ini
expect 'start without a configuration' 1 '' agent start-service
check 'its message' grep -qx 'Error while writing file.' "$work/stderr"
no_complaints
exit "$failed"
