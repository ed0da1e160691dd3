# Sourced by scripts that run the whole daemon on a recorded host beside a BMC simulator. VYN_BUILD
# and VYN_SOURCE name the two folders.
# shellcheck shell=sh
# shellcheck disable=SC2009,SC2034,SC2317
set -u
build=${VYN_BUILD:?} source=${VYN_SOURCE:?}
failed=0

# scenarios NAMES HOST BMCSIM-ARGUMENT...: runs this script with each name, all at once, on the
# host, with a BMC and a folder $work of its own. Leaves with the status of one that failed.
scenarios() {
    names=$1
    shift
    top=$(mktemp -d) || exit 1
    trap 'rm -rf "$top"' EXIT
    cp "$0" "$top/scenario" # the agent counts processes by their words, and $0 may hold its name
    pids=
    for name in $names; do
        (scenario "$name" "$@" >"$top/$name.said" 2>&1) &
        pids="$pids $!"
    done
    status=0
    for pid in $pids; do
        wait "$pid" || status=$?
    done
    cat "$top"/*.said
    exit "$status"
}
scenario() { # NAME HOST BMCSIM-ARGUMENT...
    name=$1 host=$2 work=$top/$1
    shift 2
    mkdir "$work" || exit 1
    export work VYN_SIM_BMC="$work/bmc"
    "$build/bmcsim" --listen "$work/bmc" --control "$work/control" "$@" </dev/null >/dev/null &
    trap 'kill '$! EXIT
    bmc help # answered once it listens
    "$source/simulator/run-host" "$host" sh "$top/scenario" "$name"
}

agent() { "$build/IPMIVYN-sim" -agent "$@"; }
bmc() { "$build/bmcsim" --ask "$work/control" "$@" >"$work/reply" 2>&1; }
check() { # WHAT COMMAND...
    what=$1
    shift
    "$@" || fail "$what: $(cat "$work/reply")"
}
fail() {
    echo "FAILED ${work##*/}: $1" >&2 # a check may send its command's output away
    failed=1
}
running() { ps -x | grep -v grep | grep -q 'IPMIVYN-sim -agent start-service'; }
ended() { # SECONDS: waits until the daemon is gone
    tries=$(($1 * 10))
    while running && [ "$tries" -gt 0 ]; do
        tries=$((tries - 1))
        sleep 0.1
    done
    ! running
}
error_line() {
    grep -q "^\[..../../.. ..:..:..\] $1\$" /opt/norvik/vyn.err.log-*
}
no_complaints() {
    bmc complaints
    ! grep -vx ok "$work/reply" || fail 'the BMC complains'
}
