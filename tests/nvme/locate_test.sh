#!/bin/sh
# The drives of a recorded host are told; the BMC's locate request switches the right LED on and is answered.
# shellcheck source=tests/daemon.sh
. "${VYN_SOURCE:?}/tests/daemon.sh"

[ $# -ne 0 ] || scenarios locate "$source/hosts/nvme-three" --do 'capability on' \
    --do 'nvme 0 2 5 VYT70A100044' --do 'nvme 1 0 3 S2K0NB0T400017'

agent smart-nvme >/dev/null
check 'a record' bmc wait 10 raw 206 '00:nvme1;01:4;02:57.85 C;03:6%;04:10%;05:112%;06:901177432;'
check 'start' agent start-service >/dev/null
bmc post 1 77 8 2 # on; the serial number there has a digit for a letter
check 'the result' bmc wait 30 raw 208 '77;1;;'
check 'the LED' bmc wait 1 show leds '1    0      3     on   1'
check 'the other LED' bmc wait 1 show leds '0    2      5     -    0'
check 'the release' bmc wait 30 released 1
bmc post 2 78 8 9 # a device that is not there ends the service
check 'the end' bmc wait 30 clients 0
check 'no answer' bmc wait 1 not raw 208 78
no_complaints
exit "$failed"
