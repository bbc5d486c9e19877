# Completion of tvctl for bash.

_tvctl_config_keys() {
    tvctl config list 2>/dev/null | while read -r key _; do
        printf '%s\n%s\n' "$key" "${key##*/}"
    done
}

_tvctl() {
    local word=${COMP_WORDS[COMP_CWORD]}
    local command=${COMP_WORDS[1]}
    local words=
    COMPREPLY=()

    if [ "$COMP_CWORD" -eq 1 ]; then
        words='launch key panel power language usb config status --help'
    else
        case $command in
        launch)
            case ${COMP_WORDS[COMP_CWORD - 1]} in
            --folder_path) mapfile -t COMPREPLY < <(compgen -d -S / -- "$word") ;;
            --path_location) words=usb ;;
            --demo_player_mode) words=folder_contents_player ;;
            --repeat_mode) words=no ;;
            --mode) words='factory_start factory_stop' ;;
            *)
                words='--folder_path --path_location --demo_player_mode --repeat_mode --mode
                       --extra --help'
                ;;
            esac
            ;;
        key)
            words='Up Down Left Right Return XF86Back XF86AudioPlay XF86AudioPause XF86AudioStop
                   XF86PlayBack XF86PlayBackGame XF86AudioRewind XF86AudioNext
                   XF86PreviousChapter XF86NextChapter XF86Color XF86More XF86PanelEnter
                   XF86RaiseChannel XF86LowerChannel XF86ChannelGuide --help'
            ;;
        panel) words='landscape portrait landscape-reverse portrait-reverse --help' ;;
        power) words='off standby wakeup --help' ;;
        usb)
            if [ "$COMP_CWORD" -eq 2 ]; then
                words='add remove --help'
            else
                mapfile -t COMPREPLY < <(compgen -d -- "$word")
            fi
            ;;
        config)
            if [ "$COMP_CWORD" -eq 2 ]; then
                words='get set watch list --help'
            elif [ "$COMP_CWORD" -eq 3 ] || [ "${COMP_WORDS[2]}" = watch ]; then
                words=$(_tvctl_config_keys)
            fi
            ;;
        status) words='--json --help' ;;
        esac
    fi
    if [ -n "$words" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    fi
}

complete -F _tvctl tvctl
