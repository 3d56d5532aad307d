#!/usr/bin/env bash
# Measures the replace restore beside what an operator would use instead and beside what the disk can
# do, all in one run on one machine. Prints medians and ratios, and leaves restore.json, with the
# time of every run, and restore.svg, a picture of it, in the directory of the results. Installs the
# peers. All four sizes need 25 GB of disk.
#
#   bench/run.sh [--runs N] [--sizes "10000 100000 1000000 4000000"] [--orders "key random"]
#                [--peer-limit SECONDS] [--peers-up-to RECORDS] [--results DIRECTORY]
#
# Every cell is the median of N runs (7) taken in turn, so that a slow minute of the machine meets
# all of them. Before a run its input is read once, and what others wrote is on the disk. A restore
# works on a database that already holds as many records as it will get; each time ends with the
# result on the disk.
#
# A peer that takes longer than the limit (300 s) is stopped; its cell says ">" and how many times as
# slow the limit alone is. It is not run again in that cell, nor with more records in that order.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
. bench/common.sh

options="runs sizes orders peer_limit peers_up_to results"
runs=7 sizes="10000 100000 1000000 4000000" orders="key random"
peer_limit=300 peers_up_to=4000000 results=build/results
take_options "$@"
sizes=$(tr ' ' '\n' <<<"$sizes" | sort -n | xargs)

scripts/setup.sh "${peer_packages[@]}"
build_bench
use_results "$results"
picture=$PWD/bench/picture.py
enter_scratch

all_peers=(db5.3_load mdb_load sqlite3 tkrzw)
declare -A input=([orxrestore]=lines.txt [dd]=db
  [db5.3_load]=dump.txt [mdb_load]=mdb.txt [sqlite3]=sql.txt [tkrzw]=records.flat)
goals=()
declare -A over # "PEER ORDER": it took longer than the limit

# The entries of a dump in another order, two lines each; sorted by numbers in front of them, on
# disk where memory does not hold them.
shuffle_entries() {
  sed -n 1,4p "$1"
  sed '1,4d; $d' "$1" | paste -d' ' - - | perl -ne 'BEGIN { srand 1 } printf "%.12f%s", rand, $_' |
    LC_ALL=C sort -T . -k 1,1 | awk '{ print " " $2; print " " $3 }'
  echo DATA=END
}
# One transaction. sqlite3 makes its own commit durable.
make_sql() {
  perl -ne 'BEGIN { print "PRAGMA synchronous=FULL;",
                          "CREATE TABLE r(k BLOB PRIMARY KEY, v BLOB) WITHOUT ROWID; BEGIN;\n" }
    next unless /^ (\w+)/;
    if ($key) { print "INSERT INTO r VALUES(x\x27$key\x27,x\x27$1\x27);\n"; $key = "" }
    else { $key = $1 }
    END { print "COMMIT;\n" }' "$1"
}
# The peer's own format of binary records, keys and values in turn: the byte FF, the length as a
# number of 7-bit digits, the bytes. It is spared the hexadecimal digits that the others read.
make_flat() {
  perl -ne 'next unless /^ (\w+)/;
    $bytes = pack "H*", $1;
    print pack "C w a*", 255, length $bytes, $bytes' "$1"
}

make_inputs() { # SIZE ORDER
  sample_lines "$1" 5 "$2" >lines.txt
  orxkdb create db >/dev/null
  orxrestore -i lines.txt -o db >/dev/null
  [ "${#peers[@]}" -gt 0 ] || return 0
  orxkdb dump db - >dump.txt
  if [ "$2" = random ]; then
    shuffle_entries dump.txt >dump.shuffled
    mv dump.shuffled dump.txt
  fi
  sed '3a mapsize=17179869184' dump.txt >mdb.txt
  make_sql dump.txt >sql.txt
  make_flat dump.txt >records.flat
}

# run_program NAME: mdb_load syncs every 100 records, db5.3_load at its end; tkrzw does not sync.
run_program() {
  local cell=$1
  case $cell in
    orxrestore) measured "$cell" orxrestore -i lines.txt -o db ;;
    dd) measured "$cell" dd if=db of=dd.out bs=1M conv=fsync ;;
    db5.3_load) measured "$cell" db5.3_load -f dump.txt db5.3_load.out ;;
    mdb_load) measured "$cell" mdb_load -n -f mdb.txt mdb_load.out ;;
    sqlite3) measured "$cell" sqlite3 -batch -bail -init /dev/null sqlite3.out ".read sql.txt" ;;
    tkrzw)
      measure_options="${measure_options-} --sync tkrzw.out"
      measured "$cell" tkrzw_dbm_util import --dbm tree tkrzw.out records.flat
      ;;
  esac
}

