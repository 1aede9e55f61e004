# shellcheck shell=bash disable=SC2034,SC2154  # the parts share their variables
# Whether hardware virtualisation works here. Where virtual machines are nested and the nesting is
# broken, a guest hangs without a word: so it is tried once, with a limit, and the answer is kept.

readonly KVM_DEVICE=/dev/kvm
readonly KVM_PROBE_LIMIT=8
readonly KVM_ANSWER=$work/kvm

kvm_is_accessible() {
    [[ -r $KVM_DEVICE && -w $KVM_DEVICE ]]
}

# The machine itself with nothing to do: the kernel's start is what hangs.
kvm_boots() {
    local arguments
    compose_qemu_arguments kvm "$BASE_ARCHIVE"
    "$work/programs/conduct_machine" --time-limit "$KVM_PROBE_LIMIT" \
        --settings "set -- --directory / -- /bin/true" -- "${arguments[@]}" \
        </dev/null >/dev/null 2>&1 &
    local probe=$!
    # shellcheck disable=SC2064  # this probe, not a later one
    trap "kill $probe 2>/dev/null; exit $STATUS_MACHINE" INT TERM HUP
    local status=0
    wait "$probe" || status=$?
    trap - INT TERM HUP
    ((status == 0))
}

# Sets `kvm_answer` to works or broken.
ask_kvm() {
    local boot key known
    kvm_answer=broken
    read -r boot </proc/sys/kernel/random/boot_id || boot=unknown
    key="$release $boot"
    if [[ -r $KVM_ANSWER ]]; then
        IFS=: read -r known kvm_answer <"$KVM_ANSWER"
        [[ $known != "$key" ]] || return 0
    fi
    kvm_answer=broken
    # An answer that cannot be kept would be sought at every start.
    [[ -w $work ]] || return 0
    if kvm_boots; then
        kvm_answer=works
    fi
    printf '%s:%s\n' "$key" "$kvm_answer" >"$KVM_ANSWER.$$"
    mv "$KVM_ANSWER.$$" "$KVM_ANSWER"
}

# Sets `accelerator` to kvm or tcg.
choose_accelerator() {
    case $kvm in
        off) accelerator=tcg ;;
        on)
            kvm_is_accessible || fail "--kvm: no access to $KVM_DEVICE"
            accelerator=kvm
            ;;
        probe)
            accelerator=tcg
            if kvm_is_accessible && ask_kvm && [[ $kvm_answer == works ]]; then
                accelerator=kvm
            fi
            ;;
    esac
}
