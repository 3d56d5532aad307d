#!/usr/bin/env bash
# Every disturbed run there is, of which the tests only take a sample (see docs/testing.md):
#   scripts/fault_runs.sh [BUILD]
# BUILD is the directory of a build; without it "build", which is brought up to date. Each system
# call of twelve operations fails with each error, each comes in part, and the process is killed
# before and behind it; the power fails at 2400 moments of each; each allocation of three operations
# fails, once more in build/asan when that is there, where leaks are looked for. Prints the number
# of cases of each kind, and each fault; the exit code is 0 without one.
set -uo pipefail
cd "$(dirname "$0")/.."

build=${1:-build}
if [ $# -eq 0 ]; then
  cmake --preset release -DORX_BUILD_TESTS=ON >/dev/null || exit 1
  cmake --build --preset release --target orx_fault_runs -- --quiet || exit 1
fi
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
status=0
shards=$(nproc)

# run_part BUILD PART: the part in as many processes at once as there are processors; their counts
# are added up.
run_part() {
  local directory=$1 part=$2 shard processes=() started=$SECONDS
  for shard in $(seq 0 $((shards - 1))); do
    "$directory/bin/orx_fault_runs" "$part" all "$shard" "$shards" >"$logs/$shard" 2>&1 &
    processes+=($!)
  done
  for shard in "${processes[@]}"; do
    wait "$shard" || status=1
  done
  echo "== $part, $directory"
  awk '/^CASE / {
         key = $2 " " $3
         if (!(key in cases)) order[++keys] = key
         ++cases[key]; changed[key] += $4; missed[key] += $5; faults[key] += $6; ++total; bad += $6
         next
       }
       { print }
       END {
         for (i = 1; i <= keys; ++i) {
           split(order[i], name, " ")
           printf "%-17s %-17s %6d cases %6d new %4d missed %4d faults\n", name[1],
                  name[2], cases[order[i]], changed[order[i]], missed[order[i]], faults[order[i]]
         }
         printf "%d cases, %d faults", total, bad
       }' "$logs"/*
  echo ", $((SECONDS - started)) s"
}

run_part "$build" calls
run_part "$build" power
run_part "$build" allocations
if [ -x build/asan/bin/orx_fault_runs ]; then
  run_part build/asan allocations
fi
exit "$status"
