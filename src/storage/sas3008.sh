# Records of one SAS3008 controller out of "sas3ircu N display". Composed after
# common.sh.
# shellcheck disable=SC2016 # awk programs

# Sizes: lines "MB hundredths" for every size in MB the display on standard
# input tells, a hundredth being 1/100 of MB/1024.
display_sizes() {
    pick '
        index(label($0), "size (in mb)") == 1 {
            mb = head(tail($0, ":") "/", "/")
            if (number(mb)) print "\"" mb " \"\n" mb "*100/1024"
        }' | calculate
}

# display_records MAPPING_INDEX NUMBER VOLUMES: the records of the display on
# standard input, after the lines of display_sizes and a line "@display". The
# last line is VOLUMES plus the number of volumes met. Every value is taken by
# its label within its own volume or device, blanks removed. Members are those
# under the title "IR volume n", n counting through all controllers of a run.
display_records() {
    pick '
        function quotient(mb, q) {
            q = hundredths[mb]
            if (q == "") return ""
            while (length(q) < 3) q = "0" q
            return substr(q, 1, length(q) - 2) "." substr(q, length(q) - 1)
        }
        function uncoded(s) { return index(s, "(") ? head(s, "(") : s }
        function controller_record() {
            if (told++ || (raid != "Yes" && raid != "No")) return
            print (raid == "Yes" ? "BRCM_IR_CNTL" : "BRCM_II_CNTL") ";" controller ";" index_number ";" \
                type ";" bios ";" firmware ";" channel
        }
        function volume_health(state) {
            if (index(state, ",")) state = tail(state, ",")
            if (state == "Okay" || state == "Online" || state == "Initializing") return "OK"
            if (state == "Degraded") return "PredictiveFailureAnalysis"
            return state == "Failed" ? "Fail" : state == "Missing" ? "Miss" : "N/A"
        }
        function volume_records(i) {
            controller_record()
            for (i = 1; raid == "Yes" && i <= met; i++) volume_record(i)
            met = 0
        }
        function volume_record(i, text) {
            text = "BRCM_IR_VD;" (number(id[i]) ? 323 - id[i] : "") ";" controller "-" id[i] ";" \
                volume_health(uncoded(status[i])) ";" uncoded(status[i]) ";" level[i] ";"
            volumes++
            if (level[i] == "Unknown") print text ";"
            else print text quotient(size[i]) ";" members[volumes]
        }
        function drive_health(state) {
            if (state == "Optimal" || state == "Online" || state == "HotSpare" || state == "Ready") return "OK"
            if (state == "Degraded") return "PredictiveFailureAnalysis"
            if (state == "Failed") return "Fail"
            return (state == "Missing" || state == "Standby") ? state : "N/A"
        }
        function drive_record(state, model) {
            if (("slot#" in of) && !index(device, "enclosure services") && (raid == "Yes" || raid == "No")) {
                state = uncoded(of["state"])
                model = of["manufacturer"] " " of["model number"]
                print (raid == "Yes" ? "BRCM_IR_PD" : "BRCM_IT_PD") ";" drives++ ";N/A:" drive_health(state) ":" \
                    state ":" of["serial no"] ":" of["firmware revision"] ";C" controller "E" of["enclosure#"] \
                    "S" of["slot#"] ";" kind(of["drive type"]) ";N/A;" (model == " " ? "" : model) ";" \
                    quotient(head(of["size (in mb)/(in sectors)"] "/", "/"))
            }
            split("", of)
            device = ""
        }
        function kind(s) { return index(s, "_") ? tail(s, "_") : s }
        section == "" && $0 == "@display" { section = "display"; next }
        section == "" { hundredths[$1] = $2; next }
        { title = tolower(trim($0)); name = label($0); value = solid(tail($0, ":")) }
        title == "controller information" { section = "controller"; next }
        title == "ir volume information" { controller_record(); section = "volume"; next }
        title == "physical device information" { volume_records(); section = "drive"; next }
        title == "enclosure information" { drive_record(); section = "end"; next }

        section == "controller" && name == "controller type" { type = value }
        section == "controller" && name == "bios version" { bios = value }
        section == "controller" && name == "firmware version" { firmware = value }
        section == "controller" && name == "raid support" { raid = value }
        section == "controller" && name == "channel description" { channel = bare(tail($0, ":")) }

        section == "volume" && title ~ /^ir volume [0-9]+$/ { block = substr(title, 11) + 0 }
        section == "volume" && name == "volume id" { id[++met] = value }
        section == "volume" && name == "status of volume" { status[met] = value }
        section == "volume" && name == "raid level" { level[met] = value }
        section == "volume" && name == "size (in mb)" { size[met] = value }
        section == "volume" && name ~ /enclosure#\/slot#$/ {
            place = tail($0, ":")
            members[block] = members[block] (members[block] == "" ? "" : ",") \
                "C" controller "E" solid(head(place ":", ":")) "S" solid(tail(place, ":"))
        }
        section == "drive" && title ~ /^device is an? / { drive_record(); device = title; next }
        section == "drive" && name == "enclosure#" && ("enclosure#" in of || device == "") { drive_record(); device = "drive" }
        section == "drive" && name != "" && !(name in of) { of[name] = value }
        END { volume_records(); drive_record(); print volumes }' controller="$1" index_number="$2" volumes="$3"
}

# sas3008_list: sas3ircu numbers of the SAS3008 controllers.
sas3008_list() {
    ask sas3ircu list | pick 'number($1) && $2 ~ /3008/ && !seen[$1]++ { print $1 }'
}

# sas3008_records LIST: the records of these controllers.
sas3008_records() {
    c_mapping_index=0
    volumes_met=0
    while IFS= read -r controller; do
        display=$(ask sas3ircu "$controller" display | printable)
        records=$(
            {
                printf '%s\n' "$display" | display_sizes
                printf '@display\n%s\n' "$display"
            } | display_records "$c_mapping_index" "$controller" "$volumes_met"
        )
        volumes_met=${records##*[!0-9]}
        printf '%s' "${records%"$volumes_met"}"
        c_mapping_index=$((c_mapping_index + 1))
    done <<EOF
$1
EOF
}
