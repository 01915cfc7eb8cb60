#!/usr/bin/env bash
# flash_test.sh PORTABLE MOUNT: tarnwick-flash against the simulated mount, through each of its exit statuses. The
# mount's memory judges what was written.
set -euo pipefail
portable=$1 mount=$2 here=$(cd "$(dirname "$0")" && pwd)
cd "$(mktemp -d)"
trap 'stop_mount; rm -rf "$PWD"' EXIT
fail() { echo "FAILED: $*" >&2; tail -n 20 out err >&2; exit 1; }
cp -r "$portable" home
mkdir -p home/ports
. "$here/../support/mount.sh"
flash=home/tarnwick-flash package=home/MotorControllers/MC_0512.qal

# ends STATUS TEXT ARGUMENT ...: flash, with nobody to be asked, ends so, and tells TEXT on the way.
ends() {
  local want=$1 text=$2 status=0
  shift 2
  "$flash" "$@" <"${input:-/dev/null}" >out 2>err || status=$?
  [ "$status" = "$want" ] || fail "flash $* ends with $status instead of $want"
  grep -qF -- "$text" out err || fail "flash $* does not tell: $text"
}

ends 0 'Exit status: 0 done' --help
ends 0 'tarnwick-flash ' --version
for program in "$portable/Tarnwick" "$mount"; do
  [ "$("$program" --version)" = "$(basename "$program") ${version:=$("$flash" --version | cut -d' ' -f2)}" ] || fail "$program --version"
done
told=$(env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM= "$portable/Tarnwick" 2>&1) && fail "a window without a display"
[[ $told == *tarnwick-flash* ]] || fail "what has no display does not name tarnwick-flash"
ends 2 'A command is missing'
ends 2 'is no command' "$(printf 'sta\033[2Jtus')"
! grep -q $'\033' err || fail "an argument steers the terminal"
for wrong in 'status more' check 'check a b' 'program a --yes=all' 'program a --device east' '--port' 'list --all'; do
  ends 2 'Try tarnwick-flash --help' $wrong
done
ends 0 '' ports
ends 5 'Error Opening COM7' status --port COM7
ends 6 'Unable to connect' list
grep -q MC_0512 out || fail "the packages that are here are not listed"
ends 6 'Unable to connect' fetch

# One that was replaced before it got to the folder goes on as the new one, with what it was asked.
python3 -c 'import fcntl, time
lock = open("home/WebUpdate.lock", "a+")
fcntl.lockf(lock, fcntl.LOCK_EX)
time.sleep(1)' &
sleep 0.4
"$flash" ports >out 2>err &
replaced=$!
sleep 0.3
cp "$flash" new && mv new "$flash"
wait $replaced || fail "a replaced program forgot what it was asked"

start_mount
ends 0 'Vendral Corvane' status --port COM5
ends 0 'The package fits.' check MC_0512 --port "$PWD/home/ports/COM5"
ends 1 'Hex Line CheckSum Error at Line 33' check "home/MotorControllers/MC_0513_DAMAGED.qal" --port COM5
ends 1 'QAL File Not Found' program nowhere.qal --port COM5
{ cat "$package" && printf '\n<!-- tarnwick package cut'; } >home/MotorControllers/ALTERED.qal
ends 1 '--yes=altered answers Yes' check ALTERED --port COM5
ends 0 'The package fits.' check ALTERED --port COM5 --yes=altered
rm home/MotorControllers/ALTERED.qal
ends 1 'The package holds nothing for that device' program MC_0512_AZM --device alt --port COM5
before=$(ask dump 17)
ends 0 'AZM(RA) Motor: 5.12 written' program MC_0512 --device azm --port COM5
[ "$(ask dump 17)" = "$before" ] || fail "a motor was written that was not chosen"
ask power
# The computer is kept awake meanwhile, where it has a program for that.
mkdir awake
printf '#!/bin/sh\necho "$*" >>%q\nexec cat\n' "$PWD/held" >awake/systemd-inhibit
chmod +x awake/systemd-inhibit
PATH=$PWD/awake:$PATH input=$package ends 0 'AZM(RA) Motor: 5.12 written' program - --port COM5 --json
[ "$(ask dump 16)" = "$(ask dump 17)" ] || fail "the memory is not that of the package"
python3 -c 'import json, sys
lines = [json.loads(line) for line in open("out")]
assert lines[-1] == {"event": "end", "exit": 0}, lines[-1]
assert [l["end"] for l in lines if l["event"] == "outcome"] == ["written", "written"]' || fail "its JSON"
[ ! -e home/Tarnwick.unfinished ] || fail "a note stands of a run that ended"
ask power
PATH=$PWD/awake:$PATH ends 0 'Contents are Identical' verify MC_0512 --port COM5
lock='--what=shutdown:sleep:idle:handle-lid-switch --mode=block --who=Tarnwick --why=Working on the telescope mount cat'
[ "$(<held)" = "$lock"$'\n'"$lock" ] || fail "the computer may sleep within a run: $(<held)"
ask poke 16 700 1
ends 3 'Found Difference at Address: 700' verify MC_0512 --port COM5 --json
python3 -m json.tool --json-lines out >/dev/null || fail "its JSON"

# What nobody is there to answer is declined, and said; the option that names the question answers it.
start_mount --state boot
ends 1 '--yes=model answers Yes' program MC_0512 --port COM5 --yes=boot-loader,restart
ends 0 '5.12 written' program MC_0512 --port COM5 --yes=model

# What is tried again has its bound, and a command tells no one to stay on a page.
start_mount
ask fault pull 3000 >out
ends 4 'Not lost. Check power and cable, and program the motor again' program MC_0512 --port COM5 --device azm --yes=restart
! grep -q 'page' out err || fail "an advice for those who have a page before them"
start_mount
ends 0 '5.12 written' program MC_0512 --port COM5 --device azm
ask power
ask fault pull 600 >out
ends 5 'Verify Cancelled by User' verify MC_0512_AZM --port COM5 --yes=retry

# Ended in the midst: the device needs another run, and record and note say so. A terminal that goes stops nothing.
for signal in TERM HUP; do
  start_mount --line paced=on --baud 115200
  "$flash" program MC_0512 --port COM5 --device azm </dev/null >out 2>err &
  until tail -n 1 home/Tarnwick.log | grep -q "writing: "; do sleep 0.05; done
  kill "-$signal" $!
  status=0
  wait $! || status=$?
  if [ "$signal" = HUP ]; then
    [ "$status" = 0 ] || fail "SIGHUP ends a run with $status"
  else
    [ "$status" = 4 ] || fail "SIGTERM ends a run with $status"
    tail -n 5 home/Tarnwick.log | grep -q 'stopped at' || fail "the record does not tell"
    ends 0 'was begun and not ended' ports
    cp home/Tarnwick.unfinished note
    ends 0 'There is no such note' forget --device alt
    [ -e home/Tarnwick.unfinished ] || fail "the note of another motor is gone"
    ends 0 'AZM(RA) Motor: forgotten' forget
    [ ! -e home/Tarnwick.unfinished ] || fail "a note stands that was to be forgotten"
    mv note home/Tarnwick.unfinished
    ends 0 '5.12 written' program MC_0512 --port COM5 --device azm --yes=model
  fi
  [ ! -e home/Tarnwick.unfinished ] || fail "a note stands of a motor that is written"
done

# With a terminal: the person answers; Ctrl-C asks first; a terminal that goes away in the midst stops nothing.
start_mount --line paced=on --baud 115200
python3 "$here/at_terminal.py" "$flash" || fail "at a terminal"
