# shellcheck shell=bash disable=SC2034,SC2154  # the parts share their variables
# Capture nodes, seen by media-ctl, v4l2-ctl, v4l2-compliance and GStreamer's v4l2src.

readonly FRAMES=$folder/frames.pl
readonly SHARED=$KNOBS/ipu1_csi1_capture # cameras 0 and 2
readonly SINGLE=$KNOBS/ipu1_csi0_capture # camera 1

# state_word KNOB_FOLDER WORD: what stands behind it in the state; nothing while the node is not there.
state_word() {
    sed -n "s/^$2 //p" "$1/state"
}

readonly SHARED_LINKS="'tw9912':0 -> 'ipu1_csi1_mux':4[1], 'ipu1_csi1_mux':5 -> 'ipu1_csi1':0[1],
    'ipu1_csi1':2 -> 'ipu1_csi1 capture':0[1]"
readonly SINGLE_LINKS="'adv7180':0 -> 'imx6-mipi-csi2':0[1], 'imx6-mipi-csi2':1 -> 'ipu1_csi0_mux':0[1],
    'ipu1_csi0_mux':5 -> 'ipu1_csi0':0[1], 'ipu1_csi0':2 -> 'ipu1_csi0 capture':0[1]"

# What fails ends a call of media-ctl: the path whose decoder comes and goes is the last one.
link_paths() {
    media-ctl -l "${SINGLE_LINKS//$'\n'/ }, ${SHARED_LINKS//$'\n'/ }"
}

# format_path SIZE INTERFACE PART:PAD...: what the parts before the interface carry, then it.
format_path() {
    local size=$1 interface=$2 pad text=''
    shift 2
    for pad in "$@"; do
        text+="'${pad%:*}':${pad##*:} [fmt:UYVY2X8/$size field:none],"
    done
    media-ctl -V "$text'$interface':0 [fmt:UYVY2X8/$size@1/50 field:none],'$interface':2 [fmt:AYUV32/$size@1/50 field:none]"
}

# shared_path pal|ntsc, single_path likewise: standard and formats from the decoder to the node.
shared_path() {
    local size=720x576 camera
    [[ $1 == pal ]] || size=720x480
    for camera in 0 2; do
        turn "tw9912/camera.$camera/detects" "$1"
    done
    v4l2-ctl -d "$(media-ctl -e tw9912)" -s "$1" >/dev/null
    format_path "$size" ipu1_csi1 tw9912:0 ipu1_csi1_mux:5
}

single_path() {
    local size=720x576
    [[ $1 == pal ]] || size=720x480
    turn adv7180/camera.1/detects "$1"
    v4l2-ctl -d "$(media-ctl -e adv7180)" -s "$1" >/dev/null
    format_path "$size" ipu1_csi0 adv7180:0 imx6-mipi-csi2:0 imx6-mipi-csi2:1 ipu1_csi0_mux:5
}

# A board with both paths ready for PAL; the nodes in `shared` and `single`.
capture_board() {
    reload variant=dual tw9912=tw9912 adv7180=adv7180
    link_paths
    shared_path pal
    single_path pal
    shared=$(state_word "$SHARED" node)
    single=$(state_word "$SINGLE" node)
}

# stream NODE [OPTION...]: what v4l2-ctl says of a stream, without its progress.
stream() {
    local node=$1
    shift
    v4l2-ctl -d "$node" "$@" --stream-mmap 2>&1 | tr -d '<\n\t' |
        sed 's/ *[0-9.]* fps\(, dropped buffers: [0-9]*\)*//g'
}

# frames NODE FORMAT SIZE COUNT: a line for each captured frame.
frames() {
    local captured
    captured=$(mktemp)
    stream "$1" --set-fmt-video="pixelformat=$2" --stream-count="$4" --stream-to="$captured"
    perl "$FRAMES" "$2" "$3" <"$captured"
    rm "$captured"
}

# The same without what moves, lines that are alike only once.
views() {
    frames "$@" | awk '{ print $1, $2, $4, $6 }' | uniq
}

# A stream in the background. end_stream waits for its end; what it said is in `said` then.
begin_stream() {
    heard=$(mktemp)
    stream "$1" --stream-to=/dev/null >"$heard" &
    streamer=$!
    wait_until streams "$2" || echo "no stream begins" >&2
}

