# What storcli tells of MegaRAID controllers. Composed after common.sh.
# shellcheck disable=SC2016 # awk programs

# Rows of storcli tables. Cells are found below their header label: models hold
# blanks, empty enclosures leave a cell short, older tools lack columns.
awk_table='
function place(name) {
    column_at = index(" " $0 " ", " " name " ")
    if (column_at) { first[name] = column_at; last[name] = column_at + length(name) - 1 }
}
function read_header(names, n, i) {
    split("", first); split("", last)
    n = split($0, names, " ")
    for (i = 1; i <= n; i++) place(names[i])
}
function cell(name, at, rest, from) {
    if (!(name in first)) return ""
    rest = $0; at = 0
    while (match(rest, /[^ ]+/)) {
        from = at + RSTART; at += RSTART + RLENGTH - 1
        if (from <= last[name] && at >= first[name]) return bare_cell(substr(rest, RSTART, RLENGTH))
        rest = substr(rest, RSTART + RLENGTH)
    }
    return ""
}
function bare_cell(s) { gsub(/;/, "", s); return s }
{ sub(/[ \t]+$/, "") }
/ :$/ { title = trim(substr($0, 1, length($0) - 2)); table = 0; next }
/^-----+$/ { table = (table == 1) ? 2 : 0; row = 0; next }
$1 == "EID:Slt" || $1 == "DG/VD" { read_header(); table = 1 }
{ row = (table == 2) }
'

# storcli_count SHOW: number of controllers, 0 when the tool told none.
storcli_count() {
    printf '%s\n' "$1" | pick '
        index(tolower($0), "number of controllers") && count == "" && number($5) { count = $5 }
        END { print (length(count) > 3 ? 0 : count + 0) }'
}

# storcli_controllers SHOW PATTERN: numbers of the controllers whose line
# matches the extended regular expression, upper or lower case alike.
storcli_controllers() {
    printf '%s\n' "$1" | grep -E -i -e "$2" 2>/dev/null |
        pick 'number($1) && !seen[$1]++ { print $1 }'
}

# drive_rows PATTERN: lines "slot;device id" of the drive table on standard input.
drive_rows() {
    pick "$awk_table"'
        row && cell("EID:Slt") ~ pattern && number(cell("DID")) && !seen[cell("EID:Slt")]++ {
            print bare(tail(cell("EID:Slt"), ":")) ";" cell("DID")
        }' pattern="$1"
}

# megaraid_drives CONTROLLER: lines "slot;device id", from the drives in
# enclosures or, when there are none, from those without.
megaraid_drives() {
    drives=$(ask storcli "/c$1" /eall /sall show | drive_rows '[0-9]:[0-9]')
    [ -n "$drives" ] || drives=$(ask storcli "/c$1" /sall show | drive_rows ':[0-9]')
    printf '%s\n' "$drives"
}
