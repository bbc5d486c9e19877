#!/usr/bin/env bash
# What the scripts that make a bare system, or try something in one, have in common; they source it.
# $system is the system's folder, $logs that of the logs that tell what went wrong.

# bare_debian [OPTION...]: makes the system, with options of debootstrap.
bare_debian() {
    debootstrap --variant=minbase "$@" bookworm "$system" \
        "${DEBIAN_MIRROR:-http://deb.debian.org/debian}" || return
    # Whatever the host needs to reach the archive, the bare system needs as well.
    cp -n /etc/apt/apt.conf.d/*proxy* "$system/etc/apt/apt.conf.d/" 2>/dev/null || true
}

# inside COMMAND: runs it in the system, with nothing of the caller's environment but its proxies.
inside() {
    env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb LANG=C.UTF-8 \
        ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
        chroot "$system" sh -c "$1"
}

# dependencies_of FOLDER FIELD...: what our packages there ask for in these fields, but for each other.
dependencies_of() {
    local folder=$1 package
    shift
    for package in "$folder"/*.deb; do dpkg-deb -f "$package" "$@"; done |
        sed 's/^[A-Z][a-z]*: //; s/ostrel-demo-player-tv ([^)]*),//g' | paste -sd,
}

fail() {
    echo "${0##*/}: $1" >&2
    tail -n 40 "$logs"/*.log 2>/dev/null >&2 || true
    exit 1
}

# wait_for WHAT COMMAND...: until the command succeeds.
wait_for() {
    local what=$1 round
    shift
    for round in $(seq 1200); do
        ! "$@" || return 0
        sleep 0.1
    done
    fail "waited in vain for $what"
}
