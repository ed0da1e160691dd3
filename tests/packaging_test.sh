#!/bin/sh
# The service script against a stand-in for rc.subr, the periodic script on a folder of old logs,
# and the manual page under the linter.
set -u
here=$(cd "$(dirname "$0")" && pwd)
packaging=$here/../packaging/freebsd
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
failed=0
expect() { # WHAT WANTED GOT
    [ "$2" = "$3" ] || { printf 'FAILED %s\nwanted: %s\ngot: %s\n' "$1" "$2" "$3"; failed=1; }
}

cat >"$work/rc.subr" <<'SUBR'
load_rc_config() { . "$work/rc.conf"; }
check_pidfile() { [ ! -f "$work/running" ] || echo 4711; }
warn() { echo "warn: $*"; }
sleep() { rm -f "$work/running"; }
kill() { echo "kill $*"; }
run_rc_command() {
    eval "cmd=\${$1_cmd:-\$command \$command_args}"
    case $1 in start | stop | status) ;; *) case " $extra_commands " in *" $1 "*) ;; *) exit 64 ;; esac ;; esac
    $cmd
}
SUBR
cat >"$work/agent" <<'AGENT'
#!/bin/sh
echo "agent $* $(case $PATH in */usr/local/sbin*) echo local ;; esac)"
AGENT
chmod +x "$work/agent"
echo "vyn_program=$work/agent" >"$work/rc.conf"
sed "s|^\. /etc/rc\.subr|. $work/rc.subr|" "$packaging/vyn" >"$work/vyn"
export work
service() { sh "$work/vyn" "$1" 2>&1; }

expect start 'agent -agent start-service local' "$(service start)"
expect 'status without daemon' 'vyn is not running.' "$(service status)"
: >"$work/running"
expect status 'vyn is running as pid 4711.
agent -agent status local' "$(service status)"
expect pause 'agent -agent pause-service local' "$(service pause)"
expect resume 'agent -agent resume-service local' "$(service resume)"
expect 'stop by an operator' 'agent -agent stop-service local' "$(service stop)"
expect 'the stop waited' no "$([ -f "$work/running" ] && echo yes || echo no)"
: >"$work/running"
expect 'stop at shut-down' 'kill -TERM 4711' "$(rc_fast=yes service stop)"
grep -q '^# KEYWORD: shutdown$' "$packaging/vyn" || expect 'shut-down keyword' there missing

mkdir "$work/logs"
for name in vyn.err.log-20260101 vyn.com.log-20260101 vyn.err.log-20260801x vyn.log vyn.ini; do
    touch -d '40 days ago' "$work/logs/$name" 2>/dev/null || touch -t 202601010000 "$work/logs/$name"
done
touch "$work/logs/vyn.err.log-20991231"
sed "s|^folder=.*|folder=$work/logs|" "$packaging/periodic/500.vyn-logs" >"$work/periodic"
sh "$work/periodic" >/dev/null || expect 'periodic status' 0 $?
expect 'what periodic leaves' 'vyn.err.log-20260801x vyn.err.log-20991231 vyn.ini vyn.log' \
    "$(cd "$work/logs" && echo *)"

if command -v mandoc >/dev/null; then
    expect 'manual page' '' "$(mandoc -Tlint "$packaging/IPMIVYN.8" 2>&1)"
else
    echo 'manual page: no mandoc here'
fi
exit "$failed"
