# Controllers, volumes and drives of the RAID cards named in the configuration.
# Composed after common.sh and storcli.sh.
# shellcheck disable=SC2016,SC2154 # awk programs and awk_table of storcli.sh

configuration=/opt/norvik/vyn.ini

# card_pattern: the text between the quotes of the setting raidCards.
card_pattern() {
    ask cat "$configuration" | pick '
        head($0, "=") == "raidCards" && text == "" {
            text = head(tail($0, "=") "=", "=")
            gsub(/;/, "", text)
            gsub(/[ \t]+/, " ", text)
            text = trim(text)
            sub(/^"/, "", text)
            sub(/"$/, "", text)
        }
        END { print text }'
}

# card_rows: of "storcli /cN show" on standard input, one line each:
# C;channel description;BIOS;firmware;type  V;number;level;state;size
# P;enclosure;slot;state;size;medium
card_rows() {
    pick "$awk_table"'
        function joined(s) { s = bare(s); gsub(/ /, "_", s); return s }
        function note(name, s) { if (!(name in said)) said[name] = s; known = 1 }
        { name = head($0, " =") }
        name == "Device Interface" || name == "BIOS Version" || name == "FW Version" || name == "Product Name" {
            note(name, joined(tail($0, "=")))
        }
        row && title == "VD LIST" && cell("DG/VD") ~ /[0-9]\/[0-9]/ && !seen[cell("DG/VD")]++ {
            line[++lines] = "V;" bare(tail(cell("DG/VD"), "/")) ";" bare(cell("TYPE")) ";" \
                bare(cell("State")) ";" bare(cell("Size"))
        }
        row && title == "PD LIST" && cell("EID:Slt") ~ /[0-9]:[0-9]/ && !seen[cell("EID:Slt")]++ {
            line[++lines] = "P;" head(cell("EID:Slt"), ":") ";" bare(tail(cell("EID:Slt"), ":")) ";" \
                bare(cell("State")) ";" bare(cell("Size")) ";" bare(cell("Med"))
        }
        END {
            if (known) print "C;" said["Device Interface"] ";" said["BIOS Version"] ";" \
                said["FW Version"] ";" said["Product Name"]
            for (i = 1; i <= lines; i++) if (line[i] ~ /^V/) print line[i]
            for (i = 1; i <= lines; i++) if (line[i] ~ /^P/) print line[i]
        }'
}

# volume_record CARD NUMBER LEVEL STATE SIZE
volume_record() {
    status=OK
    case $4 in
    *Rec* | *OfLn* | *Optl* | *dflt*) ;;
    *Dgrd* | *Pdgd*) status=PredictiveFailureAnalysis ;;
    esac
    IFS=';' read -r name members <<EOF
$(ask storcli "/c$1/v$2" show all | pick "$awk_table"'
    head($0, " =") == "OS Drive Name" && name == "" { name = bare(tail($0, "=")) }
    row && title ~ /^PDs for VD/ && cell("EID:Slt") ~ /:/ && !seen[cell("EID:Slt")]++ {
        members = members (members == "" ? "" : ",") \
            "C" card "E" head(cell("EID:Slt"), ":") "S" bare(tail(cell("EID:Slt"), ":"))
    }
    END { print name ";" members }' card="$1")
EOF
    printf '%s\n' "BRCM_IR_VD;$2;$name;$status;$4;$3;$5;$members"
}

# drive_record CARD ENCLOSURE SLOT STATE SIZE MEDIUM
drive_record() {
    health=OK
    case $4 in
    UBad | UBUnsp) health=Fail ;;
    esac
    IFS=';' read -r serial model wwn firmware <<EOF
$(ask storcli "/c$1/e$2/s$3" show all | pick '
    { name = head($0, " =") }
    name ~ /^(SN|Model Number|WWN|Firmware Revision)$/ && !(name in said) {
        said[name] = bare(tail($0, "="))
        gsub(/ /, "_", said[name])
    }
    END { print said["SN"] ";" said["Model Number"] ";" said["WWN"] ";" said["Firmware Revision"] }')
EOF
    printf '%s\n' "BRCM_IR_PD;$p_mapping_index;$wwn:$health:$4:$serial:$firmware;C$1E$2S$3;$6;N/A;$model;$5"
    p_mapping_index=$((p_mapping_index + 1))
}

# card_records CARD
card_records() {
    p_mapping_index=0
    while IFS=';' read -r kind a b c d e; do
        case $kind in
        C)
            printf '%s\n' "BRCM_IR_CNTL;$c_mapping_index;$1;$d;$b;$c;$a"
            c_mapping_index=$((c_mapping_index + 1))
            ;;
        V) volume_record "$1" "$a" "$b" "$c" "$d" ;;
        P) drive_record "$1" "$a" "$b" "$c" "$d" "$e" ;;
        esac
    done <<EOF
$(ask storcli "/c$1" show | card_rows)
EOF
}

# The first card carries no mapping index, the next ones 1, 2, ...
c_mapping_index=
pattern=$(card_pattern)
[ -n "$pattern" ] || exit 0
for card in $(storcli_controllers "$(ask storcli show | printable)" "$pattern"); do
    card_records "$card"
done
exit 0
