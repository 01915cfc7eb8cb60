#!/usr/bin/env bash
# flash_test.sh PORTABLE MOUNT WINE: tarnwick-flash.exe under wine against the simulated mount of this system, whose
# terminal is COM5 there. The mount's memory judges what was written.
set -euo pipefail
portable=$1 mount=$2 wine=$3
com5=$WINEPREFIX/dosdevices/com5
. "$(dirname "$(realpath "$0")")/../support/mount.sh"
cd "$(mktemp -d)"
trap 'stop_mount; rm -rf "$PWD" "$com5"' EXIT
fail() { echo "FAILED: $*" >&2; tail -n 20 out err home/Tarnwick.log >&2; exit 1; }
cp -r "$portable" home

# ends STATUS TEXT ARGUMENT ...: flash, with nobody to be asked, ends so, and tells TEXT on the way.
ends() {
  local want=$1 text=$2 status=0
  shift 2
  "$wine" home/tarnwick-flash.exe "$@" </dev/null >out 2>err || status=$?
  [ "$status" = "$want" ] || fail "flash $* ends with $status instead of $want"
  grep -qF -- "$text" out err || fail "flash $* does not tell: $text"
}

ends 0 'Exit status: 0 done' --help
ends 2 'is no command' stätus
ends 5 'Error Opening COM7' status --port COM7
start_mount
ends 0 'COM5' ports
ends 0 'Vendral Corvane' status --port COM5
ends 0 'The package fits.' check MC_0512 --port COM5
ends 1 'Hex Line CheckSum Error at Line 33' check 'home\MotorControllers\MC_0513_DAMAGED.qal' --port COM5
before=$(ask dump 16)
ends 0 'AZM(RA) Motor: 5.12 written' program MC_0512 --port COM5
[ "$(ask dump 16)" != "$before" ] || fail "nothing was written"
[ "$(ask dump 16)" = "$(ask dump 17)" ] || fail "the memory is not that of the package"
written=$(ask dump 16)
ask power
ends 0 'Contents are Identical' verify MC_0512 --port COM5
ask poke 16 700 1
ends 3 'Found Difference at Address: 700' verify MC_0512 --port COM5

# The cable comes off in the midst; programming once more takes the run up.
start_mount
ask fault pull 3000 >out
ends 4 'Not lost. Check power and cable, and program the motor again' program MC_0512 --port COM5 --device azm --yes=restart
[ -e home/Tarnwick.log ] || fail "there is no record"
start_mount --state boot
ends 0 '5.12 written' program MC_0512 --port COM5 --yes=model
[ "$(ask dump 16)" = "$written" ] || fail "the second run leaves other words"