streams() {
    local count
    count=$(state_word "$1" frames)
    [[ $(state_word "$1" stream) == streaming && ${count:-0} -gt ${2:-0} ]]
}

end_stream() {
    wait "$streamer"
    said=$(<"$heard")
    rm "$heard"
}

check_capture_nodes() {
    capture_board
    check "a node is called as its entity" "$(cat "/sys/class/video4linux/${shared##*/}/name")" \
        'ipu1_csi1 capture'
    check "the media device tells a node's device" "$(media-ctl -e 'ipu1_csi1 capture')" "$shared"
    check "a node has its formats" "$(v4l2-ctl -d "$shared" --list-formats | grep -o "'....'" |
        paste -sd ' ')" "'UYVY' 'YUYV' 'NV12'"
    check "a node has the size of its path" "$(v4l2-ctl -d "$shared" --list-framesizes UYVY |
        sed -n 's/.*Size: //p')" 'Discrete 720x576'
    check "PAL has 25 frames a second" "$(v4l2-ctl -d "$shared" \
        --list-frameintervals width=720,height=576,pixelformat=UYVY | grep -o '([0-9.]* fps)' |
        paste -sd ' ')" '(25.000 fps)'
    shared_path ntsc
    check "NTSC has its own rate and PAL's" "$(v4l2-ctl -d "$shared" \
        --list-frameintervals width=720,height=480,pixelformat=UYVY | grep -o '([0-9.]* fps)' |
        paste -sd ' ')" '(29.970 fps) (25.000 fps)'
    check "the standard sets the rate" "$(v4l2-ctl -d "$shared" -P | grep -o '([0-9/]*)')" \
        '(30000/1001)'
    check "another size becomes that of the path" "$(v4l2-ctl -d "$shared" \
        --set-fmt-video=width=64,height=64,pixelformat=NV12 --get-fmt-video |
        sed -n 's/.*\(Width\|Bytes per\|Size\).*: //p' | paste -sd ' ')" '720/480 720 518400'
    check "a node answers for its decoder" "$(v4l2-ctl -d "$shared" --get-detected-standard |
        head -n 1)" 'Video Standard = 0x0000b000'
    v4l2-ctl -d "$shared" -s pal >/dev/null
    reads "a node sets its decoder's standard" "$KNOBS/tw9912/standard" 0xff
}

check_capture_pictures() {
    local format
    capture_board
    for format in UYVY YUYV NV12; do
        check "camera 0 in $format" "$(views "$shared" "$format" 720x576 3)" '0 pal 1 red'
        check "camera 1 in $format" "$(views "$single" "$format" 720x576 3)" '1 pal 2 green'
    done
    v4l2-ctl -d "$shared" -c 0x009819c2=1
    check "input 1 is camera 2" "$(views "$shared" UYVY 720x576 3)" '2 pal 3 blue'
    v4l2-ctl -d "$shared" -c 0x009819c2=2
    check "input 2 is camera 2" "$(views "$shared" UYVY 720x576 3)" '2 pal 3 blue'
    v4l2-ctl -d "$single" -c 0x009819c2=1
    check "the single decoder has one camera" "$(views "$single" UYVY 720x576 3)" '1 pal 2 green'
    shared_path ntsc
    check "NTSC has its size" "$(views "$shared" NV12 720x480 3)" '2 ntsc 3 blue'
    v4l2-ctl -d "$shared" -c 0x009819c2=0
    check "frames move" "$(frames "$shared" UYVY 720x480 20 |
        awk '$5 != $3 % 56 * 12 || $3 <= last && NR > 1 { print } { last = $3 }')" ''
}

