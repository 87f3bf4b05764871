#include "vendors/epson.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <optional>
#include <span>

#include "ink/byte_helpers.h"
#include "support/byte_writer.h"

namespace tintoral {
namespace {

using namespace std::string_view_literals;

// Remote-mode building blocks; a remote command is two letters, a 16-bit length (low byte first)
// and its argument.
constexpr auto hdr = "\0\0\0\x1B\x01@EJL 1284.4\n@EJL     \n\x1B@"sv;
constexpr auto enter_remote = "\x1B\x01@EJL ID\r\n\x1B(R\x08\0\0REMOTE1"sv;
constexpr auto exit_remote = "\x1B\0\0\0\x1B@"sv;
constexpr auto get_inkQuantity = "IQ\x01\0\x01"sv;
constexpr auto set_replyInterval1 = "SM\x02\0\0\x01"sv;
constexpr auto set_replyInterval0 = "SM\x02\0\0\0"sv;
constexpr auto set_aStatusOn = "ST\x02\0\0\x01"sv;
constexpr auto set_bStatusOn = "ST\x02\0\0\x11"sv;
constexpr auto set_bStatusOff = "ST\x02\0\0\0"sv;
constexpr auto nozzleCleaning = "CH\x02\0\0\0"sv;
constexpr auto startJobNozzleCheck = "JS\x0D\0\0NozzleCheck\0"sv;
constexpr auto printNozzleCheckPattern = "NC\x02\0\0\0"sv;
constexpr auto printNozzleCheckPattern10 = "NC\x02\0\0\x10"sv;
constexpr auto endNullJob = "JE\x01\0\0"sv;
constexpr auto pageEnd = "\f\x1B@"sv;

constexpr auto d4NozzleCheck = "nc\x01\0\0"sv;
constexpr auto d4Cleaning = "ch\x01\0\x01"sv;
constexpr auto d4Exit = "ei\x01\0\0"sv;

constexpr std::array kPattern10Models{
    "Stylus Photo R800"sv,  "PX-G900"sv, "Stylus Photo R1800"sv, "PX-G5000"sv, "PX-G5100"sv,
    "Stylus Photo R2400"sv, "PX-5500"sv,
};

// A number of the printer's and what it means in words.
struct Word {
    int code;
    std::string_view text;
};

constexpr std::array kBinaryStatusWords{
    Word{0, "Error"},        Word{1, "Printing status sheet"},
    Word{2, "Busy"},         Word{3, "Waiting"},
    Word{4, "Idle"},         Word{5, "Can not print"},
    Word{6, "Drying paper"}, Word{7, "Ink head cleaning"},
};

constexpr std::array kTextStatusWords{
    Word{0, "Error"},
    Word{1, "Self-test"},
    Word{2, "Busy"},
    Word{3, "Waiting while printing"},
    Word{4, "Idle"},
    Word{7, "Cleaning/filling ink heads"},
    Word{8, "Not yet initialized/filling heads"},
};

constexpr std::array kTextErrorWords{
    Word{0, "Fatal Error"},
    Word{1, "Interface not selected"},
    Word{4, "Paper jam"},
    Word{5, "Out of ink"},
    Word{6, "Paper out"},
    Word{13, "Paper gap error"},
    Word{16, "Maintenance request"},
    Word{17, "Tear-off mode selected"},
    Word{18, "Double feed error"},
    Word{28, "Cutter position error"},
    Word{29, "Cutter jam"},
    Word{30, "Ink color error"},
    Word{35, "Ink combination error"},
};

constexpr std::array kTextWarningWords{
    Word{0, "Black ink low"}, Word{1, "Cyan"},          Word{2, "Magentaam"},  // as meant
    Word{3, "Yellow"},        Word{4, "Light cyan"},    Word{5, "Light magenta"},
    Word{7, "Gray"},          Word{8, "Matte black 1"}, Word{9, "Matte black 2"},
};

constexpr std::array kLaserStatusWords{
    Word{0, "Can't connect"},
    Word{1000, "Idle"},
    Word{1001, "Off Line"},
    Word{1002, "Busy"},
    Word{1004, "Reset"},
    Word{1005, "Writing Card"},
    Word{1006, "Warming Up"},
    Word{1007, "Standby"},
    Word{1008, "Form Feed"},
    Word{1009, "Printing"},
    Word{1010, "Test Printing"},
    Word{1013, "Manual Feed"},
    Word{2001, "Toner Low"},
    Word{2002, "Image Optimum"},
    Word{2004, "Check Paper Size"},
    Word{2005, "Duplex Print was Off"},
    Word{2007, "Card Battery Low"},
    Word{3000, "Print Overrun"},
    Word{3001, "Mem Overflow"},
    Word{3003, "Paper Size Mismatch"},
    Word{3004, "Duplex Mem Overflow"},
    Word{4001, "Toner Out"},
    Word{4002, "Printer Open"},
    Word{4003, "Illegal Card"},
    Word{4004, "Operate Error Card"},
    Word{4006, "Write Error Card"},
    Word{4008, "Paper Jam"},
    Word{4009, "Feed Jam"},
    Word{4010, "Paper Out"},
    Word{4013, "Turn Paper"},
    Word{4014, "Illegal AUX I/F Card"},
    Word{4015, "Duplex Unit Open"},
    Word{4016, "Check Duplex P-Size"},
    Word{4017, "Paper Jam in Duplex"},
    Word{4018, "Illegal I/F Module"},
    Word{4019, "Change Card Battery"},
    Word{4020, "Check Serial I/F"},
    Word{6000, "Service Call Error"},
};

// The bytes of a laser reply that hold levels. The black one comes first and is always reported.
struct SupplyByte {
    std::size_t offset;
    ColorID colorID;
};
constexpr auto kColorPageSupplies = std::to_array<SupplyByte>(
    {{19, 1}, {16, 4}, {17, 5}, {18, 6}, {23, 146}, {20, 147}, {21, 148}, {22, 149}, {24, 144}});
constexpr auto kBlackPageSupplies = std::to_array<SupplyByte>({{28, 1}, {29, 146}});
constexpr auto kOilRollSupplies =
    std::to_array<SupplyByte>({{28, 1}, {8, 4}, {7, 5}, {6, 6}, {29, 146}, {9, 144}, {10, 145}});
constexpr auto kLongOilRollSupplies = std::to_array<SupplyByte>(
    {{63, 1}, {62, 4}, {61, 5}, {60, 6}, {64, 146}, {65, 144}, {66, 145}});
constexpr auto kFourDrumSupplies = std::to_array<SupplyByte>({{10, 1},
                                                              {11, 4},
                                                              {12, 5},
                                                              {13, 6},
                                                              {14, 144},
                                                              {15, 145},
                                                              {16, 146},
                                                              {17, 147},
                                                              {18, 148},
                                                              {19, 149}});

struct LaserFormat {
    std::uint8_t number;
    std::size_t extraOffset;
    std::span<const SupplyByte> supplies;
};
constexpr std::array kLaserFormats{
    LaserFormat{1, 6, kColorPageSupplies},   LaserFormat{17, 6, kColorPageSupplies},
    LaserFormat{33, 20, kBlackPageSupplies}, LaserFormat{34, 20, kBlackPageSupplies},
    LaserFormat{65, 20, kBlackPageSupplies}, LaserFormat{49, 20, kOilRollSupplies},
    LaserFormat{50, 20, kOilRollSupplies},   LaserFormat{81, 52, kLongOilRollSupplies},
    LaserFormat{97, 44, kFourDrumSupplies},  LaserFormat{98, 44, kFourDrumSupplies},
    LaserFormat{99, 44, kFourDrumSupplies},
};

constexpr std::size_t kLaserReplyCapacity = 128;  // the furthest byte read is at 66
constexpr std::uint8_t kSupplyAbsent = 255;

constexpr auto kBinaryMarker = "@BDC ST2\r\n"sv;
constexpr auto kTextMarker = "@BDC ST\r"sv;
constexpr auto kPanelMarker = "@BDC PS\r"sv;
constexpr auto kLaserMarker = "@EJL STATUS CODE="sv;

constexpr std::uint8_t kStatusField = 0x01;
constexpr std::uint8_t kInkField = 0x0F;

constexpr std::size_t kRevisionLength = 18;

// Colours of a text reply, which lists levels only, by the number of inks.
constexpr std::array<ColorID, 6> kTextReplyColors{1, 4, 5, 6, 7, 8};

std::size_t build(MutableBytes buffer, std::initializer_list<std::string_view> blocks) {
    ByteWriter writer(buffer);
    for (const std::string_view block : blocks) writer.text(block);
    return writer.finish();
}

void clearStart(MutableBytes buffer) {
    constexpr std::size_t kCleared = 32;
    std::ranges::fill(buffer.first(std::min(kCleared, buffer.size())), std::uint8_t{0});
}

std::string_view nozzleCheckPattern(std::string_view model) {
    const bool listed = std::ranges::find(kPattern10Models, model) != kPattern10Models.end();
    return listed ? printNozzleCheckPattern10 : printNozzleCheckPattern;
}

std::optional<std::string_view> wordFor(std::span<const Word> words, int code) {
    const auto hit = std::ranges::find(words, code, &Word::code);
    if (hit == words.end()) return std::nullopt;
    return hit->text;
}

bool beginsAsStatusReply(std::string_view reply) {
    return reply.starts_with("@BDC") || reply.starts_with("@EJL") || reply.starts_with("@@EJL");
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The number in the two characters after `tag`; nothing when they are not both digits.
std::optional<int> numberAfter(std::string_view text, std::string_view tag) {
    const auto value = textAfter(text, tag);
    if (!value || value->size() < 2 || !isDigit((*value)[0]) || !isDigit((*value)[1])) {
        return std::nullopt;
    }
    return ((*value)[0] - '0') * 10 + ((*value)[1] - '0');
}

void assignWordAfter(std::string_view text, std::string_view tag, std::span<const Word> words,
                     BoundedText& out) {
    const auto number = numberAfter(text, tag);
    const auto word = number ? wordFor(words, *number) : std::nullopt;
    if (word) out.assign(*word);
}

void nameTextReplyColors(InkQuantities& record, std::size_t count) {
    if (count != 4 && count != 6) return;
    for (std::size_t i = 0; i < count; ++i) record.entries.at(i).colorID = kTextReplyColors.at(i);
}

int readTextLevels(std::string_view body, InkQuantities& record) {
    const std::int8_t presetCount = record.count;
    const int count = parseIQ(asBytes(body), record);
    if (presetCount != 0) record.count = presetCount;
    nameTextReplyColors(record, static_cast<std::size_t>(count));
    return count;
}

// The field of a binary reply with this code gives a status text or levels; others are skipped.
void readBinaryField(std::uint8_t code, Bytes data, BoundedText& status, InkQuantities& record,
                     int& count) {
    if (code == kStatusField && !data.empty()) biStatusValueToString(ByteReader(data).u8(), status);
    if (code == kInkField) count = biInkStatusToIQ(data, record);
}

int readBinaryFields(ByteReader& reader, int remaining, BoundedText& status,
                     InkQuantities& record) {
    int count = 0;
    while (remaining >= 1) {
        const std::uint8_t code = reader.u8();
        const std::int8_t length = reader.s8();
        if (length < 0) break;
        const Bytes data = reader.take(static_cast<std::size_t>(length));
        if (reader.failed()) break;
        readBinaryField(code, data, status, record, count);
        remaining -= 2 + length;
    }
    return count;
}

// The panel-status byte after `tag`; the digits' codes are not reduced, as meant.
std::optional<std::uint8_t> panelByte(std::string_view body, std::string_view tag) {
    const auto value = textAfter(body, tag);
    if (!value || value->size() < 2) return std::nullopt;
    const std::string_view pair = value->substr(0, 2);
    if (pair.find(';') != std::string_view::npos) return std::nullopt;
    const auto codes = asBytes(pair);
    return static_cast<std::uint8_t>(codes[0] * 10 + codes[1]);
}

void appendSupply(InkQuantities& record, ColorID id, std::uint8_t level) {
    record.entries.at(record.usableCount()) = {id, static_cast<std::int8_t>(level)};
    ++record.count;
}

std::uint32_t wordAt(Bytes reply, std::size_t offset) {
    ByteReader reader(reply);
    reader.skip(offset);
    return reader.be32();
}

std::optional<std::uint8_t> byteAt(Bytes reply, std::size_t offset) {
    ByteReader reader(reply);
    reader.skip(offset);
    return reader.atEnd() ? std::nullopt : std::optional(reader.u8());
}

// A supply whose byte the reply does not reach is absent; a reply without the black one has none.
int readSupplies(Bytes reply, std::span<const SupplyByte> supplies, InkQuantities& record) {
    const std::size_t blackOffset = supplies.front().offset;
    if (reply.size() <= blackOffset) return 0;
    for (const auto& [offset, colorID] : supplies) {
        const std::uint8_t level = byteAt(reply, offset).value_or(kSupplyAbsent);
        if (level != kSupplyAbsent || offset == blackOffset) appendSupply(record, colorID, level);
    }
    return record.count;
}

int dispatchBDCST(Bytes reply, BoundedText& status, InkQuantities& record) {
    FixedText<64> error;
    FixedText<64> warning;
    FixedText<64> revision;
    return parseBDCST(reply, status, error, record, warning, revision);
}

int dispatchEJL(Bytes reply, BoundedText& status, InkQuantities& record) {
    std::uint32_t extra = 0;
    return parseEJLStatusCode(reply, status, record, extra);
}

struct ReplyParser {
    std::string_view marker;
    int (*parse)(Bytes, BoundedText&, InkQuantities&);
};
constexpr std::array kReplyParsers{
    ReplyParser{"@BDC ST2", parseST2},
    ReplyParser{"@EJL STATUS CODE", dispatchEJL},
    ReplyParser{kTextMarker, dispatchBDCST},
};

}  // namespace

bool epsonSpeaksD4(std::string_view commandSet) {
    return commandSet.find(epson_commands::d4) != std::string_view::npos;
}

int epsonVariant(std::string_view commandType) {
    if (commandType == epson_commands::rc0) return 0;
    return commandType == epson_commands::rc1 ? 1 : 2;
}

std::size_t mkEpsonStatusInquire(MutableBytes buffer, int variant) {
    switch (variant) {
        case 0:
            return build(buffer, {hdr, enter_remote, get_inkQuantity});
        case 1:
            return build(buffer, {hdr, enter_remote, set_replyInterval1, set_aStatusOn});
        case 2:
            return build(buffer, {hdr, enter_remote, set_replyInterval1, set_bStatusOn});
        default:
            return 0;
    }
}

std::size_t mkEpsonExitCmd(MutableBytes buffer, int variant) {
    if (variant >= 2) return build(buffer, {set_bStatusOff, set_replyInterval0, exit_remote});
    if (variant == 1) return build(buffer, {set_replyInterval0, exit_remote});
    return build(buffer, {exit_remote});
}

std::size_t mkEpsonNozzleOption(MutableBytes buffer, std::string_view model, int option) {
    clearStart(buffer);
    if (option == kOptionCleaning) {
        return build(buffer, {hdr, enter_remote, nozzleCleaning, exit_remote, pageEnd});
    }
    if (option != kOptionNozzleCheck) return 0;
    return build(buffer, {hdr, enter_remote, startJobNozzleCheck, nozzleCheckPattern(model),
                          exit_remote, pageEnd, enter_remote, endNullJob, exit_remote});
}

std::size_t mkEpsonD4NozzleOption(MutableBytes buffer, int /*ignored*/, int option) {
    clearStart(buffer);
    if (option == kOptionNozzleCheck) return build(buffer, {d4NozzleCheck});
    return option == kOptionCleaning ? build(buffer, {d4Cleaning}) : 0;
}

std::size_t mkEpsonD4ExitCmd(MutableBytes buffer) {
    return build(buffer, {d4Exit});
}

int parseST2(Bytes reply, BoundedText& status, InkQuantities& record) {
    if (!beginsAsStatusReply(asText(reply))) return 0;
    status.assign("Online");
    const auto payload = textAfter(asText(reply), kBinaryMarker);
    if (!payload) return 0;
    ByteReader reader(asBytes(*payload));
    const auto length = static_cast<std::int16_t>(reader.le16());
    return readBinaryFields(reader, length, status, record);
}

int parseBDCST(Bytes reply, BoundedText& status, BoundedText& error, InkQuantities& record,
               BoundedText& warning, BoundedText& revision) {
    status.assign("Online");
    if (!beginsAsStatusReply(asText(reply))) return 0;
    const auto body = textAfter(asText(reply), kTextMarker);
    if (!body) return 0;
    assignWordAfter(*body, "ST:", kTextStatusWords, status);
    assignWordAfter(*body, "ER:", kTextErrorWords, error);
    assignWordAfter(*body, "WR:", kTextWarningWords, warning);
    const auto revisionField = textAfter(*body, "RV:");
    if (revisionField) revision.assign(revisionField->substr(0, kRevisionLength));
    return readTextLevels(*body, record);
}

std::uint8_t parseBDCPS(Bytes reply) {
    const auto body = textAfter(asText(reply), kPanelMarker);
    if (!body) return 0;
    return panelByte(*body, "SM:").value_or(panelByte(*body, "ST:").value_or(0));
}

int parseEJLStatusCode(Bytes reply, BoundedText& status, InkQuantities& record,
                       std::uint32_t& extra) {
    status.clear();
    record.clear();
    extra = 0;
    const auto hex = textAfter(asText(reply), kLaserMarker);
    if (!hex) return 0;
    std::array<std::uint8_t, kLaserReplyCapacity> storage{};
    const Bytes bytes = std::span(storage).first(hexToBin(*hex, storage));
    ByteReader reader(bytes);
    const std::uint8_t format = reader.u8();
    reader.skip(1);
    const std::uint16_t code = reader.be16();
    if (reader.failed()) return 0;
    statusCodeToString(code, status);
    const auto* const layout = std::ranges::find(kLaserFormats, format, &LaserFormat::number);
    if (layout == kLaserFormats.end()) return 0;
    extra = wordAt(bytes, layout->extraOffset);
    return readSupplies(bytes, layout->supplies, record);
}

void biStatusValueToString(std::uint8_t value, BoundedText& text) {
    text.assign(wordFor(kBinaryStatusWords, value).value_or("Unknown"));
}

std::size_t statusCodeToString(int code, BoundedText& text) {
    text.assign(wordFor(kLaserStatusWords, code).value_or("Unknown status"));
    return text.size();
}

int parseEpsonReply(Bytes reply, BoundedText& status, InkQuantities& record, int whenUnknown) {
    for (const ReplyParser& parser : kReplyParsers) {
        if (asText(reply).find(parser.marker) == std::string_view::npos) continue;
        return parser.parse(reply, status, record);
    }
    return whenUnknown;
}

}  // namespace tintoral
