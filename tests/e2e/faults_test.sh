#!/bin/sh
# Faults under a running daemon: each is put in, seen to bite, and taken away; then the BMC must be
# told everything again. Prints for each how long that took.
# shellcheck disable=SC2009,SC2317
# shellcheck source=tests/daemon.sh
. "${VYN_SOURCE:?}/tests/daemon.sh"

furnish() {
    copy_host && cp "$build/IPMIVYN-sim" "$work/agent" && # where an ordinary user reaches it
        cc -shared -fPIC -o "$work/clock_shift.so" "$source/tests/e2e/clock_shift.c" &&
        chmod -R a+rX "$top"
}
export VYN_SIM_TIMEOUT_MS=200
[ $# -ne 0 ] || scenarios 'silence codes answers disk limits clock flood hang' "$source/hosts/freebsd-10.1"

story=$1 released=0
errors() { # COUNT PATTERN: the error log has at least so many lines
    [ "$(cat /opt/norvik/vyn.err.log-* 2>/dev/null | grep -c "$2")" -ge "$1" ]
}
order() { # OPTION [VALUE]
    bmc post 0 key "$@" && released=$((released + 1))
}
values() { # FILE: everything that the BMC knows but the time, read between two cycles
    bmc wait 30 quiet 300
    for selector in 192 193 194 195 196 197 198 199 200 201 204; do
        ask raw "$selector"
    done >"$1"
}
# A cycle may begin while its values are read: they count when they are once as they should be.
as_before() { values "$work/values" && cmp -s "$work/golden" "$work/values"; }
settled() { values "$work/golden" && as_before; }
# over NAME [COMMAND...]: the fault is over, by this command; waits until all values, which the
# BMC has forgotten, are there again, as they were at first
over() {
    name=$1 began=$(date +%s)
    shift
    [ $# -eq 0 ] || "$@"
    bmc wait 90 quiet 300 && bmc restart && order 5
    check "$name: static values" bmc wait 90 equals 192 'FreeBSD;'
    check "$name: a whole cycle" bmc wait 90 next 202
    check "$name: values" until_true 4 as_before
    check "$name: life" kill -0 "$pid"
    printf '%-34s all reported %2d s later\n' "$name" "$(($(date +%s) - began))"
    check "$name: a command" bmc wait 30 released "$released"
    no_complaints
    bmc sel
    grep -vx ok "$work/reply" >>"$work/events"
    bmc sel clear
}

# An ordinary user, since some limits don't bind root.
user='setpriv --reuid 4321 --clear-groups'
$user true 2>/dev/null || user=
# shellcheck disable=SC2086
as_user() { env $user env "$@"; }
mount -t tmpfs -o size=256k,mode=777 tmpfs /opt/norvik
[ "$story" != disk ] || {
    cat /dev/zero >/opt/norvik/fill 2>/dev/null
    "$work/agent" -agent start-service 2>"$work/reply"
    check 'no start on a full disk' test $? -eq 1
    check 'its message' grep -qx 'Error while writing file.' "$work/reply"
    rm /opt/norvik/fill
}
chmod 777 /var/run "$work" "$work/bmc"
printf 'Config : { updateFreq = 1; };\n' >/opt/norvik/vyn.ini
chmod 666 /opt/norvik/vyn.ini
as_user LD_PRELOAD="$work/clock_shift.so" CLOCK_SHIFT="$work/shift" \
    "$work/agent" -agent start-service >/dev/null || exit 1
check 'cycles' bmc wait 60 next 202 3
bmc sel clear
pid=$(head -n 1 /var/run/vyn.pid)
check 'values that stay' until_true 4 settled
spent() { bmc show faults && ! grep -q 'more$' "$work/reply"; }
cycles() { bmc wait "$1" next 202 3; }

case $story in
silence)
    bmc fault all silent
    check 'three cycles in silence' until_true 60 errors 3 'cCode->  195'
    over 'BMC silent for 3 cycles' bmc nofault

    bmc away
    check 'requests without a driver' until_true 60 errors 8 'cCode->  255'
    back() { bmc back && chmod 777 "$work/bmc"; }
    over 'BMC away' back
    ;;
codes)
    code=0
    while [ "$code" -le 255 ]; do
        for target in 06/58/C7 all; do
            bmc fault "$target" code "$(printf %X "$code")" 1
        done
        code=$((code + 1))
    done
    check 'every code' until_true 90 spent
    bmc complaints clear # of the list that a time-out code has cut short
    code=0
    while [ "$code" -lt 255 ]; do
        code=$((code + 1))
        check "code $code" errors 1 "cCode->  $code\$"
    done
    over 'completion codes 00 to FF'
    ;;
