# A display of a test's own, and what is seen on it. Sourced; `work` is the test's folder, `fail` ends the test.

# start_display: Xvfb, with what it shows in $work/Xvfb_screen0.
start_display() {
  Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp -noreset -fbdir "$work" 3>"$work/display" 2>"$work/xvfb.log" &
  for _ in {1..100}; do [ -s "$work/display" ] && break; sleep 0.1; done
  DISPLAY=:$(<"$work/display")
  unset WAYLAND_DISPLAY
  export DISPLAY QT_QPA_PLATFORM=xcb XDG_RUNTIME_DIR=$work
}

# window TITLE OTHER ...: prints the window with exactly that title, once it is on view and is none of the others.
window() {
  local id
  for _ in {1..600}; do
    for id in $(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null); do
      [[ " ${*:2} " == *" $id "* ]] || { echo "$id"; return; }
    done
    sleep 0.1
  done
  fail "no window \"$1\""
}
