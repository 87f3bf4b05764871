#!/bin/bash
# netns.sh COMMAND...: runs the command in a private user, network, mount and process namespace; all that it starts
# dies with it. Works as root and as an ordinary user; exit status 77 (ctest: skipped) where namespaces are refused.
#
#   lo          up, ports below 1024 may be bound
#   net0, net1  a veth pair, both ends in this namespace: 10.77.0.1/24, and 10.77.0.11 and .12 for printers
#   10.77.0.99  routed but nobody there: a host that never answers
#   /run        empty; HOME and TMPDIR are there
#   NS_UID=N    the command runs as user N without capabilities (cupsd wants that)
set -e
if [ "$1" != --inside ]; then
    if ! unshare --user --map-root-user --net true 2>/dev/null; then
        echo "SKIPPED: this machine makes no user and network namespaces" >&2
        exit 77
    fi
    exec unshare --user --map-root-user --net --mount --propagation private \
        --pid --fork --kill-child --mount-proc -- "$0" --inside "$@"
fi
shift
uid=${NS_UID:-0}

ip link set lo up
ip link add net0 type veth peer name net1
ip addr add 10.77.0.1/24 brd + dev net0
ip addr add 10.77.0.11/24 brd + dev net0
ip addr add 10.77.0.12/24 brd + dev net0
ip link set net0 up
ip link set net1 up
ip route add broadcast 255.255.255.255 dev net0
ip neigh replace 10.77.0.99 lladdr 02:00:00:00:00:99 dev net0 nud permanent
sysctl -qw net.ipv4.ip_unprivileged_port_start=0

source "$(dirname "${BASH_SOURCE[0]}")/daemon_names.sh" "$uid"

export HOME=/run TMPDIR=/run
if [ "$uid" != 0 ]; then
    exec unshare --user --map-user="$uid" --map-group="$uid" -- "$@"
fi
exec "$@"
