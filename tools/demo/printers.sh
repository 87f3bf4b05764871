# To be sourced by demo.sh: start_printers starts all virtual printers that can stand here, into `children`, and notes
# those that cannot in `off`, a part of their name each.
off=()

start_agent() { # ADDRESS PRINTER: a printer that is asked by SNMP
    tests/support/snmp/start_agent.sh "$1" "$here/$2.oids" "$demo/snmp-$2" 2>/dev/null & children+=($!)
}

start_agents() {
    if [ "$(id -u)" = 0 ] && PATH=$PATH:/usr/sbin command -v snmpd >/dev/null; then
        start_agent 127.0.1.14 lexmark_c543
        start_agent 127.0.1.20 hp_officejet_pro_k550
        start_agent 127.0.1.21 brother_mfc_8440
    else
        echo "Port 161 cannot be bound here, or there is no snmpd: the SNMP printers stay off" >&2
        off+=(127.0.1.14 127.0.1.20 127.0.1.21)
    fi
}

start_queue() {
    if [ -n "${TINTORAL_DEMO_INSIDE:-}" ] && PATH=$PATH:/usr/sbin command -v cupsd >/dev/null; then
        "$here/cupsd.sh" "$PWD/$demo/cups" 2>/dev/null & children+=($!)
    else
        echo "There is no cupsd, or no namespace for one: the shared queue stays off" >&2
        off+=("Office @ server")
    fi
}

start_printers() {
    "$build/bin/tintoral-virtual-printers" & children+=($!)
    start_agents
    start_queue
}

is_off() { # ID
    local part
    for part in "${off[@]}"; do [[ $1 == *"$part"* ]] && return; done
    return 1
}

listens() { echo > "/dev/tcp/$1/$2"; }
printers_are_up() {
    wait_until 10 listens 127.0.1.11 9100 && { is_off "Office @ server" || wait_until 10 listens 127.0.0.1 631; }
}
