#!/usr/bin/env bash
# Drives the window with mouse and keyboard on a private display, and starts the program without a
# display or with one that does not answer.
# window.sh <build folder>
set -euo pipefail
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/../../.."
source scripts/display.sh
source tests/support/check.sh

scratch=$(mktemp -d)
program=
cleanup() {
  [ -z "$program" ] || kill -KILL "$program" 2>/dev/null || true
  stop_display
  rm -rf "$scratch"
}
trap cleanup EXIT

fail() {
  printf 'FAILED %s\n' "$*"
  exit 1
}

# A search without a root is one of drive Z:.
machine() {
  rm -rf "$scratch/machine"
  cp -r sample/base "$scratch/machine"
  mkdir "$scratch/machine/dosdevices"
  ln -s ../drive_c "$scratch/machine/dosdevices/c:"
  ln -s ../.. "$scratch/machine/dosdevices/z:"
  "$build/make_executable" "$scratch/machine/drive_c/Program Files (x86)/Vorakai/Vorakai.exe" \
    "$(sed -n 1p data/targetvoraver.txt | tr -d '\r')"
}

# Starts the program on a fresh machine as the process `program`, and logs its libraries to `said`.
start() {
  machine
  ${prepare:-true}
  enclosed "$scratch" "$scratch/machine"
  (cd "$scratch/data" && LD_DEBUG=files WINEPREFIX=$scratch/machine \
    exec "$build/vora-map-updater" "$@") 2> "$scratch/said" &
  program=$!
}

ended() { # ended <what>: checks that the program ends by itself with exit status 0
  wait_for eval '! kill -0 '"$program" || fail "$1: it does not end"
  wait "$program" || fail "$1: exit status $?"
  program=
}

maps() { (cd "$1" && find drive_c -type f -iname '*.gal*' -exec cksum {} + | sort -k 3); }
converted() { [ "$(maps tests/expected/base)" = "$(maps "$scratch/machine")" ]; }
fix() {
  click_on Command2
  converted
}

ldd "$build/vora-map-updater" | grep -i qt && fail 'the program itself needs Qt'

cp -r data "$scratch/data"
start_display
start
wait_for xdotool search --onlyvisible --name 'map updater' || fail 'no window appears'
xdotool windowmove "$(xdotool search --onlyvisible --name 'map updater')" 0 0
click_on Command1
wait_for fix || fail 'the maps are not converted'
click_on Command3
ended 'the exit button'

# A click that comes before start-up is over waits. The program stops when its window has just
# appeared, without a window manager in the screen's corner; in debug mode it makes info.txt next.
sed -i '7s/normal/debug/' "$scratch/data/targetvoraver.txt"
stops_with_window() {
  kill -STOP "$program" && xdotool search --onlyvisible --name 'map updater' > /dev/null
}
fix_in_debug_mode() {
  click_on Command2
  [ -n "$(find "$scratch/machine" -name '*.[Gg][Aa][Ll]tst')" ]
}
early=0
for ((starts = 0; early < 5; starts++)); do
  [ $starts -lt 100 ] || fail 'start-up is always over when the window appears'
  rm -f "$scratch/data/info.txt"
  start
  until stops_with_window; do
    kill -CONT "$program" || fail 'it ends before its window appears'
    sleep 0.001
  done
  if [ ! -e "$scratch/data/info.txt" ]; then
    click_on Command1
    kill -CONT "$program"
    wait_for fix_in_debug_mode || fail 'the maps are not converted after a click during start-up'
    early=$((early + 1))
  fi
  kill -KILL "$program"
  wait "$program" 2> /dev/null || true
  program=
done
cp data/targetvoraver.txt "$scratch/data"

# Enter that is held down, or pressed twice at once, only finds the maps: fixing them needs another
# press. The X server repeats a key 25 times a second.
press() { xdotool key --delay 40 "$@"; }
untouched() { [ "$(maps sample/base)" = "$(maps "$scratch/machine")" ]; }
for pressed in held twice; do
  start
  wait_for xdotool search --onlyvisible --name 'map updater' || fail 'no window appears'
  wait_for xdotool windowfocus --sync "$(xdotool search --onlyvisible --name 'map updater')"
  press Tab Tab Tab
  if [ $pressed = held ]; then
    xdotool keydown Return
    sleep 3
    xdotool keyup Return
  else
    press Return Return
  fi
  sleep 1  # longer than a double click
  untouched || fail "Enter fixes the maps when it is $pressed"
  press Return
  wait_for converted || fail "Enter does not fix the maps after it was $pressed"
  sleep 1
  press Tab Return
  ended "the exit button after Enter was $pressed"
done

