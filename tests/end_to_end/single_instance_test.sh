#!/bin/bash
# single_instance_test.sh BUILD_DIR, inside tests/support/netns.sh: a later start raises the window that is open, and
# opens one itself where none is.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/program_session.sh"
command -v openbox >/dev/null || { echo "SKIPPED: no openbox" >&2; exit 77; }

export XDG_RUNTIME_DIR=/run/runtime
mkdir -m 700 "$XDG_RUNTIME_DIR"
openbox 2>/dev/null >&2 &
is_managed() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }
wait_until 10 is_managed || fail "no window manager"

start() { "$build/bin/tintoral" & program=$!; }
second_start() { timeout 10 "$build/bin/tintoral" || fail "a second start ended with status $?"; }
windows() { [ "$(window | wc -l)" = "$1" ]; }
is_minimised() { xprop -id "$1" WM_STATE | grep -q Iconic; }
has_focus() { ! is_minimised "$1" && [ "$(xdotool getactivewindow)" = "$1" ]; }
minimise() {
    xdotool windowminimize "$1"
    wait_until 5 is_minimised "$1" || fail "the window cannot be minimised"
}
# What is no request: too much of it, none at all, half of one.
send_garbage() {
    perl -MIO::Socket::UNIX -e 'for my $bytes ("\0" x 1e6, "", "\n", "raise x") {
        my $s = IO::Socket::UNIX->new(Peer => $ARGV[0]) or die "no socket"; $s->syswrite($bytes) }' "$1"
}

start
wait_until 10 window || fail "no window"
first=$(window)
socket=$(echo "$XDG_RUNTIME_DIR"/tintoral-*.socket)
[ "$(stat -c %A "$socket")" = srwx------ ] || fail "others may talk to the socket"
minimise "$first"
second_start
wait_until 5 has_focus "$first" || fail "a second start does not raise the window"

minimise "$first"
send_garbage "$socket"
sleep 0.5
is_minimised "$first" || fail "garbage raises the window"
kill -STOP "$program"
second_start
kill -CONT "$program"
wait_until 5 has_focus "$first" || fail "a second start during an update is lost"
windows 1 || fail "a second start opened a window"

mkdir /run/other
HOME=/run/other "$build/bin/tintoral" & other=$!
wait_until 10 windows 2 || fail "other settings have no window of their own"
kill "$other"
wait_until 5 windows 1 || fail "the other window does not end"

kill -KILL "$program"
wait "$program" 2>/dev/null || true
start
wait_until 10 window || fail "no window after the first was killed"
second_start
XDG_RUNTIME_DIR=/run/none "$build/bin/tintoral" 2>/run/errors & other=$!
wait_until 10 windows 2 || fail "no window without a runtime folder"
[ "$(wc -l </run/errors)" = 1 ] || fail "no runtime folder: $(cat /run/errors)"
kill "$other"
wait "$other" || true
quit_program

# Without a session the files stand beside the settings.
unset XDG_RUNTIME_DIR
programs=()
for _ in 1 2 3 4; do
    start
    programs+=("$program")
done
three_ended() { [ "$(ps -o pid= -p "${programs[*]}" | wc -l)" = 1 ]; }
wait_until 15 three_ended || fail "not one of four starts stayed"
wait_until 10 windows 1 || fail "starts at the same moment open $(window | wc -l) windows"
program=$(ps -o pid= -p "${programs[*]}" | tr -d ' ')
for ended in "${programs[@]}"; do
    [ "$ended" = "$program" ] || wait "$ended" || fail "one of four starts ended with status $?"
done
quit_program
echo "raised, while busy too; other settings; after a kill; four at once"
