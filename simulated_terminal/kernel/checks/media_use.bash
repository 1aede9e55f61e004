# shellcheck shell=bash
# The cameras' paths in use: streams, failures, presence, and all of it at once.

# The first line that tells whether a node brings frames: "frames" or the system's words.
# v4l2-ctl sets the detected standard by itself, and ends well when streaming fails.
stream_outcome() {
    local text
    text=$(timeout 60 v4l2-ctl -d "$(node_of "$1")" \
        --set-fmt-video=width=720,height="$2",pixelformat=UYVY \
        --stream-mmap --stream-count=2 --stream-to=/dev/null 2>&1)
    case $text in
        *'VIDIOC_STREAMON returned -1 ('*)
            text=${text##*VIDIOC_STREAMON returned -1 (}
            printf '%s' "${text%%)*}"
            ;;
        *'<<'*) printf 'frames' ;;
        *) printf '%s' "$text" ;;
    esac
}

stream_is() {
    [[ $(sed -n 's/^stream //p' "$KNOBS/$1/state") == "$2" ]]
}

# start_stream ENTITY FOLDER
start_stream() {
    v4l2-ctl -d "$(node_of "$1")" --stream-mmap --stream-to=/dev/null >/dev/null 2>&1 &
    streamer=$!
    wait_until stream_is "$2" streaming
}

stop_stream() {
    kill "$streamer" 2>/dev/null
    wait "$streamer" 2>/dev/null
}

check_media_streams() {
    reload variant=dual
    check "no stream without links" "$(stream_outcome 'ipu1_csi1 capture' 576)" \
        'Link has been severed'
    link_tw_dual
    standard_ioctl set "$TW" 0xff >/dev/null
    set_tw_dual 720x576
    check "the dual processor's path of cameras 0 and 2" \
        "$(stream_outcome 'ipu1_csi1 capture' 576)" frames
    turn tw9912/camera.0/detects ntsc
    check "formats set before the standard do not match" \
        "$(stream_outcome 'ipu1_csi1 capture' 576)" 'Broken pipe'
    set_tw_dual 720x480
    check "formats set after it do" "$(stream_outcome 'ipu1_csi1 capture' 480)" frames
    media-ctl -V "'ipu1_csi1':0 [fmt:YUYV2X8/720x480]"
    check "another code on the way does not match" \
        "$(stream_outcome 'ipu1_csi1 capture' 480)" 'Broken pipe'
    set_tw_dual 720x480
    media-ctl -V "'ipu1_csi1':0 [fmt:UYVY2X8/720x480 field:seq-tb]"
    check "another field on the way does not match" \
        "$(stream_outcome 'ipu1_csi1 capture' 480)" 'Broken pipe'
    link_up "$TW" 0 ipu1_csi1_mux 4 0
    check "no stream without a decoder at the start" \
        "$(stream_outcome 'ipu1_csi1 capture' 480)" 'Link has been severed'
    link_adv 5
    standard_ioctl set "$ADV" 0xff >/dev/null
    set_adv 720x576 5
    check "the dual processor's path of camera 1" "$(stream_outcome 'ipu1_csi0 capture' 576)" frames
    start_stream 'ipu1_csi0 capture' ipu1_csi0_capture
    check "no standard while streaming" "$(standard_ioctl set "$ADV" 0xff)" 'Device or resource busy'
    check "no format while streaming" \
        "$(media_answer media-ctl -V "'imx6-mipi-csi2':0 [fmt:UYVY2X8/720x576]")" \
        'Device or resource busy'
    check "no link while streaming" \
        "$(media_answer link_up imx6-mipi-csi2 1 ipu1_csi0_mux 0 0)" 'Device or resource busy'
    check "detection while streaming" "$(standard_ioctl query "$ADV")" 0xff
    stop_stream
    check "a standard after streaming" "$(standard_ioctl set "$ADV" 0xff)" 0xff
    reload variant=quad
    link_adv 2
    standard_ioctl set "$ADV" 0xff >/dev/null
    set_adv 720x576 2
    check "the quad processor's path of camera 1" "$(stream_outcome 'ipu1_csi0 capture' 576)" frames
    link_up "$TW" 0 ipu2_csi1_mux 1
    link_up ipu2_csi1_mux 2 ipu2_csi1 0
    link_up ipu2_csi1 2 'ipu2_csi1 capture' 0
    standard_ioctl set "$TW" 0xff >/dev/null
    media-ctl -V "'$TW':0 [fmt:UYVY2X8/720x576 field:none],'ipu2_csi1_mux':2 [fmt:UYVY2X8/720x576 field:none],'ipu2_csi1':0 [fmt:UYVY2X8/720x576@1/50 field:none],'ipu2_csi1':2 [fmt:AYUV32/720x576@1/50 field:none]"
    check "the quad processor's path of cameras 0 and 2" \
        "$(stream_outcome 'ipu2_csi1 capture' 576)" frames
}

check_media_failures() {
    local each
    reload variant=dual
    for each in fail_info fail_entities fail_links; do
        turn "media/$each" 'EIO -1'
        check "the graph cannot be read with $each" \
            "$(media-ctl -p >/dev/null 2>&1 && echo read || echo failed)" failed
        turn "media/$each" 0
    done
    turn media/fail_topology EIO
    check "the topology cannot be read" \
        "$(v4l2-compliance -M /dev/media0 | grep -c 'MEDIA_IOC_G_TOPOLOGY: FAIL')" 1
    check "the graph can be read again" "$(links_found | wc -l)" 14
    turn tw9912/fail_open ENXIO
    check "a node's opening fails by its knob" "$(standard_ioctl get "$TW")" \
        'open: No such device or address'
    check "the next opening succeeds" "$(standard_ioctl get "$TW")" 0xb000
}

