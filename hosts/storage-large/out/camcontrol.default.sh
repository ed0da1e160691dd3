[ "$1" = identify ] || exit 1
printf 'pass0: <Fabrikam FX2000 F2.4> ATA-9 SATA 3.x device
pass0: 600.000MB/s transfers (SATA 3.x, UDMA6, PIO 8192bytes)

protocol              ATA/ATAPI-9 SATA 3.x
device model          Fabrikam FX2000
firmware revision     F2.4
serial number         FX%sL
cylinders             16383
heads                 16
sectors/track         63
sector size           logical 512, physical 4096, offset 0
LBA supported         268435455 sectors
LBA48 supported       468862128 sectors
PIO supported         PIO4
DMA supported         WDMA2 UDMA6
media RPM             7200

Feature                      Support  Enabled   Value           Vendor
read ahead                     yes    yes
write cache                    yes    yes
flush cache                    yes    yes
overlap                        no
Tagged Command Queuing (TCQ)   no    no
Native Command Queuing (NCQ)   yes        32 tags
SMART                          yes    yes
microcode download             yes    yes
security                       yes    no
power management               yes    yes
Data Set Management (DSM/TRIM) no
' "$2"
