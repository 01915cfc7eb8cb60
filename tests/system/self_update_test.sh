#!/usr/bin/env bash
# The program renews itself. It runs under Xvfb and is offered a newer release by a site that nginx serves;
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
# Ends every program that was started from the folder, and waits until they are gone.
end_programs() {
  local exe left
  for _ in {1..100}; do
    left=
    for exe in /proc/[0-9]*/exe; do
      [[ $(readlink "$exe" 2>/dev/null) != "$home"/* ]] || { left=1; kill "${exe//[^0-9]/}" 2>/dev/null || true; }
    done
    [ -n "$left" ] || return 0
    sleep 0.1
  done
}
cleanup() {
  kill $(jobs -p) 2>/dev/null || true
  end_programs
  wait
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "FAILED: $*" >&2; exit 1; }

. "$source/tests/support/desktop.sh"
start_display
site=$work/site/firmware/catalogue
mkdir -p "$site"
nginx -p "$work" -e nginx.log -c "$source/tools/site/nginx.conf" &

# offer PROGRAM: version 2.2.5, of that program.
offer() {
  rm -rf "$work/sources" "$site"/*
  mkdir -p "$work/sources/Program"
  cp "$1" "$work/sources/Program/Tarnwick.EXE"
  cp "$next_library" "$work/sources/Program/Tarnwick.DLL"
  printf 'Tarnwick.EXE, 2.2.5\nTarnwick.DLL, 2.2.5\n' >"$work/sources/Program/versions.txt"
  "$build/bin/tarnwick-site" build --key "$build/keys/update.key" --public-key "$build/keys/update.pub" \
    "$work/sources" "$site" >/dev/null
}
# press WINDOW KEY ...: no key counts in a box's first moment.
press() {
  xdotool windowfocus --sync "$1"
  sleep 0.6
  xdotool key --delay 100 "${@:2}"
}
# installed NAME: a folder with the program under that name.
installed() {
  end_programs
  rm -rf "$home"
  mkdir -p "$home"
  cp "$build/portable/Tarnwick" "$home/$1"
  cp "$build/portable/Tarnwick.so" "$home"
}
# start NAME OTHER ...: starts it; its window, which is none of the OTHER ones, in `frame`.
start() {
  (cd "$home" && exec "./$1" 2>>"$work/program.log") &
  second=$!
  frame=$(window "$1  v2.2.4" "${@:2}")
}
# Goes to the page with the packages.
to_the_packages() {
  press "$frame" Return # the page of the device
  sleep 1
  press "$frame" Return # the page of the port
  for _ in {1..100}; do
    [ "$(xdotool getwindowgeometry --shell "$frame" | sed -n 's/^WIDTH=//p')" -lt 500 ] || break
    sleep 0.1
  done
}
# Presses the button for the web updates, on that page.
to_the_web() {
  to_the_packages
  press "$frame" alt+d
}
# accept NAME: answers the question and lets the fetched release be installed.
accept() {
  local question ready
  question=$(window "$1")
  press "$question" Return
  ready=$(window "$1" "$question")
  cmp -s "$home/$1" "$build/portable/Tarnwick" || fail "the program was replaced while it ran"
  press "$ready" Return
}
# became NAME: the new release is there, under that name, and nothing else is left.
became() {
  window "$1  v2.2.5" >/dev/null
  cmp "$home/$1" "$site/Tarnwick.EXE"
  cmp "$home/Tarnwick.so" "$site/Tarnwick.DLL"
  nothing_left
}
nothing_left() {
  local left
  for _ in {1..100}; do
    left=$(find "$home" -name '$*' -o -name 'WebUpdate.*' ! -name WebUpdate.lock ! -name WebUpdate.refused -o -name '*.new')
    [ -n "$left" ] || return 0
    sleep 0.1
  done
  fail "left behind: $left"
}

offer "$next_program"
installed Tarnwick
start Tarnwick
to_the_web
accept Tarnwick
became Tarnwick
echo "Version 2.2.4 became 2.2.5."

name='My Updater'
installed "$name"
start "$name"
first=$frame
to_the_packages
start "$name" "$first"
press "$first" alt+d
press "$(window "$name")" Return # told that another window is open
updates=$(window 'Web Updates')
[ -z "$(find "$home" -type d -name 'WebUpdate.*')" ] || fail "fetched beside another window"
press "$updates" Escape
for _ in {1..100}; do xdotool search --onlyvisible --name '^Web Updates$' >/dev/null || break; sleep 0.1; done
kill "$second"
wait "$second" || true
press "$first" alt+d
accept "$name"
became "$name"
[ ! -e "$home/Tarnwick" ] || fail "a second program"
echo "With two windows open nothing was fetched, with one it was; a renamed program kept its name."

# The same for another machine.
cp "$next_program" "$work/other"
printf '\267' | dd of="$work/other" bs=1 seek=18 conv=notrunc status=none
offer "$work/other"
installed Tarnwick
start Tarnwick
to_the_web
accept Tarnwick
wait "$second" || true
frame=$(window 'Tarnwick  v2.2.4')
press "$(window Tarnwick)" Return # told that it does not run
for name in Tarnwick Tarnwick.so; do cmp "$home/$name" "$build/portable/$name"; done
nothing_left
to_the_web
window 'Web Updates' >/dev/null # without a question
echo "A release that cannot run left 2.2.4, and was not offered again."
