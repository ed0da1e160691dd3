# 24 disks
disk=0
while [ "$disk" -lt 24 ]; do
    printf 'Geom name: ada%d
Providers:
1. Name: ada%d
   Mediasize: 2000398934016 (1.8T)
   Sectorsize: 512
   Mode: r1w1e2
   descr: Fabrikam FX2000
   ident: FXada%dL
   rotationrate: 7200
   fwsectors: 63
   fwheads: 16

' "$disk" "$disk" "$disk"
    disk=$((disk + 1))
done
