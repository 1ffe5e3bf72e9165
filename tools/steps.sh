# shellcheck shell=bash
# Steps: each runs quietly, leaves its log in build/logs and one OK or FAIL line on the screen.

LOG_DIR=build/logs
FAILED_LOG_LINES=40

if [ -t 1 ] && [ -z "${NO_COLOR:-}" ]; then
    GREEN=$'\e[32m' RED=$'\e[31m' BOLD=$'\e[1m' PLAIN=$'\e[0m'
else
    GREEN='' RED='' BOLD='' PLAIN=''
fi

# step TITLE LOG COMMAND...  - false when the command fails; its last lines are shown then
step() {
    local title=$1 log=$LOG_DIR/$2.log
    local start=$EPOCHREALTIME
    shift 2
    mkdir -p "$LOG_DIR"
    [ ! -t 1 ] || printf '...   %s' "$title"
    local result=0
    "$@" >"$log" 2>&1 </dev/null || result=$?
    [ ! -t 1 ] || printf '\r\e[K'
    if [ "$result" -eq 0 ]; then
        printf '%sOK%s    %s (%s s)\n' "$GREEN" "$PLAIN" "$title" "$(seconds_since "$start")"
    else
        printf '%sFAIL%s  %s (%s s), all of it in %s\n' "$RED" "$PLAIN" "$title" "$(seconds_since "$start")" "$log"
        # Without the progress of builds and the tests that went well, which say nothing about what went wrong.
        sed '/^\[[0-9]*\/[0-9]*\] /d; /^\[ *\(RUN\|OK\|-*\) *\]/d; s/^/      /' "$log" | tail -n "$FAILED_LOG_LINES"
    fi
    return "$result"
}

# Seconds with one decimal since a value of EPOCHREALTIME, whose decimal sign follows the locale.
seconds_since() {
    local microseconds=$((${EPOCHREALTIME/[.,]/} - ${1/[.,]/}))
    printf '%d.%d' $((microseconds / 1000000)) $((microseconds / 100000 % 10))
}

headline() {
    printf '\n%s%s%s\n' "$BOLD" "$1" "$PLAIN"
}

# Ends the whole command.
die() {
    printf '%sFAIL%s  %s\n' "$RED" "$PLAIN" "$1" >&2
    exit 1
}

usage_error() {
    printf "%s Try './dev help'.\n" "$1" >&2
    exit 2
}
