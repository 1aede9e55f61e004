# shellcheck shell=bash
# The knob and log layer: every own attribute has the same files.

check_texts() {
    local value=$KNOBS/zr_di.0/state/value
    local state=$PLATFORM/zr_di.0/state
    printf 1 >"$value"
    reads_bytes "a text without newline" "$state" ' 1 '
    echo 2 >"$value"
    reads_bytes "a state that cannot be" "$state" ' 2 \n '
    echo abc >"$value"
    reads "no number" "$state" abc
    reads "the knob reads the text" "$value" abc
    : >"$value"
    reads_bytes "an empty text" "$state" ''
    printf 'a\0b' >"$value"
    reads_bytes "a text with a NUL" "$state" ' a \0 b '
    head -c 4095 /dev/zero | tr '\0' 7 >"$value"
    check "a text of a page but one byte" "$(wc -c <"$state")" 4095
    check "a text of a page is refused" \
        "$(head -c 4096 /dev/zero | dd of="$value" bs=4096 2>&1 | grep -c 'File too large')" 1
    echo 0 >"$value"
    reads "the input is an input again" "$state" 0
}

check_rewind() {
    local state=$PLATFORM/zr_do.0/state
    local first='' second
    echo 0 >"$state"
    exec 7<>"$state"
    read -r first <&7
    echo 1 >"$state"
    # bash keeps no buffer over a file that can seek: this reads the descriptor at its end.
    second=$(cat <&7)
    exec 7>&-
    check "a read starts at offset 0" "$first" 0
    check "a read at the end gives nothing" "$second" ''
    # shellcheck disable=SC2016  # Perl's variables
    check "a kept descriptor reads anew from offset 0" "$(perl -e '
        open my $f, "+<", $ARGV[0] or die; sysread $f, my $a, 9; sysseek $f, 0, 0;
        syswrite $f, "0\n"; sysseek $f, 0, 0; sysread $f, my $b, 9; print $a, $b' "$state")" \
        $'1\n0'
}

