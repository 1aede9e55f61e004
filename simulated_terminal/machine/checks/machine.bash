# shellcheck shell=bash disable=SC2016,SC2154  # the guest's shell expands; the parts share their variables
# What the machine and the driver module are given, and how fast it starts.

readonly WARM_BOOT_LIMIT_MS=8000

test_machine_options() {
    run --processors 2 --console -- sh -c 'nproc; grep MemTotal /proc/meminfo' </dev/null
    expect_text "machine_options: processors" '^2$' "$scratch/out"
    expect_text "machine_options: the console is shown" 'Linux version 6\.' "$scratch/err"
    local total
    total=$(awk '/MemTotal/ { print int($2 / 1024) }' "$scratch/out")
    if ((total > memory - 200 && total <= memory)); then
        passed "machine_options: memory"
    else
        failed "machine_options: memory" "$total MB of $memory MB"
    fi
}

# Asks the display as any client does, without a library: the answer holds the size.
readonly ASK_DISPLAY='
    use IO::Socket::UNIX;
    my ($number) = $ENV{DISPLAY} =~ /^:(\d+)$/ or die "no display\n";
    my $display = IO::Socket::UNIX->new("/tmp/.X11-unix/X$number") or die "nobody there\n";
    syswrite $display, pack "a1xvvvvxx", "l", 11, 0, 0, 0;
    my $answer = "";
    1 while sysread $display, $answer, 65536, length $answer
        and (length $answer < 8 or length $answer < 8 + 4 * unpack "x6v", $answer);
    my ($vendor, $formats) = unpack "x24vx3C", $answer;
    my $screen = 40 + (($vendor + 3) & ~3) + 8 * $formats;
    printf "%d %dx%d\n", ord $answer, unpack "x${screen}x20vv", $answer;'

test_screen() {
    run --screen 320x200 -- sh -c 'perl -e "$0"; stat -c "%a %U" "$XDG_RUNTIME_DIR"' \
        "$ASK_DISPLAY" </dev/null
    expect "screen: a display of that size, and a folder for its clients" \
        "0 1 320x200 700 root" "$status $(tr '\n' ' ' <"$scratch/out" | sed 's/ $//')"
    run -- sh -c 'echo "${DISPLAY-none}"; test -e /tmp/.X11-unix || echo nobody' </dev/null
    expect "screen: none where none is asked for" "none nobody" "$(tr '\n' ' ' <"$scratch/out" | sed 's/ $//')"
}

test_module() {
    local with_module=(--memory "$memory")
    "$terminal" --prepare
    [[ -e $build/simulated_terminal/module/zr_terminal.ko ]] ||
        { skipped module "there is no module"; return 0; }
    status=0
    "$terminal" "${with_module[@]}" --variant quad --input touchscreen0,keyboard0 -- sh -c '
        cat /sys/module/zr_terminal/parameters/variant; test -d /sys/kernel/debug/zr_terminal && echo knobs
        cat "/sys/class/input/$(readlink /dev/input/touchscreen0)/device/name"
        test -e /dev/input/encoder0 || echo no encoder' >"$scratch/out" 2>"$scratch/err" </dev/null || status=$?
    expect "module: variant, knobs and input names" "0 quad knobs zr touchscreen no encoder" \
        "$status $(tr '\n' ' ' <"$scratch/out" | sed 's/ $//')"
    status=0
    "$terminal" --module-parameter no_such=1 -- true 2>"$scratch/err" </dev/null || status=$?
    expect "module: 126 for an unknown parameter" 126 "$status"
    expect_text "module: which are there" "no parameter 'no_such'; it has: .*variant" "$scratch/err"
    status=0
    "$terminal" "${with_module[@]}" --module-parameter key=pink -- true 2>"$scratch/err" </dev/null || status=$?
    expect "module: 125 for a word that a parameter does not know" 125 "$status"
    expect_text "module: the first line says so" '^terminal: .*refused its parameters' "$scratch/err"
    expect_text "module: the console names it" 'parameter key does not know "pink"' "$scratch/err"
}

# time_start: one start without work; sets `took` and `processor`, in milliseconds.
time_start() {
    local TIMEFORMAT='%3R %3U %3S' real user system
    { time "$terminal" -- true </dev/null 2>/dev/null; } 2>"$scratch/time"
    read -r real user system <"$scratch/time"
    took=$((10#${real/./}))
    processor=$((10#${user/./} + 10#${system/./}))
}

# On a busy host the clock says nothing; the processor time of the start always does.
test_warm_boot() {
    local try took processor load best=999999 least=999999
    for try in 1 2 3; do
        time_start
        ((took >= best)) || best=$took
        ((processor >= least)) || least=$processor
        ((best >= WARM_BOOT_LIMIT_MS)) || break
    done
    read -r load _ </proc/loadavg
    if ((best < WARM_BOOT_LIMIT_MS)); then
        passed "warm_boot: to a command and back in $best ms (try $try)"
    elif ((${load%.*} > $(nproc))); then
        skipped "warm_boot: the clock" "$best ms, but the load of the host is $load"
    else
        failed "warm_boot" "$best ms at best of $try"
    fi
    if ((least < WARM_BOOT_LIMIT_MS)); then
        passed "warm_boot: $least ms of processor time"
    else
        failed "warm_boot: processor time" "$least ms at best of $try"
    fi
}
