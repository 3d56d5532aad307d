#!/usr/bin/env bash
# Counts the instructions of each operation per record, with callgrind, and compares them with
# bench/expected.json. Ends with 1 when one has grown by more than a tenth: unlike times, counts are
# the same on a busy machine.
#
#   bench/instructions.sh [--update yes]   writes bench/expected.json anew
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
. bench/common.sh

options="update"
update=no
take_options "$@"

scripts/setup.sh "${build_packages[@]}" valgrind
cmake --preset release >/dev/null
cmake --build --preset release -- --quiet
PATH="$PWD/build/bin:$PATH"
expected=$PWD/bench/expected.json
enter_scratch

orxkdb sample --objects 10000 --seed 5 >key.txt
orxkdb sample --objects 30000 --seed 5 --order random >random.txt # more than stay in memory
orxkdb sample --objects 10000 --seed 6 >other.txt
records=$(wc -l <key.txt)
orxkdb create db >/dev/null
orxrestore -i key.txt -o db >/dev/null
orxkdb create random >/dev/null
orxkdb dump db db.dump >/dev/null

# count OPERATION COMMAND...: a line '  "OPERATION": INSTRUCTIONS PER RECORD,' for `counts`.
count() {
  local name=$1 total
  shift
  valgrind --tool=callgrind --callgrind-out-file=/dev/null "$@" >out 2>log || [ $? -eq "${expected_status:-0}" ] || {
    cat log >&2
    exit 1
  }
  total=$(sed -n 's/.*Collected : \([0-9]*\)$/\1/p' log)
  echo "  \"$name\": $((total / records))," >>counts
}

count "restore in key order" orxrestore -i key.txt -o db
records=$(wc -l <random.txt) count "restore in random order" orxrestore -i random.txt -o random
with_wrong_counts key.txt >wrong.txt
orxrestore -i wrong.txt -o db >/dev/null
count "rebuild of use counts" orxrestore -u db
cp db old
count "merge" orxrestore -i other.txt -m db
count "plan" orxkdb plan old other.txt
count "dump" orxkdb dump old out.dump
count "load" orxkdb load loaded db.dump
count "backup" orxkdb backup old out.txt
count "check" orxkdb check old
expected_status=1 count "diff" orxkdb diff old db
{
  echo '{'
  sed '$s/,$//' counts
  echo '}'
} >counted.json

if [ "$update" = yes ]; then
  cp counted.json "$expected"
  cat "$expected"
  exit 0
fi
awk -F'[":,]+' '
  NF < 3 { next }
  NR == FNR { expected[$2] = $3; next }
  {
    growth = expected[$2] > 0 ? ($3 / expected[$2] - 1) * 100 : 999
    printf "%-24s %6d instructions a record, expected %6d%s\n", $2, $3, expected[$2],
      (growth > 10 ? sprintf("  grown by %.0f %%", growth) : "")
    if (growth > 10) bad = 1
  }
  END { exit bad }' "$expected" counted.json || {
  echo "an operation takes more instructions than it did: find out why, or, if it has to," >&2
  echo "\"bench/instructions.sh --update yes\" and tell the reason in the commit" >&2
  exit 1
}
