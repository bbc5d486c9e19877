#!/usr/bin/env bash
# Builds the player and plays sample content, or the folder given, wherever it is started: on a
# desktop, on a bare console, or on a machine with no display at all.
set -euo pipefail
top="$(dirname "$(readlink -f "$0")")"

usage() {
    cat <<TEXT
Usage: ./demo.sh [OPTION]... [FOLDER]
Installs what is missing, builds the player, makes sample content once, and plays it. With FOLDER,
plays the videos and photos of that folder instead.

  --seconds N    end after N seconds (default: when you quit; without a display 40)
  --rotator      play as a set whose panel turns, photos for three minutes each; the virtual screen
                 shows both kinds of set without being asked
  --out DIR      where logs and pictures go (default: out/demo)
  --no-install   do not install missing packages
  -h, --help     this text

Where it plays: on a Wayland desktop full screen; on an X11 desktop in a window; on a bare console on
the screen itself; without any display on a virtual one, with numbered screenshots and a contact
sheet of them in DIR. Quit with Escape, or with Ctrl-C here.

Ends with status 1 when the show ended by itself because something could not be played, and says what;
with 2 after wrong usage.
TEXT
}

seconds="" rotator=false install=yes folder="" out=$top/out/demo
while [ $# -gt 0 ]; do
    case $1 in
        --seconds)
            [ $# -ge 2 ] || { usage >&2; exit 2; }
            seconds=$2
            case $seconds in
                '' | *[!0-9]* | 0) echo "demo.sh: --seconds wants a whole number above 0." >&2; exit 2 ;;
            esac
            shift ;;
        --rotator) rotator=true ;;
        --out)
            [ $# -ge 2 ] || { usage >&2; exit 2; }
            out=$2
            shift ;;
        --no-install) install=no ;;
        -h | --help) usage; exit 0 ;;
        -*) usage >&2; exit 2 ;;
        *)
            [ -z "$folder" ] || { usage >&2; exit 2; }
            folder=$1 ;;
    esac
    shift
done
if [ -n "$folder" ]; then
    if [ ! -d "$folder" ] || [ ! -r "$folder" ] || [ ! -x "$folder" ]; then
        echo "demo.sh: $folder is no folder that can be read." >&2
        exit 2
    fi
    folder=$(cd "$folder" && pwd)
fi
mkdir -p "$out"
out=$(cd "$out" && pwd)
cd "$top"

# ---- Everything started here ends with this script, whatever ends it ------------------------------

