#!/bin/sh
# Drives of a recorded host degrade, fail, go missing and come back; the BMC's event log follows.
# shellcheck source=tests/daemon.sh
. "${VYN_SOURCE:?}/tests/daemon.sh"

# The drives are the story's own.
# shellcheck disable=SC2317
furnish() {
    copy_host && rm -rf "${work:?}/host/dev" || return
    for tool in camcontrol geom sas3ircu smartctl storcli; do
        rm -f "$work/host/out/$tool"*
        cp "$source/hosts/replay" "$work/host/bin/$tool"
    done
}
[ $# -ne 0 ] || scenarios drives "$source/hosts/freebsd-10.1" \
    --do 'trace on' --do 'drivemap HD0=0 HD1=1 HD2=2 HD3=3'

# A line tells a drive's life: kind, slot, then what its tool says of it in each act, and after
# ":" the events that the BMC gets then, "+" asserted and "-" deasserted. "gone" is a drive that
# the tool does not list. "_" stands for a blank.
# The kinds, in the order of a pass: drives behind SAS3008 controllers in IT and in IR mode,
# onboard disks, drives of a RAID card.
cat >"$work/story" <<'STORY'
it 0  Optimal       Degraded:+A2  Failed:+A1-A2    Rebuilding:+A7-A1  gone:+A0  Optimal:-A0-A7
it 1  Ready         Hot_Spare:+A3 Out_of_Sync:+A5-A3 Optimal:-A5    Standby   Missing
it 2  Degraded:+A2  Ready:-A2     Hot_Spare:+A3    Ready:-A3          Failed:+A1 Degraded:+A2-A1
it 3  Failed:+A1    Missing:-A1   Rebuilding:+A7   Optimal:-A7        gone:+A0  gone
it 4  Hot_Spare:+A3 Out_of_Sync:+A5-A3 gone:+A0    Failed:-A0+A1-A5   Optimal:-A1 Optimal
it 5  Out_of_Sync:+A5 Ready:-A5   Ready            gone:+A0           gone      Degraded:-A0+A2
it 6  Rebuilding:+A7 Optimal:-A7  Optimal          Optimal            Optimal   Optimal
it 70 gone          Optimal:-A0   gone:+A0         gone               Failed:-A0+A1 Failed
it 8  gone          Hot_Spare:-A0+A3 Optimal:-A3   Optimal            Optimal   Optimal
ir 0  Optimal       Degraded:+A2  Out_of_Sync:+A5-A2 Optimal:-A5      gone:+A0  Optimal:-A0
ir 1  Failed        Rebuilding    Hot_Spare        Ready              Missing   Failed
ir 2  Degraded:+A2  Optimal:-A2   Out_of_Sync:+A5  gone:+A0           Optimal:-A0-A5 Optimal
ir 3  Out_of_Sync:+A5 Optimal:-A5 Optimal          Optimal            Optimal   gone:+A0
hd 0  passed        passed_but:+A2 failed:+A1-A2   passed:-A1         gone:+A0  passed:-A0
hd 1  failed:+A1    passed_but:+A2 passed:-A2      failed:+A1         gone:+A0  passed_but:-A0+A2
hd 2  gone          failed:-A0+A1 silent           passed             passed    passed
hd 3  passed_but:+A2 failed:+A1-A2 failed          silent             gone:+A0  failed:-A0+A1
raid 0 Onln         UBad:+A1      UBUnsp:+A1-A1    Onln:-A1           gone:+A0  Onln:-A0
raid 1 UGood        DHS:+A3       GHS:+A3-A3       HSPShld:+A3-A3     Rbld:+A7-A3 Onln:-A7
raid 2 UBad:+A1     UGood:-A1     DHS:+A3          Onln:-A3           GHS:+A3   gone:+A0
raid 3 UBUnsp:+A1   UGood:-A1     HSPShld:+A3      UGood:-A3          UGUnsp    Offln
raid 4 DHS:+A3      Rbld:+A7-A3   gone:+A0         UBad:-A0+A1-A7     UBad      gone:+A0
raid 5 GHS:+A3      Rbld:+A7-A3   Onln:-A7         Onln               Onln      Onln
raid 6 HSPShld:+A3  UGShld:-A3    gone:+A0         gone               gone      Onln:-A0
raid 7 Rbld:+A7     UBUnsp:+A1-A7 Onln:-A1         Onln               Onln      Onln
raid 8 gone         UBUnsp:-A0+A1 Onln:-A1         Onln               Onln      Onln
STORY

# act NUMBER: "kind slot state" of the drives that are there.
act() {
    awk -v column=$(($1 + 2)) '{ split($column, part, ":"); gsub(/_/, " ", part[1]) }
        part[1] != "gone" { print $1, $2, part[1] }' "$work/story"
}

# events NUMBER: the event records of an act. A pass tells its drives, then what it misses:
# onboard, then IT, then IR and RAID-card drives, each list in the order of first appearance.
# A missing IR or RAID drive has the sensor and the drive bytes of an IT drive.
events() {
    awk -v column=$(($1 + 2)) '
        BEGIN {
            split("it 02 hd FF ir 42 raid 3C", words, " ")
            for (i = 1; i < 8; i += 2) place[words[i]] = words[i + 1]
            split("hd 1 it 2 ir 3 raid 3", words, " ")
            for (i = 1; i < 8; i += 2) rank[words[i]] = words[i + 1]
        }
        { split($column, part, ":") }
        { while (part[2] != "") {
            alert = substr(part[2], 1, 1) == "+" ? "70" : "F0"
            type = substr(part[2], 2, 2)
            part[2] = substr(part[2], 4)
            if (alert type == "70A0")
                missing[rank[$1] ($3 == "gone")] = missing[rank[$1] ($3 == "gone")] \
                    sprintf("41 04 0D %s 70 A0 %02X %s\n", $1 == "hd" ? "FF" : "5F", $2, place[$1])
            else if ($1 == "it") printf "41 04 0D 5F %s %s %02X 02\n", alert, type, $2
            else printf "41 04 0D FF %s %s %02X FF\n", alert, type, ($1 == "ir" ? 16 : 0) + $2
        } }
        END {
            for (i = 1; i <= 3; i++) printf "%s%s", missing[i "0"], missing[i "1"]
        }' "$work/story"
}

# display KIND RAID-SUPPORT: what sas3ircu tells of a controller; the drives come from standard
# input, a missing one with empty model and firmware lines.
display() {
    awk -v kind="$1" -v raid="$2" '
        function line(name, value) { printf "  %-40s: %s\n", name, value }
        BEGIN {
            print "Controller information"
            line("Controller type", "SAS3008")
            line("RAID Support", raid)
            print "IR Volume information\nPhysical device information"
        }
        $1 != kind { next }
        {
            state = substr($0, length($1 $2) + 3)
            missing = state == "Missing"
            print "\nDevice is a Hard disk"
            line("Enclosure #", 2)
            line("Slot #", $2)
            line("State", state " (XYZ)")
            if (!missing && state != "Standby") line("Size (in MB)/(in sectors)", "2048/4194304")
            line("Manufacturer", "ATA     ")
            line("Model Number", missing ? "" : "M 1")
            line("Firmware Revision", missing ? "" : "F1")
            line("Serial No", "S" kind $2)
            line("Drive Type", "SATA_HDD")
        }
        END { print "Enclosure information" }'
}

# card: what storcli tells of the RAID card, the drives from standard input.
card() {
    awk 'BEGIN {
            rule = "------------------------------------------------"
            print "Product Name = RAIDX9\n\nPD LIST :\n=======\n\n" rule
            print "EID:Slt DID State DG     Size Intf Med Model    \n" rule
        }
        $1 == "raid" { printf "%-7s %3d %-7s - %5d GB SATA SSD M 1\n", "252:" $2, $2, $3, 100 }
        END { print rule "\n\nUBad-Unconfigured Bad|Onln-Online|GHS-Global Hotspare" }'
}

