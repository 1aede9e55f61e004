# shellcheck shell=bash disable=SC2016,SC2154  # the guest's shell expands; the parts share their variables
# A conversation with a shell on a terminal.

# send TEXT: types it into the guest's shell.
send() {
    printf '%b' "$1" >&"$to_shell"
}

# await TEXT: sets `heard` to what came, up to and with TEXT; false when it does not come.
await() {
    local piece deadline=$((SECONDS + PATIENCE))
    heard=
    while [[ $heard != *"$1"* ]]; do
        piece=
        read -r -t 0.2 -N 4096 piece <&"$from_shell" || true
        heard+=$piece
        ((SECONDS < deadline)) || return 1
    done
}

# say_and_hear NAME TEXT ANSWER
say_and_hear() {
    send "$2"
    if await "$3"; then
        passed "interactive: $1"
    else
        failed "interactive: $1" "no '$3' in: ${heard//[$'\r\n']/|}"
    fi
}

test_interactive() {
    local session from_shell to_shell
    command -v script >/dev/null || { skipped interactive "script is missing"; return 0; }
    cat >"$scratch/session" <<TEXT
stty rows 33 cols 101
stty -a >"$scratch/before"
TERM=vt100 "$terminal" ${options[*]} -- bash --norc --noprofile
echo "status=\$?"
stty -a >"$scratch/after"
"$terminal" ${options[*]} -- sh -c 'echo again=\$((2 + 2)); sleep 1000'
echo "left=\$?"
TEXT
    coproc INTERACTIVE { exec script --quiet --return --command "bash $scratch/session" /dev/null 2>&1; }
    session=$INTERACTIVE_PID
    exec {from_shell}<&"${INTERACTIVE[0]}" {to_shell}>&"${INTERACTIVE[1]}"
    {
        say_and_hear "a shell answers" 'echo ready=$((1 + 1))\n' 'ready=2'
        say_and_hear "it has a terminal of its own" 'echo tty=$(tty)\n' 'tty=/dev/pts/0'
        say_and_hear "of the caller's size" 'echo size=$(stty size)\n' 'size=33 101'
        say_and_hear "of the caller's kind" 'echo term=$TERM\n' 'term=vt100'
        send 'echo wait=$((3 + 4)); sleep 1000\n'
        await 'wait=7' || true
        say_and_hear "Ctrl-C reaches the command" '\003echo interrupted=$?\n' 'interrupted=130'
        say_and_hear "job control" 'sleep 1000 & jobs\n' 'Running'
        say_and_hear "its exit status" 'exit 9\n' 'status=9'
        await 'again=4' || true
        say_and_hear "Ctrl-] three times leaves it" '\035\035\035' 'left=125'
    }
    wait "$session" 2>/dev/null || true
    exec {from_shell}<&- {to_shell}>&-
    expect "interactive: the caller's terminal is as before" same \
        "$(cmp "$scratch/before" "$scratch/after" 2>&1 && echo same)"
}
