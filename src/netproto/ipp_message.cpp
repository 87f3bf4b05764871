#include "netproto/ipp_message.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>

#include "support/text.h"

namespace tintoral {
namespace {

constexpr std::uint8_t kMajorVersion = 1;
constexpr std::uint16_t kGetPrinterAttributes = 0x000B;

enum class Form { Nothing, Zero, Byte, Word, Range, DateTime, Text };

constexpr int kSkipped = -1;
constexpr int kUnknown = -2;

// How a value is written under its tag, and the kind under which a received one is kept.
struct TagRule {
    std::uint8_t tag;
    Form form;
    int kind;
};

constexpr TagRule kTagRules[] = {
    {ipp_tags::unsupported, Form::Nothing, kSkipped},
    {ipp_tags::unknown, Form::Zero, kSkipped},
    {ipp_tags::noValue, Form::Zero, kSkipped},
    {ipp_tags::integer, Form::Word, ipp_kinds::word},
    {ipp_tags::boolean, Form::Byte, ipp_kinds::word},
    {ipp_tags::enumeration, Form::Word, ipp_kinds::word},
    {ipp_tags::octetString, Form::Text, ipp_kinds::text},
    {ipp_tags::dateTime, Form::DateTime, ipp_kinds::text},
    {ipp_tags::resolution, Form::Zero, ipp_kinds::resolution},
    {ipp_tags::rangeOfInteger, Form::Range, ipp_kinds::range},
    {ipp_tags::beginCollection, Form::Zero, ipp_kinds::beginCollection},
    {ipp_tags::textWithLanguage, Form::Text, ipp_kinds::text},
    {ipp_tags::nameWithLanguage, Form::Text, ipp_kinds::text},
    {ipp_tags::endCollection, Form::Zero, ipp_kinds::endCollection},
    {ipp_tags::text, Form::Text, ipp_kinds::text},
    {ipp_tags::name, Form::Text, ipp_kinds::text},
    {ipp_tags::keyword, Form::Text, ipp_kinds::text},
    {ipp_tags::uri, Form::Text, ipp_kinds::text},
    {ipp_tags::uriScheme, Form::Zero, ipp_kinds::text},
    {ipp_tags::charset, Form::Text, ipp_kinds::text},
    {ipp_tags::naturalLanguage, Form::Text, ipp_kinds::text},
    {ipp_tags::mimeMediaType, Form::Text, ipp_kinds::text},
    {ipp_tags::memberName, Form::Zero, ipp_kinds::memberName},
};

TagRule ruleOf(std::uint8_t tag) {
    const auto* const rule = std::ranges::find(kTagRules, tag, &TagRule::tag);
    return rule != std::end(kTagRules) ? *rule : TagRule{tag, Form::Zero, kUnknown};
}

void appendText(ByteWriter& message, std::string_view text) {
    if (text.size() > std::numeric_limits<std::uint16_t>::max()) return message.fail();
    message.be16(static_cast<std::uint16_t>(text.size())).text(text);
}

void appendDateTime(ByteWriter& message, std::string_view text) {
    constexpr std::size_t kDateTimeSize = 11;
    if (text.size() != kDateTimeSize) return message.fail();
    appendText(message, text);
}

void appendValue(ByteWriter& message, std::uint8_t tag, const IppValue& value) {
    const auto number = static_cast<std::uint32_t>(value.number);
    switch (ruleOf(tag).form) {
        case Form::Nothing:
            message.be16(0);
            break;
        case Form::Zero:
            message.be16(1).u8(0);
            break;
        case Form::Byte:
            message.be16(1).u8(static_cast<std::uint8_t>(number));
            break;
        case Form::Word:
            message.be16(4).be32(number);
            break;
        case Form::Range:
            message.be16(8).be32(number).be32(static_cast<std::uint32_t>(value.upper));
            break;
        case Form::DateTime:
            appendDateTime(message, value.text);
            break;
        case Form::Text:
            appendText(message, value.text);
            break;
    }
}

// What a received value leaves in the list, and how much of it a message may leave.
class TupleCollector {
  public:
    explicit TupleCollector(IppTuples& list) : list_(list) {}

    void keep(const IppItem& item) {
        const int kind = ruleOf(item.tag).kind;
        if (kind == kUnknown) return reportUnknown(item.tag);
        if (kind == kSkipped || kept_ == kMaximumIppTuples) return;
        NewTuple2(list_, item.name.empty() ? 1 : 0, kind, item.name, item.value);
        ++kept_;
    }

  private:
    void reportUnknown(std::uint8_t tag) {
        if (unknown_ == kMaximumUnknownTagLines) return;
        std::printf("parse_ipp_attr : Unkown Tag!! type = %d\n", tag);
        ++unknown_;
    }

