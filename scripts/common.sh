# What ./run, ./test and .ci/run share. Read by bash, from the root of the tree.
set -u
export LC_ALL=C.UTF-8
# One compiler cache for all builds and all clones: paths below the tree count relative to it.
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros

jobs=$(nproc 2>/dev/null || echo 2)
passed=0
failed=0

say() { printf '%s\n' "$*" >&2; }

# build PRESET [TARGET...]: configures and builds; quiet while all is well, the whole output when it is not.
build() {
  local preset="$1" log
  shift
  log=$(mktemp) || return 1
  say "-- $preset: bauen"
  if cmake --preset "$preset" >"$log" 2>&1 &&
     cmake --build --preset "$preset" -j "$jobs" ${@:+--target "$@"} >>"$log" 2>&1; then
    rm -f "$log"
    return 0
  fi
  grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking|Automatic)' "$log" | tail -n 200 >&2
  rm -f "$log"
  say "-- $preset: Der Bau ist fehlgeschlagen."
  return 1
}

# run_tests PRESET: all tests of a build, counted into passed and failed; a run without tests is a failure.
run_tests() {
  local preset="$1" log total bad
  log=$(mktemp) || return 1
  say "-- $preset: testen"
  ctest --preset "$preset" -j "$jobs" --no-tests=error >"$log" 2>&1 </dev/null
  local status=$?
  total=$(sed -nE 's/^[0-9]+% tests passed, [0-9]+ tests? failed out of ([0-9]+).*/\1/p' "$log" | tail -n 1)
  bad=$(sed -nE 's/^[0-9]+% tests passed, ([0-9]+) tests? failed out of [0-9]+.*/\1/p' "$log" | tail -n 1)
  [ "$status" -eq 0 ] || cat "$log" >&2
  rm -f "$log"
  if [ -z "$total" ] || { [ "$status" -ne 0 ] && [ "$bad" -eq 0 ]; }; then
    failed=$((failed + 1))
    say "-- $preset: Die Tests konnten nicht laufen."
    return 1
  fi
  passed=$((passed + total - bad))
  failed=$((failed + bad))
  say "-- $preset: $((total - bad)) bestanden, $bad fehlgeschlagen"
  [ "$bad" -eq 0 ]
}

# check TITLE COMMAND...: one check of its own, counted like a test.
check() {
  local title="$1" log
  shift
  log=$(mktemp) || return 1
  if "$@" >"$log" 2>&1 </dev/null; then
    passed=$((passed + 1))
    say "-- $title: in Ordnung"
  else
    failed=$((failed + 1))
    tail -n 100 "$log" >&2
    say "-- $title: fehlgeschlagen"
  fi
  rm -f "$log"
}

# The last line of every check, and its exit status.
closing_line() {
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
}
