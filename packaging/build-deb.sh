#!/usr/bin/env bash
# Makes the Debian packages of the last commit.
set -euo pipefail
umask 022

usage() {
    cat <<TEXT
Usage: packaging/build-deb.sh [FOLDER]
Makes the packages ostrel-demo-player-tv and ostrel-demo-kiosk of the last commit, and leaves them in
FOLDER (default: out/packages). Needs no root and no network, but what this installs:
  packaging/install-missing.sh build package
Whoever builds the same commit with the same tools has the same bytes.
TEXT
}

case ${1:-} in
    -h | --help) usage; exit 0 ;;
    -*) usage >&2; exit 2 ;;
esac
[ $# -le 1 ] || { usage >&2; exit 2; }

tree=$(git -C "$(dirname "$(readlink -f "$0")")" rev-parse --show-toplevel)
folder=$(realpath -m "${1:-$tree/out/packages}")
[ -z "$(git -C "$tree" status --porcelain)" ] ||
    echo "build-deb.sh: what is not committed is not in the packages" >&2

# In a copy, so that nothing but the commit gets in and nothing is left in the tree. The theme's
# compiler cannot do with blanks in the folder's name.
work=$(mktemp -d "${TMPDIR:-/var/tmp}/build-deb.XXXXXX")
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
mkdir "$work/source"
git -C "$tree" archive HEAD | tar -x -C "$work/source"
cd "$work/source"
mv packaging/debian debian

# Each later commit is an upgrade, and a set tells which one it runs.
SOURCE_DATE_EPOCH=$(git -C "$tree" log -1 --format=%ct)
export SOURCE_DATE_EPOCH
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
version+=+$(date -u -d "@$SOURCE_DATE_EPOCH" +%Y%m%d%H%M%S)
commit=$(git -C "$tree" rev-parse HEAD)
cat >debian/changelog <<TEXT
ostrel-demo-player-tv ($version.g${commit:0:10}) bookworm; urgency=medium

  * Commit $commit.

 -- $(sed -n 's/^Maintainer: //p' debian/control)  $(LC_ALL=C date -u -R -d "@$SOURCE_DATE_EPOCH")
TEXT

DEB_BUILD_OPTIONS="noautodbgsym parallel=$(nproc)${DEB_BUILD_OPTIONS:+ $DEB_BUILD_OPTIONS}" \
    dpkg-buildpackage --unsigned-source --unsigned-changes --build=binary
mkdir -p "$folder"
rm -f "$folder"/ostrel-demo-*.{deb,changes,buildinfo}
mv "$work"/ostrel-demo-*.{deb,changes,buildinfo} "$folder"
echo "== The packages are in $folder"
