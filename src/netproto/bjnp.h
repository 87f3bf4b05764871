// Canon's BJNP: how network printers of this maker are found, named and asked for their status, on
// UDP port 8611.
//
//   offset  size   header, big-endian, in front of every packet
//   0       4      "BJNP"
//   4       1      packet type: 01 request, 81 answer
//   5       1      command: 01 discover, 10 set job details, 11 close, 20 get status,
//                  30 get device ID
//   6       2      error: 0 in requests, not examined in answers
//   8       2      sequence number: 0 for discover and get device ID
//   10      2      session: 0, or the one that set job details opened
//   12      4      payload length: 0; 4 for get device ID (4 zero bytes); 408 for set job
//                  details, which is the size of its whole packet, as meant
//
//   payload of set job details (392 bytes)          answer to discover, offsets in the packet
//   0       8      zero                             22      6      MAC address
//   8       64     host name, UTF-16                28      4      IPv4 address
//   72      64     user name, UTF-16
//   136     256    job title: zero
//
// A session lies between two calls: bjnpSetJobInfo() opens it, bjnpUdpClose() ends it. An exchange
// sends up to two times and waits 500 ms each time, so it takes 1 s at the most. It ends the
// process with status 1 when no socket can be made ("Client:socket" on standard error). Only what
// the asked address sends from port 8611 is heard; the datagram's own size rules, never its length
// field.
//
// Calls are made from one thread at a time, but for the sequence number, which they may share.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/byte_reader.h"
#include "support/fixed_text.h"
#include "transport/net/sockets.h"

namespace tintoral {

// A printer that answered a discovery. The texts are clean (cleanText), of at most 64 bytes, and
// empty when the printer did not say them.
struct BjnpPrinter {
    MacAddress mac{};
    Ipv4Address address{};
    FixedText<65> model;       // "MDL:" of the device ID
    FixedText<65> commandSet;  // "CMD:" of the device ID
};

// Room for all that a printer can say in one answer.
using BjnpText = FixedText<1500>;

// Finds the printers in the network of the first interface: three broadcasts, after each of which
// answers are heard for 400 ms; then each printer is asked for its device ID. `printers` is
// replaced. An answer shorter than 32 bytes is none; a printer is listed once however often it
// answers; 256 printers at the most are listed, and those that come to be asked later than 30 s
// after the first one stay unnamed.
//
// Result: the number found; -1 when the socket could not be prepared (`printers` is then empty).
int bjnpDiscovery(std::vector<BjnpPrinter>& printers);

// 0 when a record has that IPv4 address and the same first four bytes of the MAC address, else 1.
int isBJNPPrinter(std::span<const BjnpPrinter> printers, const Ipv4Address& address,
                  const MacAddress& mac);

// Asks for the IEEE 1284 device ID, which comes with two bytes of length in front. `ignored` is not
// used. Result: the length of `deviceID` as received, which may hold any byte; 0 when nothing came;
// the size of the answer when it is none to this question (`deviceID` is then left alone).
int bjnpGetDeviceID(const Ipv4Address& address, int ignored, BoundedText& deviceID);

// The steps of a status exchange. `address` is a dotted IPv4 address; for any other text they
// return 0 at once. An answer with another magic, type or command, or one that names a session
// other than the one asked in, leaves their output alone.
//
// Opens a session; `session` is left alone when none is given. The last two texts are not used.
// Result: the size of the answer, 0 when none came.
int bjnpSetJobInfo(const std::string& address, std::uint16_t& session, std::string_view maker,
                   std::string_view product);

// Result: the length of `status` as received (two bytes of length, then Canon's status text; it may
// hold any byte), 0 when nothing came; the size of the answer when it is none to this question.
int bjnpGetStatus(const std::string& address, std::uint16_t session, BoundedText& status);

// Ends the session. Result: the size of the answer, 0 when none came.
int bjnpUdpClose(const std::string& address, std::uint16_t session);

// One exchange with port 8611. `reply` is the caller's and is cleared to its full size before each
// of the two attempts. Result: the size of the reply, 0 when none came.
int udpSendAndReceive(const Ipv4Address& address, Bytes packet, MutableBytes reply);

// Writes `count` characters of two bytes each to `output`: a zero byte and the character, and zero
// pairs from the end of `text` on; no more than `output` holds. Result: the characters of `text`
// that were written.
std::size_t charTo2byte(MutableBytes output, std::string_view text, std::size_t count);

}  // namespace tintoral
