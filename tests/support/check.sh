# What test scripts share. Source it; `failed` is 1 once something differs from what is expected.

failed=0
check() { # check <what> <expected> <found>
  [ "$2" = "$3" ] && return
  printf 'FAILED %s\n  expected: %s\n  found:    %s\n' "$1" "$2" "$3"
  failed=1
}

# Ends the script where a drive of a machine leads out of the test's folder, since the program may
# search a whole drive. A machine that does not exist has none.
enclosed() { # enclosed <folder> <machine...>
  local machine drive
  for machine in "${@:2}"; do
    [ -e "$machine/system.reg" ] || continue
    for drive in c z; do
      [[ $(realpath "$machine/dosdevices/$drive:")/ == "$(realpath "$1")"/* ]] && continue
      echo "FAILED drive $drive: of $machine leads out of $1"
      exit 1
    done
  done
}
