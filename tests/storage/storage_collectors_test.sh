#!/bin/sh
# The storage collectors on recorded hosts: they print the records that are expected of the host,
# and what they log and what the BMC gets are the same items.
set -u
export build="${VYN_BUILD:?}" source="${VYN_SOURCE:?}"
work=$(mktemp -d) || exit 1
export work VYN_SIM_BMC="$work/bmc"
trap 'rm -rf "$work"' EXIT

cat >"$work/collect" <<'COLLECT'
ask() { "$build/bmcsim" --ask "$work/control" "$@"; }
printf 'Hdd count,3\nCVS240A00719,8\nCVS240A0071,5\nxFX77AB0501x,3\n' >/opt/norvik/vyn.hdd.ini
"$build/bmcsim" --listen "$VYN_SIM_BMC" --control "$work/control" </dev/null >/dev/null 2>&1 &
ask help >/dev/null || exit
"$build/IPMIVYN-sim" -agent "$1" >"$work/printed" || exit
ask raw 199 >"$work/uploaded"
ask wait 0 selector 199 count "$(wc -l <"$work/uploaded")" >/dev/null || echo 'count of uploads'
ask complaints
COLLECT

# wanted FILE SECTION...: the records of these sections, with what the BMC gets in empty fields.
wanted() {
    file=$1
    shift
    awk -v sections=" $* " '
        /^\[/ { on = index(sections, " " substr($1, 2, length($1) - 2) " "); sub(/^[^ ]* /, "") }
        on && !/^status/ { print $0 ";" }' "$file" |
        sed 's/;;/;N\/A;/g;s/;;/;N\/A;/g;s/;:/;N\/A:/g;s/;:/;N\/A:/g
            s/:;/:N\/A;/g;s/:;/:N\/A;/g;s/::/:N\/A:/g;s/::/:N\/A:/g'
}

failed=0
check() { # HOST OPTION SECTION...
    host=$1 option=$2
    shift 2
    case $option in
    smart) title='Storage items' item='Available:Total' log='Free Storage items' ;;
    smart-lsi) title='LSI items' item=LSI log='LSI smart items' ;;
    smart-intel) title='Intel RSTe items' item='Intel RSTe' log='Intel RSTe smart items' ;;
    esac
    rm -rf "$work/keep" "$work/bmc" "$work/control"
    VYN_KEEP="$work/keep" "$source/hosts/run-host" "$source/hosts/$host" sh "$work/collect" "$option" >"$work/flaws"
    status=$?
    [ "$status" -ne 77 ] || exit 77
    {
        [ "$status" -eq 0 ] || echo "status $status"
        cat "$work/flaws"
        wanted "$source/tests/storage/expected/$host.txt" "$@" >"$work/items"
        count=$(($(wc -l <"$work/items")))
        [ "$count" -ne 0 ] || echo 'no items'
        sed -n "s/^$item : //p" "$work/printed" | diff "$work/items" -
        grep -q -x "$title 0 $count" "$work/printed" || echo 'count not printed'
        diff "$work/items" "$work/uploaded"
        { echo "$log count ->  $count" && sed "s/^/$log ->  /" "$work/items"; } | diff - "$work/keep/vyn.log"
    } >"$work/report"
    [ ! -s "$work/report" ] || { echo "FAILED: $option on $host"; cat "$work/report"; failed=1; }
}

check storage-onboard smart inventory
check freebsd-14 smart inventory
exit "$failed"
