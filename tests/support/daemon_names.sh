# daemon_names.sh, to be sourced as root of a private mount namespace, UID in $1: an empty /run, and user names.
#
# Daemons have paths in /run compiled in and look up users of their own: one id is mapped there, so each of those names
# is that id.
mount -t tmpfs -o mode=1777 tmpfs /run
{
    echo "root:x:0:0:root:/run:/bin/sh"
    for name in tester avahi messagebus lp Debian-snmp; do echo "$name:x:$1:$1::/run:/bin/sh"; done
    echo "nobody:x:65534:65534::/:/bin/false"
} > /run/passwd
{
    echo "root:x:0:"
    for name in tester avahi netdev messagebus lp lpadmin Debian-snmp; do echo "$name:x:$1:"; done
    echo "nogroup:x:65534:"
} > /run/group
mount --bind /run/passwd /etc/passwd
mount --bind /run/group /etc/group
