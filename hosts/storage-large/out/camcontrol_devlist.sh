disk=0
while [ "$disk" -lt 24 ]; do
    echo "<Fabrikam FX2000 F2.4>             at scbus$disk target 0 lun 0 (pass$disk,ada$disk)"
    disk=$((disk + 1))
done
