# Sourced by check-vm: how long a request takes, the agent's against ipmitool's.
# shellcheck shell=sh

CLEARS=15
REQUESTS=200

# time_requests COMMAND: milliseconds from one upload that it sends to the next, by the BMC's clock.
# Only neighbours count: what a program does before, after and in between is not a request.
time_requests() {
    bmc log clear >/dev/null
    bmc trace on >/dev/null
    guest "{ $1; } >/dev/null 2>&1" >/dev/null
    bmc trace off >/dev/null
    bmc log | awk '
        $3 == "06/58" && before == $3 { sum += $1 - last; count++ }
        { last = $1; before = $3 }
        END { if (count > 100) printf "%.2f", sum * 1000 / count }'
}

# Both send the parameters' blanking.
agent_time() {
    time_requests "i=0; while [ \$i -lt $CLEARS ]; do i=\$((i + 1)); IPMIVYN -agent clear; done"
}

client_time() {
    guest "yes 'raw 0x06 0x58 0xc0 0x10 0 0 0 0 0' | head -n $REQUESTS >/tmp/requests" >/dev/null
    time_requests 'ipmitool exec /tmp/requests'
}

# timing_table CLIENT DRIVER KCS: milliseconds, or nothing for what was not measured
timing_table() {
    [ -n "$1" ] || return
    awk -v client="$1" -v driver="$2" -v kcs="$3" '
        function row(name, time) {
            if (time != "") printf "%-34s%8s%10.2f\n", name, time, time / client
        }
        BEGIN {
            printf "%-34s%8s%10s\n", "one request in the guest", "ms", "ratio"
            row("ipmitool, kernel driver", client)
            row("agent, kernel driver", driver)
            row("agent, KCS ports", kcs)
        }'
}
