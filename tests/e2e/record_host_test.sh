#!/bin/sh
# Recording a recorded host gives the same host again; -b hides its serial numbers. The record
# holds every command line that the agent's collectors ask for. What was recorded for former
# command lines is converted.
set -u
: "${VYN_BUILD:?}"
here=$(cd "$(dirname "$0")" && pwd)
hosts=$here/../../hosts
run=$hosts/run-host
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
failed=0
fail() { echo "FAILED $*"; failed=1; }
check() { [ "$1" = "$2" ] || fail "wanted '$1', got '$2'"; }

# What only record-host asks, out of what the kernel of the recorded host knows
mkdir "$work/kernel"
cat >"$work/kernel/hostname" <<'LIVE'
exec cat "$VYN_SIM_HOST/hostname.txt"
LIVE
cat >"$work/kernel/sysctl" <<'LIVE'
[ "$*" != '-n kern.cp_time' ] || exec grep -v '^#' "$VYN_SIM_HOST/cp_time.txt"
[ "$*" = '-n hw.physmem hw.pagesize vm.stats.vm.v_inactive_count vm.stats.vm.v_free_count' ] || exit 1
exec awk '/^[0-9]/ { print $1; print 4096; printf "%d\n%d\n", $2 / 4096, $3 / 4096 }' "$VYN_SIM_HOST/memory.txt"
LIVE
cat >"$work/kernel/netstat" <<'LIVE'
[ "$*" = -ibnW ] || exec "$VYN_SIM_HOST/bin/netstat" "$@"
echo 'Name    Mtu Network       Address              Ipkts Ierrs Idrop     Ibytes    Opkts Oerrs     Obytes  Coll'
exec awk '/^[0-9]/ {
    print $2 ($3 ~ /[02468ace]$/ ? "*" : ""), 1500, "<Link#" $1 ">", ($4 == "-" ? "" : $4), 17, $6, 0, $5, 23, $8, $7, 0
    print $2, 1500, "192.0.2.0", "192.0.2.41", 1, "-", "-", 2, 3, "-", 4, "-" }' "$VYN_SIM_HOST/interfaces.txt"
LIVE
cat >"$work/kernel/nvmecontrol" <<'LIVE'
case "$*" in
'identify -x -v nvme0') page=controller ;;
'identify -x -v nvme0ns1') page=namespace1 ;;
'logpage -p 2 -x nvme0') page=health ;;
*) exit 1 ;;
esac
exec od -v -A x -t x4 -w32 "$VYN_SIM_HOST/nvme0/$page.bin" | sed 's/ /: /'
LIVE
for tool in "$work"/kernel/*; do
    { echo '#!/bin/sh' && cat "$tool"; } >"$work/tool" && chmod +x "$work/tool" && mv "$work/tool" "$tool"
done
record() { # HOST ARGUMENT...
    host=$1
    shift
    "$run" "$host" env PATH="$work/kernel:$host/bin:$PATH" "$hosts/record-host" "$@" 2>"$work/log"
}

host=$work/host
cp -RL "$hosts/freebsd-10.1" "$host"
cp "$hosts/replay" "$host/bin/storcli"
: >"$host/dev/nvme0" && : >"$host/dev/nvme0ns1"
cd "$host/out" || exit 1
mkdir "$host/nvme0"
awk 'BEGIN { for (i = 0; i < 4096; i++) printf "%c", 33 + i * 7 % 90 }' >"$host/nvme0/namespace1.bin"
{ printf 'abcd%-20s' '  NV-77KX0042' && tail -c +25 "$host/nvme0/namespace1.bin"; } >"$host/nvme0/controller.bin"
head -c 500 /dev/zero >"$host/nvme0/health.bin" && printf '\001\200\377 A\\%%\n\r\t\000\177' >>"$host/nvme0/health.bin"
smart=smartctl_-i_-H_-A_%2Fdev%2Fada0
echo 'Geom name: ada0' >geom_disk_list
printf '   ident: WD-AB12345678\n   descr: x WD-AB12345678 2\n   note: WD-AB123456789 (WD-AB12345678)\n' >>geom_disk_list
printf 'Serial Number:    WD-AB12345678\n  Serial No     : WDAB1234\nUnit Serial No(VPD) : WDAB12345678\n' >$smart
printf 'wrong serial WD-AB12345678\n' >$smart.stderr && echo 4 >$smart.rc
printf 'Number of Controllers = 1\n' >storcli_show
printf '252:4   11 Onln   0 930.390 GB\n' >storcli_%2Fc0_%2Feall_%2Fsall_show
printf ' :5   12 Onln   0 930.390 GB\n' >storcli_%2Fc0_%2Fsall_show
printf 'SN =   \t  ZZ9\nSN =     QQ00WW11\n' >storcli_%2Fc0%2Feall%2Fsall_show_all

record "$host" "$work/first"
status=$?
[ "$status" -ne 77 ] || { cat "$work/log" && exit 77; }
[ "$status" -eq 0 ] || fail "record-host: status $status: $(cat "$work/log")"
for file in interfaces.txt addresses.txt cp_time.txt memory.txt hostname.txt etc/resolv.conf; do
    grep -v '^#' "$host/$file" >"$work/wanted"
    grep -v '^#' "$work/first/$file" | cmp - "$work/wanted" || fail "$file"
done
for file in "$host"/out/*; do
    name=${file##*/}
    case $name in
    *ada1*) ;;
    *) cmp "$file" "$work/first/out/$name" || fail "$name" ;;
    esac
