#!/usr/bin/env bash
# install_test.sh BUILD MOUNT: installed for a whole system, the programs keep what they keep in the user's own
# folder, and nothing beside themselves. The portable folder is complete without it.
set -euo pipefail
build=$1 mount=$2
cd "$(mktemp -d)"
trap 'chmod -R u+w system 2>/dev/null; kill $(jobs -p) 2>/dev/null; rm -rf "$PWD"' EXIT
fail() { echo "FAILED: $*" >&2; exit 1; }
export XDG_DATA_HOME=$PWD/mine QT_QPA_PLATFORM=offscreen
data=$XDG_DATA_HOME/Tarnwick

for component in window tools mount; do cmake --install "$build" --component $component --prefix "$PWD/system" >/dev/null; done
cmake --install "$build" --component portable --prefix "$PWD/portable" >/dev/null
for program in system/bin/*; do
  [ -s "system/share/man/man1/$(basename "$program").1.gz" ] || fail "$program has no manual page"
done
for size in 16x16 22x22 24x24 32x32 48x48 64x64 128x128 256x256 scalable; do
  [ -s "$(echo "system/share/icons/hicolor/$size/apps/org.tarnwick.Tarnwick".*)" ] || fail "there is no icon of $size"
done
before=$(find system | sort)
chmod -R a-w system
"$mount" --link "$data/ports/COM5" </dev/null >/dev/null 2>&1 && fail "a port in a folder that nobody made"
system/bin/tarnwick-flash ports >/dev/null || fail "tarnwick-flash does not run"
mkdir -p "$data/ports"
"$mount" --link "$data/ports/COM5" >ready &
until [ -s ready ]; do sleep 0.05; done
system/bin/tarnwick-flash status --port COM5 | grep -q 'DLL Version: [1-9]' || fail "the link library is not found"
for kept in Tarnwick.log MotorControllers; do [ -e "$data/$kept" ] || fail "$kept is not the user's"; done
[ ! -e "$data/WebUpdate.lock" ] || fail "it means to renew itself"
[ "$(find system | sort)" = "$before" ] || fail "something was written beside the programs"
for file in Tarnwick tarnwick-flash Tarnwick.so user-guide.md tarnwick-flash.1 menu-entry LICENSE; do
  [ -s "portable/$file" ] || fail "the portable folder lacks $file"
done
exported=$(nm -D --defined-only --with-symbol-versions portable/Tarnwick.so | sed 's/.* //; s/@@/@/' | sort | xargs)
[ "$exported" = "$(sort <<'END' | xargs
_debugFilter@8
_doTestForSkelmirra@0
_doTestForUpgradeSupport@0
_endProgrammingCommon@4
_enterBootCommon@4
_getDllVersion@12
_getHwRevCommon@8
_getHwRevFromBootCommon@8
_getLinkNote@8
_getMcStateCommon@12
_getModelCommon@8
_getSerialMode@0
_getVersionFromBootCommon@8
_initSerialCommon@4
_lockHc@0
_readMcProgMemCommon@16
_sendDataCommon@12
_startProgrammingCommon@4
END
)" ] || fail "the link library exports $exported"
