# shellcheck shell=sh
exec cat "$out/ifconfig_em0" "$out/ifconfig_em1" "$out/ifconfig_lo0"
