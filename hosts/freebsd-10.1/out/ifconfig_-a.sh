# shellcheck disable=SC2154 # out is set by the stand-in
exec cat "$out/ifconfig_em0" "$out/ifconfig_em1" "$out/ifconfig_lo0"
