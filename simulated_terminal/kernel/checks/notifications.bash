# shellcheck shell=bash disable=SC2154  # run_checks sets the folder
# Netlink notifications, as seen by a listener of its own.

readonly NOTIFY=$KNOBS/notify
readonly LISTENER=$folder/notifications.pl
# Digits of the attributes of a digital notification: channel, the flags "valid", value.
readonly FLAGS=0800020001000000

# The listener's end of the pipe is descriptor 8, its process `listener`.
start_listener() {
    local line
    exec 8< <(exec perl "$LISTENER" listen "$1" 2>&1)
    listener=$!
    read -r -t 20 line <&8
    check "a listener joins $1" "$line" listening
}

stop_listener() {
    kill "$listener"
    wait "$listener" 2>/dev/null
    exec 8<&-
}

# notified NAME LINE: the next datagram
notified() {
    local line='nothing'
    read -r -t 20 line <&8
    check "$1" "$line" "$2"
}

# notified_digital NAME CHANNEL VALUE
notified_digital() {
    notified "$1" "44 44 own 1 1 080001000${2}000000${FLAGS}080003000${3}000000"
}

# notified_light NAME FLAGS VALUE, the last two as digits of a word
notified_light() {
    notified "$1" "48 48 own 1 1 0a0001006c6967687400000008000200${2}08000300${3}"
}

