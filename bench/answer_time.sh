#!/usr/bin/env bash
# How long every subcommand of orxkdb takes on a small database, from the shell's point of view:
# median and slowest of N runs in milliseconds. An answer should be there within 50.
#
#   bench/answer_time.sh [--runs N] [--objects N]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
. bench/common.sh

options="runs objects" limit=50
runs=20 objects=1000
take_options "$@"

build_bench
enter_scratch

orxkdb create db >/dev/null
orxkdb sample --objects "$objects" fleet.txt
orxkdb sample --objects "$objects" --seed 2 other.txt
gzip -k fleet.txt
orxrestore -i fleet.txt -o db >/dev/null
orxkdb dump db db.dump >/dev/null

# answer STATUS NAME COMMAND...: the runs of one command, which end with STATUS.
answer() {
  local status=$1 name=$2 _
  shift 2
  for _ in $(seq "$runs"); do
    rm -rf new new.orx-previous
    expected_status=$status measured "$name" "$@"
  done
  sort -n "$name.times" | awk -v name="$name" -v limit="$limit" '
    { ms[NR] = $1 * 1000 }
    END {
      median = ms[int((NR + 1) / 2)]
      printf "%-14s %6.0f ms %6.0f ms%s\n", name, median, ms[NR], (median > limit ? "  too slow" : "")
    }'
}

echo "$(wc -l <fleet.txt) records, $runs runs: median, slowest"
answer 0 help orxkdb --help
answer 0 create orxkdb create new
answer 0 dump orxkdb dump db out
answer 0 load orxkdb load new db.dump
answer 0 load--replace orxkdb load --replace db db.dump
answer 0 backup orxkdb backup db out
answer 0 stat orxkdb stat db
answer 0 check orxkdb check db
answer 0 check-gz orxkdb check fleet.txt.gz
answer 0 explain orxkdb explain db 2:1
answer 0 diff orxkdb diff db fleet.txt
answer 0 plan orxkdb plan db other.txt
answer 0 report orxkdb report db --html out.html
answer 0 messages orxkdb messages
answer 0 undo orxkdb undo db
answer 0 sample orxkdb sample --objects "$objects" out
