# The Debian packages of each task; sourced by the other scripts.
# shellcheck shell=bash disable=SC2034  # lists of the script that sources this
build_packages=(g++ cmake ninja-build liblmdb-dev libicu-dev icu-devtools zlib1g-dev
  libzstd-dev liblzma-dev libcli11-dev nlohmann-json3-dev libgtest-dev libgmock-dev)
check_packages=(clang-format clang-tidy db5.3-util fish git groff-base lmdb-utils man-db valgrind
  xz-utils zsh zstd)
fuzz_packages=(clang libclang-rt-dev)
package_packages=(debootstrap dpkg-dev file)
bench_packages=(libbenchmark-dev)
peer_packages=(db5.3-util lmdb-utils python3 sqlite3 tkrzw-utils)
