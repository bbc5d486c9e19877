# Completion of ostrel-demo-copy for bash.

_ostrel_demo_copy() {
    local word=${COMP_WORDS[COMP_CWORD]}
    case $word in
    -*) mapfile -t COMPREPLY < <(compgen -W --help -- "$word") ;;
    *) mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    esac
}

complete -o filenames -F _ostrel_demo_copy ostrel-demo-copy
