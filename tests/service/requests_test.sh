#!/bin/sh
# The BMC's command requests against the daemon: what each does, and what 207 and 208 are given
# for it, in order.
# shellcheck source=tests/daemon.sh
. "${VYN_SOURCE:?}/tests/daemon.sh"

[ $# -ne 0 ] || scenarios 'pause period locate' "$source/hosts/nvme-three" \
    --do 'watchdog none' --do 'nvme 0 2 5 VYT70A100044' --do 'nvme 1 0 3 S2K0NB0T400017'

released=0
# request NAME EXCHANGE COMMAND...: posts a command and compares what the slot saw until its
# release: "selector index text", one after the other
request() {
    name=$1 wanted=$2
    shift 2
    check "$name" bmc "$@"
    released=$((released + 1))
    check "$name: release" bmc wait 30 released "$released"
    bmc show command
    got=$(awk '$2 == "posted" { seen = "" }
        $2 == 207 || $2 == 208 { gsub(/"/, ""); seen = seen $2 " " $4 " " $5 ", " }
        END { print seen }' "$work/reply")
    printf '%-24s %s\n' "$name" "$got"
    [ "$got" = "$wanted" ] || fail "$name: wanted $wanted"
}

printf 'Config : { updateFreq = 1; };\n' >/opt/norvik/vyn.ini
check start agent start-service >/dev/null
check 'the first cycle' bmc wait 30 next 202 2
done0='208 0 , 207 0 2;, 208 0 abc;1;;, 207 0 , '
case $1 in
pause)
    request 'pause' "$done0" post 0 abc 1 1
    check 'paused' bmc wait 1 show agent paused
    # shellcheck disable=SC2317
    no_cycle() { ! bmc wait 3 next 202 2>/dev/null; }
    check 'no cycle in a pause' no_cycle
    request 'resume' "$done0" post 0 abc 1 0
    check 'running' bmc wait 1 show agent running
    check 'cycles after the resume' bmc wait 7 next 202 2
    ;;
period)
    request 'period 90' '208 0 , 207 3 2;, 208 3 abc;1;;, 207 3 , ' post 3 abc 2 90
    check 'its setting' grep -q 'updateFreq = 60;' /opt/norvik/vyn.ini
    # The monitor is still waiting out the minute: what is cleared now stays so.
    request 'clear' '208 0 , 207 0 2;, 207 255 , 208 255 , 208 0 k;1;;, 207 0 , ' post 0 k 3
    for selector in 192 193 196 197 202 203 204; do
        check "cleared $selector" bmc wait 1 equals "$selector" ''
    done
    request 'static pass' '208 0 , 207 9 2;, 208 9 abc;1;;, 207 9 , ' post 9 abc 5
    agent pause-service >/dev/null && agent resume-service >/dev/null # ends the minute
    check 'the static pass' bmc wait 20 equals 192 'FreeBSD;'
    ;;
locate)
    request 'locate on' "$done0" post 0 abc 8 2
    check 'LED on' bmc wait 1 show leds '1    0      3     on   1'
    check 'the other LED' bmc wait 1 show leds '0    2      5     -    0'
    request 'locate off' "$done0" post 0 abc 7 2
    check 'LED off' bmc wait 1 show leds off
    request 'locate a drive that is not there' \
        '208 0 , 207 0 2;, 208 0 abc;0;;, 207 0 , ' post 0 abc 8 9
    check 'its line' error_line 'NVME locate ->  nvme9 does not answer'
    # only the first digit of an index fits the index byte
    request 'nothing' '208 0 , 207 1 22;, 208 1 2abc;1;;, 207 1 2, ' post 12 abc 4
    ;;
esac
no_complaints
exit "$failed"
