# shellcheck shell=bash disable=SC2016,SC2034,SC2154  # the guest's shell expands; the parts share their variables
# Which CAN ports there are, what is behind each, and what crosses between them.

readonly CAN_FRAMES=10000

# In the guest. A virtual port has no device, and so no driver, behind it.
readonly LIST_PORTS='
list_ports() {
    for port in /sys/class/net/can*; do
        [ -e "$port" ] || continue
        driver=$(readlink -f "$port/device/driver") || driver=none
        ip -details link show "${port##*/}" | grep -qw vcan && driver=vcan
        up=up
        [ $(($(cat "$port/flags") & 1)) = 1 ] || up=down
        echo "${port##*/}=${driver##*/}:$up"
    done
}
set_up() {
    ip link set can0 up type can bitrate 250000 && ip link set can1 up type can bitrate 250000
}
# listen PORT ARG...: returns when candump hears; its queue holds every frame, even if it never ran.
listen() {
    heard=$1
    shift
    candump -L -r 4000000 -T 5000 "$@" "$heard" >/tmp/heard &
    until grep -qE "^ +$heard " /proc/net/can/rcvlist_all; do sleep 0.05; done
}
'

# expect_ports NAME PORTS OPTION...: the ports that a start with these options has.
expect_ports() {
    local name=$1 ports=$2
    shift 2
    run "$@" -- sh -c "$LIST_PORTS list_ports" </dev/null
    expect "can: $name" "0 $ports" "$status $(paste -sd ' ' "$scratch/out")"
}

test_can() {
    expect_ports "two controllers, the rest virtual" \
        "can0=kvaser_pci:down can1=kvaser_pci:down can2=vcan:up can3=vcan:up"
    expect_ports "four controllers" \
        "can0=kvaser_pci:down can1=kvaser_pci:down can2=kvaser_pci:down can3=kvaser_pci:down" --can 4
    expect_ports "some ports missing" "can0=kvaser_pci:down can1=vcan:up can2=vcan:up" --can 1 --vcan 2
    expect_ports "none" "" --can 0 --vcan 0
    test_can_frames
    test_can_of_module
}

# can_answers OUTPUT: the frames that candump wrote there.
can_answers() {
    awk '{ print $3 }' "$1" | paste -sd ' '
}

test_can_frames() {
    run -- sh -c "$LIST_PORTS"'
        set_up && listen can1 -n 2 && cansend can0 123#1122 && cansend can0 18FEF100#0102030405060708
        wait; cat /tmp/heard' </dev/null
    expect "can: frames cross from controller to controller" \
        "0 123#1122 18FEF100#0102030405060708" "$status $(can_answers "$scratch/out")"
    run -- sh -c "$LIST_PORTS"'
        listen can3 -n 1 && cansend can3 7FF#R && wait; cat /tmp/heard' </dev/null
    expect "can: a virtual port carries a remote frame" "0 7FF#R" "$status $(can_answers "$scratch/out")"
    run -- sh -c "$LIST_PORTS"'
        set_up && listen can1 -n '"$CAN_FRAMES"' && cangen can0 -n '"$CAN_FRAMES"' -g 0 -p 10 -I 123 -L 8 -D i
        wait; cat /tmp/heard' </dev/null
    awk -v frames="$CAN_FRAMES" 'BEGIN { for (i = 0; i < frames; ++i)
        printf "123#%02X%02X000000000000\n", i % 256, i / 256 }' >"$scratch/sent"
    expect "can: $CAN_FRAMES frames cross, none lost, in order" "0 same" \
        "$status $(awk '{ print $3 }' "$scratch/out" | cmp "$scratch/sent" 2>&1 && echo same)"
}

test_can_of_module() {
    local options=(--memory "$memory")
    "$terminal" --prepare
    if ! grep -qx simcan "$build/simulated_terminal/module/parameters" 2>/dev/null; then
        skipped "can: controllers of the module" "it has none"
        return 0
    fi
    run --can 1 --simcan 2 -- sh -c "$LIST_PORTS"'
        list_ports | sed "s/=kvaser_pci:/=bus:/; /=bus:/!s/=[^v][^:]*:/=module:/"' </dev/null
    expect "can: the module's controllers follow QEMU's" \
        "0 can0=bus:down can1=module:down can2=module:down can3=vcan:up" \
        "$status $(paste -sd ' ' "$scratch/out")"
}
