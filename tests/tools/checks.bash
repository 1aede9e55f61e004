# shellcheck shell=bash disable=SC2034  # status is for the checks
# For the checks of zrctl in a simulated terminal: a check is a function check_NAME of the script that
# sources this and calls main.

readonly BOARD=/sys/kernel/debug/zr_terminal
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
program=0
status=0

# expect WHAT WANTED SEEN
expect() {
    if [ "$2" = "$3" ]; then
        echo "ok: $check: $1"
    else
        printf 'FAILED: %s: %s\n--- wanted\n%s\n--- seen\n%s\n' "$check" "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

# run COMMAND ...: leaves $status, $work/out and $work/err.
run() {
    status=0
    "$@" >"$work/out" 2>"$work/err" || status=$?
}

out() { cat "$work/out"; }
err() { cat "$work/err"; }

# until_true COMMAND ...: waits for it, generously; a check that waits in vain fails.
until_true() {
    local tries=600
    until "$@" >/dev/null 2>&1; do
        tries=$((tries - 1))
        [ "$tries" -gt 0 ] || { echo "FAILED: $check: waited in vain for: $*"; failures=$((failures + 1)); return 0; }
        sleep 0.05
    done
}

# begin COMMAND ...: starts a zrctl that listens and waits until it does.
begin() {
    : >"$work/err"  # what an earlier one said must not count
    "$@" >"$work/out" 2>"$work/err" &
    program=$!
    until_true grep -q '^zrctl: listening ' "$work/err"
}

# finish [SIGNAL]: ends it, unless it ends by itself; leaves $status.
finish() {
    [ $# -eq 0 ] || kill "-$1" "$program"
    status=0
    wait "$program" || status=$?
}

# The frames of a dump without their times; a line of another form stays as it is.
frames() { sed -E 's/^\([0-9]{10}\.[0-9]{6}\) //' "$work/out"; }

lines_are() { [ "$(wc -l <"$work/out")" -ge "$1" ]; }

# What every dump and watch says first is not repeated in each check.
errors_after_start() { grep -v '^zrctl: listening ' "$work/err" || true; }

knob() { printf '%s\n' "$2" >"$BOARD/$1"; }

# Runs the named checks, or all in their order.
main() {
    local checks=("$@")
    [ $# -gt 0 ] || mapfile -t checks < <(grep -oE '^check_[a-z0-9_]+' "$0" | sed 's/^check_//')
    for check in "${checks[@]}"; do
        "check_$check"
    done
    echo "$failures failed"
    [ "$failures" -eq 0 ]
}
