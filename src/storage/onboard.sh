# Records of the onboard disks and their partitions. Composed after common.sh,
# smart_status.sh and drive_index.sh.
# shellcheck disable=SC2016 # awk programs

newline='
'

# lspci_controllers: the first USB line and the first ATA line of lspci, cleaned.
lspci_controllers() {
    ask lspci -v | pick '
        function cleaned(s) {
            if (index(s, "controller:")) s = tail(s, "controller:")
            if (match(s, /\(rev/)) s = substr(s, 1, RSTART - 1)
            if (match(s, /#[0-9]/)) s = substr(s, 1, RSTART - 1)
            gsub(/:/, " ", s)
            return bare(s)
        }
        function without_hci(s) {
            return match(s, /[^ ]*HCI([^A-Za-z0-9_]|$)/) ? trim(substr(s, 1, RSTART - 1)) : s
        }
        usb == "" && tolower($0) ~ /usb/ { usb = without_hci(cleaned($0)) }
        ata == "" && tolower($0) ~ /ata/ { ata = cleaned($0) }
        END { print usb ";" ata }'
}

# disk_facts DISK IDENTIFY: a line model;TRIM;temperature;cylinders;heads and
# three expressions, one a line: size, tracks, sectors. An unknown number is an
# expression that prints an empty line.
disk_facts() {
    {
        printf '%s\n' "$2"
        part smart
        ask smartctl -A "/dev/$1"
        part geom
        ask geom disk list "$1"
        part fdisk
        ask fdisk "$1"
    } | pick '
        function parameter(name) {
            return match($0, name "[0-9]+") ? substr($0, RSTART + length(name), RLENGTH - length(name)) : ""
        }
        BEGIN { nothing = "\"\n\"" }
        /^@/ { source = $0; next }
        source == "" && tolower($0) ~ /^device model/ && model == "" { model = bare(substr($0, 13)) }
        source == "" && /TRIM\)/ && trims == "" { trims = $5 }
        source == "@smart" && $1 == "194" && $2 == "Temperature_Celsius" && heat == "" { heat = bare($10) }
        source == "@geom" && label($0) == "mediasize" && bytes == "" { bytes = $2 }
        source == "@fdisk" && cylinders == "" { cylinders = parameter("cylinders=") }
        source == "@fdisk" && heads == "" { heads = parameter("heads=") }
        source == "@fdisk" && track == "" { track = parameter("sectors/track=") }
        END {
            print model ";" trims ";" heat ";" cylinders ";" heads
            print (number(bytes) ? bytes "/1024/1024/1024" : nothing)
            tracks = (number(cylinders) && number(heads)) ? cylinders "*" heads : nothing
            print tracks
            print (tracks != nothing && number(track) ? track "*" tracks : nothing)
        }'
}

# disk_record DISK IDENTIFY: the HD record.
disk_record() {
    IFS=';' read -r health serial firmware usb rpm <<EOF
$(smart_status "/dev/$1" warn_reg=OK)
EOF
    facts=$(disk_facts "$1" "$2")
    IFS=';' read -r model trims heat cylinders heads <<EOF
$facts
EOF
    { IFS= read -r size; IFS= read -r tracks; IFS= read -r sectors; } <<EOF
$(printf '%s\n' "${facts#*"$newline"}" | calculate)
EOF
    drive_index=
    if map_readable; then drive_index=$(map_index "$serial"); fi
    [ -n "$drive_index" ] || drive_index=$(bus_index "$1" "$devlist")
    type=HDD
    controller=$ata_controller
    if [ "$usb" = 1 ]; then
        type=USB
        controller=$usb_controller
    elif [ "$trims" = yes ]; then
        type=SSD
    fi
    [ "$type" = HDD ] || rpm=
    rpm=${rpm%rpm}
    rpm=${rpm% }
    interface=N/A
    case $type,$1 in
    USB,*) interface=USB ;;
    *,da*) interface=SCSI ;;
    *,ad*) interface=IDE ;;
    esac
    printf '%s\n' "HD;/dev/$1:$health:$serial:$firmware;$drive_index;$type;$rpm;$controller;$model;$size;$cylinders;$sectors;$tracks;$heads;$interface;$heat"
}

