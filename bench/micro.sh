#!/usr/bin/env bash
# Runs the micro benchmarks of the layers (bench/micro) in turn. Prints what one item takes, as the
# median of N runs of S seconds each, and beside it the unit of figures that outlive a machine: how
# many lines of a backup could be copied in that time. Leaves micro.json with every run in the
# directory of the results.
#
#   bench/micro.sh [--runs N] [--seconds S] [--filter REGEX] [--results DIRECTORY]
#
# 7 runs of 0.2 s, of every benchmark: a minute and a half in all, twice that on a busy machine.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
. bench/common.sh

options="runs seconds filter results"
runs=7 seconds=0.2 filter=. results=build/results
take_options "$@"

build_bench
use_results "$results"
orx_micro --benchmark_filter="^copyLine$|$filter" --benchmark_min_time="$seconds" \
  --benchmark_repetitions="$runs" --benchmark_enable_random_interleaving=true \
  --benchmark_out="$results/micro.json" --benchmark_out_format=json >/dev/null 2>"$results/micro.log" || {
  cat "$results/micro.log" >&2
  exit 1
}
rm "$results/micro.log"
! grep -q '"error_occurred": true' "$results/micro.json" || {
  grep -B 5 '"error_message"' "$results/micro.json" >&2
  exit 1
}
# The results tell nothing of the machine but what the figures depend on.
sed -i '/^ *"\(host_name\|executable\)":/d' "$results/micro.json"

printf '%-36s %12s %10s %16s\n' "median of $runs runs" "ns an item" "MB/s" "copies of a line"
awk -F'": ' '
  function field(name) { return $1 ~ "\"" name "$" }
  function report() {
    if (median) print name, ns, bytes
    name = ""; median = ns = bytes = 0
  }
  { sub(/,$/, "", $2); gsub(/"/, "", $2) }
  field("run_name") { report(); name = $2; gsub(/ /, "_", name) }
  field("aggregate_name") { median = $2 == "median" }
  field("items_per_second") { ns = 1e9 / $2 }
  field("bytes_per_second") { bytes = $2 / 1e6 }
  END { report() }' "$results/micro.json" | LC_ALL=C sort |
  awk '$1 == "copyLine" { copy = $2 }
    { gsub(/_/, " ", $1)
      printf "%-36s %12.1f %10s %16.2f\n", $1, $2, ($3 > 0 ? sprintf("%.0f", $3) : "-"), $2 / copy }'
echo "every run in $results/micro.json"
