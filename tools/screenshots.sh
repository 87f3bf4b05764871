#!/bin/bash
# screenshots.sh BUILD_DIR OUTPUT_DIR: every window on the demo's virtual printers, in a light and a dark theme, at one
# and at two pixels to the point: OUTPUT_DIR/light-1x/main-window.png and so on. Called by ./dev screenshots.
set -euo pipefail
if [ "${3:-}" != --inside ]; then exec tests/support/netns.sh "$0" "$(realpath "$1")" "$(realpath -m "$2")" --inside; fi
output=$2
source tests/end_to_end/program_session.sh "$1"
kill "$(pgrep -P $$ Xvfb)"

home_tool=$build/bin/tintoral-demo-home
six_inks="Network:EPSON Stylus Photo R2400 (127.0.1.18)"

start_screen() { # SCALE
    rm -f /run/display
    Xvfb -displayfd 3 -screen 0 "$((1000 * $1))x$((800 * $1))x24" -nolisten tcp -noreset 3>/run/display 2>/dev/null & screen=$!
    wait_until 10 test -s /run/display || fail "no Xvfb"
    export DISPLAY=:$(cat /run/display) QT_SCALE_FACTOR=$1
    openbox 2>/dev/null &
    sleep 1
}

# The dark palette is one that the settings tool of Qt ships.
use_theme() { # light | dark
    unset QT_QPA_PLATFORMTHEME
    [ "$1" = dark ] || return 0
    mkdir -p "$HOME/.config/qt6ct"
    printf '[Appearance]\nstyle=Fusion\ncustom_palette=true\ncolor_scheme_path=%s\n' \
        /usr/share/qt6ct/colors/darker.conf >"$HOME/.config/qt6ct/qt6ct.conf"
    export QT_QPA_PLATFORMTHEME=qt6ct
}

open_program() { # PRINTER_ID
    "$home_tool" select "$1"
    "$build/bin/tintoral" & program=$!
    wait_until 20 window >/dev/null || fail "no window"
    sleep 4 # an update takes its protocol's time
}

picture() { # TITLE FILE
    wait_until 5 window "$1" >/dev/null || fail "no window '$1'"
    sleep 1.5
    xdotool mousemove 0 0
    import -window "$(window "$1" | tail -n 1)" "$folder/$2.png"
}

key_in() { # TITLE KEY...
    xdotool windowactivate --sync "$(window "$1" | tail -n 1)" key --delay 150 "${@:2}"
}

photograph_windows() {
    open_program "$six_inks"
    picture Tintoral main-window
    key_in Tintoral alt+t
    sleep 0.5
    import -window root -trim "$folder/menu.png"
    xdotool key Escape
    key_in Tintoral ctrl+o
    sleep 3
    picture 'Select.*' select-printer
    key_in 'Select.*' Escape
    key_in Tintoral ctrl+n
    picture 'Add.*' add-by-address
    key_in 'Add.*' Escape
    key_in Tintoral ctrl+l
    picture 'Printer list' printer-list
    key_in 'Printer list' Escape
    key_in Tintoral ctrl+h
    picture 'Ink history.*' ink-history
    key_in 'Ink history.*' alt+d
    picture 'Ink history.*' ink-history-3d
    key_in 'Ink history.*' Escape
    key_in Tintoral ctrl+d
    sleep 25
    picture 'Diagnose.*' diagnose
    key_in 'Diagnose.*' Escape
    key_in Tintoral alt+h Up Return
    picture 'About.*' about
    key_in 'About.*' Escape
    quit_program
}

start_avahi
announce first.local 127.0.1.16 "First floor" usb_MFG=Canon usb_MDL=iP4300 usb_CMD=BJL,BJRaster3,BSCCe
announce second.local 127.0.1.17 "Second floor" usb_MFG=Canon usb_MDL=MG5200 usb_CMD=IVEC
announce studio.local 127.0.1.18 "Studio" usb_MFG=EPSON "usb_MDL=Stylus Photo R2400" usb_CMD=ESCPL2,BDC,D4
"$build/bin/tintoral-virtual-printers" >/dev/null &
tests/support/snmp/start_agent.sh 127.0.1.14 tools/demo/lexmark_c543.oids /run/snmp >/dev/null 2>&1 &
sleep 1
for scale in ${SCALES:-1 2}; do
    start_screen "$scale"
    for theme in light dark; do
        folder=$output/$theme-${scale}x
        rm -rf "$HOME" "$folder"
        mkdir -p "$HOME" "$folder"
        use_theme "$theme"
        "$home_tool" seed
        photograph_windows
        echo "$folder: $(ls "$folder" | wc -l) pictures"
    done
    kill "$screen"
done
