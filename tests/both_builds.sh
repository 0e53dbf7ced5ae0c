#!/usr/bin/env bash
# Runs the Linux build and the Windows build in one Wine prefix with the same maps: both must leave
# the same files and print the same messages. scripts/test-windows calls it:
# both_builds.sh <Linux build folder> <Windows build folder>
set -euo pipefail
: "${VORA_THROWAWAY_MACHINE:?this changes the machine: run it by scripts/test-windows}"
linux=$(cd "$1" && pwd)
windows=$(cd "$2" && pwd)
cd "$(dirname "$0")/.."
source scripts/wine.sh
source tests/support/check.sh
c=$WINEPREFIX/drive_c
user=$c/users/$(id -un)
# On drive C:, since a run without search roots walks the whole drive of the current folder. Both
# programs run in one folder, because "info.txt" names it and its first file.
scratch=$c/both
rm -rf "$scratch"
mkdir -p "$scratch/program" "$scratch/data"
cp "$linux/vora-map-updater" "$windows/vora-map-updater.exe" "$scratch/program"

key='HKLM\SOFTWARE\Wow6432Node\Orbwright\Paxhollow'
register() { # register <edition> <folder>
  "$wine" reg delete "$key" /f > /dev/null 2>&1 || true
  "$wine" reg add "$key\\$1" /v Path /d "C:\\Program Files (x86)\\$2" /f > /dev/null
  save_wine  # the Linux program reads the registry's files
  # Both must say the same of the processor where the registry does not describe it.
  sed -i '/^"\(NUMBER_OF_PROCESSORS\|OS\|PROCESSOR_.*\)"=/d' "$WINEPREFIX/system.reg"
}

# Copies a sample's maps, those of its user's folders into the folders of the prefix's user.
put_maps() { # put_maps <base|expansion> <executable> <line of the target file>
  local sample=sample/$1/drive_c
  local programs="$c/Program Files (x86)"
  rm -rf "$programs"/Vorakai* "$user/AppData/Local/Kettlewick Games" "$user/Documents/My Games"
  cp -r "$sample/Program Files (x86)"/Vorakai* "$programs"
  cp -r "$sample/users/player/AppData/Local"/. "$user/AppData/Local"
  cp -r "$sample/users/player/Documents"/. "$user/Documents"
  local folder
  for folder in "$programs/${2%/*}" "$user/AppData/Local/Kettlewick Games/Vorakai" \
    "$user/Documents/My Games/Kettlewick Games/Vorakai Tarnfall"; do
    [ ! -d "$folder" ] || printf 'only one line' > "$folder/bad.galaxy"
  done
  "$linux/make_executable" "$programs/$2" "$(sed -n "$3p" data/targetvoraver.txt | tr -d '\r')"
  rm -rf "$scratch/data"
  cp -r data "$scratch/data"
  printf '\xC9toile du Nord.galaxy\r\n' >> "$scratch/data/original vora galaxies.txt"  # code page 1252
}

# Lists what a program left: files with their checksums, folders and symlinks by name.
left_behind() {
  (cd "$c" && find "Program Files (x86)"/Vorakai* "users/$(id -un)/AppData/Local" \
    "users/$(id -un)/Documents/" \( -type f -exec sha256sum {} + \) -o -print | LC_ALL=C sort -k 2)
  (cd "$scratch" && find data -type f -exec sha256sum {} + | LC_ALL=C sort -k 2)
}

# Runs a program on a fresh copy of the maps: sets left, said and status.
run_on() { # run_on <debug?> <sample> <executable> <target line> <command...>
  put_maps "$2" "$3" "$4"
  [ "$1" = no ] || sed -i '7s/.*/debug\r/' "$scratch/data/targetvoraver.txt"
  status=0
  # To a file: Wine processes that outlive the program would keep a pipe open.
  (cd "$scratch/data" && "${@:5}" > "$scratch/said" 2>&1) || status=$?
  said=$(tr -d '\r' < "$scratch/said")
  left=$(left_behind)
}

# Runs a Windows program. One that shows a message box is ended after five minutes.
on_windows() {
  local status=0
  timeout 300 "$wine" "$@" || status=$?
  [ $status != 124 ] || save_wine
  return $status
}

plainly() { on_windows "$scratch/program/vora-map-updater.exe" /silent; }

# With a redirection between program and argument, since cmd passes on the blank before it: Wine's
# does not know one before the program, which the documents name.
from_prompt() {
  local status=0
  on_windows cmd /c 'C:\both\program\vora-map-updater.exe 2> ..\reported.txt /silent' || status=$?
  cat ../reported.txt
  return $status
}

# What the Linux program leaves and says is expected of the Windows program.
compare() { # compare <what> <how Windows starts it> <debug?> <sample> <executable> <target line>
  local what=$1 start=$2
  shift 2
  run_on "$@" env -u DISPLAY "$scratch/program/vora-map-updater" /silent
  local linux_left=$left linux_said=$said linux_status=$status
  local linux_info
  linux_info=$(cat "$scratch/data/info.txt" 2>/dev/null) || true
  run_on "$@" "$start"
  check "$what: exit status" "$linux_status" "$status"
  check "$what: what it says" "$linux_said" "$said"
  check "$what: the skipped map" yes "$([[ $said == *bad.galaxy* ]] && echo yes || echo no)"
  local written=galold
  [ "$1" = no ] || written=galtst
  check "$what: an own map" no "$(grep -q "toile du Nord.$written" <<< "$left" && echo yes || echo no)"
  check "$what: maps converted" yes "$(grep -q "\.$written\$" <<< "$left" && echo yes || echo no)"
  [ "$linux_left" = "$left" ] && return
  printf 'FAILED %s: what it leaves behind\n' "$what"
  diff <(printf '%s\n' "$linux_left") <(printf '%s\n' "$left") || true
  diff <(printf '%s\n' "$linux_info") "$scratch/data/info.txt" || true
  failed=1
}

register vora Vorakai
compare base plainly no base Vorakai/Vorakai.exe 1
compare "base, from a prompt" from_prompt no base Vorakai/Vorakai.exe 1
compare "base, debug" plainly yes base Vorakai/Vorakai.exe 1
register voratarnfall 'Vorakai Tarnfall'
compare expansion plainly no expansion 'Vorakai Tarnfall/Vorakai Tarnfall.exe' 5
compare "expansion, debug" plainly yes expansion 'Vorakai Tarnfall/Vorakai Tarnfall.exe' 5

# The README's command to get all maps of a folder tree back, as typed at the prompt.
restore=$(sed -n '/^```bat$/,/^```$/{/^```/!p}' README.md)
maps() { (cd "$c" && find users -iname '*.gal[ao]*' -type f -exec cksum {} + | sort -k 3); }
register vora Vorakai
put_maps base Vorakai/Vorakai.exe 1
before=$(maps)
(cd "$scratch/data" && env -u DISPLAY "$scratch/program/vora-map-updater" /silent > /dev/null 2>&1) || true
check "converted before they are restored" no "$([ "$before" = "$(maps)" ] && echo yes || echo no)"
while IFS= read -r line; do  # Wine's cmd takes one line of a file
  (cd "$c" && on_windows cmd <<< "$line"$'\r' > "$scratch/said" 2>&1)
done <<< "$restore"
check "restored at the prompt" "$before" "$(maps)"

[ $failed = 0 ] && echo "both builds agree"
exit $failed
