# shellcheck shell=bash
# Boards with other parameters: the module is loaded anew for each.

check_colour_board() {
    reload key=colour encoder=colour rgb=sys key_trigger=none backlight=class supply=bat \
        ignition=0 variant=dual ai_without=measure_mode,hysteresis families=ANALOG,ZR_QUIET
    reads "colour key LED" "$LEDS/bl:key/max_brightness" 16777215
    accepts "colour key LED takes a colour" 1193046 "$LEDS/bl:key/brightness" 1193046
    check "key LED without a trigger at load" "$(grep -c '\[none\]' "$LEDS/bl:key/trigger")" 1
    accepts "colour encoder LED takes a colour" 16711680 "$LEDS/bl:enc/brightness" 16711680
    accepts "system status LED takes a colour" 255 "$LEDS/sys:status:rgb/brightness" 255
    is_missing "no user status LED" "$LEDS/user:rgb"
    accepts "class backlight takes 13" 13 /sys/class/backlight/backlight/brightness 13
    is_missing "no platform backlight" "$PLATFORM/pwm-backlight.0"
    reads "battery voltage has its value" "$ANALOG/board_12v_bat/value" 12000
    is_missing "no supply voltage" "$ANALOG/supply_vcc"
    check "no ignition regulator" "$(regulator_named ignition-irq)" ''
    is_there "other regulators" "$(regulator_named zr-3v3)"
    is_missing "analog input without measure_mode" "$ANALOG/ai.0/measure_mode"
    is_missing "analog input without hysteresis" "$ANALOG/ai.3/hysteresis"
    is_there "analog input with toggle_load" "$ANALOG/ai.0/toggle_load"
    is_missing "no knob for what is left out" "$KNOBS/ai.0/hysteresis"
    check "families that are named" "$(cat "$NOTIFY"/{ANALOG,ZR_DI,ZR_DO,ZR_QUIET}/registered |
        tr '\n' ,)" 1,0,0,1,
    is_there "light keeps its hysteresis" "$ANALOG/light/hysteresis"
    check "dual board's processor" "$(tr '\0' , </proc/device-tree/compatible)" \
        'zr,terminal-dual,fsl,imx6dl,'
}

check_legacy_board() {
    local class=/sys/class/backlight/pwm-backlight.0
    reload backlight=legacy supply=both variant=ull key_trigger=timer absent=light,zr_di.3
    accepts "legacy backlight takes 13" 13 "$class/brightness" 13
    is_missing "legacy backlight has no platform parent" /sys/devices/platform/pwm-backlight.0
    is_there "both supplies: voltage" "$ANALOG/supply_vcc/value"
    is_there "both supplies: battery" "$ANALOG/board_12v_bat/value"
    check "small board's processor" "$(tr '\0' , </proc/device-tree/compatible)" \
        'zr,terminal-ull,fsl,imx6ull,'
    check "another trigger at load" "$(grep -c '\[timer\]' "$LEDS/bl:key/trigger")" 1
    is_missing "absent light" "$ANALOG/light"
    is_missing "absent input" "$PLATFORM/zr_di.3"
    is_there "other inputs" "$PLATFORM/zr_di.2"
    turn light/present 1
    reads "absent light comes by its knob" "$ANALOG/light/value" 300
    empty_log
    echo none >"$LEDS/bl:key/trigger"
    check "another trigger's end is logged" "$(grep -c ' key trigger none$' "$KNOBS/log")" 1
}

check_bare_board() {
    reload key=none encoder=none rgb=none backlight=none supply=none device_tree=0 families=
    is_missing "no key LED" "$LEDS/bl:key"
    is_missing "no encoder LED" "$LEDS/bl:enc"
    is_missing "no status LED" "$LEDS/user:rgb"
    is_missing "no knobs for what is not there" "$KNOBS/key"
    check "no backlight" "$(ls /sys/class/backlight)" ''
    is_missing "no supply" "$ANALOG/supply_vcc"
    is_missing "no battery" "$ANALOG/board_12v_bat"
    is_missing "no device tree" /proc/device-tree
    check "no families" "$(cat "$NOTIFY"/*/registered | sort -u)" 0
}

check_wrong_parameters() {
    local parameter
    rmmod zr_terminal
    for parameter in key=pink encoder=1 rgb=no backlight=led supply=5v variant=imx8 \
        ai_without=mode absent=lamp simcan=5 families=ZR_DI,DO tw9912= \
        adv7180=a-name-of-more-than-31-characters; do
        check "$parameter is refused" "$(insmod "$MODULE" "$parameter" 2>&1)" \
            "insmod: ERROR: could not insert module $MODULE: Invalid parameters"
        is_missing "$parameter leaves nothing behind" "$KNOBS"
    done
    is_missing "no class is left behind" "$ANALOG"
    insmod "$MODULE"
    is_there "the module loads after refusals" "$KNOBS/log"
}