done
for page in controller namespace1 health; do
    cmp "$host/nvme0/$page.bin" "$work/first/nvme0/$page.bin" || fail "$page"
done
for name in storcli_%2Fc0_show.rc storcli_%2Fc0%2Fvall_show_all.rc smartctl_-i_-H_%2Fdev%2Fpass11 \
    smartctl_-i_-H_%2Fdev%2Fpass12 sas3ircu.default.stderr; do
    [ -f "$work/first/out/$name" ] || fail "$name was not asked for"
done

# What replays the record is recorded the same.
record "$work/first" "$work/second" || fail "second: $(cat "$work/log")"
diff -r "$work/first" "$work/second" || fail 'the record of the record differs'

record "$host" -b "$work/blurred" || fail "blurred: $(cat "$work/log")"
cd "$work/blurred/out" || exit 1
grep -r 'AB12345678\b\|WDAB1234\b\|QQ00WW11' . && fail 'a serial number shows'
hidden=$(sed -n 's/^   ident: //p' geom_disk_list)
expr "$hidden" : 'XX-XX00000[0-9][0-9][0-9]$' >/dev/null || fail "blurred text $hidden"
bare=$(echo "$hidden" | tr -d -)
check "   descr: x $hidden 2" "$(grep descr geom_disk_list)"
check "   note: WD-AB123456789 ($hidden)" "$(grep note geom_disk_list)"
check "Serial Number:    $hidden
  Serial No     : $(echo "$bare" | cut -c 1-8)
Unit Serial No(VPD) : $bare" "$(cat $smart)"
check "wrong serial $hidden" "$(cat $smart.stderr)"
case $(head -c 24 "$work/blurred/nvme0/controller.bin") in
'abcd  XX-00XX0'[0-9][0-9][0-9]'       ') ;;
*) fail "NVMe serial: $(head -c 24 "$work/blurred/nvme0/controller.bin")" ;;
esac

# What the collectors ask for is there, drives behind controllers and RSTe volumes included.
cat >"$work/collect" <<'COLLECT'
printf 'Customize: {\n  raidCard3rdParty = true;\n  raidCards = "northwind";\n};\n' >/opt/norvik/vyn.ini
for name in osname osversion hdd-type lan memory-util smart smart-lsi smart-intel; do
    VYN_REPLAY_LOG=$work/asked "$VYN_BUILD/IPMIVYN-sim" -agent "$name" >/dev/null 2>&1
