# shellcheck shell=bash
# The cameras' paths: links, formats, standards, failures, by media-ctl and v4l2-ctl.

readonly TW='tw9912 1-0044'
readonly ADV='adv7180 1-0020'

# What media-ctl or v4l2-ctl answer: "done" or the system's words.
media_answer() {
    local message
    if message=$("$@" 2>&1); then
        printf 'done'
    else
        message=${message##*$'\n'}
        message=${message##*: }
        printf '%s' "${message% (*)}"
    fi
}

node_of() {
    media-ctl -e "$1"
}

# All links as media-ctl finds them: source, pad, sink, pad, flags.
links_found() {
    media-ctl -p | awk -F '"' '
        /^- entity/ { split($0, part, /: | \([0-9]+ pad/); name = part[2] }
        /^\tpad[0-9]+:/ { pad = $0; gsub(/[^0-9]/, "", pad) }
        /->/ { state = $3; sub(/^:/, "", state); print name ":" pad " -> " $2 ":" state }' | sort
}

format_of() {
    media-ctl --get-v4l2 "'$1':$2" | tr -d '\t[]' | sed 's/ colorspace.*//'
}

# standard_ioctl set|get|query ENTITY|NODE [MASK]: the mask in hexadecimal, or the system's words.
standard_ioctl() {
    local node=$2
    [[ $node == /* ]] || node=$(node_of "$2")
    # shellcheck disable=SC2016  # Perl's variables
    perl -e 'my %number = (set => 0x40085618, get => 0x80085617, query => 0x8008563f);
        open my $node, "+<", $ARGV[1] or print("open: $!"), exit;
        my $mask = pack "Q", hex($ARGV[2] // 0);
        my $done = ioctl $node, $number{$ARGV[0]}, $mask;
        printf "%s", $done ? sprintf("0x%x", unpack "Q", $mask) : $!' \
        "$1" "$node" "${3:-}"
}

link_up() {
    media-ctl -l "'$1':$2 -> '$3':$4[${5:-1}]"
}

# The path of cameras 0 and 2 on the dual processor.
link_tw_dual() {
    link_up "$TW" 0 ipu1_csi1_mux 4
    link_up ipu1_csi1_mux 5 ipu1_csi1 0
    link_up ipu1_csi1 2 'ipu1_csi1 capture' 0
}

# set_tw_dual SIZE
set_tw_dual() {
    media-ctl -V "'$TW':0 [fmt:UYVY2X8/$1],'ipu1_csi1_mux':5 [fmt:UYVY2X8/$1],'ipu1_csi1':0 [fmt:UYVY2X8/$1@1/50],'ipu1_csi1':2 [fmt:AYUV32/$1@1/50]"
}

# link_adv MUX_OUTPUT
link_adv() {
    link_up "$ADV" 0 imx6-mipi-csi2 0
    link_up imx6-mipi-csi2 1 ipu1_csi0_mux 0
    link_up ipu1_csi0_mux "$1" ipu1_csi0 0
    link_up ipu1_csi0 2 'ipu1_csi0 capture' 0
}

# set_adv SIZE MUX_OUTPUT: the closing comma makes media-ctl answer an error after the last pad.
set_adv() {
    media-ctl -V "'$ADV':0 [fmt:UYVY2X8/$1 field:none],'imx6-mipi-csi2':0 [fmt:UYVY2X8/$1 field:none],'imx6-mipi-csi2':1 [fmt:UYVY2X8/$1 field:none],'ipu1_csi0_mux':$2 [fmt:UYVY2X8/$1 field:none],'ipu1_csi0':0 [fmt:UYVY2X8/$1@1/50 field:none],'ipu1_csi0':2 [fmt:AYUV32/$1@1/50 field:none]," \
        >/dev/null 2>&1
}

check_media_graph() {
    reload variant=dual
    check "the dual processor's links" "$(links_found)" "$(
        sort <<LINKS
$ADV:0 -> imx6-mipi-csi2:0 []
$TW:0 -> ipu1_csi1_mux:4 []
imx6-mipi-csi2:1 -> ipu1_csi0_mux:0 []
imx6-mipi-csi2:1 -> ipu1_csi1_mux:0 []
imx6-mipi-csi2:2 -> ipu1_csi0_mux:1 []
imx6-mipi-csi2:2 -> ipu1_csi1_mux:1 []
imx6-mipi-csi2:3 -> ipu1_csi0_mux:2 []
imx6-mipi-csi2:3 -> ipu1_csi1_mux:2 []
imx6-mipi-csi2:4 -> ipu1_csi0_mux:3 []
imx6-mipi-csi2:4 -> ipu1_csi1_mux:3 []
ipu1_csi0:2 -> ipu1_csi0 capture:0 []
ipu1_csi0_mux:5 -> ipu1_csi0:0 []
ipu1_csi1:2 -> ipu1_csi1 capture:0 []
ipu1_csi1_mux:5 -> ipu1_csi1:0 []
LINKS
    )"
    reload variant=quad "tw9912=tw9912-left" adv7180=adv7180
    check "the quad processor's links, and decoders of other names" "$(links_found)" "$(
        sort <<LINKS
adv7180:0 -> imx6-mipi-csi2:0 []
tw9912-left:0 -> ipu2_csi1_mux:1 []
imx6-mipi-csi2:1 -> ipu1_csi0_mux:0 []
imx6-mipi-csi2:2 -> ipu1_csi1:0 []
imx6-mipi-csi2:3 -> ipu2_csi0:0 []
imx6-mipi-csi2:4 -> ipu2_csi1_mux:0 []
ipu1_csi0:2 -> ipu1_csi0 capture:0 []
ipu1_csi0_mux:2 -> ipu1_csi0:0 []
ipu1_csi1:2 -> ipu1_csi1 capture:0 []
ipu2_csi0:2 -> ipu2_csi0 capture:0 []
ipu2_csi1:2 -> ipu2_csi1 capture:0 []
ipu2_csi1_mux:2 -> ipu2_csi1:0 []
LINKS
    )"
    reload variant=dual absent=tw9912,ipu1_csi0_capture
    check "absent parts have no links" "$(links_found | grep -c "$TW\|csi0 capture")" 0
    check "absent parts leave the others" "$(links_found | wc -l)" 12
    turn tw9912/present 1
    check "an absent decoder comes by its knob" "$(links_found | grep "$TW")" \
        "$TW:0 -> ipu1_csi1_mux:4 []"
    reload absent=media
    is_missing "an absent media device has no node" /dev/media0
    check "no nodes of sub-devices without a media device" "$(find /dev -name 'v4l-*' -o -name 'video*')" ''
    turn media/present 1
    is_there "an absent media device comes by its knob" /dev/media0
}

check_media_links() {
    reload variant=dual
    empty_log
    check "a link can be set" "$(media_answer link_up "$TW" 0 ipu1_csi1_mux 4)" 'done'
    check "a multiplexer takes one input" \
        "$(media_answer link_up imx6-mipi-csi2 1 ipu1_csi1_mux 0)" 'Device or resource busy'
    check "it goes on taking the one it has" "$(links_found | grep -- '-> ipu1_csi1_mux.*ENABLED')" \
        "$TW:0 -> ipu1_csi1_mux:4 [ENABLED]"
    check "a link can be cut" "$(media_answer link_up "$TW" 0 ipu1_csi1_mux 4 0)" 'done'
    check "then the multiplexer takes another input" \
        "$(media_answer link_up imx6-mipi-csi2 1 ipu1_csi1_mux 0)" 'done'
    turn tw9912/fail_link 'EIO 1 1'
    check "a failure waits for a good access" "$(media_answer link_up "$TW" 0 ipu1_csi1_mux 4)" \
        'Device or resource busy'
    check "a link fails by its knob" "$(media_answer link_up "$TW" 0 ipu1_csi1_mux 4)" \
        'Input/output error'
    reads "the failure is used up" "$KNOBS/tw9912/fail_link" 0
    logs "links are in the log" '1 tw9912 link 0 -> ipu1_csi1_mux:4 1' \
        '2 imx6-mipi-csi2 link 1 -> ipu1_csi1_mux:0 1 error EBUSY' \
        '3 tw9912 link 0 -> ipu1_csi1_mux:4 0' '4 imx6-mipi-csi2 link 1 -> ipu1_csi1_mux:0 1' \
        '5 tw9912 link 0 -> ipu1_csi1_mux:4 1 error EBUSY' \
        '6 tw9912 link 0 -> ipu1_csi1_mux:4 1 error EIO'
    check "the knob shows what is set" "$(grep ' 1$' "$KNOBS/media/links")" \
        'imx6-mipi-csi2:1 -> ipu1_csi1_mux:0 1'
}

check_media_formats() {
    reload variant=dual
    check "a decoder starts with 525 lines" "$(format_of "$TW" 0)" \
        'fmt:UYVY8_2X8/720x480 field:interlaced'
    check "an interface starts with a size of its own" "$(format_of ipu1_csi1 2)" \
        'fmt:AYUV8_1X32/640x480@1/30 field:none'
    link_tw_dual
    set_tw_dual 720x576
    check "a decoder's size is its standard's" "$(format_of "$TW" 0)" \
        'fmt:UYVY8_2X8/720x480 field:interlaced'
    v4l2-ctl -d "$(node_of "$TW")" --set-standard=pal >/dev/null
    check "its size follows the standard" "$(format_of "$TW" 0)" \
        'fmt:UYVY8_2X8/720x576 field:interlaced'
    check "a multiplexer's output keeps what its input was set to" \
        "$(format_of ipu1_csi1_mux 5)" 'fmt:UYVY8_2X8/720x480 field:interlaced'
    empty_log
    set_tw_dual 720x576
    check "an interface's input" "$(format_of ipu1_csi1 0)" 'fmt:UYVY8_2X8/720x576@1/50 field:none'
    check "an interface's output" "$(format_of ipu1_csi1 2)" 'fmt:AYUV8_1X32/720x576@1/50 field:none'
    logs "formats are in the log" '1 tw9912 format 0 UYVY8_2X8/720x576 interlaced' \
        '2 ipu1_csi1_mux format 4 UYVY8_2X8/720x576 interlaced' \
        '3 ipu1_csi1_mux format 5 UYVY8_2X8/720x576 interlaced' \
        '4 ipu1_csi1 format 0 UYVY8_2X8/720x576 interlaced' \
        '5 ipu1_csi1 format 0 UYVY8_2X8/720x576 none' '6 ipu1_csi1 interval 0 1/50' \
        '7 ipu1_csi1 format 2 AYUV8_1X32/720x576 none' '8 ipu1_csi1 interval 2 1/50'
    reads "the knob shows what is set" "$KNOBS/ipu1_csi1/formats" '0 UYVY8_2X8/720x576 none 1/50
1 AYUV8_1X32/720x576 none 1/50
2 AYUV8_1X32/720x576 none 1/50'
    media-ctl -V "'ipu1_csi1_mux':5 [fmt:YUYV2X8/352x288 field:none]"
    check "a multiplexer's output is its input's" "$(format_of ipu1_csi1_mux 5)" \
        'fmt:UYVY8_2X8/720x576 field:interlaced'
    media-ctl -V "'$TW':0 [fmt:UYVY2X8/720x576 field:alternate]"
    media-ctl -V "'ipu1_csi1':0 [fmt:UYVY2X8/720x288 field:alternate]"
    check "a field that comes alone is half a frame" "$(format_of "$TW" 0)" \
        'fmt:UYVY8_2X8/720x288 field:alternate'
    check "an interface joins two fields" "$(format_of ipu1_csi1 2)" \
        'fmt:AYUV8_1X32/720x576@1/50 field:seq-tb'
    check "only interfaces have frame intervals" \
        "$(media_answer v4l2-ctl -d "$(node_of ipu1_csi1_mux)" --get-subdev-fps 0)" \
        'Inappropriate ioctl for device'
    turn ipu1_csi1/fail_s_fmt EINVAL
    check "a format fails by its knob" \
        "$(media_answer media-ctl -V "'ipu1_csi1':0 [fmt:UYVY2X8/720x480]")" 'Invalid argument'
    check "a failed format changes nothing" "$(format_of ipu1_csi1 0)" \
        'fmt:UYVY8_2X8/720x288@1/50 field:alternate'
}

check_media_standards() {
    local each tw adv
    reload variant=dual
    tw=$(node_of "$TW")
    adv=$(node_of "$ADV")
    check "a decoder starts with NTSC" "$(standard_ioctl get "$tw")" 0xb000
    check "PAL is detected at first" "$(standard_ioctl query "$tw")" 0xff
    for each in ntsc:0xb000 none:0x0 secam:0xff0000 pal:0xff 0x1000:0x1000 4096:0x1000; do
        turn adv7180/camera.1/detects "${each%:*}"
        check "${each%:*} is detected" "$(standard_ioctl query "$adv")" "${each#*:}"
    done
    reads "a mask reads as a mask" "$KNOBS/adv7180/camera.1/detects" 0x1000
    turn adv7180/camera.1/detects noise
    check "noise is taken for one standard after the other" \
        "$(for each in 1 2 3 4; do standard_ioctl query "$adv"; echo; done | sort -u | wc -l)" 4
    refuses "no standard that is none" palm "$KNOBS/adv7180/camera.1/detects" 'Invalid argument' noise
    turn tw9912/camera.2/detects ntsc
    link_tw_dual
    check "camera 0 is looked at" "$(standard_ioctl query "$tw")" 0xff
    v4l2-ctl -d "$(node_of 'ipu1_csi1 capture')" --set-ctrl=0x009819c2=1
    check "the input-select control chooses camera 2" "$(standard_ioctl query "$tw")" 0xb000
    turn tw9912/camera.2/signal 0
    check "a lost signal has no standard" "$(standard_ioctl query "$tw")" 0x0
    turn tw9912/camera.2/signal 1
    turn tw9912/fail_querystd 'ENODATA 1'
    check "detection fails by its knob" "$(standard_ioctl query "$tw")" 'No data available'
    check "detection succeeds again" "$(standard_ioctl query "$tw")" 0xb000
    empty_log
    for each in 0xff 0xb000 0x1 0xff0000; do
        check "standard $each can be set" "$(standard_ioctl set "$tw" "$each")" "$each"
        reads "standard $each is what the knob shows" "$KNOBS/tw9912/standard" "$each"
    done
    check "no standard at all is refused" "$(standard_ioctl set "$tw" 0x0)" 'Invalid argument'
    check "a standard for digital television is refused" \
        "$(standard_ioctl set "$tw" 0x1000000)" 'Invalid argument'
    turn tw9912/fail_s_std EBUSY
    check "a standard fails by its knob" "$(standard_ioctl set "$tw" 0xff)" 'Device or resource busy'
    check "a refused standard changes nothing" "$(standard_ioctl get "$tw")" 0xff0000
    logs "standards are in the log" '1 tw9912 standard 0xff' '2 tw9912 standard 0xb000' \
        '3 tw9912 standard 0x1' '4 tw9912 standard 0xff0000' \
        '5 tw9912 standard 0x0 error EINVAL' '6 tw9912 standard 0x1000000 error EINVAL' \
        '7 tw9912 standard 0xff error EBUSY'
}
