#include "netproto/snmp_exchange.h"

#include "transport/net/sockets.h"

namespace tintoral {

int snmpSendAndReceive(const std::string& host, Bytes packet, MutableBytes reply) {
    const UniqueFd socket = openUdpSocket();
    if (!socket.valid()) return -1;
    return udpExchange(socket.get(), host, kSnmpService, packet, reply, OnSendFailure::GiveUp);
}

}  // namespace tintoral
