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
    start_listener ZR_DI
    check "the module unloads while a listener waits" "$(rmmod zr_terminal 2>&1)" ''
    insmod "$MODULE"
    stop_listener
    exec 7<"$KNOBS/zr_di.0/state/value"
    check "an open knob keeps the module" "$(rmmod zr_terminal 2>&1)" \
        'rmmod: ERROR: Module zr_terminal is in use'
    exec 7<&-
}

# Reads and writes everything again and again until its parent ends it.
disturb() {
    local file text=0
    while true; do
        text=$((1 - text))
        for file in "$@"; do
            { read -r _ <"$file"; } 2>/dev/null
            { echo "$text" >"$file"; } 2>/dev/null
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

# Changes and floods on families that come and go, one listener joined to the first of them.
check_families_under_load() {
    local round switch writers=()
    start_listener ZR_DO
    disturb "$PLATFORM"/zr_do.*/state "$KNOBS"/notify/*/flood &
    writers+=($!)
    disturb "$KNOBS"/{zr_di.0/state,zr_do.0/state,ai.0/value,light/value}/value &
    writers+=($!)
    for ((round = 0; round < 40; round++)); do
        for switch in "$KNOBS"/notify/*/registered; do
            echo $((round % 2)) >"$switch"
        done
    done
    kill "${writers[@]}"
    wait "${writers[@]}" 2>/dev/null
    stop_listener
    check "every family is there after 40 rounds under load" \
        "$(cat "$KNOBS"/notify/*/registered | sort -u)" 1
    reload
    check "a family is described after a reload" "$(perl "$LISTENER" describe ZR_DI 2>&1)" \
        'attributes 2 1 3 4 5 7 groups id events'
}

check_kernel_log() {
    local complaints
    complaints=$(dmesg | grep -E 'WARNING|BUG|Oops:|Call Trace|general protection|RIP:|UBSAN|bad count|refcount|INFO: task|zr_terminal: .* cannot be made') || true
    check "the kernel has no complaints" "$complaints" ''
}
