#!/usr/bin/env bash
# How a release is made, and what the program does about one that it can neither finish nor undo.
#
#   release_test.sh SOURCE BUILD
set -euo pipefail
source=$1 build=$2
scratch=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$scratch"' EXIT
failed=0
fail() { echo "FAILED: $*" >&2; failed=1; }
# refuses STATUS WHAT COMMAND ...: the command ends so, says that, and tells no key.
refuses() {
  local status=0
  "${@:3}" >"$scratch/said" 2>&1 || status=$?
  [ "$status" -eq "$1" ] && grep -qF -- "$2" "$scratch/said" || fail "$status, not $1 and '$2': ${*:3}"
  ! grep -q '[0-9a-f]\{64\}' "$scratch/said" || fail "a key was told: ${*:3}"
}

# The key of a build is checked when that is configured, and before it is built in.
key=$build/keys/update.key
for wrong in 1234 "$(<"$key")" not-a-key; do
  refuses 1 'has to be 64 hexadecimal digits' \
    cmake -S "$source" -B "$scratch/configured" -D BUILD_TESTING=OFF -D TARNWICK_PUBLIC_KEY="$wrong"
done
refuses 1 'is no public key' cmake -D KEY="$(printf '%064d' 0)" -D HEADER="$scratch/key.h" \
  -D TOOL="$build/bin/tarnwick-site" -P "$source/cmake/BuiltInKey.cmake"
[ ! -e "$scratch/key.h" ] || fail "a wrong key is built in"

# ./release in a checkout of these very files. Its build is this one, handed out by a cmake that stands in.
if git -C "$source" rev-parse 2>/dev/null; then
  mkdir -p "$scratch"/{tree,bin,sources/MotorControllers}
  git -C "$source" ls-files -z | tar -C "$source" --null -T - -c | tar -x -C "$scratch/tree"
  cd "$scratch/tree"
  # Another machine's archive takes minutes, and packages of that machine.
  printf '#!/bin/sh\nmkdir -p "$1" && echo it >"$1/Tarnwick-9.9.9-aarch64.tar.xz"\n' >packaging/aarch64
  git init -q && git add -A && git -c user.name=A -c user.email=a@b.example commit -qm all
  cp "$build/portable/MotorControllers/MC_0512.qal" "$scratch/sources/MotorControllers"
  cat >"$scratch/bin/cmake" <<END
#!/bin/sh -e
[ "\$1" = --build ] || { echo "\$*" >"$scratch/asked"; exit; }
"$(command -v cmake)" --build "$build" --target archive debs >/dev/null
mkdir -p "\$2/bin"
cp "$build"/Tarnwick-*.tar.xz "$build"/*.deb "\$2"
cp "$build/bin/tarnwick-site" "\$2/bin"
END
  chmod +x "$scratch/bin/cmake"
  export PATH=$scratch/bin:$PATH
  dest=$scratch/dest list=$scratch/dest/site/list.txt
  refuses 2 'usage: ./release' ./release "$key"
  refuses 1 'no key' ./release "$scratch/none.key" "$dest"
  echo changed >>README.md
  refuses 1 'The checkout has changes' ./release "$key" "$dest"
  git checkout -q README.md
  echo more >new
  refuses 1 'The checkout has changes' ./release "$key" "$dest"
  rm new
  [ ! -e "$dest" ] || fail "a refused release left something"
  ./release "$key" "$dest" "$scratch/sources" >/dev/null || fail "./release"
  grep -q "TARNWICK_PUBLIC_KEY=$(<"${key%.key}.pub")" "$scratch/asked" || fail "built with another key"
  grep -q '^@MC_0512.qal,' "$list" || fail "the site has no packages"
  grep -q "^\$user-guide.md, *$(TZ=UTC+24 date -d "@$(git log -1 --format=%ct)" +%F)," "$list" || fail "a guide that is newer than the archive's"
  for file in program.Tarnwick.EXE file.tarnwick-flash.EXE library.Tarnwick.DLL file.user-guide.md; do
    name=${file#*.}
    told="${file%%.*} [0-9.-]* $(stat -c %s "$dest/site/$name") $(sha256sum <"$dest/site/$name" | cut -d' ' -f1) $name"
    sed '/^\$/q' "$list" | grep -q "^$told" || fail "the list does not have: $told"
  done
  # A library that reports less than its row is offered again for ever.
  reported=$(python3 - "$build/portable/Tarnwick.so" <<'END'
import ctypes, sys
find = ctypes.CDLL(None).dlvsym
find.restype, find.argtypes = ctypes.c_void_p, [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p]
library, numbers = ctypes.CDLL(sys.argv[1]), [ctypes.c_int32() for _ in range(3)]
call = find(library._handle, b"_getDllVersion", b"12")
ctypes.CFUNCTYPE(None, *[ctypes.c_void_p] * 3)(call)(*map(ctypes.addressof, numbers))
print(".".join(str(number.value) for number in numbers))
END
  )
  grep -q "^\$Tarnwick.DLL, *$reported," "$list" || fail "the library reports $reported, its row: $(grep '^\$Tarnwick.DLL' "$list")"
  [ "$(wc -l <"$dest/SHA256SUMS")" -eq 5 ] && (cd "$dest" && sha256sum --quiet -c SHA256SUMS) || fail "the sums"
  tar -xf "$dest/Tarnwick-"*"-$(uname -m).tar.xz" -C "$scratch" && (cd "$scratch"/Tarnwick-*/ && ls | sort | tr '\n' ' ') >"$scratch/ships"
  grep -q '^60-.* LICENSE README.txt Tarnwick Tarnwick.so menu-entry org' "$scratch/ships" || fail "ships $(<"$scratch/ships")"
else
  echo "NOT TESTED: ./release, for which these files have to be a checkout."
fi

# An update of which the journal cannot be read: the program tells what to do, loads no library, and ends.
home=$scratch/home
mkdir -p "$home" && cd "$home"
cp "$build"/portable/{Tarnwick,Tarnwick.so} .
ln -s WebUpdate.journal WebUpdate.journal
Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$scratch/display" 2>/dev/null &
for _ in {1..100}; do [ -s "$scratch/display" ] && break; sleep 0.1; done
export DISPLAY=:$(<"$scratch/display") QT_QPA_PLATFORM=xcb XDG_RUNTIME_DIR=$scratch
unset WAYLAND_DISPLAY
./Tarnwick 2>/dev/null &
program=$!
box=$(timeout 20 xdotool search --sync --onlyvisible --name '^Tarnwick$') || fail "the user was not told"
! grep -q 'Tarnwick\.so' "/proc/$program/maps" || fail "a library was loaded"
sleep 0.6 # no key counts in a box's first moment
xdotool windowfocus --sync "$box" key --delay 100 Return
status=0
{ sleep 20; kill "$program"; } 2>/dev/null &
wait "$program" || status=$?
[ "$status" -eq 1 ] || fail "it ended with $status"
grep -q 'box: An update of this program was cut off and can neither be completed nor undone.* -> ' Tarnwick.log || fail "$(<Tarnwick.log)"
[ -L WebUpdate.journal ] || fail "the journal is gone"
exit "$failed"
