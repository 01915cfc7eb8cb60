# The simulated mount as a child of a test, on COM5 of the folder `home`, or what `com5` names. Sourced; `mount` is
# its program.

# start_mount OPTION ...: in the place of the one before.
start_mount() {
  stop_mount
  coproc MOUNT { exec "$mount" --until-eof --link "${com5-home/ports/COM5}" "$@" 2>mount.err; }
  mount_pid=$MOUNT_PID
  local told
  read -r told <&"${MOUNT[0]}"
}
stop_mount() {
  [ -z "${mount_pid-}" ] || { kill "$mount_pid" && wait "$mount_pid" || true; } 2>/dev/null
  mount_pid=
}
# ask COMMAND ...: prints what it answers.
ask() {
  local line
  echo "$*" >&"${MOUNT[1]}"
  while read -r line <&"${MOUNT[0]}" && [ "$line" != end ] && [ "$line" != ok ]; do echo "$line"; done
}
