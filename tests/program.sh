#!/usr/bin/env bash
# Runs the program on the sample machines and checks maps, messages and exit status.
# program.sh <build folder>
set -euo pipefail
build=$(cd "$1" && pwd)
source "$(dirname "$0")/../scripts/common.sh"
source tests/support/check.sh
[ ! -d /dev/shm ] || export TMPDIR=/dev/shm  # thousands of files are flushed
scratch=$(mktemp -d)
copy=$(mktemp -d)
trap 'rm -rf "$scratch" "$copy"' EXIT

# Never use a display, even if there is one.
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM

run() { # run <arguments...>: sets status and said
  enclosed "$scratch" "$scratch/machine"
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

# What the panel says on prefixes in the form that each Wine gives them: what the registry has, else
# what the machine's own processor is.
for wine in wine-8 wine-10; do
  for known in yes no; do
    make_sample base "$scratch" "$build"
    machine=$scratch/machine
    sed -n '/Paxhollow/,/^$/p' "$machine/system.reg" | cat "tests/machines/$wine/system.reg" \
      <(echo) - > "$scratch/system.reg"
    mv "$scratch/system.reg" "$machine/system.reg"
    cp "tests/machines/$wine/user.reg" "$machine"
    [ $known = yes ] || sed -i '/PROCESSOR/d; /^"OS"/d' "$machine/system.reg"
    sed -i '7s/.*/debug\r/' "$scratch/data/targetvoraver.txt"
    run /silent
    check "$wine: exit status" 0 "$status"
    panel=$(sed -n '2s/\r//p' "$scratch/data/info.txt")
    if [ $known = yes ]; then
      check "$wine: panel" \
        'AMD64 type2 coresAMD64 Family 26 Model 2 Stepping 1, AuthenticAMD ID' "$panel"
    elif grep -q ^vendor_id /proc/cpuinfo; then
      check "$wine: panel of this processor" "AMD64 type$(getconf _NPROCESSORS_ONLN) coresyes ID" \
        "$(sed -E 's/(AMD64|Intel64) Family [0-9]+ Model [0-9]+ Stepping [0-9]+, [A-Za-z]+/yes/' \
          <<<"$panel")"
    fi
    check "$wine: 64 bit" True "$(sed -n '1s/.*bit ?\(True\).*/\1/p' "$scratch/data/info.txt")"
    check "$wine: version" 'voraversion'"$(sed -n 1p data/targetvoraver.txt | tr -d '\r')" \
      "$(tail -n 1 "$scratch/data/info.txt" | tr -d '\r')"
  done
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
  check "$edition: restored" "$before" "$(maps "$scratch/machine")"
done
# A folder is no backup; a killed run left a hard link; two maps may have the same backup name.
mkdir -p "$scratch/odd/folder.galold"
(
  cd "$scratch/odd"
  echo killed > killed.galaxy && ln killed.galaxy killed.galold
  echo whole > empty.galaxy && : > empty.galold
  echo one > twin.galaxy && echo other > twin.galAXY && echo old > twin.galold
  echo new > "it's.galaxy" && echo old > "it's.galold"
  check "restored: what is said" "./twin.galold may be the backup of: ./twin.galAXY ./twin.galaxy" \
    "$(LC_ALL=C sh -c "$restore" 2>&1)"
  check "restored: odd names" "empty.galaxy:whole empty.galold: folder.galold: it's.galaxy:old killed.galaxy:killed \
twin.galAXY:other twin.galaxy:one twin.galold:old " \
    "$(for file in *; do printf '%s:%s ' "$file" "$(cat "$file" 2>/dev/null)"; done | sed 's/: /: /')"
  exit $failed
) || failed=1

make_sample base "$scratch" "$build" 9.9.9.9
run /silent
check "mismatch: exit status" 1 "$status"
check "mismatch: lines" 8 "$(wc -l <<<"$said")"
check "mismatch: line ends" 0 "$(tr -dc '\r' <<<"$said" | wc -c)"
check "mismatch: the maps" "$(maps sample/base)" "$(maps "$scratch/machine")"

make_sample base "$scratch" "$build"
status=0
said=$(mkdir "$scratch/gone" && cd "$scratch/gone" && rmdir "$scratch/gone" &&
  WINEPREFIX=$scratch/machine "$build/vora-map-updater" /s 2>&1) || status=$?
check "no current folder" "1 The current folder is missing. Start the program in the folder that \
holds its data files." "$status $said"
check "no current folder: the maps" "$(maps sample/base)" "$(maps "$scratch/machine")"
run /s "" /s
usage='Usage: vora-map-updater [/silent] (see man vora-map-updater)'
check "empty argument" "1 Invalid argument: "$'\n'"$usage" "$status $said"
run --help
check "a usual argument" "1 Invalid argument: --help"$'\n'"$usage" "$status $said"
run "/s /s"
check "two pieces in one argument" "0 " "$status $said"
run
check "no argument" 1 "$status"
check "no argument" "yes" "$([[ $said == *"/silent"* ]] && echo yes)"
run ""
check "one empty argument" "yes" "$([[ $said == *"/silent"* ]] && echo yes)"

run $'/x\r\ny'
check "an argument of two lines" '1 Invalid argument: /x\x0D\x0Ay'$'\n'"$usage" "$status $said"

# What a player is told: a line of less than 200 characters that says what to do.
told() { # told <what> <exit status> <end of the line>
  check "$1: exit status" "$2" "$status"
  check "$1: what it says" "$3" "$(grep -oF -- "$3" <<<"$said" | head -n 1)"
  check "$1: length" "" "$(grep -F -- "$3" <<<"$said" | grep -E '^.{200}')"
}
prepare() { # prepare <command...>: makes a fresh sample, and runs the command in its data folder
  make_sample base "$scratch" "$build"
  (cd "$scratch/data" && "$@")
}
to_lf() { sed -i 's/\r$//' "$1"; }
in_lf='its lines must end in CR LF'

list='original vora galaxies.txt'
for file in targetvoraver.txt "$list"; do
  prepare to_lf "$file"
  run /s
  told "LF in $file" 1 "$file: cannot use it: $in_lf"
done
# The list of the game's own maps in a code page: 1252, or the one that the registry names.
star_folder='AppData/Local/Kettlewick Games/Vorakai/maps'
for page in 1252 1251; do
  [ $page = 1252 ] && star=$'\xC9toile du Nord' || star=$'\xC7\xE2\xE5\xE7\xE4\xE0'
  prepare sh -c 'printf "%s.galaxy\r\n" "$0" >> "original vora galaxies.txt"' "$star"
  printf '\n[System\\\\CurrentControlSet\\\\Control\\\\Nls\\\\CodePage] 1\n"ACP"="%s"\n' $page \
    >> "$scratch/machine/system.reg"
  maps=$scratch/machine/drive_c/users/player/$star_folder
  cp "$maps/Étoile du Nord.galaxy" "$maps/Звезда.galaxy"
  run /s
  check "a list in code page $page" "0 $([ $page = 1252 ] && echo Звезда || echo Étoile du Nord).galold" \
    "$status $(cd "$maps" && ls | grep -E '^(Звезда|Étoile du Nord)\.galold')"
done
prepare sh -c "rm '$list' && ln -s '$list' '$list'"
run /s
told "a list that leads to itself" 1 "$list: cannot find it: Too many levels of symbolic links"
prepare to_lf vnewstruct0.txt
run /s
told "LF in the baseline" 1 "No map was converted: vnewstruct0.txt: cannot use it: $in_lf"
for file in voldstruct9.txt vnewstruct9.txt; do
  prepare to_lf "$file"
  run /s
  told "LF in $file" 1 "$file: cannot use it: $in_lf"
done
prepare sh -c 'rm ../machine/user.reg && mkdir ../machine/user.reg'
run /s
told "no user.reg" 1 "your maps may not be found: $scratch/machine/user.reg: it is not a regular file"
prepare sh -c 'rm ../machine/system.reg && mkdir ../machine/system.reg'
run /s
told "no system.reg" 1 "its system.reg cannot be read: it is not a regular file"
check "no system.reg: registered" no "$([[ $said == *'not registered'* ]] && echo yes || echo no)"
prepare rm vnewstruct9.txt
run /s
told "no template" 1 'Template vnewstruct9.txt is missing: C:'
told "no template" 1 'the map is of version "9" and cannot be converted'
of_version_9() { # the found maps; those on the list of the game's own are skipped
  local map
  while IFS= read -r map; do
    if ! grep -qixF "${map##*/}"$'\r' "$scratch/data/$list" &&
      sed -n 2p "$map" | grep -q $'[^0-9]9\r$'; then
      printf '%s\n' "$map"
    fi
  done < <(find "$scratch/machine" -type f -iname '*.galaxy')
}
count=$(of_version_9 | wc -l)
told "no template" 1 "The map is as it was. No further map was converted: $count of the found maps \
are of that version; move them elsewhere and run again for the others."
# Those that were counted are enough.
of_version_9 | xargs -d '\n' rm
run /s
check "no template: without those maps" "0 " "$status $said"

# Why there is no release to compare.
executable='Program Files (x86)/Vorakai/Vorakai.exe'
unknown='The game'"'"'s release is not known: C:\Program Files (x86)\Vorakai\Vorakai.exe'
for broken in 'rm "$0"' 'printf MZ > "$0"' 'rm "$0" && mkdir "$0"'; do
  prepare sh -c "$broken" "../machine/drive_c/$executable"
  run /s
  told "no release" 1 "$unknown: $([[ $broken = *MZ* ]] && echo 'it is no program with a version' ||
    echo 'cannot read it: the file is missing')"
  check "no release: the message after it" "found vora version ::" "$(sed -n 2p <<<"$said")"
