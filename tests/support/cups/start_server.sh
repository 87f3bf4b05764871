#!/bin/bash
# start_server.sh FOLDER: becomes a cupsd on 127.0.0.1:631 of a private network (netns.sh with an NS_UID other than 0)
# that keeps all it has in the folder. Exit status 77 where no cupsd is installed.
#
#   bin/filter, bin/backend   empty at first; what is put there, also before the start, queues can use
#   etc/printers.conf         queues that were there before the start
#   error_log                 all that it does, at level debug
set -e
PATH=$PATH:/usr/sbin # where it is, and where an ordinary user does not look
if ! command -v cupsd >/dev/null; then
    echo "SKIPPED: cupsd is not installed" >&2
    exit 77
fi
base=$1
mkdir -p /run/cups "$base"/bin/{backend,filter} "$base"/{etc/ppd,cache,state/certs,spool/temp}
for folder in daemon notifier cgi-bin monitor driver; do ln -sfn /usr/lib/cups/$folder "$base/bin/$folder"; done
cat > "$base/etc/cups-files.conf" <<FILES
ServerRoot $base/etc
ServerBin $base/bin
DataDir /usr/share/cups
DocumentRoot /usr/share/cups/doc-root
CacheDir $base/cache
StateDir $base/state
RequestRoot $base/spool
TempDir $base/spool/temp
AccessLog $base/access_log
ErrorLog $base/error_log
PageLog $base/page_log
SystemGroup root
User $(id -un)
FILES
cat > "$base/etc/cupsd.conf" <<DAEMON
ServerName localhost
Listen 127.0.0.1:631
Browsing Off
WebInterface No
DefaultAuthType None
LogLevel debug
IdleExitTimeout 0
PreserveJobHistory Yes
<Location />
  Order allow,deny
  Allow localhost
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
  </Limit>
</Policy>
DAEMON
exec cupsd -f -c "$base/etc/cupsd.conf" -s "$base/etc/cups-files.conf"