    IppTuples& list_;
    std::size_t kept_ = 0;
    int unknown_ = 0;
};

// The first bytes of the value, as many as a number of that kind has.
std::string storedValue(int kind, Bytes value) {
    std::string stored(asText(value));
    const bool isNumber =
        kind == ipp_kinds::word || kind == ipp_kinds::range || kind == ipp_kinds::resolution;
    if (isNumber) stored.resize(static_cast<std::size_t>(kind));
    return stored;
}

}  // namespace

void MkIppHeaderTop(ByteWriter& message, int version, std::uint16_t operation,
                    std::uint32_t requestId) {
    constexpr int kVersion10 = 10;
    message.u8(kMajorVersion).u8(version == kVersion10 ? 0 : 1).be16(operation).be32(requestId);
}

void make_attr(ByteWriter& message, std::uint8_t tag, std::string_view name,
               const IppValue& value) {
    message.u8(tag);
    appendText(message, name);
    appendValue(message, tag, value);
}

void make_compound_attr(ByteWriter& message, std::uint8_t tag, const IppValue& value) {
    make_attr(message, tag, "", value);
}

void make_1setOfattr(ByteWriter& message, std::uint8_t tag, std::string_view name,
                     std::span<const IppValue> values) {
    if (values.empty()) return;
    make_attr(message, tag, name, values.front());
    for (const IppValue& value : values.subspan(1)) make_compound_attr(message, tag, value);
}

void beginIppRequest(ByteWriter& message, std::string_view printerUri) {
    message.u8(ipp_tags::operationAttributes);
    make_attr(message, ipp_tags::charset, "attributes-charset", "utf-8");
    make_attr(message, ipp_tags::naturalLanguage, "attributes-natural-language", "en-us");
    make_attr(message, ipp_tags::uri, "printer-uri", printerUri);
}

std::size_t mkGetPrinterAttrRequest(std::uint32_t requestId, std::uint8_t minorVersion,
                                    std::string_view printerUri, std::string_view userName,
                                    std::span<const IppValue> attributes, MutableBytes output) {
    static const std::array<IppValue, 1> all{"all"};
    ByteWriter message(output);
    message.u8(kMajorVersion).u8(minorVersion).be16(kGetPrinterAttributes).be32(requestId);
    beginIppRequest(message, printerUri);
    make_attr(message, ipp_tags::name, "requesting-user-name", userName);
    make_1setOfattr(message, ipp_tags::keyword, "requested-attributes",
                    attributes.empty() ? std::span<const IppValue>(all) : attributes);
    return message.u8(ipp_tags::endOfAttributes).finish();
}

bool takeIppItem(ByteReader& reader, IppItem& item) {
    item = {};
    item.tag = reader.u8();
    if (item.isDelimiter()) return !reader.failed();
    item.name = asText(reader.take(reader.be16()));
    item.value = reader.take(reader.be16());
    return !reader.failed();
}

void NewTuple2(IppTuples& list, int index, int kind, std::string_view name, Bytes value) {
    list.push_front({index, kind, std::string(name), storedValue(kind, value)});
}

int ParseIppAttr(Bytes attributes, IppTuples& list) {
    DelTupleAll(list);
    TupleCollector collector(list);
    ByteReader reader(attributes);
    IppItem item;
    while (takeIppItem(reader, item)) {
        if (item.tag == ipp_tags::endOfAttributes)
            return static_cast<int>(attributes.size() - reader.remaining()) + 1;
        if (!item.isDelimiter()) collector.keep(item);
    }
    DelTupleAll(list);
    return -1;
}

std::size_t GetTupleValueAtIndex(const IppTuples& list, std::string_view name,
                                 std::string_view& out, int index) {
    const auto node = std::ranges::find_if(list, [&](const IppTuple& tuple) {
        return tuple.index == index && startsWithIgnoringCase(tuple.name, name);
    });
    out = node == list.end() ? std::string_view() : node->value;
    return out.size();
}

const IppTuple* findTuple(const IppTuples& list, std::string_view name, int kind) {
    const auto node = std::ranges::find_if(list, [&](const IppTuple& tuple) {
        return tuple.kind == kind && equalsIgnoringCase(tuple.name, name);
    });
    return node == list.end() ? nullptr : &*node;
}

std::optional<std::int32_t> ippNumber(std::string_view value) {
    ByteReader reader(asBytes(value));
    const std::uint32_t number = reader.be32();
    return reader.failed() ? std::nullopt : std::optional(static_cast<std::int32_t>(number));
}

}  // namespace tintoral
