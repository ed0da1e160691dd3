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
    mkdir "$work" && furnish || exit 1
    export work VYN_SIM_BMC="$work/bmc"
    "$build/bmcsim" --listen "$work/bmc" --control "$work/control" "$@" </dev/null >/dev/null &
    trap 'kill '$! EXIT
    bmc help # answered once it listens
    "$source/hosts/run-host" "$host" sh "$top/scenario" "$name"
}

# A script's own prepares $work and may change $host, not the folder that it names but a copy. A
# host whose bin is a link would lose its tools' answers in one.
furnish() { :; }
copy_host() { cp -RL "$host" "$work/host" && host=$work/host; }

agent() { "$build/IPMIVYN-sim" -agent "$@"; }
ask() { "$build/bmcsim" --ask "$work/control" "$@"; }
bmc() { ask "$@" >"$work/reply" 2>&1; }
check() { # WHAT COMMAND...
    what=$1
    shift
    "$@" || fail "$what: $(tail -n 3 "$work/reply")"
}
fail() {
    echo "FAILED ${work##*/}: $1" >&2 # a check may send its command's output away
    failed=1
}
until_true() { # SECONDS COMMAND...
    tries=$(($1 * 10))
    shift
    until "$@"; do
        tries=$((tries - 1))
        [ "$tries" -gt 0 ] || return 1
        sleep 0.1
    done
}
gone() { ! ps -x | grep -v grep | grep -q 'IPMIVYN-sim -agent start-service'; }
ended() { until_true "$1" gone; } # SECONDS: waits until the daemon is gone
error_line() {
    grep -q "^\[..../../.. ..:..:..\] $1\$" /opt/norvik/vyn.err.log-*
}
no_complaints() {
    bmc complaints
    ! grep -vx ok "$work/reply" || fail 'the BMC complains'
}
