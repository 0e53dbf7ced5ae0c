# A private X display for scripts that drive the window. Source it after common.sh, and call
# stop_display on exit.

start_display() {
  local number
  exec {number_pipe}<> <(:)
  Xvfb -displayfd "$number_pipe" -screen 0 1280x720x24 -nolisten tcp -noreset 2>/dev/null &
  display_process=$!
  read -r -t 60 -u "$number_pipe" number
  export DISPLAY=:$number
}

stop_display() { kill "$display_process" 2>/dev/null || true; }

# Retries a command until it succeeds, for a minute at most.
wait_for() {
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
click_on() {
  local left top width height
  read -r left top width height < <(sed -nE \
    "s/.*\\{\"$1\", [^\"]*\"[^\"]*\", ([0-9]+), ([0-9]+), ([0-9]+), ([0-9]+).*/\\1 \\2 \\3 \\4/p" \
    src/ui/layout.cpp)
  xdotool mousemove $(((left + width / 2) / 15)) $(((top + height / 2) / 15)) click "${2:-1}"
}
