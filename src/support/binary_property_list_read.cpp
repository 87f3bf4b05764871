#include <algorithm>
#include <bit>
#include <cmath>

#include "support/binary_property_list.h"
#include "support/byte_reader.h"
#include "support/text.h"

namespace tintoral {
namespace {

constexpr std::string_view kHeader = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kLargestNumber = 8;
constexpr std::uint8_t kCountFollows = 15;
constexpr Date kEpoch = std::chrono::sys_days{std::chrono::year{2001} / 1 / 1};
constexpr Date kFirstDate = std::chrono::sys_days{std::chrono::year{1} / 1 / 1};
constexpr Date kLastDate = std::chrono::sys_days{std::chrono::year{9999} / 12 / 31};

// What a byte, the smallest reference, may stand for, and what a file may at most: an array of the
// largest that are shared, its texts in UTF-16.
constexpr std::size_t kValuesPerByte = 1 + kLargestSharedArray;
constexpr std::size_t kTextPerByte = 2 * kLongestSharedText * kLargestSharedArray;
constexpr std::size_t kMostValues = 12'000'000;
constexpr std::size_t kMostText = 256U << 20;

std::uint64_t bigEndian(Bytes bytes) {
    std::uint64_t number = 0;
    for (const std::uint8_t byte : bytes) number = number << 8 | byte;
    return number;
}

Value dateOf(double seconds) {
    const double first = static_cast<double>((kFirstDate - kEpoch).count());
    const double last = static_cast<double>((kLastDate - kEpoch).count());
    const double within = std::isnan(seconds) ? 0 : std::clamp(std::floor(seconds), first, last);
    return kEpoch + std::chrono::seconds(static_cast<std::int64_t>(within));
}

std::string textOfUtf16(Bytes bytes) {
    std::u16string units;
    for (ByteReader reader(bytes); !reader.atEnd();) units += static_cast<char16_t>(reader.be16());
    return utf8FromUtf16(units);
}

class BinaryPropertyListReader {
  public:
    explicit BinaryPropertyListReader(Bytes file)
        : valuesLeft_(std::min(file.size() * kValuesPerByte, kMostValues)),
          textLeft_(std::min(file.size() * kTextPerByte, kMostText)) {
        if (file.size() >= kHeader.size() + kTrailerSize) readTrailer(file);
    }

    std::optional<Value> root() { return valueAt(root_, 0); }

    std::optional<Value> lastItem() {
        ByteReader object = objectAt(root_);
        const std::uint8_t marker = object.u8();
        if (marker >> 4 != 0xA) return std::nullopt;
        const Bytes items = references(object, marker, 1);
        if (items.empty()) return std::nullopt;
        return valueAt(bigEndian(items.last(referenceSize_)), 1);
    }

  private:
    // Leaves a list without objects where it does not fit the file.
    void readTrailer(Bytes file) {
        const std::size_t end = file.size() - kTrailerSize;
        ByteReader trailer(file.last(kTrailerSize));
        trailer.skip(6);
        offsetSize_ = trailer.u8();
        referenceSize_ = trailer.u8();
        const std::uint64_t count = bigEndian(trailer.take(kLargestNumber));
        root_ = bigEndian(trailer.take(kLargestNumber));
        const std::uint64_t table = bigEndian(trailer.take(kLargestNumber));
        const auto isSize = [](std::size_t size) { return size >= 1 && size <= kLargestNumber; };
        if (!isSize(offsetSize_) || !isSize(referenceSize_) || table > end) return;
        const auto tableAt = static_cast<std::size_t>(table);
        if (count > (end - tableAt) / offsetSize_) return;
        objects_ = file.first(tableAt);
        offsets_ = file.subspan(tableAt, static_cast<std::size_t>(count) * offsetSize_);
    }

    // A reader at the object, or at the end of the file when there is none.
    ByteReader objectAt(std::uint64_t index) const {
        if (index >= offsets_.size() / std::max<std::size_t>(offsetSize_, 1)) return ByteReader({});
        const auto at = static_cast<std::size_t>(index) * offsetSize_;
        const std::uint64_t offset = bigEndian(offsets_.subspan(at, offsetSize_));
        if (offset < kHeader.size() || offset >= objects_.size()) return ByteReader({});
        return ByteReader(objects_.subspan(static_cast<std::size_t>(offset)));
    }

    std::optional<Value> valueAt(std::uint64_t index, int levels) {
        ByteReader object = objectAt(index);
        if (object.atEnd() || valuesLeft_ == 0) return std::nullopt;
        --valuesLeft_;
        const std::uint8_t marker = object.u8();
        switch (marker >> 4) {
            case 0x0:
                return simple(marker);
            case 0x1:
                return integer(object, marker);
            case 0x2:
                return real(object, marker);
            case 0x3:
                return date(object, marker);
            case 0x4:
                return data(object, marker);
            case 0x5:
            case 0x6:
                return textValue(object, marker);
            case 0x8:
                return Value();
            case 0xA:
                return array(object, marker, levels + 1);
            case 0xD:
                return dictionary(object, marker, levels + 1);
            default:
                return std::nullopt;
        }
    }

    static std::optional<Value> simple(std::uint8_t marker) {
        constexpr std::uint8_t kFalse = 0x08;
        constexpr std::uint8_t kTrue = 0x09;
        if (marker == kFalse || marker == kTrue) return Value(marker == kTrue);
        return marker == 0 ? std::optional(Value()) : std::nullopt;
    }

    // The bytes of an integer or a real; empty when they are not there.
    static Bytes number(ByteReader& object, std::uint8_t marker) {
        constexpr unsigned kLargestExponent = 4;
        const unsigned exponent = marker & 0xF;
        return exponent <= kLargestExponent ? object.take(std::size_t{1} << exponent) : Bytes();
    }

