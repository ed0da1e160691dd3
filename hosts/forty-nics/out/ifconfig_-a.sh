# 40 interfaces and the loopback, with the addresses of interfaces.txt and addresses.txt
n=0
while [ "$n" -lt 40 ]; do
    printf 'igb%d: flags=8843<UP,BROADCAST,RUNNING,SIMPLEX,MULTICAST> metric 0 mtu 1500
	options=403bb<RXCSUM,TXCSUM,VLAN_MTU,VLAN_HWTAGGING,JUMBO_MTU,VLAN_HWCSUM,TSO4,TSO6,VLAN_HWTSO>
	ether 02:3e:11:%02x:00:%02x
	inet 198.51.100.%d netmask 0xffffffc0 broadcast 198.51.100.63
	nd6 options=29<PERFORMNUD,IFDISABLED,AUTO_LINKLOCAL>
	media: Ethernet autoselect (1000baseT <full-duplex>)
	status: active
' "$n" $((n * 7 % 40)) "$n" $((n + 1))
    n=$((n + 1))
done
printf 'lo0: flags=8049<UP,LOOPBACK,RUNNING,MULTICAST> metric 0 mtu 16384
	inet 127.0.0.1 netmask 0xff000000
'