done
COLLECT
export work VYN_SIM_TRANSPORT=none
for name in freebsd-10.1 freebsd-14 storage-sas3008-ir storage-megaraid storage-raidcard storage-rste-two; do
    : >"$work/asked"
    "$run" "$hosts/$name" sh "$work/collect"
    record "$(cd "$hosts/$name" && pwd)" "$work/$name" || fail "$name: $(cat "$work/log")"
    [ "$(sort -u "$work/asked" | wc -l)" -gt 10 ] || fail "$name: the collectors asked for little"
    sort -u "$work/asked" | while read -r line; do
        file=$(printf '%s' "$line" | sed 's/ /_/g; s/\//%2F/g; s/|/%7C/g; s/\*/%2A/g')
        [ -f "$work/$name/out/$file" ] || [ -f "$work/$name/out/${line%% *}.default.rc" ] ||
            echo "$name: $line is not recorded"
    done >"$work/missing"
    [ ! -s "$work/missing" ] || fail "$(cat "$work/missing")"
done

# What was recorded for the former, many command lines is brought to the few.
mkdir "$work/old" "$work/old/out" && cd "$work/old/out" || exit 1
printf '2 em1\n1 em0\n' >../interfaces.txt
for name in em0 em1; do echo "$name: up" >ifconfig_$name && echo "$name@pci" >pciconf_-lv_$name; done
echo 'hw.physmem: 8553091072' >sysctl_hw.physmem
echo 'Mem: 1G Active, 2G Inact, 1290M Wired, 64K Cache, 826M Buf, 5K Free' >top_-d_1
echo zoo >hostname && echo rows | tee df_-k >swapinfo
banner='smartctl\n(C)\n\n' title='=== START OF READ SMART DATA SECTION ==='
for device in %2Fdev%2Fada0 %2Fdev%2Fpass8; do
    printf '%b=== START OF\nSerial\n\n' "$banner" >smartctl_-i_$device
    printf '%b%s\nFAILED!\nFailed Attributes:\n  5 bad\n\n' "$banner" "$title" >smartctl_-H_$device
    printf '%b%s\nTable\n' "$banner" "$title" >smartctl_-A_$device
    echo 24 >smartctl_-H_$device.rc && echo 4 >smartctl_-A_$device.rc
done
printf '%bUnknown USB bridge\n' "$banner" | tee smartctl_-i_%2Fdev%2Fda0 >smartctl_-H_%2Fdev%2Fda0
echo c0 >storcli_%2Fc0_show
for n in 0 1; do printf 'Status\n\n\n/v%s :\n\nName\n' $n >storcli_%2Fc0%2Fv${n}_show_all; done
"$hosts/convert-host" "$work/old" || fail convert-host
answer() { check "$1: $2" "$1: $(tr '\n' '|' <"$1")"; }
answer ../hostname.txt 'zoo|'
answer ../memory.txt '# physical inactive free|8553091072 2147483648 5120|'
answer ifconfig_-a 'em0: up|em1: up|'
answer pciconf_-lv 'em0@pci|em1@pci|'
answer smartctl_-i_-H_%2Fdev%2Fpass8 \
    "smartctl|(C)||=== START OF|Serial||$title|FAILED!|Failed Attributes:|  5 bad||"
answer smartctl_-i_-H_-A_%2Fdev%2Fada0 "smartctl|(C)||=== START OF|Serial||$title|FAILED!|See\
 vendor-specific Attribute list for failed Attributes.||Table|"
answer smartctl_-i_-H_-A_%2Fdev%2Fada0.rc '28|'
answer smartctl_-i_-H_-A_%2Fdev%2Fda0 'smartctl|(C)||Unknown USB bridge|'
answer storcli_%2Fc0%2Fvall_show_all 'Status|||/v0 :||Name||/v1 :||Name|'
check 10 "$(find . -type f | wc -l)" # and nothing else
exit "$failed"
