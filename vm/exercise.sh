# Sourced by check-vm: what is tried over one transport. The guest's own files under /sys and
# /proc tell what its BMC should have been told.
# The texts in single quotes are for the guest's shell.
# shellcheck shell=sh disable=SC2016

# equal WHAT WANTED GOT
equal() {
    if [ "$2" = "$3" ]; then
        result ok "$1"
    else
        result FAILED "$1" "wanted: $2" "   got: $3"
    fi
}

# holds WHAT COMMAND...: the output is of interest when it fails
holds() {
    what=$1
    shift
    if output=$("$@" 2>&1); then result ok "$what"; else result FAILED "$what" "$output"; fi
}

agent() { guest "IPMIVYN -agent $1"; }

# lan_record INTERFACE ROW MAC ADDRESS: what the guest is known to be, and the link-local address
# that its kernel made of the MAC
lan_record() {
    local_address=$(guest "ip -6 -o address show dev $1" | awk '{ sub("/.*", "", $4); print $4 }')
    echo "$2;$3;$1;$4;$local_address;N/A;255.255.255.0;vyn-guest;192.0.2.53;1000;N/A;up;"
}

lan_records() { # the last row first
    lan_record eth1 3 "$(word 2 "$MACS")" 192.168.2.15
    lan_record eth0 2 "$(word 1 "$MACS")" 192.168.1.15
}

usage_records() {
    for interface in eth1 eth0; do
        counters=/sys/class/net/$interface/statistics
        guest "cd $counters; echo \$(cat rx_bytes rx_errors tx_bytes tx_errors)" |
            awk -v name="$interface" 'NF { print name ":<1:up;" $1 ";" $2 ";" $3 ";" $4 ";" }'
    done
}

# The serials are those given to QEMU, the temperature is the kernel's; a drive counts its reads.
nvme_records() {
    for number in 1 2; do
        drive=nvme$((number - 1))
        celsius=$(guest "cat /sys/class/nvme/$drive/hwmon*/temp1_input" |
            awk 'NF { printf "%.2f C", $1 / 1000 }')
        echo "00:$drive;01:0;02:$celsius;" \
            "16:QEMU NVMe Ctrl;17:$(($(word "$number" "$MEGABYTES") * 1024));18:$(word "$number" \
                "$SERIALS");"
    done
}

# The fields that stay as they are between two readings.
steady_nvme_fields() {
    bmc raw 206 | sed 's/;03:.*;16:/; 16:/'
}

one_shots() { # TRANSPORT
    agent osname >/dev/null
    equal "$1: OS name" "$(guest uname);" "$(bmc raw 192)"
    agent osversion >/dev/null
    equal "$1: OS version" "$(guest 'uname -r -p');" "$(bmc raw 193)"
    agent lan >/dev/null
    equal "$1: interfaces" "$(lan_records)" "$(bmc raw 195)"
    for _ in 1 2 3 4 5; do # packets come when they like
        before=$(usage_records)
        agent network-util >/dev/null
        [ "$before" != "$(usage_records)" ] || break
    done
    equal "$1: network use" "$before" "$(bmc raw 201)"
    agent cpu-util >/dev/null
    holds "$1: CPU use" matches '^[0-9]{1,3}\.[0-9][0-9];$' "$(bmc raw 196)"
    equal "$1: NVMe support" 'firmware support NVMe' "$(agent nvme-status)"
    agent smart-nvme >/dev/null
    equal "$1: NVMe drives" "$(nvme_records)" "$(steady_nvme_fields)"
    guest 'PATH=/host/disks:$PATH IPMIVYN -agent smart' >/dev/null
    holds "$1: a bad disk" bmc wait 0 sel 'drive fault'
}

matches() { # PATTERN TEXT
    printf '%s\n' "$2" | grep -E "$1"
}

