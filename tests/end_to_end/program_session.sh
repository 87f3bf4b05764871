# Sourced by the end-to-end tests, inside netns.sh: $build, an empty home of its own, an X server, and the program's
# windows.
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

window() { xdotool search --onlyvisible --name "^${1:-Tintoral}$"; }
gone() { ! kill -0 "$program" 2>/dev/null; }

# Ends the program as a person would, from the keyboard.
quit_program() {
    xdotool windowfocus --sync "$(window)" key ctrl+q
    wait_until 10 gone || fail "the window does not quit"
    wait "$program" || fail "the program ended with status $?"
}

# Bonjour on a bus of this namespace's own.
start_avahi() {
    for tool in avahi-daemon dbus-daemon avahi-publish; do
        PATH=$PATH:/usr/sbin command -v "$tool" >/dev/null || { echo "SKIPPED: no $tool" >&2; exit 77; }
    done
    avahi_part bus /run/dbus/system_bus_socket
    avahi_part daemon /run/avahi-daemon/socket
}
avahi_part() {
    mkdir "/run/$1"
    "$(dirname "${BASH_SOURCE[0]}")/../support/avahi_up.sh" "$1" "/run/$1" &
    wait_until 10 test -S "$2" || fail "no $1"
}
announce() { # HOST ADDRESS NAME TXT...: a printer on a raw port
    avahi-publish -a -R "$1" "$2" >/dev/null 2>&1 &
    avahi-publish -s -H "$1" "$3" _pdl-datastream._tcp 9100 "${@:4}" >/dev/null 2>&1 &
}