# By the times and numbers of 20 frames: a busy host loses some. The board's time never runs ahead of the kernel's.
check_capture_rate() {
    local standard begun
    capture_board
    for standard in pal ntsc; do
        shared_path "$standard"
        read -r begun _ </proc/uptime
        check "frames come at the rate of $standard" "$(v4l2-ctl -d "$shared" --verbose \
            --set-fmt-video=pixelformat=UYVY --stream-mmap --stream-count=20 2>&1 | tr -d '<' | awk -v "begun=$begun" '
                /seq:/ {
                    for (i = 1; i < NF; i++) {
                        if ($i == "seq:") number = $(i + 1)
                        if ($i == "ts:") time = $(i + 1)
                    }
                    if (!n++) { first = number; start = time }
                }
                END {
                    getline <"/proc/uptime"
                    period = n > 1 ? (time - start) / (number - first) : 0
                    if (start < begun || time > $1 + .01) print "frames of " start " to " time " at " $1
                    else if (.0399 < period && period < .0401) print "pal"
                    else if (.0333 < period && period < .0334) print "ntsc"
                    else print period " s for each of " n
                }')" "$standard"
    done
}

# colour_with CONTROL=VALUE: y,u,v of camera 0's red, which is 81,90,240.
colour_with() {
    v4l2-ctl -d "$shared" -c "$1"
    frames "$shared" UYVY 720x576 1 | cut -d ' ' -f 7
    v4l2-ctl -d "$shared" -c brightness=0,contrast=127,saturation=127,hue=0
}

check_capture_controls() {
    capture_board
    check "the controls are those" "$(v4l2-ctl -d "$shared" -l |
        sed -n 's/.*\(0x[0-9a-f]*\) (int) *: \(.*\) value=.*/\1 \2/p' | paste -sd ,)" \
        "0x00980900 min=-128 max=127 step=1 default=0,0x00980901 min=0 max=255 step=1 default=127,0x00980902 min=0 max=255 step=1 default=127,0x00980903 min=-128 max=127 step=1 default=0,0x009819c2 min=0 max=2 step=1 default=0"
    check "brightness is added" "$(colour_with brightness=50)" 131,90,240
    check "brightness has limits" "$(colour_with brightness=-128)" 16,90,240
    check "contrast stretches" "$(colour_with contrast=254)" 146,90,240
    check "no contrast is black" "$(colour_with contrast=1)" 16,90,240
    check "saturation weakens" "$(colour_with saturation=0)" 81,128,128
    check "hue turns" "$(colour_with hue=64)" 81,16,90
    empty_log
    v4l2-ctl -d "$shared" -c 0x009819c2=2
    v4l2-ctl -d "$shared" -c 0x009819c2=2
    v4l2-ctl -d "$shared" -c hue=-5
    logs "settings are in the log" '1 ipu1_csi1_capture input_select 2' \
        '2 ipu1_csi1_capture input_select 2' '3 ipu1_csi1_capture hue -5'
    check "the state tells them" "$(state_word "$SHARED" input_select),$(state_word "$SHARED" hue)" 2,-5
    turn ipu1_csi1_capture/fail_s_ctrl EIO
    check "a setting fails by its knob" "$(answer_of v4l2-ctl -d "$shared" -c hue=7)" \
        'Input/output error'
    check "the next setting is taken" "$(answer_of v4l2-ctl -d "$shared" -c hue=8)" 'done'
    turn ipu1_csi1_capture/fail_g_ctrl 'EPERM 1'
    check "a reading fails by its knob" "$(v4l2-ctl -d "$shared" -C hue 2>&1 | head -n 1)" \
        'VIDIOC_G_CTRL: failed: Operation not permitted'
    check "the next reading succeeds" "$(v4l2-ctl -d "$shared" -C hue)" 'hue: 8'
}

