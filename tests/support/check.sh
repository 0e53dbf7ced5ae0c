# Compares what a test script expects and finds. Source it; `failed` is 1 once something differs.

failed=0
check() { # check <what> <expected> <found>
  [ "$2" = "$3" ] && return
  printf 'FAILED %s\n  expected: %s\n  found:    %s\n' "$1" "$2" "$3"
  failed=1
}
