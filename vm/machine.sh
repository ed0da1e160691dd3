# Sourced by check-vm: the machine, its BMC, and how to talk to both.
# It reads $vm, $work, $build and $kernel.
# shellcheck shell=sh disable=SC2154

MACHINE_SECONDS=600 # should nothing else end it
MACS='52:54:00:76:79:01 52:54:00:76:79:02'
SERIALS='VYNGUEST0001 VYNGUEST0002'
MEGABYTES='64 96'

machine_pid='' bmcsim_pid=''

start_bmc() {
    "$build/bmcsim" --listen "$work/bmc" --control "$work/control" --do 'capability on' \
        </dev/null >"$work/bmcsim.log" 2>&1 &
    bmcsim_pid=$!
    bmc help >/dev/null
}

bmc() { "$build/bmcsim" --ask "$work/control" "$@"; }

# start_machine: boots it and waits until the guest answers. Descriptors 3 and 4 are the dialog,
# 5 is QEMU's monitor.
start_machine() {
    mkfifo "$work/dialog.in" "$work/dialog.out" "$work/monitor.in" "$work/monitor.out" || return 1
    set --
    # Drives without a byte behind them, two networks that lead nowhere.
    for number in 1 2; do
        mac=$(word "$number" "$MACS") serial=$(word "$number" "$SERIALS")
        megabytes=$(word "$number" "$MEGABYTES")
        set -- "$@" -netdev "user,id=net$number,net=192.168.$number.0/24,restrict=on,ipv6=off" \
            -device "e1000,id=nic$number,netdev=net$number,mac=$mac" \
            -drive "if=none,id=drive$number,driver=null-co,size=${megabytes}M,read-zeroes=on" \
            -device "nvme,drive=drive$number,serial=$serial"
    done
    timeout "$MACHINE_SECONDS" qemu-system-x86_64 -machine pc -accel tcg -cpu qemu64,+rdrand -m 384 \
        -nodefaults -display none -no-reboot -kernel "$vm/$kernel"/boot/vmlinuz-* -initrd "$work/initrd" \
        -append 'console=ttyS0 panic=-1 mitigations=off' -serial "file:$work/console" \
        -chardev "pipe,id=dialog,path=$work/dialog" -serial chardev:dialog \
        -chardev "pipe,id=monitor,path=$work/monitor" -monitor chardev:monitor \
        -chardev "socket,id=bmc,path=$work/bmc,reconnect=1" \
        -device ipmi-bmc-extern,id=bmc0,chardev=bmc -device isa-ipmi-kcs,bmc=bmc0 \
        "$@" </dev/null >"$work/qemu.log" 2>&1 &
    machine_pid=$!
    # Opened both ways where QEMU may not have come so far; the answers only as their reader, so
    # that they end with the machine.
    exec 3<>"$work/dialog.in" 5<>"$work/monitor.in"
    exec 4<"$work/dialog.out"
    take_answer >/dev/null
}

# take_answer: prints what the guest says up to its closing line, whose status it returns.
take_answer() {
    while IFS= read -r answer <&4; do
        case $answer in
        '#end '*) return "${answer#\#end }" ;;
        *) printf '%s\n' "$answer" ;;
        esac
    done
    return 255
}

# guest COMMAND: what it prints in the guest, and its status. It travels as one line.
guest() {
    printf '%s\n' "$1" | tr '\n' ' ' >&3
    echo >&3
    take_answer
}

monitor() { printf '%s\n' "$*" >&5; }

word() { # NUMBER WORDS
    printf '%s\n' "$2" | cut -d ' ' -f "$1"
}

stop_all() {
    for pid in $machine_pid $bmcsim_pid; do
        kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
    done
    machine_pid='' bmcsim_pid=''
}
