#!/usr/bin/env bash
# Installs the program into a folder, runs it there, and looks into the package.
# package.sh <build folder>
set -euo pipefail
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
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

# As the desktop would start it, though into Qt's platform without a screen.
folder=$(sed -n 's/^Path=//p' "$desktop")
[ -f "$folder/targetvoraver.txt" ] || fail "there are no data files in $folder"
diff -r data "$folder"
cp -r sample/base "$scratch/machine"
"$build/makeexe" "$scratch/machine/drive_c/Program Files (x86)/Vorakai/Vorakai.exe" \
  "$(sed -n 1p data/targetvoraver.txt | tr -d '\r')"
chmod -R a-w "$folder"
said=$(cd "$folder" && QT_QPA_PLATFORM=offscreen LD_DEBUG=files WINEPREFIX=$scratch/machine \
  "$installed/bin/vora-map-updater" /silent 2>&1)
chmod -R u+w "$folder"
grep -q 'calling init:.*vora-map-updater-window.so' <<< "$said" || fail 'the window is not loaded'
[ "$(find "$scratch/machine" -name '*.galold' | wc -l)" = \
  "$(find tests/expected/base -name '*.galold' | wc -l)" ] || fail 'the maps are not converted'

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
echo 'the package passed'
