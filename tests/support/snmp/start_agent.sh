#!/bin/bash
# start_agent.sh ADDRESS OID_FILE STATE_FOLDER: becomes a net-snmp agent on UDP port 161 of the address that serves the
# objects in the file (see serve_oids.pl) to the community "public". The folder is the agent's own; it is made. Exit
# status 77 where no agent is installed.
set -e
PATH=$PATH:/usr/sbin # where it is, and where an ordinary user does not look
if ! command -v snmpd >/dev/null; then
    echo "SKIPPED: snmpd is not installed" >&2
    exit 77
fi
address=$1
objects=$(realpath "$2")
server="$(dirname "$(realpath "$0")")/serve_oids.pl"
mkdir -p "$3/persist"
cd "$3"

# By names without a blank: the agent takes a command apart at its blanks.
ln -sfn "$server" serve_oids.pl
ln -sfn "$objects" objects
{
    echo "agentaddress udp:$address:161"
    echo "rocommunity public"
    echo "sysdescr virtual printer"
    # The Printer MIB, hrDevice and hrPrinter, and the objects of three vendors
    for subtree in 2.1.43 2.1.25.3 4.1.11 4.1.1240 4.1.2435; do
        echo "pass_persist .1.3.6.1.$subtree /usr/bin/perl serve_oids.pl objects"
    done
} > agent.conf

# The list of modules keeps the agent's own Host Resources MIB from answering in the printer's place. The persistent
# folder is not that of agent.conf: the agent writes a file of its own name there when it ends.
export MIBS= SNMP_PERSISTENT_DIR=$PWD/persist SNMPCONFPATH=$PWD
exec snmpd -f -Lf log -C -c agent.conf -I \
    system_mib,sysORTable,vacm_conf,vacm_vars,vacm_context,pass,pass_persist,snmpEngine,snmpMPDStats,usmStats,usmUser
