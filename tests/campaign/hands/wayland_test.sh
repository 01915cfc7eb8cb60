#!/usr/bin/env bash
# wayland_test.sh CAMPAIGN: the accidents of old on a Wayland compositor that has no screen and no keyboard.
set -euo pipefail
XDG_RUNTIME_DIR=$(mktemp -d)
export XDG_RUNTIME_DIR WAYLAND_DISPLAY=tarnwick QT_QPA_PLATFORM=wayland
trap 'kill $! && wait || true; rm -rf "$XDG_RUNTIME_DIR"' EXIT
weston --backend=headless-backend.so --socket=$WAYLAND_DISPLAY --idle-time=0 --log="$XDG_RUNTIME_DIR/weston.log" &
for _ in {1..200}; do [ -S "$XDG_RUNTIME_DIR/$WAYLAND_DISPLAY" ] && break; sleep 0.05; done
"$1" --replay 1