# The design is larger than the screen then.
QT_SCALE_FACTOR=1.6 start
wait_for xdotool search --onlyvisible --name 'map updater' || fail 'no window appears'
on_screen() {
  local WIDTH HEIGHT
  eval "$(xdotool getwindowgeometry --shell "$(xdotool search --onlyvisible --name 'map updater')")"
  [ "$WIDTH" -le 1280 ] && [ "$HEIGHT" -le 720 ]
}
wait_for on_screen || fail 'the window is larger than the screen'
kill "$program"
wait "$program" || true
program=

# So would be the list of 300 maps that cannot be converted.
with_bad_maps() {
  local folder="$scratch/machine/drive_c/users/player/AppData/Local/Kettlewick Games/Vorakai/maps"
  for ((i = 0; i < 300; i++)); do echo one line > "$folder/bad $i.galaxy"; done
}
fixed_by_keyboard() { # the first press may come before start-up is over
  xdotool key Return
  sleep 1  # longer than a double click
  xdotool search --onlyvisible --name '^Vora Map Updater$'
}
for scale in 1 2; do
  prepare=with_bad_maps QT_SCALE_FACTOR=$scale start
  wait_for xdotool search --onlyvisible --name 'map updater' || fail 'no window appears'
  wait_for xdotool windowfocus --sync "$(xdotool search --onlyvisible --name 'map updater')"
  press Tab Tab Tab
  wait_for fixed_by_keyboard || fail "no list of failures at scale $scale"
  eval "$(xdotool getwindowgeometry --shell "$(xdotool search --onlyvisible --name '^Vora Map Updater$')")"
  [ "$X" -ge 0 ] && [ "$Y" -ge 0 ] && [ $((X + WIDTH)) -le 1280 ] && [ $((Y + HEIGHT)) -le 720 ] ||
    fail "the list of failures is $WIDTH by $HEIGHT at $X, $Y at scale $scale"
  kill "$program"
  wait_for eval '! kill -0 '"$program" || fail 'a signal does not end the wait for an answer'
  wait "$program" 2> /dev/null || true
  program=
done

# A box says on stderr what it says, in a silent run and for a wrong argument, and waits.
answered() { # answered <number of boxes> <text on stderr>: answers boxes until the program ends
  wait_for grep -qF "$2" "$scratch/said" || fail "nothing on stderr of: $2"
  kill -0 "$program" || fail "it does not wait: $2"
  local box status=0 boxes=' '
  for ((tries = 0; tries < 100; tries++)); do
    kill -0 "$program" 2> /dev/null || break
    sleep 0.3
    box=$(xdotool search --onlyvisible --name '^Vora Map Updater$' 2> /dev/null) || continue
    [[ $boxes == *" $box "* ]] || boxes+="$box "
    xdotool windowfocus --sync "$box" key Return > /dev/null 2>&1 || true
  done
  [ $tries -lt 100 ] || fail "boxes without end: $2"
  wait "$program" || status=$?
  program=
  [ $status = 1 ] || fail "exit status $status: $2"
  [ "$(wc -w <<< "$boxes")" = "$1" ] || fail "boxes$boxes: $2"
}
sed -i '1s/.*/9.9.9.9\r/' "$scratch/data/targetvoraver.txt"
start /silent
answered 1 'need vora version :9.9.9.9:'
untouched || fail 'a run with another release changes maps'
without_game() { # the folder that the game is registered in is missing
  rm -r "$scratch/machine/drive_c/Program Files (x86)/Vorakai"
}
prepare=without_game start
answered 2 ''
cp data/targetvoraver.txt "$scratch/data"
without_user_folder() {
  echo 'not a folder' > "$scratch/machine/drive_c/here"
  sed -i 's/^"Local AppData"=.*/"Local AppData"="C:\\\\here"/' "$scratch/machine/user.reg"
}
prepare=without_user_folder start /silent
answered 1 'The folder does not exist'
start --help
answered 1 'Usage: vora-map-updater [/silent] (see man vora-map-updater)'

# The list of the game's own maps is missed before the maps are converted.
rm "$scratch/data/original vora galaxies.txt"
start
wait_for xdotool search --onlyvisible --name 'map updater' || fail 'no window appears'
xdotool windowmove "$(xdotool search --onlyvisible --name 'map updater')" 0 0
list_missed() {
  click_on Command1
  sleep 0.3
  xdotool search --onlyvisible --name '^Vora Map Updater$'
}
wait_for list_missed || fail 'no box says that the list of the own maps is missing'
untouched || fail 'a search changes maps'
kill "$program"
wait "$program" || true
program=
cp "data/original vora galaxies.txt" "$scratch/data"

start /silent
ended 'a silent run in a window'
converted || fail 'a silent run in a window does not convert the maps'
stop_display

for display in '' ':987'; do
  DISPLAY=$display start /s
  ended "a silent run on the display '$display'"
  converted || fail "no conversion on the display '$display'"
  grep -q 'libQt' "$scratch/said" && [ -z "$display" ] && fail 'Qt is loaded without a display'
done
echo 'the window passed'
