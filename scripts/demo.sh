#!/usr/bin/env bash
# Builds the programs and shows what they do on a made-up fleet: a database is created, a backup of
# many thousand records restored into it, dumped and backed up again to the same bytes; its
# prototypes alone; a restore that fails, and the way back; wrong use counts found and rebuilt; the
# backup of another site merged in. Installs what it needs.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
scripts/setup.sh "${build_packages[@]}"

echo "Building the programs (build/bin), which takes about 3 minutes on 2 processors ..."
cmake --preset release >/dev/null
cmake --build --preset release -- --quiet
PATH="$PWD/build/bin:$PATH"
page=$PWD/build/report.html
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

step() { printf '\n\033[1m# %s\033[0m\n' "$1"; }
# Shows a command, runs it, and shows an exit code other than 0.
run() {
  echo "\$ $*"
  local code=0
  "$@" || code=$?
  [ "$code" -eq 0 ] || echo "(exit code $code)"
}
# Shows a line of the shell and runs it.
run_line() {
  echo "\$ $1"
  eval "$1"
}
# excerpt CONDITION COMMAND...: as run does, but of what is printed only the lines that meet the
# condition, one of awk, and "..." where others were. and_next(N) in it takes N lines more.
excerpt() {
  local wanted=$1
  shift
  run "$@" | awk "function and_next(lines) { left = lines + 1; return 1 }
    NR == 1 || $wanted || left > 0 { print; left--; cut = 0; next }
    !cut { print \"...\"; cut = 1 }"
}
counts='/use count|signatures/ && and_next(2)'
system_record='/attribute [19] of/ && and_next(4)'

step "A database and a backup of a fleet of 60,000 objects"
run orxkdb create rorxdata
run orxkdb sample --objects 60000 --seed 7 fleet.txt
run wc -l fleet.txt

step "The replace restore, with its progress"
excerpt 'NR <= 7 || /[246]0000 records added|finished/' orxrestore -i fleet.txt -o rorxdata -v
run orxkdb stat rorxdata

step "The database gives the same backup back, byte for byte, and so does a copy made from its dump"
run orxkdb backup rorxdata again.txt
run cmp fleet.txt again.txt
run orxkdb dump rorxdata rorxdata.dump
run orxkdb load copy rorxdata.dump
run orxkdb backup copy copy.txt
run cmp fleet.txt copy.txt

step "A restore of the prototypes alone"
run orxrestore -i fleet.txt -o copy -p

step "A restore that fails: the last line of this backup is there twice"
run_line 'tail -n 1 fleet.txt | cat fleet.txt - >twice.txt'
run orxrestore -i twice.txt -o copy

step "What was added before the failure is there; undo brings back the prototypes"
run orxkdb stat copy
run orxkdb undo copy
run orxkdb stat copy

step "Wrong use counts: a backup whose models all say 7 where they said one digit"
run_line "sed 's/<17;0;1;[0-9];>/<17;0;1;7;>/' fleet.txt >wrong.txt"
run orxrestore -i wrong.txt -o rorxdata
run orxkdb check --limit 2 rorxdata
excerpt "$counts" orxkdb explain rorxdata 12:1

step "The rebuild counts them anew"
run orxrestore -u rorxdata
excerpt "$counts" orxkdb explain rorxdata 12:1
run orxkdb check rorxdata

step "Another site, with a parameter ARCHIVING of its own: what a merge of its backup would do"
run orxkdb sample --objects 20000 --seed 8 other.txt
run sed -i s/RETENTION=/ARCHIVING=/ other.txt
run orxkdb check other.txt
run orxkdb plan rorxdata other.txt

step "The same as a page to look at: counts, models and what refers to them, where identifiers go"
run orxkdb report rorxdata --plan other.txt --html "$page"

step "The merge: its objects are added under new identifiers, its new parameter as well"
excerpt "$system_record" orxkdb explain rorxdata 0:0
new_id=$(orxkdb plan rorxdata other.txt | sed -n 's/^  type 12 .* 1-[0-9]* -> \([0-9]*\)-.*/\1/p')
excerpt 'NR <= 5 || /system parms/ && and_next(1) || /0000 records added|finished/' \
  orxrestore -i other.txt -m rorxdata -v
excerpt "$system_record" orxkdb explain rorxdata 0:0

step "Model 1 of the other site, and the same model where it is now"
run orxkdb explain --line "other.txt:$(grep -n -m 1 '<1;1;12;0;0;0;1;>.*<17;' other.txt | cut -d: -f1)"
run orxkdb explain rorxdata "12:$new_id"

step "The use counts once more; nothing is left to find"
run orxrestore -u rorxdata
run orxkdb check rorxdata

printf '\nPrograms: build/bin. Page: build/report.html. Next: docs/operations.md\n'
