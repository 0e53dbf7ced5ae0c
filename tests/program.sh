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

# Without WINEPREFIX, the prefixes of launchers are searched; here two in a Steam library have the
# game, and one below Games has not.
make_sample base "$scratch" "$build"
home=$scratch/home
library=$home/.local/share/Steam/steamapps/compatdata
mkdir -p "$library/1" "$library/2" "$home/Games" "$scratch/other drive"
mv "$scratch/machine" "$library/1/pfx"
mkdir "$library/1/pfx/dosdevices"
ln -s ../drive_c "$library/1/pfx/dosdevices/c:"
ln -s "$scratch/other drive" "$library/1/pfx/dosdevices/z:"
cp -a "$library/1/pfx" "$library/2/pfx"
cp -a "$library/1/pfx" "$home/Games/without"
sed -i 's/Paxhollow/Another/' "$home/Games/without/system.reg"
touch -d '2 hours ago' "$library/1/pfx/user.reg"
touch -d '1 hour ago' "$library/2/pfx/user.reg"

find_and_run() { # find_and_run <WINEPREFIX, which may be empty>: sets status and said
  status=0
  said=$(cd "$scratch/data" && HOME=$home WINEPREFIX=$1 "$build/vora-map-updater" /silent 2>&1) ||
    status=$?
}

find_and_run ""
check "search: what it says" "0 Using the Wine prefix $library/2/pfx (the game was found in 2; \
set WINEPREFIX to choose another)" "$status $said"
check "search: the maps" "$(maps tests/expected/base)" "$(maps "$library/2/pfx")"
check "search: the older prefix" "$(maps sample/base)" "$(maps "$library/1/pfx")"
DISPLAY=:dead find_and_run ""
check "search: a restart without the window" 1 "$(grep -c '^Using the Wine prefix' <<<"$said")"
find_and_run "$library/1/pfx"
check "search: WINEPREFIX" "0 " "$status $said"

explained() { # explained <WINEPREFIX> <reason>
  find_and_run "$1"
  check "no game: exit status" 1 "$status"
  check "no game: first line" "found vora version ::" "$(head -n 1 <<<"$said")"
  check "no game: lines" 9 "$(wc -l <<<"$said")"
  check "no game: last line" "No game was found: $2" "$(tail -n 1 <<<"$said")"
}
ln -s system.reg "$scratch/other drive/system.reg"
explained "$home/none" "the Wine prefix $home/none cannot be used: there is no such folder"
explained "$home" "the Wine prefix $home cannot be used: it has no system.reg"
explained "$library/1" "the Wine prefix $library/1 cannot be used: it has no system.reg; \
did you mean $library/1/pfx?"
explained "$library/1/pfx/drive_c" "the Wine prefix $library/1/pfx/drive_c cannot be used: \
it has no system.reg; did you mean $library/1/pfx?"
explained "$scratch/other drive" "the Wine prefix $scratch/other drive cannot be used: \
its system.reg cannot be read: Too many levels of symbolic links"
explained "$home/Games/without" "the game is not registered in the Wine prefix $home/Games/without"
rm -r "$library"
explained "" "the Wine prefix $home/.wine cannot be used: there is no such folder"

[ $failed = 0 ] && echo "the program passed"
exit $failed
