# shellcheck shell=bash
# The device tree's text and the input devices.

check_device_tree() {
    local compatible=/proc/device-tree/compatible
    check "the device tree names the processor" "$(tr '\0' , <"$compatible")" \
        'zr,terminal-quad,fsl,imx6q,'
    printf 'zr,other\0fsl,imx6ull\0' >"$KNOBS/device_tree/compatible/value"
    check "the device tree follows its knob" "$(tr '\0' , <"$compatible")" 'zr,other,fsl,imx6ull,'
    turn device_tree/compatible/fail_read EIO
    reads "the device tree fails one read" "$compatible" 'failed: Input/output error'
    check "the device tree reads again" "$(tr '\0' , <"$compatible")" 'zr,other,fsl,imx6ull,'
    refuses "the device tree cannot be written" x "$compatible" 'Input/output error'
}

# A record is struct input_event of a 64-bit system: 16 bytes of time, type, code, value. The one of
# zeros that follows is the SYN_REPORT, without which evdev keeps the event back.
check_one_input() {
    local node
    node=$(input_node_of "zr $1")
    check "$1 has a node" "$([[ -c $node ]] && echo yes || echo no)" yes
    exec 7<"$node"
    printf '%16s'"$2"'%24s' '' '' | tr ' ' '\0' >"$node"
    check "$1 passes an event on" \
        "$(timeout 20 dd bs=24 count=1 status=none <&7 | od -An -tx1 -j16 | tr -d ' \n')" "$3"
    exec 7<&-
    turn "input_$1/present" 0
    check "$1 can go" "$(input_node_of "zr $1")" ''
    turn "input_$1/present" 1
    check "$1 comes back" "$(input_node_of "zr $1")" "$node"
}

check_inputs() {
    check_one_input encoder '\x02\x00\x07\x00\x01\x00\x00\x00' 0200070001000000
    check_one_input touchscreen '\x03\x00\x00\x00\x40\x01\x00\x00' 0300000040010000
    check_one_input keyboard '\x01\x00\x1c\x00\x01\x00\x00\x00' 01001c0001000000
}
