#!/usr/bin/env bash
# Installs what packages.txt lists in the sections named and this machine lacks; says so and does
# nothing more when all is there.
set -euo pipefail
list="$(dirname "$(readlink -f "$0")")/../packages.txt"

usage() {
    cat <<TEXT
Usage: packaging/install-missing.sh [--list|--names] SECTION...
Installs the missing Debian packages of the sections (build, run, demo, kiosk, test, package, vm,
fuzz, bench) of packages.txt.
  --list   only print them
  --names  print all of the sections, missing or not
TEXT
}

only_list=no only_names=no
sections=()
for argument in "$@"; do
    case $argument in
        --list) only_list=yes ;;
        --names) only_names=yes ;;
        -h | --help) usage; exit 0 ;;
        build | run | demo | kiosk | test | fuzz | package | vm | bench) sections+=("$argument") ;;
        *) usage >&2; exit 2 ;;
    esac
done
if [ ${#sections[@]} -eq 0 ]; then
    usage >&2
    exit 2
fi

mapfile -t wanted < <(awk -v sections=" ${sections[*]} " '
    { sub(/[ \t]*#.*/, "") }
    /^\[.*\]$/ { active = index(sections, " " substr($0, 2, length($0) - 2) " "); next }
    NF && active { print $1 }' "$list" | sort -u)

if [ $only_names = yes ]; then
    printf '%s\n' "${wanted[@]}"
    exit 0
fi

if ! command -v dpkg-query >/dev/null; then
    echo "This is not a Debian system; please see to these yourself: ${wanted[*]}" >&2
    exit 0
fi

missing=()
for package in "${wanted[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi
if [ $only_list = yes ]; then
    printf '%s\n' "${missing[@]}"
    exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        printf 'These packages are missing, and there is no sudo to install them with:\n  %s\n' \
            "${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi

echo "Installing ${#missing[@]} missing packages: ${missing[*]}"
apt_install() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends -o Dpkg::Use-Pty=0 -q "${missing[@]}"
}
# The package lists are fetched only when those on the disk do not lead to success.
if ! apt_install; then
    if ! "${as_root[@]}" apt-get update -q || ! apt_install; then
        cat >&2 <<TEXT

The packages above could not be installed. If this machine has no network, install them another
way and start again:
  apt-get install --no-install-recommends ${missing[*]}
TEXT
        exit 1
    fi
fi
