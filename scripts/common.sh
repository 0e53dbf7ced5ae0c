# Functions shared by the scripts. Source it after set -euo pipefail.

cd "$(dirname "${BASH_SOURCE[0]}")/.."

# What builds the program for each system, its package included.
linux_packages=(g++ cmake make dpkg-dev libutfcpp-dev qt6-base-dev)
windows_packages=(cmake make g++-mingw-w64-x86-64-posix zip)
# The release of clang whose formatter, linter and fuzzer are used: Debian 12 and 13 both have it.
llvm=19
style_packages=("clang-format-$llvm" "clang-tidy-$llvm")
fuzz_packages=("clang-$llvm" "libclang-rt-$llvm-dev")

say() { printf '\n== %s\n' "$*"; }

installed() { dpkg-query -W -f '${Status}' "$1" 2>/dev/null | grep -q 'ok installed'; }

# Only a package of clang's pinned release may be one that this system does not offer.
offered() {
  [[ $1 != *-"$llvm"* ]] || ! compgen -G '/var/lib/apt/lists/*_Packages*' > /dev/null ||
    apt-cache show "$1" > /dev/null 2>&1
}

# Sets `missing` to the given packages that are not installed and can be had.
find_missing() {
  local package
  missing=()
  for package in $(printf '%s\n' "$@" | sort -u); do
    if ! installed "$package" && offered "$package"; then missing+=("$package"); fi
  done
}

# Installs the Debian packages that are missing. Needs network and root only if there are any. A
# script that installs waits for another of this tree that does.
need() {
  local missing root=()
  find_missing "$@"
  [ ${#missing[@]} -gt 0 ] || return 0
  mkdir -p build
  exec {installing}> build/installing
  flock "$installing"
  if [ "$(id -u)" -ne 0 ]; then root=(sudo); fi
  if [ ${#root[@]} -gt 0 ] && ! { command -v sudo > /dev/null && sudo true; }; then
    printf '%s\n' 'Packages are missing. As an administrator, run:' \
      "apt-get update && apt-get install --no-install-recommends ${missing[*]}" >&2
    exit 1
  fi
  "${root[@]}" apt-get update
  find_missing "$@"
  say "installing ${missing[*]}"
  "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${missing[@]}"
  exec {installing}>&-
}

# Says what is left out, and fails, where one of the packages cannot be had.
# have_all <what> <package...>
have_all() {
  local package
  for package in "${@:2}"; do
    installed "$package" && continue
    say "$1 is left out: this system does not offer $package"
    return 1
  done
}

# Lists the C++ files in the given folders.
sources() { find "$@" -name '*.cpp' -o -name '*.h'; }

# Configures a preset and builds it: all targets, or those given. Only in CI is a warning an error:
# those of a newer compiler stop nobody else.
# build <preset> [target...]
build() {
  local preset=$1 warnings=(--compile-no-warning-as-error)
  shift
  say "building the preset $preset"
  [ -z "${CI:-}" ] || warnings=()
  cmake --preset "$preset" "${warnings[@]}"
  cmake --build --preset "$preset" -j "$(nproc)" ${1:+--target "$@"}
}

# Copies a sample machine and the data files to a folder, and makes the game's executable there. The
# machine's drives lead nowhere else, since the program may search a whole drive. The release is the
# one that the target file names, unless another is given.
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
  mkdir "$folder/machine/dosdevices"
  ln -s ../drive_c "$folder/machine/dosdevices/c:"
  ln -s ../.. "$folder/machine/dosdevices/z:"
  "$built/make_executable" "$folder/machine/drive_c/Program Files (x86)/$executable" \
    "${4:-$(sed -n "${line}p" data/targetvoraver.txt | tr -d '\r')}"
}
