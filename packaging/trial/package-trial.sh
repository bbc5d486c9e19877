#!/usr/bin/env bash
# Tries the Debian packages, as packaging/check-packages.sh has it run in bare systems.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
. packaging/trial/common.sh

usage() {
    cat <<TEXT
Usage: packaging/trial/package-trial.sh build | use
  build  makes the packages twice, in folders of different names, and asks lintian about them
  use    in a system where nothing is installed: the packages of out/packages are installed, play, give
         way to another version, and are purged
Works only in the bare systems that packaging/check-packages.sh makes.
TEXT
}

build() {
    packaging/install-missing.sh build package
    packaging/build-deb.sh out/packages
    echo "== Once more, elsewhere"
    mkdir "$work/another-folder-with-a-longer-name"
    TMPDIR=$work/another-folder-with-a-longer-name TZ=Asia/Tokyo LC_ALL=C \
        packaging/build-deb.sh "$work/again" >"$work/again.log" 2>&1 || { cat "$work/again.log"; exit 1; }
    local package
    for package in out/packages/*.deb; do
        cmp "$package" "$work/again/${package##*/}" || fail "$package is not the same when it is built elsewhere"
    done
    echo "== lintian"
    lintian --fail-on error,warning --tag-display-limit 0 out/packages/*.changes
    ls -l out/packages
}

# ---- Use ------------------------------------------------------------------------------------------

# What a system holds that lasts, but for what dpkg, apt and the account tools keep for themselves.
snapshot() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /run -o -path /tmp -o -path /var/tmp \
        -o -path /root -o -path /var/lib/dpkg -o -path /var/cache -o -path /var/log -o -path /var/lib/apt \) \
        -prune -o -print | grep -vx -e '/etc/\(passwd\|group\|g\?shadow\|subuid\|subgid\)-' -e /etc/.pwd.lock |
        sort
    sort /etc/passwd /etc/group
    find /etc/fstab /etc/systemd /etc/default -type f -exec md5sum {} +
}

# install_packages FOLDER: with the option that README.md names, and nobody to answer a question.
install_packages() {
    dpkg --force-confold -i "$1"/*.deb </dev/null
}

# another_version FOLDER: the packages with other settings, and another file for /etc.
another_version() {
    mkdir -p "$1"
    cp out/packages/ostrel-demo-player-tv_*.deb "$1"
    dpkg-deb -R out/packages/ostrel-demo-kiosk_*.deb "$work/another"
    echo "; theirs" >>"$work/another/etc/ostrel-demo-kiosk/tv.conf"
    echo "# theirs" >>"$work/another/etc/ostrel-demo-kiosk/weston.ini"
    local rules=$work/another/usr/share/ostrel-demo-kiosk/etc/udev/rules.d
    mv "$rules/90-ostrel-demo-kiosk.rules" "$rules/91-ostrel-demo-kiosk.rules"
    dpkg-deb --root-owner-group -b "$work/another" "$1" >/dev/null
}

# In the place of the shell that runs it in the background.
kiosk_user() {
    exec runuser -u ostrel-demo -- env -i HOME=/var/lib/ostrel-demo-kiosk \
        XDG_RUNTIME_DIR="$XDG_RUNTIME_DIR" "$@"
}

plays() {
    ostrel-demo-kiosk tvctl status --json >"$work/status.log" 2>&1 &&
        grep -q "\"file\": \"[^\"]*/$1\"" "$work/status.log"
}

