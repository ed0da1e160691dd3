# 40 ports of one adapter model, four to a card
n=0
while [ "$n" -lt 40 ]; do
    printf "igb%d@pci0:%d:0:%d:	class=0x020000 card=0x00008086 chip=0x15218086 rev=0x01 hdr=0x00
    vendor     = 'Intel Corporation'
    device     = 'I350 Gigabit Network Connection'
    class      = network
    subclass   = ethernet
" "$n" $((5 + n / 4)) $((n % 4))
    n=$((n + 1))
done