# One attribute of each own driver, each with both of its failures where it has both.
check_faults() {
    local each file
    for each in zr_di.3/state:$PLATFORM/zr_di.3/state zr_do.2/state:$PLATFORM/zr_do.2/state \
        beeper/volume:$PLATFORM/pwm-speaker.0/volume ai.3/value:$ANALOG/ai.3/value \
        ai.1/hysteresis:$ANALOG/ai.1/hysteresis supply_vcc/value:$ANALOG/supply_vcc/value \
        light/value:$ANALOG/light/value light/hysteresis:$ANALOG/light/hysteresis \
        temperature/value:$ANALOG/temperature/value frequency/value:$ANALOG/frequency/value; do
        file=${each#*:}
        turn "${each%%:*}/value" 1
        turn "${each%%:*}/fail_read" EIO
        reads "${each%%:*} fails one read" "$file" 'failed: Input/output error'
        reads "${each%%:*} reads again" "$file" 1
        if [[ -w $KNOBS/${each%%:*}/fail_write ]]; then
            turn "${each%%:*}/fail_write" EBUSY
            refuses "${each%%:*} fails one write" 0 "$file" 'Device or resource busy' 1
            accepts "${each%%:*} takes the next" 0 "$file" 0
        fi
    done
}

check_fault_counts() {
    local fail=$KNOBS/ai.2/value/fail_read
    local value=$ANALOG/ai.2/value
    reads "a fault is off at first" "$fail" 0
    turn ai.2/value/value 5
    echo '61 2' >"$fail"
    reads "a fault by number reads as a name" "$fail" 'ENODATA 2'
    reads "first of two failures" "$value" 'failed: No data available'
    reads "one failure is left" "$fail" 'ENODATA 1'
    reads "second of two failures" "$value" 'failed: No data available'
    reads "no third failure" "$value" 5
    echo 'ETIMEDOUT -1' >"$fail"
    reads "a failure for ever" "$value" 'failed: Connection timed out'
    reads "a failure for ever again" "$value" 'failed: Connection timed out'
    reads "a failure for ever stays" "$fail" 'ETIMEDOUT -1'
    echo 0 >"$fail"
    reads "a failure is switched off" "$value" 5
    echo 'EIO 1 2' >"$fail"
    check "two good accesses before a failure" \
        "$(text_of "$value"),$(text_of "$value"),$(text_of "$value"),$(text_of "$value")" \
        '5,5,failed: Input/output error,5'
    echo 'EIO 2 3' >"$fail"
    reads "a failure that waits" "$fail" 'EIO 2 3'
    accepts "a fault takes more than one blank" '  EIO  4   5 ' "$fail" 'EIO 4 5'
    echo 0 >"$fail"
    refuses "a fault refuses a negative wait" 'EIO 1 -1' "$fail" 'Invalid argument' 0
    refuses "a fault refuses an unknown name" EWRONG "$fail" 'Invalid argument' 0
    refuses "a fault refuses a number above all" 134 "$fail" 'Invalid argument' 0
    refuses "a fault refuses a count of 0" 'EIO 0' "$fail" 'Invalid argument' 0
}

check_log() {
    local line
    empty_log
    reads "an emptied log is empty" "$KNOBS/log" ''
    echo 1 >"$PLATFORM/zr_do.0/state"
    { echo 2 >"$PLATFORM/zr_do.0/state"; } 2>/dev/null
    echo 20 >"$PLATFORM/pwm-speaker.0/volume"
    echo 7 >"$LEDS/bl:enc/brightness"
    echo 1 >"$ANALOG/ai.0/toggle_load"
    { printf 'a b\tc\134' >"$ANALOG/light/hysteresis"; } 2>/dev/null
    logs "the log is in order, with refusals" '1 zr_do.0 state 1' \
        '2 zr_do.0 state 2 error EINVAL' '3 beeper volume 20' '4 encoder brightness 7' \
        '5 ai.0 toggle_load 1' '6 light hysteresis a b\tc\\ error EINVAL'
    echo >"$KNOBS/log"
    echo 0 >"$PLATFORM/zr_do.0/state"
    logs "a write to the log restarts its numbers" '1 zr_do.0 state 0'
    for ((line = 2; line <= 1100; line++)); do
        echo $((line % 2)) >"$PLATFORM/zr_do.0/state"
    done
    check "a long log keeps its last lines" \
        "$(sed -n '1p;$p' "$KNOBS/log" | tr '\n' ',')" \
        '77 zr_do.0 state 1,1100 zr_do.0 state 0,'
}

check_poll() {
    # shellcheck disable=SC2016  # Perl's variables
    check "a changed input wakes poll" "$(perl -e '
        open my $f, "<", "/sys/bus/platform/devices/zr_di.1/state" or die;
        sysread $f, my $old, 9;
        open my $k, ">", "/sys/kernel/debug/zr_terminal/zr_di.1/state/value" or die;
        syswrite $k, $old == 0 ? "1\n" : "0\n";
        my $set = ""; vec($set, fileno($f), 1) = 1;
        print scalar select(undef, undef, $set, 20)')" 1
}

check_presence() {
    local each file
    for each in zr_di.0:$PLATFORM/zr_di.0/state zr_do.0:$PLATFORM/zr_do.0/state \
        beeper:$PLATFORM/pwm-speaker.0/volume ai.0:$ANALOG/ai.0/value \
        supply_vcc:$ANALOG/supply_vcc/value light:$ANALOG/light/value \
        temperature:$ANALOG/temperature/value frequency:$ANALOG/frequency/value \
        key:$LEDS/bl:key/brightness encoder:$LEDS/bl:enc/brightness \
        rgb:$LEDS/user:rgb/brightness backlight:$BACKLIGHT/brightness \
        device_tree:/proc/device-tree/compatible; do
        file=${each#*:}
        exec 7<"$file"
        turn "${each%%:*}/present" 0
        is_missing "${each%%:*} can go" "$file"
        reads "${each%%:*} is told as gone" "$KNOBS/${each%%:*}/present" 0
        turn "${each%%:*}/present" 1
        is_there "${each%%:*} comes back" "$file"
        if [[ $each != device_tree:* ]]; then
            check "${each%%:*} kept open answers no device" \
                "$(cat <&7 2>&1)" 'cat: -: No such device'
        fi
        exec 7<&-
    done
    reads "key LED comes back lit by its trigger" "$LEDS/bl:key/brightness" 255
    reads "encoder LED comes back off" "$LEDS/bl:enc/brightness" 0
    turn zr_do.0/present 0
    turn zr_do.0/state/value 1
    turn zr_do.0/present 1
    reads "a value set while a device is away shows" "$PLATFORM/zr_do.0/state" 1
    refuses "presence refuses 2" 2 "$KNOBS/zr_do.0/present" 'Invalid argument' 1
}
