# A throw-away Wine prefix for scripts that run the Windows build. Source it after common.sh and
# display.sh, and call save_wine on exit. VORA_THROWAWAY_MACHINE marks it: tests change the registry
# and files of their prefix, and refuse one without the mark.

export WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml=,winemenubuilder.exe=d'
export LC_ALL=C.UTF-8  # so that file names are UTF-8 for Wine, too
wine=/usr/lib/wine/wine64

# start_wine <folder>: makes a fresh Wine prefix there, with a home folder of its own. It is a
# Windows 7, as Wine 8 makes it: Wine 10 makes a Windows 10.
start_wine() {
  rm -rf "$1"
  mkdir -p "$1/home/Documents"  # to which Wine links that of the profile
  HOME=$(cd "$1/home" && pwd)
  WINEPREFIX=$(cd "$1" && pwd)/machine
  export HOME WINEPREFIX VORA_THROWAWAY_MACHINE=1
  "$wine" wineboot --init > "$1/wineboot" 2>&1
  "$wine" winecfg /v win7
  save_wine
}

# Ends every process of the Wine prefix, which also writes the registry to its files.
save_wine() {
  if [ -n "${VORA_THROWAWAY_MACHINE:-}" ]; then "${wine%64}server64" --kill 2>/dev/null || true; fi
}

