// SNMP version 1 (RFC 1157) as far as printers need it: a message record and the Basic Encoding
// Rules (X.690) for the types that printers answer with. Pure; snmp_exchange.h sends and receives.
//
//   message    30 len | 02 01 00 version | 04 06 "public" | PDU
//   PDU        A0..A4 len | 02 04 request-id | 02 01 error-status | 02 01 error-index | bindings
//   bindings   30 len | binding...
//   binding    30 len | 06 len OID | value
//
// Lengths are understood and written in three forms: one byte below 128, 81 and one byte, 82 and
// two bytes. A packet is foreign: whatever does not fit its announced lengths is not read, and what
// was decoded before it stands.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

namespace snmp_pdus {
inline constexpr std::uint32_t getRequest = 160;
inline constexpr std::uint32_t getNextRequest = 161;
inline constexpr std::uint32_t getResponse = 162;
inline constexpr std::uint32_t setRequest = 163;
inline constexpr std::uint32_t trap = 164;
}  // namespace snmp_pdus

namespace ber_tags {
inline constexpr std::uint32_t integer = 2;
inline constexpr std::uint32_t octetString = 4;
inline constexpr std::uint32_t null = 5;
inline constexpr std::uint32_t objectIdentifier = 6;
inline constexpr std::uint32_t sequence = 48;
// No meaning in SNMP; written like a counter, as meant.
inline constexpr std::uint32_t integerLike = 50;
inline constexpr std::uint32_t ipAddress = 64;
inline constexpr std::uint32_t counter = 65;
inline constexpr std::uint32_t gauge = 66;
inline constexpr std::uint32_t timeTicks = 67;
}  // namespace ber_tags

// An object identifier in dotted decimals.
using OidText = FixedText<260>;

// A decoded value: a number for the integer types, text for the others. Octet strings may hold any
// byte and are cut at 511; clean them before they are shown.
struct SnmpValue {
    std::int32_t number = 0;
    FixedText<512> text;
};

struct SnmpVarBind {
    OidText oid;  // empty: the list of bindings ends here
    std::uint32_t valueType = 0;
    std::uint32_t valueLength = 0;  // as received; value.text may hold fewer bytes
    SnmpValue value;
};

// A request to encode and, after an exchange, the answer to it. Fresh records are cleared.
struct SnmpMessage {
    static constexpr std::size_t kBindings = 10;

    std::uint32_t pduType = 0;
    std::uint32_t requestId = 0;
    std::uint32_t errorStatus = 0;  // its low byte is encoded
    std::uint32_t errorIndex = 0;   // its low byte is encoded
    std::array<SnmpVarBind, kBindings> varBinds;
};

// ---- Basic Encoding Rules. A TLV is a tag byte, a length and that many bytes of content. ----

// The size of a TLV's header: 2, 3 or 4; 0 for a length form that is not supported or a header that
// is cut off.
std::size_t berOffset(Bytes tlv);

// The content length that the header announces; for a form that is not supported the value of its
// first length byte. It says nothing about the bytes that really follow.
std::size_t berLength(Bytes tlv);

// Writes the length bytes after the tag byte of a TLV being built. Result: the header's size, 0
// when it does not fit or the length is above 65,535.
std::size_t setBerLength(MutableBytes tlv, std::size_t length);

// Completes a TLV whose tag byte stands in `output`: writes length and content. Result: its whole
// size, 0 when it does not fit.
std::size_t mkBerPkt(Bytes content, MutableBytes output);

// Writes a whole TLV with a number: 4 content bytes, or for INTEGER 1 byte when `length` is 1.
// Result: its size; 0 for a tag that holds no number or when it does not fit. The first 8 bytes of
// `output` are cleared first.
std::size_t mkBER(std::uint32_t tag, std::int32_t number, std::size_t length, MutableBytes output);

// Writes a whole TLV with the given content; for NULL 05 00. Result as above, for the tags that
// hold bytes.
std::size_t mkBER(std::uint32_t tag, Bytes content, MutableBytes output);

// The dotted text of an encoded OID. A leading 2B is "1.3."; no other first byte is split.
// Sub-identifiers are shown as signed 32-bit numbers; the first that does not fit, or is cut off,
// ends the text. Result: the number of characters.
std::size_t objid2str(BoundedText& text, Bytes content);

// Encodes a dotted OID: "1.3." or "2B." becomes 2B, each further number takes one to three bytes of
// seven bits; higher bits are lost, as meant, and what is no 32-bit number becomes 0. Result: the
// bytes written, 0 when they do not fit.
std::size_t inet10tobjid(std::string_view dotted, MutableBytes output);

// Decodes the TLV at the start of `tlv`. berGetValue gives its tag; berGetValue2 and 3 give its
// whole size, and the tag, and the content length. A value of an unknown tag is left cleared. A TLV
// that is cut off or of an unsupported form yields tag 0 and size 0.
std::uint32_t berGetValue(Bytes tlv, SnmpValue& value);
std::size_t berGetValue2(Bytes tlv, SnmpValue& value, std::uint32_t& tag);
std::size_t berGetValue3(Bytes tlv, std::uint32_t& tag, SnmpValue& value, std::uint32_t& length);

// ---- Messages ----

// Encodes the message. A binding's value is NULL in a GetRequest and a GetNextRequest, whatever the
// record holds. Result: the size, 0 when it does not fit (1024 bytes hold ten bindings of ordinary
// OIDs).
std::size_t mkSNMPSrcPacket(MutableBytes output, const SnmpMessage& message);

// Decodes a received packet into the record, which is cleared first. Of a packet that was cut off,
// the bindings that are whole are there. Further bindings than ten are dropped. Neither the
// request-id nor the error-status is judged; callers go by the OIDs. Result: the number of
// bindings.
int parseSnmpPacket(Bytes packet, SnmpMessage& message);

// Appends a readable dump of the packet, as far as it is sound. Result: 0.
std::uint32_t sdumpSnmpPacket(BoundedText& text, Bytes packet);

// Prints the dump, at most 4 KB of it, to standard output. Result: 0.
std::uint32_t dumpSnmpPacket(Bytes packet);

}  // namespace tintoral
