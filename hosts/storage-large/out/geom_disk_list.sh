# 24 disks
# shellcheck disable=SC2154 # out is set by the stand-in
disk=0
while [ "$disk" -lt 24 ]; do
    set -- disk list "ada$disk"
    . "$out/geom.default.sh"
    disk=$((disk + 1))
done
