# Every storage device of the host, one record a line. Composed after common.sh,
# smart_status.sh, drive_index.sh, storcli.sh, sas3008.sh and onboard.sh.
# Leaves with status 1 where there is no storage at all.
# shellcheck disable=SC2016 # awk programs

# megaraid_records SHOW: the LSI records of all MegaRAID controllers.
megaraid_records() {
    for lsi in $(storcli_controllers "$1" 'avago|lsi3108|sas3108'); do
        megaraid_drives "$lsi" | while IFS=';' read -r slot did; do
            [ -n "$did" ] || continue
            IFS=';' read -r health serial firmware _ <<EOF
$(smart_status "/dev/pass$did" warn_reg=OK drop_warning=1)
EOF
            printf '%s\n' "LSI;/dev/pass$did:$health:$serial:$firmware:$slot"
        done
    done
}

disks=$(ask geom disk list | pick 'label($0) == "geom name" && !seen[$3]++ { print $3 }')
adapters=$(ask storcli show | printable)
adapter_count=$(storcli_count "$adapters")
sas3008=$(sas3008_list)

[ -n "$disks$sas3008" ] || [ "$adapter_count" != 0 ] || exit 1

[ "$adapter_count" = 0 ] || megaraid_records "$adapters"
[ -z "$sas3008" ] || sas3008_records "$sas3008"
[ -z "$disks" ] || onboard_records "$disks"
exit 0
