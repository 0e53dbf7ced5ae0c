#!/usr/bin/env bash
# Installs the program into a folder, runs it there, and checks the package's content.
# package.sh <build folder>
set -euo pipefail
build=$(cd "$1" && pwd)
source "$(dirname "$0")/../scripts/common.sh"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
  printf 'FAILED %s\n' "$*"
  exit 1
}

installed=$scratch/usr
cmake --install "$build" --prefix "$installed" > /dev/null
desktop=$installed/share/applications/vora-map-updater.desktop
desktop-file-validate "$desktop"
appstreamcli validate --no-net "$installed/share/metainfo/vora-map-updater.metainfo.xml"
man --warnings "$installed/share/man/man1/vora-map-updater.1" 2>&1 > /dev/null | grep . &&
  fail 'the man page has mistakes'

# Start it as the desktop entry does, with Qt's offscreen platform.
folder=$(sed -n 's/^Path=//p' "$desktop")
[ -f "$folder/targetvoraver.txt" ] || fail "there are no data files in $folder"
diff -r data "$folder"
make_sample base "$scratch/sample" "$build"
chmod -R a-w "$folder"
said=$(cd "$folder" && QT_QPA_PLATFORM=offscreen LD_DEBUG=files WINEPREFIX=$scratch/sample/machine \
  "$installed/bin/vora-map-updater" /silent 2>&1)
chmod -R u+w "$folder"
grep -q 'calling init:.*vora-map-updater-window.so' <<< "$said" || fail 'the window is not loaded'
all_converted() {
  [ "$(find "$scratch/sample/machine" -name '*.galold' | wc -l)" = \
    "$(find tests/expected/base -name '*.galold' | wc -l)" ] || fail "the maps are not converted: $1"
}
all_converted 'installed'

(cd "$build" && cpack -B "$scratch/package" > /dev/null)
package=$(echo "$scratch"/package/*.deb)
contents=$(dpkg-deb -c "$package")
for file in bin/vora-map-updater lib/.*/vora-map-updater-window.so \
  share/vora-map-updater/targetvoraver.txt share/applications/vora-map-updater.desktop \
  share/metainfo/vora-map-updater.metainfo.xml share/man/man1/vora-map-updater.1 \
  share/icons/hicolor/scalable/apps/vora-map-updater.svg; do
  grep -qE " \./usr/$file$" <<< "$contents" || fail "the package lacks $file"
done
dpkg-deb -x "$package" "$scratch/unpacked"
grep -qx 'Path=/usr/share/vora-map-updater' \
  "$scratch/unpacked/usr/share/applications/vora-map-updater.desktop" || fail 'the package starts in another folder'
make_sample base "$scratch/sample" "$build"
(cd "$scratch/sample/data" && env -u DISPLAY -u WAYLAND_DISPLAY WINEPREFIX="$PWD/../machine" \
  "$scratch/unpacked/usr/bin/vora-map-updater" /silent)
all_converted 'unpacked'

if [ "$(id -u)" = 0 ]; then
  root=$scratch/root
  mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
  touch "$root/var/lib/dpkg/status"
  manage() { dpkg --root="$root" --force-depends "$@" > /dev/null 2>&1; }
  manage --install "$package" || fail 'the package does not install'
  [ -x "$root/usr/bin/vora-map-updater" ] || fail 'the installed package lacks the program'
  manage --purge vora-map-updater || fail 'the package does not go'
  [ -z "$(find "$root/usr" -type f 2> /dev/null)" ] || fail 'the removed package leaves files'
fi
echo 'the package passed'
