#!/usr/bin/env bash
# Measures the other operations beside the least that they have to do: reading a database once,
# writing it once as a copy, restoring as many records. Prints medians and ratios, and leaves
# operations.json with the time of every run in the directory of the results.
#
#   bench/operations.sh [--runs N] [--records N] [--results DIRECTORY]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
. bench/common.sh

options="runs records results"
runs=7 records=1000000 results=build/results
take_options "$@"

build_bench
use_results "$results"
enter_scratch

orxkdb sample --objects $((records * 100 / 115)) --seed 5 >a.txt
orxkdb sample --objects $((records * 100 / 115)) --seed 6 >b.txt
with_wrong_counts a.txt >wrong.txt
orxkdb create a >/dev/null
orxkdb create merged >/dev/null
orxrestore -i a.txt -o a >/dev/null
orxrestore -i a.txt -o merged >/dev/null
orxrestore -i b.txt -m merged >/dev/null
orxkdb backup merged both.txt >/dev/null
orxkdb create b >/dev/null
orxrestore -i b.txt -o b >/dev/null
orxkdb dump a a.dump >/dev/null
orxkdb create both >/dev/null
orxrestore -i both.txt -o both >/dev/null

# evict FILE...: the next one to read them reads from the disk.
evict() {
  local file
  for file in "$@"; do
    dd of="$file" oflag=nocache conv=notrunc,fdatasync count=0 2>/dev/null
  done
}

# read_files CELL FILE...: their bytes, without a look at them.
# shellcheck disable=SC2016  # the arguments are expanded by the inner shell
read_files() {
  local cell=$1
  shift
  measured "$cell" sh -ec 'for file; do dd if="$file" of=/dev/null bs=1M; done' - "$@"
}

# write_beside OPERATION IN OUT COMMAND...: a command that reads IN and writes the file "out" beside
# the least that it has to do for that: read IN, and write OUT, which is read as well. In odd turns
# the one comes first, in even turns the other: behind many written bytes the disk may be slow.
# shellcheck disable=SC2016  # the arguments are expanded by the inner shell
write_beside() {
  local operation=$1 in=$2 out=$3 order=$((turn % 2)) side
  shift 3
  for side in "$order" $((1 - order)); do
    rm -f out out.orx-*
    if [ "$side" -eq 1 ]; then
      measured "$operation" "$@"
    else
      measured "${operation}_io" sh -ec 'cat "$1" >/dev/null; dd if="$2" of=out bs=1M conv=fsync' \
        - "$in" "$out"
    fi
  done
}

# What a turn reads is a database as a restore leaves it.
for turn in $(seq "$runs"); do
  rm -f copied copied.orx-* a.orx-previous merged.orx-previous out out.orx-*
  orxrestore -i a.txt -o a >/dev/null
  measured pass copy_records a
  measured check orxkdb check a
  read_files check_io a
  evict a
  measured check_disk orxkdb check a
  evict a
  read_files check_disk_io a
  measured restore_both orxrestore -i both.txt -o both
  orxrestore -i a.txt -o merged >/dev/null
  measured merge orxrestore -i b.txt -m merged
  orxrestore -i a.txt -o merged >/dev/null
  measured plan orxkdb plan merged b.txt
  write_beside dump a a.dump orxkdb dump a out
  write_beside load a.dump a orxkdb load out a.dump
  write_beside backup a a.txt orxkdb backup a out
  expected_status=1 measured diff orxkdb diff a b
  measured pass_both sh -ec "copy_records a; copy_records b"
  read_files diff_io a b
  evict a b
  expected_status=1 measured diff_disk orxkdb diff a b
  evict a b
  read_files diff_disk_io a b
  orxrestore -i wrong.txt -o a >/dev/null
  measured copy copy_records a copied
  measured use_count orxrestore -u a
done

# line NAME CELL PEER GOAL WHAT: the goal is the greatest ratio that is wanted.
line() {
  local ratio told=met
  ratio=$(ratio "$2" "$3")
  awk -v ratio="$ratio" -v goal="$4" 'BEGIN { exit ratio <= goal }' && told=missed
  printf '%-7s %6.2f s %6s MB %6s times %s (goal %s: %s)\n' "$1" "$(median "$2")" \
    "$(peak_mb "$2")" "$ratio" "$5" "$4" "$told"
  keep_ratio "$2" "$3" "$ratio" "$4" "$told"
}
# memory_line NAME CELL RECORDS GOAL: private memory beside the bytes of the records that are held.
memory_line() {
  local ratio told=met
  ratio=$(awk -v mb="$(peak_mb "$2")" -v n="$3" 'BEGIN { printf "%.2f", mb * 1048576 / n / 296 }')
  awk -v ratio="$ratio" -v goal="$4" 'BEGIN { exit ratio <= goal }' && told=missed
  printf '%-7s %9s %6s MB %6s times the %d records that it holds (goal %s: %s)\n' "$1" "" \
    "$(peak_mb "$2")" "$ratio" "$3" "$4" "$told"
}
kept=$(wc -l <a.txt)
echo "$kept records, $runs runs"
line "-u" use_count copy 3 "a pass of a cursor and a copy (read twice, written once)"
line "-m" merge restore_both 3 "a replace restore of what comes out"
line plan plan merge 1 "the merge"
line check check pass 3 "reading it once with a cursor"
line check check check_io 3 "reading the bytes of the file, from memory as it does"
line check check_disk check_disk_io 3 "the same when neither is in memory"
line dump dump dump_io 3 "reading and writing the files"
line load load load_io 3 "reading and writing the files"
line backup backup backup_io 3 "reading and writing the files"
line diff diff pass_both 3 "reading the two once with a cursor"
line diff diff diff_io 3 "reading the bytes of the two files, from memory as it does"
line diff diff_disk diff_disk_io 3 "the same when neither is in memory"
memory_line "-m" merge "$(wc -l <b.txt)" 2.5
for cell in use_count merge plan check check_disk dump load backup diff diff_disk copy restore_both \
  pass pass_both dump_io load_io backup_io check_io check_disk_io diff_io diff_disk_io; do
  keep_cell "$cell" operation "$cell"
done
write_results "$results/operations.json" bench operations runs "$runs" records "$kept"
echo "times of every run in $results/operations.json"
