# shellcheck shell=bash
# Digital inputs and outputs, beeper, analog class, ignition.

check_digital_inputs() {
    local n
    for n in 0 1 2 3; do
        reads "digital input $n is low at load" "$PLATFORM/zr_di.$n/state" 0
        turn "zr_di.$n/state/value" 1
        reads "digital input $n follows its knob" "$PLATFORM/zr_di.$n/state" 1
    done
    refuses "digital input cannot be written" 0 "$PLATFORM/zr_di.0/state" 'Permission denied' 1
    is_missing "there is no fifth digital input" "$PLATFORM/zr_di.4"
}

check_digital_outputs() {
    local n
    for n in 0 1 2; do
        accepts "digital output $n takes 1" 1 "$PLATFORM/zr_do.$n/state" 1
        accepts "digital output $n takes 0" 0 "$PLATFORM/zr_do.$n/state" 0
    done
    is_missing "there is no fourth digital output" "$PLATFORM/zr_do.3"
    refuses "digital output refuses 2" 2 "$PLATFORM/zr_do.0/state" 'Invalid argument' 0
    refuses "digital output refuses -1" -1 "$PLATFORM/zr_do.0/state" 'Invalid argument' 0
    refuses "digital output refuses text" on "$PLATFORM/zr_do.0/state" 'Invalid argument' 0
    refuses "digital output refuses an empty text" '' "$PLATFORM/zr_do.0/state" \
        'Invalid argument' 0
    refuses "digital output refuses more than an int" 99999999999 "$PLATFORM/zr_do.0/state" \
        'Numerical result out of range' 0
    turn zr_do.1/state/value 1
    reads "digital output follows its knob" "$PLATFORM/zr_do.1/state" 1
}

check_beeper() {
    local volume=$PLATFORM/pwm-speaker.0/volume
    reads "beeper is at half volume at load" "$volume" 50
    accepts "beeper takes 0" 0 "$volume" 0
    accepts "beeper takes 100" 100 "$volume" 100
    refuses "beeper refuses 101" 101 "$volume" 'Numerical result out of range' 100
    refuses "beeper refuses -1" -1 "$volume" 'Numerical result out of range' 100
    refuses "beeper refuses text" loud "$volume" 'Invalid argument' 100
}

check_analog_inputs() {
    local n base name
    for n in 0 1 2 3; do
        base=$ANALOG/ai.$n
        reads "analog input $n has its value" "$base/value" $((n * 1000 + 1000))
        turn "ai.$n/value/value" 70000
        reads "analog input $n follows its knob" "$base/value" 70000
        for name in measure_mode toggle_load hysteresis; do
            accepts "analog input $n takes a $name" 1 "$base/$name" 1
        done
        accepts "analog input $n takes a scan_interval" 250 "$base/scan_interval" 250
    done
    base=$ANALOG/ai.0
    refuses "analog input value cannot be written" 1 "$base/value" 'Permission denied' 70000
    refuses "measure_mode refuses 2" 2 "$base/measure_mode" 'Invalid argument' 1
    refuses "toggle_load refuses 2" 2 "$base/toggle_load" 'Invalid argument' 1
    accepts "hysteresis takes its maximum" 65535 "$base/hysteresis" 65535
    refuses "hysteresis refuses more" 65536 "$base/hysteresis" 'Numerical result out of range' 65535
    refuses "hysteresis refuses -1" -1 "$base/hysteresis" 'Numerical result out of range' 65535
    refuses "scan_interval refuses more" 60001 "$base/scan_interval" \
        'Numerical result out of range' 250
    refuses "scan_interval refuses text" fast "$base/scan_interval" 'Invalid argument' 250
    is_missing "there is no fifth analog input" "$ANALOG/ai.4"
}

check_sensors() {
    reads "supply has its value" "$ANALOG/supply_vcc/value" 12000
    is_missing "there is no battery voltage" "$ANALOG/board_12v_bat"
    reads "temperature has its value" "$ANALOG/temperature/value" 25
    reads "frequency has its value" "$ANALOG/frequency/value" 50
    reads "light has its value" "$ANALOG/light/value" 300
    accepts "light takes a hysteresis" 10 "$ANALOG/light/hysteresis" 10
    accepts "light takes a scan_interval" 100 "$ANALOG/light/scan_interval" 100
    turn temperature/value/value -40
    reads "temperature can be below zero" "$ANALOG/temperature/value" -40
}

check_ignition() {
    local folder
    is_there "rails are regulators too" "$(regulator_named zr-5v-usb)/state"
    folder=$(regulator_named ignition-irq)
    reads "ignition regulator tells its name" "$folder/name" ignition-irq
    reads "ignition is off at load" "$folder/state" disabled
    turn ignition/state/value 1
    reads "ignition follows its knob" "$folder/state" enabled
    reads "ignition regulator's name stays a name" "$folder/name" ignition-irq
    turn ignition/state/fail_read EIO
    reads "ignition that cannot be read is unknown" "$folder/state" unknown
    reads "ignition reads again after one failure" "$folder/state" enabled
    refuses "ignition knob refuses 2" 2 "$KNOBS/ignition/state/value" 'Invalid argument'
    turn ignition/present 0
    check "ignition regulator can go" "$(regulator_named ignition-irq)" ''
    turn ignition/present 1
    folder=$(regulator_named ignition-irq)
    reads "ignition comes back as it was" "$folder/state" enabled
}
