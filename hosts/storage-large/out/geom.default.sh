cat <<END
Geom name: $3
Providers:
1. Name: $3
   Mediasize: 2000398934016 (1.8T)
   Sectorsize: 512
   Mode: r1w1e2
   descr: Fabrikam FX2000
   ident: FX${3}L
   rotationrate: 7200
   fwsectors: 63
   fwheads: 16

END
