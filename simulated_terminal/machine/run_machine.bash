# shellcheck shell=bash disable=SC2034,SC2154  # the parts share their variables
# Composes QEMU's command line and the guest's settings, and hands over to the conductor.

readonly GUEST_PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin
# A folder of its own: the home of the host's root may be closed to the user who runs QEMU.
readonly GUEST_HOME=/run/home

# compose_qemu_arguments ACCELERATOR ARCHIVE: sets `arguments`.
# shellcheck disable=SC2054  # QEMU's commas
compose_qemu_arguments() {
    # Emulated, a processor with few features boots seconds faster than one with all; without
    # rdrand the random pool would wait for events that never come.
    local cpu=qemu64,+rdrand
    # The software renderer's compiler uses what there is.
    [[ -z $screen ]] || cpu+=,+ssse3,+sse4.1,+sse4.2,+popcnt
    local append="console=ttyS0 panic=-1 oops=panic random.trust_cpu=on"
    [[ $1 == tcg ]] || cpu=host
    [[ $show_console == yes ]] || append+=" quiet"
    arguments=(
        qemu-system-x86_64 -name "simulated terminal" -nodefaults -no-user-config
        -display none -no-reboot -machine "pc,accel=$1,i8042=off" -cpu "$cpu"
        -m "$memory" -smp "$processors"
        -kernel "$kernel/vmlinux" -initrd "$2" -append "$append"
        # Descriptors that the conductor opens.
        -chardev socket,id=line,fd=3 -chardev socket,id=console,fd=4
        -serial chardev:console
        -device virtio-serial-pci,max_ports=2
        -device virtserialport,chardev=line,nr=1,name=simulated_terminal
    )
    export_folder root / readonly=on
}

# export_folder TAG FOLDER [OPTION]
export_folder() {
    # A comma ends a QEMU option, a doubled one does not.
    local path=${2//,/,,}
    arguments+=(
        -fsdev "local,id=$1,path=$path,security_model=none,multidevs=remap${3:+,$3}"
        -device "virtio-9p-pci,fsdev=$1,mount_tag=$1"
    )
}

# All controllers are on one virtual bus.
# shellcheck disable=SC2054  # QEMU's commas
add_can_controllers() {
    local number
    ((can_count[can] == 0)) || arguments+=(-object can-bus,id=bus0)
    for ((number = 0; number < can_count[can]; ++number)); do
        arguments+=(-device kvaser_pci,canbus=bus0)
    done
}

# Sets `quoted`.
quote() {
    quoted="'${1//\'/\'\\\'\'}'"
}

# set_list NAME ENTRY...: a shell line for the guest's init, one entry a line.
set_list() {
    local name=$1 IFS=$'\n'
    shift
    quote "$*"
    settings+="$name=$quoted"$'\n'
}

# A command under one of the folders that the guest covers has to stay visible.
collect_visible_folders() {
    visible_folders=("$project" "$build_folder" "$directory")
    case $1 in
        */*)
            local file=$1
            [[ $file == /* ]] || file=$directory/$file
            visible_folders+=("${file%/*}" "$(dirname "$(realpath --canonicalize-missing "$file")")")
            ;;
    esac
}

compose_settings() {
    local variable
    settings=
    set_list console_level 7
    collect_visible_folders "$1"
    set_list visible_folders "${visible_folders[@]}"
    set_list writable_folders "${writable_folders[@]}"
    set_list with_module "$with_module"
    set_list module_parameters "${module_parameters[@]}"
    set_list can_controllers "$((can_count[can] + can_count[simcan]))"
    set_list virtual_can_ports "${can_count[vcan]}"
    set_list input_devices "${input_devices[@]}"
    set_list input_devices_required "$input_devices_required"
    set_list screen "$screen"
    settings+="set --"
    if [[ $tty == yes ]]; then
        settings+=" --tty $(stty size <&0 | tr ' ' x)"
    fi
    for variable in "PATH=$GUEST_PATH" "HOME=$GUEST_HOME" "TERM=${TERM:-dumb}" "LANG=C.UTF-8" \
        "${environment[@]}"; do
        quote "$variable"
        settings+=" --variable $quoted"
    done
    quote "$directory"
    settings+=" --directory $quoted --"
    for variable in "$@"; do
        quote "$variable"
        settings+=" $quoted"
    done
}

# Checked here, where the module is known: the kernel would only log an unknown parameter.
check_module_parameters() {
    local parameter known=()
    [[ $with_module == yes ]] || return 0
    mapfile -t known <"$module/parameters"
    if [[ " ${known[*]} " == *" variant "* ]]; then
        module_parameters=("variant=$variant" "${module_parameters[@]}")
    fi
    for parameter in "${module_parameters[@]}"; do
        [[ " ${known[*]} " == *" ${parameter%%=*} "* ]] ||
            fail_usage "--module-parameter: the module has no parameter '${parameter%%=*}'; it has: ${known[*]:-none}"
    done
}

run_machine() {
    local arguments archive=$BASE_ARCHIVE settings number file conductor=()
    need_program qemu-system-x86_64 qemu-system-x86
    [[ -z $screen ]] || need_program Xvfb xvfb
    check_module_parameters
    choose_accelerator
    [[ $with_module == no ]] || archive=$TERMINAL_ARCHIVE
    for file in "$kernel/vmlinux" "$archive"; do
        [[ -r $file ]] || fail "cannot read $file"
    done
    compose_qemu_arguments "$accelerator" "$archive"
    for number in "${!writable_folders[@]}"; do
        export_folder "writable$number" "${writable_folders[number]}"
    done
    add_can_controllers
    compose_settings "$@"
    conductor=("$work/programs/conduct_machine" --time-limit "$time_limit")
    [[ $tty == no ]] || conductor+=(--tty)
    [[ $show_console == no ]] || conductor+=(--console)
    exec "${conductor[@]}" --settings "$settings" -- "${arguments[@]}"
}