done

# Started at the wrong place: the message names the right one, and a silent run does not end well.
mkdir -p "$copy/prefix/bin" "$copy/prefix/share/vora-map-updater" "$copy/empty"
cp "$build/vora-map-updater" "$copy/prefix/bin"
cp data/* "$copy/prefix/share/vora-map-updater"
status=0
said=$(cd "$copy/empty" && WINEPREFIX=/none "$copy/prefix/bin/vora-map-updater" /silent 2>&1) || status=$?
told "nothing to do" 1 "Nothing was done: there is no game, no map and no template here. Start the \
program in the folder that holds its data files: $copy/prefix/share/vora-map-updater"
prepare mkdir ../empty
status=0
said=$(cd "$scratch/empty" && WINEPREFIX=$scratch/machine "$copy/prefix/bin/vora-map-updater" /silent 2>&1) ||
  status=$?
told "no data files" 1 ". Start the program in the folder that holds its data files: \
$copy/prefix/share/vora-map-updater"
check "no data files: the maps" "$(maps sample/base)" "$(maps "$scratch/machine")"

# A display that cannot be opened, and a program that was copied without its window. Either is
# told in a line; the silent run or the hint follows.
on_dead_display() { # on_dead_display <command...>: sets status and said
  status=0
  said=$(cd "$scratch/data" && DISPLAY=:987 WINEPREFIX=$scratch/machine "$@" 2>&1) || status=$?
}
no_window() { # no_window <first line> <a line that follows, which may be empty> <command...>
  prepare true
  on_dead_display "${@:3}"
  told "no window" 1 "$1"
  told "no window" 1 "$2"
  check "no window: the hint" 'There is no window to wait in. To find and convert all maps, start the '\
'program with the argument /silent.' "$(tail -n 1 <<<"$said")"
  on_dead_display "${@:3}" /silent
  check "no window: a silent run" "0 $1" "$status $(head -n 1 <<<"$said")"
  check "no window: other lines" "" "$(tail -n +2 <<<"$said" | grep -v '^Qt: ')"
  check "no window: the maps" "$(maps tests/expected/base)" "$(maps "$scratch/machine")"
}
folder=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p' "$build/CMakeCache.txt")/vora-map-updater
mkdir -p "$copy/bin" "$copy/local/$folder"
cp "$build/vora-map-updater" "$copy/bin"
with_local() { # runs a command for which /usr/local is a folder of ours
  unshare --map-root-user --mount sh -c 'mount --bind "$0" /usr/local && exec "$@"' "$copy/local" "$@"
}
window=$build/vora-map-updater-window.so
if [ ! -e "$window" ] || [ -e "/usr/$folder" ] || ! with_local true 2>/dev/null; then
  echo "skipped: a window that cannot be shown"
else
  no_window 'The window cannot be shown (DISPLAY=:987).' 'Qt: could not connect to display :987' \
    "$build/vora-map-updater"
  no_window 'The window cannot be shown (DISPLAY=:987, QT_QPA_PLATFORM=none).' \
    'Qt: Could not find the Qt platform plugin "none"' env QT_QPA_PLATFORM=none "$build/vora-map-updater"
  no_window "The window cannot be shown: no vora-map-updater-window.so in $copy/bin, nor in $folder \
below $copy/, /usr/local/, /usr/" "" with_local "$copy/bin/vora-map-updater"
  cp "$window" "$copy/local/$folder"
  no_window 'The window cannot be shown (DISPLAY=:987).' "" with_local "$copy/bin/vora-map-updater"
fi

# Without WINEPREFIX, the prefixes of launchers are searched; here two in a Steam library have the
# game, and one below Games has not.
make_sample base "$scratch" "$build"
home=$scratch/home
library=$home/.local/share/Steam/steamapps/compatdata
mkdir -p "$library/1" "$library/2" "$home/Games" "$scratch/other drive"
mv "$scratch/machine" "$library/1/pfx"
ln -sfn "$scratch/other drive" "$library/1/pfx/dosdevices/z:"
cp -a "$library/1/pfx" "$library/2/pfx"
cp -a "$library/1/pfx" "$home/Games/without"
sed -i 's/Paxhollow/Another/' "$home/Games/without/system.reg"
touch -d '2 hours ago' "$library/1/pfx/user.reg"
touch -d '1 hour ago' "$library/2/pfx/user.reg"

find_and_run() { # find_and_run <WINEPREFIX, which may be empty>: sets status and said
  enclosed "$scratch" "$library"/*/pfx "$home/Games/without"
  status=0
  said=$(cd "$scratch/data" && HOME=$home WINEPREFIX=$1 "$build/vora-map-updater" /silent 2>&1) ||
    status=$?
}

