#!/bin/bash
# start_agent.sh ADDRESS OID_FILE STATE_FOLDER: becomes a net-snmp agent on UDP port 161 of the address that serves the
# objects in the file (see serve_oids.pl) to the community "public". The folder is the agent's own; it is made.
set -e
address=$1
objects=$(realpath "$2")
state=$3
mkdir -p "$state/persist"
state=$(realpath "$state")
server="$(dirname "$(realpath "$0")")/serve_oids.pl"

cat > "$state/agent.conf" <<CONF
agentaddress udp:$address:161
rocommunity public
sysdescr virtual printer
pass_persist .1.3.6.1.2.1.43 /usr/bin/perl $server $objects
pass_persist .1.3.6.1.2.1.25.3 /usr/bin/perl $server $objects
pass_persist .1.3.6.1.4.1.11 /usr/bin/perl $server $objects
CONF

# The list of modules keeps the agent's own Host Resources MIB from answering in the printer's place. The persistent
# folder is not that of agent.conf: the agent writes a file of its own name there when it ends.
export MIBS= SNMP_PERSISTENT_DIR=$state/persist SNMPCONFPATH=$state
exec snmpd -f -Lf "$state/log" -C -c "$state/agent.conf" -I \
    system_mib,sysORTable,vacm_conf,vacm_vars,vacm_context,pass,pass_persist,snmpEngine,snmpMPDStats,usmStats,usmUser
