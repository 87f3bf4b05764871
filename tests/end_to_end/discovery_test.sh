#!/bin/bash
# discovery_test.sh BUILD_DIR, inside tests/support/netns.sh: a first start with no printer known. The first printer
# that announces itself is selected by itself; the next one is chosen in the selection window.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/program_session.sh"
start_avahi

selected() { grep -A 1 VT1printerId "$defaults" | grep -qF ">$1<"; }
has_levels() { [ -s "$HOME/library/Application Support/Tintoral/$1" ]; }
# Typing its first letter finds only a printer that can be chosen; until there is one, the keys do nothing. Letters
# within 400 ms of each other would be one word.
choose_second() {
    sleep 0.5
    xdotool windowfocus "$(window "Select printer")" key s Return
    ! window "Select printer"
}

"$build/bin/tintoral-virtual-printers" >/dev/null &
"$build/bin/tintoral" & program=$!
wait_until 10 window || fail "no window"
announce first.local 127.0.1.16 "First floor" usb_MFG=Canon usb_MDL=iP4300 usb_CMD=BJL,BJRaster3,BSCCe
wait_until 20 selected "Network:First floor" || fail "the first printer was not selected by itself"
wait_until 20 has_levels "Network:First floor" || fail "its levels were not asked"

announce second.local 127.0.1.17 "Second floor" usb_MFG=Canon usb_MDL=MG5200 usb_CMD=IVEC
xdotool windowfocus --sync "$(window)" key ctrl+o
wait_until 10 window "Select printer" || fail "no selection window"
wait_until 30 choose_second || fail "no printer can be chosen"
wait_until 20 selected "Network:Second floor" || fail "the chosen printer was not selected"
wait_until 20 has_levels "Network:Second floor" || fail "the chosen printer was not asked"
quit_program
echo "selected by itself: First floor; chosen: Second floor"
