#!/usr/bin/env bash
# Checks the format of all sources with clang-format (settings in .clang-format) and changes none;
# with --fix it rewrites those that are out of format.
#
#   scripts/format.sh [--fix]
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1-}" in
  "") mode=(--dry-run --Werror) ;;
  --fix) mode=(-i) ;;
  *)
    echo "scripts/format.sh [--fix]" >&2
    exit 1
    ;;
esac
git ls-files -- 'src/*.h' 'src/*.cpp' 'tests/*.h' 'tests/*.cpp' 'bench/*.h' 'bench/*.cpp' |
  xargs -r clang-format "${mode[@]}"
