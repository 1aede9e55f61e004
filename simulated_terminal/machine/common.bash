# shellcheck shell=bash disable=SC2034,SC2154  # the parts share their variables
# What every part of the machine's host side shares: folders, errors, the lock.

readonly STATUS_MACHINE=125
readonly STATUS_USAGE=126

# Sourced by `terminal`, which sets `project`.
machine_sources=$project/simulated_terminal/machine
module_sources=$project/simulated_terminal/kernel
build_folder=${ZRAPI_BUILD_DIR:-$project/build}
work=$build_folder/simulated_terminal

# Ordinary users have no sbin folders in their path, yet depmod and modinfo live there.
PATH=$PATH:/usr/sbin:/sbin

fail() {
    printf 'terminal: %s\n' "$*" >&2
    exit "$STATUS_MACHINE"
}

fail_usage() {
    printf 'terminal: %s (see --help)\n' "$*" >&2
    exit "$STATUS_USAGE"
}

say() {
    printf 'terminal: %s\n' "$*" >&2
}

need_program() {
    command -v "$1" >/dev/null || fail "$1 is missing: install the package $2"
}

# Sets `fingerprint`: changes whenever a file's name or content, or the text given first, changes.
take_fingerprint() {
    local text=$1
    shift
    fingerprint=$({ printf '%s\n' "$text" && sha256sum -- "$@"; } | sha256sum) ||
        fail "cannot read the sources of the simulated terminal"
}

# has_stamp FILE: is what stands in FILE the current fingerprint?
has_stamp() {
    local stamp=
    [[ -r $1 ]] && read -r stamp <"$1"
    [[ $stamp == "$fingerprint" ]]
}

# Asked before anything is downloaded.
need_plain_work() {
    case $work in
        *[[:space:]:]*)
            fail "the kernel's build cannot handle blanks and colons in '$work': set ZRAPI_BUILD_DIR to another folder"
            ;;
    esac
}

need_writable_work() {
    if ! mkdir -p "$work" 2>/dev/null || [[ ! -w $work ]]; then
        fail "cannot write to $work: set ZRAPI_BUILD_DIR to a folder of your own"
    fi
}

need_space() {
    local available
    available=$(df --output=avail --block-size=1M "$work" | tail -n 1)
    ((available >= $1)) || fail "no space: $1 MB are needed in $work, ${available// /} MB are free"
}

# Several machines may start at once; one builds, the others wait for it.
take_lock() {
    exec {lock}>"$work/lock"
    if ! flock --nonblock "$lock"; then
        say "waiting for another start to finish building"
        flock "$lock"
    fi
}

release_lock() {
    exec {lock}>&-
}
