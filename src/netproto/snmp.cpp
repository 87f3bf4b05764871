#include "netproto/snmp.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <optional>

#include "ink/byte_helpers.h"
#include "support/byte_writer.h"
#include "support/text.h"

namespace tintoral {
namespace {

constexpr std::string_view kCommunity = "public";
constexpr std::uint8_t kSnmpVersion1 = 0;
constexpr std::size_t kLargestPacket = 2048;

using Scratch = std::array<std::uint8_t, kLargestPacket>;

constexpr bool isNumber(std::uint32_t tag) {
    return tag == ber_tags::integer || (tag >= ber_tags::ipAddress && tag <= ber_tags::timeTicks);
}

constexpr bool isFourByteNumber(std::uint32_t tag) {
    return tag == ber_tags::integerLike || (tag >= ber_tags::counter && tag <= ber_tags::timeTicks);
}

constexpr bool holdsBytes(std::uint32_t tag) {
    return tag == ber_tags::octetString || tag == ber_tags::objectIdentifier ||
           tag == ber_tags::sequence || tag == ber_tags::ipAddress ||
           (tag >= snmp_pdus::getRequest && tag <= snmp_pdus::trap);
}

struct Tlv {
    std::uint32_t tag = 0;
    Bytes content;
    std::size_t length = 0;  // of the content, as announced
    std::size_t size = 0;    // header and content, as announced
};

// The next TLV; of one that was cut off, as much of its content as is there: what stands first in
// it may be sound.
std::optional<Tlv> enterTlv(ByteReader& reader) {
    const Bytes rest = reader.rest();
    const std::size_t header = berOffset(rest);
    if (header == 0) return std::nullopt;
    const std::size_t length = berLength(rest);
    const std::uint8_t tag = reader.u8();
    reader.skip(header - 1);
    return Tlv{tag, reader.take(std::min(length, reader.remaining())), length, header + length};
}

// The next TLV; nothing when it is not wholly there. The reader then stays where it was.
std::optional<Tlv> takeTlv(ByteReader& reader) {
    ByteReader ahead = reader;
    const auto tlv = enterTlv(ahead);
    if (!tlv || tlv->content.size() < tlv->length) return std::nullopt;
    reader = ahead;
    return tlv;
}

void decode(const Tlv& tlv, SnmpValue& value) {
    value.number = 0;
    value.text.clear();
    if (isNumber(tlv.tag)) value.number = b2i(tlv.content);
    if (tlv.tag == ber_tags::octetString) value.text.assign(asText(tlv.content));
    if (tlv.tag == ber_tags::objectIdentifier) objid2str(value.text, tlv.content);
}

std::uint32_t takeNumber(ByteReader& reader) {
    const auto tlv = takeTlv(reader);
    return tlv ? static_cast<std::uint32_t>(b2i(tlv->content)) : 0;
}

void clearStart(MutableBytes output) {
    constexpr std::size_t kCleared = 8;
    std::ranges::fill(output.first(std::min(kCleared, output.size())), std::uint8_t{0});
}

void appendTlv(ByteWriter& writer, std::uint32_t tag, Bytes content) {
    std::array<std::uint8_t, 4> header{static_cast<std::uint8_t>(tag)};
    const std::size_t size = setBerLength(header, content.size());
    writer.bytes(Bytes(header).first(size)).bytes(content);
}

// A part that was built on the side; the whole fails with it.
void appendPart(ByteWriter& writer, std::uint32_t tag, const ByteWriter& part) {
    if (part.failed()) writer.fail();
    appendTlv(writer, tag, part.written());
}

std::size_t encodedValue(const SnmpMessage& message, const SnmpVarBind& binding,
                         MutableBytes output) {
    const bool asks =
        message.pduType == snmp_pdus::getRequest || message.pduType == snmp_pdus::getNextRequest;
    if (asks) return mkBER(ber_tags::null, Bytes(), output);
    if (binding.valueType == ber_tags::integer || isFourByteNumber(binding.valueType)) {
        return mkBER(binding.valueType, binding.value.number, binding.valueLength, output);
    }
    return mkBER(binding.valueType, asBytes(binding.value.text.view()), output);
}

void appendBinding(ByteWriter& list, const SnmpMessage& message, const SnmpVarBind& binding) {
    std::array<std::uint8_t, 512> oid{};
    Scratch value{};
    Scratch content{};
    ByteWriter writer(content);
    appendTlv(writer, ber_tags::objectIdentifier,
              Bytes(oid).first(inet10tobjid(binding.oid.view(), oid)));
    writer.bytes(Bytes(value).first(encodedValue(message, binding, value)));
    appendPart(list, ber_tags::sequence, writer);
}

void appendSmallNumber(ByteWriter& writer, std::uint32_t number) {
    writer.u8(ber_tags::integer).u8(1).u8(static_cast<std::uint8_t>(number));
}

// Request-id (always four bytes), error-status, error-index and the list of bindings.
void appendPdu(ByteWriter& writer, const SnmpMessage& message) {
    Scratch bindings{};
    ByteWriter list(bindings);
    for (const SnmpVarBind& binding : message.varBinds) {
        if (binding.oid.empty()) break;
        appendBinding(list, message, binding);
    }
    Scratch content{};
    ByteWriter pdu(content);
    pdu.u8(ber_tags::integer).u8(4).be32(message.requestId);
    appendSmallNumber(pdu, message.errorStatus);
    appendSmallNumber(pdu, message.errorIndex);
    appendPart(pdu, ber_tags::sequence, list);
    appendPart(writer, message.pduType, pdu);
}

// What stands before the bindings of a received packet.
struct Head {
    Tlv message;
    std::uint32_t version;
    std::size_t versionSize;
    std::string_view community;
    Tlv pdu;
    std::uint32_t requestId;
    std::uint32_t errorStatus;
    std::uint32_t errorIndex;
    std::optional<Tlv> list;
};

std::optional<Head> parseHead(Bytes packet) {
    ByteReader whole(packet);
    const auto message = enterTlv(whole);
    if (!message) return std::nullopt;
    ByteReader inside(message->content);
    const auto version = takeTlv(inside);
    const auto community = takeTlv(inside);
    const auto pdu = enterTlv(inside);
    if (!version || !community || !pdu) return std::nullopt;
    ByteReader fields(pdu->content);
    const std::uint32_t requestId = takeNumber(fields);
    const std::uint32_t errorStatus = takeNumber(fields);
    const std::uint32_t errorIndex = takeNumber(fields);
    return Head{*message,
                static_cast<std::uint32_t>(b2i(version->content)),
                version->size,
                asText(community->content),
                *pdu,
                requestId,
                errorStatus,
                errorIndex,
                enterTlv(fields)};
}

// The next binding of a list; false when it is not sound.
bool takeBinding(ByteReader& list, SnmpVarBind& binding) {
    const auto sequence = takeTlv(list);
    if (!sequence) return false;
    ByteReader inside(sequence->content);
    const auto oid = takeTlv(inside);
    if (!oid || oid->tag != ber_tags::objectIdentifier) return false;
    if (berGetValue3(inside.rest(), binding.valueType, binding.value, binding.valueLength) == 0)
        return false;
    objid2str(binding.oid, oid->content);
    return true;
}

// All of the number or nothing: a part of it would name another object.
bool appendArc(BoundedText& text, std::int32_t arc) {
    std::array<char, 12> dotAndNumber{'.'};
    char* const begin = dotAndNumber.data() + (text.empty() ? 0 : 1);
    const char* end = std::to_chars(begin, dotAndNumber.data() + dotAndNumber.size(), arc).ptr;
    const std::string_view number(dotAndNumber.data(),
                                  static_cast<std::size_t>(end - dotAndNumber.data()));
    const bool fits = number.size() <= text.capacity() - text.size();
    if (fits) text.append(number);
    return fits;
}

std::string_view pduName(std::uint32_t pduType) {
    switch (pduType) {
        case snmp_pdus::getRequest:
            return "GetRequest\n";
        case snmp_pdus::getNextRequest:
            return "GetNextRequest\n";
        case snmp_pdus::getResponse:
            return "Response\n";
        case snmp_pdus::setRequest:
            return "Set\n";
        case snmp_pdus::trap:
            return "Trap\n";
        default:
            return "";
    }
}

void dumpValue(BoundedText& text, const SnmpVarBind& binding) {
    const std::string words = cleanText(binding.value.text.c_str());
    switch (binding.valueType) {
        case ber_tags::integer:
            text.appendFormat("v = %d \n", binding.value.number);
            break;
        case ber_tags::octetString:
            text.appendFormat("v = '%s'\n", words.c_str());
            break;
        case ber_tags::null:
            text.append("v = null\n");
            break;
        case ber_tags::objectIdentifier:
            text.appendFormat("v = %s \n", words.c_str());
            break;
        default:
            text.appendFormat("v = %d\n", binding.value.number);
    }
}

void dumpHead(BoundedText& text, const Head& head) {
    const std::uint32_t tag = head.message.tag;
    text.appendFormat("header len = %c %d \n",
                      tag > ' ' && tag < 0x7F ? static_cast<char>(tag) : '?',
                      static_cast<int>(head.message.length));
    text.appendFormat("version = %d len = %d\n", static_cast<int>(head.version),
                      static_cast<int>(head.versionSize));
    text.appendFormat("community = %s \n",
                      cleanText(textBeforeNul(asBytes(head.community))).c_str());
    text.appendFormat("PDU Type = %02x len = %d", head.pdu.tag, static_cast<int>(head.pdu.size));
    text.append(pduName(head.pdu.tag));
    text.appendFormat("requestID = %d \n", static_cast<int>(head.requestId));
    text.appendFormat("error status = %d \n", static_cast<int>(head.errorStatus));
    text.appendFormat("error index = %d \n", static_cast<int>(head.errorIndex));
}

}  // namespace

std::size_t berOffset(Bytes tlv) {
    ByteReader reader(tlv);
    reader.skip(1);
    const std::uint8_t form = reader.u8();
    const std::size_t size = form < 0x80 ? 2 : form == 0x81 ? 3 : form == 0x82 ? 4 : 0;
    return reader.failed() || size > tlv.size() ? 0 : size;
}

std::size_t berLength(Bytes tlv) {
    ByteReader reader(tlv);
    reader.skip(1);
    const std::uint8_t form = reader.u8();
    if (form == 0x81) return reader.u8();
    return form == 0x82 ? reader.be16() : form;
}

std::size_t setBerLength(MutableBytes tlv, std::size_t length) {
    if (tlv.empty() || length > 0xFFFF) return 0;
    ByteWriter writer(tlv);
    writer.u8(tlv.front());
    if (length < 0x80) return writer.u8(static_cast<std::uint8_t>(length)).finish();
    if (length < 0x100) return writer.u8(0x81).u8(static_cast<std::uint8_t>(length)).finish();
    return writer.u8(0x82).be16(static_cast<std::uint16_t>(length)).finish();
}

std::size_t mkBerPkt(Bytes content, MutableBytes output) {
    const std::size_t header = setBerLength(output, content.size());
    if (header == 0 || content.size() > output.size() - header) return 0;
    std::ranges::copy(content, output.subspan(header).begin());
    return header + content.size();
}

std::size_t mkBER(std::uint32_t tag, std::int32_t number, std::size_t length, MutableBytes output) {
    clearStart(output);
    ByteWriter writer(output);
    writer.u8(static_cast<std::uint8_t>(tag));
    if (tag == ber_tags::integer && length == 1)
        return writer.u8(1).u8(static_cast<std::uint8_t>(number)).finish();
    if (tag != ber_tags::integer && !isFourByteNumber(tag)) return 0;
    return writer.u8(4).be32(static_cast<std::uint32_t>(number)).finish();
}

std::size_t mkBER(std::uint32_t tag, Bytes content, MutableBytes output) {
    clearStart(output);
    if (output.empty()) return 0;
    output[0] = static_cast<std::uint8_t>(tag);
    if (tag == ber_tags::null) return mkBerPkt(Bytes(), output);
    return holdsBytes(tag) ? mkBerPkt(content, output) : 0;
}

std::size_t objid2str(BoundedText& text, Bytes content) {
    constexpr std::uint8_t kIsoOrg = 0x2B;
    text.clear();
    ByteReader reader(content);
    if (ByteReader(content).u8() == kIsoOrg) {
        text.append("1.3");
        reader.skip(1);
    }
    std::uint32_t arc = 0;
    while (!reader.atEnd()) {
        const std::uint8_t byte = reader.u8();
        arc = arc << 7 | (byte & 0x7FU);
        if ((byte & 0x80) != 0) continue;
        if (!appendArc(text, static_cast<std::int32_t>(arc))) break;
        arc = 0;
    }
    return text.size();
}

std::size_t inet10tobjid(std::string_view dotted, MutableBytes output) {
    ByteWriter writer(output);
    for (const std::string_view prefix : {"2B.", "1.3."}) {
        if (!dotted.starts_with(prefix)) continue;
        writer.u8(0x2B);
        dotted.remove_prefix(prefix.size());
        break;
    }
    while (!dotted.empty()) {
        const std::size_t end = std::min(dotted.find('.'), dotted.size());
        std::uint32_t arc = 0;
        std::from_chars(dotted.data(), dotted.data() + end, arc);
        if (arc >= 1U << 14) writer.u8(static_cast<std::uint8_t>(0x80 | (arc >> 14 & 0x7F)));
        if (arc >= 1U << 7) writer.u8(static_cast<std::uint8_t>(0x80 | (arc >> 7 & 0x7F)));
        writer.u8(static_cast<std::uint8_t>(arc & 0x7F));
        dotted.remove_prefix(std::min(end + 1, dotted.size()));
    }
    return writer.finish();
}

std::size_t berGetValue3(Bytes tlv, std::uint32_t& tag, SnmpValue& value, std::uint32_t& length) {
    ByteReader reader(tlv);
    const auto taken = takeTlv(reader);
    const Tlv element = taken.value_or(Tlv{});
    tag = element.tag;
    length = static_cast<std::uint32_t>(element.content.size());
    decode(element, value);
    return element.size;
}

std::size_t berGetValue2(Bytes tlv, SnmpValue& value, std::uint32_t& tag) {
    std::uint32_t length = 0;
    return berGetValue3(tlv, tag, value, length);
}

std::uint32_t berGetValue(Bytes tlv, SnmpValue& value) {
    std::uint32_t tag = 0;
    berGetValue2(tlv, value, tag);
    return tag;
}

std::size_t mkSNMPSrcPacket(MutableBytes output, const SnmpMessage& message) {
    Scratch content{};
    ByteWriter writer(content);
    writer.u8(ber_tags::integer).u8(1).u8(kSnmpVersion1);
    appendTlv(writer, ber_tags::octetString, asBytes(kCommunity));
    appendPdu(writer, message);
    return writer.failed() ? 0 : mkBER(ber_tags::sequence, writer.written(), output);
}

int parseSnmpPacket(Bytes packet, SnmpMessage& message) {
    message = {};
    const auto head = parseHead(packet);
    if (!head) return 0;
    message.pduType = head->pdu.tag;
    message.requestId = head->requestId;
    message.errorStatus = head->errorStatus;
    message.errorIndex = head->errorIndex;
    if (!head->list) return 0;
    ByteReader list(head->list->content);
    std::size_t count = 0;
    while (count < SnmpMessage::kBindings && !list.atEnd() &&
           takeBinding(list, message.varBinds[count]))
        ++count;
    return static_cast<int>(count);
}

std::uint32_t sdumpSnmpPacket(BoundedText& text, Bytes packet) {
    const auto head = parseHead(packet);
    if (!head) return 0;
    dumpHead(text, *head);
    if (!head->list) return 0;
    text.appendFormat("Body %02x len = %02x \n", head->list->tag,
                      static_cast<unsigned>(head->list->size));
    ByteReader list(head->list->content);
    SnmpVarBind binding;
    while (!list.atEnd() && takeBinding(list, binding)) {
        text.appendFormat("oid = %s", binding.oid.c_str());
        dumpValue(text, binding);
    }
    return 0;
}

std::uint32_t dumpSnmpPacket(Bytes packet) {
    FixedText<4096> text;
    const std::uint32_t result = sdumpSnmpPacket(text, packet);
    std::printf("%s", text.c_str());
    return result;
}

}  // namespace tintoral
