// One MLC channel, the packet protocol before IEEE 1284.4 in which older HP printers (device ID
// "MLC,PCL,PML") take management requests, over any transport. Packets: packet.h. The channel is
// always socket 1, and no transaction of ours grants credit in its header.
//
//   transaction     payload after the command     of the reply, used here
//   Init            revision 3                    result
//   0x07            1, 00 C8, 00 C8, 0            result, maximum sizes: printer-bound at 8,
//                                                   host-bound at 10
//   OpenChannel     PSID, SSID, 00 00             result, credit at 8
//   CreditRequest   PSID, SSID, 00 01             result, credit at 8
//   Credit          PSID, SSID, 00 01             result
//   CloseChannel    PSID, SSID                    result
//   Exit            -                             result
//
// Waits: a receive takes up to 1200 ms, and all of a session from MLCopen() on no more than 60 s, 2
// s more for closing, and the packet that is then under way (transport_io.h). Results are integers;
// nothing is shown to the user.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "support/byte_reader.h"
#include "transport/channels/packet.h"
#include "vendors/transport_io.h"

namespace tintoral {

struct MLCChannel : PacketChannel {
    using PacketChannel::PacketChannel;
};

// Room for any payload that MLCread yields: a received packet is kept up to 512 bytes.
inline constexpr std::size_t kMLCPayloadRoom = 506;

// Sends the PCL printer reset and lets the printer answer once; what it says is ignored. Result: 0.
int MLCstart(TcpSocket connection);

// Opens the channel; null when the printer refuses one of the three steps or does not answer it.
std::unique_ptr<MLCChannel> MLCopen(const IoHandle& handle);

// Sends one data packet of at most 65529 bytes, its header and its data apart. Without credit it
// asks for it, up to four times, and then receives once more for a transaction of the printer's.
// Result: 0; 1 or -1 when a request fails; -1 when there is no credit or the data is too long.
int MLCwrite(MLCChannel& channel, Bytes data);

// Grants the printer one packet and waits for it among the next ten packets. Packets of other
// sockets are dropped and transactions answered. `length` is what was copied to `buffer`
// (kMLCPayloadRoom bytes hold all). Result: 0; -1 when nothing came, the channel allows no packets
// this way, or a credit of an earlier read is still open (nothing is read then, as meant).
int MLCread(MLCChannel& channel, MutableBytes buffer, std::size_t& length);

// Closes the channel and leaves packet mode. Result: 0, and `channel` is null; or that of the step
// that failed, and `channel` is kept.
int MLCclose(std::unique_ptr<MLCChannel>& channel);

// Sends channel.command and receives once. Result: 0 for the expected reply with result 0, else -1.
int mlcSendAndReceive(MLCChannel& channel);

// Sends channel.command and receives up to ten times, at most 16 bytes each, answering transactions
// that the printer starts. Result: 0 for the expected reply with result 0, 1 for an Error packet,
// but -1 for either on the tenth receive, as meant; and 0, as meant, when ten receives bring
// neither (lastReply() is empty then).
int mlcSendAndReceiveWithReverseCmd(MLCChannel& channel);

// Answers a transaction that the printer started, of which `buffer` holds `received` bytes:
// CreditRequest with no credit, Credit (whose credit is the channel's from now on) with success,
// anything else but Error with a refusal, for which `buffer` is used. Packets of other sockets are
// left alone. Result: 0.
int MLCexecReverseCmd(MLCChannel& channel, MutableBytes buffer, std::size_t received);

}  // namespace tintoral