# How many records a program's result holds; for dd, as many as the file that it copied.
records_in() {
  case $1 in
    orxrestore) orxkdb stat db | sed -n 's/^records: //p' ;;
    dd) cmp -s db dd.out && echo "$size" ;;
    db5.3_load) db5.3_stat -d db5.3_load.out | awk '/unique keys in the tree/ { print $1 }' ;;
    mdb_load) mdb_stat -n mdb_load.out | awk '/Entries:/ { print $2 }' ;;
    sqlite3) sqlite3 sqlite3.out 'SELECT count(*) FROM r' ;;
    tkrzw) tkrzw_dbm_util inspect --dbm tree tkrzw.out num_records ;;
  esac
}

# turn NAME: one run of a program; a result that is not whole ends the bench. 124 when it took longer
# than the limit.
turn() {
  local found before
  cat "${input[$1]}" >/dev/null || exit 1
  before=$(stat -c %i db)
  run_program "$1" || return
  [ "$1" != orxrestore ] || [ "$(stat -c %i db)" != "$before" ] || {
    echo "the restore replaced nothing" >&2
    exit 1
  }
  found=$(records_in "$1") || true
  [ "$found" = "$size" ] || {
    echo "$1 made ${found:-no} records of $size" >&2
    exit 1
  }
  rm -f "$1".out*
}

peer_turn() { # NAME
  [ -z "${over[$1 $order]-}" ] || return 0
  local status=0
  measure_options="--limit $peer_limit" turn "$1" || status=$?
  rm -f "$1".out*
  case $status in
    0) ;;
    124) over[$1 $order]=yes ;;
    *) exit 1 ;;
  esac
}

# How many times as slow a peer is.
times_as_slow() {
  if [ -n "${over[$1 $order]-}" ]; then
    awk -v limit="$peer_limit" -v own="$(median orxrestore)" 'BEGIN { printf ">%.1f", limit / own }'
  else
    awk -v peer="$(median "$1")" -v own="$(median orxrestore)" 'BEGIN { printf "%.1f", peer / own }'
  fi
}

print_row() {
  local peer
  printf '%8d %-7s %8.3f s %5.1f MB %8.3f s %6.2f |' "$size" "$order" "$(median orxrestore)" \
    "$(peak_mb orxrestore)" "$(median dd)" "$(ratio orxrestore dd)"
  for peer in "${peers[@]}"; do printf '%11s' "$(times_as_slow "$peer")"; done
  echo
}

# goal WHAT RATIO GOAL: the goal is the greatest ratio that is wanted.
goal() {
  local told=met
  awk -v ratio="$2" -v goal="$3" 'BEGIN { exit ratio <= goal }' && told=missed
  goals+=("$1: $2 (goal $3: $told)")
  keep_ratio "$size $order: $1" "" "$2" "$3" "$told"
}
take_goals() {
  local peer slow limit
  if [ "$size" -eq 1000000 ]; then
    if [ "$order" = key ]; then limit=2.0; else limit=4.5; fi
    goal "1000000 $order, time to dd" "$(ratio orxrestore dd)" "$limit"
  fi
  goal "$size $order, MB of private memory" "$(peak_mb orxrestore)" 32
  for peer in "${peers[@]}"; do
    slow=$(times_as_slow "$peer")
    goal "$size $order, time to $peer" "$(awk -v slow="${slow#>}" 'BEGIN { printf "%.2f", 1 / slow }')" 1
  done
}

keep_cells() {
  local program
  for program in orxrestore dd "${peers[@]}"; do
    keep_cell "$program" records "$size" order "$order" program "$program" \
      ${over[$program $order]:+over_limit "$peer_limit"}
  done
}

echo " records order      restore  private    dd+sync  ratio | times as slow:"
printf '%54s |' ""
printf '%11s' "${all_peers[@]}"
echo
for size in $sizes; do
  for order in $orders; do
    rm -rf "$work/cell" && mkdir "$work/cell" && cd "$work/cell"
    peers=()
    [ "$size" -gt "$peers_up_to" ] || peers=("${all_peers[@]}")
    make_inputs "$size" "$order"
    programs=(orxrestore dd "${peers[@]}")
    for number in $(seq "$runs"); do # each program comes behind each other
      for i in "${!programs[@]}"; do
        program=${programs[$(((i + number) % ${#programs[@]}))]}
        case $program in
          orxrestore | dd) turn "$program" ;;
          *) peer_turn "$program" ;;
        esac
      done
    done
    print_row
    take_goals
    keep_cells
  done
done
printf '%s\n' "${goals[@]}"
write_results "$results/restore.json" bench restore runs "$runs" peer_limit "$peer_limit"
"$picture" "$results/restore.json" >"$results/restore.svg"
echo "times of every run in $results/restore.json, a picture in restore.svg beside it"
