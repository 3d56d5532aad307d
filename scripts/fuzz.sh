#!/usr/bin/env bash
# Builds the fuzz targets and runs each of them, two at a time, from the corpus in tests/fuzz/corpus;
# prints how many inputs each has tried, how many edges of the code they reach, and what was found.
# What is new is kept in build/fuzz/inputs, inputs that end a target in build/fuzz/findings.
#
#   scripts/fuzz.sh [SECONDS [TARGET...]]
#
# SECONDS of each target, 600 without. Fails when anything was found.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
scripts/setup.sh "${build_packages[@]}" "${fuzz_packages[@]}"

seconds=${1:-600}
shift $(($# > 0))
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -- --quiet
targets=("$@")
[ $# -gt 0 ] || mapfile -t targets < <(basename -s _fuzz.cpp tests/fuzz/*_fuzz.cpp)

TMPDIR=$(mktemp -d /dev/shm/orx-fuzz.XXXXXX)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

fuzz() {
  mkdir -p "build/fuzz/inputs/$1" build/fuzz/findings
  "build/fuzz/bin/$1_fuzz" -max_total_time="$2" -max_len=4096 -len_control=10 -timeout=120 \
    -report_slow_units=120 -rss_limit_mb=3000 -print_final_stats=1 -artifact_prefix="build/fuzz/findings/$1-" \
    "build/fuzz/inputs/$1" "tests/fuzz/corpus/$1" >"build/fuzz/$1.log" 2>&1 || true
}
export -f fuzz
printf '%s\n' "${targets[@]}" | xargs -P 2 -I {} bash -c 'fuzz "$1" "$2"' - {} "$seconds"

printf '%-16s %12s %9s %9s\n' target executions coverage findings
status=0
for target in "${targets[@]}"; do
  log=build/fuzz/$target.log
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  coverage=$(grep -o ' cov: [0-9]*' "$log" | tail -n 1 | tr -dc 0-9)
  found=$(find build/fuzz/findings -name "$target-*" | wc -l)
  [ "$found" -eq 0 ] || status=1
  printf '%-16s %12s %9s %9s\n' "$target" "${runs:--}" "${coverage:--}" "$found"
done
exit $status
