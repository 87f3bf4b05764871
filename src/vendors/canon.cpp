#include "vendors/canon.h"

#include <algorithm>
#include <array>

#include "support/byte_writer.h"

namespace tintoral {
namespace {

struct ModelRequest {
    std::string_view model;
    std::string_view text;
};
constexpr std::string_view kShortRequest =
    "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,HCU,PFS,FSI,PRF;";
constexpr std::string_view kDefaultRequest =
    "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,CIR,CTK,FSI,PRF,HRI,MSI,PDR;";
constexpr auto kModelRequests = std::to_array<ModelRequest>({
    {"MP110", "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,CIL,TNK,HCU;"},
    {"MP530", "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,HCU,CIR,CTK,PFS,FSI,HRI,PRF;"},
    {"MP600", "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,HCU,CIR,CTK,PFS,FSI,PRF,HRI,MSI;"},
    {"iP4300", "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,HCU,CIR,CTK,AOF,PFS,FSI,PRF,HRI;"},
    {"iP4000", kShortRequest},
    {"iP4000R", kShortRequest},
    {"iP_3100", kShortRequest},
    {"S820D", "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,CIL,LVR,HCU,CIR;"},
    {"i9900", "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,CIL,LVR,HCU,CIR,CMS;"},
});

constexpr std::array<std::string_view, 2> kMaintenanceLines{"@CLEANING=1ALL\n",
                                                            "@TestPrint=NozzleCheck\n"};
constexpr std::size_t kMaintenanceJobRoom = 64;

struct InkName {
    std::string_view name;
    ColorID id;
};
constexpr auto kInkNames = std::to_array<InkName>({
    {"PBK", 65},
    {"BK", 1},
    {"M", 5},
    {"LM", 8},
    {"C", 4},
    {"LC", 7},
    {"Y", 6},
    {"K", 1},
    {"CL", 2},
    {"R", 33},
    {"GY", 19},
    {"G", 66},
});

struct StatusValue {
    std::string_view code;
    std::string_view text;
};
constexpr auto kStatusValues = std::to_array<StatusValue>({
    {"00", "Idle"},
    {"04", "Ink low"},
    {"0C", "Ink error"},
});

std::string_view requestText(std::string_view model) {
    const auto* const row =
        std::find_if(kModelRequests.begin(), kModelRequests.end(),
                     [model](const ModelRequest& request) { return request.model == model; });
    return row == kModelRequests.end() ? kDefaultRequest : row->text;
}

std::size_t frame(MutableBytes buffer, std::string_view text) {
    const auto size = static_cast<std::uint16_t>(text.size());
    ByteWriter writer(buffer);
    writer.text("\x1B[K").le16(static_cast<std::uint16_t>(size + 4)).be16(0x001E);
    writer.be16(static_cast<std::uint16_t>(size + 2)).text(text);
    return writer.finish();
}

std::string_view statusOf(std::string_view reply) {
    const auto field = textAfter(reply, "BST:");
    if (!field) return "Online";
    for (const StatusValue& value : kStatusValues) {
        if (field->starts_with(value.code)) return value.text;
    }
    return "not idle";
}

ColorID colorOf(std::string_view name) {
    for (const InkName& ink : kInkNames) {
        if (ink.name == name) return ink.id;
    }
    return 0;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The decimal number at the start of `text`, after blanks and a sign, as scanf's "%d" reads it; its
// low byte only, so that no number is too long.
std::int8_t lowByteOfNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    unsigned value = 0;
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1)) {
        value = (value * 10 + static_cast<unsigned>(text.front() - '0')) & 0xFF;
    }
    return static_cast<std::int8_t>(negative ? 0 - value : value);
}

// Takes the first NAME=VALUE off the field; false when there is none.
bool takeInk(std::string_view& field, InkEntry& entry) {
    if (field.starts_with(',')) field.remove_prefix(1);
    const auto equals = field.find('=');
    if (equals == std::string_view::npos) return false;
    const std::string_view name = field.substr(0, equals);
    field.remove_prefix(equals + 1);
    const std::string_view value = field.substr(0, field.find(','));
    field.remove_prefix(value.size());
    entry = {colorOf(name), value == "UK" ? std::int8_t{0} : lowByteOfNumber(value)};
    return true;
}

}  // namespace

bool canonSpeaksIvec(std::string_view commandSet) {
    return commandSet.find("IVEC") != std::string_view::npos;
}

std::size_t mkCanonStatusInquire(std::string_view model, MutableBytes buffer,
                                 std::string_view commandSet) {
    if (canonSpeaksIvec(commandSet)) return kCanonIvecStatusRequest.size();
    return frame(buffer, requestText(model));
}

std::size_t mkCanonExitCmd(MutableBytes buffer) {
    return frame(buffer, "SSR=DF;");
}

std::size_t mkCanonNozzleOption(MutableBytes buffer, int option) {
    constexpr auto kSwitchToBjl =
        std::to_array<std::uint8_t>({0x1B, '@', 0x1B, '[', 'K', 0x02, 0x00, 0x00, 0x1F});
    std::fill_n(buffer.begin(), std::min(buffer.size(), kMaintenanceJobRoom), std::uint8_t{0});
    if (option < 1 || option > static_cast<int>(kMaintenanceLines.size())) return 0;
    ByteWriter writer(buffer);
    writer.bytes(kSwitchToBjl).text("BJLSTART\n");
    writer.text(kMaintenanceLines[static_cast<std::size_t>(option) - 1]).text("BJLEND\n");
    return writer.finish();
}

int parseCIR(Bytes reply, BoundedText& status, InkQuantities& record) {
    const std::string_view text = textBeforeNul(reply);
    status.assign(statusOf(text));
    std::string_view field = textBetween(text, "CIR:", ';').value_or("");
    std::size_t count = 0;
    while (count < record.entries.size() && takeInk(field, record.entries[count])) ++count;
    if (count > 0) record.count = static_cast<std::int8_t>(count);
    return static_cast<int>(count);
}

}  // namespace tintoral
