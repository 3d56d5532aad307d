#!/usr/bin/env bash
# Installs the Debian packages that are named as arguments and missing, as root or with sudo.
set -euo pipefail

missing=()
for package in "$@"; do
  [ "$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null)" = "install ok installed" ] ||
    missing+=("$package")
done
[ "${#missing[@]}" -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || {
    echo "These Debian packages are needed: ${missing[*]}" >&2
    echo "Run this script as root, or install them first." >&2
    exit 1
  }
  sudo=sudo
fi
echo "Installing Debian packages: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
