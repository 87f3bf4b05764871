#!/bin/bash
# window_test.sh BUILD_DIR, inside tests/support/netns.sh: starts the program on a seeded home under Xvfb, watches it
# update the selected printer by itself, restarts it and watches it stay quiet.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/program_session.sh"

"$build/bin/tintoral-virtual-printers" &
"$build/bin/tintoral-demo-home" seed
id=$("$build/bin/tintoral-demo-home" list | head -n 1)
"$build/bin/tintoral-demo-home" select "$id"
wait_until 10 bash -c 'echo > /dev/tcp/127.0.1.11/9100' || fail "no virtual printer"

readings() { "$build/bin/tintoral-demo-home" readings "$id"; }
grown() { [ "$(readings)" -gt "$before" ]; }

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
