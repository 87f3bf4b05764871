#!/bin/bash
# avahi_up.sh bus|daemon FOLDER: becomes a message bus, or an Avahi daemon on it, inside the private namespace that
# netns.sh makes; the folder takes their settings. Exit status 77 outside of it or where one is not installed.
set -e
PATH=$PATH:/usr/sbin # where the daemon is, and where an ordinary user does not look
what=$1
folder=$2
skip() {
    echo "SKIPPED: $*" >&2
    exit 77
}
# Both have paths in /run compiled in; a machine's own daemon must never meet this one.
grep -q ' /etc/passwd ' /proc/self/mounts || skip "not inside netns.sh"

start_bus() {
    command -v dbus-daemon >/dev/null || skip "dbus-daemon is not installed"
    mkdir -p /run/dbus
    cat > "$folder/bus.conf" <<'CONF'
<busconfig>
  <type>system</type>
  <listen>unix:path=/run/dbus/system_bus_socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/><allow own="*"/>
    <allow send_type="method_call"/><allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/><allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/><allow receive_type="method_return"/>
    <allow receive_type="error"/><allow receive_type="signal"/>
  </policy>
</busconfig>
CONF
    exec dbus-daemon --config-file="$folder/bus.conf" --nofork --nopidfile >"$folder/bus.log" 2>&1
}

# It takes in thousands of services, as a test announces them.
start_daemon() {
    command -v avahi-daemon >/dev/null || skip "avahi-daemon is not installed"
    mkdir -p /run/avahi-daemon
    cat > "$folder/avahi.conf" <<'CONF'
[server]
host-name=tester
use-ipv4=yes
use-ipv6=yes
allow-interfaces=net0
ratelimit-interval-usec=1000000
ratelimit-burst=1000
cache-entries-max=65536
[wide-area]
enable-wide-area=no
[publish]
publish-hinfo=no
publish-workstation=no
[reflector]
enable-reflector=no
CONF
    exec avahi-daemon -f "$folder/avahi.conf" --no-drop-root --no-chroot --no-rlimits --no-proc-title \
        >"$folder/avahi.log" 2>&1
}

"start_$what"
