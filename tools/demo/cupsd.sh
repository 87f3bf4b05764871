#!/bin/bash
# cupsd.sh FOLDER: becomes a cupsd on 127.0.0.1:631 with one queue, "office", whose printer has told its supplies.
# Run as root of a user namespace, where ports below 1024 may be bound; cupsd itself runs as another user.
set -e
if [ "$1" != --inside ]; then
    mkdir -p "$1/etc"
    cat > "$1/etc/printers.conf" <<'QUEUE'
<Printer office>
DeviceURI file:/dev/null
State Idle
Accepting Yes
Location Second floor
Attribute marker-types toner
Attribute marker-names Black Toner
Attribute marker-colors \#000000
Attribute marker-levels 46
</Printer>
QUEUE
    exec unshare --mount --propagation private -- "$0" --inside "$1"
fi
source tests/support/daemon_names.sh 1000
export HOME=/run TMPDIR=/run
exec unshare --user --map-user=1000 --map-group=1000 -- tests/support/cups/start_server.sh "$2"
