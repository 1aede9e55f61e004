# shellcheck shell=bash disable=SC2154  # the parts share their variables
# Wrong usage, and a host that lacks something.

# usage ARG...: one line and 126.
usage() {
    run "$@" </dev/null
    expect "usage: $*" "126 1" "$status $(wc -l <"$scratch/err")"
}

test_usage() {
    usage
    usage --
    usage true
    usage --no-such-option -- true
    usage --variant triple -- true
    usage --variant
    usage --variant -- true
    usage --input encoder1 -- true
    usage --input= -- true
    usage --can 5 -- true
    usage --can two -- true
    usage --simcan -1 -- true
    usage --vcan= -- true
    usage --can -- true
    usage --can 3 --simcan 2 -- true
    expect_text "usage: too many ports" 'more than 4 ports' "$scratch/err"
    usage --vcan 3 -- true
    usage --can 1 --simcan 1 --vcan 3 -- true
    usage --simcan 1 -- true
    usage --module-parameter simcan=1 -- true
    usage --module-parameter variant -- true
    usage --module-parameter 'variant=a b' -- true
    usage --screen wide -- true
    usage --screen 800x8 -- true
    usage --screen 4097x480 -- true
    usage --screen= -- true
    usage --env 1=2 -- true
    usage --memory much -- true
    usage --memory 1 -- true
    usage --processors 0 -- true
    usage --time-limit -1 -- true
    usage --time-limit 0 -- true
    usage --writable "$scratch/absent" -- true
    usage --writable / -- true
    usage --prepare -- true
    usage --prepare --clean
    run --help </dev/null
    expect "usage: --help succeeds" 0 "$status"
    local option undocumented=
    # What the parser knows stands in its patterns, which end in `|`, `)`, `*` or a line's end.
    while IFS= read -r option; do
        grep -q -- "$option" "$scratch/out" || undocumented+=" $option"
    done < <(sed -n '/^parse_options/,/^}/p' "$terminal" | grep -oE -- '--[a-z][a-z-]+' | sort -u)
    expect "usage: --help names every option" "" "$undocumented"
}

test_what_is_missing() {
    local programs=$scratch/programs empty=$scratch/empty
    mkdir -p "$programs" "$empty/lists/partial"
    ln -s /usr/bin/* "$programs/"
    rm "$programs/"qemu*
    status=0
    PATH=$programs "$terminal" "${options[@]}" -- true 2>"$scratch/err" </dev/null || status=$?
    expect "missing: 125 without QEMU" 125 "$status"
    expect_text "missing: the package is named" 'qemu-system-x86' "$scratch/err"
    ln -s /usr/bin/qemu-system-x86_64 "$programs/"
    rm "$programs/Xvfb"
    status=0
    PATH=$programs "$terminal" "${options[@]}" --screen 320x240 -- true 2>"$scratch/err" </dev/null || status=$?
    expect "missing: 125 for a screen without a display server" 125 "$status"
    expect_text "missing: its package is named" 'package xvfb' "$scratch/err"
    printf 'Dir::State::lists "%s/lists";\nDir::Cache "%s";\n' "$empty" "$empty" >"$empty/apt.conf"
    status=0
    APT_CONFIG=$empty/apt.conf ZRAPI_BUILD_DIR=$empty/build "$terminal" --prepare 2>"$scratch/err" || status=$?
    expect "missing: 125 without package lists" 125 "$status"
    expect_text "missing: what to do is said" "apt-get update" "$scratch/err"
}
