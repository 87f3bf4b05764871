#include <algorithm>
#include <bit>
#include <unordered_map>

#include "support/binary_property_list.h"
#include "support/text.h"

namespace tintoral {
namespace {

constexpr std::string_view kHeader = "bplist00";
constexpr std::size_t kUnusedInTrailer = 6;
constexpr Date kEpoch = std::chrono::sys_days{std::chrono::year{2001} / 1 / 1};

namespace markers {
constexpr std::uint8_t kFalse = 0x08;
constexpr std::uint8_t kTrue = 0x09;
constexpr std::uint8_t kInteger = 0x10;
constexpr std::uint8_t kReal = 0x23;
constexpr std::uint8_t kDate = 0x33;
constexpr std::uint8_t kData = 0x40;
constexpr std::uint8_t kAscii = 0x50;
constexpr std::uint8_t kUtf16 = 0x60;
constexpr std::uint8_t kArray = 0xA0;
constexpr std::uint8_t kDictionary = 0xD0;
}  // namespace markers

void appendNumber(std::string& out, std::uint64_t number, unsigned size) {
    for (unsigned left = size; left > 0; --left)
        out += static_cast<char>(number >> (8 * (left - 1)) & 0xFF);
}

// The exponent of the fewest bytes, of 1, 2, 4 and 8, that hold the number.
unsigned exponentFor(std::uint64_t number) {
    if (number <= 0xFF) return 0;
    if (number <= 0xFFFF) return 1;
    return number <= 0xFFFFFFFF ? 2 : 3;
}

unsigned sizeFor(std::uint64_t number) {
    return 1U << exponentFor(number);
}

void appendInteger(std::string& out, std::uint64_t number) {
    const unsigned exponent = exponentFor(number);
    out += static_cast<char>(markers::kInteger | exponent);
    appendNumber(out, number, 1U << exponent);
}

void appendMarker(std::string& out, std::uint8_t marker, std::size_t count) {
    constexpr std::size_t kCountFollows = 15;
    out += static_cast<char>(marker | std::min(count, kCountFollows));
    if (count >= kCountFollows) appendInteger(out, count);
}

void appendDouble(std::string& out, std::uint8_t marker, double number) {
    out += static_cast<char>(marker);
    appendNumber(out, std::bit_cast<std::uint64_t>(number), sizeof(number));
}

bool isAscii(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

void appendText(std::string& out, const std::string& text) {
    if (std::ranges::all_of(text, isAscii)) {
        appendMarker(out, markers::kAscii, text.size());
        out += text;
        return;
    }
    const std::u16string units = utf16FromUtf8(text);
    appendMarker(out, markers::kUtf16, units.size());
    for (const char16_t unit : units) appendNumber(out, unit, 2);
}

bool isShared(const Value& item) {
    const auto* text = item.as<std::string>();
    const bool isLarge = item.as<Data>() || item.as<Array>() || item.as<Dictionary>();
    return text ? text->size() <= kLongestSharedText : !isLarge;
}

bool isShared(const Array& array) {
    return array.size() <= kLargestSharedArray &&
           std::ranges::all_of(array, [](const Value& item) { return isShared(item); });
}

// Flattens a value into objects, then writes them once their number, and so the size of a
// reference, is known.
class BinaryPropertyListWriter {
  public:
    std::string write(const Value& root) {
        const Reference top = add(root);
        std::string out(kHeader);
        std::vector<std::size_t> offsets;
        offsets.reserve(objects_.size());
        out.reserve(scalars_.size() + (references_.size() + 2 * objects_.size()) * sizeof(int));
        for (const Object& object : objects_) {
            offsets.push_back(out.size());
            appendObject(out, object);
        }
        appendTail(out, offsets, top);
        return out;
    }

    using Reference = std::uint32_t;

    Reference operator()(const std::string& text) { return addText(text); }
    Reference operator()(std::int64_t number) {
        const auto known = integers_.try_emplace(number, next());
        if (known.second) {
            addScalar(
                [&](std::string& out) { appendInteger(out, static_cast<std::uint64_t>(number)); });
        }
        return known.first->second;
    }
    Reference operator()(double number) {
        return addScalar([&](std::string& out) { appendDouble(out, markers::kReal, number); });
    }
    Reference operator()(bool flag) {
        const auto marker = static_cast<char>(flag ? markers::kTrue : markers::kFalse);
        return addScalar([&](std::string& out) { out += marker; });
    }
    Reference operator()(Date date) {
        const auto seconds = static_cast<double>((date - kEpoch).count());
        return addScalar([&](std::string& out) { appendDouble(out, markers::kDate, seconds); });
    }
    Reference operator()(const Data& data) {
        return addScalar([&](std::string& out) {
            appendMarker(out, markers::kData, data.size());
            out.append(data.begin(), data.end());
        });
    }
    Reference operator()(const Array& array) {
        if (lastArray_ && *lastArray_ == array) return lastArrayReference_;
        std::vector<Reference> items;
        items.reserve(array.size());
        for (const Value& item : array) items.push_back(add(item));
        const Reference reference = addContainer(markers::kArray, items);
        if (isShared(array)) {
            lastArray_ = &array;
            lastArrayReference_ = reference;
        }
        return reference;
    }
    Reference operator()(const Dictionary& dictionary) {
        std::vector<Reference> items;
        items.reserve(2 * dictionary.size());
        for (const auto& [key, value] : dictionary) items.push_back(addText(key));
        for (const auto& [key, value] : dictionary) items.push_back(add(value));
        return addContainer(markers::kDictionary, items);
    }

  private:
    // A scalar as written, or the references of a container.
    struct Object {
        std::uint8_t marker;  // of a container; 0 for a scalar
        std::size_t start;    // in scalars_ or references_
        std::size_t size;
    };

    Reference next() const { return static_cast<Reference>(objects_.size()); }

    Reference add(const Value& value) { return std::visit(*this, value.storage()); }

    template <typename Append>
    Reference addScalar(const Append& append) {
        const std::size_t start = scalars_.size();
        append(scalars_);
        objects_.push_back({0, start, scalars_.size() - start});
        return next() - 1;
    }

    Reference addText(const std::string& text) {
        const auto append = [&](std::string& out) { appendText(out, storableText(text)); };
        if (text.size() > kLongestSharedText) return addScalar(append);
        const auto known = texts_.try_emplace(text, next());
        if (known.second) addScalar(append);
        return known.first->second;
    }

    Reference addContainer(std::uint8_t marker, const std::vector<Reference>& items) {
        objects_.push_back({marker, references_.size(), items.size()});
        references_.insert(references_.end(), items.begin(), items.end());
        return next() - 1;
    }

    void appendObject(std::string& out, const Object& object) const {
        if (object.marker == 0) {
            out.append(scalars_, object.start, object.size);
            return;
        }
        const bool isArray = object.marker == markers::kArray;
        appendMarker(out, object.marker, isArray ? object.size : object.size / 2);
        const unsigned size = sizeFor(objects_.size());
        for (std::size_t i = 0; i < object.size; ++i)
            appendNumber(out, references_[object.start + i], size);
    }

    void appendTail(std::string& out, const std::vector<std::size_t>& offsets,
                    Reference top) const {
        const std::size_t table = out.size();
        const unsigned offsetSize = sizeFor(table);
        for (const std::size_t offset : offsets) appendNumber(out, offset, offsetSize);
        out.append(kUnusedInTrailer, '\0');
        appendNumber(out, offsetSize, 1);
        appendNumber(out, sizeFor(objects_.size()), 1);
        for (const std::size_t number : {objects_.size(), std::size_t{top}, table})
            appendNumber(out, number, sizeof(std::uint64_t));
    }

    std::vector<Object> objects_;
    std::string scalars_;
    std::vector<Reference> references_;
    std::unordered_map<std::string_view, Reference> texts_;  // views into the value that is written
    std::unordered_map<std::int64_t, Reference> integers_;
    const Array* lastArray_ = nullptr;
    Reference lastArrayReference_ = 0;
};

}  // namespace

std::string formatBinaryPropertyList(const Value& root) {
    return BinaryPropertyListWriter().write(root);
}

}  // namespace tintoral
