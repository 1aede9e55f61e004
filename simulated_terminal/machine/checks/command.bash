# shellcheck shell=bash disable=SC2016,SC2154  # the guest's shell expands; the parts share their variables
# What the command gets and what comes back from it.

# runs_side_by_side STATUS COMMAND STATUS COMMAND: two machines at once, each with its own answers.
runs_side_by_side() {
    local first=0 second=0 one two
    "$terminal" "${options[@]}" -- sh -c "echo one; $2" >"$scratch/one" 2>&1 </dev/null &
    one=$!
    "$terminal" "${options[@]}" -- sh -c "echo two; $4" >"$scratch/two" 2>&1 </dev/null &
    two=$!
    wait "$one" || first=$?
    wait "$two" || second=$?
    expect "exit_status: $1 of '$2'" "$1 one" "$first $(<"$scratch/one")"
    expect "exit_status: $3 of '$4', side by side" "$3 two" "$second $(<"$scratch/two")"
}

test_exit_status() {
    runs_side_by_side 7 'exit 7' 137 'kill -9 $$'
    run -- no-such-command </dev/null
    expect "exit_status: 127 for a command that is not there" 127 "$status"
    run -- /etc/passwd </dev/null
    expect "exit_status: 126 for a file that is no program" 126 "$status"
}

test_streams() {
    local name=streams
    head -c 1000000 /dev/urandom >"$scratch/random"
    run -- sh -c 'cat >/tmp/all && cat /tmp/all && exec cat /tmp/all >&2' <"$scratch/random"
    expect "$name: the command has ended well" 0 "$status"
    expect "$name: 1 MB through input and output is unchanged" same \
        "$(cmp "$scratch/random" "$scratch/out" 2>&1 && echo same)"
    expect "$name: 1 MB through input and error is unchanged" same \
        "$(cmp "$scratch/random" "$scratch/err" 2>&1 && echo same)"
    # The scheduler lets this command end before anyone else in the guest runs.
    run -- chrt --fifo 50 head -c 60000 /dev/zero </dev/null
    expect "$name: what is in the pipe at the end is delivered" "0 60000" \
        "$status $(wc -c <"$scratch/out")"
}

test_input() {
    local name=input
    run -- bash < <(echo 'echo $((6 * 7))')
    expect "$name: a pipe is passed on with its end" "0 42" "$status $(<"$scratch/out")"
    run -- cat <&-
    expect "$name: a closed input ends at once" "0 " "$status $(<"$scratch/out")"
    # The command takes one line and leaves; the rest of an endless input must hold nothing up.
    status=0
    yes | "$terminal" "${options[@]}" -- sh -c 'read -r line; echo "$line"' >"$scratch/out" || status=$?
    expect "$name: an endless input does not keep the machine" y "$(<"$scratch/out")"
}

test_surroundings() {
    local name=surroundings folder="$scratch/writable, with 'odd' name" answers
    mkdir -p "$folder"
    (
        cd "$folder" || exit
        run --writable "$folder" --env "GREETING=two  words 'quoted' \$HOME" --env EMPTY= -- \
            bash -c '
                echo "user=$(id -u)"; echo "directory=$PWD"; echo "host=$(hostname)"
                echo "path=$PATH"; echo "home=$HOME"; echo "lang=$LANG"; echo "term=$TERM"
                echo "greeting=$GREETING"; echo "count=$(env | grep -cvE "^(PWD|OLDPWD|SHLVL|_)=")"
                test -d /sys/kernel/debug/bdi && echo debugfs
                test -c /dev/pts/ptmx && test -d /dev/shm && echo devices
                echo "loopback=$(cat /sys/class/net/lo/flags)"
                echo new >"$PWD/file" && touch /usr/throw-away /tmp/t /run/t "$HOME/t" && echo writes
                printf "%s|" "$0" "$@"; echo' "a  b" "it's" '' '*' $'line\nend' </dev/null
    )
    answers=$scratch/out
    expect_text "$name: root" '^user=0$' "$answers"
    expect "$name: the caller's folder" "directory=$folder" "$(grep ^directory= "$answers")"
    expect_text "$name: host name" '^host=terminal$' "$answers"
    expect_text "$name: path" '^path=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin$' "$answers"
    expect_text "$name: home" '^home=/run/home$' "$answers"
    expect_text "$name: language" '^lang=C.UTF-8$' "$answers"
    expect "$name: a variable as it was given" "greeting=two  words 'quoted' \$HOME" \
        "$(grep ^greeting= "$answers")"
    expect_text "$name: four variables and the two given" '^count=6$' "$answers"
    expect_text "$name: debugfs" '^debugfs$' "$answers"
    expect_text "$name: device folders" '^devices$' "$answers"
    expect_text "$name: loopback is up" '^loopback=0x9$' "$answers"
    expect_text "$name: everything can be written to" '^writes$' "$answers"
    expect "$name: arguments as they were given" "a  b|it's||*|line"$'\n'"end|" \
        "$(tail -n 2 "$answers")"
    expect "$name: a writable folder reaches the host" new "$(cat "$folder/file" 2>&1)"
    expect "$name: nothing else reaches the host" absent \
        "$([[ -e /usr/throw-away ]] && echo present || echo absent)"
}
