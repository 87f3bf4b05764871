// How Canon's network printers are found, named and asked for their status: BJNP on UDP port 8611.
//
// A status exchange has three steps: bjnpSetJobInfo() opens a session, bjnpGetStatus() asks in it,
// bjnpUdpClose() ends it. Their requests are numbered by one counter of the process, from 1 on.
//
// An exchange sends up to two times and waits 500 ms each time, so it takes 1 s at the most. It
// ends the process with status 1 when no socket can be made ("Client:socket" on standard error).
// Nothing is heard but what the asked address sends from port 8611. Answers are kept up to 1500
// bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "netproto/bjnp_packets.h"
#include "support/byte_reader.h"
#include "support/fixed_text.h"
#include "transport/net/sockets.h"

namespace tintoral {

// Room for all that a printer can say in one answer.
using BjnpText = FixedText<1500>;

// Finds the printers in the network of the first interface: three broadcasts, after each of which
// answers are heard for 400 ms; then each printer is asked for its device ID. `printers` is
// replaced. A printer is listed once, however often it answers. 256 printers at the most are
// listed, and those whose turn comes later than 30 s after the first one's stay unnamed.
//
// Result: the number found; -1 when the socket could not be prepared (`printers` is then empty).
int bjnpDiscovery(std::vector<BjnpPrinter>& printers);

// 0 when a record has that IPv4 address and the same first four bytes of the MAC address, else 1.
int isBJNPPrinter(std::span<const BjnpPrinter> printers, const Ipv4Address& address,
                  const MacAddress& mac);

// Asks for the IEEE 1284 device ID. `ignored` is not used. Result: the length of `deviceID` as
// received, its two bytes of length in front; 0 when nothing came; the size of what came when it is
// no answer to this question (`deviceID` is then left alone).
int bjnpGetDeviceID(const Ipv4Address& address, int ignored, BoundedText& deviceID);

// Opens a session; `session` is left alone when the answer is none. The last two texts are not
// used. Result: the size of the answer, 0 when none came. This and the next two return 0 at once
// when `address` is not a dotted IPv4 address.
int bjnpSetJobInfo(const std::string& address, std::uint16_t& session, std::string_view maker,
                   std::string_view product);

// Asks for the status text. Result: the length of `status` as received (it may hold any byte, its
// two bytes of length are in front); 0 when nothing came; the size of what came when it is no
// answer to this question (`status` is then left alone).
int bjnpGetStatus(const std::string& address, std::uint16_t session, BoundedText& status);

// Ends the session. Result: the size of the answer, 0 when none came.
int bjnpUdpClose(const std::string& address, std::uint16_t session);

// One exchange. `reply` is the caller's and is cleared to its full size in each of the two
// attempts. Result: the size of the reply, 0 when none came.
int udpSendAndReceive(const Ipv4Address& address, Bytes packet, MutableBytes reply);

}  // namespace tintoral
