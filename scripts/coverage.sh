#!/usr/bin/env bash
# The share of lines and branches of src/ that the tests take, by folder and in all; branches that
# only an exception takes are left out. With a file's name behind it, what is missing there.
#
#   scripts/coverage.sh [FILE]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
scripts/setup.sh "${build_packages[@]}" "${check_packages[@]}" gcovr

build=build/coverage
report() { # report ARGUMENT...
  gcovr --root . --filter "${1-src/}" --exclude-throw-branches --exclude-unreachable-branches \
    --gcov-ignore-parse-errors --object-directory "$build/src" "${@:2}"
}

if [ $# -eq 1 ]; then
  report "$1" --branches
  exit
fi
cmake --preset coverage >/dev/null
cmake --build --preset coverage -- --quiet
find "$build" -name '*.gcda' -delete
# Not among what the programs say, which the tests read.
export GCOV_ERROR_FILE=$PWD/$build/gcov.errors
# The counters are written to files, which must not fail or stay short.
"$build/bin/orx_tests" --gtest_brief=1 --gtest_filter='-MergeDb.AStorageFailure*'
"$build/bin/orx_program_tests" --gtest_brief=1 \
  --gtest_filter='-*FaultSample*:Surroundings.AFile*:Hints.NameAFullDisk'

report src/ --csv | awk -F, '
  NR > 1 {
    split($1, path, "/")
    for (i = 2; i <= 6; ++i) if (i != 4) {
      sum[path[2], i] += $i
      sum["in all", i] += $i
    }
    folders[path[2]]
  }
  function row(name) {
    printf "%-14s %6d lines %5.1f %%  %6d branches %5.1f %%\n", name, sum[name, 2],
      100 * sum[name, 3] / sum[name, 2], sum[name, 5], 100 * sum[name, 6] / sum[name, 5]
  }
  END {
    for (name in folders) row(name)
    row("in all")
  }' | sort
