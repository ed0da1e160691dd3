#!/bin/sh
# The daemon's whole life where no device node exists and the BMC is reached over KCS ports only,
# at each of the two port pairs.
# shellcheck source=tests/daemon.sh
. "${VYN_SOURCE:?}/tests/daemon.sh"

[ $# -ne 0 ] || scenarios 'kcs kcs2' "$source/hosts/freebsd-10.1"

export VYN_SIM_TRANSPORT="$1"
printf 'Config : { updateFreq = 1; };\n' >/opt/norvik/vyn.ini
[ "$1" = kcs ] || bmc watchdog none
check 'start' agent start-service >/dev/null
check 'running at the BMC' bmc wait 30 show agent running
check 'the static values' bmc wait 30 equals 192 'FreeBSD;'
check 'cycles' bmc wait 30 next 202 2
[ "$1" = kcs2 ] || check 'the watchdog' bmc wait 30 show watchdog running

bmc post 3 pausekey 1 1
check 'a pause by the BMC' bmc wait 30 released 1
check 'paused' bmc wait 10 show agent paused
check 'its result' bmc wait 1 show command '208      index 3 "pausekey;1;;"'
no_complaints
bmc disconnect
bmc restart
agent resume-service >/dev/null # wakes the restart monitor before its minute is over
check 'the restart noticed' bmc wait 30 show bmc 'agent has noticed'
check 'the static values again' bmc wait 30 equals 192 'FreeBSD;'

# A silent BMC: exchanges time out, and the interface stays busy for a while.
bmc fault all silent 2
check 'cycles after time-outs' bmc wait 60 next 202 2
bmc complaints clear # of the values that silence and restart have cut
check 'more cycles' bmc wait 30 next 202 2

check 'stop' agent stop-service >/dev/null
check 'stopped at the BMC' bmc wait 10 show agent stopped
check 'end' ended 15
no_complaints
exit "$failed"
