# shellcheck shell=bash disable=SC2034,SC2154  # the parts share their variables
# The project's kernel module, built against the unpacked headers from a copy of its sources.

readonly MODULE=zr_terminal
module=$work/module

module_exists() {
    [[ -e $module_sources/Kbuild || -e $module_sources/Makefile ]]
}

list_module_sources() {
    mapfile -t module_files < <(cd "$module_sources" && find . -type f \
        \( -name '*.[ch]' -o -name Kbuild -o -name Makefile \) | LC_ALL=C sort)
}

module_is_current() {
    list_module_sources
    take_fingerprint "$release" "${module_files[@]/#/$module_sources/}"
    module_fingerprint=$fingerprint
    has_stamp "$module/stamp"
}

# Only what changed is copied, so that only that is compiled.
copy_module_sources() {
    local file
    mkdir -p "$module/source"
    while IFS= read -r file; do
        [[ -e $module_sources/$file ]] || rm "$module/source/$file"
    done < <(cd "$module/source" && find . -type f \
        \( -name '*.[ch]' -o -name Kbuild -o -name Makefile \) ! -name '*.mod.c')
    for file in "${module_files[@]}"; do
        cmp --silent "$module_sources/$file" "$module/source/$file" && continue
        mkdir -p "$module/source/${file%/*}"
        cp "$module_sources/$file" "$module/source/$file"
    done
}

compile_module() {
    local compiler=gcc
    # The compiler that built the kernel, where it is there.
    command -v gcc-12 >/dev/null && compiler=gcc-12
    need_program "$compiler" gcc-12
    need_program make make
    local log=$module/log status=0
    make -s -j2 -C "$kernel/packages/usr/src/linux-headers-$release" "M=$module/source" \
        "CC=$compiler" modules >"$log" 2>&1 || status=$?
    # Type information for tracing needs the unpacked kernel's own build tree; nobody misses it.
    grep -v 'Skipping BTF generation' "$log" >&2 || true
    ((status == 0)) || fail "the kernel module does not compile (see above)"
    [[ -e $module/source/$MODULE.ko ]] || fail "the kernel module's build made no $MODULE.ko"
}

build_module() {
    if module_is_current; then
        return
    fi
    local built_fingerprint=$module_fingerprint
    say "building the kernel module"
    rm -f "$module/stamp"
    copy_module_sources
    compile_module
    strip --strip-debug -o "$module/$MODULE.ko" "$module/source/$MODULE.ko"
    modinfo -F parm "$module/$MODULE.ko" | sed 's/:.*//' >"$module/parameters"
    pack_module_initramfs
    printf '%s\n' "$built_fingerprint" >"$module/stamp"
}
