# shellcheck shell=bash disable=SC2154  # the parts share their variables
# Every way in which a machine ends before its command does.

test_time_limit() {
    local name=time_limit start=$SECONDS
    run --time-limit 15 -- sh -c 'echo started; sleep 1000' </dev/null
    expect "$name: 124 for a command that hangs" 124 "$status"
    expect "$name: the command had started" started "$(<"$scratch/out")"
    expect_text "$name: says so" 'time limit of 15 s' "$scratch/err"
    expect_text "$name: shows the console" 'init: starting the command' "$scratch/err"
    if ((SECONDS - start < 25)); then
        passed "$name: in time"
    else
        failed "$name: in time" "it took $((SECONDS - start)) s"
    fi
}

test_crash() {
    run -- sh -c 'echo c >/proc/sysrq-trigger' </dev/null
    expect "crash: 125 when the kernel dies" 125 "$status"
    expect_text "crash: shows the console" 'Kernel panic' "$scratch/err"
}

# signal_ends SIGNAL STATUS: the script is ended while its command runs.
signal_ends() {
    local runner ended=0
    : >"$scratch/out"
    # bash starts what runs in the background with SIGINT ignored.
    env --default-signal=INT "$terminal" "${options[@]}" -- sh -c 'echo started; sleep 1000' \
        >"$scratch/out" 2>"$scratch/err" </dev/null &
    runner=$!
    if ! eventually grep -q started "$scratch/out"; then
        failed "signals: $1" "the command did not start"
    fi
    kill -s "$1" "$runner"
    wait "$runner" 2>/dev/null || ended=$?
    expect "signals: $1 ends it" "$2" "$ended"
    expect "signals: $1 leaves no machine" gone "$(eventually no_machine_is_left && echo gone)"
}

test_signals() {
    signal_ends INT 130
    signal_ends TERM 143
    signal_ends KILL 137
    local statuses
    "$terminal" "${options[@]}" -- yes 2>/dev/null </dev/null | head -n 1 >"$scratch/out" ||
        statuses="${PIPESTATUS[*]}"
    expect "signals: a reader that leaves ends it" "141 0 y" "${statuses:-0 0} $(<"$scratch/out")"
}
