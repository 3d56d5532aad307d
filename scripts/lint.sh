#!/usr/bin/env bash
# Lints the sources below src with clang-tidy (settings in .clang-tidy), as the release build in
# build compiles them: that comes first.
set -euo pipefail
cd "$(dirname "$0")/.."

fail() {
  echo "lint: $1" >&2
  exit 1
}

command -v clang-tidy >/dev/null || fail "clang-tidy is not installed"
[ -f build/compile_commands.json ] || fail "there is no release build (cmake --preset release)"
# What clang-tidy says on standard error are counts of warnings that it suppressed. The compiler's
# warnings are those of the build; the two that only clang has are left out.
git ls-files -- 'src/*.cpp' | xargs -r -n 4 -P "$(nproc)" clang-tidy -p build --quiet \
  --extra-arg=-Wno-sign-conversion --extra-arg=-Wno-format-security 2>/dev/null
