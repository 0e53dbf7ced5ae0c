#!/usr/bin/env bash
# Installs the program into a folder, runs it there, and checks the Debian package in dist.
# package.sh <build folder> <another build folder of the same sources>
set -euo pipefail
build=$(cd "$1" && pwd)
again=$(cd "$2" && pwd)
source "$(dirname "$0")/../scripts/common.sh"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
  printf 'FAILED %s\n' "$*"
  exit 1
}

# Without Qt 6 all but the window is built.
said=$(cmake -B "$scratch/without-qt" -DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON -DBUILD_TESTING=OFF 2>&1)
grep -q 'the window is not built' <<< "$said" || fail 'CMake does not say that the window is missing'
targets=$(cmake --build "$scratch/without-qt" --target help)
grep -q window <<< "$targets" && fail 'the window is built'

# From another folder, to a prefix named relative to it.
installed=$scratch/other/usr
mkdir "$scratch/other"
(cd "$scratch/other" && cmake --install "$build" --prefix usr > /dev/null)
desktop=$installed/share/applications/vora-map-updater.desktop
desktop-file-validate "$desktop"
# AppStream 0.16 of Debian 12 does not know the tag `developer`, which that of Debian 13 demands.
older=()
[[ $(appstreamcli --version) != *' 0.'* ]] || older=(--override=unknown-tag=pedantic)
appstreamcli validate "${older[@]}" --pedantic --strict --no-net \
  "$installed"/share/metainfo/*.metainfo.xml
for manual in "$installed"/share/man/man1/*.1; do
  mandoc -Tlint -Wstyle "$manual" || fail "the man page has mistakes: $manual"
  man --warnings "$manual" 2>&1 > /dev/null | grep . && fail "the man page has mistakes: $manual"
done
for rule in $(sed -n 's/^### \([a-z-]*\)$/\1/p' docs/templates.md); do
  grep -qx ".B $rule" "$installed/share/man/man1/vora-template-check.1" ||
    fail "the man page lacks the rule $rule"
done

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

package=$(echo dist/*.deb)
(cd dist && sha256sum --quiet --check SHA256SUMS)
lintian --fail-on error,warning "$package" || fail 'lintian finds mistakes'

# The other build gives the same bytes, in another time zone and language, too.
(cd "$again" && TZ=Asia/Tokyo LC_ALL=C cpack -B "$scratch/again" > /dev/null)
cmp "$package" "$scratch/again/${package##*/}" || fail 'two builds give different packages'

dpkg-deb -x "$package" "$scratch/unpacked"
for file in doc/vora-map-updater/{players,reliability,templates}.md icons/hicolor/scalable/apps/vora-map-updater.svg; do
  [ -f "$scratch/unpacked/usr/share/$file" ] || fail "the package lacks $file"
done
# protected <file> [options]: Debian 12 does not build its own start-up code for control flow
# protection, and only Debian 13 asks for branch protection, which other processors have. The window
# calls nothing that fortify checks; the program shows that it is on.
others=(--nocfprotection)
[[ $(hardening-check --help 2>&1) != *nobranchprotection* ]] || others+=(--nobranchprotection)
protected() {
  hardening-check "${others[@]}" "${@:2}" "$scratch/unpacked/usr/$1" ||
    fail "$1 lacks a protection"
}
protected bin/vora-map-updater
protected bin/vora-template-check --nofortify
protected lib/vora-map-updater/vora-map-updater-window.so --nofortify
control() { dpkg-deb -f "$package" "$1"; }
version=$(sed -nE 's/^## ([0-9.]+) .*/\1/p' CHANGELOG.md | head -n 1)
[ "$(control Version)" = "$version" ] || fail 'the package has another version than the changelog'
[[ $(control Depends) == *libstdc++6* && $(control Depends) != *qt6* ]] || fail 'wrong dependencies'
[[ $(control Recommends) == *libqt6widgets6* ]] || fail 'the package does not recommend Qt'
[[ $(control Suggests) == *qt6-wayland* ]] || fail 'the package does not suggest Qt for Wayland'
grep -qx 'Path=/usr/share/vora-map-updater' \
  "$scratch/unpacked/usr/share/applications/vora-map-updater.desktop" || fail 'the package starts in another folder'
make_sample base "$scratch/sample" "$build"
(cd "$scratch/sample/data" && env -u DISPLAY -u WAYLAND_DISPLAY WINEPREFIX="$PWD/../machine" \
  "$scratch/unpacked/usr/bin/vora-map-updater" /silent)
all_converted 'unpacked'
"$scratch/unpacked/usr/bin/vora-template-check" data
echo 'the package passed'
