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
ask wait 0 selector 199 count "$(wc -l <"$work/uploaded")" >/dev/null || echo 'count of uploads'
ask complaints
COLLECT

failed=0
# check HOST OPTION some|none PRINTED-COUNT PRINTED-ITEM LOGGED-COUNT LOGGED-ITEM ERROR-LOG
check() {
    rm -rf "$work/keep" "$work/bmc" "$work/control"
    VYN_KEEP="$work/keep" "$source/simulator/run-host" "$1" sh "$work/collect" "$2" >"$work/flaws"
    status=$?
    [ "$status" -ne 77 ] || exit 77
    {
        [ "$status" -eq 0 ] || echo "status $status"
        cat "$work/flaws"
        sed -n "s/^$5 : //p" "$work/printed" >"$work/items"
        count=$(($(wc -l <"$work/items")))
        case $3,$count in none,0 | some,[1-9]*) ;; *) echo "$count items" ;; esac
        grep -q -x "$4 0 $count" "$work/printed" || echo 'count not printed'
        diff "$work/items" "$work/uploaded"
        { echo "$6  $count" && sed "s/^/$7  /" "$work/items"; } | diff - "$work/keep/vyn.log"
        cat "$work"/keep/vyn.err.log-* 2>/dev/null | sed 's/^\[[^]]*\] //' >"$work/errors"
        [ "$(cat "$work/errors")" = "$8" ] || cat "$work/errors"
    } >"$work/report"
    [ ! -s "$work/report" ] || { echo "FAILED: $2 on $1"; cat "$work/report"; failed=1; }
}

smart() { check "$1" smart "$2" 'Storage items' 'Available:Total' 'Free Storage items count ->' 'Free Storage items ->' "$3"; }
lsi() { check "$1" smart-lsi "$2" 'LSI items' LSI 'LSI smart items count ->' 'LSI smart items ->' "$3"; }
rste() {
    check "$1" smart-intel "$2" 'Intel RSTe items' 'Intel RSTe' 'Intel RSTe smart items count ->' \
        'Intel RSTe smart items ->' "$3"
}
smart "$source/hosts/storage-onboard" some ''
smart "$source/hosts/storage-sas3008-ir" some ''
lsi "$source/hosts/storage-megaraid" some ''
rste "$source/hosts/storage-rste-two" some ''

bare=$work/bare
cp -RL "$source/hosts/no-interface" "$bare" && rm -rf "${bare:?}/out" && mkdir "$bare/out"
smart "$bare" none 'getSmartStorageUsage ->  command not found'
lsi "$bare" none 'LSI smart ->  command not found'
rste "$bare" none 'Intel RSTe smart ->  command not found'
exit "$failed"
