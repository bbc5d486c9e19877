#!/usr/bin/env bash
# What the scripts that try something in a bare system have in common; they source it. $logs is the
# folder of the logs that tell what went wrong.

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