answers)
    bmc clock 1795000000 && year=6A
    bmc trace on
    turns=8
    while [ "$turns" -gt 0 ]; do
        turns=$((turns - 1))
        for fault in 'late 50' 'late 700' 'short 0' 'short 1' 'short 3' 'long 130' 'long 1100' \
            sequence checksum double drop midframe; do
            # shellcheck disable=SC2086
            bmc fault all $fault 1
        done
    done
    check 'late, short and long answers' until_true 90 spent
    bmc complaints clear
    over 'late, short, long, broken answers'
    bmc log # the time stamps: the BMC's time or none
    ! grep '06/58 CA' "$work/reply" | grep -v -e " $year ->" -e ' 00 ->' || fail 'a time stamp of another time'
    ;;
disk)
    cat /dev/zero >/opt/norvik/fill 2>/dev/null
    check 'cycles with a full disk' cycles 60
    check 'their values' until_true 4 as_before
    order 2 1
    check 'a new period with a full disk' bmc wait 20 released "$released"
    check 'the settings stay' grep -q 'updateFreq = 1;' /opt/norvik/vyn.ini
    over 'disk full' rm /opt/norvik/fill
    ;;
limits)
    unknown_disk() { bmc raw 199 && grep -q 'HD;/dev/ada0:N/A' "$work/reply"; }
    for limit in --nofile=6: --nproc=1:; do
        as_user prlimit --pid "$pid" "$limit"
        check "$limit bites" until_true 60 unknown_disk
        check "$limit: cycles" cycles 60
        over "limit $limit" as_user prlimit --pid "$pid" "${limit%%=*}=200:"
    done
    ;;
clock)
    for shift in 40000000 -80000000 0; do
        echo "$shift" >"$work/shift"
        check 'cycles' cycles 60
        check 'the time' grep -q "^Time stamp -> $(date -d "$shift seconds" +%Y/%m)" /opt/norvik/vyn.log
    done
    over 'clock jumps by a year and back'
    ;;
flood)
    flood='head -c 100000000 /dev/zero | tr "\\0" x'
    for tool in ifconfig_-a geom_disk_list; do
        mv "$work/host/out/$tool" "$work/$tool"
        echo "$flood" >"$work/host/out/$tool.sh"
    done
    check 'a cycle with 100 MB from tools' bmc wait 100 next 202 2
    peak=$(awk '/^VmHWM/ { print $2 }' "/proc/$pid/status")
    [ "$peak" -lt 65536 ] || grep -q __sanitizer "$work/agent" ||
        fail "peak memory: $peak KiB"
    calm() { rm "$work/host/out/"*.sh && mv "$work/ifconfig_-a" "$work/geom_disk_list" "$work/host/out"; }
    over 'tools print 100 MB' calm
    ;;
hang)
    mv "$work/host/out/netstat_-rn_-6" "$work/netstat"
    echo 'exec sleep 1234' >"$work/host/out/netstat_-rn_-6.sh"
    hung() { ps -ax | grep -v grep | grep -q 'sleep 1234'; }
    check 'the hang' until_true 30 hung
    calm() { rm "$work/host/out/netstat_-rn_-6.sh" && mv "$work/netstat" "$work/host/out/netstat_-rn_-6"; }
    order 4
    check 'a command meanwhile' bmc wait 15 released "$released"
    check 'the end of the hang' until_true 90 errors 1 'timed out'
    over 'a tool hangs' calm
    check 'no process left' eval '! hung'
    ;;
esac
# Not to know is no news: nothing changed on this host, so nothing is told.
cut -c 28- "$work/events" | sort -u | tr '\n' ';' >"$work/reply"
check 'no events' test ! -s "$work/reply"
exit "$failed"
