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
"$build/bin/orx_tests" --gtest_brief=1
# The counters are written by system calls, which must not fail.
"$build/bin/orx_program_tests" --gtest_brief=1 --gtest_filter='-*FaultSample*'

report src/ --csv |
  awk -F, '
    NR > 1 {
      split($1, path, "/")
      folder = path[2]
      lines[folder] += $2; taken_lines[folder] += $3
      branches[folder] += $5; taken[folder] += $6
    }
    function row(name, l, tl, b, t) {
      printf "%-14s %6d lines %5.1f %%   %6d branches %5.1f %%\n", name, l, 100 * tl / l, b, (b ? 100 * t / b : 100)
    }
    END {
      for (folder in lines) {
        row(folder, lines[folder], taken_lines[folder], branches[folder], taken[folder]) | "sort"
        all += lines[folder]; all_taken += taken_lines[folder]
        b += branches[folder]; t += taken[folder]
      }
      close("sort")
      row("src", all, all_taken, b, t)
    }'
