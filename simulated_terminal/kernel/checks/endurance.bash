# shellcheck shell=bash
# Loads and unloads, presence against readers, and what the kernel has to say in the end.

check_loads() {
    local n loads=0
    for ((n = 0; n < 20; n++)); do
        reload && loads=$((loads + 1))
    done
    check "the module loads and unloads 20 times" "$loads" 20
}

check_unload_in_use() {
    exec 7<"$PLATFORM/zr_di.0/state" 8<"$LEDS/bl:key/brightness" 9</proc/device-tree/compatible
    check "the module unloads while attributes are open" "$(rmmod zr_terminal 2>&1)" ''
    check "an attribute of an unloaded driver answers no device" "$(cat <&7 2>&1)" \
        'cat: -: No such device'
    check "an LED of an unloaded driver answers no device" "$(cat <&8 2>&1)" \
        'cat: -: No such device'
    check "an unloaded device tree cannot be read" "$(cat <&9 2>&1)" \
        'cat: -: Input/output error'
    exec 7<&- 8<&- 9<&-
    insmod "$MODULE"
    exec 7<"$KNOBS/zr_di.0/state/value"
    check "an open knob keeps the module" "$(rmmod zr_terminal 2>&1)" \
        'rmmod: ERROR: Module zr_terminal is in use'
    exec 7<&-
}

# Reads and writes everything again and again until its parent ends it.
disturb() {
    local file
    while true; do
        for file in "$@"; do
            { read -r _ <"$file"; } 2>/dev/null
            { echo 1 >"$file"; } 2>/dev/null
        done
    done
}

# shellcheck disable=SC2119
check_presence_under_load() {
    local round present readers=()
    local files=("$PLATFORM"/zr_d*/state "$PLATFORM/pwm-speaker.0/volume" "$ANALOG"/*/value
        "$ANALOG/light/hysteresis" "$LEDS/bl:key/brightness" "$LEDS/bl:key/trigger"
        "$LEDS/user:rgb/brightness" "$BACKLIGHT/brightness" "$BACKLIGHT/actual_brightness"
        /proc/device-tree/compatible "$(regulator_named ignition-irq)/state")
    disturb "${files[@]}" &
    readers+=($!)
    disturb "$KNOBS"/*/*/value "$KNOBS"/*/*/fail_read "$KNOBS"/*/claimed "$KNOBS/log" &
    readers+=($!)
    for ((round = 0; round < 20; round++)); do
        for present in "$KNOBS"/*/present; do
            echo 0 >"$present"
        done
        for present in "$KNOBS"/*/present; do
            echo 1 >"$present"
        done
    done
    kill "${readers[@]}"
    wait "${readers[@]}" 2>/dev/null
    check "everything is present after 20 rounds under load" \
        "$(cat "$KNOBS"/*/present | sort -u)" 1
    reload
    reads "the board reads after a reload" "$PLATFORM/zr_di.0/state" 0
}

check_kernel_log() {
    local complaints
    complaints=$(dmesg | grep -E 'WARNING|BUG|Oops:|Call Trace|general protection|RIP:|UBSAN|bad count|refcount|INFO: task|zr_terminal: .* cannot be made') || true
    check "the kernel has no complaints" "$complaints" ''
}
