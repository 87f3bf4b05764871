#include "monitor/address_probe.h"

#include <algorithm>

#include "netproto/printer_mib.h"
#include "records/model_merge.h"
#include "support/text.h"
#include "vendors/maker_and_model.h"

namespace tintoral {
namespace {

constexpr std::size_t kLongestHost = 64;  // of which the printers are asked

struct ConnectionRow {
    std::string_view serviceType;
    std::string_view kindPrefix;
};

ConnectionRow rowOf(Connection connection) {
    switch (connection) {
        case Connection::PrinterMib:
            return {"", "lpd:"};  // network printers of this kind are asked over SNMP
        case Connection::Lpd:
            return {service_types::printer, "lpd:"};
        default:
            return {service_types::pdlDatastream, "port"};
    }
}

std::string kindOf(const AddressRequest& request) {
    std::string kind(rowOf(request.connection).kindPrefix);
    if (request.connection == Connection::RawPort) kind += std::to_string(request.port) + ":";
    return kind + request.host;
}

std::string placeOf(const AddressRequest& request) {
    constexpr std::uint16_t kUsualPort = 9100;
    const bool unusual = request.connection == Connection::RawPort && request.port != kUsualPort;
    return unusual ? request.host + ":" + std::to_string(request.port) : request.host;
}

// A slash would also be one in the name of the printer's history file.
std::string withoutSlashes(std::string text) {
    std::ranges::replace(text, '/', '-');
    return text;
}

struct MakerAndModel {
    std::string maker;
    std::string model;
};

// A maker that the vendor modules do not know is the first word of the name.
MakerAndModel splitMakerAndModel(const std::string& name) {
    FixedText<64> maker;
    FixedText<64> model;
    identifyMakerAndModelName(name, maker, model);
    if (!maker.empty()) return {std::string(maker.view()), std::string(model.view())};
    const auto blank = name.find(' ');
    if (blank == std::string::npos) return {"unknown", name};
    return {name.substr(0, blank), name.substr(blank + 1)};
}

std::string levelsInWords(const PrinterRecord& printer) {
    const Dictionary* inkDict = printer.dictionary(keys::inkDict);
    const auto colors = inkDict ? inkDict->texts(keys::colors) : std::nullopt;
    std::string words;
    for (const std::string& color : colors.value_or(std::vector<std::string>())) {
        const std::int64_t level = inkDict->integer(color).value_or(0);
        words += (words.empty() ? "" : ", ") + color +
                 (level < 0 ? "" : " " + std::to_string(level) + " %");
    }
    return words;
}

std::string answerInWords(const AddressRequest& request, const PrinterRecord& printer,
                          UpdateOutcome outcome) {
    switch (outcome) {
        case UpdateOutcome::Levels:
            return "It answers: " + printer.text(keys::printerStatus) + ". " +
                   levelsInWords(printer) + ".";
        case UpdateOutcome::NoLevels:
            return "It answers, but does not tell its ink levels this way. Try another connection, "
                   "or check the maker "
                   "and model.";
        default:
            return "Nothing answers at " + placeOf(request) +
                   ". Is the printer on, and is the address right?";
    }
}

// A printer that was typed in has announced no command set. A Canon that tells no levels in the
// plain language is asked in IVEC, and remembered to speak it when that yields some.
UpdateOutcome askInEachLanguage(PrinterRecord& printer) {
    const UpdateOutcome plain = updatePrinter(printer);
    if (plain != UpdateOutcome::NoLevels || printer.text(keys::makerName) != makers::canon)
        return plain;
    const std::string status = printer.text(keys::printerStatus);
    printer.set(keys::usbCmd, "IVEC");
    if (updatePrinter(printer) == UpdateOutcome::Levels) return UpdateOutcome::Levels;
    printer.remove(keys::usbCmd);
    printer.set(keys::printerStatus, status);
    return plain;
}

}  // namespace

std::string problemWith(const AddressRequest& request) {
    if (request.host.empty()) return "Enter the printer's address or host name.";
    if (request.host.find_first_of(" /:@") != std::string::npos ||
        cleanText(request.host) != request.host) {
        return "An address is a host name or four numbers with dots, without a port or a path.";
    }
    if (request.host.size() > kLongestHost) return "The address is longer than 64 characters.";
    if (request.port == 0) return "The port is a number from 1 to 65535.";
    if (request.makerAndModel.empty()) return "Enter the printer's maker and model.";
    return {};
}

PrinterRecordPtr makeAddressedRecord(const AddressRequest& request) {
    const auto [maker, model] = splitMakerAndModel(request.makerAndModel);
    const std::string makerAndModel = maker + " " + model;
    const std::string title = withoutSlashes(makerAndModel + " (" + placeOf(request) + ")");
    auto printer = std::make_shared<PrinterRecord>();
    printer->set(keys::printerId, "Network:" + title);
    printer->set(keys::printerName, title);
    printer->set(keys::kind, kindOf(request));
    printer->set(keys::serverType, server_types::network);
    printer->set(keys::serviceType, rowOf(request.connection).serviceType);
    printer->set(keys::ipAdrs, request.host);
    printer->set(keys::port, int{request.port});
    printer->set(keys::makerName, maker);
    printer->set(keys::modelName, model);
    printer->set(keys::makerAndModelName, makerAndModel);
    printer->set(keys::date, currentDate());
    printer->set(keys::active, kYes);
    printer->set(keys::addedByAddress, kYes);
    return printer;
}

std::string askPrinterName(const std::string& host) {
    FixedText<256> description;
    pmibGetDeviceDescription(host, description);
    return cleanText(description.view());
}

AddressAnswer testAddress(const AddressRequest& request, const ModelTable& models) {
    const PrinterRecordPtr printer = makeAddressedRecord(request);
    updatePrinterDict(*printer, models);
    const UpdateOutcome outcome = askInEachLanguage(*printer);
    return {outcome, answerInWords(request, *printer, outcome), printer};
}

}  // namespace tintoral
