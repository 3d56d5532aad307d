#!/usr/bin/env bash
# Every disturbed run there is, of which the tests only take a sample (see docs/testing.md):
#   scripts/fault_runs.sh
# Builds what it needs. Each system call of twelve operations fails with each error, each comes in
# part, and the process is killed before and behind it; the power fails at 2400 moments of each; each
# allocation of three operations fails, once more in build/asan when that is there, where leaks are
# looked for. Prints the number of cases of each kind, and each fault; the exit code is 0 without one.
set -uo pipefail
cd "$(dirname "$0")/.."

for preset in release dev; do
  cmake --preset "$preset" >/dev/null || exit 1
  cmake --build --preset "$preset" -- --quiet || exit 1
done
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
status=0
shards=$(nproc)

# run_part BUILD TESTS: the tests with the programs of the build, in as many processes at once as there
# are processors; their counts are added up.
run_part() {
  local directory=$1 tests=$2 shard processes=() started=$SECONDS
  for shard in $(seq 0 $((shards - 1))); do
    ORX_PROGRAMS=$PWD/$directory/bin ORX_FAULT_SHARD=$shard/$shards build/dev/bin/orx_program_tests \
      --gtest_brief=1 --gtest_filter="*$tests*" >"$logs/$shard" 2>&1 &
    processes+=($!)
  done
  for shard in "${processes[@]}"; do
    wait "$shard" || status=1
  done
  echo "== $tests, $directory"
  awk '/^CASE / {
         key = $2 " " $3
         if (!(key in cases)) order[++keys] = key
         ++cases[key]; changed[key] += $4; missed[key] += $5; faults[key] += $6; ++total; bad += $6
         next
       }
       /^Running main|^\[(=| *PASSED)/ { next }
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

run_part build FaultSample.OfCalls
run_part build FaultSample.OfPower
run_part build AllocationSample
if [ -x build/asan/bin/orxrestore ]; then
  run_part build/asan AllocationSample
fi
exit "$status"
