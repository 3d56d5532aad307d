#!/usr/bin/env bash
# The folders below src are layers: an include may only lead to the folders listed for its own, no
# file may lead back to itself, and the storage engine's header stays in platform/kdb.
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
faults=0
fault() {
  echo "include check: $1" >&2
  faults=$((faults + 1))
}

edges=$(mktemp)
trap 'rm -f "$edges"' EXIT
while IFS=: read -r file target; do
  layer=${file#src/} layer=${layer%%/*}
  used=${target%%/*}
  case " ${may_use[$layer]-} " in
    *" $used "*) ;;
    *) fault "$file includes \"$target\", which $layer/ may not" ;;
  esac
  echo "${file#src/} $target" >>"$edges"
done < <(grep -rHo --include='*.h' --include='*.cpp' '^#include "[^"]*"' src |
  sed 's/#include "\(.*\)"/\1/')

cycle=$(tsort "$edges" 2>&1 >/dev/null | sed 's/^tsort: //' || true)
[ -z "$cycle" ] || fault "files include each other in a circle: $(echo "$cycle" | tr '\n' ' ')"

while IFS= read -r file; do
  fault "$file includes lmdb.h"
done < <(grep -rl '^#include <lmdb.h>' src | grep -v '^src/platform/kdb/' || true)

[ "$faults" -eq 0 ] || exit 1
echo "include check: $(wc -l <"$edges") includes, all allowed"
