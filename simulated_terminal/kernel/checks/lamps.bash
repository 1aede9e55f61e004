# shellcheck shell=bash
# LED and backlight class devices.

readonly BACKLIGHT=$PLATFORM/pwm-backlight.0/backlight/pwm-backlight.0

check_key_led() {
    local led=$LEDS/bl:key
    reads "key LED is plain" "$led/max_brightness" 255
    check "key LED has its trigger at load" \
        "$(grep -c '\[zr-attached\]' "$led/trigger")" 1
    reads "key LED is lit by its trigger" "$led/brightness" 255
    empty_log
    printf none >"$led/trigger"
    check "key LED has no trigger after none" "$(grep -c '\[none\]' "$led/trigger")" 1
    reads "key LED is off after none" "$led/brightness" 0
    accepts "key LED takes 128" 128 "$led/brightness" 128
    accepts "key LED is clamped" 300 "$led/brightness" 255
    refuses "key LED refuses text" bright "$led/brightness" 'Invalid argument' 255
    refuses "key LED refuses -1" -1 "$led/brightness" 'Invalid argument' 255
    refuses "key LED refuses an unknown trigger" zr-unknown "$led/trigger" 'Invalid argument'
    logs "key LED's log is what the lamp saw" '1 key brightness 0' '2 key trigger none' \
        '3 key brightness 128' '4 key brightness 255'
    accepts "key LED takes its trigger again" zr-attached "$led/trigger"
    accepts "key LED loses its trigger by 0" 0 "$led/brightness" 0
    check "key LED has no trigger after 0" "$(grep -c '\[none\]' "$led/trigger")" 1
}

check_other_leds() {
    reads "encoder LED is plain" "$LEDS/bl:enc/max_brightness" 255
    reads "encoder LED is off at load" "$LEDS/bl:enc/brightness" 0
    accepts "encoder LED takes 7" 7 "$LEDS/bl:enc/brightness" 7
    reads "status LED is a colour one" "$LEDS/user:rgb/max_brightness" 16777215
    accepts "status LED takes a colour" 3430008 "$LEDS/user:rgb/brightness" 3430008
    accepts "status LED is clamped" 305419896 "$LEDS/user:rgb/brightness" 16777215
    is_missing "there is no second status LED" "$LEDS/sys:status:rgb"
}

check_led_knobs() {
    local led
    turn encoder/brightness/value 99
    reads "encoder LED shows what the lamp has" "$LEDS/bl:enc/brightness" 99
    accepts "encoder LED is set back" 3 "$LEDS/bl:enc/brightness" 3
    reads "encoder LED's knob shows the lamp" "$KNOBS/encoder/brightness/value" 3
    refuses "encoder LED's knob refuses 256" 256 "$KNOBS/encoder/brightness/value" \
        'Invalid argument' 3
    for led in key:bl:key encoder:bl:enc rgb:user:rgb; do
        turn "${led%%:*}/claimed" 1
        refuses "claimed ${led%%:*} LED refuses" 1 "$LEDS/${led#*:}/brightness" \
            'Device or resource busy'
        turn "${led%%:*}/claimed" 0
        accepts "released ${led%%:*} LED takes 1" 1 "$LEDS/${led#*:}/brightness" 1
    done
}

check_backlight() {
    local brightness=$BACKLIGHT/brightness
    reads "backlight is full at load" "$brightness" 255
    reads "backlight has its maximum" "$BACKLIGHT/max_brightness" 255
    is_there "backlight is in its class" /sys/class/backlight/pwm-backlight.0/brightness
    is_missing "backlight has one name" /sys/class/backlight/backlight
    empty_log
    accepts "backlight takes 0" 0 "$brightness" 0
    accepts "backlight takes 128" 128 "$brightness" 128
    refuses "backlight refuses 256" 256 "$brightness" 'Invalid argument' 128
    refuses "backlight refuses text" dark "$brightness" 'Invalid argument' 128
    refuses "backlight refuses -1" -1 "$brightness" 'Invalid argument' 128
    turn backlight/brightness/fail_write EIO
    refuses "backlight answers its driver's error" 31 "$brightness" 'Input/output error'
    reads "backlight's lamp keeps its value" "$BACKLIGHT/actual_brightness" 128
    accepts "backlight works after one failure" 32 "$brightness" 32
    logs "backlight's log is what the driver saw" '1 backlight brightness 0' \
        '2 backlight brightness 128' '3 backlight brightness 31 error EIO' \
        '4 backlight brightness 32'
    turn backlight/brightness/value 200
    reads "backlight follows its knob" "$brightness" 200
    reads "backlight's knob shows the lamp" "$KNOBS/backlight/brightness/value" 200
    refuses "backlight's knob refuses 256" 256 "$KNOBS/backlight/brightness/value" \
        'Invalid argument' 200
}