# notified_named NAME CHANNEL DIGIT
notified_named() {
    local name length=$((${#2} + 5))
    name=$(printf '%s' "$2" | od -An -v -tx1 | tr -d ' \n')
    while ((${#name} / 2 % 4 != 0 || ${#name} / 2 == ${#2})); do
        name+=00
    done
    notified "$1" "$((20 + 4 + ${#name} / 2 + 16)) $((20 + 4 + ${#name} / 2 + 16)) own 1 1 $(
        printf '%02x000100' "$length")${name}${FLAGS}080003000${3}000000"
}

turn_all_low() {
    local value
    for value in "$KNOBS"/zr_d[io].*/state/value; do
        echo 0 >"$value"
    done
}

check_families() {
    local each
    for each in ZR_DI ZR_DO ANALOG; do
        check "$each is described" "$(perl "$LISTENER" describe "$each" 2>&1)" \
            'attributes 2 1 3 4 5 7 groups id events'
    done
    check "a quiet family is not there by itself" "$(perl "$LISTENER" describe ZR_QUIET 2>&1)" \
        'no family: No such file or directory'
    turn notify/ZR_QUIET/registered 1
    check "a quiet family has no group" "$(perl "$LISTENER" describe ZR_QUIET 2>&1)" \
        'attributes 2 1 3 4 5 groups'
    is_missing "a quiet family has nothing to send with" "$NOTIFY/ZR_QUIET/send"
    turn notify/ZR_DO/registered 0
    check "a family can go" "$(perl "$LISTENER" describe ZR_DO 2>&1)" \
        'no family: No such file or directory'
    refuses "a family that is gone sends nothing" none "$NOTIFY/ZR_DO/malformed" 'No such device'
    accepts "an output works without its family" 1 "$PLATFORM/zr_do.0/state" 1
    turn notify/ZR_DO/registered 1
    check "a family comes back" "$(perl "$LISTENER" describe ZR_DO 2>&1)" \
        'attributes 2 1 3 4 5 7 groups id events'
    refuses "registered refuses 2" 2 "$NOTIFY/ZR_DO/registered" 'Invalid argument' 1
}

check_digital_notifications() {
    local output=$PLATFORM/zr_do.2/state
    turn_all_low
    start_listener ZR_DI
    turn zr_di.3/state/value 1
    notified_digital "an input's knob is told of" 3 1
    turn zr_di.3/state/value 1
    turn zr_di.3/state/value high
    : >"$KNOBS/zr_di.3/state/value"
    turn zr_di.3/state/value 0
    notified_digital "no change and no number are not told of" 3 0
    turn zr_di.3/state/value 2
    notified_digital "a state that cannot be is told of" 3 2
    stop_listener
    start_listener ZR_DO
    echo 1 >"$output"
    notified_digital "a write to an output is told of" 2 1
    { echo 2 >"$output"; } 2>/dev/null
    echo 1 >"$output"
    turn zr_do.2/state/fail_write EIO
    { echo 0 >"$output"; } 2>/dev/null
    echo 0 >"$output"
    notified_digital "refused writes and the same value are not told of" 2 0
    turn zr_do.0/state/value 1
    notified_digital "an output's knob is told of" 0 1
    turn zr_do.1/present 0
    turn zr_do.1/state/value 1
    turn zr_do.1/present 1
    echo 0 >"$PLATFORM/zr_do.1/state"
    notified_digital "an output that is away is not told of" 1 0
    stop_listener
}

check_analog_notifications() {
    local each name
    start_listener ANALOG
    turn light/value/value 1500
    notified_light "light is told of" 01000000 dc050000
    echo 7 >"$ANALOG/light/hysteresis"
    echo 1 >"$ANALOG/ai.0/measure_mode"
    turn ai.1/toggle_load/value 1
    echo 70 >"$PLATFORM/pwm-speaker.0/volume"
    turn zr_di.0/state/value 1
    turn ignition/state/value 1
    turn light/value/value -40
    notified_light "what is no measurement is not told of; a negative one is" 01000000 d8ffffff
    turn light/value/value 4294967295
    notified_light "the largest value" 01000000 ffffffff
    for each in 4294967296 -2147483649 dark '' 1x; do
        turn light/value/value "$each"
        notified_light "'$each' is told of as invalid" 00000000 00000000
    done
    printf '7\0' >"$KNOBS/light/value/value"
    notified_light "a number and a NUL are invalid" 00000000 00000000
    printf 7 >"$KNOBS/light/value/value"
    notified_light "a number without a newline" 01000000 07000000
    for name in ai.0 ai.1 ai.2 ai.3 supply_vcc temperature frequency; do
        turn "$name/value/value" 9
        notified_named "$name is told of" "$name" 9
    done
    stop_listener
}

check_notification_switches() {
    turn_all_low
    turn light/value/value 299
    start_listener ZR_DO
    reads "a family is not muted" "$NOTIFY/ZR_DO/muted" 0
    turn notify/ZR_DO/muted 1
    echo 1 >"$PLATFORM/zr_do.0/state"
    turn notify/ZR_DO/muted 0
    empty_log
    echo 0 >"$PLATFORM/zr_do.0/state"
    notified_digital "a muted change is not told of" 0 0
    logs "notifications are not logged by themselves" '1 zr_do.0 state 0'
    turn notify/logged 1
    empty_log
    echo 1 >"$PLATFORM/zr_do.0/state"
    turn light/value/value 300
    turn light/value/value dark
    turn temperature/value/value -40
    accepts "nobody has to listen" two "$NOTIFY/ZR_DI/malformed"
    turn notify/ZR_DI/flood 3
    printf 1234 >"$NOTIFY/ANALOG/send"
    turn notify/ZR_DI/muted 1
    turn zr_di.1/state/value 1
    logs "notifications are logged" '1 zr_do.0 state 1' '2 notify ZR_DO 0 1' \
        '3 notify ANALOG light 300' '4 notify ANALOG light invalid' \
        '5 notify ANALOG temperature -40' '6 notify ZR_DI malformed two' \
        '7 notify ZR_DI flood 3' '8 notify ANALOG send 4'
    turn notify/ZR_DI/muted 0
    turn notify/logged 0
    notified_digital "a logged change is told of" 0 1
    stop_listener
}

check_hand_made_notifications() {
    start_listener ZR_DI
    printf '\x08\0\x01\0\x07\0\0\0' >"$NOTIFY/ZR_DI/send"
    notified "attributes as they are given" '28 28 own 1 1 0800010007000000'
    printf '\x40\0\0\0\x99\x99\0\0\0\0\0\0\0\0\0\0\x05\x06\0\0\xff' >"$NOTIFY/ZR_DI/raw"
    notified "a datagram as it is given" '21 64 39321 5 6 ff'
    printf '\x40\0\0' >"$NOTIFY/ZR_DI/raw"
    notified "a datagram of three bytes" '3 - - - - -'
    head -c 32768 /dev/zero | dd of="$NOTIFY/ZR_DI/send" bs=32768 iflag=fullblock status=none
    notified "the longest body" "32788 32788 own 1 1 $(printf '0%.0s' {1..65536})"
    check "a longer body is refused" "$(head -c 32769 /dev/zero |
        dd of="$NOTIFY/ZR_DI/send" bs=32769 iflag=fullblock 2>&1 | grep -c 'File too large')" 1
    stop_listener
}

# word=what follows on the listener's line; A, F, V are the sample's attributes
readonly MALFORMED=(
    'none=20 20 own 1 1 -' 'two=36 36 own 1 1 AF' 'four=52 52 own 1 1 AFV0800040001010101'
    'unknown_types=44 44 own 1 1 08000b000000000008000c000100000008000d0001000000'
    'no_channel=44 44 own 1 1 0800040000000000FV'
    'no_flags=44 44 own 1 1 A0800030001000000V' 'no_value=44 44 own 1 1 AF0800020001000000'
    'zero_length=44 44 own 1 1 0000010000000000FV'
    'zero_length_last=44 44 own 1 1 AF0000030001000000'
    'short_length=44 44 own 1 1 AF0300030001000000'
    'past_end=44 44 own 1 1 AF4800030001000000'
    'past_end_first=44 44 own 1 1 ffff010000000000FV'
    'cut_header=38 38 own 1 1 AF0800' 'no_payload=32 32 own 1 1 040001000400020004000300'
    'short_payload=44 44 own 1 1 050001000100000006000200010100000700030001010100'
    'short_value=44 44 own 1 1 AF0600030001010000'
    'wide_value=48 48 own 1 1 AF0c0003000101010101010101'
    "long=4136 4136 own 1 1 AF04100300$(printf '01%.0s' {1..4096})"
    'invalid=44 44 own 1 1 A0800020000000000V'
    'wrong_family=44 44 16 1 1 AFV' 'wrong_command=44 44 own 2 1 AFV'
    'length_below=44 8 own 1 1 AFV' 'length_headers=44 16 own 1 1 AFV'
    'length_above=44 108 own 1 1 AFV' 'truncated=12 44 own - - -' 'empty=0 - - - - -'
)

check_malformed_notifications() {
    local each line
    check "the table of malformed notifications" "$(tr '\n' ' ' <"$NOTIFY/ZR_DI/malformed")" \
        "$(printf '%s ' "${MALFORMED[@]%%=*}")"
    start_listener ZR_DI
    for each in "${MALFORMED[@]}"; do
        line=${each#*=}
        line=${line/A/0800010000000000}
        line=${line/F/$FLAGS}
        turn notify/ZR_DI/malformed "${each%%=*}"
        notified "malformed ${each%%=*}" "${line/V/0800030001000000}"
    done
    refuses "an unknown word" three "$NOTIFY/ZR_DI/malformed" 'Invalid argument'
    stop_listener
    start_listener ANALOG
    turn notify/ANALOG/malformed invalid
    notified "a malformed analog one has a name" \
        '48 48 own 1 1 0900010061692e300000000008000200000000000800030001000000'
    stop_listener
}

check_notification_floods() {
    local each
    for each in ZR_DI ZR_DO ANALOG; do
        check "100 of $each reach a listener" "$(perl "$LISTENER" flood "$each" 100 2>&1)" \
            'all in order, losses told: 0'
    done
    check "a listener misses the end of a long flood" \
        "$(perl "$LISTENER" flood ZR_DI 2000 2>&1)" 'some in order, losses told: 1'
    refuses "a flood of none" 0 "$NOTIFY/ZR_DI/flood" 'Invalid argument'
    refuses "too large a flood" 1000001 "$NOTIFY/ZR_DI/flood" 'Invalid argument'
}
