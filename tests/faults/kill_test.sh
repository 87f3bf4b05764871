#!/bin/bash
# kill_test.sh BUILD_DIR [ROUNDS=15] [SEED=1], inside tests/support/netns.sh: kills the program at random moments of its
# start, of an update and of its end. Whenever that is, settings and readings are whole and the program starts again.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../end_to_end/program_session.sh"
rounds=${2:-15}
RANDOM=${3:-1}
home_tool=$build/bin/tintoral-demo-home
"$build/bin/tintoral-virtual-printers" >/dev/null &
"$home_tool" seed
"$home_tool" list > /run/printers
id=$(grep iP4300 /run/printers) # quick to answer
"$home_tool" select "$id"
wait_until 10 bash -c 'echo > /dev/tcp/127.0.1.16/9100' || fail "no virtual printer"

type_keys() {
    wait_until 20 window || fail "round $round: the program does not start any more"
    xdotool windowfocus "$(window)" key "$1"
}
pause_at_most() { sleep "$((RANDOM % $1 / 1000)).$(printf %03d $((RANDOM % $1 % 1000)))"; }
kill_at_start() { pause_at_most 400; }
kill_at_update() { type_keys ctrl+r; pause_at_most 2500; }
kill_at_end() { type_keys ctrl+q; pause_at_most 60; }
check_files() {
    "$home_tool" list 2>/run/errors | cmp - /run/printers || fail "round $round: the settings were damaged"
    [ ! -s /run/errors ] || fail "round $round: $(cat /run/errors)"
    after=$("$home_tool" readings "$id")
    # It asks once at its start when the levels are old, and once when told to.
    ((after >= before && after <= before + 2)) || fail "round $round: $before readings became $after"
    [ "$(find "$HOME" -name '.tintoral-*' | wc -l)" -le 2 ] || fail "round $round: temporary files pile up"
}

moments=(start update end)
kept=0
for ((round = 1; round <= rounds; round++)); do
    before=$("$home_tool" readings "$id")
    "$build/bin/tintoral" 2>/dev/null & program=$!
    "kill_at_${moments[RANDOM % 3]}"
    kill -KILL $program 2>/dev/null || true
    wait $program 2>/dev/null || true
    check_files
    kept=$((kept + after - before))
done

before=$("$home_tool" readings "$id")
"$build/bin/tintoral" & program=$!
type_keys ctrl+r
wait_until 20 eval '[ "$("$home_tool" readings "$id")" -gt "$before" ]' || fail "nothing is kept any more"
quit_program
[ "$(find "$HOME" -name '.tintoral-*' -o -name '*damaged*')" = "" ] || fail "debris: $(find "$HOME" -name '.*')"
echo "killed $rounds times; $kept updates were kept"
