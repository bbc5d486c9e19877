#!/usr/bin/env bash
# The commands of README.md: lists them, or runs them as a reader would.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
. packaging/trial/common.sh

usage() {
    cat <<TEXT
Usage: packaging/trial/readme-commands.sh list [FILE]
       packaging/trial/readme-commands.sh run
  list  prints each command that stands in a block of README.md, or of FILE, and whether it is run;
        ends with status 1 when a block is neither commands nor settings of the service
  run   runs them. That installs packages and the player and writes to /etc, /media, /opt and /srv, so
        it works only in the bare system that packaging/check-packages.sh makes for it.
TEXT
}

# Commands that are not run here, each with the reason.
declare -A elsewhere=(
    [./demo.sh]="check-packages.sh demo runs it, in a bare system of its own"
    [./test.sh]="check-packages.sh test runs it, in a bare system of its own"
    ["packaging/install-missing.sh build package"]="check-packages.sh deb runs it"
    [packaging/build-deb.sh]="check-packages.sh deb runs it"
    ["sudo apt-get update"]="check-packages.sh deb runs it before"
    ["sudo apt-get install -y -o Dpkg::Options::=--force-confold ./out/packages/*.deb"]="check-packages.sh deb installs them with dpkg and this option"
    ["sudo ostrel-demo-kiosk on"]="check-packages.sh deb runs it"
    ["sudo ostrel-demo-copy"]="test.sh runs it, with folders in the stick's place"
)

# read_blocks FILE: "sh COMMAND" for each command, "ini LINE" for each line of the service's settings,
# and "strange PLACE" for a block that is neither.
read_blocks() {
    awk '
        /^ *(```|~~~)/ {
            inside = !inside
            kind = inside ? substr($0, 4) : ""
            if (inside && $0 !~ /^```(sh|ini)$/) print "strange line " FNR ": " $0
            next
        }
        !inside && /^(    |\t)/ { print "strange line " FNR ": " $0 }
        kind == "ini" { print "ini " $0 }
        kind == "sh" && !/^(#|$)/ { sub(/ +#.*/, ""); print "sh " $0 }' "$1"
}

list() {
    local kind text status=0
    local -A unmet=()
    for text in "${!elsewhere[@]}"; do
        unmet[$text]=yes
    done
    while read -r kind text; do
        case $kind in
            sh) echo "$text: ${elsewhere[$text]:-run}" ;;
            strange)
                echo "$1: $text: neither commands (\`\`\`sh) nor settings of the service (\`\`\`ini)" >&2
                status=1 ;;
        esac
        unset "unmet[$text]"
    done < <(read_blocks "$1")
    for text in "${!unmet[@]}"; do
        echo "$1 has no command \"$text\"" >&2
        status=1
    done
    return $status
}

# ---- In the bare system ---------------------------------------------------------------------------

# in_background NAME COMMAND...: its process is $started.
in_background() {
    local name=$1
    shift
    "$@" >"$logs/$name.log" 2>&1 &
    started=$!
}

has_ended() {
    ! kill -0 "$1" 2>/dev/null
}

plays() {
    tvctl status --json 2>/dev/null | grep -q "\"file\": \"$1"
}

# Content in each folder that a command names, and a folder that stands for a stick.
lay_out_content() {
    local folder
    mkdir -p /etc/ostrel-demo-player-tv
    printf '[usb]\nmounts = /media/stick\n' >>/etc/ostrel-demo-player-tv/tv.conf
    for folder in /opt/data/demo_movie /srv/demo /media/stick/demo; do
        mkdir -p "$folder"
        make-sample-content --quick "$folder" >/dev/null
    done
}

compositor() {
    packaging/install-missing.sh demo
    in_background bus dbus-daemon --session --nofork --address="$DBUS_SESSION_BUS_ADDRESS"
    wait_for "the session bus" test -S "$XDG_RUNTIME_DIR/bus"
    in_background xvfb Xvfb :7 -screen 0 1280x720x24 -nolisten tcp
    wait_for "the virtual screen" test -e /tmp/.X11-unix/X7
    # Without a screen of the machine's own, weston opens a window here.
    in_background weston env DISPLAY=:7 $1
    wait_for "the compositor" test -S "$XDG_RUNTIME_DIR/wayland-0"
}

player() {
    local folder=/opt/data/demo_movie/
    case $1 in
        *factory_stop)
            $1
            wait_for "the player's end" has_ended "$playing"
            wait "$playing" || fail "the player ended with status $?"
            return ;;
        *"path_location usb"*) folder=/media/stick/demo/ ;;
        *--folder_path*) folder=/srv/demo/ ;;
    esac
    if [ -n "${playing:-}" ]; then
        kill "$playing"
        wait "$playing" || fail "the player ended with status $?"
    fi
    in_background player $1
    playing=$started
    wait_for "a file of $folder" plays "$folder"
}

start_user_manager() {
    # The service would play a stick before the built-in content.
    rm -r /media/stick
    # Only where systemd runs the machine does it run a manager for a user.
    mkdir -p /run/systemd/system
    in_background user-manager /lib/systemd/systemd --user
    wait_for "the user's systemd" test -S "$XDG_RUNTIME_DIR/systemd/private"
    # What the compositor's session has.
    export WAYLAND_DISPLAY=wayland-0
}

check_service() {
    wait_for "the service" plays /opt/data/demo_movie/
    local settings=/root/.config/systemd/user/ostrel-demo-player-tv.service.d/override.conf
    mkdir -p "${settings%/*}"
    read_blocks README.md | sed -n 's/^ini //p' >"$settings"
    echo "== The service with $(wc -l <"$settings") lines of settings"
    systemctl --user daemon-reload
    systemctl --user restart ostrel-demo-player-tv
    wait_for "the service with its settings" plays /srv/demo/
    systemctl --user stop ostrel-demo-player-tv
}

step_of() {
    case $1 in
        weston*) echo compositor ;;
        ostrel-demo-player-tv*) echo player ;;
        "systemctl --user"*) echo service ;;
        *) echo shell ;;
    esac
}

# The commands in their order, but all that prepares something first: a reader who starts the player
# has a compositor.
run() {
    local kind command step
    for step in shell compositor player service; do
        [ $step != service ] || start_user_manager
        [ $step != player ] || lay_out_content
        while read -r kind command <&3; do
            [ "$kind" = sh ] && [ -z "${elsewhere[$command]:-}" ] || continue
            [ "$(step_of "$command")" = $step ] || continue
            echo "== $command"
            case $step in
                compositor | player) $step "$command" ;;
                *) bash -euc "$command" </dev/null || fail "status $?: $command" ;;
            esac
        done 3< <(read_blocks README.md)
    done
    check_service
}

case ${1:-} in
    list) list "${2:-README.md}" ;;
    run)
        [ -e /etc/bare-system ] || { echo "readme-commands.sh: this is no bare system." >&2; exit 2; }
        list README.md >/dev/null
        logs=$(mktemp -d)
        # What a login has.
        export PATH=/usr/local/bin:$PATH
        export XDG_RUNTIME_DIR=/run/user/0 DBUS_SESSION_BUS_ADDRESS=unix:path=/run/user/0/bus
        mkdir -p -m 0700 "$XDG_RUNTIME_DIR"
        run ;;
    -h | --help) usage ;;
    *) usage >&2; exit 2 ;;
esac
