#include "vendors/hp.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <span>

#include "ink/byte_helpers.h"
#include "support/byte_writer.h"

namespace tintoral {
namespace {

constexpr ColorID kBlack = 1;
constexpr ColorID kCmyColor = 2;

struct StateWord {
    std::string_view word;
    std::string_view text;
};
constexpr auto kStateWords = std::to_array<StateWord>({
    {"IDLE", "Idle"},
    {"BUSY", "Busy"},
    {"PRNT", "Printing"},
    {"OFFF", "Turning off"},
    {"RPRT", "Report printing"},
    {"CNCL", "Canceling"},
    {"IOST", "IO stall"},
    {"DRYW", "Dry time wait"},
    {"PENC", "Pen change"},
    {"OOPA", "Out of paper"},
    {"BNEJ", "Banner eject"},
    {"BNMZ", "Banner mismatch"},
    {"PHMZ", "Photo mismatch"},
    {"DPMZ", "Duplex mismatch"},
    {"PAJM", "Paper jam"},
    {"CARS", "Carriage stall"},
    {"PAPS", "Paper stall"},
    {"PENF", "Pen failure"},
    {"ERRO", "Hard error"},
    {"PWDN", "Power down"},
    {"FPTS", "Front panel test"},
    {"CLNO", "Cleen out tray missing"},  // spelled as meant
});

struct PenWords {
    std::array<std::string_view, 2> present;
    std::array<std::string_view, 2> empty;
    std::string_view levelTag;
    InkEntry emptyPen;
};
constexpr PenWords kBlackPen{{",K0,", ",K3,"}, {",K1,", ",K2,"}, "KP", {kBlack, 0}};
constexpr PenWords kColorPen{{",C0,", ",C3,"}, {",C1,", ",C2,"}, "CP", {kCmyColor, 0}};

struct PenDataOffset {
    std::string_view version;
    std::size_t offset;
};
constexpr auto kPenDataOffsets = std::to_array<PenDataOffset>({
    {"00", 14},
    {"01", 14},
    {"02", 14},
    {"03", 16},
    {"04", 20},
});
constexpr std::size_t kPenRecordLength = 8;

constexpr std::size_t kWarningLength = 4;
struct Warning {
    std::string_view code;
    ColorID id;
    int level;
};
constexpr auto kWarnings = std::to_array<Warning>({
    {"1501", kBlack, 20},    {"1541", kBlack, 20},    {"1561", kBlack, 20},     //
    {"1510", kCmyColor, 20}, {"1542", kCmyColor, 20}, {"1562", kCmyColor, 20},  //
    {"1502", 65, 20},                                                           //
    {"1511", 6, 20},         {"1571", 6, 40},         {"1581", 6, 70},          //
    {"1512", 5, 20},         {"1572", 5, 40},         {"1582", 5, 70},          //
    {"1513", 4, 20},         {"1573", 4, 40},         {"1583", 4, 70},          //
    {"1514", 8, 20},         {"1574", 8, 40},         {"1584", 8, 70},          //
    {"1515", 7, 20},         {"1575", 7, 40},         {"1585", 7, 70},          //
});

constexpr std::string_view kReset = "\033E";
constexpr std::string_view kUniversalExit = "\x1B%-12345X";
constexpr std::string_view kPmlTag = "PML ";
constexpr std::size_t kCleaningRoom = 128;

constexpr std::array<std::uint8_t, 12> kCleaningPml{0x04, 0x00, 0x06, 0x01, 0x04, 0x01,
                                                    0x05, 0x01, 0x01, 0x04, 0x01, 0x64};
constexpr std::array<std::uint8_t, 7> kModelNamePml{0x00, 0x00, 0x04, 0x01, 0x01, 0x03, 0x02};
constexpr std::array<std::uint8_t, 10> kSupplies1Pml{0x00, 0x00, 0x07, 0x02, 0x0B,
                                                     0x01, 0x01, 0x06, 0x01, 0x01};
constexpr std::array<std::uint8_t, 10> kSupplies2Pml{0x00, 0x00, 0x07, 0x02, 0x0B,
                                                     0x01, 0x01, 0x06, 0x01, 0x02};
constexpr std::array<Bytes, kHPDiagnosticRequests> kDiagnosticPml{kModelNamePml, kSupplies1Pml,
                                                                  kSupplies2Pml};

bool containsAny(std::string_view text, std::span<const std::string_view> words) {
    return std::any_of(words.begin(), words.end(),
                       [text](auto word) { return text.find(word) != std::string_view::npos; });
}

// Up to three decimal digits at the start of `text`.
std::int8_t threeDigits(std::string_view text) {
    const std::string_view digits = text.substr(0, 3);
    unsigned level = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), level);
    return static_cast<std::int8_t>(level);
}

// Writes the pen that the field reports into its entry, which stays as it was when the level is
// missing, as meant. Result: whether there is such a pen.
bool readPen(std::string_view field, const PenWords& words, InkEntry& entry) {
    if (containsAny(field, words.present)) {
        const auto level = textAfter(field, words.levelTag);
        if (level) entry = {words.emptyPen.colorID, threeDigits(*level)};
        return true;
    }
    const bool isEmpty = containsAny(field, words.empty);
    if (isEmpty) entry = words.emptyPen;
    return isEmpty;
}

