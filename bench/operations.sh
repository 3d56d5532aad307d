#!/usr/bin/env bash
# Measures the other operations beside the least that they have to do: reading a database once,
# writing it once as a copy, restoring as many records. Prints medians and ratios.
#
#   bench/operations.sh [--runs N] [--records N]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
. bench/common.sh

options="runs records"
runs=7 records=1000000
take_options "$@"

scripts/setup.sh "${build_packages[@]}"
build_bench
enter_scratch

orxkdb sample --objects $((records * 100 / 115)) --seed 5 >a.txt
orxkdb sample --objects $((records * 100 / 115)) --seed 6 >b.txt
orxkdb create a >/dev/null
orxkdb create merged >/dev/null
orxrestore -i a.txt -o a >/dev/null
orxrestore -i a.txt -o merged >/dev/null
orxrestore -i b.txt -m merged >/dev/null
orxkdb backup merged both.txt >/dev/null
orxkdb dump a a.dump >/dev/null
orxkdb create both >/dev/null

# The least that a command which reads IN and writes OUT has to do.
read_and_write() { measured "$1" sh -c 'cat "$1" >/dev/null; dd if="$2" of=dd.out bs=1M conv=fsync' - "$2" "$3"; }

for _ in $(seq "$runs"); do
  rm -f copy copy.* a.orx-previous merged.orx-previous out loaded loaded.*
  measured pass copy_records a
  measured copy copy_records a copy
  measured use_count orxrestore -u a
  measured check orxkdb check a
  measured restore_both orxrestore -i both.txt -o both
  orxrestore -i a.txt -o merged >/dev/null
  measured merge orxrestore -i b.txt -m merged
  orxrestore -i a.txt -o merged >/dev/null
  measured plan orxkdb plan merged b.txt
  read_and_write dump_io a a.dump
  measured dump orxkdb dump a out
  rm -f out
  measured load orxkdb load loaded a.dump
  read_and_write load_io a.dump a
  measured backup orxkdb backup a out
  read_and_write backup_io a a.txt
  expected_status=1 measured diff orxkdb diff a merged
  measured diff_io sh -c "dd if=a of=/dev/null bs=1M; dd if=merged of=/dev/null bs=1M"
  rm -f dd.out
done

line() { # NAME CELL PEER WHAT
  printf '%-10s %7.2f s %8s MB  %6s times %s\n' "$1" "$(median "$2")" "$(peak_mb "$2")" "$(ratio "$2" "$3")" "$4"
}
echo "$(wc -l <a.txt) records, $runs runs"
line "-u" use_count copy "reading it once with a cursor and writing a copy (goal 3)"
line "-m" merge restore_both "a replace restore of what comes out (goal 3)"
line plan plan merge "the merge (goal 1)"
line check check pass "reading it once with a cursor (goal 4)"
line dump dump dump_io "reading and writing the files (goal 3)"
line load load load_io "reading and writing the files (goal 3)"
line backup backup backup_io "reading and writing the files (goal 3)"
line diff diff diff_io "reading the two files (goal 3)"
