#!/usr/bin/env bash
# qalinfo_test.sh QALINFO PORTABLE: what qalinfo prints and how it ends.
set -euo pipefail
qalinfo=$1 sample=$2/MotorControllers/MC_0512.qal damaged=$2/MotorControllers/MC_0513_DAMAGED.qal
cd "$(mktemp -d)"
trap 'rm -rf "$PWD"' EXIT
fail() { echo "FAILED: $*" >&2; exit 1; }
# expect STATUS ARGUMENT ...: runs qalinfo, with its output in out.
expect() {
  local want=$1 status=0
  "$qalinfo" "${@:2}" >out 2>err || status=$?
  [ "$status" = "$want" ] || fail "qalinfo ${*:2} ends with $status instead of $want"
}

for wrong in '' --json --strict --dump '--dump 1' "--dump 0 $sample" "--dump 1x $sample" "--dump 3 $sample" \
  "--dump 1 $sample $sample" "--json --dump 1 $sample" "--strict --dump 1 $sample" "--all $sample"; do
  expect 2 $wrong
  [ -s err ] && [ ! -s out ] || fail "qalinfo $wrong has to complain"
done
expect 1 "$sample" "$damaged" missing.qal
for told in 'Comments  *Simulated mount only: Motor control 5.12' 'record id MC_0512, version 5.12, 1024 words, 16 of them padded' \
  'No errors' '  Remark: line 10: 16 words inside the image of device 1 (AZM MOTOR) .* word 160: they are padded' 'Error 4 : Hex Line CheckSum Error at Line 33' 'Error 1 : QAL File Not Found at Line 0'; do
  grep -q "$told" out || fail "no '$told' in: $(<out)"
done
expect 0 - <"$sample"
grep -q 'record id MC_0512' out && ! grep -q 'file.s name is' out || fail "standard input: $(<out)"
expect 0 "$sample"
expect 1 --strict "$sample"
expect 1 --dump 1 "$damaged"
[ ! -s out ] || fail "an image of a damaged package"
"$qalinfo" "$sample" >/dev/full 2>err && fail "output that cannot be written goes unnoticed"

printf 'HWREV=5, 6\r\nCOMMENTS=\x80 "\\\x01\xe4\r\nMODELNUMBER=-0\r\nFILEVER=12\r\n' >odd.qal
printf '%s\r\n' 'DEVICE_ADDRESS_VERSION=a, 1, b0407' START_HEX=B0407 :040000003132333432 >>odd.qal
cat >told <<'END'
{"file":"odd.qal","errors_found":false,"last_error":0,"last_error_message":"","last_error_line":0,"file_version":1.2,"filename":"","file_date":"","comments":"€ \"\\\u0001ä","model_number":0,"model_name":"","hwrev":"5, 6","hwrev_values":[5,6],"devices":[{"name":"a","address":1,"record_id":"B0407","version":4.07,"words":3,"padded":2,"crc32":"CRC"}],"remarks":[{"line":3,"harmful":true,"what":"the MODELNUMBER 0 is that of no mount"},{"line":5,"harmful":true,"what":"no mount has a device at the address \"1\"; they are 16 to 19"},{"line":6,"harmful":true,"what":"the block \"B0407\" is left open: END_HEX is missing"}]}
END
expect 0 --json -- odd.qal
crc=$(printf '1234\xff\x3f\xff\x3f' | gzip -c | tail -c 8 | head -c 4 | od -An -tx4 | tr -d ' ')
sed "s/CRC/$crc/" told | cmp - out
