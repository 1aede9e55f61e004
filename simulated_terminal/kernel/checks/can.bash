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

# listen PORT[,FILTER] COUNT: candump in the background, which ends after COUNT frames or 30 s of silence.
listen() {
    heard=$(mktemp)
    candump -L -r 4000000 -n "$2" -T 30000 "$1" >"$heard" &
    listener=$!
    wait_until grep -qsw "${1%%,*}" /proc/net/can/rcvlist_{all,err,fil,sff}
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

check_can_mute_and_stall() {
    local n sent=0 said='' frames=()
    two_controllers
    turn simcan.0/mute 1
    for ((n = 0; n < 12; n++)); do
        cansend "$first" 111# && sent=$((sent + 1))
    done
    check "a mute controller takes all frames" "$sent" 12
    check "a mute controller finishes none" "$(counter "$first" tx_packets)" 0
    check "a mute controller hears nothing" \
        "$(outcome_of_writing 123# "$KNOBS/simcan.0/inject")" 'failed: Network is down'
    turn simcan.0/mute 0
    turn simcan.0/stall 1
    for ((n = 300; n < 350; n++)); do
        said=$(answer_of cansend "$first" "$n#")
        [[ $said == 'done' ]] || break
        frames+=("$n#")
    done
    check "a stalled controller's queue gets full" "$said" 'No buffer space available'
    check "it holds what ip says, and one frame that waits for the controller" "${#frames[@]}" 11
    listen "$second" "${#frames[@]}"
    turn simcan.0/stall 0
    hears "what the queue held goes out in order" "${frames[@]}"
}

check_can_acknowledgement() {
    local state=$KNOBS/simcan.0/state
    two_controllers
    ip link set "$second" down
    cansend "$first" 123#
    check "a frame is acknowledged by default" \
        "$(wait_until reads_now "/sys/class/net/$first/statistics/tx_packets" 1 && echo yes)" yes
    turn simcan.0/ack 0
    cansend "$first" 124#
    check "a sender without acknowledgement gets passive" \
        "$(wait_until reads_now "$state" error-passive && echo yes)" yes
    check "its error counter stays there" "$(can_shows "$first" '(berr-counter tx')" 128
    check "its frame does not go out" "$(counter "$first" tx_packets)" 1
    ip link set "$second" type can bitrate 125000
    ip link set "$second" up
    reads "a partner of another rate does not acknowledge" "$state" error-passive
    ip link set "$second" down
    ip link set "$second" type can bitrate 250000
    ip link set "$second" up
    check "a partner's start lets the frame out" \
        "$(wait_until reads_now "/sys/class/net/$second/statistics/rx_packets" 1 && echo yes)" yes
    check "the sender is better then" \
        "$(wait_until reads_now "$state" error-warning && echo yes)" yes
}

check_can_one_shot_and_loopback() {
    reload simcan=1
    first=$(<"$KNOBS/simcan.0/interface")
    turn simcan.0/ack 0
    ip link set "$first" up type can bitrate 250000 one-shot on berr-reporting on
    listen "$first,0:0,#FFFFFFFF" 1
    cansend "$first" 123#
    hears "a missing acknowledgement is told" 200002A8#0000801900000800
    check "a frame is tried once" \
        "$(wait_until reads_now "/sys/class/net/$first/statistics/tx_aborted_errors" 1 && echo yes)" yes
    ip link set "$first" down
    ip link set "$first" up type can bitrate 250000 one-shot off berr-reporting off loopback on
    listen "$first" 1
    cansend "$first" 124#5A
    hears "a loopback hears itself" 124#5A
    check "a loopback counts what it received" "$(counter "$first" rx_packets)" 1
    ip link set "$first" down
    ip link set "$first" up type can bitrate 250000 loopback off listen-only on
    cansend "$first" 125#
    check "a listener sends nothing" "$(counter "$first" tx_packets)" 1
}

check_can_inject() {
    local text inject=$KNOBS/simcan.0/inject
    two_controllers
    listen "$first" 5
    for text in 123#1122 12345678#01.02.03.04.05.06.07.08 123#R 00000001#R4 7ff#; do
        echo "$text" >"$inject"
    done
    hears "injected frames arrive" 123#1122 12345678#0102030405060708 123#R 00000001#R4 7FF#
    check "they are counted" "$(counter "$first" rx_packets)" 5
    check "the partner gets none of them" "$(counter "$second" rx_packets)" 0
    for text in 123 '#11' 12#11 1234#11 0x1#11 +12#11 800#11 20000000#11 123#1 123#112233445566778899 123#R9 \
        123#0x 12x#11 '123# 11'; do
        refuses "no frame is '$text'" "$text" "$inject" 'Invalid argument'
    done
    listen "$first" 1000
    turn simcan.0/flood 1000
    wait "$listener"
    check "a flood arrives in order" "$(awk '{ print $3 }' "$heard" | cksum)" \
        "$(for ((n = 0; n < 1000; n++)); do printf '100#%016X\n' "$n"; done | cksum)"
    rm "$heard"
    refuses "no flood is 0" 0 "$KNOBS/simcan.0/flood" 'Invalid argument'
    ip link set "$first" down
    refuses "nothing arrives at a stopped controller" 123# "$inject" 'Network is down'
}

# Family 29 is AF_CAN; the system's words are those for each later read and write.
check_can_presence() {
    local said
    two_controllers
    # shellcheck disable=SC2016  # Perl's variables
    said=$(perl -e '
        use Socket; $| = 1;
        socket(my $s, 29, SOCK_RAW, 1) or die;
        bind $s, pack("S x2 l x16", 29, $ARGV[0]) or die "bind: $!";
        sub knob { open my $k, ">", $ARGV[1] or die; syswrite $k, $_[0] }
        my ($frame, $set) = (pack("L C x3 x8", 0x123, 0), "");
        knob 0;
        vec($set, fileno $s, 1) = 1; select $set, undef, undef, 30;
        for (0, 1) { print defined sysread($s, my $in, 16) ? "read," : "$!,"; last unless $_ == 0;
            use Fcntl; fcntl $s, F_SETFL, O_NONBLOCK }
        print defined syswrite($s, $frame) ? "written," : "$!,";
        knob 1;
        print defined syswrite($s, $frame) ? "written" : "$!"' \
        "$(<"/sys/class/net/$first/ifindex")" "$KNOBS/simcan.0/present")
    check "a socket of a controller that goes" "$said" \
        'No such device,Resource temporarily unavailable,No such device or address,No such device or address'
    reads "a controller comes back under its name" "$KNOBS/simcan.0/interface" "$first"
    reads "it is stopped then" "$KNOBS/simcan.0/state" stopped
    check "it has forgotten its bit rate" "$(can_shows "$first" bitrate)" ''
    turn simcan.0/present 0
    reads "an absent controller has no interface" "$KNOBS/simcan.0/interface" ''
    reads "an absent controller has no state" "$KNOBS/simcan.0/state" 'failed: No such device'
    is_missing "an absent controller is gone" "/sys/class/net/$first"
    refuses "nothing arrives at an absent controller" 123# "$KNOBS/simcan.0/inject" 'No such device'
}

# send_without_end PORT, turn_knobs_without_end INDEX PORT: in the background, until killed.
send_without_end() {
    while true; do
        cangen "$1" -g 0 -n 200 -p 10 -L 8
    done
}

turn_knobs_without_end() {
    local folder=$KNOBS/simcan.$1
    while true; do
        echo bus-off >"$folder/state"
        echo 500 >"$folder/flood"
        echo 1 >"$folder/mute"
        echo 1 >"$folder/stall"
        cat "$folder/state"
        ip -details link show "$2"
        echo 0 >"$folder/mute"
        echo 0 >"$folder/stall"
    done
}

# Controllers go, come, stop and start amid traffic, bus-off and restarts. What goes wrong there
# is in check_kernel_log, or ends the machine.
check_can_under_load() {
    local round index helpers=() ports
    two_controllers restart-ms 1
    ports=("$first" "$second")
    for index in 0 1; do
        send_without_end "${ports[index]}" >/dev/null 2>&1 &
        helpers+=($!)
        turn_knobs_without_end "$index" "${ports[index]}" >/dev/null 2>&1 &
        helpers+=($!)
    done
    candump any >/dev/null 2>&1 &
    helpers+=($!)
    for ((round = 0; round < 16; round++)); do
        index=$((round % 2))
        if ((round % 4 < 2)); then
            turn "simcan.$index/present" 0
            turn "simcan.$index/present" 1
        fi
        ip link set "${ports[index]}" down
        ip link set "${ports[index]}" up type can bitrate 250000 restart-ms 1
    done
    check "the log saw bus-off and restarts under load" \
        "$(cut -d ' ' -f 3- "$KNOBS/log" | grep -Ex 'state bus-off|restart' | sort -u | paste -sd ,)" \
        'restart,state bus-off'
    kill "${helpers[@]}"
    wait "${helpers[@]}" 2>/dev/null
    check_frames_cross_again
    check "the module unloads after the load" "$(rmmod zr_terminal 2>&1)" ''
    insmod "$MODULE"
}

check_frames_cross_again() {
    local index port
    for index in 0 1; do
        port=$(<"$KNOBS/simcan.$index/interface")
        turn "simcan.$index/mute" 0
        turn "simcan.$index/stall" 0
        ip link set "$port" down
        ip link set "$port" up
    done
    listen "$second,321:7FF" 1
    cansend "$first" 321#
    hears "frames cross after the load" 321#
}
