#!/bin/sh
# The storage scripts on the recorded hosts: under several shells and awks, with tools
# missing or mad, and with names that a shell would love to run.
# shellcheck disable=SC2016,SC2089,SC2090 # dollars and quotes are meant as text
set -u
here=$(cd "$(dirname "$0")" && pwd)
source=$here/../..
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
mkdir "$work/text" "$work/basic"
"$source/hosts/run-host" "$source/hosts/storage-onboard" true
[ $? -ne 77 ] || exit 77

failed=0
check() { # label, wanted, got
    [ "$2" = "$3" ] && return
    failed=1
    echo "FAILED $1:"
    printf '%s\n' "$2" >"$work/wanted"
    printf '%s\n' "$3" | diff "$work/wanted" - | head -n 20
}

# Each script as it is embedded: its pieces joined in order.
for script in inventory raid_card lsi rste; do
    list=STORAGE_$(echo "$script" | tr '[:lower:]' '[:upper:]')_PIECES
    for piece in $(tr '\n)' ' \n' <"$source/src/storage/scripts.cmake" | sed -n "s/.*set($list //p"); do
        cat "$source/src/storage/$piece"
    done >"$work/text/$script"
done

# Runs inside: every script named, its records below its name and status.
cat >"$work/run" <<'RUN'
printf 'Hdd count,3\nCVS240A00719,8\nCVS240A0071,5\nxFX77AB0501x,3\n' >/opt/norvik/vyn.hdd.ini
[ -z "${MAP-}" ] || printf '%s,5\n' "$MAP" >>/opt/norvik/vyn.hdd.ini
echo '  raidCards = "northwind raid|x  y";' >/opt/norvik/vyn.ini
PATH=${ONLY_PATH:-${AWK_PATH:+$AWK_PATH:}$PATH}
for script in $SCRIPTS; do
    records=$($SHELL_USED -c "$(/bin/cat "$WORK/text/$script")" </dev/null 2>>"$WORK/noise"; echo "status $?")
    case $records in
    "status 0") ;;
    *) printf '[%s] %s\n' "$script" "$records" ;;
    esac
done
RUN
on_host() { # host folder, scripts
    : >"$work/noise"
    WORK=$work SCRIPTS=$2 SHELL_USED=${SHELL_USED:-sh} LC_ALL=C \
        "$source/hosts/run-host" "$1" sh "$work/run"
    check "noise on $1" '' "$(cat "$work/noise")"
}
copy_of() { # host: a copy whose files may change
    rm -rf "$work/host"
    cp -RL "$source/hosts/$1" "$work/host"
}