check_capture_refusals() {
    local broken='VIDIOC_STREAMON returned -1 (Broken pipe)'
    local severed='VIDIOC_STREAMON returned -1 (Link has been severed)'
    capture_board
    media-ctl -V "'ipu1_csi1':0 [fmt:UYVY2X8/720x480 field:none]"
    check "a mismatch on the path refuses" "$(stream "$shared" --stream-count=1)" "$broken"
    shared_path pal
    check "a matching path streams" "$(stream "$shared" --stream-count=1)" ''
    shared_path ntsc
    check "a node with another size refuses" "$(stream "$shared" --stream-count=1)" "$broken"
    check "a node that is set anew streams" \
        "$(stream "$shared" --set-fmt-video=pixelformat=UYVY --stream-count=1)" ''
    media-ctl -l "'tw9912':0 -> 'ipu1_csi1_mux':4[0]"
    check "a path without a decoder refuses" "$(stream "$shared" --stream-count=1)" "$severed"
    media-ctl -l "'tw9912':0 -> 'ipu1_csi1_mux':4[1]"
    media-ctl -l "'ipu1_csi1':2 -> 'ipu1_csi1 capture':0[0]"
    check "a node without a link refuses" "$(stream "$shared" --stream-count=1)" "$severed"
    media-ctl -l "'ipu1_csi1':2 -> 'ipu1_csi1 capture':0[1]"
    turn ipu1_csi1_capture/fail_streamon 'ENOSPC 2'
    check "a start fails by its knob" "$(stream "$shared" --stream-count=1)" \
        'VIDIOC_STREAMON returned -1 (No space left on device)'
    reads "the knob counts" "$SHARED/fail_streamon" 'ENOSPC 1'
    turn ipu1_csi1_capture/fail_streamon 0
    turn ipu1_csi1_capture/fail_open EACCES
    check "opening fails by its knob" \
        "$(v4l2-ctl -d "$shared" -D 2>&1)" "Failed to open $shared: Permission denied"
    check "the next opening succeeds" "$(answer_of v4l2-ctl -d "$shared" -C hue)" 'done'
}

check_capture_streaming() {
    capture_board
    empty_log
    begin_stream "$shared" "$SHARED"
    check "another standard is refused while it streams" \
        "$(answer_of v4l2-ctl -d "$shared" -s ntsc)" 'Device or resource busy'
    check "a format is refused while it streams" \
        "$(answer_of v4l2-ctl -d "$shared" --set-fmt-video=pixelformat=NV12)" \
        'Device or resource busy'
    check "a link is refused while it streams" \
        "$(media-ctl -l "'tw9912':0 -> 'ipu1_csi1_mux':4[0]" 2>&1 | grep -c busy)" 1
    turn ipu1_csi1_capture/stall 1
    reads "stall reads back" "$SHARED/stall" 1
    begun=$(state_word "$SHARED" frames)
    sleep 1.5
    check "a stalled stream has at most the frame that was on its way" \
        "$(($(state_word "$SHARED" frames) - begun < 2))" 1
    check "a stalled stream is no failed one" "$(state_word "$SHARED" stream)" streaming
    begun=$(state_word "$SHARED" frames)
    turn ipu1_csi1_capture/stall 0
    check "it goes on" "$(wait_until streams "$SHARED" "$begun" && echo yes)" yes
    refuses "no frame at all is refused" 0 "$SHARED/every" 'Invalid argument'
    turn ipu1_csi1_capture/every 25000
    sleep 0.5
    begun=$(state_word "$SHARED" frames)
    sleep 1.5
    check "of many frames the first alone is delivered" "$(state_word "$SHARED" frames)" "$begun"
    check "and the stream is no failed one" "$(state_word "$SHARED" stream)" streaming
    turn ipu1_csi1_capture/every 1
    check "all frames go on" "$(wait_until streams "$SHARED" "$begun" && echo yes)" yes
    turn tw9912/camera.0/signal 0
    end_stream
    check "without a signal a stream fails" "$said" 'VIDIOC_DQBUF: failed: Input/output error'
    check "a stream that ended is stopped" "$(state_word "$SHARED" stream)" stopped
    logs "a stream's life is in the log" '1 tw9912 standard 0xff' '2 ipu1_csi1_capture streamon' \
        '3 ipu1_csi1_capture stream error EIO' '4 ipu1_csi1_capture streamoff'
    turn tw9912/camera.0/signal 1
    check "it streams again with the signal" "$(stream "$shared" --stream-count=2)" ''
    begin_stream "$single" "$SINGLE"
    turn adv7180/present 0
    end_stream
    check "without its decoder a stream fails" "$said" 'VIDIOC_DQBUF: failed: Input/output error'
}

