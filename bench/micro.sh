#!/usr/bin/env bash
# Runs the micro benchmarks of the layers, in turn, and prints the median of N runs of each; leaves
# micro.json with every run in the directory of the results.
#
#   bench/micro.sh [--runs N] [--filter REGEX] [--seconds S] [--results DIRECTORY]
#
# A run of a benchmark repeats it for S seconds (0.2).
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
. bench/common.sh

options="runs filter seconds results"
runs=7 filter=. seconds=0.2 results=build/results
take_options "$@"

build_bench
use_results "$results"
orx_micro --benchmark_filter="$filter" --benchmark_min_time="$seconds" \
  --benchmark_repetitions="$runs" --benchmark_enable_random_interleaving=true \
  --benchmark_display_aggregates_only=true --benchmark_counters_tabular=true \
  --benchmark_out="$results/micro.json" --benchmark_out_format=json 2>&1 |
  grep -Ev '_(mean|stddev|cv)  '
# The results tell nothing of the machine but what the figures depend on.
sed -i '/^ *"\(host_name\|executable\)":/d' "$results/micro.json"
echo "every run in $results/micro.json"
