# shellcheck shell=bash disable=SC2034,SC2154  # the parts share their variables
# The two programs at the ends of the line, and the guest's initial file system.

readonly BASE_ARCHIVE=$work/base.cpio
readonly TERMINAL_ARCHIVE=$work/terminal.cpio
readonly GUEST_COMMANDS="sh mount umount mkdir ln insmod usleep sleep reboot dmesg cp hostname ip
    switch_root chroot mkfifo"

machine_is_current() {
    local files=("$machine_sources"/*.[ch] "$machine_sources"/*.bash
        "$machine_sources/init" "$machine_sources/kernel_modules")
    take_fingerprint "$release $work" "${files[@]}"
    machine_fingerprint=$fingerprint
    has_stamp "$work/machine.stamp"
}

compile_programs() {
    need_program gcc gcc
    local warnings=(-std=gnu11 -O2 -Wall -Wextra -Wshadow -Wconversion) folder=$machine_sources
    mkdir -p "$work/programs"
    # Static, because it starts before the guest has any library.
    gcc "${warnings[@]}" -static -o "$work/programs/guest_agent" \
        "$folder"/{guest_agent,guest_command,frames}.c ||
        fail "cannot compile the guest's agent (is libc6-dev installed?)"
    gcc "${warnings[@]}" -o "$work/programs/conduct_machine.new" \
        "$folder"/{conduct_machine,qemu_process,caller_tty,console_tail,frames}.c ||
        fail "cannot compile the machine's conductor (is libc6-dev installed?)"
    # Another machine may be running the old one.
    mv "$work/programs/conduct_machine.new" "$work/programs/conduct_machine"
}

# resolve_modules NAME...: the files to load, in order, with all they depend on.
resolve_modules() {
    modprobe --dirname "$kernel/packages" --set-version "$release" --show-depends --all "$@" |
        awk '$1 == "insmod" && !seen[$2]++ { print $2 }'
}

names_of() {
    awk -v group="$1" '$1 == group { print $2 }' "$machine_sources/kernel_modules"
}

# add_modules LIST FILE...: copies those not there yet and writes the order of loading.
add_modules() {
    local list=$1 file
    shift
    : >"$tree/modules/$list"
    for file in "$@"; do
        [[ ! -e $tree/modules/${file##*/} ]] || continue
        cp "$file" "$tree/modules/"
        printf '%s\n' "${file##*/}" >>"$tree/modules/$list"
    done
}

# add_group LIST NAME...
add_group() {
    local list=$1 resolved files
    shift
    resolved=$(resolve_modules "$@") || fail "a kernel module of $list is unknown (see above)"
    mapfile -t files <<<"$resolved"
    [[ -n $resolved ]] || files=()
    add_modules "$list" "${files[@]}"
}

pack() {
    (cd "$1" && find . | LC_ALL=C sort | cpio --quiet -o -H newc -R 0:0) >"$2.new"
    mv "$2.new" "$2"
}

build_initramfs() {
    local busybox command
    need_program cpio cpio
    need_program modprobe kmod
    busybox=$(command -v busybox) || fail "busybox is missing: install the package busybox-static"
    # It starts before the guest has any library.
    if ldd "$busybox" >/dev/null 2>&1; then
        fail "$busybox is not the static one: install the package busybox-static"
    fi
    tree=$work/base
    rm -rf "$tree"
    mkdir -p "$tree/bin" "$tree/modules" "$tree/new_root"
    cp "$busybox" "$tree/bin/busybox"
    for command in $GUEST_COMMANDS; do
        ln -s busybox "$tree/bin/$command"
    done
    cp "$work/programs/guest_agent" "$tree/bin/"
    cp "$machine_sources/init" "$tree/init"
    chmod 755 "$tree/init"
    local names
    mapfile -t names < <(names_of machine)
    add_group machine.list "${names[@]}"
    mapfile -t names < <(names_of terminal)
    add_group terminal.list "${names[@]}"
    pack "$tree" "$BASE_ARCHIVE"
}

# The kernel unpacks archives that follow each other one over the other.
pack_module_initramfs() {
    local names depends
    depends=$(modinfo -F depends "$module/$MODULE.ko")
    IFS=, read -r -a names <<<"$depends"
    rm -rf "$module/tree"
    mkdir -p "$module/tree"
    cp -r "$work/base/modules" "$module/tree/"
    tree=$module/tree
    if ((${#names[@]} > 0)); then
        add_group depends.list "${names[@]}"
    else
        : >"$tree/modules/depends.list"
    fi
    cp "$module/$MODULE.ko" "$tree/modules/"
    local base
    for base in "$work/base/modules"/*; do
        rm "$tree/modules/${base##*/}"
    done
    pack "$tree" "$module/module.cpio"
    cat "$BASE_ARCHIVE" "$module/module.cpio" >"$TERMINAL_ARCHIVE.new"
    mv "$TERMINAL_ARCHIVE.new" "$TERMINAL_ARCHIVE"
}

build_machine() {
    if machine_is_current; then
        return
    fi
    local built_fingerprint=$machine_fingerprint
    rm -f "$work/machine.stamp" "$work/module/stamp"
    compile_programs
    build_initramfs
    printf '%s\n' "$built_fingerprint" >"$work/machine.stamp"
}

everything_is_current() {
    read_release && machine_is_current || return
    [[ $with_module == no ]] || module_is_current
}

# prepare_machine: fetches and builds what is missing or has changed.
prepare_machine() {
    if everything_is_current; then
        return
    fi
    need_plain_work
    need_writable_work
    umask 022
    take_lock
    fetch_kernel
    build_machine
    if [[ $with_module == yes ]]; then
        build_module
    fi
    release_lock
}