    static std::optional<Value> integer(ByteReader& object, std::uint8_t marker) {
        const Bytes bytes = number(object, marker);
        if (bytes.empty()) return std::nullopt;
        return Value(static_cast<std::int64_t>(bigEndian(bytes)));  // of 16 bytes the lower half
    }

    static std::optional<double> realNumber(Bytes bytes) {
        if (bytes.size() == sizeof(double)) return std::bit_cast<double>(bigEndian(bytes));
        if (bytes.size() != sizeof(float)) return std::nullopt;
        return std::bit_cast<float>(static_cast<std::uint32_t>(bigEndian(bytes)));
    }

    static std::optional<Value> real(ByteReader& object, std::uint8_t marker) {
        const auto value = realNumber(number(object, marker));
        return value ? std::optional(Value(*value)) : std::nullopt;
    }

    static std::optional<Value> date(ByteReader& object, std::uint8_t marker) {
        const auto seconds = realNumber(number(object, marker));
        return seconds ? std::optional(dateOf(*seconds)) : std::nullopt;
    }

    // The count of a marker with elements; more than any file holds when it is damaged.
    static std::uint64_t count(ByteReader& object, std::uint8_t marker) {
        constexpr auto kTooMany = ~std::uint64_t{0};
        if ((marker & 0xF) != kCountFollows) return marker & 0xF;
        const std::uint8_t integerMarker = object.u8();
        const Bytes bytes = number(object, integerMarker);
        const bool isCount = integerMarker >> 4 == 0x1 && !bytes.empty();
        return isCount && bytes.size() <= kLargestNumber ? bigEndian(bytes) : kTooMany;
    }

    // The bytes of `count` elements; the object has failed when they are not there.
    static Bytes elements(ByteReader& object, std::uint64_t count, std::size_t size) {
        const std::size_t most = object.remaining() / size;
        return object.take(count <= most ? static_cast<std::size_t>(count) * size
                                         : object.remaining() + 1);
    }

    static std::optional<Value> data(ByteReader& object, std::uint8_t marker) {
        const Bytes bytes = elements(object, count(object, marker), 1);
        if (object.failed()) return std::nullopt;
        return Value(Data(bytes.begin(), bytes.end()));
    }

    std::optional<std::string> text(ByteReader& object, std::uint8_t marker) {
        const bool isAscii = marker >> 4 == 0x5;
        const Bytes bytes = elements(object, count(object, marker), isAscii ? 1 : 2);
        if (object.failed() || bytes.size() > textLeft_) return std::nullopt;
        textLeft_ -= bytes.size();
        return isAscii ? std::string(asText(bytes)) : textOfUtf16(bytes);
    }

    std::optional<Value> textValue(ByteReader& object, std::uint8_t marker) {
        auto value = text(object, marker);
        return value ? std::optional(Value(*std::move(value))) : std::nullopt;
    }

    std::optional<std::string> textAt(std::uint64_t index) {
        ByteReader object = objectAt(index);
        const std::uint8_t marker = object.u8();
        const bool isText = marker >> 4 == 0x5 || marker >> 4 == 0x6;
        return isText ? text(object, marker) : std::nullopt;
    }

    // The references of a container, `perItem` for each item.
    Bytes references(ByteReader& object, std::uint8_t marker, std::size_t perItem) const {
        return elements(object, count(object, marker), perItem * referenceSize_);
    }

    std::optional<Value> array(ByteReader& object, std::uint8_t marker, int levels) {
        const Bytes items = references(object, marker, 1);
        const std::size_t size = items.size() / referenceSize_;
        if (object.failed() || levels > kPropertyListLevels || size > valuesLeft_)
            return std::nullopt;
        Array array;
        array.reserve(size);
        for (ByteReader reader(items); !reader.atEnd();) {
            auto item = valueAt(bigEndian(reader.take(referenceSize_)), levels);
            if (!item) return std::nullopt;
            array.push_back(*std::move(item));
        }
        return Value(std::move(array));
    }

    std::optional<Value> dictionary(ByteReader& object, std::uint8_t marker, int levels) {
        const Bytes items = references(object, marker, 2);
        const std::size_t size = items.size() / referenceSize_ / 2;
        if (object.failed() || levels > kPropertyListLevels || size > valuesLeft_)
            return std::nullopt;
        std::vector<Dictionary::Entry> entries;
        entries.reserve(size);
        ByteReader keys(items.first(size * referenceSize_));
        ByteReader values(items.subspan(size * referenceSize_));
        while (!keys.atEnd()) {
            auto key = textAt(bigEndian(keys.take(referenceSize_)));
            if (!key) return std::nullopt;
            auto value = valueAt(bigEndian(values.take(referenceSize_)), levels);
            if (!value) return std::nullopt;
            entries.emplace_back(*std::move(key), *std::move(value));
        }
        return Value(Dictionary(std::move(entries)));
    }

    Bytes objects_;  // with the header, so that offsets are positions in it
    Bytes offsets_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t root_ = 0;
    std::size_t valuesLeft_;
    std::size_t textLeft_;
};

}  // namespace

bool isBinaryPropertyList(std::string_view content) {
    return content.starts_with(kHeader);
}

std::optional<Value> parseBinaryPropertyList(std::string_view content) {
    return BinaryPropertyListReader(asBytes(content)).root();
}

std::optional<Value> parseLastItemOfBinary(std::string_view content) {
    return BinaryPropertyListReader(asBytes(content)).lastItem();
}

}  // namespace tintoral
