# Intel RSTe volumes and their member disks. Composed after common.sh,
# smart_status.sh and drive_index.sh.
# shellcheck disable=SC2016 # awk programs

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
        $0 ~ /^[ \t]*[0-9]+\. Name:/ { sub(/^.*\//, "", $3); disk[++disks] = $3; in_consumers[disks] = consumers }
        END {
            print name ";" state ";" count ";" level
            for (i = 1; i <= disks; i++) if (in_consumers[i] || (!consumers && i > 1)) print disk[i]
        }'
}

# new_member DISK: writes the files of a member met for the first time.
new_member() {
    smart=$(smart_status "/dev/$1")
    if map_readable; then drive_index=$(map_index "$(printf '%s\n' "$smart" | cut -d ';' -f 2)"); fi
    [ -n "$drive_index" ] || drive_index=$(bus_index "$1" "$devlist")
    printf '%s\n' "$drive_index" >"$scratch/intel/$1/index"
    printf '%s\n' "$volume_index" >"$scratch/intel/$1/master_index"
    printf '%s\n' "$smart" >"$scratch/intel/$1/smart"
}

# stored DISK FILE: the one line of a file of a member, if it is there.
stored() {
    stored_line=
    { IFS= read -r stored_line <"$scratch/intel/$1/$2"; } 2>/dev/null
    printf '%s\n' "$stored_line"
}

# member_record DISK: the HD record of a member disk.
member_record() {
    IFS=';' read -r health serial firmware _ <<EOF
$(stored "$1" smart)
EOF
    sum=
    case $(stored "$1" index) in
    '' | *[!0-9]*) ;;
    *) sum=$(printf '%s\n' "$(stored "$1" master_index)*16+$(stored "$1" index)" | calculate) ;;
    esac
    printf '%s\n' "HD;/dev/$1:$health:$serial:$firmware;$sum"
}

# volume_records FACTS: the Logical record of a volume and its members' records.
volume_records() {
    IFS=';' read -r name state count level <<EOF
$1
EOF
    members=
    mkdir "$scratch/intel" || return
    while IFS= read -r member; do
        [ -n "$member" ] || continue
        if mkdir "$scratch/intel/$member" 2>/dev/null; then new_member "$member"; fi
        members=$members:$(stored "$member" index)
    done <<EOF
$(printf '%s\n' "$1" | sed 1d)
EOF
    printf '%s\n' "Logical;$name;$state;Intel RSTe;$count;$level;${members#:};$volume_index"
    for directory in "$scratch/intel"/*/; do
        directory=${directory%/}
        [ ! -d "$directory" ] || member_record "${directory##*/}"
    done
    rm -rf "$scratch/intel"
}

scratch=$(mktemp -d "${TMPDIR:-/tmp}/vyn.XXXXXX" 2>/dev/null) || exit 1
trap 'rm -rf "$scratch"' EXIT
trap 'exit 1' HUP INT TERM
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
