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
  "@MC_0512.qal,2024-03-05,$(size one/MC_0512.qal)" 'Model: CORVANE' 'Version: 5.12' 'Comments: Simulated mount only: Motor control 5.12' \
  "%Focus (1).QAL,2024-03-05,$(size 'one/Focus (1).QAL')" 'Model: FOCUSER' 'Version: 1.04' >want
printf 'Comments: Simulated mount only: Focuser 1.04' >>want
cmp want one/list.txt

# refused WHAT NAME: with src/NAME the tool complains of WHAT, and the site stays as it is.
refused() {
  "$tool" build src one >out 2>err && fail "$2 was published"
  grep -qF -- "$1" err || fail "no '$1' in: $(<err)"
  cmp want one/list.txt
  rm "src/$2"
}
good=$packages/MC_0512.qal
cp "$packages/MC_0513_DAMAGED.qal" src/MotorControllers/
refused 'CheckSum Error at line 33' MotorControllers/MC_0513_DAMAGED.qal
for name in 'a,b.qal' 'a%b.qal' .a.qal con.qal; do
  cp "$good" "src/Accessories/$name"
  refused 'takes no file of this name' "Accessories/$name"
done
cp "$good" src/Accessories/mc_0512.qal
refused 'another file of this name' Accessories/mc_0512.qal
sed 's/MODELNUMBER=5/MODELNUMBER=0/' "$good" >src/Accessories/a.qal
refused 'a.qal: line 8: the MODELNUMBER 0 is that of no mount' Accessories/a.qal
echo x >src/Accessories/readme
refused 'neither a package nor the note of one' Accessories/readme
printf 'for \303\251toiles\n' >src/MotorControllers/MC_0512.txt
refused 'line 1: UTF-8' MotorControllers/MC_0512.txt
printf '<html>\nUnauthorised copies\n' >src/MotorControllers/MC_0512.txt
refused 'MC_0512.qal: line 2 of its note' MotorControllers/MC_0512.txt
mkdir src/Motorcontrollers
"$tool" build src one 2>err && fail "a misspelt folder was passed over"
grep -q 'Motorcontrollers: not one of' err
rmdir src/Motorcontrollers
echo '  $5 off' >src/MotorControllers/MC_0512.txt
refused 'begins with "$"' MotorControllers/MC_0512.txt

# A release: program and library with one key, the list above all rows, a signature line behind each file.
mkdir -p src/Program
echo program >src/Program/Tarnwick.EXE
echo library >src/Program/Tarnwick.DLL
printf 'Tarnwick.EXE, 2.2.5\nTarnwick.DLL, 2.2.5\n' >src/Program/versions.txt
"$tool" keygen keys
"$tool" keygen other
pub=$(<keys/update.pub)
# faulty WHAT OPTION ...: the release is refused because of WHAT, which tells no key.
faulty() {
  "$tool" build "${@:2}" src one >out 2>err && fail "published: ${*:2}"
  grep -qF -- "$1" err || fail "no '$1' in: $(<err)"
  ! grep -q '[0-9a-f]\{64\}' err || fail "a key was told"
  cmp want one/list.txt
}
faulty 'with a key alone'
faulty 'not that of the public key' --key keys/update.key --public-key other/update.pub
faulty 'no public key' --key keys/update.key --public-key 1234
faulty 'no public key' --key keys/update.key --public-key "$(<keys/update.key)"
faulty 'no secret key' --key keys/update.pub
sed 's/.\{64\}$//' keys/update.key | tr -d '\n' | cat - other/update.pub >halves
faulty 'no secret key' --key halves
mv src/Program/Tarnwick.DLL .
sed -i 2d src/Program/versions.txt
faulty 'one link library' --key keys/update.key
mv Tarnwick.DLL src/Program
echo 'Tarnwick.DLL, 2.2.5' >>src/Program/versions.txt
"$tool" build --key keys/update.key --public-key "$pub" --next-key other/update.pub --system plan9-mips src one >out
digest() { sha256sum <"one/$1" | cut -d' ' -f1; }
printf '%s\r\n' 'tarnwick release 1' 'version 2.2.5' 'system plan9-mips' \
  "library 2.2.5 $(size one/Tarnwick.DLL) $(digest Tarnwick.DLL) Tarnwick.DLL" \
  "program 2.2.5 $(size one/Tarnwick.EXE) $(digest Tarnwick.EXE) Tarnwick.EXE" "next $(<other/update.pub)" >list
head -n 6 one/list.txt | cmp - list
sed -n '7s/^\(signature \).*/\1/p; 8,9s/,.*//p' one/list.txt | diff - <(printf 'signature \n$Tarnwick.DLL\n$Tarnwick.EXE\n')
# The packages too, behind their content, which stays; a signature that was there goes.
size=$(size src/MotorControllers/MC_0512.qal)
head -c "$size" one/MC_0512.qal | cmp - src/MotorControllers/MC_0512.qal
tail -c +$((size + 1)) one/MC_0512.qal | tr '\n' '|' | grep -qx '|<!-- tarnwick package [A-Za-z0-9+/]\{86\}== -->|' ||
  fail "no signature"
grep -q "@MC_0512.qal,2024-03-05,$(size one/MC_0512.qal)" one/list.txt || fail "another size than the file's"
cp one/MC_0512.qal src/MotorControllers/
"$tool" build --key keys/update.key --system plan9-mips src three >out
cmp one/MC_0512.qal three/MC_0512.qal
tail -n 1 one/Tarnwick.EXE | grep -q '^<!-- tarnwick signature .* -->$' || fail "no line for older readers"

# What a failed attempt left is mended, a key that is there stays.
before=$(<keys/update.key)
"$tool" keygen keys 2>err && fail "a key was replaced"
rm keys/update.pub
"$tool" keygen keys
[ "$(<keys/update.pub)" = "$pub" ] && [ "$(<keys/update.key)" = "$before" ] || fail "the public half was not mended"
mkdir -p left
echo half >left/update.pub
"$tool" keygen left
"$tool" check-key left/update.pub
