#!/bin/sh
# Three NVMe drives, one with a critical warning, all reported; the BMC's locate request switches
# the right LED on and is answered.
set -u
export build="${VYN_BUILD:?}" source="${VYN_SOURCE:?}"
work=$(mktemp -d) || exit 1
export work VYN_SIM_BMC="$work/bmc"
trap 'rm -rf "$work"' EXIT

cat >"$work/play" <<'PLAY'
failed=0
# bmc TEXT COMMAND...: the simulator says ok and its reply contains the text
bmc() {
    wanted=$1
    shift
    if reply=$("$build/bmcsim" --ask "$work/control" "$@" 2>&1); then
        case $reply in *"$wanted"*) return ;; esac
    fi
    echo "FAILED $*: wanted '$wanted', got '$reply'"
    failed=1
}
"$build/bmcsim" --listen "$VYN_SIM_BMC" --control "$work/control" --do 'capability on' \
    --do 'nvme 0 2 5 VYT70A100044' --do 'nvme 1 0 3 S2K0NB0T400017' </dev/null >"$work/log" 2>&1 &
bmc '' help
"$build/IPMIVYN-sim" -agent smart-nvme >/dev/null
bmc '' wait 10 selector 206 count 3
bmc '00:nvme1;01:4;02:57.85 C;03:6%;04:10%;05:112%;06:901177432;' raw 206
bmc '16:Larch DC-3840 mixed-use data ce;17:3750738264;18:S2KONB0T400017;' raw 206
"$build/IPMIVYN-sim" -agent start-service >/dev/null
bmc '' post 1 77 8 2 # on; the serial number there has a digit for a letter
bmc '' wait 30 raw 208 '77;1;;'
bmc '1    0      3     on   1' show leds
bmc '0    2      5     -    0' show leds
bmc '' wait 30 released 1
bmc '' post 2 78 8 9 # a device that is not there ends the service
bmc '' wait 30 clients 0
bmc '' wait 1 not raw 208 78
bmc '' complaints
[ -z "$reply" ] || failed=1
exit "$failed"
PLAY
"$source/simulator/run-host" "$source/hosts/nvme-three" sh "$work/play"
