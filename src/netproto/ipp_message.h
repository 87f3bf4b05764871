// IPP messages (RFC 2910, RFC 8010): requests as bytes, answers as a list of values. Pure; the
// exchange is ipp.h.
//
//   offset  size
//   0       1     major version, 1
//   1       1     minor version
//   2       2     operation id of a request, status code of an answer; numbers: high byte first
//   4       4     request id
//   8             groups of attributes, each after a delimiter tag; 03 closes the last one
//
//   attribute           value tag (1) | name length (2) | name | value length (2) | value
//   further value of it value tag (1) | 00 00                  | value length (2) | value
//
// A builder whose buffer is too small, or which is given a text above 65,535 bytes, returns 0.
#pragma once

#include <cstdint>
#include <forward_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "support/byte_reader.h"
#include "support/byte_writer.h"

namespace tintoral {

namespace ipp_tags {
inline constexpr std::uint8_t operationAttributes = 0x01;
inline constexpr std::uint8_t endOfAttributes = 0x03;
inline constexpr std::uint8_t subscriptionAttributes = 0x06;
inline constexpr std::uint8_t firstValueTag = 0x0F;  // those below are delimiters
inline constexpr std::uint8_t unsupported = 0x10;
inline constexpr std::uint8_t unknown = 0x12;
inline constexpr std::uint8_t noValue = 0x13;
inline constexpr std::uint8_t integer = 0x21;
inline constexpr std::uint8_t boolean = 0x22;
inline constexpr std::uint8_t enumeration = 0x23;
inline constexpr std::uint8_t octetString = 0x30;
inline constexpr std::uint8_t dateTime = 0x31;
inline constexpr std::uint8_t resolution = 0x32;
inline constexpr std::uint8_t rangeOfInteger = 0x33;
inline constexpr std::uint8_t beginCollection = 0x34;
inline constexpr std::uint8_t textWithLanguage = 0x35;
inline constexpr std::uint8_t nameWithLanguage = 0x36;
inline constexpr std::uint8_t endCollection = 0x37;
inline constexpr std::uint8_t text = 0x41;
inline constexpr std::uint8_t name = 0x42;
inline constexpr std::uint8_t keyword = 0x44;
inline constexpr std::uint8_t uri = 0x45;
inline constexpr std::uint8_t uriScheme = 0x46;
inline constexpr std::uint8_t charset = 0x47;
inline constexpr std::uint8_t naturalLanguage = 0x48;
inline constexpr std::uint8_t mimeMediaType = 0x49;
inline constexpr std::uint8_t memberName = 0x4A;
}  // namespace ipp_tags

// ---- Requests ----

// A value to encode; which of its members counts depends on the tag it is written under.
struct IppValue {
    std::string_view text;    // text-like tags; dateTime: 11 bytes (RFC 2579 DateAndTime)
    std::int32_t number = 0;  // integer, enum, boolean; rangeOfInteger: the lower end
    std::int32_t upper = 0;   // rangeOfInteger: the upper end

    IppValue(std::string_view words) : text(words) {}
    IppValue(const char* words) : text(words) {}
    IppValue(std::int32_t value) : number(value) {}
    IppValue(std::int32_t lower, std::int32_t upperEnd) : number(lower), upper(upperEnd) {}
};

// The first 8 bytes. Minor version 0 for `version` 10, else 1.
void MkIppHeaderTop(ByteWriter& message, int version, std::uint16_t operation,
                    std::uint32_t requestId);

// An attribute with one value. Integer and enum take 4 bytes, boolean 1, dateTime 11 (a text of
// another size fails), rangeOfInteger 8, unsupported none, the text-like tags the text's bytes. Any
// other tag (also those for which there are values, as resolution) gets one zero byte, as meant.
void make_attr(ByteWriter& message, std::uint8_t tag, std::string_view name, const IppValue& value);

// A further value of the attribute before it.
void make_compound_attr(ByteWriter& message, std::uint8_t tag, const IppValue& value);

// An attribute with all of `values`; nothing when there are none.
void make_1setOfattr(ByteWriter& message, std::uint8_t tag, std::string_view name,
                     std::span<const IppValue> values);

// The three attributes that every request of ours begins with (RFC 8011, 4.1.4 and 4.1.5):
// delimiter 01, charset "utf-8", language "en-us", and the printer's URI.
void beginIppRequest(ByteWriter& message, std::string_view printerUri);

// A Get-Printer-Attributes request (operation 000B) with `minorVersion` as it is given. An empty
// list asks for "all". Result: its size, 0 when `output` is too small.
std::size_t mkGetPrinterAttrRequest(std::uint32_t requestId, std::uint8_t minorVersion,
                                    std::string_view printerUri, std::string_view userName,
                                    std::span<const IppValue> attributes, MutableBytes output);

// ---- Answers ----

// A delimiter (name and value are empty) or a value, as it stands in a message. Shares the owner of
// the bytes.
struct IppItem {
    std::uint8_t tag = 0;
    std::string_view name;  // empty for a further value of the same attribute
    Bytes value;

    bool isDelimiter() const { return tag < ipp_tags::firstValueTag; }
};

// Takes the next item; false at the end of the bytes and when the item is not wholly there.
bool takeIppItem(ByteReader& reader, IppItem& item);

namespace ipp_kinds {
inline constexpr int text = 0;  // text-like values, octetString and dateTime
inline constexpr int word = 4;  // integer, boolean, enum
inline constexpr int range = 8;
inline constexpr int resolution = 12;
inline constexpr int beginCollection = 52;
inline constexpr int endCollection = 55;
inline constexpr int memberName = 74;
}  // namespace ipp_kinds

// A decoded value. Of the kinds 4, 8 and 12 the value is the kind's number of bytes, high byte of
// each word first: the first ones that came, filled up with zeros. Texts hold any byte; clean them
// before they are shown.
struct IppTuple {
    int index = 0;  // 0: the value that came with the attribute's name; 1: a further one
    int kind = 0;
    std::string name;  // empty for a further value
    std::string value;
};

// The last value that came is at the head.
using IppTuples = std::forward_list<IppTuple>;

// What a message may bring: values beyond these are walked over.
inline constexpr std::size_t kMaximumIppTuples = 50000;
inline constexpr int kMaximumUnknownTagLines = 16;

// Puts a value at the head of the list.
void NewTuple2(IppTuples& list, int index, int kind, std::string_view name, Bytes value);

inline void DelTupleAll(IppTuples& list) {
    list.clear();
}

// Decodes what follows the first 8 bytes of a message into `list`, which is cleared first.
// Collections are not nested: their members stand in the list as they came. Of unknown tags the
// first 16 are named on standard output ("parse_ipp_attr : Unkown Tag!! type = %d").
//
// Result: one more than the number of bytes up to and with the closing 03, as meant; -1, and an
// empty list, when the message ends before it.
int ParseIppAttr(Bytes attributes, IppTuples& list);

// The value of the first node from the head whose name begins with `name` (in any case) and whose
// index is `index`; since further values have no name, only index 0 finds anything, as meant. `out`
// shares the owner of the list. Result: the value's length; 0, and an empty `out`, without such a
// node.
std::size_t GetTupleValueAtIndex(const IppTuples& list, std::string_view name,
                                 std::string_view& out, int index);

// The first node from the head of just that name and kind, or null.
const IppTuple* findTuple(const IppTuples& list, std::string_view name, int kind);

// The number in a value of kind 4; nothing when the value is shorter.
std::optional<std::int32_t> ippNumber(std::string_view value);

}  // namespace tintoral
