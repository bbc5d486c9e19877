#!/usr/bin/env bash
# Tries the Debian packages on a whole machine: a virtual one, with a screen, keys, sticks and a power switch.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. packaging/trial/common.sh

usage() {
    cat <<TEXT
Usage: packaging/test-in-vm.sh [--kvm] [--cuts N] [--work FOLDER]
Makes the packages of the last commit, boots a Debian 12 with nothing else in qemu, installs them there,
and watches its screen from then on: README.md's steps, keys, sticks of each file system, killed and
stopped processes, an upgrade, power cuts, the packages' removal. Leaves in FOLDER/result the table
(result.md), the screenshots and a sheet of them, and the log of the machine's console.
  --kvm          let the processor run the machine itself; not on every machine that has /dev/kvm
                 that works
  --cuts N       cut the power N times during play (default: 20)
  --work FOLDER  where system, image and result lie (default: /var/tmp/ostrel-demo-vm); the system is
                 kept for the next run
Needs root, network and some gigabytes of disk, and installs what it needs itself.
TEXT
}

kvm=() cuts=20 work=/var/tmp/ostrel-demo-vm
while [ $# -gt 0 ]; do
    case $1 in
        --cuts | --work)
            [ $# -ge 2 ] || { usage >&2; exit 2; }
            if [ "$1" = --cuts ]; then cuts=$2; else work=$2; fi
            shift ;;
        --kvm) kvm=(--kvm) ;;
        -h | --help) usage; exit 0 ;;
        *) usage >&2; exit 2 ;;
    esac
    shift
done
case $cuts in '' | 0* | *[!0-9]*) usage >&2; exit 2 ;; esac
[ "$(id -u)" -eq 0 ] || { echo "test-in-vm.sh: needs root." >&2; exit 1; }

packaging/install-missing.sh build run test package vm
mkdir -p "$work"
work=$(realpath "$work")
# What lies there is replaced without a question.
[ -e "$work/.ostrel-demo-vm" ] || [ -z "$(ls -A "$work")" ] ||
    { echo "test-in-vm.sh: $work is neither empty nor of an earlier run" >&2; exit 2; }
touch "$work/.ostrel-demo-vm"
system=$work/system

echo "== The packages"
packaging/build-deb.sh "$work/packages" >"$work/build-deb.log" 2>&1 || { tail -n 40 "$work/build-deb.log" >&2; exit 1; }
dependencies=$(dependencies_of "$work/packages" Depends Recommends)

# What a shop's machine has when the packages come to it, which has no network once it runs.
if [ "$(cat "$system.ready" 2>/dev/null)" != "$dependencies" ]; then
    echo "== A bare Debian 12 in $system"
    rm -rf --one-file-system "$system" "$system.ready"
    bare_debian --include=systemd-sysv,udev,kmod,linux-image-amd64,initramfs-tools,zstd \
        >"$work/debootstrap.log" || { tail "$work/debootstrap.log" >&2; exit 1; }
    inside "export DEBIAN_FRONTEND=noninteractive
        apt-get update -q && apt-get satisfy -y -q --no-install-recommends '$dependencies' &&
        apt-get install -y -q --no-install-recommends exfatprogs dosfstools && apt-get clean" >"$work/apt.log" 2>&1 ||
        { tail -n 40 "$work/apt.log" >&2; exit 1; }
    echo demo-set >"$system/etc/hostname"
    echo '/dev/vda / ext4 defaults 0 1' >"$system/etc/fstab"
    inside 'passwd -qd root'
    # Only what finds the disk: loading a larger one takes a virtual machine longer than all the rest.
    printf 'MODULES=list\nCOMPRESS=zstd\n' >"$system/etc/initramfs-tools/conf.d/small"
    printf 'virtio_pci\nvirtio_blk\next4\n' >"$system/etc/initramfs-tools/modules"
    inside 'update-initramfs -u' >/dev/null 2>&1
    # A line to the machine for this trial, beside screen and keys.
    mkdir -p "$system/etc/systemd/system/serial-getty@ttyS0.service.d"
    printf '[Service]\nExecStart=\nExecStart=-/sbin/agetty -a root --keep-baud 115200 - vt220\n' \
        >"$system/etc/systemd/system/serial-getty@ttyS0.service.d/trial.conf"
    echo "$dependencies" >"$system.ready"
fi

echo "== The machine"
rm -rf --one-file-system "$work/root" "$work/result" "$work/unpacked"
mkdir "$work/result" "$work/unpacked"
cp -a --reflink=auto "$system" "$work/root"
system=$work/root
mkdir "$system/root/packages" "$system/root/later"
cp "$work"/packages/*.deb "$system/root/packages/"
# A later version, with something new in what it has for all of the machine.
for package in "$work"/packages/*.deb; do
    name=$(basename "${package%%_*}")
    version=$(dpkg-deb -f "$package" Version)
    dpkg-deb -R "$package" "$work/unpacked/$name"
    cp -a "$work/unpacked/$name" "$work/unpacked/later"
    sed -i "s/$version/$version+later/" "$work/unpacked/later/DEBIAN/control"
    if [ "$name" = ostrel-demo-kiosk ]; then
        echo '# A line of the later version.' >>"$work/unpacked/later/etc/ostrel-demo-kiosk/tv.conf"
        echo '[Journal]' >"$work/unpacked/later/usr/share/ostrel-demo-kiosk/etc/systemd/journald.conf.d/ostrel-demo-later.conf"
    fi
    dpkg-deb -b "$work/unpacked/later" "$system/root/later/" >/dev/null
    rm -r "$work/unpacked/later"
done
# Many times slower than a set: what is watched by the clock gets more time.
for unit in ostrel-demo-kiosk ostrel-demo-kiosk-player ostrel-demo-kiosk-standby; do
    mkdir -p "$system/etc/systemd/system/$unit.service.d"
    printf '[Service]\nTimeoutStartSec=180\nWatchdogSec=40\n' \
        >"$system/etc/systemd/system/$unit.service.d/trial.conf"
done
packaging/trial/vm_trial.py "${kvm[@]}" "$work" "$cuts"
