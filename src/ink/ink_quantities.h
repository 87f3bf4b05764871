// The ink-levels record that every status parser fills and every view, report and history reads.
//
// The record is a flat run of bytes: a signed count, then a (colour, level) pair for each ink, in
// the order in which the printer reported them. It has no owner of its own; callers keep one, clear
// it before each query and pass it on.
//
//   byte 0        count of entries in use (signed)
//   byte 1 + 2k   ColorID of entry k (0: the slot is empty)
//   byte 2 + 2k   level of entry k in percent, 0 to 100, or a negative marker
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

// An ink or supply colour; the vocabulary is in ink/color_vocabulary.h.
using ColorID = std::uint8_t;

struct InkEntry {
    ColorID colorID;
    std::int8_t level;

    friend bool operator==(const InkEntry&, const InkEntry&) = default;
};

struct InkQuantities {
    static constexpr std::size_t kCapacity = 20;

    std::int8_t count = 0;
    std::array<InkEntry, kCapacity> entries{};
    std::uint8_t padding = 0;

    void clear() { *this = {}; }

    // The number of entries that may be read: `count` held to 0..20, whatever the count byte says.
    std::size_t usableCount() const;
};
static_assert(sizeof(InkQuantities) == 42);
static_assert(offsetof(InkQuantities, entries) == 1);
static_assert(sizeof(InkEntry) == 2 && offsetof(InkEntry, level) == 1);

// Negative levels. The first three come from Epson text replies ("IQ:"), the others from the
// Printer MIB (RFC 3805 prtMarkerSuppliesLevel), whose values pass through unchanged.
inline constexpr std::int8_t kLevelCartridgeInvalid = -2;  // "CI"
inline constexpr std::int8_t kLevelWaitingExchange = -3;   // "WE"
inline constexpr std::int8_t kLevelReadError = -4;         // "RE"
inline constexpr std::int8_t kLevelSomeRemaining = -3;     // Printer MIB: not empty

// Sets the level of the entry whose colour is `id`, or adds an entry at the end.
//
// `id` is compared with the stored byte taken as signed, so an ID above 127 must be passed in the
// same signed form
// (-119 for 137) to be found again. Where the slot at `count` still holds an old colour and `count`
// is below 11, the entry goes to the first empty slot after it, slot 11 at the latest, and `count`
// becomes that slot's index plus 1. A record that is full (20 entries) stays as it is; a negative
// count is taken as 0.
void setIQByColorID(InkQuantities& record, int id, int level);

// Decodes an Epson ink field: its first byte is the size of one entry (normally 3: cartridge type,
// Epson colour code, level), the entries follow. Cartridge type 2 gives ColorID 2, any other
// chgColorCode() of the code. The result is the record's new count: the number of entries written,
// at most 20. A last entry that is cut short is not written; an entry size below 3 has no room for
// a level and gives 0. A size of 0xFF counts as -1, as meant: nothing is written, and count and
// result are minus the number of bytes after the size (-128 at the least).
int biInkStatusToIQ(Bytes field, InkQuantities& record);

// Decodes the "IQ:" field of an Epson text reply: pairs of hex digits (hTob) up to the next ";", at
// most 20. Colours are set to 0. A pair is a marker only when the reply's text ends with it, that
// is, when a NUL follows: "RE" is -4, "WE" is -3, "CI" is -2. Result: the count, 0 when the reply
// is shorter than 3 bytes or either end of the field is missing.
int parseIQ(Bytes reply, InkQuantities& record);

// Appends "Number of Ink levels = ..." and a line for each of the first `count` entries (at most
// 20) to `text`. Result: the number of characters added.
std::size_t sdumpInkQuantities(BoundedText& text, int count, const InkQuantities& record);

// Prints the count, the status text and a line for each entry to standard output. Result: the
// record's count.
int showQuantities(const BoundedText& status, const InkQuantities& record);

}  // namespace tintoral
