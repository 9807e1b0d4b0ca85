# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# To be sourced: how the project's commands say what they are doing. All of it goes to standard error, so
# that standard output stays free for answers.

say() { printf '%s\n' "$*" >&2; }

elapsed() { printf '%d min %02d s' $((SECONDS / 60)) $((SECONDS % 60)); }

# watched NAME LOG COMMAND...: runs the command with its output in LOG, and says how far it is every 15 s.
# That is enough to see that it goes on, and no flood in a log file. The share is what ninja prints.
watched() {
    local name=$1 log=$2 command status=0
    shift 2
    NINJA_STATUS='progress %p ' "$@" >"$log" 2>&1 </dev/null &
    command=$!
    report_until_gone "$name" "$log" "$command"
    wait "$command" || status=$?
    return "$status"
}

report_until_gone() { # NAME LOG PID
    local ticks=0 share
    while kill -0 "$3" 2>/dev/null; do
        sleep 0.2
        ((++ticks % 75)) && continue
        share=$(grep -ao '^progress [ 0-9]*%' "$2" | tail -n 1 | tr -dc 0-9) || true
        say "  $1: ${share:+$share %, }$(elapsed)"
    done
}

# What a failed build has to say: the first errors, or else the last lines.
show_failure() { # LOG
    grep -a -m 5 -A 2 'error:' "$1" >&2 || tail -n 15 "$1" >&2
    say "  the whole log: $1"
}
