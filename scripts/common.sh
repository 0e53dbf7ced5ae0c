# Functions shared by the scripts. Source it after set -euo pipefail.

cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '\n== %s\n' "$*"; }

# Installs the Debian packages that are missing. Needs network and root only if there are any.
need() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  say "installing ${missing[*]}"
  local root=()
  if [ "$(id -u)" -ne 0 ]; then root=(sudo); fi
  "${root[@]}" apt-get update
  "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${missing[@]}"
}

# Lists the C++ files in the given folders.
sources() { find "$@" -name '*.cpp' -o -name '*.h'; }

# Configures a preset and builds it: all targets, or those given.
# build <preset> [target...]
build() {
  local preset=$1
  shift
  say "building the preset $preset"
  cmake --preset "$preset"
  cmake --build --preset "$preset" -j "$(nproc)" ${1:+--target "$@"}
}

# Copies a sample machine and the data files to a folder, and makes the game's executable there. Its
# release is the one that the target file names, unless another is given.
# make_sample <base|expansion> <folder> [build folder] [release]
make_sample() {
  local name=$1 folder=$2 built=${3:-build/release} line=1 executable='Vorakai/Vorakai.exe'
  if [ "$name" = expansion ]; then
    line=5
    executable='Vorakai Tarnfall/Vorakai Tarnfall.exe'
  fi
  rm -rf "$folder"
  mkdir -p "$folder"
  cp -r "sample/$name" "$folder/machine"
  cp -r data "$folder/data"
  "$built/make_executable" "$folder/machine/drive_c/Program Files (x86)/$executable" \
    "${4:-$(sed -n "${line}p" data/targetvoraver.txt | tr -d '\r')}"
}
