// One SNMP exchange over UDP (RFC 1157, port 161).
#pragma once

#include <string>

#include "support/byte_reader.h"

namespace tintoral {

// One exchange with port 161 of `host` (name or dotted address): two attempts of 100 ms each.
// `reply` is the caller's and is cleared to its full size. Result: the bytes of the reply; 0 when
// none came; -1 when no socket could be made or the request not be sent ("Client:socket", "Client:
// sendto" on standard error).
int snmpSendAndReceive(const std::string& host, Bytes packet, MutableBytes reply);

}  // namespace tintoral
