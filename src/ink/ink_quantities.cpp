#include "ink/ink_quantities.h"

#include <algorithm>
#include <cstdio>
#include <span>

#include "ink/byte_helpers.h"
#include "ink/color_vocabulary.h"

namespace tintoral {
namespace {

// The last slot that is tried when the slots after the count still hold old colours.
constexpr std::size_t kLastTriedSlot = 11;

// An Epson ink entry: cartridge type, colour code, level.
constexpr std::size_t kSmallestEntrySize = 3;
constexpr std::uint8_t kBothColorsCartridge = 2;

struct LevelMarker {
    std::string_view text;
    std::int8_t level;
};
constexpr std::array<LevelMarker, 3> kLevelMarkers{{
    {"RE", kLevelReadError},
    {"WE", kLevelWaitingExchange},
    {"CI", kLevelCartridgeInvalid},
}};

InkEntry* findEntry(InkQuantities& record, int id) {
    for (InkEntry& entry : std::span(record.entries).first(record.usableCount())) {
        if (entry.colorID == 0) return nullptr;
        if (static_cast<std::int8_t>(entry.colorID) == id) return &entry;
    }
    return nullptr;
}

// `count` is below the capacity.
std::size_t slotForNewEntry(const InkQuantities& record, std::size_t count) {
    if (count >= kLastTriedSlot || record.entries[count].colorID == 0) return count;
    std::size_t slot = count + 1;
    while (slot < kLastTriedSlot && record.entries[slot].colorID != 0) ++slot;
    return slot;
}

InkEntry epsonEntry(Bytes bytes) {
    ByteReader reader(bytes);
    const std::uint8_t cartridgeType = reader.u8();
    const std::uint8_t colorCode = reader.u8();
    const ColorID id = cartridgeType == kBothColorsCartridge ? ColorID{2} : chgColorCode(colorCode);
    return {id, reader.s8()};
}

// `rest` is the reply from a pair of characters on.
std::int8_t levelOfPair(std::string_view rest) {
    for (const LevelMarker& marker : kLevelMarkers) {
        if (textBeforeNul(asBytes(rest)) == marker.text)
            return marker.level;  // the whole rest, as meant
    }
    return hTob(rest);
}

}  // namespace

std::size_t InkQuantities::usableCount() const {
    return static_cast<std::size_t>(std::clamp<int>(count, 0, kCapacity));
}

void setIQByColorID(InkQuantities& record, int id, int level) {
    const auto storedLevel = static_cast<std::int8_t>(level);
    if (InkEntry* entry = findEntry(record, id)) {
        entry->level = storedLevel;
        return;
    }
    const std::size_t count = record.usableCount();
    if (count == InkQuantities::kCapacity) return;
    const std::size_t slot = slotForNewEntry(record, count);
    record.entries[slot] = {static_cast<ColorID>(id), storedLevel};
    record.count = static_cast<std::int8_t>(slot + 1);
}

int biInkStatusToIQ(Bytes field, InkQuantities& record) {
    constexpr std::uint8_t kSizeMinusOne = 0xFF;
    ByteReader reader(field);
    const std::uint8_t entrySize = reader.u8();
    std::size_t written = 0;
    record.count = 0;
    if (entrySize == kSizeMinusOne) {
        record.count = static_cast<std::int8_t>(
            -static_cast<int>(std::min<std::size_t>(reader.remaining(), 128)));
        return record.count;
    }
    if (entrySize < kSmallestEntrySize) return 0;
    while (written < record.entries.size() && reader.remaining() >= entrySize) {
        record.entries[written++] = epsonEntry(reader.take(entrySize));
    }
    record.count = static_cast<std::int8_t>(written);
    return record.count;
}

int parseIQ(Bytes reply, InkQuantities& record) {
    record.count = 0;
    if (reply.size() < 3) return 0;
    const auto tag = bisearch(reply, "IQ:");
    if (!tag) return 0;
    std::string_view rest = asText(reply).substr(*tag + 3);
    const auto fieldLength = rest.find(';');
    if (fieldLength == std::string_view::npos) return 0;
    const std::size_t pairs = std::min(fieldLength / 2, record.entries.size());
    for (InkEntry& entry : std::span(record.entries).first(pairs)) {
        entry = {0, levelOfPair(rest)};
        rest.remove_prefix(2);
    }
    record.count = static_cast<std::int8_t>(pairs);
    return record.count;
}

std::size_t sdumpInkQuantities(BoundedText& text, int count, const InkQuantities& record) {
    const int shown = std::clamp<int>(count, 0, InkQuantities::kCapacity);
    std::size_t added = text.appendFormat("Number of Ink levels = %d \n", count);
    for (int i = 0; i < shown; ++i) {
        const InkEntry& entry = record.entries[static_cast<std::size_t>(i)];
        added += text.appendFormat(" %d %2d= %3d %c  %s\n", i, entry.colorID, entry.level, '%',
                                   colorNameByColorID(entry.colorID).data());
    }
    return added;
}

int showQuantities(const BoundedText& status, const InkQuantities& record) {
    std::printf(" colors = %d, status = %s\n", record.count, status.c_str());
    for (std::size_t i = 0; i < record.usableCount(); ++i) {
        const InkEntry& entry = record.entries[i];
        std::printf(" %zu: %02x = %2d %c %s\n", i, entry.colorID, entry.level, '%',
                    colorNameByColorID(entry.colorID).data());
    }
    std::printf("\n");
    return record.count;
}

}  // namespace tintoral
