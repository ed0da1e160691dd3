# Where a drive sits. Composed after common.sh.
# shellcheck disable=SC2016 # awk programs

drive_map=/opt/norvik/vyn.hdd.ini

map_readable() {
    [ -f "$drive_map" ] && [ -r "$drive_map" ]
}

# map_index SERIAL: second field of the map line of that serial; a line that
# merely contains it counts when no line is the drive's own.
map_index() {
    { printf '%s\n' "$1"; ask cat "$drive_map"; } | pick '
        function slot_after(mark) { return head(tail($0, mark) ",", ",") }
        NR == 1 { serial = $0; next }
        serial == "" || tolower(head($0, ",")) == "hdd count" { next }
        { gsub(/[;:]/, "") }
        own == "" && head($0, ",") == serial { own = slot_after(",") }
        own == "" && index($0, serial ",") == 1 { own = slot_after(serial ",") }
        other == "" && index($0, serial) { other = slot_after(",") }
        END { print (own != "" ? own : other) }'
}

# bus_index DISK DEVLIST: scbus number of the line of camcontrol devlist that
# names the disk. The description in <> is free text and is not looked at.
bus_index() {
    printf '%s\n%s\n' "$1" "$2" | pick '
        NR == 1 { disk = $0; next }
        bus == "" {
            while (index($0, ">")) $0 = tail($0, ">")
            if (word_at($0, disk) && match($0, /scbus[0-9]+/)) bus = substr($0, RSTART + 5, RLENGTH - 5)
        }
        END { print bus }'
}
