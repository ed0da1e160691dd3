#!/bin/sh
# The storage collectors from the command line: what they print, what they log and what the BMC
# gets are the same items.
set -u
export build="${VYN_BUILD:?}" source="${VYN_SOURCE:?}"
work=$(mktemp -d) || exit 1
export work VYN_SIM_BMC="$work/bmc"
trap 'rm -rf "$work"' EXIT

cat >"$work/collect" <<'COLLECT'
ask() { "$build/bmcsim" --ask "$work/control" "$@"; }
"$build/bmcsim" --listen "$VYN_SIM_BMC" --control "$work/control" </dev/null >/dev/null 2>&1 &
ask help >/dev/null || exit
"$build/IPMIVYN-sim" -agent "$1" >"$work/printed" || exit
ask raw 199 >"$work/uploaded"
COLLECT

failed=0
check() { # HOST OPTION PRINTED-COUNT PRINTED-ITEM LOGGED
    rm -rf "$work/keep" "$work/bmc" "$work/control"
    {
        VYN_KEEP="$work/keep" "$source/hosts/run-host" "$source/hosts/$1" sh "$work/collect" "$2" ||
            echo "status $?"
        sed -n "s/^$4 : //p" "$work/printed" >"$work/items"
        count=$(($(wc -l <"$work/items")))
        [ "$count" -ne 0 ] || echo 'no items'
        grep -q -x "$3 0 $count" "$work/printed" || echo 'count not printed'
        diff "$work/items" "$work/uploaded"
        { echo "$5 count ->  $count" && sed "s/^/$5 ->  /" "$work/items"; } | diff - "$work/keep/vyn.log"
    } >"$work/report"
    ! grep -q '^status 77' "$work/report" || exit 77
    [ ! -s "$work/report" ] || { echo "FAILED: $2 on $1"; cat "$work/report"; failed=1; }
}
check storage-onboard smart 'Storage items' 'Available:Total' 'Free Storage items'
check storage-megaraid smart-lsi 'LSI items' LSI 'LSI smart items'
check storage-rste-two smart-intel 'Intel RSTe items' 'Intel RSTe' 'Intel RSTe smart items'
exit "$failed"
