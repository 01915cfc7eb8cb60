# Shared by ./run, ./test and ./bench: install what is missing, configure, build.
# Sourced with the repository as the current directory.

# Reads the lists of packages given, and installs those that are missing.
install_packages() {
  command -v dpkg-query >/dev/null || return 0 # not a Debian: the user brings the packages
  local missing=() package
  while read -r package; do
    dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
  done < <(sed '/^#/d; /^$/d' "$@")
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}"
  local sudo=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Please install as root: ${missing[*]}" >&2; return 1; }
    sudo=(sudo)
  fi
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# Prints the build directory of a preset: build/PRESET here, or, where another user's build stands in
# the way, one in this user's cache.
build_dir() {
  local dir="$PWD/build/$1"
  if mkdir -p "$dir" 2>/dev/null && [ -w "$dir" ] && { [ ! -e "$dir/CMakeCache.txt" ] || [ -w "$dir/CMakeCache.txt" ]; }; then
    echo "$dir"
  else
    echo "${XDG_CACHE_HOME:-$HOME/.cache}/tarnwick/$(printf %s "$PWD" | cksum | cut -d' ' -f1)-$1"
  fi
}

# configure_and_build PRESET [TARGET ...]: sets `build` to the build directory.
configure_and_build() {
  local preset=$1
  shift
  build=$(build_dir "$preset")
  # A build made for another path is of no use here.
  if [ -e "$build/CMakeCache.txt" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$build/CMakeCache.txt"; then
    rm -rf "$build"
  fi
  cmake --preset "$preset" -B "$build" >"$build.log" 2>&1 || { cat "$build.log" >&2; return 1; }
  cmake --build "$build" ${@:+--target "$@"}
}
