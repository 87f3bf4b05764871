#!/bin/bash
# demo.sh BUILD_DIR [walk [PART]]: virtual printers, a seeded home, and Tintoral open on them. Called by ./dev demo.
#
# Everything runs in a network namespace of its own where one can be made: nothing of it is seen outside. Elsewhere
# the printers stand on loopback addresses, and those that need a port below 1024 are left out. Without a display, or
# when it is asked for, the walk (walk.sh) goes through all printers in the window under Xvfb; its pictures and reports
# are in build/demo.
set -euo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
source tests/support/wait_until.sh
source "$here/printers.sh"
source "$here/walk.sh"
build=$1
demo=build/demo
export HOME=$PWD/$demo/home
unset XDG_CONFIG_HOME

if [ -z "${TINTORAL_DEMO_INSIDE:-}" ] && unshare --user --map-root-user --net true 2>/dev/null; then
    export TINTORAL_DEMO_INSIDE=yes
    exec unshare --user --map-root-user --net --mount --pid --fork --kill-child --mount-proc -- "$0" "$@"
fi
if [ -n "${TINTORAL_DEMO_INSIDE:-}" ]; then
    ip link set lo up
    sysctl -qw net.ipv4.ip_unprivileged_port_start=0
fi
# Where umockdev is, some virtual printers hang on a virtual USB.
if [ -x "$build/bin/tintoral-virtual-usb" ] && [ -z "${TINTORAL_USB_PRELOAD:-}" ]; then
    exec "$build/bin/tintoral-virtual-usb" "$0" "$@"
fi

children=()
stop_children() {
    local pid
    for pid in "${children[@]}"; do kill "$pid" 2>/dev/null || true; done
}
trap stop_children EXIT

demo_home() { env "LD_PRELOAD=${TINTORAL_USB_PRELOAD:-}" "$build/bin/tintoral-demo-home" "$@"; }
program() { exec env "LD_PRELOAD=${TINTORAL_USB_PRELOAD:-}" "$build/bin/tintoral"; }

rm -rf "$demo"
mkdir -p "$HOME"
start_printers
demo_home seed
printers_are_up || { echo "The virtual printers did not start" >&2; exit 1; }

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ "${2:-}" != walk ]; then
    (program)
else
    walk "${3:-}"
fi