find_and_run ""
check "search: what it says" "0 Using the Wine prefix $library/2/pfx.
The game is also in the Wine prefix $library/1/pfx.
Set WINEPREFIX to choose another." "$status $said"
check "search: the maps" "$(maps tests/expected/base)" "$(maps "$library/2/pfx")"
check "search: the older prefix" "$(maps sample/base)" "$(maps "$library/1/pfx")"
DISPLAY=$':dead\e[2J' find_and_run ""
check "search: a restart without the window" 1 "$(grep -c '^Using the Wine prefix' <<<"$said")"
check "search: bytes that disturb a terminal" 0 "$(grep -c $'\e' <<<"$said")"
find_and_run "$library/1/pfx"
check "search: WINEPREFIX" "0 " "$status $said"

explained() { # explained <WINEPREFIX> <reason>
  find_and_run "$1"
  check "no game: exit status" 1 "$status"
  check "no game: first line" "No game was found: $2" "$(head -n 1 <<<"$said")"
  check "no game: line 8" "and the vora user directory is" "$(sed -n 8p <<<"$said")"
  check "no game: second line" "found vora version ::" "$(sed -n 2p <<<"$said")"
}
ln -s system.reg "$scratch/other drive/system.reg"
for folder in "$home/none" "$scratch/data/targetvoraver.txt"; do
  explained "$folder" "the Wine prefix $folder cannot be used: there is no such folder"
