#!/usr/bin/env bash
# Hands on the real program from outside its process: keys and clicks from the X server, under a window manager.
# Each case was once an accident. The judges are the simulated mount, the program's record, and the screen.
#   hands_test.sh PORTABLE MOUNT [CASE ...]
set -euo pipefail
portable=$1 mount=$2 cases=("${@:3}")
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../support/desktop.sh"
. "$here/../support/mount.sh"
export LC_ALL=C.UTF-8 # for names that are not ASCII
work=$(mktemp -d)
cd "$work"
cleanup() {
  kill $(jobs -p) 2>/dev/null || true
  wait 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT
fail() {
  echo "FAILED: ${case-}: $*" >&2
  tail -n 12 home/Tarnwick.log >&2
  exit 1
}

start_display
openbox >openbox.log 2>&1 &
until xprop -root _NET_SUPPORTING_WM_CHECK | grep -q '# 0x'; do sleep 0.05; done
mkdir -p home/ports
cp "$portable"/Tarnwick{,.so} home
unset http_proxy https_proxy no_proxy

# visit PAGE OPTION ...: the program anew on that page, before a mount with these options. Its window is `frame`.
visit() {
  start_mount "${@:2}"
  start_program
  [ "$1" -lt 3 ] || { step Return && step Return; }
  [ "$1" -lt 4 ] || { step Down && step Return && step Down; }
}
start_program() {
  [ -z "${program-}" ] || { kill "$program" && wait "$program" || true; } 2>/dev/null
  rm -rf home/MotorControllers home/Tarnwick.{log,ini,unfinished,trace.txt}
  mkdir -p home/MotorControllers
  cp "$portable/MotorControllers"/MC{_0512,M_0730}.* home/MotorControllers
  printf '[TARNWICK]\r\nCOMport=COM5\r\nDebugFilter4=True\r\n' >"home/${program_name-Tarnwick}.ini"
  "${prepare:-true}"
  (cd home && exec env http_proxy=http://127.0.0.1:9 "./${program_name-Tarnwick}" 2>../errors) &
  program=$!
  frame=$(window "${first_title-Tarnwick  v[0-9.]*}")
  until_true 10 is_active || fail "the window gets no keys"
  settle
  start=$(calls)
}
is_active() { [ "$(xdotool getactivewindow 2>/dev/null)" = "$frame" ]; }
# until_true SECONDS COMMAND ...: waits for that, and no longer.
until_true() {
  local end=$((SECONDS + $1))
  until "${@:2}"; do
    [ "$SECONDS" -lt "$end" ] || return 1
    sleep 0.03
  done
}
calls() { stat -c %s home/Tarnwick.trace.txt; }
called() { [ "$(calls)" != "$1" ]; }
shown() { cksum <Xvfb_screen0; }
changed() { [ "$(shown)" != "$1" ]; }
# Waits until the link is silent and the screen at rest.
settle() {
  local before
  for _ in {1..100}; do
    before="$(calls) $(shown)"
    sleep "${quiet:-0.25}"
    [ "$before" != "$(calls) $(shown)" ] || return 0
  done
  fail "it does not come to rest"
}
# step KEY ...: keys, and what comes of them, which is to be seen.
step() {
  local before
  before=$(shown)
  xdotool key --delay 30 "$@"
  until_true 20 changed "$before" || fail "nothing comes of $*"
  settle
}
# Places in the window as it is 300 pixels high: the layout grows with the font.
point() {
  local WIDTH HEIGHT X Y WINDOW SCREEN
  eval "$(xdotool getwindowgeometry --shell "$frame")"
  xdotool mousemove --window "$frame" $((HEIGHT * $1 / 300)) $((HEIGHT * $2 / 300))
}
program_button="245 125" web_button="373 17" help_button="48 279" terminate_button="608 279"
package_part="150 35 254 209" program_part="150 116 190 18" terminate_part="566 268 84 24" report_part="353 27 270 14" outcome_part="150 176 470 60"
click() { point "$@"; xdotool click 1; }
# The boxes on view: tool tips have the same title.
boxes() {
  local id
  for id in $(xdotool search --onlyvisible --name '^Tarnwick$' 2>/dev/null); do
    ! xprop -id "$id" _NET_WM_WINDOW_TYPE 2>/dev/null | grep -q DIALOG || echo "$id"
  done
}
a_box() { [ -n "$(boxes)" ]; }
no_box() { ! a_box; }
box() {
  until_true 20 a_box || fail "no box comes"
  boxes
}
# answer KEY: to the box that comes, once it listens.
answer() {
  box >/dev/null
  sleep 0.6
  xdotool key "$1"
  until_true 10 no_box || fail "the box does not go"
  sleep 0.1
}
told() { grep -c -- "$1" home/Tarnwick.log || true; }
is_running() { xdotool search --onlyvisible --name '^MC [0-9]*%$' >/dev/null 2>&1; }
begin() {
  xdotool key alt+p
  until_true 10 is_running || fail "no run begins"
}
# The page is live, and no run was begun up to now.
nothing_begun() {
  xdotool key Escape
  answer Escape
  [ "$(told 'box: Are you sure you want to Exit')" = 1 ] || fail "the page is not live"
  [ "$(told 'run:')" = 0 ] || fail "a run began"
}

a_click_on_what_is_locked_is_forgotten() {
  visit 4
  ask line latency=100
  local before
  before=$(calls)
  xdotool key alt+r
  until_true 5 called "$before" || fail "nothing is asked"
  click $program_button
  xdotool key alt+p
  quiet=0.5 settle
  ask line latency=0
  nothing_begun
}

a_step_is_not_entered() {
  visit 3
  step Down
  ask line latency=100
  local before
  before=$(calls)
  xdotool key Return
  until_true 5 called "$before" || fail "nothing is asked"
  click $web_button
  xdotool key alt+d
  quiet=0.5 settle
  ! xdotool search --onlyvisible --name '^Web Updates$' >/dev/null || fail "the web window came up"
  ask line latency=0
  step Down
  begin
  answer Return
  [ "$(told 'package: MC')" = 1 ] || fail "another package"
}

# Return, held as a keyboard repeats it, and then as some window systems tell it: let go and pressed anew, at one
# time. The two go to the X server together, which xdotool cannot do.
hold() {
  python3 - <<'END'
import ctypes, time
x, test = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
x.XOpenDisplay.restype = ctypes.c_void_p
display = ctypes.c_void_p(x.XOpenDisplay(None))
key = x.XKeysymToKeycode(display, ctypes.c_ulong(0xFF0D))
def tell(*downs):
    for down in downs:
        test.XTestFakeKeyEvent(display, key, down, ctypes.c_ulong(0))
    x.XSync(display, 0)
tell(1)
time.sleep(1.2)
for _ in range(30):
    tell(0, 1)
    time.sleep(0.03)
tell(0)
END
}

a_held_key_answers_once() {
  visit 1
  hold
  settle
  kill -0 "$program" || fail "the program was closed"
  [ "$(calls)" = "$start" ] || fail "it went further than one page"
  visit 4
  ask state 16 boot
  ask state 17 boot
  xdotool key alt+p
  box >/dev/null
  sleep 0.6
  hold # the question about the first motor, and not that about the second
  [ "$(told 'box:')" = 1 ] || fail "the held key answered another number of boxes than one"
  answer Escape
  [ "$(told 'writing')" = 0 ] || fail "a motor was written"
}

no_enter_begins_a_run() {
  visit 4
  click $program_button
  answer Return # complete
  settle
  xdotool key Return
  answer Escape
  [ "$(told 'box: Are you sure you want to Exit')" = 1 ] || fail "Enter is not the default button"
  [ "$(told 'run: programming begins')" = 1 ] || fail "Enter began a run"
}

a_lock_keeps_the_focus() {
  visit 4
  click $help_button
  xdotool windowclose "$(window 'Tarnwick Help')"
  xdotool windowactivate --sync "$frame"
  ask line latency=1
  begin
  xdotool key --delay 100 space space
  until_true 90 told_some 'outcome:' || fail "the run does not end"
  [ "$(told ' 5.12 written')" = 2 ] || fail "Space stopped the run"
  ask power
  answer Return
  settle
  click 200 32
  settle
  ask line latency=5
  begin
  click $terminate_button
  answer alt+y
  ask line latency=0
  quiet=0.5 settle
  step Down # has no effect where the focus is nowhere
}
told_some() { [ "$(told "$1")" != 0 ]; }

the_help_serves_beside_a_box() {
  visit 4
  local cancel help
  ask line latency=5
  begin
  xdotool key Escape
  cancel=$(box)
  sleep 0.4
  xdotool key F1
  help=$(window 'Tarnwick Help')
  xdotool windowactivate --sync "$help"
  step Tab Tab
  owned "$cancel"
  xdotool windowactivate --sync "$cancel"
  sleep 0.6
  xdotool key Escape # No: the run goes on
  until_true 10 no_box
  xdotool windowactivate --sync "$help" set_desktop 1
  attention && fail "somebody is told of nothing"
  ask fault pull 1
  until_true 10 attention || fail "nobody is told that a box waits"
  xdotool set_desktop 0
  owned "$(box)"
}
owned() {
  [[ $(xprop -id "$1" WM_TRANSIENT_FOR) == *"$(printf '%#x' "$frame")" ]] || fail "the box belongs to another window"
}
attention() { xprop -id "$frame" _NET_WM_STATE | grep -q DEMANDS_ATTENTION; }

a_button_held_across_a_lock_is_let_go() {
  visit 3
  local before list
  step Down
  list=$(part $package_part)
  ask line latency=50
  before=$(calls)
  point 200 58 # the other row
  xdotool mousedown 1 key alt+r
  until_true 5 called "$before" || fail "nothing is asked"
  xdotool mouseup 1
  ask line latency=0
  quiet=0.5 settle
  point 390 279
  step Up && step Down
  ! part_changed "$list" $package_part || fail "the list and the text below it differ"
}

a_lock_shows_at_once() {
  visit 4
  ask fault pull 1 # the first call takes seconds
  local begin_button finish_button
  begin_button=$(part $program_part)
  finish_button=$(part $terminate_part)
  xdotool key alt+p
  until_true 2 part_changed "$begin_button" $program_part || fail "the page does not turn grey"
  part_changed "$finish_button" $terminate_part || fail "Finish does not become Cancel"
}
# part X Y WIDTH HEIGHT: what is shown there in the window, whose place is that of its content.
part() {
  local X Y HEIGHT
  X=$(xwininfo -id "$frame" | sed -n 's/.*Absolute upper-left X: *//p')
  Y=$(xwininfo -id "$frame" | sed -n 's/.*Absolute upper-left Y: *//p')
  HEIGHT=$(xwininfo -id "$frame" | sed -n 's/^ *Height: *//p')
  python3 - "$X" "$Y" "$HEIGHT" "$@" <<'END'
import struct, sys, zlib
left, top, tall, x, y, width, height = map(int, sys.argv[1:])
screen = open("Xvfb_screen0", "rb").read()
head = struct.unpack(">25I", screen[:100])  # of an X window dump
begin, line = head[0] + head[19] * 12, head[12]
rows = range(top + y * tall // 300, top + (y + height) * tall // 300)
print(zlib.crc32(b"".join(
    screen[begin + row * line:][(left + x * tall // 300) * 4:(left + (x + width) * tall // 300) * 4] for row in rows)))
END
}
part_changed() { [ "$(part "${@:2}")" != "$1" ]; }

the_outcome_shows() {
  visit 4
  local first written
  step Down Down
  first=$(part $report_part)
  xdotool key alt+p
  box >/dev/null
  ask power
  answer Return
  settle
  part_changed "$first" $report_part || fail "the report does not show the motor that was written"
  written=$(part $outcome_part)
  ask line latency=5
  begin
  xdotool key Escape
  answer alt+y
  ask line latency=0
  quiet=0.5 settle
  part_changed "$written" $outcome_part || fail "nothing says that the run was stopped"
}

# A program, a package and its note whose names and texts are foreign, long, or look like markup; and the notes of
# sixty motors.
write_names() {
  local motor
  cp home/Tarnwick "home/$program_name"
  for motor in {1..60}; do
    printf '[%d]\r\nNAME=Motor\r\nPACKAGE=Größe.qal\r\nPERCENT=5\r\n' "$motor"
  done >"home/$program_name.unfinished"
  head -c 1000000 /dev/zero | tr '\0' x >home/MotorControllers/MCM_0730.txt
  sed -i 's/^FILENAME=.*/FILENAME=<br><br><br>Größe.qal\r/' home/MotorControllers/MC_0512.qal
}
long_and_foreign_names_are_shown() {
  local program_name=Tärn version tall
  version=$("$portable/tarnwick-flash" --version | cut -d' ' -f2)
  start_mount
  prepare=write_names first_title='T.*rn' start_program
  [ "$(title "$frame")" = "Tärn" ] || fail "the title of a box is garbled"
  tall=$(xwininfo -id "$frame" | sed -n 's/^ *Height: *//p')
  [ "$tall" -lt 600 ] || fail "a box is $tall pixels high"
  sleep 0.6
  xdotool key Escape
  frame=$(window 'T.*rn  v[0-9.]*')
  [ "$(title "$frame")" = "Tärn  v$version" ] || fail "a garbled caption"
  until_true 10 is_active
  settle
  step Return
  local before
  before=$(shown)
  click 330 279 # Next, where the page behind has Back
  until_true 20 changed "$before"
  settle
  sleep 1
  local told_first
  told_first=$(tip_size)
  xdotool mousemove_relative 2 1
  until_true 10 a_tip || fail "Next has no tip"
  [ -z "$told_first" ] || [ "$told_first" = "$(tip_size)" ] || fail "the tip of another button"
  step Down && step Return
  point 395 13
  until_true 10 a_tip || fail "no tip tells the package's name"
  [[ $(tip_size) =~ x[123]?[0-9]$ ]] || fail "a name is shown as markup"
}
title() { xprop -id "$1" _NET_WM_NAME | sed 's/[^"]*"//; s/"$//'; }
# tip_size: the size of the tool tip on view.
tip_size() {
  local id
  for id in $(xwininfo -root -children | grep -o '^ *0x[0-9a-f]*'); do
    ! xprop -id "$id" _NET_WM_WINDOW_TYPE 2>/dev/null | grep -q TOOLTIP ||
      xwininfo -id "$id" | grep -A99 Width | grep -B99 IsViewable | sed -n 's/^ *Width: *//p; s/^ *Height: */x/p' | tr -d '\n'
  done
}
a_tip() { [ -n "$(tip_size)" ]; }

for case in ${cases[@]:-a_click_on_what_is_locked_is_forgotten a_step_is_not_entered a_held_key_answers_once \
  no_enter_begins_a_run a_lock_keeps_the_focus the_help_serves_beside_a_box a_button_held_across_a_lock_is_let_go \
  a_lock_shows_at_once the_outcome_shows long_and_foreign_names_are_shown}; do
  "$case"
  echo "ok $case"
done
