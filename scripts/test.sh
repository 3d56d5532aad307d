#!/usr/bin/env bash
# Builds everything and passes every test: formatting, include directions, lint, the tests in an
# optimised build and under the sanitizers. Installs the Debian packages it needs. The last line
# counts the tests.
set -uo pipefail
cd "$(dirname "$0")/.."
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

# A build and its GoogleTest binary, whose tests are counted one by one.
build_and_test() {
  local preset=$1 directory=$2 log
  echo "== build and test: $preset"
  if ! cmake --preset "$preset" >/dev/null || ! cmake --build --preset "$preset" -- --quiet; then
    failed=$((failed + 1))
    echo "FAILED: build $preset" >&2
    return
  fi
  log=$(mktemp)
  "$directory/bin/orx_tests" --gtest_brief=1 --gtest_color=no 2>&1 | tee "$log"
  local status=${PIPESTATUS[0]}
  local ok bad skip
  ok=$(sed -n 's/^\[  PASSED  \] \([0-9]*\) test.*/\1/p' "$log" | tail -1)
  bad=$(sed -n 's/^\[  FAILED  \] \([0-9]*\) test.*/\1/p' "$log" | tail -1)
  skip=$(sed -n 's/^\[  SKIPPED \] \([0-9]*\) test.*/\1/p' "$log" | tail -1)
  rm -f "$log"
  passed=$((passed + ${ok:-0})) failed=$((failed + ${bad:-0})) skipped=$((skipped + ${skip:-0}))
  if [ "$status" -ne 0 ] && [ "${bad:-0}" -eq 0 ]; then
    failed=$((failed + 1))
    echo "FAILED: the $preset tests ended with $status" >&2
  fi
}

sources() { git ls-files -- 'src/*.h' 'src/*.cpp' 'tests/*.h' 'tests/*.cpp' 'bench/*.cpp'; }
check_format() { sources | xargs -r clang-format --dry-run --Werror; }
# The compiler's warnings are those of the build; the two that only clang has are left out.
check_lint() {
  git ls-files -- 'src/*.cpp' | xargs -r -n 4 -P "$(nproc)" clang-tidy -p build --quiet \
    --extra-arg=-Wno-sign-conversion --extra-arg=-Wno-format-security 2>/dev/null
}

check "formatting" check_format
check "include directions" scripts/check_includes.sh
build_and_test release build
build_and_test asan build/asan
check "lint" check_lint

if [ "$skipped" -gt 0 ]; then
  echo "$passed passed, $failed failed, $skipped skipped"
else
  echo "$passed passed, $failed failed"
fi
[ "$failed" -eq 0 ]
