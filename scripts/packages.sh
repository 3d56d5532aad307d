# The Debian packages of each task; sourced by the other scripts.
build_packages=(g++ cmake ninja-build liblmdb-dev libicu-dev icu-devtools libcli11-dev
  nlohmann-json3-dev libgtest-dev libgmock-dev)
check_packages=(clang-format clang-tidy db5.3-util fish groff-base lmdb-utils man-db zsh)
package_packages=(debootstrap dpkg-dev file)