# The daemon reports, follows a link, serves the BMC, outlives its absence and its silence.
daemon() { # TRANSPORT
    bmc restart >/dev/null
    agent start-service >/dev/null
    holds "$1: the daemon says that it runs" bmc wait 30 show agent running
    holds "$1: its first cycle" bmc wait 90 next 202 2
    equal "$1: its interfaces" "$(lan_records)" "$(bmc raw 195)"
    equal "$1: its NVMe drives" "$(nvme_records)" "$(steady_nvme_fields)"
    equal "$1: its agent information" "$(agent version | awk 'NF { print $2, $4, $6, 1 }')" \
        "$(bmc raw 204 | awk -F ';' '{ print $1, $2, $3, $4 }')"

    monitor set_link nic2 off
    holds "$1: a link goes down" bmc wait 60 sel 'interface 3  link down'
    monitor set_link nic2 on
    holds "$1: and comes up" bmc wait 60 sel count 7
    bmc nvme 0 1 5 "$(word 2 "$SERIALS")" >/dev/null
    bmc post 1 request 8 1 >/dev/null
    holds "$1: the BMC has a drive located" bmc wait 60 show leds '5     on '

    equal "$1: nothing for the BMC to complain of" '' "$(bmc complaints)"

    remember_failures
    bmc away >/dev/null
    holds "$1: the BMC goes away" another_failure
    bmc back >/dev/null
    holds "$1: and is reported to again" bmc wait 60 next 202
    remember_failures
    bmc fault 06/58 silent 1 >/dev/null
    holds "$1: the BMC does not answer" another_failure
    holds "$1: and is reported to again" bmc wait 60 next 202
    # What was lost left values without their beginning; from here on none is.
    bmc complaints clear >/dev/null
    holds "$1: with everything" bmc wait 60 next 200
}

# The daemon's failed requests: remember how many, then wait for one more, a minute at most. The
# guest's shell keeps n.
remember_failures() { guest "n=\$($FAILURES)" >/dev/null; }
another_failure() {
    guest "t=300; while [ \$($FAILURES) -le \$n ] && [ \$t -gt 0 ]; do
        t=\$((t - 1)); usleep 200000; done; [ \$t -gt 0 ]"
}
FAILURES="cat /opt/norvik/vyn.err.log-* | grep -c -F 'ipmi command fail cCode->'"

# An end by command leaves the values, an end by the system's shut-down blanks them.
end_by_command() { # TRANSPORT
    agent stop-service >/dev/null
    holds "$1: a stop is told" bmc wait 10 show agent stopped
    equal "$1: and leaves the values" "$(guest uname);" "$(bmc raw 192)"
    holds "$1: and ends the daemon" guest "$UNTIL_ENDED"
}

end_by_signal() { # TRANSPORT
    guest 'kill -TERM $(head -n 1 /var/run/vyn.pid)' >/dev/null
    holds "$1: SIGTERM ends the daemon" guest "$UNTIL_ENDED"
    equal "$1: and blanks the values" '' "$(bmc raw 192)$(bmc raw 193)$(bmc raw 204)"
}
UNTIL_ENDED='t=100; while ps -x | grep -v grep | grep -q start-service && [ $t -gt 0 ]; do
    t=$((t - 1)); usleep 200000; done; [ $t -gt 0 ]'

# The event log as an ordinary client in the guest reads it, over the kernel's driver: generator,
# sensor type, direction and data of each record.
event_log() { # TRANSPORT
    equal "$1: the event log as ipmitool reads it" "$EVENTS" "$(guest 'ipmitool -v sel list' |
        awk -F ' *: *' '
            /Generator ID/ { line = $2 }
            /Sensor Type|Event Direction/ { line = line " " $2 }
            /Event Data/ { print line, $2 }')"
    equal "$1: still nothing to complain of" '' "$(bmc complaints)"
}
# Both links up and the bad disk, the daemon's links up, then what became of one of them.
EVENTS='0041 Unknown Assertion Event a103ff
0041 Unknown Assertion Event a102ff
0041 Drive Slot / Bay Assertion Event a101ff
0041 Unknown Assertion Event a103ff
0041 Unknown Assertion Event a102ff
0041 Unknown Assertion Event a203ff
0041 Unknown Assertion Event a103ff'

exercise() { # TRANSPORT
    for forget in 'sel clear' 'complaints clear' restart; do
        bmc "$forget" >/dev/null
    done
    guest 'rm -f /opt/norvik/*.log*' >/dev/null
    one_shots "$1"
    daemon "$1"
}
