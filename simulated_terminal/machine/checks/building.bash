# shellcheck shell=bash disable=SC2016,SC2154  # the guest's shell expands; the parts share their variables
# What is built when, by whom and for whom.

readonly ORDINARY_USER=65534

test_build() {
    local copy=$scratch/copy
    private_project "$copy"
    printf 'obj-m := zr_terminal.o\n' >"$copy/project/simulated_terminal/kernel/Kbuild"
    rm "$copy/project/simulated_terminal/kernel/"*.[ch]
    cat >"$copy/project/simulated_terminal/kernel/zr_terminal.c" <<'TEXT'
#include <linux/module.h>
static int __init begin(void) { int unused; return 0; }
module_init(begin);
MODULE_LICENSE("GPL");
TEXT
    ZRAPI_BUILD_DIR=$copy/build "$copy/project/simulated_terminal/terminal" --prepare 2>"$scratch/err"
    expect_text "build: a warning is shown" 'unused variable' "$scratch/err"
    touch "$copy/project/simulated_terminal/kernel/zr_terminal.c"
    ZRAPI_BUILD_DIR=$copy/build "$copy/project/simulated_terminal/terminal" --prepare 2>"$scratch/err"
    expect "build: nothing is built without a change" "" "$(<"$scratch/err")"
    echo 'static int more;' >>"$copy/project/simulated_terminal/kernel/zr_terminal.c"
    local first=0 second=0 one two
    ZRAPI_BUILD_DIR=$copy/build "$copy/project/simulated_terminal/terminal" --prepare 2>/dev/null &
    one=$!
    ZRAPI_BUILD_DIR=$copy/build "$copy/project/simulated_terminal/terminal" --prepare 2>/dev/null &
    two=$!
    wait "$one" || first=$?
    wait "$two" || second=$?
    expect "build: two at once" "0 0" "$first $second"
    echo 'broken' >>"$copy/project/simulated_terminal/kernel/zr_terminal.c"
    status=0
    ZRAPI_BUILD_DIR=$copy/build "$copy/project/simulated_terminal/terminal" -- true 2>"$scratch/err" || status=$?
    expect "build: 125 when the module does not compile" 125 "$status"
    expect_text "build: the compiler's text is shown" 'zr_terminal.c:[0-9:]+ error: ' "$scratch/err"
    touch "$copy/build/of_others"
    ZRAPI_BUILD_DIR=$copy/build "$copy/project/simulated_terminal/terminal" --clean
    expect "build: --clean removes its own folder only" of_others "$(ls "$copy/build")"
    expect "build: the kernel behind a link stays" present \
        "$([[ -e $build/simulated_terminal/kernel/complete ]] && echo present)"
}

as_ordinary_user() {
    setpriv --reuid="$ORDINARY_USER" --regid="$ORDINARY_USER" --clear-groups \
        env HOME=/ ZRAPI_BUILD_DIR="$1" "${@:2}"
}

test_ordinary_user() {
    local name=ordinary_user copy=$scratch/user
    if ((EUID != 0)); then
        skipped "$name" "this is one"
        return 0
    fi
    mkdir -p "$copy"
    private_project "$copy"
    chown -R "$ORDINARY_USER" "$copy"
    if ! as_ordinary_user "$build" test -r "$copy/project/simulated_terminal/terminal" ||
        ! as_ordinary_user "$build" test -r "$build/simulated_terminal/kernel/vmlinux"; then
        skipped "$name" "the kernel in $build cannot be reached by user $ORDINARY_USER"
        return 0
    fi
    status=0
    (cd "$copy" && as_ordinary_user "$copy/build" "$copy/project/simulated_terminal/terminal" \
        --memory "$memory" --writable "$copy" -- \
        sh -c 'id -u; echo written >file; cat /etc/shadow || echo closed; touch "$HOME/x" && echo home') \
        >"$scratch/out" 2>"$scratch/err" </dev/null || status=$?
    expect "$name: builds and runs" "0 0 closed home" "$status $(tr '\n' ' ' <"$scratch/out" | sed 's/ $//')"
    expect "$name: what it writes belongs to the user" "$ORDINARY_USER written" \
        "$(stat -c %u "$copy/file" 2>&1) $(cat "$copy/file" 2>&1)"
    if as_ordinary_user "$build" test -x "$project/simulated_terminal/terminal"; then
        status=0
        as_ordinary_user "$build" "$terminal" "${options[@]}" -- sh -c 'exit 4' \
            >"$scratch/out" 2>"$scratch/err" </dev/null || status=$?
        expect "$name: runs from a build folder of someone else" 4 "$status"
    fi
}
