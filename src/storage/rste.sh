# Intel RSTe volumes and their member disks. Composed after common.sh,
# smart_status.sh and drive_index.sh.
# shellcheck disable=SC2016 # awk programs

newline='
'

# volume_facts LISTING VOLUME: a line name;state;member count;level, then the
# member disks, one a line.
volume_facts() {
    printf '%s\n%s\n' "$2" "$1" | pick '
        NR == 1 { volume = $0; next }
        tolower($0) ~ /^geom name:/ { inside = ($3 == volume && !met); if (inside) met = 1 }
        !inside { next }
        label($0) == "consumers" { consumers = 1 }
        tolower($0) ~ /name/ && ++names == 2 { name = bare($3) }
        /State/ && ++states == 2 { state = bare($2) }
        label($0) == "components" && count == "" { count = solid(tail($0, ":")) }
        label($0) == "raidlevel" && level == "" { level = solid(tail($0, ":")); sub(/RAID/, "", level) }
        $0 ~ /^[ \t]*[0-9]+\. Name:/ { sub(/^.*\//, "", $3); disk[++disks] = bare($3); in_consumers[disks] = consumers }
        END {
            print name ";" state ";" count ";" level
            for (i = 1; i <= disks; i++) if (in_consumers[i] || (!consumers && i > 1)) print disk[i]
        }'
}

# new_member DISK: adds the line disk;index;health:serial:firmware to the members.
new_member() {
    IFS=';' read -r health serial firmware _ <<EOF
$(smart_status "/dev/$1")
EOF
    if map_readable; then drive_index=$(map_index "$serial"); fi
    [ -n "$drive_index" ] || drive_index=$(bus_index "$1" "$devlist")
    members="$members$1;$drive_index;$health:$serial:$firmware$newline"
}

# combined_index INDEX: of a drive of the volume at hand; empty for one without a number.
combined_index() {
    case $1 in
    '' | *[!0-9]*) ;;
    *) printf '%s\n' "$volume_index*16+$1" | calculate ;;
    esac
}

# volume_records FACTS: the Logical record of a volume, then its members' HD records by name.
volume_records() {
    IFS=';' read -r name state count level <<EOF
$1
EOF
    members=$newline
    indexes=
    while IFS= read -r disk; do
        [ -n "$disk" ] || continue
        case $members in
        *"$newline$disk;"*) ;;
        *) new_member "$disk" ;;
        esac
        met=${members#*"$newline$disk;"}
        indexes=$indexes:${met%%;*}
    done <<EOF
$(printf '%s\n' "$1" | sed 1d)
EOF
    printf '%s\n' "Logical;$name;$state;Intel RSTe;$count;$level;${indexes#:};$volume_index"
    printf '%s' "${members#"$newline"}" | sort -t ';' -k 1,1 | while IFS=';' read -r disk index smart; do
        printf '%s\n' "HD;/dev/$disk:$smart;$(combined_index "$index")"
    done
}

listing=$(ask graid list | printable)
volumes=$(printf '%s\n' "$listing" | pick 'label($0) == "geom name" && !seen[$3]++ { print $3 }')
[ -z "$volumes" ] || devlist=$(ask camcontrol devlist | printable)
volume_index=0
drive_index=0
while IFS= read -r volume; do
    [ -n "$volume" ] || continue
    volume_records "$(volume_facts "$listing" "$volume")"
    volume_index=$((volume_index + 1))
done <<EOF
$volumes
EOF
exit 0
