#!/usr/bin/env bash
# The folders below src are layers: an include may only lead to the folders listed for its own, no
# file may lead back to itself, and the storage engine's header stays in platform/kdb. Those below
# src/orxkdb have a list of their own; of the files beside them they may use what belongs to no
# subcommand.
set -euo pipefail
cd "$(dirname "$0")/.."

declare -A may_use=(
  [platform]="platform"
  [encoding]="encoding platform"
  [model]="model encoding platform"
  [descriptions]="descriptions model encoding platform"
  [records]="records model platform"
  [terminal]="terminal platform"
  [messages]="messages platform"
  [restore]="restore records model messages platform"
  [driver]="driver restore messages terminal platform"
  [orxkdb]="orxkdb restore records model messages terminal platform"
)
shared="keys input words output"
declare -A orxkdb_may_use=(
  [keys]="keys"
  [input]="input keys"
  [words]="words input keys"
  [output]="output"
  [check]="check $shared"
  [diff]="diff $shared"
  [dump]="dump $shared"
  [explain]="explain check $shared"
  [manual]="manual $shared"
  [plan]="plan $shared"
  [report]="report check plan stat $shared"
  [sample]="sample $shared"
  [stat]="stat $shared"
)
orxkdb_files="command.h exit_codes.h result.h standard_stream.h"

faults=0
fault() {
  echo "include check: $1" >&2
  faults=$((faults + 1))
}

# within LIST WORD
within() { [[ " $1 " == *" $2 "* ]]; }

# check_orxkdb FILE TARGET, both below orxkdb. What lies in no folder, the subcommands, may use all.
check_orxkdb() {
  local file=$1 target=$2
  [[ $file == */* ]] || return 0
  if [[ $target == */* ]]; then
    within "${orxkdb_may_use[${file%%/*}]-}" "${target%%/*}" && return
  else
    within "$orxkdb_files" "$target" && return
  fi
  fault "orxkdb/$file includes \"orxkdb/$target\", which orxkdb/${file%%/*}/ may not"
}

edges=$(mktemp)
trap 'rm -f "$edges"' EXIT
while IFS=: read -r file target; do
  file=${file#src/}
  layer=${file%%/*}
  within "${may_use[$layer]-}" "${target%%/*}" ||
    fault "$file includes \"$target\", which $layer/ may not"
  if [[ $file == orxkdb/* && $target == orxkdb/* ]]; then
    check_orxkdb "${file#orxkdb/}" "${target#orxkdb/}"
  fi
  echo "$file $target" >>"$edges"
done < <(grep -rHo --include='*.h' --include='*.cpp' '^#include "[^"]*"' src |
  sed 's/#include "\(.*\)"/\1/')

cycle=$(tsort "$edges" 2>&1 >/dev/null | sed 's/^tsort: //' || true)
[ -z "$cycle" ] || fault "files include each other in a circle: $(echo "$cycle" | tr '\n' ' ')"

while IFS= read -r file; do
  fault "$file includes lmdb.h"
done < <(grep -rl '^#include <lmdb.h>' src | grep -v '^src/platform/kdb/' || true)

[ "$faults" -eq 0 ] || exit 1
echo "include check: $(wc -l <"$edges") includes, all allowed"
