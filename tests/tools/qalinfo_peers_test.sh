#!/usr/bin/env bash
# qalinfo_peers_test.sh QALINFO PACKAGE...: the image of each package's first device beside those that other
# tools make of the same hex lines. Ends with 77 when one of them is not installed.
set -euo pipefail
qalinfo=$1
cd "$(mktemp -d)"
trap 'rm -rf "$PWD"' EXIT
for peer in objcopy srec_cat; do
  command -v "$peer" >/dev/null || { echo "SKIPPED: $peer is not installed."; exit 77; }
done
binary() { srec_cat -disable-sequence-warnings "$@" -o /dev/stdout -binary 2>/dev/null; }

for package in "${@:2}"; do
  "$qalinfo" --dump 1 "$package" >dump.hex
  grep '^:' "$package" >plain.hex
  for file in dump plain; do objcopy -I ihex -O binary $file.hex $file.bin; done
  cmp dump.bin <(binary dump.hex -intel)
  # What no line gives is 0 to one, nothing to the other and filled up by us.
  cmp plain.bin <(binary '(' dump.hex -intel -crop -within plain.hex -intel ')' -fill 0 0 "$(stat -c %s plain.bin)")
  cmp dump.bin <(binary plain.hex -intel -generate 0 "$(stat -c %s dump.bin)" -repeat-data 0xFF 0x3F \
    -exclude -within plain.hex -intel)
done
