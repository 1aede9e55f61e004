# shellcheck shell=bash disable=SC2034,SC2154  # the parts share their variables
# Debian's kernel, its modules and its headers, unpacked under the build folder, never installed.

kernel=$work/kernel
readonly KERNEL_SPACE=800

# Sets `release`, the kernel's name of itself.
read_release() {
    release=
    [[ -r $kernel/complete ]] && read -r release <"$kernel/complete"
    [[ -n $release ]]
}

# Both print nothing for a package that apt does not know.

# first_dependency PACKAGE PATTERN
first_dependency() {
    { LC_ALL=C apt-cache depends "$1" 2>/dev/null || true; } |
        awk -v pattern="$2" '$1 == "Depends:" && $2 ~ pattern && !n++ { print $2 }'
}

candidate_version() {
    { LC_ALL=C apt-cache show --no-all-versions "$1" 2>/dev/null || true; } |
        awk '$1 == "Version:" && !n++ { print $2 }'
}

# Sets `packages`, each with its version.
choose_packages() {
    local image headers common kbuild version package
    local unknown="apt knows no kernel packages: run 'apt-get update' as root once"
    image=$(first_dependency linux-image-amd64 '^linux-image-.*-amd64$')
    headers=$(first_dependency linux-headers-amd64 '^linux-headers-.*-amd64$')
    [[ -n $image && -n $headers ]] || fail "$unknown"
    common=$(first_dependency "$headers" '^linux-headers-.*-common$')
    kbuild=$(first_dependency "$headers" '^linux-kbuild-')
    [[ -n $common && -n $kbuild ]] || fail "$unknown"
    release=${image#linux-image-}
    version=$(candidate_version "$image")
    packages=()
    for package in "$image" "$headers" "$common" "$kbuild"; do
        [[ $(candidate_version "$package") == "$version" ]] ||
            fail "apt's lists hold kernel and headers of different versions: run 'apt-get update'"
        packages+=("$package=$version")
    done
}

download_packages() {
    local sandbox=()
    # As root apt would drop its rights and then fail to reach the folder.
    ((EUID != 0)) || sandbox=(-o APT::Sandbox::User=root)
    say "downloading ${packages[*]}"
    (cd "$1" && apt-get "${sandbox[@]}" -qq download "${packages[@]}") ||
        fail "cannot download the kernel packages; if they are gone, run 'apt-get update' as root"
}

# The packages expect to be installed below /usr/src.
unpack_packages() {
    local folder=$1 file
    for file in "$folder"/*.deb; do
        dpkg-deb -x "$file" "$folder/packages" || fail "cannot unpack ${file##*/}"
        rm "$file"
    done
    local headers=$folder/packages/usr/src/linux-headers-$release
    local makefile
    read -r makefile <"$headers/Makefile"
    [[ $makefile == "include /usr/src/"* ]] ||
        fail "the kernel headers' Makefile has changed its form: $makefile"
    # shellcheck disable=SC2016  # expanded by make
    printf 'include $(dir $(realpath $(lastword $(MAKEFILE_LIST))))/../%s\n' \
        "${makefile#include /usr/src/}" >"$headers/Makefile"
    depmod -b "$folder/packages" "$release" || fail "cannot list the kernel's modules"
}

# little_endian FILE OFFSET LENGTH
little_endian() {
    od -An "-tu$3" -j "$2" -N "$3" "$1" | tr -d ' '
}

# The kernel decompresses itself for seconds where the processor is emulated, so it is done here.
# QEMU starts the bare kernel through its PVH entry.
extract_vmlinux() {
    local image=$1/packages/boot/vmlinuz-$release setup_sectors offset length
    [[ $(little_endian "$image" $((0x1fe)) 2) == 43605 ]] || fail "$image is no kernel image"
    setup_sectors=$(little_endian "$image" $((0x1f1)) 1)
    offset=$(((setup_sectors + 1) * 512 + $(little_endian "$image" $((0x248)) 4)))
    length=$(little_endian "$image" $((0x24c)) 4)
    # The reader comes last: a pipe must not break before all is through.
    head -c "$((offset + length))" "$image" | tail -c "$length" |
        xz --decompress --single-stream --format=xz >"$1/vmlinux" ||
        fail "cannot decompress the kernel in $image"
}

fetch_kernel() {
    if read_release; then
        return
    fi
    need_program apt-get apt
    need_program dpkg-deb dpkg
    need_program xz xz-utils
    need_program depmod kmod
    need_space "$KERNEL_SPACE"
    choose_packages
    local folder=$work/kernel.partial
    rm -rf "$folder" "$kernel"
    mkdir "$folder"
    download_packages "$folder"
    unpack_packages "$folder"
    extract_vmlinux "$folder"
    printf '%s\n' "$release" >"$folder/complete"
    mv "$folder" "$kernel"
}
