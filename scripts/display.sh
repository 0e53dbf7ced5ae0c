# A private X display for scripts that drive the window. Source it after common.sh, and call
# stopdisplay on exit.

startdisplay() {
  local number
  exec {numberpipe}<> <(:)
  Xvfb -displayfd "$numberpipe" -screen 0 1024x768x24 -nolisten tcp 2>/dev/null &
  displayprocess=$!
  read -r -t 60 -u "$numberpipe" number
  export DISPLAY=:$number
}

stopdisplay() { kill "$displayprocess" 2>/dev/null || true; }

# Retries a command until it succeeds, for a minute at most.
waitfor() {
  local tries
  for ((tries = 0; tries < 600; tries++)); do
    if "$@" > /dev/null 2>&1; then return 0; fi
    sleep 0.1
  done
  printf 'gave up waiting for: %s\n' "$*" >&2
  return 1
}

# Clicks on a control, whose position is read from the layout. The window must be at the screen's
# top left corner.
clickon() {
  local left top width height
  read -r left top width height < <(sed -nE \
    "s/.*\\{\"$1\", [^\"]*\"[^\"]*\", ([0-9]+), ([0-9]+), ([0-9]+), ([0-9]+).*/\\1 \\2 \\3 \\4/p" \
    src/ui/layout.cpp)
  xdotool mousemove $(((left + width / 2) / 15)) $(((top + height / 2) / 15)) click "${2:-1}"
}
