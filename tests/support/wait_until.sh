# To be sourced. wait_until SECONDS COMMAND...: true as soon as the command succeeds, false when it does not in time.
wait_until() {
    local tries=$(($1 * 10))
    shift
    for ((; tries > 0; tries--)); do
        "$@" >/dev/null 2>&1 && return
        sleep 0.1
    done
    return 1
}
