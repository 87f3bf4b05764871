#!/bin/bash
# machine_faults_test.sh BUILD_DIR [CUTS=2], inside tests/support/netns.sh: the program on a machine that fails it. Each
# case ends with the program quitting with status 0 and the files of before whole. CUTS: how many lengths of the
# settings file the program is started on.
set -euo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
source "$here/../end_to_end/program_session.sh"
cuts=${2:-2}
readings() { "$build/bin/tintoral-demo-home" readings "$id"; }
grown() { [ "$(readings)" -gt "$before" ]; }
said() { grep -qF "$1" /run/errors; }
start() { # [NAME=VALUE...]
    env "$@" "$build/bin/tintoral" 2>/run/errors & program=$!
    wait_until 20 window || fail "no window: $(cat /run/errors)"
}
update() { xdotool windowfocus --sync "$(window)" key ctrl+r; }
# Presses Update until the condition holds: on a busy machine an answer may come too late to bring levels.
update_until() { # CONDITION...
    local attempt
    for attempt in 1 2 3 4; do
        update
        wait_until 5 "$@" && return
    done
    return 1
}
height() { xdotool getwindowgeometry "$(window)" | sed -n 's/.*x//p' | tail -n 1; }
quit_having_said() { # COUNT LINE
    quit_program
    [ "$(grep -cF "$2" /run/errors)" = "$1" ] || fail "not $1 times '$2': $(cat /run/errors)"
}

# A disk of its own for the home folder.
mount -t tmpfs -o size=2m tmpfs "$HOME"
"$build/bin/tintoral-virtual-printers" >/dev/null &
"$build/bin/tintoral-demo-home" seed
id=$("$build/bin/tintoral-demo-home" list | grep iP4300) # quick to answer
"$build/bin/tintoral-demo-home" select "$id"
history="$HOME/library/Application Support/Tintoral/$id"
unchanged() { cmp "$defaults" /run/defaults && cmp "$history" /run/history; }
wait_until 10 bash -c 'echo > /dev/tcp/127.0.1.16/9100' || fail "no virtual printer"
start # once, so that the settings are in the form in which the program leaves them
before=100 && wait_until 20 grown || fail "stale levels were not updated at start"
quit_program

echo "a full disk"
cp "$defaults" /run/defaults && cp "$history" /run/history
start
calm=$(height)
dd if=/dev/zero of="$HOME/filler" bs=1k status=none 2>/dev/null || true
update_until said "the settings cannot be saved" || fail "a full disk was not reported"
update
[ "$(height)" -gt "$calm" ] || fail "the window says nothing of it"
unchanged || fail "files were changed on a full disk"
rm "$HOME/filler"
before=$(readings)
update_until grown || fail "with room again nothing was saved"
wait_until 5 eval '[ "$(height)" = "$calm" ]' || fail "the window still complains"
quit_having_said 1 "the settings cannot be saved: $defaults: No space left on device"

echo "a read-only home"
cp "$defaults" /run/defaults && cp "$history" /run/history
mount -o remount,ro "$HOME"
start
update_until said "the settings cannot be saved" || fail "a read-only home was not reported"
quit_having_said 1 "the settings cannot be saved: $defaults: Read-only file system"
mount -o remount,rw "$HOME"
unchanged || fail "a read-only file was changed"
[ "$(find "$HOME" -name '.tintoral-*')" = "" ] || fail "temporary files were left behind"

echo "no home"
start HOME=/nonexistent
quit_having_said 1 "no home folder"
start -u HOME # the home of the user database then: /run
quit_having_said 0 "no home folder"
[ -s /run/.config/Tintoral/Tintoral.plist ] || fail "nothing was kept in the home of the user database"
# Without standard streams what is said must not go to the display's socket.
HOME=/nonexistent "$build/bin/tintoral" <&- >&- 2>&- & program=$!
wait_until 20 window || fail "no window without standard streams"
for fd in 0 1 2; do [ /proc/$program/fd/$fd -ef /dev/null ] || fail "standard stream $fd is in use"; done
quit_program
HOME=/nonexistent "$build/bin/tintoral" 2> >(exec true) & program=$!
wait_until 20 window || fail "no window without a reader of standard error"
quit_program

echo "settings cut short"
cp "$defaults" /run/defaults
size=$(stat -c %s "$defaults")
for ((n = 1; n <= cuts; n++)); do
    head -c $((size * (n - 1) / cuts)) /run/defaults | tee "$defaults" > /run/cut
    start
    quit_having_said 1 "; kept as $defaults.damaged"
    kept=$defaults.damaged$([ $n = 1 ] || echo "-$n")
    cmp /run/cut "$kept" || fail "cut settings were not kept"
done
cp /run/defaults "$defaults"

echo "no model table, and a damaged one"
mkdir -p /run/copy/bin /run/copy/share/tintoral
cp "$build/bin/tintoral" /run/copy/bin/ && ln -s "$(realpath "$build/lib")" /run/copy/lib
for state in missing "not a property list"; do
    (build=/run/copy && start && quit_having_said 1 "printers.xml: $state")
    head -c 500 "$build/share/tintoral/printers.xml" > /run/copy/share/tintoral/printers.xml
done

echo "the end of the session"
other=$("$build/bin/tintoral-demo-home" list | tail -n 1) # the first in the pop-up
for signal in TERM INT HUP; do
    "$build/bin/tintoral-demo-home" select "$id"
    start --default-signal=INT
    xdotool windowfocus --sync "$(window)" key Home
    sleep 0.3
    kill -s $signal $program
    wait_until 10 gone || fail "SIG$signal does not end the program"
    wait $program || fail "SIG$signal ended the program with status $?"
    grep -A 1 VT1printerId "$defaults" | grep -qF ">$other<" || fail "SIG$signal lost the selection"
done