# Sockets lie in it, and their paths may have 107 bytes at most.
temporary=${TMPDIR:-/tmp}
[ ${#temporary} -le 60 ] || temporary=/tmp
work=$(mktemp -d "$temporary/ostrel-demo.XXXXXX")
groups=()

# start COMMAND...: in the background, as a process group of its own; its id is in $started.
start() {
    setsid "$@" &
    started=$!
    groups+=("$started")
}

# step COMMAND...: in the foreground as far as the user sees, yet Ctrl-C reaches this script at once.
step() {
    start "$@"
    wait "$started"
}

pause() {
    sleep "$1" &
    wait $! || true
}

stop_group() {
    local group=$1 round
    kill -TERM -- "-$group" 2>/dev/null || kill -TERM "$group" 2>/dev/null || true
    for round in $(seq 50); do
        kill -0 -- "-$group" 2>/dev/null || break
        sleep 0.1
    done
    kill -KILL -- "-$group" 2>/dev/null || true
    wait "$group" 2>/dev/null || true
}

stop_all() {
    local index
    for ((index = ${#groups[@]} - 1; index >= 0; index--)); do
        stop_group "${groups[index]}"
    done
    groups=()
}

finish() {
    local status=$?
    trap '' INT TERM HUP
    trap - EXIT
    stop_all
    rm -rf "$work"
    exit $status
}
trap finish EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
trap 'exit 129' HUP

# ---- Packages, build, content ---------------------------------------------------------------------

if [ $install = yes ]; then
    packaging/install-missing.sh build run demo
fi

echo "== Building (the first time takes some minutes)"
if [ ! -e build/build.ninja ]; then
    step cmake -S . -B build -G Ninja >"$work/configure.log" 2>&1 ||
        { cat "$work/configure.log" >&2; exit 1; }
fi
if grep -q '^BUILD_TESTING:BOOL=ON' build/CMakeCache.txt; then
    step ninja -C build ostrel-demo-player-tv tvctl make-sample-content resources
else
    step ninja -C build
fi
player=$top/build/src/ostrel-demo-player-tv
tvctl=$top/build/tools/tvctl/tvctl

if [ -z "$folder" ]; then
    folder=$top/out/sample
    echo "== Sample content in $folder"
    step "$top/build/tools/sample_content/make-sample-content" "$folder"
fi

# ---- A place to play ------------------------------------------------------------------------------

display=none
if [ -n "${WAYLAND_DISPLAY:-}" ]; then
    display=wayland
elif [ -n "${DISPLAY:-}" ]; then
    display=x11
elif compgen -G '/dev/dri/card*' >/dev/null && [[ $(tty 2>/dev/null || true) =~ ^/dev/tty[0-9] ]]; then
    display=console
fi
if [ $display = none ]; then
    seconds=${seconds:-40}
fi

if [ $display = none ] || [ -z "${XDG_RUNTIME_DIR:-}" ]; then
    export XDG_RUNTIME_DIR=$work/run
    mkdir -m 0700 "$XDG_RUNTIME_DIR"
fi

# wait_for FILE PROCESS LOG: until the process has made the file, or has ended without.
wait_for() {
    local round
    for round in $(seq 100); do
        [ -e "$1" ] && return 0
        kill -0 "$2" 2>/dev/null || break
        pause 0.1
    done
    echo "demo.sh: this did not start; its log ($3) ends:" >&2
    tail -n 5 "$3" >&2
    exit 1
}

# A session bus of its own: on that of the desktop a player that runs already would take the launch
# request and play its old folder anew.
export DBUS_SESSION_BUS_ADDRESS="unix:path=$work/bus"
start dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS" \
    >"$out/dbus.log" 2>&1
wait_for "$work/bus" "$started" "$out/dbus.log"

# compositor BACKEND_OPTION...
compositor() {
    WAYLAND_DISPLAY=ostrel-demo-$$
    start weston "$@" --shell=kiosk-shell.so --no-config --idle-time=0 --socket="$WAYLAND_DISPLAY" \
        >"$out/weston.log" 2>&1
    export WAYLAND_DISPLAY
    wait_for "$XDG_RUNTIME_DIR/$WAYLAND_DISPLAY" "$started" "$out/weston.log"
}

case $display in
    wayland) echo "== Playing on your Wayland desktop" ;;
    x11)
        echo "== Playing in a window on your X11 desktop"
        compositor --backend=x11-backend.so --use-pixman --width=1280 --height=720 ;;
    console)
        echo "== Playing on this screen"
        compositor --backend=drm-backend.so --use-pixman ;;
    none)
        echo "== No display: playing on a virtual one for $seconds seconds"
        start Xvfb -displayfd 3 -screen 0 1280x720x24 -nolisten tcp 3>"$work/display" >"$out/xvfb.log" 2>&1
        for round in $(seq 100); do
            [ -s "$work/display" ] && break
            pause 0.1
        done
        [ -s "$work/display" ] || { echo "demo.sh: Xvfb did not start, see $out/xvfb.log" >&2; exit 1; }
        DISPLAY=:$(cat "$work/display")
        export DISPLAY
        compositor --backend=x11-backend.so --use-pixman --width=1280 --height=720 ;;
esac

# ---- Playing --------------------------------------------------------------------------------------

# begin NAME TV_CONF_TEXT: starts the player as a set that has just been unpacked.
begin() {
    local name=$1
    printf '%s\n' "$2" >"$work/$name.conf"
    export OSTREL_DEMO_TV_CONF=$work/$name.conf
    export OSTREL_DEMO_STATE_DIR=$work/$name-state OSTREL_DEMO_RUNTIME_DIR=$work/$name-memory
    # The player takes the folder as it stands and puts file names behind it, hence the slash.
    start "$player" --demo_player_mode folder_contents_player --folder_path "$folder/" \
        2>"$out/$name.log"
    playing=$started
    asked_to_end=no
}

ask_to_end() {
    if kill -TERM "$playing" 2>/dev/null; then
        asked_to_end=yes
    fi
}

# end LOG: waits for the player and reports how it ended. A show that cannot go on ends with status 0
# as well, since the set starts it again; the configuration tells then why it ended.
end() {
    local log=$1 status=0 why=""
    wait "$playing" || status=$?
    if [ $status -ne 0 ]; then
        why="the player ended with status $status; its log ends:
$(tail -n 15 "$log")"
    elif [ $asked_to_end = no ]; then
        # Warnings and errors of the player's own are there in every run.
        case $("$tvctl" config get playback_status 2>/dev/null || true) in
            2) why="$folder has no video or photo for a panel that stands like this one." ;;
            3) why="the show ended because something could not be played:
