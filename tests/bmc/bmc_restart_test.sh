#!/bin/sh
# The daemon beside a BMC that has a watchdog or none, restarts, and sees it leave.
# shellcheck source=tests/daemon.sh
. "${VYN_SOURCE:?}/tests/daemon.sh"

[ $# -ne 0 ] || scenarios 'none old both' "$source/hosts/freebsd-10.1"

# start TRUE|FALSE...: a daemon that is past its first cycle and has logged its probes: NVMe, drive
# map, watchdog
# shellcheck disable=SC2317
start() {
    printf 'Config : { updateFreq = 1; };\n' >/opt/norvik/vyn.ini
    agent start-service >/dev/null && bmc wait 60 next 202 2 || return 1
    probes=$(sed -n 's/.* support =   //p' /opt/norvik/vyn.com.log-* | tr '\n' ' ')
    [ "$probes" = "$* " ] || fail "probes: $probes"
}

case $1 in
none)
    bmc watchdog none
    check 'start without a watchdog' start False False False
    agent stop-service >/dev/null
    check 'a prompt end without a watchdog' ended 15
    for line in 'get watchdog timer' 'set watchdog timer' 'watchdog reset'; do
        [ "$(grep -c "\] $line  command fail" /opt/norvik/vyn.err.log-*)" -eq 1 ] ||
            fail "error lines of $line"
    done
    ;;
old)
    bmc watchdog b3
    bmc capability on 28
    bmc file 09 preparing 100000
    bmc drivemap S1234567890=3 WX1=261
    bmc delay 100 # spares the machine most of the polling
    check 'start with a file that is never ready' start False True True
    bmc nofault
    check 'the end of the polling' error_line 'isSupportedNVMe ->  prepare file download done fail'
    printf 'Hdd count,2\nS1234567890,3\nWX1,261\n' >"$work/map"
    check 'the drive map' cmp -s "$work/map" /opt/norvik/vyn.hdd.ini
    check 'the old watchdog runs' bmc wait 40 show watchdog running
    agent stop-service >/dev/null
    check 'a stop switches it off' bmc wait 1 show watchdog stopped
    check 'end with a watchdog' ended 15
    check 'it stays off' bmc wait 1 show watchdog stopped
    ;;
both)
    bmc watchdog both
    bmc capability on 28
    check 'start with NVMe support' start True False True
    check 'the new watchdog runs' bmc wait 40 show watchdog running
    bmc restart
    check 'the restart is noticed' bmc wait 70 show bmc 'agent has noticed'
    check 'the static pass after a restart' bmc wait 20 equals 192 'FreeBSD;'
    check 'the agent information' bmc wait 5 show agent running
    check 'the watchdog after a restart' bmc wait 35 show watchdog running
    bmc trace on
    kill -TERM "$(head -n 1 /var/run/vyn.pid)"
    check 'end by SIGTERM' ended 10
    bmc log
    # the last two that change something: the last value cleared, and the timer
    [ "$(grep -e ' 06/58 ' -e ' 30/B6 ' "$work/reply" | tail -n 2 | awk '{ $1 = $2 = ""; print }' | tr -s ' ')" = \
        ' 06/58 CA 10 00 00 00 00 00 -> 00
 30/B6 03 00 00 -> 00' ] || fail "cleared, then off: $(tail -n 3 "$work/reply")"
    ;;
esac
no_complaints
exit "$failed"
