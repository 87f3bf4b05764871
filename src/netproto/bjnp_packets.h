// The packets of Canon's BJNP, built and taken apart. Pure; the exchanges are bjnp.h.
//
//   offset  size   header, big-endian, in front of every packet
//   0       4      "BJNP"
//   4       1      packet type: 01 request, 81 answer
//   5       1      command
//   6       2      error: 0 in requests, not examined in answers
//   8       2      sequence number
//   10      2      session: 0, or the one that set job details opened
//   12      4      payload length
//
//   command               sequence  payload                            payload length field
//   01 discover           0         none                               0
//   10 set job details    yes       392 bytes: 8 zeros, host name and  408, the size of the whole
//                                     user name (64 bytes each,          packet, as meant
//                                     UTF-16), job title (256 zeros)
//   11 close              yes       none                               0
//   20 get status         yes       none                               0
//   30 get device ID      0         4 zeros                            4
//
// An answer to discover has the MAC address at offset 22 and the IPv4 address at 28. The answers to
// get status and get device ID hold a text behind its length (two bytes, which count themselves).
// Where a packet ends is told by its datagram alone, never by its length field.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "support/byte_reader.h"
#include "support/fixed_text.h"
#include "transport/net/sockets.h"

namespace tintoral {

namespace bjnp_commands {
inline constexpr std::uint8_t discover = 0x01;
inline constexpr std::uint8_t setJobInfo = 0x10;
inline constexpr std::uint8_t close = 0x11;
inline constexpr std::uint8_t getStatus = 0x20;
inline constexpr std::uint8_t getDeviceID = 0x30;
}  // namespace bjnp_commands

// A printer that answered a discovery. The texts are clean (cleanText), of at most 64 bytes, and
// empty when the printer did not say them.
struct BjnpPrinter {
    MacAddress mac{};
    Ipv4Address address{};
    FixedText<65> model;       // "MDL:" of the device ID
    FixedText<65> commandSet;  // "CMD:" of the device ID
};

// Room for any request: set job details, with its 16 + 392 bytes, is the longest.
inline constexpr std::size_t kBjnpRequestRoom = 408;

// Builders write to a buffer of the caller's and return the bytes built, 0 when it is too small.
// `address` is the printer's, for the host name field.
std::size_t mkBjnpRequest(MutableBytes buffer, std::uint8_t command, std::uint16_t sequence,
                          std::uint16_t session);
std::size_t mkBjnpDeviceIDRequest(MutableBytes buffer);
std::size_t mkBjnpJobInfo(MutableBytes buffer, std::uint16_t sequence, std::string_view address);

// Writes `count` characters of two bytes each to `output`: a zero byte and the character, and zero
// pairs from the end of `text` on; no more than `output` holds. Result: the characters of `text`
// that were written.
std::size_t charTo2byte(MutableBytes output, std::string_view text, std::size_t count);

// A packet taken for the answer to `command`; nothing when magic, type or command are others or the
// header is cut off. The payload shares the packet's owner.
struct BjnpAnswer {
    std::uint16_t session;
    Bytes payload;
};
std::optional<BjnpAnswer> bjnpAnswerTo(std::uint8_t command, Bytes packet);

// The printer that an answer to discover speaks of, without its texts; nothing for any other packet
// and for one of less than 32 bytes.
std::optional<BjnpPrinter> bjnpDiscoveredPrinter(Bytes packet);

// Takes over the texts of a device ID that stands behind its two bytes of length. A key without a
// ";" after it leaves its text alone.
void nameBjnpPrinter(BjnpPrinter& printer, std::string_view deviceID);

}  // namespace tintoral