$(grep -a '^[WE]/PLATFORM' "$log" | tail -n 8 || true)" ;;
        esac
    fi
    [ -z "$why" ] || echo "demo.sh: $why" >&2
    echo "== Log: $log"
    [ -z "$why" ]
}

if [ $display != none ]; then
    begin player "[panel]
rotator=$rotator
turning_time_s=3"
    echo "   Return or a click opens the options, the arrow keys change the file, Escape quits."
    [ $rotator = false ] ||
        echo "   T turns the panel; from elsewhere this does:
   DBUS_SESSION_BUS_ADDRESS=$DBUS_SESSION_BUS_ADDRESS $tvctl panel portrait"
    if [ -n "$seconds" ]; then
        for ((second = 0; second < seconds; second++)); do
            kill -0 "$playing" 2>/dev/null || break
            pause 1
        done
        ask_to_end
    fi
    end "$out/player.log"
    exit
fi

rm -f "$out"/shot-*.png "$out"/contact-sheet.png
began=$SECONDS
shots=0

# watch_until LIMIT LABEL DEGREES: screenshots every other second until LIMIT seconds have passed since
# the beginning or the player is gone. DEGREES turns them as the panel is turned.
watch_until() {
    local limit=$1 label=$2 degrees=$3
    while [ $((SECONDS - began)) -lt "$limit" ] && kill -0 "$playing" 2>/dev/null; do
        pause 1.5
        shots=$((shots + 1))
        local shot
        shot=$out/shot-$(printf %03d $shots).png
        import -window root -rotate "$degrees" -set label "$((SECONDS - began)) s, $label" "$shot" || true
    done
}

quit_player() {
    ask_to_end
    end "$1"
}

# The player goes by the names alone, and looks for what follows the last full stop in such a text.
kinds=.ts/.avi/.mp4/.asf/.wmv/.ogg/.flv/.mpeg/.mkv/.tp/.jpg/.jpeg
landscape=no portrait=no
shopt -s nullglob dotglob
for file in "$folder"/*.*; do
    name=${file##*/}
    name=${name,,}
    case $kinds in
        *".${name##*.}"*) ;;
        *) continue ;;
    esac
    case $name in
        portrait_*) portrait=yes ;;
        *) landscape=yes ;;
    esac
done
shopt -u nullglob dotglob

# A set without a rotator shows each photo for five seconds, one with a rotator for three minutes.
# So the landscape files are shown on the one, and the portrait files on the other, turned meanwhile.
first_part=$seconds
[ $portrait = no ] || first_part=$((seconds * 58 / 100))
status=0
if [ $landscape = yes ] || [ $portrait = no ]; then
    begin landscape "[panel]
rotator=false"
    watch_until "$first_part" "landscape" 0
    quit_player "$out/landscape.log" || status=1
fi
if [ $portrait = yes ] && [ $status -eq 0 ]; then
    begin portrait "[panel]
rotator=true
turning_time_s=1"
    if [ $landscape = yes ]; then
        watch_until $((SECONDS - began + 1)) "before the turn" 0
        "$tvctl" panel portrait || status=1
        watch_until $((SECONDS - began + 1)) "the panel turns" 0
    fi
    watch_until "$seconds" "portrait" 90
    quit_player "$out/portrait.log" || status=1
fi

if compgen -G "$out/shot-*.png" >/dev/null; then
    step montage -font /usr/share/fonts/truetype/dejavu/DejaVuSans.ttf "$out"/shot-*.png -tile 5x \
        -geometry 360x280+6+6 -background '#202020' -fill white "$out/contact-sheet.png"
    echo "== $shots screenshots and $out/contact-sheet.png"
fi
exit $status
