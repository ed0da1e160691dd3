# How every storage script asks a tool and reads what it said.
#
# What a tool prints came from a device: it is only ever a quoted argument, an
# awk record or a fixed string to search for.
# shellcheck disable=SC2016 # awk programs

LC_ALL=C
export LC_ALL

# ask COMMAND...: at most 1 MiB of what the tool prints. A tool that never
# stops is ended by the closed pipe; one that is missing prints nothing.
ask() {
    "$@" 2>/dev/null </dev/null | head -c 1048576
}

# Text without control characters; blanks, tabs and line ends stay.
printable() {
    tr -d '\000-\010\013-\037\177'
}

# part NAME: the line between the answers of two tools in one stream.
part() {
    printf '\n@%s\n' "$1"
}

# The functions every awk program below can use. A line is cut at 2000
# characters, a number at 30 digits: awks and bcs differ beyond.
awk_text='
function trim(s) { sub(/^[ \t]+/, "", s); sub(/[ \t]+$/, "", s); return s }
function bare(s) { gsub(/[;:]/, "", s); return trim(s) }
function solid(s) { gsub(/[ \t]/, "", s); return bare(s) }
function head(s, mark) { return index(s, mark) ? trim(substr(s, 1, index(s, mark) - 1)) : "" }
function tail(s, mark) { return index(s, mark) ? trim(substr(s, index(s, mark) + length(mark))) : "" }
function label(s) { s = tolower(head(s, ":")); gsub(/[ \t]*#/, "#", s); return s }
function word_at(s, word, at, from) {
    for (at = 1; word != "" && (from = index(substr(s, at), word)); at++) {
        at += from - 1
        if (substr(s, at - 1, at > 1) substr(s, at + length(word), 1) !~ /[A-Za-z0-9_]/) return at
    }
    return 0
}
function number(s) { return s ~ /^[0-9]+$/ && length(s) <= 30 }
{ if (length($0) > 2000) $0 = substr($0, 1, 2000) }
'

# pick PROGRAM [NAME=VALUE | FILE]...: awk over printable standard input, with
# the functions above. Programs read to the end: no writer meets a closed pipe.
pick() {
    pick_program=$awk_text$1
    shift
    printable | awk "$pick_program" "$@"
}

# Results of the expressions on standard input, nothing without bc.
calculate() {
    bc 2>/dev/null
}
