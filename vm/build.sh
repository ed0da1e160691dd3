# Sourced by check-vm: the kernel and the initial file system of the guest.
# It reads $vm and $work, folders for what is kept and what is not, and $build.
# shellcheck shell=sh disable=SC2154

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo -n "$@"; fi
}

# The newest kernel package of the system's release; its name tells the version.
kernel_package() {
    apt-cache depends linux-image-amd64 2>/dev/null |
        sed -n 's/^ *Depends: *\(linux-image-[0-9][^ ]*\)$/\1/p' | head -n 1
}

# fetch PACKAGE PATTERN...: unpacks these files of a package into $vm/PACKAGE, once. The package
# is not installed: a kernel would become this machine's, and two kinds of busybox don't get along.
fetch() {
    [ ! -d "$vm/$1" ] || return 0
    package=$1
    shift
    echo "Fetching $package (it is unpacked, not installed)"
    rm -rf "$vm/new"
    mkdir -p "$vm/new/files" || return 1
    (cd "$vm/new" && apt-get -q download "$package") </dev/null >"$vm/fetch.log" 2>&1 &&
        dpkg-deb --fsys-tarfile "$vm/new/$package"_*.deb >"$vm/new/tar" &&
        tar -x -f "$vm/new/tar" -C "$vm/new/files" --wildcards "$@" &&
        mv "$vm/new/files" "$vm/$package" || return 1
    rm -rf "$vm/new"
}

# fetch_guest: what the guest is made of; fails when it can't be had.
fetch_guest() {
    mkdir -p "$vm" || return 1
    kernel=$(kernel_package)
    if [ -z "$kernel" ]; then
        as_root apt-get update -q </dev/null >"$vm/fetch.log" 2>&1
        kernel=$(kernel_package)
    fi
    [ -n "$kernel" ] && fetch busybox-static ./bin/busybox &&
        fetch "$kernel" './boot/vmlinuz-*' '*/kernel/drivers/char/ipmi/*' \
            '*/kernel/drivers/nvme/*' '*/intel/e1000/*' '*/kernel/block/t10-pi*' \
            '*/kernel/lib/crc*' '*/kernel/crypto/crc*'
}

# add_program FILE...: copies programs to the guest's /bin, and the libraries that they load to
# where they are here.
add_program() {
    for program; do
        cp -L "$program" "$guest_root/bin/" || return 1
        for library in $(ldd "$program" | awk '/=> \// { print $3 } $1 ~ /^\// { print $1 }'); do
            [ ! -e "$guest_root$library" ] || continue
            mkdir -p "$guest_root${library%/*}" || return 1
            cp -L "$library" "$guest_root$library" || return 1
        done
    done
}

# build_guest: the initial file system, $work/initrd
build_guest() {
    guest_root=$work/root
    mkdir -p "$guest_root/bin" "$guest_root/etc" "$guest_root/lib" "$guest_root/host/disks" ||
        return 1
    add_program "$build/IPMIVYN" "$(command -v ipmitool)" "$(command -v ps)" \
        "$(command -v dash)" || return 1
    # Its own shell would take its own tools for those in PATH.
    mv "$guest_root/bin/dash" "$guest_root/bin/sh"
    cp "$vm/busybox-static/bin/busybox" "$guest_root/bin/" || return 1
    cp -R "$vm/$kernel/lib/modules" "$guest_root/lib/" || return 1
    cp vm/init vm/dialog "$guest_root/" || return 1
    cp vm/udhcpc "$guest_root/etc/" || return 1
    cp -R vm/tools "$guest_root/host/bin" || return 1
    # The disks of a recorded server, for those who look for them there; one of them is bad.
    cp -R hosts/freebsd-10.1/out "$guest_root/host/" || return 1
    for tool in camcontrol df fdisk geom gpart newfs smartctl swapinfo; do
        cp hosts/replay "$guest_root/host/disks/$tool" || return 1
    done
    verdict=$guest_root/host/out/smartctl_-i_-H_-A_%2Fdev%2Fada1
    sed 's/PASSED/FAILED!/' "$verdict" >"$verdict.bad" && mv "$verdict.bad" "$verdict" || return 1
    (cd "$guest_root" && find . | cpio -o -H newc --quiet) >"$work/initrd"
}
