#!/bin/sh
# The daemon's whole life where no device node exists and the BMC is reached over KCS ports only,
# at each of the two port pairs. VYN_BUILD and VYN_SOURCE name the two folders.
set -u
build=${VYN_BUILD:?} source=${VYN_SOURCE:?}

live() { # TRANSPORT: a life in a folder and with a BMC of its own
    mkdir "$work/$1" || return 1
    "$build/bmcsim" --listen "$work/$1/bmc" --control "$work/$1/control" \
        </dev/null >"$work/$1/log" 2>&1 &
    bmcsim_pid=$!
    VYN_SIM_TRANSPORT=$1 VYN_SIM_BMC="$work/$1/bmc" \
        "$source/simulator/run-host" "$source/hosts/freebsd-10.1" \
        sh "$work/scenario" "$1" >"$work/$1/said" 2>&1
    status=$?
    kill "$bmcsim_pid" 2>/dev/null
    return "$status"
}

if [ $# -eq 0 ]; then
    work=$(mktemp -d) || exit 1
    trap 'rm -rf "$work"' EXIT
    cp "$0" "$work/scenario"
    export work
    live kcs2 &
    other=$!
    live kcs
    status=$?
    wait "$other" || status=$?
    cat "$work/kcs/said" "$work/kcs2/said"
    exit "$status"
fi

transport=$1
work=$work/$transport
failed=0
# shellcheck disable=SC2317
agent() { "$build/IPMIVYN-sim" -agent "$@"; }
bmc() { "$build/bmcsim" --ask "$work/control" "$@" >"$work/reply" 2>&1; }
check() { # WHAT COMMAND...
    what=$1
    shift
    "$@" || { echo "FAILED $transport: $what: $(cat "$work/reply")"; failed=1; }
}
# shellcheck disable=SC2009,SC2317
running() { ps -x | grep -v grep | grep -q 'IPMIVYN-sim -agent start-service'; }
# shellcheck disable=SC2317
ended() { # SECONDS
    tries=$(($1 * 10))
    while running && [ "$tries" -gt 0 ]; do
        tries=$((tries - 1))
        sleep 0.1
    done
    ! running
}
no_complaints() { # WHEN
    bmc complaints
    [ ! -s "$work/reply" ] && return
    echo "FAILED $transport: complaints $1: $(cat "$work/reply")"
    failed=1
}

printf 'Config : { updateFreq = 1; };\n' >/opt/norvik/vyn.ini
[ "$transport" = kcs ] || bmc watchdog none
check 'start' agent start-service >/dev/null
check 'running at the BMC' bmc wait 30 show agent running
check 'the static values' bmc wait 30 equals 192 'FreeBSD;'
check 'cycles' bmc wait 30 next 202 2
[ "$transport" = kcs2 ] || check 'the watchdog' bmc wait 30 show watchdog running

bmc post 3 pausekey 1 1
check 'a pause by the BMC' bmc wait 30 released 1
check 'paused' bmc wait 10 show agent paused
check 'its result' bmc wait 1 show command '208      index 3 "pausekey;1;;"'
bmc post 4 resumekey 1 0
check 'a resume by the BMC' bmc wait 30 released 2
check 'cycles after it' bmc wait 30 next 202 2
no_complaints 'until then'

# A silent BMC: exchanges time out, and the interface stays busy for a while.
bmc fault all silent 2
check 'cycles after time-outs' bmc wait 60 next 202 2

bmc disconnect
bmc restart
check 'the restart noticed' bmc wait 90 show bmc 'agent has noticed'
check 'the static values again' bmc wait 30 equals 192 'FreeBSD;'
check 'cycles after the restart' bmc wait 30 next 202 2
bmc complaints clear # of the values that silence and restart have cut
check 'more cycles' bmc wait 30 next 202 2

check 'stop' agent stop-service >/dev/null
check 'stopped at the BMC' bmc wait 10 show agent stopped
check 'end' ended 15
no_complaints 'after the restart'
exit "$failed"