# Same records whatever shell and awk run them.
for pair in 'dash mawk' 'bash original-awk' 'busybox_sh busybox_awk'; do
    shell=$(echo "${pair% *}" | tr _ ' ')
    awk=$(echo "${pair#* }" | tr _ ' ')
    if ! command -v "${shell% *}" >/dev/null || ! command -v "${awk% *}" >/dev/null; then continue; fi
    mkdir -p "$work/$awk"
    printf '#!/bin/sh\nexec %s "$@"\n' "$awk" >"$work/$awk/awk"
    chmod +x "$work/$awk/awk"
    for wanted in "$here"/expected/*.txt; do
        host=$(basename "$wanted" .txt)
        scripts='lsi raid_card rste'
        case $host in *rste*) ;; *) scripts="inventory $scripts" ;; esac
        got=$(SHELL_USED=$shell AWK_PATH=$work/$awk on_host "$source/hosts/$host" "$scripts")
        check "$host with $pair" "$(cat "$wanted")" "$got"
    done
done

# What a record must look like: tag, fields at ";" or ":", and nothing else on the line.
misshapen() {
    LC_ALL=C awk -F '[;:]' '
        BEGIN { n["HD"] = "17 6"; n["PT"] = "8"; n["LSI"] = "6 5"; n["BRCM_IR_CNTL"] = n["BRCM_II_CNTL"] = "7"
            n["BRCM_IR_VD"] = "8"; n["BRCM_IR_PD"] = n["BRCM_IT_PD"] = "12" }
        /^\[/ { sub(/^\[[a-z_]*\] /, "") }
        /^status [01]$/ { next }
        $1 == "Logical" && NF >= 8 { next }
        !($1 in n) || index(" " n[$1] " ", " " NF " ") == 0 { print NF, $0 }'
}
got=$(on_host "$source/hosts/storage-large" inventory)
check 'large host' '281 1 27 ' "$(printf '%s\n' "$got" | awk -F ';' '/IT_PD/ { a++ } /T_PD;139;.*C1E7S19/ { b++ } /^HD|^PT/ { c++ }
    END { printf "%d %d %d ", a + 1, b, c }')$(printf '%s\n' "$got" | misshapen)"

# One tool after the other missing: no noise, whole records, as many as can be.
for tool in awk sh cat grep head sed tr bc; do
    ln -s "$(command -v "$tool")" "$work/basic/$tool"
done
for row in camcontrol:0 geom:0 smartctl:17 fdisk:17 gpart:17 newfs:17 df:17 swapinfo:17 lspci:17 storcli:17 sas3ircu:17 bc:17; do
    copy_of storage-onboard
    rm -f "$work/host/bin/${row%:*}" "$work/basic/${row%:bc}"
    [ "${row%:*}" != bc ] || rm "$work/basic/bc"
    got=$(ONLY_PATH=$work/host/bin:$work/basic on_host "$work/host" inventory)
    : "${got:=status 0}"
    check "without ${row%:*}" "${row#*:}" "$(echo "$got" | grep -c ';')$(echo "$got" | misshapen)"
done

# Tools that print something else altogether, or never stop.
for kind in 'head -c 200000 /bin/sh' 'yes "1: ;252:0 8 Size (in MB) : x" | head -n 10000' 'tr "\\0" x </dev/zero'; do
    copy_of storage-onboard
    for tool in "$work"/host/bin/*; do
        printf '#!/bin/sh\n%s\n' "$kind" >"$tool"
    done
    check "$kind" '' "$(on_host "$work/host" 'inventory raid_card lsi rste' | misshapen)"
done

# Serials and models are text, whatever they say.
long=$(printf '%300s' '' | tr ' ' L)
for nasty in '*' '-e' '$(touch /opt/norvik/ran)'"'; x "'`id`\n\t\\%s%n a;b:c "&|<' "$long"; do
    for row in storage-onboard:inventory storage-sas3008-ir:inventory storage-megaraid:inventory \
        storage-megaraid:lsi storage-raidcard:raid_card storage-rste-one:rste; do
        host=${row%:*}
        copy_of "$host"
        got=$(cd "$work/host/out" && export nasty && for file in *smartctl* *camcontrol* *display *c0* *identify*; do
            [ -f "$file" ] || continue
            awk '{ while (match($0, /CVS240A0071|FX77AB0201|FX77AB0301|FX77AB0400|FX77AB0501/))
                $0 = substr($0, 1, RSTART - 1) ENVIRON["nasty"] substr($0, RSTART + RLENGTH); print }' "$file" >new
            mv new "$file"
        done
        MAP=$nasty on_host "$work/host" "${row#*:}")
        plain=$(printf '%s' "$nasty" | tr -d ';:')
        wanted=$(plain=$plain script=${row#*:} awk '{ plain = ENVIRON["plain"] }
            /^\[/ { wanted = index($0, "[" ENVIRON["script"] "]") } !wanted { next }
            /^BRCM_IR_PD.*FX77AB0201/ { gsub(/ /, "", plain) } /FX77AB0400/ { gsub(/ /, "_", plain) }
            match($0, /CVS240A0071|FX77AB0201|FX77AB0301|FX77AB0400|FX77AB0501/) {
                $0 = substr($0, 1, RSTART - 1) plain substr($0, RSTART + RLENGTH) }
            { sub(/0:3;0$/, "0:5;0"); if (index($0, ":" plain ":F1.4;3")) sub(/3$/, "5"); print }' "$here/expected/$host.txt")
        check "$host named $nasty" "$wanted" "$got"
    done
done

exit "$failed"
