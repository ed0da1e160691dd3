# What smartctl tells of one drive. Composed after common.sh.
# shellcheck disable=SC2016 # awk programs

# smart_status DEVICE [warn_reg=OK] [drop_warning=1]: one line
# health;serial;firmware;usb;rotation rate. usb is 1 behind an unknown USB
# bridge. With warn_reg a health text that goes on after that word counts as a
# predicted failure, as it always does after "PASSED"; drop_warning leaves out
# the line that says the result rests on an attribute check.
smart_status() {
    smart_device=$1
    shift
    {
        ask smartctl -i "$smart_device"
        part health
        ask smartctl -H "$smart_device"
    } | pick '
        function second(s) {
            if (!index(s, ":")) return s
            s = substr(s, index(s, ":") + 1)
            return index(s, ":") ? substr(s, 1, index(s, ":") - 1) : s
        }
        function gather(words) {
            if (index(tolower($0), words)) left[words] = 3
            if (left[words]-- > 0) said[words] = said[words] " " second($0)
        }
        function outcome(words, s) {
            s = said[words]
            gsub(/[ \t]+/, " ", s)
            return trim(s)
        }
        function classify(s) {
            if (s == "PASSED" || s == "OK") return "OK"
            if (index(s, "PASSED")) return "PredictiveFailureAnalysis"
            if (warn_reg != "" && index(s, warn_reg)) return "PredictiveFailureAnalysis"
            return s == "" ? "N/A" : "Fail"
        }
        $0 == "@health" { health_part = 1; next }
        !health_part && label($0) == "serial number" && serial == "" { serial = bare(tail($0, ":")) }
        !health_part && label($0) == "firmware version" && firmware == "" { firmware = bare(tail($0, ":")) }
        !health_part && label($0) == "rotation rate" && rotation == "" { rotation = bare(tail($0, ":")) }
        !health_part && index(tolower($0), "unknown usb bridge") { usb = 1 }
        !health_part { next }
        drop_warning && index($0, "Warning: This result is based on an Attribute check.") { next }
        { gather("test result"); gather("health status") }
        END {
            said_last = outcome("test result")
            if (said_last == "") said_last = outcome("health status")
            print classify(said_last) ";" serial ";" firmware ";" usb ";" rotation
        }' "$@"
}
