#!/usr/bin/env bash
# The files for the desktop are valid, and the script beside the program puts an entry into the menu that
# starts the program from any folder, and takes everything away again.
#
#   packaging_test.sh PACKAGING METAINFO
set -euo pipefail
packaging=$1 metainfo=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
id=org.tarnwick.Tarnwick
export HOME=$scratch/home XDG_DATA_HOME="$scratch/my data"
entry=$XDG_DATA_HOME/applications/$id.desktop
failed=0
fail() { echo "FAILED: $*" >&2; failed=1; }

desktop-file-validate "$packaging/$id.desktop" || fail "the desktop entry"
appstreamcli validate --no-net "$metainfo" || fail "the metainfo"

# starts FOLDER: its entry is valid and starts the program that lies there.
starts() {
  local folder=$1
  mkdir -p "$folder"
  cp "$packaging"/{menu-entry,"$id".*} "$folder"
  printf '#!/bin/sh\npwd >"%s"\n' "$scratch/started" >"$folder/Tarnwick"
  chmod +x "$folder/Tarnwick"
  rm -f "$scratch/started"
  (cd / && "$folder/menu-entry" add) || fail "add: $folder"
  desktop-file-validate "$entry" || fail "valid: $folder"
  gio launch "$entry"
  for _ in {1..100}; do [ -s "$scratch/started" ] && break; sleep 0.05; done
  [ "$(cat "$scratch/started" 2>/dev/null)" = "$folder" ] || fail "starts: $folder"
}

starts "$scratch/plain"
starts "$scratch/with blanks  and 'quotes' \"of both kinds\""
starts "$scratch/\$HOME \`id\` 100% back\\slash ~ ; é"
"$scratch/plain/menu-entry" remove || fail "remove"
left=$(find "$XDG_DATA_HOME" -type f)
[ -z "$left" ] || fail "left behind: $left"
"$scratch/plain/menu-entry" remove || fail "removing nothing"
if "$scratch/plain/menu-entry" 2>/dev/null; then fail "no word at all is taken for one"; fi
exit "$failed"
