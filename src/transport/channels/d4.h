// One channel of IEEE 1284.4 ("D4"), the packet protocol on whose control channel Epson printers
// take status inquiries, over any transport. Packets: packet.h. Every transaction of ours grants a
// credit of 1 in its header.
//
//   normal mode -> D4start -> packet mode -> D4open -> write, read ... -> D4close -> normal mode
//
//   transaction     payload after the command              of the reply, used here
//   Init            revision, 10 or 20                     result
//   GetSocketID     service name                           result, socket
//   OpenChannel     PSID, SSID, 00 C8, 00 C8, then         result, maximum sizes: printer-bound
//                     revision 16: 00 00 00 00               at 10, host-bound at 12, credit at 14
//                     other: FF FF                           or, other revision, at 16
//   CreditRequest   PSID, SSID, then                       result, credit at 10
//                     revision 16: 00 80 FF FF
//                     other: FF FF
//   Credit          PSID, SSID, 00 01                      result
//   CloseChannel    PSID, SSID                             result
//   Exit            -                                      result
//
// Waits: a receive takes up to 800 ms (1000 ms before packet mode), after a pause of 100 ms in an
// exchange. A silent printer takes some 30 s through all of a session; no printer gets more than 40
// s, from D4start() on, 2 s more for closing, and the packet that is then under way
// (transport_io.h). Results are integers; nothing is shown to the user.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "support/byte_reader.h"
#include "transport/channels/packet.h"
#include "vendors/transport_io.h"

namespace tintoral {

inline constexpr std::chrono::seconds kD4SessionTime{40};

struct D4Channel : PacketChannel {
    using PacketChannel::PacketChannel;
};

// The protocol revision of the last D4open, for all channels: 16 or 32.
extern int d4Revision;

// Room for any payload that D4read yields: a received packet is kept up to 512 bytes.
inline constexpr std::size_t kD4PayloadRoom = 506;

// Switches the printer into packet mode, in up to five attempts. Each waits for up to 256 bytes,
// but after an answer for as many as that had, as meant. A printer that was left in packet mode
// answers with an Error packet: its channel 2 is closed and packet mode ended before the next
// attempt. `name` is ignored. Result: 0 in packet mode, else -1.
int D4start(const IoHandle& handle, std::string_view name,
            SessionEnd end = sessionEndIn(kD4SessionTime));

// Opens the channel of a service (a name of at most 121 characters); null when the printer refuses
// one of the three steps. A printer that says nothing does not refuse: its socket, sizes and credit
// are then 0.
std::unique_ptr<D4Channel> D4open(const IoHandle& handle, std::string_view service, int revision,
                                  SessionEnd end = sessionEndIn(kD4SessionTime));

// Sends one data packet of at most 506 bytes. Without credit it asks for it, up to three times.
// Result: 0; 1 or -1 when the printer refuses the request; -1 when there is no credit or the data
// is too long.
int D4write(D4Channel& channel, Bytes data);

// Grants the printer one packet and waits for it. Packets of other sockets are dropped and
// transactions answered, up to 64 packets and for about 4 s. `length` is what was copied to
// `buffer` (kD4PayloadRoom bytes hold all). Result: 0; -1 when nothing came, the channel allows no
// packets this way, or the credit was refused; -1 as well, as meant, when a credit of an earlier
// read was still open, though the packet is then read and copied.
int D4read(D4Channel& channel, MutableBytes buffer, std::size_t& length);

// Closes the channel and leaves packet mode. Result: 0, and `channel` is null; or that of the step
// that failed, and `channel` is kept.
int D4close(std::unique_ptr<D4Channel>& channel);

// Sends channel.command and looks for its reply once. Result: 0, also when nothing came; 1 for any
// packet that is not the expected reply with result 0.
int d4SendAndReceive2(D4Channel& channel);

// Sends channel.command and receives up to five times, answering transactions that the printer
// starts. Result: 0 for the expected reply with result 0, and, as meant, when five receives bring
// no reply (lastReply() is empty then); -1 for another result or the reply to another command; 1
// for an Error packet. Packets of other sockets count as a receive.
int d4SendAndReceiveWithReverseCmd(D4Channel& channel);

// Answers a transaction that the printer started, of which `buffer` holds `received` bytes:
// CreditRequest with no credit, Credit (whose credit is the channel's from now on) with success,
// anything else but Error with a refusal, for which `buffer` is used. Packets of other sockets are
// left alone. Result: 0.
int d4execReverseCmd(D4Channel& channel, MutableBytes buffer, std::size_t received);

}  // namespace tintoral
