#!/bin/sh
# What a command sees on a recorded host, and what it leaves behind.
set -u
here=$(cd "$(dirname "$0")" && pwd)
run=$here/../../hosts/run-host
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
host="$work/a host's"
mkdir -p "$host/bin" "$host/out" "$host/dev/raid" "$host/etc"
ln -s "$here/../../hosts/replay" "$host/bin/uname"
echo Recorded >"$host/out/uname"
echo 'nameserver 192.0.2.53' >"$host/etc/resolv.conf"
: >"$host/dev/ada0"
"$run" "$host" true
[ $? -ne 77 ] || exit 77

failed=0
check() { # label, wanted, got
    [ "$2" = "$3" ] || { echo "FAILED $1: wanted '$2', got '$3'"; failed=1; }
}
inside() { "$run" "$host" sh "$work/script" "$@" <"$work/input" 2>&1; }
: >"$work/input"

cat >"$work/script" <<'SCRIPT'
echo "$VYN_SIM_HOST|$(uname)|$(ls /opt/norvik /var/run/ | tr -d '\n')|$(cat /etc/resolv.conf)"
ls -d /dev/ada0 /dev/raid /dev/null /dev/urandom /dev/pts /dev/ipmi0 /dev/sda /dev/log 2>/dev/null | tr '\n' ' '
echo x >/dev/null && : >/dev/ada1 && rm /dev/ada0 && echo "dev changes"
SCRIPT
check 'what is there' "$host|Recorded|/opt/norvik:/var/run/:|nameserver 192.0.2.53
/dev/ada0 /dev/null /dev/pts /dev/raid /dev/urandom dev changes" "$(inside)"
check 'the recorded dev stays' ada0 "$(cd "$host/dev" && echo ada*)"

# Words with blanks, quotes and newlines arrive; input too; no other process shows them.
cat >"$work/script" <<'SCRIPT'
printf '<%s>' "$@" "$(cat)"
ps -x | grep -c "[S]ECRET"
[ "$PPID" -ne 1 ] && exit 9
SCRIPT
echo typed >"$work/input"
out=$(inside 'a  b' "it's" "\$HOME
SECRET")
check 'status' 9 $?
check 'words' "<a  b><it's><\$HOME
SECRET><typed>1" "$out"

# Orphans are reaped while the command runs and killed when it ends.
mkfifo "$work/alive"
cat >"$work/script" <<'SCRIPT'
(sh -c 'exit 0' & exec sleep 0.1) &
wait
(exec sleep 600 >"$1") &
while ps -x | grep -q '[d]efunct'; do sleep 0.05; done
ipcmk -M 32 >/dev/null && echo note >/opt/norvik/kept
SCRIPT
segments=$(wc -l </proc/sysvipc/shm)
(VYN_KEEP=$work/keep inside "$work/alive" >"$work/out") &
cat "$work/alive" # ends when the sleeper is gone
wait
check 'orphans' '' "$(cat "$work/out")"
check 'kept' note "$(cat "$work/keep/kept")"
check 'shared memory of its own' "$segments" "$(wc -l </proc/sysvipc/shm)"

# Killing run-host kills what runs inside, in whatever way it is killed.
cat >"$work/script" <<'SCRIPT'
echo up >"$1"
exec sleep 600 >"$1"
SCRIPT
for signal in TERM KILL; do
    "$run" "$host" sh "$work/script" "$work/alive" 2>/dev/null &
    pid=$!
    { read -r up && kill -s "$signal" "$pid" && cat; } <"$work/alive"
    check "up before $signal" up "$up"
    wait "$pid" 2>/dev/null
done
TMPDIR=$work/none "$run" "$host" true 2>/dev/null && { echo 'FAILED: ran without a working folder'; failed=1; }
exit "$failed"
