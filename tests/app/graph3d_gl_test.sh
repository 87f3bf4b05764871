#!/bin/bash
# graph3d_gl_test.sh TEST: runs it on an X server of its own, where that server offers OpenGL.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../support/wait_until.sh"
for tool in Xvfb xdpyinfo; do
    command -v "$tool" >/dev/null || { echo "SKIPPED: no $tool" >&2; exit 77; }
done
# Mesa's driver leaks, and has unloaded itself without a trace of its name when leaks are looked for.
export ASAN_OPTIONS=detect_leaks=0

folder=$(mktemp -d)
Xvfb -displayfd 3 -screen 0 1000x800x24 -nolisten tcp -noreset 3>"$folder/display" 2>/dev/null & server=$!
trap 'kill "$server" 2>/dev/null; rm -r "$folder"' EXIT
wait_until 10 test -s "$folder/display" || { echo "FAILED: no Xvfb" >&2; exit 1; }
export DISPLAY=:$(cat "$folder/display") QT_QPA_PLATFORM=xcb
unset WAYLAND_DISPLAY

# GLX is offered only where Mesa's driver could be loaded.
xdpyinfo | grep -w GLX >/dev/null || { echo "SKIPPED: the X server has no OpenGL" >&2; exit 77; }
"$1"
