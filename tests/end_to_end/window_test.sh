#!/bin/bash
# window_test.sh BUILD_DIR, inside tests/support/netns.sh: starts the program on a seeded home under Xvfb, watches it
# update the selected printer by itself, restarts it and watches it stay quiet.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../support/wait_until.sh"
build=$1
for tool in Xvfb xdotool; do
    command -v "$tool" >/dev/null || { echo "SKIPPED: no $tool" >&2; exit 77; }
done

# In /run, which is this namespace's own, with all that the program keeps.
export HOME=/run/home
unset XDG_CONFIG_HOME WAYLAND_DISPLAY QT_QPA_PLATFORM
export LSAN_OPTIONS=print_suppressions=0:suppressions=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../support/lsan.supp")
mkdir -p "$HOME"
defaults=$HOME/.config/Tintoral/Tintoral.plist
fail() { echo "FAILED: $*" >&2; exit 1; }

# Without -noreset the server is away for a moment when the first run of the program ends.
Xvfb -displayfd 3 -screen 0 1000x800x24 -nolisten tcp -noreset 3>/run/display 2>/dev/null &
wait_until 10 test -s /run/display || fail "no Xvfb"
export DISPLAY=:$(cat /run/display)

"$build/bin/tintoral-virtual-printers" &
"$build/bin/tintoral-demo-home" seed
id=$("$build/bin/tintoral-demo-home" list | head -n 1)
"$build/bin/tintoral-demo-home" select "$id"
wait_until 10 bash -c 'echo > /dev/tcp/127.0.1.11/9100' || fail "no virtual printer"

readings() { "$build/bin/tintoral-demo-home" readings "$id"; }
window() { xdotool search --onlyvisible --name '^Tintoral$'; }
grown() { [ "$(readings)" -gt "$before" ]; }
gone() { ! kill -0 "$program" 2>/dev/null; }

# Ends the program as a person would, from the keyboard.
quit_program() {
    xdotool windowfocus --sync "$(window)" key ctrl+q
    wait_until 10 gone || fail "the window does not quit"
    wait "$program" || fail "the program ended with status $?"
}

before=$(readings)
"$build/bin/tintoral" & program=$!
wait_until 10 window || fail "no window"
wait_until 20 grown || fail "stale levels were not updated at start"
# The settings are written after the reading.
wait_until 5 grep -q '<string>Idle</string>' "$defaults" || fail "the printer's status was not kept"
"$build/bin/tintoral-demo-home" levels > /run/levels
grep -A 1 -F "${id#Network:}" /run/levels | grep -q 'Black  .* %' || fail "no levels kept: $(cat /run/levels)"
quit_program
grep -A 1 'VT1printerId' "$defaults" | grep -qF "$id" || fail "the selection was not kept"

before=$(readings)
"$build/bin/tintoral" & program=$!
wait_until 10 window || fail "no window after the restart"
sleep 1
grown && fail "fresh levels were asked again"
quit_program
echo "updated, kept, restored: $id"
