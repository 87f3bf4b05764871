#include "netproto/ipp_printer.h"

#include <array>
#include <charconv>
#include <string_view>

#include "netproto/printer_mib.h"
#include "support/text.h"

namespace tintoral {
namespace {

std::string_view pickText(const IppTuples& list, std::string_view name) {
    const IppTuple* const node = findTuple(list, name, ipp_kinds::text);
    return node != nullptr ? node->value : std::string_view();
}

// The four bytes of the value; none of them set when the printer did not name it.
std::string_view pickWord(const IppTuples& list, std::string_view name) {
    constexpr std::string_view kZero("\0\0\0\0", 4);
    const IppTuple* const node = findTuple(list, name, ipp_kinds::word);
    return node != nullptr ? node->value : kZero;
}

// A stopped printer is "Unknown", as meant.
std::string_view stateName(int state) {
    constexpr std::array<std::string_view, 6> kNames{"None", "None",     "None",
                                                     "Idle", "Printing", "Unknown"};
    const bool isNamed = state >= 0 && state < static_cast<int>(kNames.size());
    return isNamed ? kNames[static_cast<std::size_t>(state)] : "None";
}

void dumpPrinter(BoundedText& dump, const IppPrinter& printer) {
    dump.appendFormat("  Printer State = %d\n", printer.state);
    dump.appendFormat("  Printer-state-message = '%s'\n", cleanText(printer.stateMessage).c_str());
    dump.appendFormat("  Location     = '%s'\n", cleanText(printer.location).c_str());
    dump.appendFormat("  Cups version = '%s'\n", cleanText(printer.cupsVersion).c_str());
}

// "1.4.2" is read as 1.4, and no words ("infinity") are numbers.
bool knowsMarkers(std::string_view cupsVersion) {
    constexpr double kLastWithoutMarkers = 1.3;
    double version = 0;
    cupsVersion = cupsVersion.substr(0, cupsVersion.find_first_not_of("0123456789."));
    std::from_chars(cupsVersion.data(), cupsVersion.data() + cupsVersion.size(), version,
                    std::chars_format::fixed);
    return version > kLastWithoutMarkers;
}

struct Marker {
    std::string type;
    std::string name;
    std::string color;
    std::int32_t level;  // as reported
};

Marker markerAt(const IppTuples& list, int index) {
    constexpr std::int32_t kUnknownLevel = -2;
    const auto valueOf = [&](std::string_view name) {
        std::string_view value;
        GetTupleValueAtIndex(list, name, value, index);
        return value;
    };
    return {cleanText(valueOf("marker-types")), cleanText(valueOf("marker-names")),
            cleanText(valueOf("marker-colors")),
            ippNumber(valueOf("marker-levels")).value_or(kUnknownLevel)};
}

void dumpMarker(BoundedText& dump, int index, const Marker& marker) {
    dump.appendFormat("  marker-types %2d = '%s'\n", index, marker.type.c_str());
    dump.appendFormat("  marker-levels = %d\n", marker.level);
    dump.appendFormat("  marker-names = %s\n", marker.name.c_str());
    dump.appendFormat("  marker-colors = %s\n", marker.color.c_str());
}

}  // namespace

IppPrinter readIppPrinter(IppTuples&& attributes) {
    IppPrinter printer;
    printer.attributes = std::move(attributes);
    const IppTuples& list = printer.attributes;
    printer.state = ippNumber(pickWord(list, "printer-state")).value_or(0);
    printer.stateMessage = pickText(list, "printer-state-message");
    printer.isShared = pickWord(list, "printer-is-shared").front() != '\0';
    printer.location = pickText(list, "printer-location");
    printer.cupsVersion = pickText(list, "cups-version");
    return printer;
}

int readStatusAndMarkers(const IppPrinter& printer, BoundedText& status, InkQuantities& inks,
                         SupplyNames& names, SupplyNames& colors, BoundedText* dump) {
    status.assign(stateName(printer.state));
    if (dump != nullptr) dumpPrinter(*dump, printer);
    const IppTuple* const types = findTuple(printer.attributes, "marker-types", ipp_kinds::text);
    if (!knowsMarkers(printer.cupsVersion) || types == nullptr) return 0;
    const int count = types->index + 1;  // 1, since only the first value has the name, as meant
    for (int index = 0; index < count; ++index) {
        const auto row = static_cast<std::size_t>(index);
        const Marker marker = markerAt(printer.attributes, index);
        if (!marker.type.empty()) inks.entries[row] = {0, supplyLevel(marker.level, 100)};
        names[row].assign(marker.name);
        colors[row].assign(marker.color);
        if (dump != nullptr) dumpMarker(*dump, index, marker);
    }
    return count;
}

}  // namespace tintoral
