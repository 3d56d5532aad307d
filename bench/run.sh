#!/usr/bin/env bash
# Measures the replace restore beside what an operator would use instead and beside what the disk can
# do, all in one run on one machine, and prints medians and ratios. Installs the peers.
#
#   bench/run.sh [--runs N] [--sizes "10000 100000 1000000 4000000"] [--orders "key random"]
#                [--peers-up-to RECORDS]
#
# Every cell is the median of N runs (5) taken in turn, so that a slow minute of the machine meets
# all of them. A restore works on a database that already holds as many records as it will get.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
. bench/common.sh

options="runs sizes orders peers_up_to"
runs=5 sizes="10000 100000 1000000 4000000" peers_up_to=1000000 orders="key random"
take_options "$@"

scripts/setup.sh "${build_packages[@]}" db5.3-util lmdb-utils sqlite3 gawk
build_bench
enter_scratch

make_sql() { # the records of a dump as one transaction of SQL
  gawk 'BEGIN { print "PRAGMA synchronous=FULL; CREATE TABLE r(k BLOB PRIMARY KEY, v BLOB) WITHOUT ROWID; BEGIN;" }
    /^ / { sub(/^ /, ""); if (!key) { key = $0 } else {
      printf "INSERT INTO r VALUES(x\x27%s\x27,x\x27%s\x27);\n", key, $0; key = "" } }
    END { print "COMMIT;" }' "$1"
}

echo "records order   restore  private   dd+sync  ratio | db5.3_load mdb_load sqlite3 (times as slow)"
for size in $sizes; do
  for order in $orders; do
    rm -f -- *.times db db.* dd.out
    sample_lines "$size" 5 "$order" >"$order.txt"
    orxkdb create db >/dev/null
    orxrestore -i "$order.txt" -o db >/dev/null
    orxdump() { orxkdb dump db -; }
    with_peers=0
    if [ "$size" -le "$peers_up_to" ]; then
      with_peers=1
      orxdump >dump.txt
      if [ "$order" = random ]; then # the entries in another order, two lines each
        { sed -n 1,4p dump.txt; sed '1,4d;$d' dump.txt | paste -d' ' - - |
          shuf --random-source=<(yes) | awk '{print " " $1; print " " $2}'; echo DATA=END; } >dump.shuffled
        mv dump.shuffled dump.txt
      fi
      sed '3a mapsize=17179869184' dump.txt >mdb.txt
      make_sql dump.txt >sql.txt
    fi
    for _ in $(seq "$runs"); do
      measured restore orxrestore -i "$order.txt" -o db
      measured dd dd if=db of=dd.out bs=1M conv=fsync
      rm -f dd.out
    done
    if [ $with_peers -eq 1 ]; then
      for _ in $(seq "$(((runs + 1) / 2))"); do
        rm -f bdb.db mdb.db mdb.db-lock sql.db
        measured bdb db5.3_load -f dump.txt bdb.db
        measured mdb mdb_load -n -f mdb.txt mdb.db
        measured sqlite sqlite3 sql.db ".read sql.txt"
        measured restore orxrestore -i "$order.txt" -o db
      done
    fi
    restore=$(median restore) dd=$(median dd)
    printf '%8d %-7s %6.2f s %5.1f MB %7.2f s %6.2f |' "$size" "$order" "$restore" \
      "$(peak_mb restore)" "$dd" "$(ratio restore dd)"
    if [ $with_peers -eq 1 ]; then
      awk -v r="$restore" -v b="$(median bdb)" -v m="$(median mdb)" -v s="$(median sqlite)" \
        'BEGIN {printf " %10.1f %8.1f %7.1f\n", b / r, m / r, s / r}'
    else
      echo
    fi
  done
done
