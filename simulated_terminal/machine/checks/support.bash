# shellcheck shell=bash disable=SC2034,SC2154  # the parts share their variables
# What the groups share. They run on the host.

readonly PATIENCE=60

passed() {
    checks=$((checks + 1))
    printf 'ok       %s\n' "$1"
}

failed() {
    checks=$((checks + 1))
    failures=$((failures + 1))
    printf 'FAILED   %s: %s\n' "$1" "$2"
}

skipped() {
    printf 'skipped  %s: %s\n' "$1" "$2"
}

# expect NAME EXPECTED ACTUAL
expect() {
    if [[ $3 == "$2" ]]; then
        passed "$1"
    else
        failed "$1" "expected '$2', got '$3'"
    fi
}

# expect_text NAME PATTERN FILE
expect_text() {
    if grep -qE -- "$2" "$3"; then
        passed "$1"
    else
        failed "$1" "no '$2' in: $(head -c 400 "$3" | tr '\n' '|')"
    fi
}

# run ARG...: runs the terminal; sets `status`, leaves `out` and `err`.
run() {
    status=0
    "$terminal" "${options[@]}" "$@" >"$scratch/out" 2>"$scratch/err" || status=$?
}

machines() {
    pgrep -f -- "qemu-system-x86_64 .* -m $memory " || true
}

# eventually COMMAND...: true as soon as the command succeeds, false when that takes too long.
eventually() {
    local tries
    for ((tries = 0; tries < PATIENCE * 10; ++tries)); do
        if "$@"; then
            return 0
        fi
        sleep 0.1
    done
    return 1
}

no_machine_is_left() {
    [[ -z $(machines) ]]
}

# private_project: a copy of the sources with a build folder that shares the unpacked kernel.
private_project() {
    mkdir -p "$1/project/simulated_terminal" "$1/build/simulated_terminal"
    cp -r "$project/simulated_terminal/"{terminal,machine,kernel} "$1/project/simulated_terminal/"
    ln -s "$build/simulated_terminal/kernel" "$1/build/simulated_terminal/kernel"
}
