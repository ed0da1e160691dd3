# Health of every drive behind every MegaRAID controller. Composed after
# common.sh, smart_status.sh and storcli.sh.

count=$(storcli_count "$(ask storcli show | printable)")
controller=0
while [ "$controller" -lt "$count" ]; do
    megaraid_drives "$controller" | while IFS=';' read -r _ did; do
        [ -n "$did" ] || continue
        IFS=';' read -r health serial firmware _ <<EOF
$(smart_status "/dev/pass$did" drop_warning=1)
EOF
        printf '%s\n' "LSI;$did:$health:$serial:$firmware"
    done
    controller=$((controller + 1))
done
exit 0
