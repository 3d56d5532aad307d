#!/usr/bin/env bash
# Builds everything and passes every test: formatting, include directions, lint, the tests under the
# sanitizers, those of the programs once more with the optimised ones, and no more instructions a
# record than bench/expected.json says. Installs the Debian packages that it needs. The last line
# counts the tests.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
. scripts/packages.sh
scripts/setup.sh "${build_packages[@]}" "${check_packages[@]}" || exit 1

passed=0 failed=0 skipped=0

# check NAME COMMAND...: one test that is a command.
check() {
  local name=$1
  shift
  echo "== $name"
  if "$@"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED: $name" >&2
  fi
}

# The sum of "[ RESULT ] N test..." over the logs of the parts.
count_tests() { sed -n "s/^\\[ *$1 *\\] \\([0-9]*\\) test.*/\\1/p" "${@:2}" | awk '{n += $1} END {print n + 0}'; }

build() { cmake --preset "$1" >/dev/null && cmake --build --preset "$1" -- --quiet; }

# run_tests NAME PROGRAM: a GoogleTest program, in as many parts at once as there are processors; its
# tests are counted one by one.
run_tests() {
  local name=$1 program=$2 logs part parts=() bad=0 status=0
  echo "== $name"
  logs=$(mktemp -d)
  for part in $(seq 0 $(($(nproc) - 1))); do
    GTEST_TOTAL_SHARDS=$(nproc) GTEST_SHARD_INDEX=$part \
      "$program" --gtest_brief=1 --gtest_color=no >"$logs/$part" 2>&1 &
    parts+=($!)
  done
  for part in "${parts[@]}"; do
    wait "$part" || status=$?
  done
  cat "$logs"/*
  bad=$(cat "$logs"/* | grep -c '^\[  FAILED  \] .* ms)$')
  passed=$((passed + $(count_tests PASSED "$logs"/*))) failed=$((failed + bad))
  skipped=$((skipped + $(count_tests SKIPPED "$logs"/*)))
  rm -rf "$logs"
  if [ "$status" -ne 0 ] && [ "$bad" -eq 0 ]; then
    failed=$((failed + 1))
    echo "FAILED: $name ended with $status" >&2
  fi
}

check "formatting" scripts/format.sh
check "include directions" scripts/check_includes.sh
check "build: release" build release
check "build: asan" build asan
run_tests "tests of the layers, sanitized" build/asan/bin/orx_tests
# A sanitizer makes system calls of its own, which must not fail.
GTEST_FILTER='-*FaultSample*' run_tests "tests of the programs, sanitized" build/asan/bin/orx_program_tests
ORX_PROGRAMS=$PWD/build/bin run_tests "tests of the programs, optimised" build/asan/bin/orx_program_tests
check "instruction counts" bench/instructions.sh
check "lint" scripts/lint.sh

if [ "$skipped" -gt 0 ]; then
  echo "$passed passed, $failed failed, $skipped skipped"
else
  echo "$passed passed, $failed failed"
fi
[ "$failed" -eq 0 ]
