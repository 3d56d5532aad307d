#!/usr/bin/env bash
# How long the functions and files of src/ are, and how much of the repository is tests. Installs
# universal-ctags.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh universal-ctags

# The numbers of its input, one a line: how many, median, 90th percentile, highest.
summary() {
  sort -n | awk -v what="$1" '{ v[NR] = $1 }
    END { printf "%-22s %5d, lines: median %d, 90th percentile %d, longest %d\n", what, NR,
            v[int((NR + 1) / 2)], v[int(NR * 0.9)], v[NR] }'
}
lines_of() { git ls-files -z -- "$@" | xargs -0 cat | wc -l; }

git ls-files -- 'src/*.cpp' 'src/*.h' |
  ctags -L - --kinds-C++=f --fields=+ne -f - 2>/dev/null |
  awk 'match($0, /line:[0-9]+/) { first = substr($0, RSTART + 5, RLENGTH - 5)
    if (match($0, /end:[0-9]+/)) print substr($0, RSTART + 4, RLENGTH - 4) - first + 1 }' |
  summary "functions"
git ls-files -z -- 'src/*.cpp' 'src/*.h' | xargs -0 -n 1 sh -c 'wc -l <"$1"' - | summary "files"

code=$(lines_of 'src/*.cpp' 'src/*.h' 'bench/*.cpp' 'bench/*.h' '*.sh' '*.py' '*.cmake' '*CMakeLists.txt')
tests=$(lines_of 'tests/*.cpp' 'tests/*.h')
echo "tests                  $tests lines, $((100 * tests / (tests + code))) % of $((tests + code))"
