#include "filter/command_filter.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <span>
#include <utility>

#include "filter/marker_line.h"
#include "history/ink_history_store.h"
#include "ink/color_vocabulary.h"
#include "records/ink_dict.h"
#include "records/model_table.h"
#include "records/printer_record.h"
#include "support/clock.h"
#include "support/report.h"
#include "support/text.h"
#include "transport/channels/d4_epson.h"
#include "transport/usb/device_id.h"
#include "vendors/canon.h"
#include "vendors/epson.h"
#include "vendors/hp.h"
#include "vendors/maintenance.h"
#include "vendors/transport_io.h"

namespace tintoral {
namespace {

using Buffer = std::array<std::uint8_t, 4096>;

void sendToPrinter(const FilterPorts& ports, Bytes bytes) {
    std::fflush(ports.printer);
    std::fwrite(bytes.data(), 1, bytes.size(), ports.printer);
    std::fflush(ports.printer);
}

constexpr std::chrono::milliseconds kStatusPause{500};

// One run of a maker's status exchange; the referenced objects outlive it.
struct InkQuery {
    std::string_view model;
    std::string_view commandSet;
    std::string_view commandType;
    InkQuantities& record;
    BoundedText& status;
    const FilterPorts& ports;
};

int queryEpsonD4(const InkQuery& query) {
    Buffer reply{};
    const int length = query.ports.d4InkQuery(reply);
    if (length < 1) return -1;
    query.status.clear();
    const std::size_t held = std::min(static_cast<std::size_t>(length), reply.size());
    return parseEpsonReply(Bytes(reply).first(held), query.status, query.record, -1);
}

int queryEpson(const InkQuery& query) {
    if (query.commandType == "D4") return queryEpsonD4(query);
    const int variant = epsonVariant(query.commandType);
    Buffer buffer{};
    sendToPrinter(query.ports, Bytes(buffer).first(mkEpsonStatusInquire(buffer, variant)));
    pauseFor(kStatusPause);
    sendToPrinter(query.ports, Bytes(buffer).first(mkEpsonExitCmd(buffer, variant)));
    return -1;
}

int queryCanon(const InkQuery& query) {
    Buffer buffer{};
    const std::size_t length = mkCanonStatusInquire(query.model, buffer, query.commandSet);
    // For "IVEC" the buffer is still clear here: that many NULs go out, as meant.
    sendToPrinter(query.ports, Bytes(buffer).first(length));
    pauseFor(kStatusPause);
    if (canonSpeaksIvec(query.commandSet)) return -1;
    sendToPrinter(query.ports, Bytes(buffer).first(mkCanonExitCmd(buffer)));
    return -1;
}

struct Maker {
    std::string_view name;
    int (*inkQuery)(const InkQuery& query);
};
constexpr Maker kMakers[] = {{makers::epson, queryEpson}, {makers::canon, queryCanon}};

// HP's printers are only told to clean.
std::size_t mkJob(const FilterPrinter& printer, int option, MutableBytes buffer) {
    if (printer.maker != makers::hp)
        return mkNozzleOption(printer.maker, printer.model, option, buffer);
    return option == kOptionCleaning ? mkHPCleaningCmd("PJL,PML", buffer) : 0;
}

void sendJob(const FilterPrinter& printer, int option, const FilterPorts& ports) {
    Buffer buffer{};
    const std::size_t size = mkJob(printer, option, buffer);
    if (size > 0) sendToPrinter(ports, Bytes(buffer).first(size));
}

std::vector<std::string> knownColors(const Dictionary* printer) {
    if (!printer) return {};
    return printer->texts(keys::colors).value_or(std::vector<std::string>{});
}

std::string textOr(const Dictionary* printer, std::string_view key, std::string_view fallback) {
    const Value* value = printer ? printer->find(key) : nullptr;
    const auto* text = value ? value->as<std::string>() : nullptr;
    return text ? *text : std::string(fallback);
}

int queryPrinter(const Dictionary* printer, InkQuantities& record, const FilterPorts& ports) {
    StatusText status;
    return getInkStatusByBackend(
        textOr(printer, keys::makerName, ""), textOr(printer, keys::modelName, ""),
        textOr(printer, keys::usbCmd, ""), textOr(printer, model_keys::commandType, "RC0"), record,
        status, ports);
}

std::vector<std::string> reportedColors(const InkQuantities& record, int count) {
    std::vector<std::string> colors;
    const std::size_t reported = std::min(static_cast<std::size_t>(count), record.entries.size());
    for (const InkEntry& entry : std::span(record.entries).first(reported)) {
        colors.emplace_back(colorNameByColorID(entry.colorID));
    }
    return colors;
}

int writeMarkers(const std::vector<std::string>& colors, const InkQuantities& record,
                 std::FILE* out) {
    MarkerLine line;
    const std::size_t count = std::min(colors.size(), record.entries.size());
    std::size_t added = 0;
    while (added < count && line.add(colors[added], record.entries[added].level)) ++added;
    return added > 0 ? line.write(out) : 0;
}

using LineBuffer = std::array<char, 1024>;

// The next line without its line feed; nothing at the end of the stream. The rest of a longer line
// is dropped, so that no command can begin inside one.
std::optional<std::string_view> readLine(std::FILE* stream, LineBuffer& buffer) {
    int c = std::getc(stream);
    if (c == EOF) return std::nullopt;
    std::size_t size = 0;
    for (; c != EOF && c != '\n'; c = std::getc(stream)) {
        if (size < buffer.size()) buffer[size++] = static_cast<char>(c);
    }
    return std::string_view(buffer.data(), size);
}

struct SchemeKind {
    std::string_view part;
    std::string_view kind;
};

// "dnssd" printers are told as shared by a base station, as meant: histories bear that name.
constexpr SchemeKind kSchemeKinds[] = {
    {"riousb", "AirPort"}, {"dnssd", "AirPort"}, {"ipp", "ipp"}, {"lpd", "Network"}};

std::string_view deviceScheme() {
    const char* variable = std::getenv("DEVICE_URI");
    const std::string_view uri = variable ? variable : "";
    const std::size_t colon = uri.find(':');
    if (colon != std::string_view::npos) return uri.substr(0, colon);
    reportLine("DEVICE_URI is not set or names no scheme");
    return {};
}

// The printer at the other end, as far as it can be told: with no device ID at hand, maker and
// model stay empty and no command finds a maker, as meant.
FilterPrinter connectedPrinter() {
    FixedText<64> maker;
    FixedText<64> model;
    backendGetMakeModel("", maker, model, 64);
    return {connectionKind(deviceScheme()), std::string(maker.view()), std::string(model.view())};
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

int d4InkQueryOnStandardOutput(MutableBytes reply) {
    return d4GetEpsonInkStatus(StandardOutput{}, reply, nullptr);
}

std::string connectionKind(std::string_view scheme) {
    if (equalsIgnoringCase(scheme, "usb")) return "USB";
    for (const SchemeKind& row : kSchemeKinds) {
        if (containsIgnoringCase(scheme, row.part)) return std::string(row.kind);
    }
    return std::string(scheme);
}

int getInkStatusByBackend(std::string_view maker, std::string_view model,
                          std::string_view commandSet, std::string_view commandType,
                          InkQuantities& record, BoundedText& status, const FilterPorts& ports) {
    for (const Maker& row : kMakers) {
        if (maker.starts_with(row.name))
            return row.inkQuery({model, commandSet, commandType, record, status, ports});
    }
    return -1;
}

int ReportLevels(const Dictionary* printer, std::string_view printerId, const FilterPorts& ports) {
    std::vector<std::string> colors = knownColors(printer);
    InkQuantities record;
    prefillQuantities(colors, record);
    const int count = queryPrinter(printer, record, ports);
    if (count < 1) return count;
    if (colors.empty()) colors = reportedColors(record, count);
    saveInkReadings(makeInkDict(colors, record, currentDate()), printerId);
    return writeMarkers(colors, record, ports.attributes);
}

struct CommandFilter::Command {
    std::string_view word;
    void (CommandFilter::*run)();
};

constexpr CommandFilter::Command CommandFilter::kCommands[] = {
    {"Clean", &CommandFilter::clean},
    {"PrintSelfTestPage", &CommandFilter::printSelfTestPage},
    {"ReportLevels", &CommandFilter::reportLevels},
};

CommandFilter::CommandFilter(FilterPrinter printer, std::filesystem::path modelTable,
                             FilterPorts ports)
    : printer_(std::move(printer)), modelTable_(std::move(modelTable)), ports_(ports) {}

void CommandFilter::run(std::FILE* commands) {
    LineBuffer buffer;
    while (const auto line = readLine(commands, buffer)) {
        const std::size_t start = line->find_first_not_of(" \t\v\f\r\n");
        if (start == std::string_view::npos || (*line)[start] == '#') continue;
        obey(line->substr(start));
    }
}

void CommandFilter::obey(std::string_view line) {
    for (const Command& command : kCommands) {
        if (startsWithIgnoringCase(line, command.word)) return (this->*command.run)();
    }
}

void CommandFilter::clean() {
    sendJob(printer_, kOptionCleaning, ports_);
}

void CommandFilter::printSelfTestPage() {
    sendJob(printer_, kOptionNozzleCheck, ports_);
}

void CommandFilter::reportLevels() {
    const Dictionary* dictionary = printerDictionary();
    ReportLevels(dictionary, printer_.kind + ':' + printer_.maker + ' ' + printer_.model, ports_);
}

const Dictionary* CommandFilter::printerDictionary() {
    if (!std::exchange(lookedUp_, true)) {
        const ModelTable table = ModelTable::load(modelTable_);
        if (const Dictionary* entry = table.find(printer_.maker + ' ' + printer_.model)) {
            dictionary_ = *entry;
            dictionary_->set(keys::makerName, printer_.maker);
            dictionary_->set(keys::modelName, printer_.model);
        }
    }
    return dictionary_ ? &*dictionary_ : nullptr;
}

int doCupsCommands(int argc, char** argv) {
    setReportPrefix("ERROR: ");
    std::unique_ptr<std::FILE, FileCloser> file;
    if (argc == 7) {
        file.reset(std::fopen(argv[6], "r"));
        if (!file) {
            std::perror("ERROR: Unable to open command file - ");
            return 1;
        }
    }
    CommandFilter filter(connectedPrinter(), modelTablePath());
    filter.run(file ? file.get() : stdin);
    return 0;
}

}  // namespace tintoral
