# A throw-away Windows machine made by Wine, for a script that runs the Windows build. Source it
# after common.sh and display.sh; the script calls save_wine when it exits. What it makes is marked by
# VORA_THROWAWAY_MACHINE: tests change the machine, and refuse any that is not theirs.

export WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml=,winemenubuilder.exe=d'
export LC_ALL=C.UTF-8  # names of files are UTF-8 on both sides
wine=/usr/lib/wine/wine64

# start_wine <folder>: makes a fresh machine there, with a home of its own.
start_wine() {
  rm -rf "$1"
  mkdir -p "$1/home"
  HOME=$(cd "$1/home" && pwd)
  WINEPREFIX=$(cd "$1" && pwd)/machine
  export HOME WINEPREFIX VORA_THROWAWAY_MACHINE=1
  "$wine" wineboot --init > "$1/wineboot" 2>&1
  save_wine
}

# Writes the registry to its files and ends every process of the machine.
save_wine() {
  if [ -n "${VORA_THROWAWAY_MACHINE:-}" ]; then "${wine%64}server64" --kill 2>/dev/null || true; fi
}

