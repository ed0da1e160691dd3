#!/bin/sh
# Recording a recorded host gives the same host again; -b hides its serial numbers. The record
# holds every command line that the agent's collectors ask for.
set -u
: "${VYN_BUILD:?}"
here=$(cd "$(dirname "$0")" && pwd)
run=$here/../../hosts/run-host
record=$here/../../hosts/record-host
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
failed=0
fail() { echo "FAILED $*"; failed=1; }

host=$work/host
cp -RL "$here/../../hosts/freebsd-10.1" "$host"
cp "$here/../../hosts/replay" "$host/bin/nvmecontrol"
cp "$here/../../hosts/replay" "$host/bin/storcli"
: >"$host/dev/nvme0" && : >"$host/dev/nvme0ns1" && : >"$host/dev/ada0" && : >"$host/dev/ada0p1"
cd "$host/out" || exit 1
cat >nvmecontrol.default.sh <<'LIVE'
case "$*" in
'identify -x -v nvme0') page=controller ;;
'identify -x -v nvme0ns1') page=namespace1 ;;
'logpage -p 2 -x nvme0') page=health ;;
*) exit 1 ;;
esac
exec od -v -A x -t x4 -w32 "$VYN_SIM_HOST/nvme0/$page.bin" | sed 's/ /: /'
LIVE
mkdir "$host/nvme0"
awk 'BEGIN { for (i = 0; i < 4096; i++) printf "%c", 33 + i * 7 % 90 }' >"$host/nvme0/namespace1.bin"
{ printf 'abcd%-20s' '  NV-77KX0042' && tail -c +25 "$host/nvme0/namespace1.bin"; } >"$host/nvme0/controller.bin"
head -c 500 /dev/zero >"$host/nvme0/health.bin" && printf '\001\200\377 A\\%%\n\r\t\000\177' >>"$host/nvme0/health.bin"
echo 'Geom name: ada0' >geom_disk_list
printf '   ident: WD-AB12345678\n   descr: x WD-AB12345678 2\n   note: WD-AB123456789 (WD-AB12345678)\n' >>geom_disk_list
printf 'Serial Number:    WD-AB12345678\n' >smartctl_-i_%2Fdev%2Fada0
printf '  Serial No     : WDAB1234\nUnit Serial No(VPD) : WDAB12345678\n' >smartctl_-A_%2Fdev%2Fada0
printf 'wrong serial WD-AB12345678\n' >smartctl_-H_%2Fdev%2Fada0.stderr && echo 4 >smartctl_-H_%2Fdev%2Fada0.rc
printf 'Number of Controllers = 1\n' >storcli_show
printf 'VD LIST :\nDG/VD TYPE\n0/3   RAID1 Optl\nEID=x\nPD LIST :\n252:4   11 Onln   0 930.390 GB\n :5   12 Onln\n' >storcli_%2Fc0_show
printf '252:4   11 Onln   0 930.390 GB\n' >storcli_%2Fc0_%2Feall_%2Fsall_show
printf 'SN =   \t  ZZ9\nSN =     QQ00WW11\n' >storcli_%2Fc0%2Fe252%2Fs4_show_all

"$run" "$host" "$record" "$work/first" 2>"$work/log"
status=$?
[ "$status" -ne 77 ] || { cat "$work/log" && exit 77; }
[ "$status" -eq 0 ] || fail "record-host: status $status: $(cat "$work/log")"
for file in interfaces.txt addresses.txt cp_time.txt; do
    grep -v '^#' "$host/$file" >"$work/wanted"
    grep -v '^#' "$work/first/$file" | cmp - "$work/wanted" || fail "$file"
done
for file in "$host"/out/*; do
    name=${file##*/}
    case $name in
    *.sh | nvmecontrol* | *.default* | geom_disk_list_* | *ada[1-9]*) ;;
    *) cmp "$file" "$work/first/out/$name" || fail "$name" ;;
    esac
done
for page in controller namespace1 health; do
    cmp "$host/nvme0/$page.bin" "$work/first/nvme0/$page.bin" || fail "$page"
done
for name in storcli_%2Fc0%2Fv3_show_all.rc smartctl_-i_%2Fdev%2Fpass11 newfs_-N_%2Fdev%2Fada0p1 \
    sas3ircu.default.stderr; do
    [ -f "$work/first/out/$name" ] || fail "$name was not asked for"
done

# What replays the record is recorded the same.
cp "$host/bin/nvmecontrol" "$work/first/bin" && cp nvmecontrol.default.sh "$work/first/out"
"$run" "$work/first" "$record" "$work/second" 2>"$work/log" || fail "second: $(cat "$work/log")"
rm "$work/first/bin/nvmecontrol" "$work/first/out/nvmecontrol.default.sh"
diff -r "$work/first" "$work/second" || fail 'the record of the record differs'

"$run" "$host" "$record" -b "$work/blurred" 2>"$work/log" || fail "blurred: $(cat "$work/log")"
cd "$work/blurred/out" || exit 1
grep -r 'AB12345678\b\|WDAB1234\b\|QQ00WW11' . && fail 'a serial number shows'
check() { [ "$1" = "$2" ] || fail "blurred: wanted '$1', got '$2'"; }
hidden=$(sed -n 's/^   ident: //p' geom_disk_list)
expr "$hidden" : 'XX-XX00000[0-9][0-9][0-9]$' >/dev/null || fail "blurred text $hidden"
bare=$(echo "$hidden" | tr -d -)
check "   descr: x $hidden 2" "$(grep descr geom_disk_list)"
check "   note: WD-AB123456789 ($hidden)" "$(grep note geom_disk_list)"
check "Serial Number:    $hidden" "$(cat smartctl_-i_%2Fdev%2Fada0)"
check "  Serial No     : $(echo "$bare" | cut -c 1-8)
Unit Serial No(VPD) : $bare" "$(cat smartctl_-A_%2Fdev%2Fada0)"
check "wrong serial $hidden" "$(cat smartctl_-H_%2Fdev%2Fada0.stderr)"
case $(head -c 24 "$work/blurred/nvme0/controller.bin") in
'abcd  XX-00XX0'[0-9][0-9][0-9]'       ') ;;
*) fail "NVMe serial: $(head -c 24 "$work/blurred/nvme0/controller.bin")" ;;
esac

# What the collectors ask for is there, drives behind controllers and RSTe volumes included.
cat >"$work/collect" <<'COLLECT'
for name in osname osversion hdd-type lan memory-util smart smart-lsi smart-intel; do
    VYN_REPLAY_LOG=$work/asked "$VYN_BUILD/IPMIVYN-sim" -agent "$name" >/dev/null 2>&1
done
exec "$record" "$work/$1" 2>/dev/null
COLLECT
export work record VYN_SIM_TRANSPORT=none
for name in freebsd-10.1 storage-sas3008-ir storage-megaraid storage-rste-two; do
    rm -f "$work/asked"
    "$run" "$here/../../hosts/$name" sh "$work/collect" "$name" || fail "$name"
    [ "$(sort -u "$work/asked" | wc -l)" -gt 10 ] || fail "$name: the collectors asked for little"
    sort -u "$work/asked" | while read -r line; do
        file=$(printf '%s' "$line" | sed 's/ /_/g; s/\//%2F/g; s/|/%7C/g; s/\*/%2A/g')
        [ -f "$work/$name/out/$file" ] || [ -f "$work/$name/out/${line%% *}.default.rc" ] ||
            echo "$name: $line is not recorded"
    done >"$work/missing"
    [ ! -s "$work/missing" ] || fail "$(cat "$work/missing")"
done
exit "$failed"
