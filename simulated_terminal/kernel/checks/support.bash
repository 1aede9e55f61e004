# shellcheck shell=bash disable=SC2034  # the checks use the folders
# What the checks share. They run inside the simulated terminal, as root.

readonly KNOBS=/sys/kernel/debug/zr_terminal
readonly LEDS=/sys/class/leds
readonly ANALOG=/sys/class/analog
readonly PLATFORM=/sys/bus/platform/devices

passed=0
failed=0

# check NAME GOT WANTED
check() {
    if [[ $2 == "$3" ]]; then
        passed=$((passed + 1))
        printf 'ok %s\n' "$1"
    else
        failed=$((failed + 1))
        printf 'not ok %s: got %q, wanted %q\n' "$1" "$2" "$3"
    fi
}

# What `cat` prints of a file, or "failed: " and the system's words for the error.
text_of() {
    local text
    if text=$(cat "$1" 2>&1); then
        printf '%s' "$text"
    else
        printf 'failed: %s' "${text##*: }"
    fi
}

# "done", or "failed: " and the system's words for the error. The text goes out in one write.
outcome_of_writing() {
    local message
    if message=$({ echo "$1" >"$2"; } 2>&1); then
        printf 'done'
    else
        printf 'failed: %s' "${message##*: }"
    fi
}

# reads NAME FILE WANTED
reads() {
    check "$1" "$(text_of "$2")" "$3"
}

# reads_bytes NAME FILE WANTED, both as od prints them
reads_bytes() {
    check "$1" "$(od -An -c "$2" | tr -s ' \n' ' ')" "$3"
}

# accepts NAME TEXT FILE [WHAT IT READS THEN]
accepts() {
    check "$1" "$(outcome_of_writing "$2" "$3")" 'done'
    if [[ $# -gt 3 ]]; then
        reads "$1, read back" "$3" "$4"
    fi
}

# refuses NAME TEXT FILE THE SYSTEM'S WORDS [WHAT IT STILL READS]
refuses() {
    check "$1" "$(outcome_of_writing "$2" "$3")" "failed: $4"
    if [[ $# -gt 4 ]]; then
        reads "$1, still" "$3" "$5"
    fi
}

is_there() {
    check "$1" "$([[ -e $2 ]] && echo yes || echo no)" yes
}

is_missing() {
    check "$1" "$([[ -e $2 ]] && echo yes || echo no)" no
}

turn() {
    echo "$2" >"$KNOBS/$1"
}

empty_log() {
    : >"$KNOBS/log"
}

# logs NAME LINE...: the whole log
logs() {
    local name=$1
    local wanted
    shift
    wanted=$(printf '%s\n' "$@")
    reads "$name" "$KNOBS/log" "$wanted"
}

# The folder of the regulator that is named so, or nothing.
regulator_named() {
    local name
    for name in /sys/class/regulator/*/name; do
        if [[ $(<"$name") == "$1" ]]; then
            printf '%s' "${name%/name}"
        fi
    done
}

# The node of the input device that is named so, or nothing.
input_node_of() {
    local name
    for name in /sys/class/input/event*/device/name; do
        if [[ -e $name && $(<"$name") == "$1" ]]; then
            name=${name%/device/name}
            printf '/dev/input/%s' "${name##*/}"
        fi
    done
}

reload() {
    rmmod zr_terminal && insmod "$MODULE" "$@"
}
