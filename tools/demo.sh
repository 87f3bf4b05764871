#!/bin/bash
# demo.sh BUILD_DIR: virtual printers, a seeded home, and Tintoral open on them. Called by ./dev demo.
#
# Everything runs in a network namespace of its own where one can be made: nothing of it is seen outside. Elsewhere
# the printers stand on loopback addresses, and the one that needs port 161 is left out. Without a display the same
# runs under Xvfb: each printer is updated in the window, its levels are printed, pictures are left in build/demo/.
set -euo pipefail
source tests/support/wait_until.sh
build=$1
demo=build/demo
export HOME=$PWD/$demo/home
unset XDG_CONFIG_HOME

if [ "${2:-}" != --inside ] && unshare --user --map-root-user --net true 2>/dev/null; then
    exec unshare --user --map-root-user --net --mount --pid --fork --kill-child --mount-proc -- \
        "$0" "$build" --inside
fi
if [ "${2:-}" = --inside ]; then
    inside=yes
    ip link set lo up
    sysctl -qw net.ipv4.ip_unprivileged_port_start=0
fi
# Where umockdev is, some virtual printers hang on a virtual USB.
if [ -x "$build/bin/tintoral-virtual-usb" ] && [ -z "${TINTORAL_USB_PRELOAD:-}" ]; then
    exec "$build/bin/tintoral-virtual-usb" "$0" "$@"
fi
with_usb=(env "LD_PRELOAD=${TINTORAL_USB_PRELOAD:-}")

children=()
stop_children() {
    local pid
    for pid in "${children[@]}"; do kill "$pid" 2>/dev/null || true; done
}
trap stop_children EXIT

start_printers() {
    "$build/bin/tintoral-virtual-printers" & children+=($!)
    if [ "$(id -u)" = 0 ] && PATH=$PATH:/usr/sbin command -v snmpd >/dev/null; then
        tests/support/snmp/start_agent.sh 127.0.1.14 tools/demo_printer.oids "$demo/snmp" & children+=($!)
    else
        echo "Port 161 cannot be bound here: the SNMP printer stays off" >&2
    fi
    if [ "${inside:-}" ] && PATH=$PATH:/usr/sbin command -v cupsd >/dev/null; then
        tools/demo_cupsd.sh "$PWD/$demo/cups" 2>/dev/null & children+=($!)
    else
        echo "There is no cupsd, or no namespace for one: the shared queue stays off" >&2
    fi
}

updated() { [ "$HOME/library/Application Support/Tintoral/$1" -nt "$demo/before" ] && [ -n "$(window_id)" ]; }
window_id() { xdotool search --onlyvisible --name '^Tintoral$' 2>/dev/null | head -n 1; }

start_xvfb() {
    Xvfb -displayfd 3 -screen 0 1000x800x24 -nolisten tcp -noreset 3>"$demo/display" 2>/dev/null & children+=($!)
    wait_until 10 test -s "$demo/display"
    export DISPLAY=:$(cat "$demo/display") QT_QPA_PLATFORM=xcb
    export DBUS_SESSION_BUS_ADDRESS=disabled:  # no bubbles on the desktop of a session elsewhere
    unset WAYLAND_DISPLAY
}

# One printer: the window opens on it, asks it because its last levels are old, and is photographed.
photograph() {
    local id=$1 picture=$2 pid
    "$build/bin/tintoral-demo-home" select "$id"
    sleep 1.1
    touch "$demo/before"
    "${with_usb[@]}" "$build/bin/tintoral" & pid=$!
    wait_until 20 updated "$id" || echo "No update of $id within 20 s" >&2
    sleep 0.5
    import -window "$(window_id)" "$picture"
    kill "$pid"
    wait "$pid" 2>/dev/null || true
}

without_display() {
    start_xvfb
    local id number=0
    while read -r id; do
        number=$((number + 1))
        photograph "$id" "$demo/printer-$number.png"
    done < <("$build/bin/tintoral-demo-home" list)
    "$build/bin/tintoral-demo-home" levels
    echo "Pictures: $demo/printer-*.png"
}

rm -rf "$demo"
mkdir -p "$HOME"
start_printers
"${with_usb[@]}" "$build/bin/tintoral-demo-home" seed
wait_until 10 bash -c 'echo > /dev/tcp/127.0.1.11/9100' || { echo "The virtual printers did not start" >&2; exit 1; }

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    "${with_usb[@]}" "$build/bin/tintoral"
else
    without_display
fi
