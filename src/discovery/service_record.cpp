#include "discovery/service_record.h"

#include <algorithm>
#include <array>

#include "support/text.h"

namespace tintoral {
namespace {

struct MakerWord {
    std::string_view word;
    std::string_view maker;
};

// The first word that occurs decides. "EPSON" without a blank behind it is no such word.
constexpr MakerWord kMakerWords[] = {
    {"Officejet", "HP"}, {"Photosmart", "HP"},      {"Deskjet", "HP"},
    {"LaserJet", "HP"},  {"Hewlett-Packard", "HP"}, {"hp ", "HP"},
    {"epson ", "EPSON"}, {"stylus", "EPSON"},       {"canon ", "Canon"},
    {"pixma", "Canon"},  {"Lexmark", "Lexmark"},    {"Samsung", "Samsung"},
    {"Xerox", "Xerox"},  {"Brother", "Brother"},    {"Ricoh", "Ricoh"},
};

std::string makerByWords(std::string_view text, std::string_view otherwise) {
    for (const MakerWord& row : kMakerWords) {
        if (containsIgnoringCase(text, row.word)) return std::string(row.maker);
    }
    return std::string(otherwise);
}

std::string normalisedMaker(const MakerAndModel& names) {
    if (names.maker.empty()) return makerByWords(names.model, "unknown");
    return makerByWords(names.maker, names.maker == "hp" ? "HP" : names.maker);
}

// "EPSON Stylus Photo R300 - Gutenprint v5" is the maker, the model and the name of a driver. A
// text without a blank is a model.
MakerAndModel splitProductText(const std::string& ty) {
    const std::size_t blank = ty.find(' ');
    if (blank == std::string::npos) return {"", ty};
    const std::string model = ty.substr(blank + 1);
    return {ty.substr(0, blank), model.substr(0, model.find(" - Guten"))};
}

MakerAndModel announcedNames(const TxtRecord& txt) {
    const auto maker = txt.text(txt_keys::usbMfg);
    const auto model = txt.text(txt_keys::usbMdl);
    if (!maker && !model) return splitProductText(txt.text(txt_keys::ty).value_or(""));
    return {maker.value_or(""), model.value_or("")};
}

void copyText(const TxtRecord& txt, std::string_view key, PrinterRecord& record,
              std::string_view recordKey) {
    if (const auto value = txt.text(key)) record.set(recordKey, *value);
}

void setPrinterStatus(const TxtRecord& txt, PrinterRecord& record) {
    struct State {
        char digit;
        std::string_view status;
    };
    constexpr State kStates[] = {{'3', "Idle"}, {'4', "Printing"}, {'5', "Unknown"}};
    const std::string announced = txt.text(txt_keys::printerState).value_or("");
    for (const State& state : kStates) {
        if (announced.starts_with(state.digit)) record.set(keys::printerStatus, state.status);
    }
}

// What a service type makes of a service.
struct Reach {
    std::string kind;
    std::string_view serverType;
};

Reach reachIpp(const ResolvedService& service, bool) {
    const std::string formats = service.txt.text(txt_keys::pdl).value_or("");
    const std::string& name = service.id.name;
    const bool shared = !name.empty() && (name.find('@') != std::string::npos ||
                                          formats.find("vnd.cups-raster") != std::string::npos);
    return {"ipp:" + addressOf(service), shared ? server_types::mac : server_types::network};
}

Reach reachRiousb(const ResolvedService& service, bool) {
    return {"riousb:" + addressOf(service), server_types::airPort};
}

std::uint16_t portOf(const ResolvedService& service) {
    constexpr std::uint16_t kUsualPort = 9100;
    const bool usual = service.address.empty() && service.port != 0;
    return usual ? kUsualPort : service.port;
}

Reach reachPdlDatastream(const ResolvedService& service, bool atAirPort) {
    const bool hasStatusText =
        service.txt.text(txt_keys::usbVStatus) || service.txt.text(txt_keys::usbS);
    return {"port" + std::to_string(portOf(service)) + ":" + addressOf(service),
            atAirPort || hasStatusText ? server_types::airPort : server_types::network};
}

// Also at the address of a base station that is known already, as meant: only its raw ports are
// asked whether they belong to one.
Reach reachPrinter(const ResolvedService& service, bool) {
    return {"lpd:" + addressOf(service), server_types::network};
}

struct TypeRow {
    std::string_view type;
    Reach (*reach)(const ResolvedService&, bool atAirPort);
};
constexpr TypeRow kTypes[] = {
    {service_types::ipp, reachIpp},
    {service_types::riousbprint, reachRiousb},
    {service_types::pdlDatastream, reachPdlDatastream},
    {service_types::printer, reachPrinter},
};

Reach reachOf(const ResolvedService& service, bool atAirPort) {
    const auto* row = std::ranges::find(kTypes, service.id.type, &TypeRow::type);
    return row == std::end(kTypes) ? Reach{} : row->reach(service, atAirPort);
}

void setNames(PrinterRecord& record, const ResolvedService& service) {
    const auto [maker, model] = makerAndModelOf(service);
    record.set(keys::makerName, maker);
    record.set(keys::modelName, model);
    record.set(keys::makerAndModelName, maker + " " + model);
    copyText(service.txt, txt_keys::usbMfg, record, keys::usbMfg);
    copyText(service.txt, txt_keys::usbMdl, record, keys::usbMdl);
    copyText(service.txt, txt_keys::usbCmd, record, keys::usbCmd);
    if (maker == makers::hp) copyStatusTexts(service.txt, record);
}

// IPP's own port, whatever port was announced, as meant.
std::string ippUrlOf(const ResolvedService& service) {
    return "http://" + addressOf(service) + ":631/" + service.txt.text(txt_keys::rp).value_or("");
}

void setLocation(PrinterRecord& record, const ResolvedService& service) {
    record.set(keys::ipAdrs, addressOf(service));
    record.set(keys::port, int{portOf(service)});
    record.set(keys::hostName, cleanText(service.hostName));
    if (service.id.type == service_types::riousbprint)
        copyText(service.txt, txt_keys::rp, record, keys::usbPrinterName);
    if (service.id.type == service_types::ipp) record.set(keys::ippURL, ippUrlOf(service));
}

}  // namespace

std::string addressOf(const ResolvedService& service) {
    return service.address.empty() ? cleanText(service.hostName) : service.address;
}

std::string modelWithoutMaker(std::string_view model) {
    for (const std::string_view maker : {"Epson ", "Canon "}) {
        if (!startsWithIgnoringCase(model, maker)) continue;
        model.remove_prefix(maker.size());
        break;
    }
    constexpr std::string_view kHp = "HP ";
    if (startsWithIgnoringCase(model, kHp)) model.remove_prefix(kHp.size());
    return std::string(model);
}

MakerAndModel makerAndModelOf(const ResolvedService& service) {
    MakerAndModel names = announcedNames(service.txt);
    if (names.model.empty()) names.model = service.id.name;
    return {normalisedMaker(names), modelWithoutMaker(names.model)};
}

void copyStatusTexts(const TxtRecord& txt, PrinterRecord& record) {
    copyText(txt, txt_keys::usbVStatus, record, keys::usbVStatus);
    copyText(txt, txt_keys::usbS, record, keys::usbS);
}

std::string airPortIdOf(const PrinterRecord& record) {
    return std::string(server_types::airPort) + ":" + record.text(keys::printerName);
}

void fillServiceRecord(PrinterRecord& record, const ResolvedService& service, bool atAirPort) {
    setLocation(record, service);
    setNames(record, service);
    setPrinterStatus(service.txt, record);
    const auto [kind, serverType] = reachOf(service, atAirPort);
    record.set(keys::kind, kind);
    // One that has answered with levels over IPP is asked so from then on.
    if (record.text(keys::serverType) != server_types::macCups14)
        record.set(keys::serverType, serverType);
    record.set(keys::printerId, std::string(serverType) + ":" + service.id.name);
}

}  // namespace tintoral