check_capture_presence() {
    capture_board
    exec 7<>"$shared"
    begin_stream "$shared" "$SHARED"
    turn ipu1_csi1_capture/present 0
    end_stream
    check "who streams hears that the node has gone" "$said" 'VIDIOC_DQBUF: failed: No such device'
    check "its entity is gone, though the node is open" "$(media-ctl -p | grep -c 'ipu1_csi1 capture')" 0
    is_missing "the node is gone" "$shared"
    reads "it has no state" "$SHARED/state" ''
    turn ipu1_csi1_capture/present 1
    exec 7<&-
    shared=$(state_word "$SHARED" node)
    check "it comes back without its link" "$(stream "$shared" --stream-count=1)" \
        'VIDIOC_STREAMON returned -1 (Link has been severed)'
    media-ctl -l "'ipu1_csi1':2 -> 'ipu1_csi1 capture':0[1]"
    check "it streams when it is linked" "$(views "$shared" UYVY 720x576 2)" '0 pal 1 red'
    begin_stream "$shared" "$SHARED"
    turn media/present 0
    end_stream
    check "who streams hears that all is gone" "$said" 'VIDIOC_DQBUF: failed: No such device'
}

check_capture_gstreamer() {
    local captured standard size
    capture_board
    captured=$(mktemp)
    for standard in pal:576 ntsc:480; do
        size=720x${standard#*:}
        shared_path "${standard%:*}"
        gst-launch-1.0 -q v4l2src "device=$shared" num-buffers=3 ! video/x-raw,framerate=25/1 ! \
            filesink "location=$captured" >/dev/null 2>&1
        check "v4l2src takes ${standard%:*} as 25 frames a second" \
            "$(perl "$FRAMES" "$(state_word "$SHARED" format | cut -c 1-4)" "$size" <"$captured" |
                awk '{ print $1, $2, $4, $6 }' | uniq)" "0 ${standard%:*} 1 red"
    done
    rm "$captured"
}

# One complaint is not about the node: the tool and the kernel of Debian 12 name NV12 differently.
check_capture_compliance() {
    local node
    capture_board
    for node in "$shared" "$single"; do
        check "v4l2-compliance has nothing to say of ${node##*/}" \
            "$(v4l2-compliance -d "$node" -s 5 2>&1 | grep -E 'fail:|^Total' |
                grep -v "was 'Y/UV 4:2:0', expected 'Y/CbCr 4:2:0'" |
                sed 's/^Total.*, \(Failed: [0-9]*\).*/\1/')" 'Failed: 1'
    done
}

# Starts and stops a node's stream again and again, for as long as the file is there.
stream_while() {
    while [[ -e $1 ]]; do
        v4l2-ctl -d "$2" --stream-mmap --stream-count=3 >/dev/null 2>&1
    done
}

# Nodes, decoders and the media device come and go below two streams.
disturb_streams() {
    local round streamers=() busy
    busy=$(mktemp)
    stream_while "$busy" "$shared" &
    streamers+=($!)
    stream_while "$busy" "$single" &
    streamers+=($!)
    for ((round = 0; round < 10; round++)); do
        turn ipu1_csi1_capture/present 0
        turn ipu1_csi1_capture/present 1
        turn tw9912/present $((round % 2))
        link_paths >/dev/null 2>&1
        if ((round % 3 == 2)); then
            turn media/present 0
            turn media/present 1
            link_paths >/dev/null 2>&1
        fi
    done
    rm "$busy"
    wait "${streamers[@]}"
}

# A node comes and goes below programs that start its stream by reading and polling alone.
disturb_readers() {
    local round reader busy
    busy=$(mktemp)
    perl "$folder/read_and_poll.pl" "$busy" "$SINGLE/state" &
    reader=$!
    for ((round = 0; round < 30; round++)); do
        turn ipu1_csi0_capture/present 0
        turn ipu1_csi0_capture/present 1
        media-ctl -l "'ipu1_csi0':2 -> 'ipu1_csi0 capture':0[1]" >/dev/null 2>&1
    done
    rm "$busy"
    wait "$reader"
}

check_capture_under_load() {
    capture_board
    disturb_streams
    capture_board
    check "both nodes stream after 10 rounds under load" \
        "$(stream "$shared" --stream-count=2)$(stream "$single" --stream-count=2)" ''
    disturb_readers
    capture_board
    check "a node streams after 30 rounds under readers" "$(stream "$single" --stream-count=2)" ''
}
