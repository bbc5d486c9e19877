# Completion of ostrel-demo-kiosk for bash.

_ostrel_demo_kiosk() {
    local word=${COMP_WORDS[COMP_CWORD]} words=
    COMPREPLY=()
    case $COMP_CWORD,${COMP_WORDS[1]} in
    1,*) words='on off status panel refresh tvctl --help' ;;
    2,panel) words='landscape portrait landscape-reverse portrait-reverse' ;;
    *,tvctl) _command_offset 1 ;;
    esac
    if [ -n "$words" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    fi
}

complete -F _ostrel_demo_kiosk ostrel-demo-kiosk
