# shellcheck shell=bash disable=SC2034,SC2154  # the parts share their variables
# What the bus of the board's own CAN controllers does, and what goes wrong on it.

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

# A slow controller that nobody hears blocks the bus with the best identifier until it is passive,
# 16 tries of 22 ms each. Meanwhile the other two get ready, the worse identifier first. Prints the
# milliseconds in between: a trial counts only when they were ready in time.
compete() {
    # shellcheck disable=SC2016  # Perl's variables
    perl -MTime::HiRes=time -MSocket -e '
        my @sockets = map { socket my $s, 29, SOCK_RAW, 1 or die;
            bind $s, pack("S x2 l x16", 29, $_) or die "bind: $!"; $s } @ARGV;
        my $begin = time;
        for my $id (0, 0x400, 0x300) {
            syswrite shift @sockets, pack("L C x3 x8", $id, $id ? 0 : 8) or die "write: $!" }
        printf "%d\n", (time - $begin) * 1000' "$@"
}

check_can_arbitration() {
    local third trial milliseconds index=()
    for ((trial = 0; trial < 5; trial++)); do
        reload simcan=3
        first=$(<"$KNOBS/simcan.0/interface")
        second=$(<"$KNOBS/simcan.1/interface")
        third=$(<"$KNOBS/simcan.2/interface")
        turn simcan.2/ack 0
        ip link set "$third" up type can bitrate 5000
        ip link set "$second" up type can bitrate 250000
        ip link set "$first" up type can bitrate 250000
        listen "$first" 2
        mapfile -t index < <(cat "/sys/class/net/"{"$third","$first","$second"}/ifindex)
        milliseconds=$(compete "${index[@]}")
        ((milliseconds >= 300)) || break
        kill "$listener"
    done
    hears "the lower identifier goes first" 300# 400#
    reads "a passive sender does not block the bus" "$KNOBS/simcan.2/state" error-passive
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
