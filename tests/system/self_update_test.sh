#!/usr/bin/env bash
# The program renews itself. It runs under Xvfb and is offered a newer version by a site that nginx serves;
# keys from outside answer it, since the process that runs at the end is not the one that was started.
#   self_update_test.sh BUILD NEXT_PROGRAM NEXT_LIBRARY
# Exits 77 where this system allows no network of its own to a user.
set -euo pipefail
source=$(cd "$(dirname "$0")/../.." && pwd)
if [ "$1" != --inside ]; then
  unset DISPLAY WAYLAND_DISPLAY
  why=$("$source/tools/site/namespace" --check) || { echo "NOT TESTED: $why"; exit 77; }
  exec "$source/tools/site/namespace" "$0" --inside "$@"
fi
build=$2 next_program=$3 next_library=$4

work=$(mktemp -d)
home="$work/Tarn \$HOME 'wick' \"é\""
cleanup() {
  kill $(jobs -p) 2>/dev/null || true
  local exe
  for exe in /proc/[0-9]*/exe; do
    [[ $(readlink "$exe" 2>/dev/null) != "$home"/Tarnwick* ]] || kill "${exe//[^0-9]/}" 2>/dev/null || true
  done
  wait
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "FAILED: $*" >&2; exit 1; }

mkdir -p "$home" "$work/sources/Program"
cp -r "$build"/portable/{Tarnwick,Tarnwick.so,help} "$home"
cp "$next_program" "$work/sources/Program/Tarnwick.EXE"
cp "$next_library" "$work/sources/Program/Tarnwick.DLL"
printf 'Tarnwick.EXE, 2.2.5\nTarnwick.DLL, 2.2.5\n' >"$work/sources/Program/versions.txt"
site=$work/site/firmware/catalogue
"$build/bin/tarnwick-site" build --key "$build/keys/update.key" "$work/sources" "$site"
nginx -p "$work" -e nginx.log -c "$source/tools/site/nginx.conf" &

Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$work/display" 2>"$work/xvfb.log" &
for _ in {1..100}; do [ -s "$work/display" ] && break; sleep 0.1; done
DISPLAY=:$(<"$work/display")
export DISPLAY QT_QPA_PLATFORM=xcb XDG_RUNTIME_DIR=$work

# Prints the window with exactly that title, once it is on view and is not the window $2.
window() {
  local id
  for _ in {1..300}; do
    for id in $(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null); do
      [ "$id" = "${2-}" ] || { echo "$id"; return; }
    done
    sleep 0.1
  done
  fail "no window \"$1\""
}
press() {
  xdotool windowfocus --sync "$1"
  xdotool key --delay 100 "${@:2}"
}

(cd "$home" && ./Tarnwick 2>"$work/program.log") &
frame=$(window "Tarnwick  v2.2.4")
press "$frame" Return Return # the pages of the device and of the port
for _ in {1..100}; do
  [ "$(xdotool getwindowgeometry --shell "$frame" | sed -n 's/^WIDTH=//p')" -lt 500 ] || break
  sleep 0.1
done
press "$frame" Tab space
question=$(window Tarnwick)
press "$question" Return
ready=$(window Tarnwick "$question")
cmp -s "$home/Tarnwick" "$build/portable/Tarnwick" || fail "the program was replaced while it ran"
press "$ready" Return
window "Tarnwick  v2.2.5" >/dev/null

cmp "$home/Tarnwick" "$site/Tarnwick.EXE"
cmp "$home/Tarnwick.so" "$site/Tarnwick.DLL"
for _ in {1..100}; do [ -e "$home/WebUpdate.sh" ] || break; sleep 0.1; done
left=$(find "$home" -name '$*' -o -name 'WebUpdate.*' -o -name '*.new')
[ -z "$left" ] || fail "left behind: $left"
echo "Version 2.2.4 became 2.2.5."