check_media_presence() {
    local decoder
    reload variant=dual
    link_tw_dual
    standard_ioctl set "$TW" 0xff >/dev/null
    set_tw_dual 720x576
    decoder=$(node_of "$TW")
    exec 7<>"$decoder"
    turn tw9912/present 0
    check "a decoder that is gone is not in the graph" "$(links_found | grep -c "$TW")" 0
    check "a decoder that is gone answers no device" \
        "$(perl -e 'ioctl STDIN, 0x8008563f, my $mask = "\0" x 8; print $!' <&7)" 'No such device'
    check "its multiplexer takes another input" \
        "$(media_answer link_up imx6-mipi-csi2 1 ipu1_csi1_mux 0)" 'done'
    check "and gives it back" "$(media_answer link_up imx6-mipi-csi2 1 ipu1_csi1_mux 0 0)" 'done'
    turn tw9912/present 1
    check "a decoder comes back without links" "$(links_found | grep "$TW")" \
        "$TW:0 -> ipu1_csi1_mux:4 []"
    check "and as after power on" "$(standard_ioctl get "$TW")" 0xb000
    exec 7<&-
    link_up "$TW" 0 ipu1_csi1_mux 4
    standard_ioctl set "$TW" 0xff >/dev/null
    set_tw_dual 720x576
    start_stream 'ipu1_csi1 capture' ipu1_csi1_capture
    turn tw9912/present 0
    check "a stream without its decoder fails" \
        "$(wait_until grep -qs 'ipu1_csi1_capture stream error EIO' "$KNOBS/log" && echo yes)" yes
    turn tw9912/present 1
    stop_stream
    exec 7<>"$(node_of ipu1_csi1)" 8<>/dev/media0
    turn media/present 0
    is_missing "a media device that is gone has no node" /dev/media0
    is_missing "nor have its sub-devices" /dev/v4l-subdev0
    check "the module cannot go while a node is open" "$(rmmod zr_terminal 2>&1)" \
        'rmmod: ERROR: Module zr_terminal is in use'
    turn media/present 1
    check "a media device comes back whole" "$(media-ctl -p | grep -c '^- entity')" 9
    exec 7<&- 8<&-
    turn media/present 0
    turn media/present 1
    check "and again" "$(media-ctl -p | grep -c '^- entity')" 9
}

# failures_of WHAT NODE...: how many of its tests the kernel's own examination finds failed.
failures_of() {
    v4l2-compliance "$@" | sed -n 's/^Total.*Failed: \([0-9]*\).*/\1/p'
}

check_media_compliance() {
    reload variant=dual
    check "the media device is as the kernel wants it" "$(failures_of -M /dev/media0)" 0
    check "so is the decoder of cameras 0 and 2" "$(failures_of -u "$(node_of "$TW")")" 0
    check "so is the decoder of camera 1" "$(failures_of -u "$(node_of "$ADV")")" 0
    check "so are receiver and multiplexers" "$(failures_of -u "$(node_of imx6-mipi-csi2)")$(
        failures_of -u "$(node_of ipu1_csi0_mux)")" 00
    # It knows interfaces with an interval on one pad only: three complaints, one a pad.
    check "interfaces have intervals on three pads" "$(v4l2-compliance -u "$(node_of ipu1_csi1)" |
        grep FAIL | sort | uniq -c | xargs)" '3 test VIDIOC_SUBDEV_G/S_FRAME_INTERVAL: FAIL'
}

# Uses of the graph, again and again until their parent ends them.
use_graph() {
    while true; do
        {
            media-ctl -p
            link_tw_dual
            set_tw_dual 720x576
            timeout 5 v4l2-ctl -d "$(node_of 'ipu1_csi1 capture')" --stream-mmap --stream-count=5
        } >/dev/null 2>&1
    done
}

open_nodes() {
    local node
    while true; do
        for node in /dev/v4l-subdev* /dev/video* /dev/media0; do
            # For reading: for both the shell would make a file where a node has just gone.
            { exec 7<"$node" && exec 7<&-; } 2>/dev/null
        done
    done
}

check_media_under_load() {
    local round present users=()
    reload variant=dual
    use_graph &
    users+=($!)
    open_nodes &
    users+=($!)
    disturb "$KNOBS"/{tw9912,ipu1_csi1}/formats "$KNOBS/media/links" \
        "$KNOBS"/tw9912/camera.*/{detects,signal} &
    users+=($!)
    for ((round = 0; round < 15; round++)); do
        for present in "$KNOBS"/{tw9912,ipu1_csi1_mux,ipu1_csi1_capture,ipu1_csi1,media}/present; do
            echo 0 >"$present"
            sleep 0.1
            echo 1 >"$present"
        done
    done
    kill "${users[@]}"
    wait "${users[@]}" 2>/dev/null
    wait_until module_is_idle
    check "the graph is whole after 15 rounds under load" \
        "$(media-ctl -p | grep -c '^- entity')" 9
    check "the module unloads after them" "$(reload 2>&1)" ''
}

module_is_idle() {
    [[ $(</sys/module/zr_terminal/refcnt) -eq 0 ]]
}
