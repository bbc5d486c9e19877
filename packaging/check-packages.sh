#!/usr/bin/env bash
# Proves packages.txt complete and README.md right: in a bare Debian 12 that has nothing installed, a
# clean clone must build, test and play, as README.md says.
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/trial/common.sh"

usage() {
    cat <<TEXT
Usage: packaging/check-packages.sh [--keep] [WHAT]
Makes a minimal Debian 12 in a temporary folder with debootstrap, clones this tree into it (what is
committed), and runs there, as root and with network, WHAT:
  demo   ./demo.sh --seconds 40 (default)
  readme the other commands of README.md, as packaging/trial/readme-commands.sh lists them
  test   ./test.sh
  deb    makes the Debian packages, twice, asks lintian about them and leaves them in out/packages;
         then installs, upgrades and purges them in another system, which has nothing else
  all    one after the other, each in a system of its own
  --keep leaves the system and its out/ folder for a look around
Needs root and the package debootstrap. The demo and the commands take about ten minutes each, the
packages and the tests about twenty.
TEXT
}

keep=no what=demo
for argument in "$@"; do
    case $argument in
        --keep) keep=yes ;;
        demo | readme | test | deb | deb-build | deb-use | all) what=$argument ;;
        -h | --help) usage; exit 0 ;;
        *) usage >&2; exit 2 ;;
    esac
done
[ "$(id -u)" -eq 0 ] || { echo "check-packages.sh: needs root." >&2; exit 1; }
command -v debootstrap >/dev/null ||
    { echo "check-packages.sh: needs the package debootstrap." >&2; exit 1; }

case $what in
    all) parts="demo readme test deb" ;;
    deb) parts="deb-build deb-use" ;;
    *) parts="" ;;
esac
if [ -n "$parts" ]; then
    for each in $parts; do
        "$0" $([ $keep = no ] || echo --keep) "$each"
    done
    exit
fi

tree=$(git -C "$(dirname "$(readlink -f "$0")")" rev-parse --show-toplevel)
system=$(mktemp -d "${TMPDIR:-/var/tmp}/bare-debian.XXXXXX")

finish() {
    local status=$?
    trap - EXIT
    local place
    for place in dev/shm dev/pts dev sys proc .; do
        mountpoint -q "$system/$place" && umount -l "$system/$place"
    done
    if [ $keep = yes ]; then
        echo "Left in $system"
    else
        rm -rf --one-file-system "$system"
    fi
    exit $status
}
trap finish EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

echo "== A bare Debian 12 in $system"
bare_debian
# Some tests run as another user, mount over a folder, or look into the table of mounts: the root must
# be readable to everyone and a mount of its own, as on a machine.
chmod 755 "$system"
mount --bind "$system" "$system"
mount -t proc proc "$system/proc"
mount --bind /dev "$system/dev"
mount --bind /dev/pts "$system/dev/pts"
mount -t tmpfs tmpfs "$system/dev/shm"
cp /etc/resolv.conf /etc/hosts "$system/etc/"

git clone -q --no-local "$tree" "$system/root/tree"

in_tree() {
    inside "cd /root/tree && $1"
}

case $what in
    demo)
        echo "== ./demo.sh"
        in_tree './demo.sh --seconds 40'
        [ -s "$system/root/tree/out/demo/contact-sheet.png" ] ||
            { echo "check-packages.sh: the demo left no contact sheet." >&2; exit 1; } ;;
    readme)
        touch "$system/etc/bare-system"
        # systemd keeps its services apart by control groups.
        mount --rbind /sys "$system/sys"
        mount --make-rslave "$system/sys"
        # What README.md takes for granted: a machine that systemd runs, and a user who may use sudo.
        in_tree 'apt-get update -q && apt-get install -y -q --no-install-recommends sudo systemd'
        # In a process namespace of their own, so that all they start ends with them.
        in_tree 'unshare --pid --fork --kill-child --mount-proc packaging/trial/readme-commands.sh run' ;;
    deb-build)
        touch "$system/etc/bare-system"
        in_tree 'packaging/trial/package-trial.sh build'
        mkdir -p "$tree/out/packages"
        rm -f "$tree"/out/packages/*
        cp "$system"/root/tree/out/packages/* "$tree/out/packages" ;;
    deb-use)
        touch "$system/etc/bare-system"
        mkdir -p "$system/root/tree/out"
        cp -r "$tree/out/packages" "$system/root/tree/out"
        mount --rbind /sys "$system/sys"
        mount --make-rslave "$system/sys"
        in_tree 'unshare --pid --fork --kill-child --mount-proc packaging/trial/package-trial.sh use' ;;
    test)
        echo "== ./test.sh"
        in_tree './test.sh' ;;
esac
echo "== Right: $what ran in a bare system"
