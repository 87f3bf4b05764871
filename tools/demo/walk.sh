# To be sourced by demo.sh: walk goes through all printers in the window, by keyboard under Xvfb and a window manager,
# as a person would: each is chosen in the pop-up, updated, diagnosed, the report saved, cleaned where the menu offers
# it, and updated again. A line for each; non-zero status when one fails.
#
#   build/demo/NAME.png, NAME-diagnosis.png   the main window after the update, the diagnosis when it is complete
#   build/demo/NAME-report.txt                the report
longest_walk=480 # seconds; a walk takes about half of that

start_screen() {
    Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp -noreset 3>"$demo/display" 2>/dev/null & children+=($!)
    wait_until 10 test -s "$demo/display"
    export DISPLAY=:$(cat "$demo/display") QT_QPA_PLATFORM=xcb
    unset WAYLAND_DISPLAY
    export DBUS_SESSION_BUS_ADDRESS=disabled: # no bubbles on the desktop of a session elsewhere
    openbox --sm-disable >/dev/null 2>&1 & children+=($!)
    wait_until 10 manages_windows
}
manages_windows() { timeout 5 xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }

window() { timeout 10 xdotool search --onlyvisible --name "^$1" | head -n 1; }
is_open() { [ -n "$(window "$1")" ]; }
is_closed() { ! is_open "$1"; }
is_active() { [ "$(timeout 10 xdotool getactivewindow)" = "$1" ]; }
# to TITLE XDOTOOL_COMMAND...: in that window, once it has the focus.
to() {
    local id
    id=$(window "$1") && [ -n "$id" ] || return
    timeout 10 xdotool windowactivate "$id"
    wait_until 5 is_active "$id" && timeout 10 xdotool "${@:2}"
}
press() { to "$1" key --clearmodifiers "${@:2}"; }
photograph() { timeout 10 import -window "$(window "$1")" "$2"; }

# When an update was last kept: of the readings, and of the settings, which are written after them.
kept() { stat -c %.Y "$HOME/library/Application Support/Tintoral/$1" "$HOME/.config/Tintoral/Tintoral.plist"; }
both_changed() {
    local now
    mapfile -t now < <(kept "$1")
    [ "${now[0]}" != "$2" ] && [ "${now[1]}" != "$3" ]
}
# ask ID COMMAND...: does what lets the window ask the printer, and waits for its levels.
ask() {
    local before
    mapfile -t before < <(kept "$1")
    "${@:2}"
    wait_until 30 both_changed "$1" "${before[@]}"
}

# The button Save works when the diagnosis is complete; until then its key does nothing.
save_dialog() {
    press "Diagnose" alt+s
    sleep 0.7
    is_open "Save report"
}
diagnose() { # FILE PICTURE
    press "Tintoral$" alt+t d
    wait_until 10 is_open "Diagnose" && wait_until 60 save_dialog || return
    to "Save report" type --delay 1 "$PWD/$1"
    press "Save report" Return
    wait_until 10 test -s "$1" && wait_until 10 is_closed "Save report" || return
    photograph "Diagnose" "$2"
    press "Diagnose" alt+c
    wait_until 10 is_closed "Diagnose"
}

# The report is whole, and in one phase at least the levels came.
is_sound() {
    grep -q 'Looking up the maintenance' "$1" && ! grep -q 'Stopped here' "$1" &&
        grep -qE 'Number of Ink levels = [1-9]|Device ID = .*S(TATUS)?:' "$1"
}
phases_of() {
    awk '/^Phase [0-9]+:/ { phases++ } /^\([0-9]+ ms\)$/ { ms += substr($1, 2) }
         END { printf "%2d phases %4.1f s", phases, ms / 1000 }' "$1"
}

less_two() { awk '{ for (i = 1; i <= NF; i++) $i = $i > 2 ? $i - 2 : 0; print }' <<< "$1"; }
press_and_update() { press "Tintoral$" "$@"; press "Tintoral$" ctrl+r; }

# clean ID LEVELS CLEANING: from the menu where it is offered; the printers lose 2 % of each ink by it where the job
# reaches them. Says what came of it.
clean() {
    local levels expected=$2
    [ "$3" = "not for this model" ] && { echo "no cleaning for this model"; return; }
    [ "$3" = yes ] && expected=$(less_two "$2")
    ask "$1" press_and_update alt+t n || { echo "FAILED: no update after the cleaning"; return 1; }
    levels=$(demo_home show "$1" | cut -f 1)
    [ "$levels" = "$expected" ] || { echo "FAILED: $levels after the cleaning, not $expected"; return 1; }
    [ "$3" = yes ] && echo "cleaned: $levels" || echo "no cleaning ${3#not }"
}

line() { printf '%-45s %-24s %-17s %s\n' "$@"; }
failed() { line "$1" "${2:-}" "" "FAILED: $3"; return 1; }

# visit ID: all that is done with the printer that is chosen.
visit() {
    local id=$1 name levels cleaning said
    name=$demo/$(tr -cs '[:alnum:].\n' - <<< "$id" | sed 's/-$//')
    ask "$id" press "Tintoral$" ctrl+r || { failed "$id" "" "no update"; return; }
    photograph "Tintoral$" "$name.png"
    IFS=$'\t' read -r levels cleaning < <(demo_home show "$id")
    if ! diagnose "$name-report.txt" "$name-diagnosis.png"; then
        { press "Save report" Escape; press "Diagnose" Escape; } || true
        failed "$id" "$levels" "no report"
    elif ! is_sound "$name-report.txt"; then
        failed "$id" "$levels" "no levels in the report"
    elif ! said=$(clean "$id" "$levels" "$cleaning"); then
        failed "$id" "$levels" "$said"
    else
        line "$id" "$levels" "$(phases_of "$name-report.txt")" "$said"
    fi
}

wanted() { # ID PART
    if is_off "$1"; then
        line "$1" "" "" "not tried: it is off"
        return 1
    fi
    [[ $1 == *"$2"* ]]
}

# walk [PART]: with a part of their names, only through those printers.
walk() {
    local ids id result=0
    mapfile -t ids < <(demo_home list | tac) # as the pop-up has them
    start_screen
    demo_home select "${ids[0]}"
    program & children+=($!)
    wait_until 20 is_open "Tintoral$" || { echo "No window" >&2; return 1; }
    SECONDS=0
    line Printer "Levels in %" Diagnosis Cleaning
    for id in "${ids[@]}"; do
        if ((SECONDS > longest_walk)); then echo "Out of time" && return 1; fi
        [ "$id" = "${ids[0]}" ] || press "Tintoral$" Down || result=1
        if wanted "$id" "${1:-}"; then visit "$id" || result=1; fi
    done
    echo "Pictures and reports are in $demo; it took $SECONDS s"
    return $result
}
