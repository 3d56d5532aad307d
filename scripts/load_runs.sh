#!/usr/bin/env bash
# The database under load: many records in random order within the memory that is promised, many
# runs at once, and a run beside a reader. Prints figures; fails at the first promise that is broken.
# Needs about 25 GB of disk for 10 million records.
#
#   scripts/load_runs.sh [--records N] [--runs N]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
. bench/common.sh

options="records runs"
records=10000000 runs=200
take_options "$@"
most_mb=32

scripts/setup.sh "${build_packages[@]}"
build_bench
enter_scratch

fail() {
  echo "failed: $*" >&2
  exit 1
}

records_of() { orxkdb stat "$1" | sed -n 's/^records: //p'; }

restore_many() {
  sample_lines "$records" 7 random >many.txt
  orxkdb create db >/dev/null
  measured many orxrestore -i many.txt -o db
  [ "$(records_of db)" -eq "$records" ] || fail "the database has not every record"
  echo "$records records in random order: $(median many) s, $(peak_mb many) MB of private memory"
  [ "$(peak_mb many | cut -d. -f1)" -lt $most_mb ] || fail "that is more than $most_mb MB"
  rm -f many.txt db db.orx-previous
}

# A backup for each run; the database is the same as that of one which succeeded.
run_many() {
  local id wins=0 winner=
  orxkdb create db >/dev/null
  for id in $(seq "$runs"); do orxkdb sample --objects 2000 --seed "$id" "b$id" >/dev/null; done
  for id in $(seq "$runs"); do
    { orxrestore -i "b$id" -o db && echo "exit 0" || echo "exit $?"; } >"out$id" 2>&1 &
  done
  wait
  for id in $(seq "$runs"); do
    if grep -q '^exit 0$' "out$id"; then
      wins=$((wins + 1))
      orxkdb diff db "b$id" >/dev/null 2>&1 && winner=$id
    else
      grep -q 'RC=3(BusyObject), RSN=19(InUse)$' "out$id" && grep -q '^exit 5$' "out$id" ||
        fail "run $id was refused in another way: $(cat "out$id")"
    fi
  done
  [ -n "$winner" ] || fail "the database is that of no run which succeeded"
  [ ! -e db.orx-new ] || fail "a successor is left behind"
  echo "$runs runs at once: $wins had the database, one after the other, $((runs - wins)) were refused with 3/19"
  rm -f b* out* db db.orx-previous
}

# A dump reads the old database whole while it is replaced several times.
read_beside_runs() {
  orxkdb sample --objects 100000 --seed 1 old.txt >/dev/null
  orxkdb sample --objects 1000 --seed 2 new.txt >/dev/null
  orxkdb create db >/dev/null
  orxrestore -i old.txt -o db >/dev/null
  orxkdb dump db before >/dev/null
  mkfifo slow
  orxkdb dump db >slow &
  local reader=$!
  exec 3<slow
  head -c 1000 <&3 >dumped
  for _ in 1 2 3; do orxrestore -i new.txt -o db >/dev/null || fail "a run beside a reader"; done
  cat <&3 >>dumped
  wait $reader || fail "the reader"
  cmp -s before dumped || fail "the reader did not see one state"
  orxkdb diff db new.txt >/dev/null || fail "the database is not the new one"
  echo "a reader beside 3 runs: it read the $(wc -l <old.txt) records of the old database, each run succeeded"
}

restore_many
run_many
read_beside_runs