# The player's unit says how it is started; only the screen is none.
play() {
    local unit=/lib/systemd/system/ostrel-demo-kiosk-player.service uid
    uid=$(id -u ostrel-demo)
    export XDG_RUNTIME_DIR=/run/user/$uid
    install -d -m 700 -o ostrel-demo -g ostrel-demo "$XDG_RUNTIME_DIR"
    kiosk_user dbus-daemon --session --nofork --address="unix:path=$XDG_RUNTIME_DIR/bus" >"$work/bus.log" 2>&1 &
    local bus=$!
    kiosk_user weston --backend=headless-backend.so --shell=kiosk-shell.so --socket=wayland-0 \
        --width=1280 --height=720 >"$work/weston.log" 2>&1 &
    local compositor=$!
    wait_for "the bus" test -S "$XDG_RUNTIME_DIR/bus"
    wait_for "the compositor" test -S "$XDG_RUNTIME_DIR/wayland-0"

    local environment command
    read -ra environment < <(sed -n 's/^Environment=//p' $unit)
    command=$(sed -n 's/^ExecStart=//p' $unit)
    command=${command//\$\$/\$}
    kiosk_user "${environment[@]}" bash -c "$command" >"$work/player.log" 2>&1 &
    local player=$!
    local file
    for file in sunrise.mp4 meadow.mkv harbour.jpg; do
        wait_for "$file" plays $file
        echo "   $file"
    done
    ostrel-demo-kiosk tvctl key Return
    ostrel-demo-kiosk tvctl config set landscape_timer 3
    ostrel-demo-kiosk tvctl launch --mode factory_stop
    wait "$player" || fail "the player ended with status $?"
    kill "$compositor" "$bus"
    wait "$compositor" "$bus" || true
    # What is missing is told as a warning or an error, and sound is: there is no device.
    ! grep -E '[WE]/PLATFORM' "$work/player.log" | grep -vi sound ||
        fail "the player misses something"
}

# dpkg believes that systemd runs, and what it would tell it, or udev, is noted.
with_noted_systemctl() {
    mkdir -p /run/systemd/system "$work/bin"
    printf '#!/bin/sh\necho "$*" >>%s/systemctl.log\n' "$work" | tee "$work/bin/systemctl" >"$work/bin/udevadm"
    chmod +x "$work/bin/systemctl" "$work/bin/udevadm"
    : >"$work/systemctl.log"
    PATH=$work/bin:$PATH "$@"
    rm -rf /run/systemd/system
}

use() {
    export DEBIAN_FRONTEND=noninteractive
    local dependencies
    dependencies=$(dependencies_of out/packages Depends)
    apt-get update -q
    apt-get satisfy -y -q --no-install-recommends "$dependencies"
    snapshot >"$work/before"

    echo "== Installed"
    with_noted_systemctl install_packages out/packages
    ! grep -E 'ostrel.*(start|enable)|(start|enable).*ostrel' "$work/systemctl.log" ||
        fail "installing the packages has started something"
    ! find /etc/systemd /etc/udev /etc/default -name '*ostrel*' | grep . || fail "installing has enabled something"

    echo "== Content, by somebody of the group, and switched on"
    setpriv --reuid=nobody --regid=nogroup --groups="$(getent group ostrel-content | cut -d: -f3)" \
        make-sample-content --quick /opt/data/demo_movie >/dev/null
    cp -r /opt/data/demo_movie "$work/demo"
    ostrel-demo-copy "$work/demo" >/dev/null
    [ "$(stat -c %G:%a /opt/data/demo_movie/sunrise.mp4)" = ostrel-content:664 ] ||
        fail "staff may not replace what was copied"
    ostrel-demo-kiosk on
    [ -L /etc/systemd/system/multi-user.target.wants/ostrel-demo-kiosk.service ] || fail "it is not enabled"
    # As udev would read it.
    udevadm test /sys/class/mem/null >"$work/udev.log" 2>&1 || true
    grep -q 'Reading rules file: .*ostrel' "$work/udev.log" || fail "the rule for sticks is not read"
    ! grep 'ostrel.*rules:[0-9]' "$work/udev.log" || fail "the rule for sticks has a mistake"

    echo "== Plays"
    play

    echo "== Another version installed over it"
    echo "; ours" >>/etc/ostrel-demo-kiosk/tv.conf
    another_version "$work/later"
    with_noted_systemctl install_packages "$work/later"
    cat "$work/systemctl.log"
    [ "$(tail -n 1 /etc/ostrel-demo-kiosk/tv.conf)" = "; ours" ] || fail "the configuration is not kept"
    [ "$(tail -n 1 /etc/ostrel-demo-kiosk/weston.ini)" = "# theirs" ] || fail "settings that nobody changed are old"
    [ "$(echo /etc/udev/rules.d/*ostrel*)" = /etc/udev/rules.d/91-ostrel-demo-kiosk.rules ] ||
        fail "what is linked into /etc is not what the version brings"
    [ "$(grep -c -e '^control --reload' -e 'try-restart systemd-journald' "$work/systemctl.log")" = 2 ] ||
        fail "what has changed is not read"
    [ "$(ostrel-demo-kiosk tvctl config get landscape_timer)" = 3 ] || fail "a choice is not kept"
    [ "$(grep -c 'restart.*ostrel' "$work/systemctl.log")" = 1 ] || fail "the kiosk is not restarted once"
    ! grep 'stop.*ostrel' "$work/systemctl.log" || fail "the screen stays dark while packages are installed"

    echo "== Purged, with content"
    dpkg --purge ostrel-demo-kiosk ostrel-demo-player-tv
    [ -s /opt/data/demo_movie/sunrise.mp4 ] || fail "the shop's films are gone"
    [ "$(stat -c %G /opt/data/demo_movie)" = root ] || fail "the content's group has no name"
    rm -r /opt/data

    echo "== Installed and purged, without content"
    install_packages out/packages >/dev/null
    dpkg --purge ostrel-demo-kiosk ostrel-demo-player-tv >/dev/null
    snapshot >"$work/after"
    diff "$work/before" "$work/after" || fail "something is left"
}

case ${1:-} in
    build | use)
        [ -e /etc/bare-system ] || { echo "package-trial.sh: this is no bare system." >&2; exit 2; }
        work=$(mktemp -d) logs=$work
        chmod 755 "$work"
        trap 'kill $(jobs -p) 2>/dev/null || true' EXIT
        "$1" ;;
    -h | --help) usage ;;
    *) usage >&2; exit 2 ;;
esac
