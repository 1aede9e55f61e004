# shellcheck shell=bash disable=SC2034,SC2154  # the parts share their variables
# The board's own CAN controllers, seen by ip, candump and cansend.

# Generous: a busy host makes the guest slow, and nothing here waits longer than it must.
readonly WAIT_TENTHS=300

# wait_until COMMAND...: until it succeeds, or the time is over.
wait_until() {
    local tenth
    for ((tenth = 0; tenth < WAIT_TENTHS; tenth++)); do
        "$@" && return
        sleep 0.1
    done
    return 1
}

reads_now() {
    [[ $(<"$1") == "$2" ]]
}

# Two controllers that are up at 250000, in `first` and `second`. Arguments: further settings.
two_controllers() {
    local port
    reload simcan=2
    first=$(<"$KNOBS/simcan.0/interface")
    second=$(<"$KNOBS/simcan.1/interface")
    for port in "$first" "$second"; do
        ip link set "$port" type can bitrate 250000 "$@"
        ip link set "$port" up
    done
    empty_log
}

# has_filters PORT COUNT: whether at least so many filters let frames of a port through.
has_filters() {
    (($(cat /proc/net/can/rcvlist_{all,err,fil,sff} | grep -cw "$1") >= $2))
}

# listen PORT[,FILTER]... COUNT: candump in the background, which ends after COUNT frames or 30 s of silence.
# The kernel enters one filter after the other: with the first alone the rest is not heard yet.
listen() {
    local commas=${1//[!,]/}
    heard=$(mktemp)
    candump -L -r 4000000 -n "$2" -T 30000 "$1" >"$heard" &
    listener=$!
    wait_until has_filters "${1%%,*}" "$((${#commas} > 1 ? ${#commas} : 1))"
}

# hears NAME FRAME...: what the listener got in the end.
hears() {
    local name=$1
    shift
    wait "$listener"
    check "$name" "$(awk '{ print $3 }' "$heard" | paste -sd ' ')" "$*"
    rm "$heard"
}

# can_shows PORT WORD: what stands behind WORD in `ip -details`.
can_shows() {
    ip -details link show "$1" | sed -n "s/.* $2 \([^ )]*\).*/\1/p"
}

counter() {
    cat "/sys/class/net/$1/statistics/$2"
}

# What ip, cansend and the like answer: "done" or the system's words.
answer_of() {
    local message
    if message=$("$@" 2>&1); then
        printf 'done'
    else
        message=${message##*$'\n'}
        printf '%s' "${message##*: }"
    fi
}

check_can_exchange() {
    two_controllers
    listen "$second" 3
    cansend "$first" 123#1122
    cansend "$first" 12345678#0102030405060708
    cansend "$first" 7FF#R
    hears "frames cross the board's bus" 123#1122 12345678#0102030405060708 7FF#R
    check "the sender counts its frames" "$(counter "$first" tx_packets)" 3
    check "the sender counts its bytes" "$(counter "$first" tx_bytes)" 10
    check "an echo is not counted as received" "$(counter "$first" rx_packets)" 0
    check "the receiver counts its frames" "$(counter "$second" rx_packets)" 3
    check "the receiver counts its bytes" "$(counter "$second" rx_bytes)" 10
    listen "$first" 1
    cansend "$first" 001#AA
    hears "the sender's other sockets get its echo" 001#AA
    ip link set "$second" down
    ip link set "$second" type can bitrate 500000
    ip link set "$second" up
    listen "$second" 1
    cansend "$first" 002#
    echo 003# >"$KNOBS/simcan.1/inject"
    hears "another bit rate hears nothing" 003#
    ip link set "$second" down
    check "frames to a stopped controller fail" "$(answer_of cansend "$second" 123#)" 'Network is down'
    check "the events are in the log" "$(cut -d ' ' -f 2- "$KNOBS/log" | paste -sd ,)" \
        "$second stop,$second bitrate 500000,$second open,$second stop"
}

check_can_bitrate() {
    local rate
    two_controllers
    ip link set "$first" down
    for rate in 125000:125000 333333:333333 850000:888888 1000000:1000000; do
        check "bit rate ${rate%:*} is taken" \
            "$(answer_of ip link set "$first" type can bitrate "${rate%:*}")" 'done'
        check "bit rate ${rate%:*} reads ${rate#*:}" "$(can_shows "$first" bitrate)" "${rate#*:}"
    done
    check "bit rate 1 is refused" "$(answer_of ip link set "$first" type can bitrate 1)" \
        'Numerical argument out of domain'
    turn simcan.0/fail_bitrate EIO
    check "a bit rate fails by its knob" \
        "$(answer_of ip link set "$first" type can bitrate 250000)" 'Input/output error'
    check "the next bit rate is taken" \
        "$(answer_of ip link set "$first" type can bitrate 250000)" 'done'
    check "bit rates are in the log" "$(sed 1d "$KNOBS/log" | cut -d ' ' -f 3- | paste -sd ,)" \
        "bitrate 125000,bitrate 333333,bitrate 888888,bitrate 1000000,bitrate 250000 error EIO,bitrate 250000"
    check "a bit rate in operation is refused" \
        "$(answer_of ip link set "$second" type can bitrate 125000)" 'Device or resource busy'
}

check_can_open() {
    reload simcan=1
    first=$(<"$KNOBS/simcan.0/interface")
    check "a controller without a bit rate does not open" "$(answer_of ip link set "$first" up)" \
        'Invalid argument'
    ip link set "$first" type can bitrate 250000
    reads "a controller is stopped at first" "$KNOBS/simcan.0/state" stopped
    turn simcan.0/fail_open 'ENODEV 2'
    check "opening fails by its knob" "$(answer_of ip link set "$first" up)" 'No such device'
    check "opening fails again" "$(answer_of ip link set "$first" up)" 'No such device'
    check "the third opening succeeds" "$(answer_of ip link set "$first" up)" 'done'
    reads "an opened controller is active" "$KNOBS/simcan.0/state" error-active
    logs "openings are in the log" "1 $first open error EINVAL" "2 $first bitrate 250000" \
        "3 $first open error ENODEV" "4 $first open error ENODEV" "5 $first open"
}

check_can_states() {
    local state=$KNOBS/simcan.0/state
    two_controllers
    listen "$first,0:0,#FFFFFFFF" 4
    turn simcan.0/tx_errors 95
    reads "95 errors are active" "$state" error-active
    turn simcan.0/tx_errors 96
    reads "96 errors warn" "$state" error-warning
    check "ip shows the state" "$(can_shows "$first" 'can state')" ERROR-WARNING
    check "ip shows the error counter" "$(can_shows "$first" '(berr-counter tx')" 96
    turn simcan.0/rx_errors 128
    reads "128 errors are passive" "$state" error-passive
    echo error-active >"$state"
    reads "the state can be set" "$state" error-active
    reads "the error counter follows" "$KNOBS/simcan.0/rx_errors" 0
    turn simcan.0/state passive
    reads "the state can be set in short" "$state" error-passive
    reads "so does the counter" "$KNOBS/simcan.0/tx_errors" 128
    hears "sockets are told of each state" 20000204#0008000000006000 20000204#0010000000006080 \
        20000204#0040000000000000 20000204#0020000000008000
    cansend "$first" 123#
    wait_until reads_now "$state" error-warning
    reads "a good frame takes one error off" "$KNOBS/simcan.0/tx_errors" 127
    refuses "a state that is none" asleep "$state" 'Invalid argument' error-warning
    refuses "more transmit errors than there are" 257 "$KNOBS/simcan.0/tx_errors" 'Invalid argument'
    refuses "more receive errors than there are" 256 "$KNOBS/simcan.0/rx_errors" 'Invalid argument'
    logs "states are in the log" "1 $first state error-warning" "2 $first state error-passive" \
        "3 $first state error-active" "4 $first state error-passive" "5 $first state error-warning"
    ip link set "$first" down
    refuses "a stopped controller has no errors" 1 "$KNOBS/simcan.0/tx_errors" 'Network is down'
    reads "a stopped controller is stopped" "$state" stopped
}

check_can_bus_off() {
    local state=$KNOBS/simcan.0/state
    two_controllers restart-ms 200
    listen "$first,0:0,#FFFFFFFF" 2
    turn simcan.0/state bus-off
    check "bus-off restarts by itself" "$(wait_until reads_now "$state" error-active && echo yes)" yes
    hears "sockets are told of bus-off and restart" 20000040#0000000000000000 20000100#0000000000000000
    logs "bus-off and restart are in the log" "1 $first state bus-off" "2 $first restart"
    listen "$second" 1
    cansend "$first" 123#01
    hears "frames cross after a restart" 123#01
    check "ip counts restart and bus-off" \
        "$(ip -d -s link show "$first" | sed -n '/re-started/{n;s/num.*//;p}' | xargs)" '1 0 0 0 0 1'
    turn simcan.0/fail_restart EIO
    turn simcan.0/state bus-off
    wait_until grep -q 'restart error EIO' "$KNOBS/log"
    reads "a failed restart stays bus-off" "$state" bus-off
    refuses "bus-off is left by a restart only" error-active "$state" 'Device or resource busy' bus-off
    ip link set "$first" down
    ip link set "$first" type can restart-ms 0
    ip link set "$first" up
    reads "a stop and a start end bus-off" "$state" error-active
    turn simcan.0/tx_errors 256
    reads "256 errors are bus-off" "$state" bus-off
    turn simcan.0/fail_restart EIO
    ip link set "$first" type can restart 2>/dev/null
    reads "a failed manual restart stays bus-off" "$state" bus-off
    check "a manual restart" "$(answer_of ip link set "$first" type can restart)" 'done'
    reads "a manual restart ends bus-off" "$state" error-active
}
