#!/bin/bash
# package_check.sh PACKAGES_DIR: what lintian says of the Debian packages, then installs them into a root that holds
# nothing else, runs both lives of the program there, and removes them. Called by ./dev package.
#
# The root is a folder inside a namespace (tests/support/netns.sh): no network, no rights on this machine. Only the
# libraries that the packages depend on are this machine's.
set -euo pipefail
packages=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/.."

fail() { echo "FAILED: $*" >&2; exit 1; }
say() { echo "ok: $*"; }

core=$(echo "$packages"/tintoral_*.deb)
window=$(echo "$packages"/tintoral-window_*.deb)
[ -f "$core" ] && [ -f "$window" ] || fail "not one of each package in $packages"
version=$(dpkg-deb -f "$core" Version)

core_files='
/usr/bin/tintoral
/usr/lib/cups/filter/tintoral
/usr/lib/udev/rules.d/70-tintoral-usb-printers.rules
/usr/share/doc/tintoral/changelog.gz
/usr/share/doc/tintoral/copyright
/usr/share/doc/tintoral/usb-permissions.md
/usr/share/man/man1/tintoral.1.gz
/usr/share/man/man8/tintoral-filter.8.gz
/usr/share/tintoral/printers.xml'
window_files='
/usr/lib/tintoral/libtintoral-window.so
/usr/share/applications/example.tintoral.Tintoral.desktop
/usr/share/doc/tintoral-window/changelog.gz
/usr/share/doc/tintoral-window/copyright
/usr/share/icons/hicolor/128x128/apps/example.tintoral.Tintoral.png
/usr/share/icons/hicolor/scalable/apps/example.tintoral.Tintoral.svg
/usr/share/lintian/overrides/tintoral-window
/usr/share/metainfo/example.tintoral.Tintoral.metainfo.xml'

check_papers() {
    lintian --fail-on error,warning --tag-display-limit 0 "$core" "$window" || fail "lintian has complaints"
    say "lintian has neither an error nor a warning"
    [ "$(dpkg-parsechangelog -l packaging/changelog -S Version)" = "$version" ] || fail "changelog is not at $version"
    grep -q "<release version=\"$version\"" packaging/*.metainfo.xml || fail "metainfo has no release $version"
    say "changelog and metainfo are at $version"
}

check_dependencies() {
    ! dpkg-deb -f "$core" Depends | grep -Eiq 'qt|avahi|libx|libgl|glib' || fail "the program depends on a window"
    dpkg-deb -f "$window" Depends | grep -qF "tintoral (= $version)" || fail "the window goes with any program"
    apt-get install --simulate --no-install-recommends -o Debug::NoLocking=1 "$core" "$window" >/dev/null ||
        fail "this system cannot install them"
    say "dependencies can be met"
}

dpkg_in_root() {
    dpkg --root="$root" --log=/dev/null --force-depends --force-script-chrootless "$@" >"$TMPDIR/dpkg" 2>&1 ||
        fail "dpkg $*: $(cat "$TMPDIR/dpkg")"
}

# The libraries stand in /lib, where the loader also looks and no file of the packages is.
make_root() {
    root=$(mktemp -d)
    mkdir -p "$root"/{dev,proc,run,var/lib/dpkg/{info,updates,triggers}}
    touch "$root/var/lib/dpkg/status"
    local loader
    libraries=/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
    loader=$(ldd /bin/true | grep -o '^\s*/[^ ]*ld-linux[^ ]*' | tr -d '[:blank:]')
    mkdir -p "$root$libraries" "$root$(dirname "$loader")"
    mount --bind "$libraries" "$root$libraries"
    [ -e "$root$loader" ] || cp -L "$loader" "$root$loader"
    mount --rbind /dev "$root/dev"
    mount --rbind /proc "$root/proc"
}

# in_root "VARIABLE=VALUE ..." PROGRAM ARGUMENT...: leaves its status, standard output and standard error.
in_root() {
    local variables
    read -r -a variables <<<"$1"
    shift
    status=0
    env -i HOME=/run PATH=/usr/bin:/usr/sbin "${variables[@]}" timeout 5 chroot "$root" "$@" >"$TMPDIR/out" 2>"$TMPDIR/err" || status=$?
    output=$(cat "$TMPDIR/out")
    errors=$(cat "$TMPDIR/err")
}

files_in_root() { find "$root" -xdev \( -path "$root/lib*" -o -path "$root/var/lib/dpkg" \) -prune -o \
    ! -type d -printf '/%P\n' | sort; }

expect_files() {
    diff <(sort <<<"$1" | sed '/^$/d') <(files_in_root) || fail "other files than expected"
}

# The second run, without the model table, shows that the first one read it.
check_filter() {
    local filter=(/usr/lib/cups/filter/tintoral 1 user title 1 "" /run/commands) table=$root/usr/share/tintoral/printers.xml
    printf '#CUPS-COMMAND\nReportLevels\n' >"$root/run/commands"
    in_root "DEVICE_URI=usb://x" "${filter[@]}"
    [ "$status$output$errors" = 0 ] || fail "the filter ended with $status: $errors"
    mv "$table" "$table.away"
    in_root "DEVICE_URI=usb://x" "${filter[@]}"
    [[ "$errors" == *" /usr/share/tintoral/printers.xml: missing" ]] || fail "the filter does not miss its table: $errors"
    mv "$table.away" "$table"
    rm "$root/run/commands"
    say "CUPS' filter runs and finds the model table"
}

check_program_alone() {
    in_root "" /usr/bin/tintoral --version
    [ "$output" = "Tintoral $version" ] || fail "--version prints '$output' $errors"
    in_root "DISPLAY=:0" /usr/bin/tintoral
    [ "$status" = 1 ] && [[ "$errors" == *"package tintoral-window"* ]] || fail "no word of the missing window: $errors"
    say "without its window the program says which package has it"
}

check_window() {
    in_root "QT_QPA_PLATFORM=offscreen QT_PLUGIN_PATH=$libraries/qt6/plugins" /usr/bin/tintoral
    [ "$status" = 124 ] || fail "the window did not stay open: $status $errors"
    rm -rf "$root"/run/{.[!.]*,*}
    say "the window opens and stays open"
    appstreamcli validate-tree --no-net "$root" >"$TMPDIR/appstream" || fail "$(cat "$TMPDIR/appstream")"
    desktop-file-validate "$root"/usr/share/applications/*.desktop || fail "desktop file"
    say "desktop file, metainfo and icons belong together"
}

check_removal() {
    dpkg_in_root --purge tintoral-window
    expect_files "$core_files"
    dpkg_in_root --purge tintoral
    expect_files ""
    [ ! -e "$root/usr" ] && [ ! -e "$root/etc" ] || fail "folders are left: $(find "$root/usr" "$root/etc")"
    say "removal leaves nothing"
}

if [ "${2:-}" != --inside ]; then
    check_papers
    check_dependencies
    exec tests/support/netns.sh tools/package_check.sh "$packages" --inside
fi
make_root
dpkg_in_root --install "$core"
expect_files "$core_files"
say "the program's files are in their places"
check_program_alone
check_filter
dpkg_in_root --install "$window"
expect_files "$core_files$window_files"
say "the window's files are in their places"
check_window
check_removal
