#!/usr/bin/env bash
# Builds the Debian package and installs, runs and removes it: as root in a small Debian system of
# its own where debootstrap and its mounts are at hand, otherwise in an empty tree with this system's
# libraries. Needs debootstrap for the first way, and changes nothing outside the build directory
# and a scratch directory.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
scripts/setup.sh "${build_packages[@]}" "${package_packages[@]}"

cmake --preset release >/dev/null
cmake --build --preset release -- --quiet
rm -f build/orxrestore_*.deb
(cd build && cpack -G DEB >/dev/null)
package=$(echo build/orxrestore_*.deb)
dpkg-deb --info "$package" | grep -E '^ (Package|Version|Depends|Maintainer):'

scratch=$(mktemp -d)
trap 'rm -rf --one-file-system "$scratch"' EXIT
root=$scratch/root
fail() {
  echo "package test: $1" >&2
  exit 1
}

# The suite, and the place that this system's own packages come from.
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
mirror=$(apt-get indextargets --format '$(REPO_URI) $(CODENAME)' 'Created-By: Packages' |
  awk -v suite="$suite" '$2 == suite { print $1; exit }')
eval "$(apt-config shell http_proxy Acquire::http::Proxy)"
export http_proxy

depends=$(dpkg-deb --field "$package" Depends | sed 's/([^)]*)//g; s/|[^,]*//g; s/[[:space:]]//g')
make_system() {
  [ "$(id -u)" -eq 0 ] && [ -n "$mirror" ] && command -v debootstrap >/dev/null || return 1
  debootstrap --variant=minbase --include="$depends,man-db" "$suite" "$root" "$mirror" \
    >"$scratch/log" 2>&1
}

if make_system; then
  echo "package test: in a $suite system of its own"
  in_root() { chroot "$root" "$@"; }
  install_package() {
    cp "$package" "$root/tmp/package.deb"
    in_root dpkg --install /tmp/package.deb
  }
  remove_package() { in_root dpkg --purge orxrestore; }
  prefix=/usr
else
  [ ! -s "$scratch/log" ] || tail -n 3 "$scratch/log" >&2
  echo "package test: there is no system of its own to be had, in an empty tree"
  rm -rf --one-file-system "$root"
  mkdir -p "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/info"
  : >"$root/var/lib/dpkg/status"
  in_root() { "$@"; }
  # The libraries are those of this system, which the tree knows nothing of.
  dpkg_in_tree() { dpkg --root="$root" --force-not-root --force-script-chrootless "$@"; }
  install_package() { dpkg_in_tree --force-depends --install "$package"; }
  remove_package() { dpkg_in_tree --purge orxrestore; }
  prefix=$root/usr
fi

install_package >/dev/null
for file in bin/orxrestore bin/orxkdb share/man/man1/orxkdb.1 share/man/man1/orxrestore.1 \
  share/man/man5/orxkdb-formats.5 \
  share/bash-completion/completions/orxkdb share/bash-completion/completions/orxrestore \
  share/zsh/vendor-completions/_orxkdb share/zsh/vendor-completions/_orxrestore \
  share/fish/vendor_completions.d/orxkdb.fish share/fish/vendor_completions.d/orxrestore.fish \
  share/doc/orxrestore/README.md share/doc/orxrestore/docs/operations.md; do
  [ -f "$root/usr/$file" ] || fail "the package lacks /usr/$file"
done

work=$(in_root mktemp -d)
in_root sh -ec "cd '$work' && PATH='$prefix/bin':\$PATH
  orxkdb create rorxdata
  orxkdb sample --objects 1000 fleet.txt
  orxrestore -i fleet.txt -o rorxdata
  orxkdb backup rorxdata again.txt
  cmp fleet.txt again.txt
  orxkdb check rorxdata
  rm -r '$work'" >"$scratch/run" || fail "the installed programs failed: $(cat "$scratch/run")"
grep -q '^Restore finished' "$scratch/run" || fail "the restore said nothing of its end"

remove_package >/dev/null
left=$(find "$root/usr" -name '*orxkdb*' -o -name '*orxrestore*')
[ -z "$left" ] || fail "these are left after the removal: $left"
echo "package test: $(basename "$package") installs, runs and goes away again"