# partition_record DEVICE: the PT record of a partition or slice.
partition_record() {
    form=mounted
    table=$mounts
    case $newline$swaps$newline in
    *"$newline$1$newline"*)
        form=swap
        table=$swap_use
        ;;
    esac
    facts=$(
        {
            printf '%s\n%s\n' "$1" "$table"
            part gpart
            printf '%s\n' "$partitions"
            part newfs
            ask newfs -N "$1"
        } | pick '
            function fill(line, words) {
                line = substr(line, word_at(line, device) + length(device))
                sub(/^[^ \t]+/, "", line)
                split(line, words, " ")
                if (!number(words[1]) || !number(words[2]) || !number(words[3])) return 0
                blocks = words[1]; used = words[2]; available = words[3]
                return 1
            }
            function gpart_total(s, unit) {
                gsub(/\[[^]]*\]/, "", s)
                split(s, words, " ")
                s = words[5]
                gsub(/[()]/, "", s)
                unit = substr(s, length(s))
                s = substr(s, 1, length(s) - 1)
                if (s !~ /^[0-9]+(\.[0-9]+)?$/ || !(unit in factor)) return nothing
                return s "*" factor[unit] "/1"
            }
            function sized(kb) { return number(kb) ? kb "*1024" : nothing }
            BEGIN {
                factor["B"] = "1"; factor["K"] = "1024"; factor["M"] = "1048576"
                factor["G"] = "1073741824"; factor["T"] = "1099511627776"
                total = nothing = "\"\n\""
            }
            NR == 1 { device = $0; name = substr(device, 6); next }
            /^@/ { source = $0; next }
            source == "" && wrapped != "" { $0 = wrapped " " $0; wrapped = "" }
            source == "" && NF == 1 { wrapped = $0; next }
            source == "" && word_at($0, device) == 1 && (!found || index($0, device " ") == 1) { found += fill($0) }
            source == "@gpart" && $3 == name && total == nothing { total = gpart_total($0) }
            source == "@newfs" && match($0, /block size [0-9]+/) && size == "" {
                size = substr($0, RSTART + 11, RLENGTH - 11)
            }
            END {
                percent = (number(blocks) && blocks + 0 > 0) ? sprintf("%.2f", used / blocks * 100) : "0"
                print (found > 0) ";" percent ";" size
                print sized(used)
                print sized(available)
                print (found ? sized(blocks) : total)
            }'
    )
    IFS=';' read -r found percent block_size <<EOF
$facts
EOF
    { IFS= read -r used; IFS= read -r available; IFS= read -r total; } <<EOF
$(printf '%s\n' "${facts#*"$newline"}" | calculate)
EOF
    case $form,$found in
    swap,*) percent=0 ;;
    *,1) ;;
    *)
        percent=0
        used=N/A
        available=N/A
        ;;
    esac
    device=$(printf '%s' "$1" | tr -d ';:')
    printf '%s\n' "PT;$device:$percent:$used:$available:$total:$block_size:"
}

# onboard_records DISKS: every disk that answers, each followed by its partitions.
onboard_records() {
    devlist=$(ask camcontrol devlist | printable)
    partitions=$(ask gpart show -p | printable)
    mounts=$(ask df -k | printable)
    swaps=$(ask swapinfo | pick '/\/dev/ { print $1 }')
    swap_use=$(ask swapinfo -k | printable)
    IFS=';' read -r usb_controller ata_controller <<EOF
$(lspci_controllers)
EOF
    while IFS= read -r disk; do
        identify=$(identify_disk "$disk")
        case $identify in
        *"$newline@identified") ;;
        *) continue ;;
        esac
        disk_record "$disk" "${identify%"$newline@identified"}"
        for slice in "/dev/$disk"[a-z]*; do
            [ ! -e "$slice" ] || partition_record "$slice"
        done
    done <<EOF
$1
EOF
}

# identify_disk DISK: what camcontrol says, and "@identified" if it succeeded.
identify_disk() {
    { camcontrol identify "$1" && part identified; } 2>/dev/null </dev/null | head -c 262144 | printable
}
