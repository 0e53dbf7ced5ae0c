#!/usr/bin/env bash
# Runs the program on the sample machines and checks maps, messages and exit status.
# program.sh <build folder>
set -euo pipefail
build=$(cd "$1" && pwd)
source "$(dirname "$0")/../scripts/common.sh"
[ ! -d /dev/shm ] || export TMPDIR=/dev/shm  # thousands of files are flushed
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

failed=0
check() { # check <what> <expected> <found>
  [ "$2" = "$3" ] && return
  printf 'FAILED %s\n  expected: %s\n  found:    %s\n' "$1" "$2" "$3"
  failed=1
}

# Never use a display, even if there is one.
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM

run() { # run <arguments...>: sets status and said
  status=0
  said=$(cd "$scratch/data" && WINEPREFIX=$scratch/machine "$build/vora-map-updater" "$@" 2>&1) ||
    status=$?
}

# Lists maps and companions with their checksums.
maps() { (cd "$1" && find drive_c -type f -iname '*.gal*' -exec cksum {} + | sort -k 3); }

for edition in base expansion; do
  make_sample "$edition" "$scratch" "$build"
  run /silent
  check "$edition: exit status" 0 "$status"
  check "$edition: what it says" "" "$said"
  check "$edition: the maps" "$(maps "tests/expected/$edition")" "$(maps "$scratch/machine")"
  check "$edition: leftovers" "" "$(find "$scratch/machine" -name '.*' -type f)"
  run -s
  check "$edition: a second run" "$(maps "tests/expected/$edition")" "$(maps "$scratch/machine")"
done

# The plain script of the same conversion must give the same maps. It converts one folder tree: for
# the expansion the user's, since the program does not search the expansion's game folder.
for edition in base expansion; do
  folder=$([ $edition = base ] && echo drive_c || echo drive_c/users)
  make_sample "$edition" "$scratch" "$build"
  letter=$([ $edition = base ] && echo v || echo t)
  python3 bench/convert.py "$scratch/machine/$folder" --edition $letter --data data > /dev/null
  check "$edition: the plain script" "$(maps "tests/expected/$edition")" "$(maps "$scratch/machine")"
done

# Random templates and maps: the program and the plain script must agree.
for round in 1 2 3 4; do
  edition=$([ $((round % 2)) = 0 ] && echo base || echo expansion)
  letter=$([ $edition = base ] && echo v || echo t)
  make_sample "$edition" "$scratch" "$build"
  user=$(find "$scratch/machine/drive_c/users" -type d -iname 'Vorakai*')
  python3 tests/random_maps.py "$scratch/data" "$user/random" $letter $round
  cp -r "$user/random" "$scratch/random"
  run /silent
  check "random maps $round: exit status" "0 " "$status $said"
  python3 bench/convert.py "$scratch/random" --edition $letter --data "$scratch/data" > /dev/null
  check "random maps $round" "" "$(diff -r "$scratch/random" "$user/random")"
done

# The README's command to get all maps of a folder tree back.
restore=$(sed -n '/^```sh$/,/^```$/{/^```/!p}' README.md)
for edition in base expansion; do
  make_sample "$edition" "$scratch" "$build"
  map=$(find "$scratch/machine" -name 'Amber Reach.galaxy' -o -name 'Rung One.galaxy')
  cp "$map" "${map%/*}/ odd [1]*  'name'.GalAxy"
  before=$(maps "$scratch/machine")
  run /silent
  check "$edition: converted" no "$([ "$before" = "$(maps "$scratch/machine")" ] && echo yes || echo no)"
  (cd "$scratch/machine/drive_c" && sh -c "$restore")
  find "$scratch/machine" -iname '*.galfix' -delete
  check "$edition: restored" "$before" "$(maps "$scratch/machine")"
done

make_sample base "$scratch" "$build" 9.9.9.9
run /silent
check "mismatch: exit status" 1 "$status"
check "mismatch: first line" "found vora version :9.9.9.9:" "$(head -n 1 <<<"$said")"
check "mismatch: lines" 8 "$(wc -l <<<"$said")"
check "mismatch: line ends" 0 "$(tr -dc '\r' <<<"$said" | wc -c)"
check "mismatch: the maps" "$(maps sample/base)" "$(maps "$scratch/machine")"

make_sample base "$scratch" "$build"
run /x
check "unknown argument" "1 Invalid argument: /x" "$status $said"
run /s "" /s
check "empty argument" "1 Invalid argument: " "$status $said"
run "/s /s"
check "two pieces in one argument" "0 " "$status $said"
run
check "no argument" 1 "$status"
check "no argument" "yes" "$([[ $said == *"/silent"* ]] && echo yes)"
run ""
check "one empty argument" "yes" "$([[ $said == *"/silent"* ]] && echo yes)"

make_sample base "$scratch" "$build"
rm "$scratch/data/vnewstruct9.txt"
run /s
check "template error: exit status" 1 "$status"
check "template error: what it says" yes "$([[ $said == *"vnewstruct9.txt"* ]] && echo yes)"

make_sample base "$scratch" "$build"
printf 'only one line' >"$scratch/machine/drive_c/Program Files (x86)/Vorakai/bad.galaxy"
run /s
check "a map left alone: exit status" 1 "$status"
check "a map left alone: what it says" yes "$([[ $said == *"bad.galaxy"*"no second line"* ]] && echo yes)"

[ $failed = 0 ] && echo "the program passed"
exit $failed
