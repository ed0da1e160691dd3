#!/bin/sh
# The service script against a stand-in for rc.subr, the periodic script on logs of many days, what
# an installation brings against the list of the port, and the manual page under the linter.
set -u
source=$(cd "$(dirname "$0")/.." && pwd)
packaging=$source/packaging/freebsd
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
failed=0
expect() { # WHAT WANTED GOT
    [ "$2" = "$3" ] || { printf 'FAILED %s\nwanted: %s\ngot: %s\n' "$1" "$2" "$3"; failed=1; }
}

# ---- service script ----
cat >"$work/rc.subr" <<'SUBR'
load_rc_config() { . "$work/rc.conf"; }
load_kld() { echo "load $*"; [ -n "${no_bmc:-}" ] || : >"$work/ipmi0"; }
check_pidfile() { [ ! -f "$work/running" ] || echo 4711; }
warn() { echo "warn: $*"; }
sleep() { rm -f "$work/running"; }
kill() { echo "kill $*"; }
run_rc_command() {
    eval "cmd=\${$1_cmd:-\$command \$${name}_flags \$command_args} pre=\${$1_precmd:-}"
    case " start stop status $extra_commands " in *" $1 "*) ;; *) exit 64 ;; esac
    $pre && $cmd
}
SUBR
cat >"$work/agent" <<'AGENT'
#!/bin/sh
case "$2" in
status) echo "VYN is $agent_state" ;;
*) echo "agent $1 ${2%-service}${3:+ $3} $(which storcli-here) $TZ" ;;
esac
AGENT
mkdir "$work/bin" "$work/logs"
: >"$work/bin/storcli-here"
chmod +x "$work/agent" "$work/bin/storcli-here"
cat >"$work/rc.conf" <<CONF
vyn_program=$work/agent
vyn_flags=-x
vyn_env="TZ=UTC LANG=C"
CONF
sed "s|^\. /etc/rc\.subr|. $work/rc.subr|; s|/dev/ipmi|$work/ipmi|; s|/opt/norvik|$work/logs|
    s|/opt/MegaRAID/storcli|$work/bin|" "$packaging/vyn" >"$work/vyn"
export work agent_state=running
service() { sh "$work/vyn" "$1" 2>&1; }
has="$work/bin/storcli-here UTC"

expect 'start without a BMC' "load -e ipmi ipmi
warn: ipmi(4) finds no BMC here; vyn looks for one at the KCS ports.
agent -agent start -x $has" "$(no_bmc=1 service start)"
expect 'start loads the driver' "load -e ipmi ipmi
agent -agent start -x $has" "$(service start)"
expect 'start with the driver' "agent -agent start -x $has" "$(service start)"
expect 'status of a new host' '1 vyn is not running.
Last cycle: none' "$(said=$(service status); echo "$? $said")"
echo 'Time stamp -> 2026/02/01 10:20:30' >"$work/logs/vyn.log"
echo '[2026/01/31 01:00:00] one' >"$work/logs/vyn.err.log-20260131"
printf '[2026/02/01 0%s:00:00] Lan ->  %s\n' 1 two 2 three >"$work/logs/vyn.err.log-20260201"
: >"$work/running"
expect 'status of a running service' '0 vyn is running as pid 4711.
Last cycle: 2026/02/01 10:20:30
Last error: [2026/02/01 02:00:00] Lan ->  three' "$(said=$(service status); echo "$? $said")"
expect 'status of a paused service' '0 vyn is paused as pid 4711.' \
    "$(said=$(agent_state=pause service status); echo "$? $said" | head -n 1)"
expect pause "agent -agent pause $has" "$(service pause)"
expect resume "agent -agent resume $has" "$(service resume)"
expect 'stop by an operator' "agent -agent stop $has" "$(service stop)"
expect 'the stop waited' no "$([ -f "$work/running" ] && echo yes || echo no)"
: >"$work/running"
expect 'stop at shut-down' 'kill -TERM 4711' "$(rc_fast=yes service stop)"
grep -q '^# KEYWORD: shutdown$' "$packaging/vyn" || expect 'shut-down keyword' there missing

# ---- periodic script ----
sed "s|^folder=.*|folder=$work/logs|" "$packaging/periodic/500.vyn-logs" >"$work/periodic"
days_ago() { date -d "$1 days ago" "+$2" 2>/dev/null || date -v "-$1d" "+$2"; }
fill() {
    rm -f "$work/logs/"*
    for age in 0 1 29 32 400; do
        for log in err com; do
            touch -t "$(days_ago "$age" %Y%m%d%H%M)" \
                "$work/logs/vyn.$log.log-$(days_ago "$age" %Y%m%d)"
        done
    done
    for name in vyn.log vyn.ini vyn.hdd.ini starttime.log vyn.err.log-20260801x; do
        touch -t 200001010000 "$work/logs/$name"
    done
}
while read -r enable days status left; do
    fill
    daily_vyn_logs_enable=$enable daily_vyn_logs_days=$days sh "$work/periodic" >/dev/null 2>&1
    expect "periodic, $enable $days" "$status $left" "$? $(find "$work/logs" -type f | wc -l | tr -d ' ')"
done <<'RUNS'
yes 30 0 11
YES 10 0 9
no 30 0 15
YES soon 2 15
RUNS
fill
sh "$work/periodic" >/dev/null
expect 'what periodic leaves' "$(days_ago 29 %Y%m%d)" \
    "$(cd "$work/logs" && set -- vyn.com.log-* && echo "${1#vyn.com.log-}")"

# ---- installation ----
export CMAKE_GENERATOR=Ninja
cmake -S "$source" -B "$work/build" -DBUILD_TESTING=OFF -DVYN_INSTALL_FREEBSD=ON \
    -DCMAKE_INSTALL_PREFIX=/usr/local >"$work/said" 2>&1 || { cat "$work/said"; failed=1; }
: >"$work/build/IPMIVYN" # stands for the program
DESTDIR=$work/root cmake -P "$work/build/cmake_install.cmake" >/dev/null || failed=1
expect 'what is installed' "$(sed 's/^@sample \([^ ]*\).*/\1/; s/\.8\.gz$/.8/; s/^@dir //
    s|^[^/]|/usr/local/&|' "$packaging/port/pkg-plist" | sort)" \
    "$(cd "$work/root" && find . \( -type f -o -type d -empty \) | sed 's/^\.//' | sort)"
expect 'scripts that can be run' 2 "$(find "$work/root/usr/local/etc" -type f -perm -111 | wc -l | tr -d ' ')"

# By its list of files, as operations.md says.
: >"$work/root/opt/norvik/vyn.ini"
sed "s|^|$work/root|" "$work/build/install_manifest.txt" | xargs rm
expect 'what an uninstallation leaves' ./opt/norvik/vyn.ini "$(cd "$work/root" && find . -type f)"

cat >"$work/old-c++" <<'OLD'
#!/bin/sh
case " $* " in *++17* | *++1z*) exit 1 ;; esac
exec c++ "$@"
OLD
chmod +x "$work/old-c++"
cmake -S "$source" -B "$work/old" -DCMAKE_CXX_COMPILER="$work/old-c++" >"$work/said" 2>&1
expect 'a compiler without C++17' \
    '  This compiler has no C++17: see "FreeBSD 10" in docs/operations.md.' \
    "$(grep -A1 '^CMake Error' "$work/said" | tail -n 1)"

# ---- manual page ----
if command -v mandoc >/dev/null; then
    expect 'manual page' '' "$(mandoc -Tlint "$packaging/IPMIVYN.8" 2>&1)"
else
    echo 'manual page: no mandoc here'
fi
exit "$failed"