done
explained "$home" "the Wine prefix $home cannot be used: it has no system.reg"
mkdir -p "$scratch/folder/system.reg"
explained "$scratch/folder" "the Wine prefix $scratch/folder cannot be used: \
its system.reg cannot be read: it is not a regular file"
explained "$library/1" "the Wine prefix $library/1 cannot be used: it has no system.reg; \
did you mean $library/1/pfx?"
explained "$library/1/pfx/drive_c/users" "the Wine prefix $library/1/pfx/drive_c/users cannot be used: \
it has no system.reg; did you mean $library/1/pfx?"
explained "$scratch/other drive" "the Wine prefix $scratch/other drive cannot be used: \
its system.reg cannot be read: Too many levels of symbolic links"
explained "$home/Games/without" "the game is not registered in the Wine prefix $home/Games/without"
explained $'/none\r\nAll is well.' "the Wine prefix /none\\x0D\\x0AAll is well. cannot be used: there is no such folder"
sed -i.whole 's/^"Path"="[^"]*/"Path"="C:\\\xe9/' "$library/1/pfx/system.reg"  # and "\\": 4 characters
explained "$library/1/pfx" "the game is not registered in the Wine prefix $library/1/pfx"
mv "$library/1/pfx/system.reg.whole" "$library/1/pfx/system.reg"
sed -i 's/^"Path"="[^"]*/&\\r\\nAll is well./' "$library/1/pfx/system.reg"
explained "$library/1/pfx" "the folder that the game is registered in is missing"
rm "$scratch/data/targetvoraver.txt"
find_and_run "$home/none"
check "no game and no required release" "0 No game was found: the Wine prefix $home/none cannot be \
used: there is no such folder" "$status $said"
check "no game: the prefix is not made" no "$([ -e "$home/none" ] && echo yes || echo no)"
cp data/targetvoraver.txt "$scratch/data"
# The user's own prefix wins over those of launchers, which are named all the same.
cp -a "$library/2/pfx" "$home/.wine"
rm -r "$library/1"
enclosed "$scratch" "$home/.wine"
find_and_run ""
check "search: the user's own and another" "0 Using the Wine prefix $home/.wine.
The game is also in the Wine prefix $library/2/pfx.
Set WINEPREFIX to choose another." "$status $said"
rm -r "$library"
find_and_run ""
check "search: the user's own alone" "0 " "$status $said"
rm -r "$home/.wine"
explained "" "the Wine prefix $home/.wine cannot be used: there is no such folder"

[ $failed = 0 ] && echo "the program passed"
exit $failed
