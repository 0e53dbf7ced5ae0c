#!/usr/bin/env bash
# Runs vora-template-check as a template writer would.
# checker.sh <build folder>
set -euo pipefail
build=$(cd "$1" && pwd)
source "$(dirname "$0")/../../scripts/common.sh"
source tests/support/check.sh
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

run() { # run <arguments...>: sets status, said and complained
  status=0
  said=$("$build/vora-template-check" "$@" 2> "$scratch/stderr") || status=$?
  complained=$(cat "$scratch/stderr")
}

last() { tail -n 1 <<< "$said"; }

run --strict data
check "the templates in data" "0 9 pairs; 0 maps; 0 errors, 0 warnings" "$status $(last)$complained"
run --strict data sample
check "the sample's maps" \
  "0 9 pairs; 21 maps: 18 converted, 3 current; 0 errors, 0 warnings, 1 silenced" \
  "$status $said$complained"
said=$(cd data && "$build/vora-template-check")
check "the current folder" "9 pairs; 0 maps; 0 errors, 0 warnings" "$said"
run --edition=v data sample
check "the base game's templates alone" \
  "4 pairs; 21 maps: 12 converted, 2 current, 7 of no known edition; 0 errors, 1 warning" "$(last)"
version=$(sed -nE 's/^## ([0-9.]+) .*/\1/p' CHANGELOG.md | head -n 1)
run --version
check "--version" "0 vora-template-check $version" "$status $said$complained"
for option in --help -h; do
  run "$option"
  check "$option" "0 usage:" "$status ${said%% *}$complained"
done
run --explain shadowed
check "--explain" "0 A recognition line never wins" "$status ${said:0:29}$complained"

wrong() { # wrong <stderr's beginning> <arguments...>
  run "${@:2}"
  check "${*:2}" "2  yes" "$status $said $([[ $complained == "$1"* ]] && echo yes || echo "$complained")"
}
name='vora-template-check: '
wrong "${name}there is no option \"--unknown\"
usage:" --unknown
wrong "${name}there is no option \"-\\x1B\"" $'-\e'
wrong "${name}there is no edition \"x\"" --edition x data
wrong "${name}there is no edition \"x\"" --edition=x data
wrong "${name}--edition needs a value" data --edition
wrong "${name}--trace needs a value" --trace= data
wrong "${name}there is no rule \"shadow\"" --explain shadow
wrong "${name}--diff needs a folder and a map" --diff data
wrong "${name}an argument is empty" data ''
wrong "$scratch/none: cannot read the folder: " "$scratch/none"
wrong "$scratch: cannot check it: there are no templates" "$scratch"
wrong "--strict: cannot read the folder: " -- --strict
wrong "--edition: cannot read the folder: " -- --edition
wrong "data/none.galaxy: cannot read it: " data data/none.galaxy
wrong "data/\\x1B[2J: cannot read it: " data $'data/\e[2J'
wrong "data: cannot check it: there are no maps" data data
wrong "data: cannot check it: there are no such maps" data 'data/x*.galaxy'

cp -r data "$scratch/data"
sed -i '3s/12/11/' "$scratch/data/vnewstruct10.txt"
sed -i '20d' "$scratch/data/toldstruct9.txt"
run "$scratch/data"
check "errors: status" 1 "$status"
check "errors: places" "tnewstruct9.txt:32: error vnewstruct10.txt:1: error" \
  "$(sed -n "s|^$scratch/data/\(.*error\): .*\[.*\]|\1|p" <<< "$said" | tr '\n' ' ' | sed 's/ $//')"
run --edition t "$scratch/data"
check "one edition" 0 "$(grep -c vnewstruct <<< "$said")"
check "no colours in a file" 0 "$(grep -c $'\033' <<< "$said")"
on_terminal() { # on_terminal <arguments...>: what is shown on a terminal
  python3 -c 'import pty, sys; pty.spawn(sys.argv[1:])' "$build/vora-template-check" "$@" || true
}
colour=$'\033[1;31merror:\033[0m'
for settings in TERM=xterm 'TERM=dumb NO_COLOR=' 'TERM=xterm NO_COLOR=1'; do
  coloured=$(export $settings; on_terminal "$scratch/data")
  check "colours with $settings" "$([ "$settings" = TERM=xterm ] && echo yes)" \
    "$([[ $coloured == *"$colour"* ]] && echo yes)"
done
printf 'Vorakai galaxy\r\nversion 11\r\n\tfleet\r\n\t\tmorale 3\r\n\e[31m red\r\n' > "$scratch/x.galaxy"
check "a map's escape sequence on a terminal" yes \
  "$([[ $(on_terminal --diff data "$scratch/x.galaxy") == *'\x1B[31m red'* ]] && echo yes)"
run --diff data "$scratch/x.galaxy"
check "a map's escape sequence in a file" 1 "$(grep -c $'^ \033\\[31m red' <<< "$said")"
run data "$scratch/*.galaxy"
check "a warning" "0 1 map: 1 converted" "$status $(last | grep -o '1 map: 1 converted')"
run --strict data "$scratch/x.galaxy"
check "--strict: a warning" 1 "$status"
run --trace "$scratch/x.galaxy" data
check "--trace" 1 "$(grep -c 'begins section "fleet morale" of 1 line: line 9 of voldstruct11' <<< "$said")"

# The differences of the sample's maps are those that a run leaves.
for edition in base expansion; do
  make_sample "$edition" "$scratch/$edition" "$build"
  cp -r "$scratch/$edition/machine" "$scratch/before"
  (cd "$scratch/$edition/data" && env -u DISPLAY -u WAYLAND_DISPLAY \
    WINEPREFIX="$scratch/$edition/machine" "$build/vora-map-updater" /silent)
  converted=0
  while IFS= read -r -d '' map; do
    after=$scratch/$edition/machine/${map#"$scratch/before/"}
    cmp -s "$map" "$after" && continue
    converted=$((converted + 1))
    "$build/vora-template-check" --diff data "$map" > "$scratch/found" || true
    sed -i '1,/^--- /d;/^+++ /d' "$scratch/found"
    { diff -u "$map" "$after" || true; } | tail -n +3 | cmp - "$scratch/found" || check "--diff" "" "$map"
  done < <(find "$scratch/before" -iname '*.galaxy' -type f -print0)
  check "$edition: maps compared" "$(find "tests/expected/$edition" -iname '*.galold' | wc -l)" "$converted"
  rm -rf "$scratch/before"
done

# Lines without CR, and without an end.
printf 'Vorakai galaxy\r\nversion 11\r\na\nb\r\n\tcolor 1\r\nc\r\n\r\n' > "$scratch/odd.galaxy"
printf 'Vorakai galaxy\r\nversion 11\r\nend' > "$scratch/short.galaxy"
for map in odd short; do
  "$build/vora-template-check" --diff data "$scratch/$map.galaxy" > "$scratch/found"
  cp "$scratch/$map.galaxy" "$scratch/patched"
  patch --binary -s "$scratch/patched" "$scratch/found" || check "$map: patch" 0 $?
  printf 'Vorakai galaxy\r\nversion 12\r\n' > "$scratch/expected"
  if [ $map = odd ]; then printf 'a\nb\r\n\tcolour 1\r\nc\r\n'; else printf 'end\r\n'; fi >> "$scratch/expected"
  cmp "$scratch/expected" "$scratch/patched" || check "$map: patched" "" differs
done

[ $failed = 0 ] && echo "the checker passed"
exit $failed
