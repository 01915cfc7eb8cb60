#!/usr/bin/env bash
# site_test.sh TARNWICK_SITE PORTABLE: the catalogue that is made, the same twice, and what is refused.
set -euo pipefail
tool=$1 packages=$2/MotorControllers
cd "$(mktemp -d)"
trap 'rm -rf "$PWD"' EXIT
fail() { echo "FAILED: $*" >&2; exit 1; }

mkdir -p src/MotorControllers src/Accessories
cp "$packages/MC_0512.qal" "$packages/MCM_0730.qal" src/MotorControllers/
cp "$2/Accessories/FOCUS_0104.qal" 'src/Accessories/Focus (1).QAL'
printf ' first \n\nlast\n\n' >src/MotorControllers/MCM_0730.txt
"$tool" build src one >out
"$tool" build src two >out
diff -r one two
size() { stat -c %s "$1"; }
printf '%s\r\n' "@MCM_0730.qal,2024-03-05,$(size one/MCM_0730.qal)" first '' last \
  "@MC_0512.qal,2024-03-05,$(size one/MC_0512.qal)" 'Model: CORVANE' 'Version: 5.12' 'Comments: Motor control 5.12' \
  "%Focus (1).QAL,2024-03-05,$(size 'one/Focus (1).QAL')" 'Model: FOCUSER' 'Version: 1.04' >want
printf 'Comments: Focuser 1.04' >>want
cmp want one/list.txt

# refused WHAT NAME: with src/NAME the tool complains of WHAT, and the site stays as it is.
refused() {
  "$tool" build src one >out 2>err && fail "$2 was published"
  grep -qF -- "$1" err || fail "no '$1' in: $(<err)"
  cmp want one/list.txt
  rm "src/$2"
}
good=$packages/MC_0512.qal
cp "$packages/MC_0513_DAMAGED.qal" src/MotorControllers/ && refused 'CheckSum Error at line 33' MotorControllers/MC_0513_DAMAGED.qal
for name in 'a,b.qal' 'a%b.qal' .a.qal con.qal; do
  cp "$good" "src/Accessories/$name" && refused 'takes no file of this name' "Accessories/$name"
done
cp "$good" src/Accessories/mc_0512.qal && refused 'another file of this name' Accessories/mc_0512.qal
echo x >src/Accessories/readme && refused 'neither a package nor the note of one' Accessories/readme
echo '  $5 off' >src/MotorControllers/MC_0512.txt && refused 'begins with "$"' MotorControllers/MC_0512.txt