// Where the pen data start in an "S:" field, or nothing for an unknown version.
std::optional<std::size_t> penDataOffset(std::string_view field) {
    for (const PenDataOffset& row : kPenDataOffsets) {
        if (field.starts_with(row.version)) return row.offset;
    }
    return std::nullopt;
}

// The text from `position` on, empty past its end.
std::string_view from(std::string_view text, std::size_t position) {
    return position < text.size() ? text.substr(position) : std::string_view();
}

// The hex digit at the start of `text`; 0 for anything else.
std::size_t hexDigit(std::string_view text) {
    std::array<std::uint8_t, 1> byte{};
    hexToBin(text.substr(0, 1), byte);
    return byte[0] >> 4;
}

InkEntry penOfRecord(std::string_view hex) {
    std::array<std::uint8_t, kPenRecordLength / 2> bytes{};
    hexToBin(hex, bytes);
    return {static_cast<ColorID>(bytes[0] & 0x3F), static_cast<std::int8_t>(bytes[3])};
}

// The field from `tag` (which it keeps) to the next ";" or the end.
std::optional<std::string_view> fieldFrom(std::string_view text, std::string_view tag) {
    const auto at = text.find(tag);
    if (at == std::string_view::npos) return std::nullopt;
    const std::string_view field = text.substr(at);
    return field.substr(0, field.find(';', tag.size()));
}

void applyWarning(std::string_view code, InkQuantities& record) {
    for (const Warning& warning : kWarnings) {
        if (code == warning.code) setIQByColorID(record, warning.id, warning.level);
    }
}

void writePml(ByteWriter& writer, Bytes pml) {
    FixedText<16> size;
    size.format("%zu", kPmlTag.size() + pml.size());
    writer.text("\x1B&b").text(size.view()).text("W").text(kPmlTag).bytes(pml);
}

// `reset` is sent once more before the PML.
std::size_t frameForPjl(MutableBytes buffer, std::string_view reset, Bytes pml) {
    ByteWriter writer(buffer);
    writer.text(kReset).text(kUniversalExit).text("@PJL ENTER LANGUAGE=PCL3GUI\n").text(reset);
    writePml(writer, pml);
    return writer.text(kReset).text(kUniversalExit).finish();
}

}  // namespace

int parseHPDeviceID(std::string_view deviceID, BoundedText& status, InkQuantities& record) {
    status.assign("Online");
    if (const auto field = fieldFrom(deviceID, "VSTATUS:"))
        return parseVStatus(*field, record, status);
    if (const auto field = fieldFrom(deviceID, ";S:")) return parseSStatus(*field, record, status);
    record.clear();
    status.clear();
    return 0;
}

int parseVStatus(std::string_view field, InkQuantities& record, BoundedText& status) {
    for (const StateWord& state : kStateWords) {
        if (field.find(state.word) != std::string_view::npos) status.assign(state.text);
    }
    int count = readPen(field, kBlackPen, record.entries[0]) ? 1 : 0;
    // The second entry also when no black pen was counted, as meant.
    if (readPen(field, kColorPen, record.entries[1])) ++count;
    record.count = static_cast<std::int8_t>(count);
    return count;
}

int parseSStatus(std::string_view field, InkQuantities& record, BoundedText& status) {
    record.count = 0;
    if (field.starts_with(";")) field.remove_prefix(1);
    if (field.starts_with("S:")) field.remove_prefix(2);
    const auto offset = penDataOffset(field);
    if (!offset) {
        status.assign("Version missing at deviceID.");
        return -1;
    }
    const std::size_t reported = hexDigit(from(field, *offset + 2));
    std::string_view rest = from(field, *offset + 3);
    const std::size_t count = std::min(reported, rest.size() / kPenRecordLength);
    for (InkEntry& pen : std::span(record.entries).first(count)) {
        pen = penOfRecord(rest.substr(0, kPenRecordLength));
        rest.remove_prefix(kPenRecordLength);
    }
    record.count = static_cast<std::int8_t>(count);
    return record.count;
}

int parseDWS(std::string_view reply, InkQuantities& record) {
    const auto field = textBetween(reply, "DWS:", ';');
    if (!field) return 0;
    std::string_view codes = *field;
    while (!codes.empty() && !codes.starts_with("NO")) {
        applyWarning(codes.substr(0, kWarningLength), record);
        codes = from(codes, kWarningLength);
        if (codes.starts_with(',')) codes.remove_prefix(1);
    }
    return record.count;
}

std::size_t mkHPCleaningCmd(std::string_view commandSet, MutableBytes buffer) {
    std::fill_n(buffer.begin(), std::min(buffer.size(), kCleaningRoom), std::uint8_t{0});
    if (commandSet.starts_with("PJL,PML")) return frameForPjl(buffer, "", kCleaningPml);
    if (commandSet.starts_with("MLC,PCL,PML"))
        return ByteWriter(buffer).bytes(kCleaningPml).finish();
    return 0;
}

std::size_t mkHPDiagnosticRequest(int index, MutableBytes buffer) {
    if (index < 0 || index >= kHPDiagnosticRequests) return 0;
    return frameForPjl(buffer, kReset, kDiagnosticPml[static_cast<std::size_t>(index)]);
}

}  // namespace tintoral