# health STATE: what smartctl -H tells.
health() {
    case $1 in
    passed*) echo 'SMART overall-health self-assessment test result: PASSED' ;;
    failed) echo 'SMART overall-health self-assessment test result: FAILED!' ;;
    esac
    [ "$1" != 'passed but' ] || printf 'Please note the following marginal Attributes:\nID# ATTRIBUTE_NAME\n'
}

# prepare NUMBER FOLDER: the tools' outputs of an act.
prepare() {
    mkdir "$2" && act "$1" >"$work/act" || return
    display it No <"$work/act" >"$2/sas3ircu_0_display"
    display ir Yes <"$work/act" >"$2/sas3ircu_1_display"
    card <"$work/act" >"$2/storcli_%2Fc0_show"
    : >"$2/disks"
    while read -r kind slot state; do
        [ "$kind" = hd ] || continue
        printf 'Geom name: ada%s\n' "$slot" >>"$2/disks"
        health "$state" >"$2/smartctl_-H_%2Fdev%2Fada$slot"
    done <"$work/act"
}

out=$VYN_SIM_HOST/out
printf 'Number of Controllers = 1\n  0 RAIDX9  8 28\n' >"$out/storcli_show"
printf '   0  SAS3008 1 2\n   1  SAS3008 1 2\n' >"$out/sas3ircu_list"
for slot in 0 1 2 3; do
    echo 'Serial Number: HD'"$slot" >"$out/smartctl_-i_%2Fdev%2Fada$slot"
    echo 'device model  M' >"$out/camcontrol_identify_ada$slot"
done
# The first tool of a pass is where the next act begins: no pass sees half of it.
# shellcheck disable=SC2016 # expanded by the stand-in
echo 'if [ -d "$out/next" ]; then mv "$out/next/"* "$out" && rmdir "$out/next"; fi
cat "$out/disks"' >"$out/geom_disk_list.sh"
cat >/opt/norvik/vyn.ini <<'INI'
Config: { updateFreq = 1; };
Customize: {
  raidCard3rdParty = true;
  raidCards = "RAIDX9";
};
INI

for n in 1 2 3 4 5 6; do
    prepare "$n" "$work/act$n"
    mv "$work/act$n" "$out/next"
    [ "$n" -ne 1 ] || check 'start' agent start-service >/dev/null
    check "act $n" bmc wait 60 next 200 2
    bmc log
    sed -n 's/^.* 04\/02 \(41 04 0D .*\) -> .*/\1/p' "$work/reply" >"$work/got"
    bmc log clear
    events "$n" >"$work/wanted"
    diff "$work/wanted" "$work/got" || fail "events of act $n"
done
no_complaints
exit "$failed"
