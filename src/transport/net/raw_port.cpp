#include "transport/net/raw_port.h"

#include <array>
#include <optional>
#include <string>

#include "netproto/record_supplies.h"
#include "transport/net/sockets.h"
#include "vendors/canon_exchange.h"
#include "vendors/epson.h"
#include "vendors/epson_chain.h"
#include "vendors/epson_exchange.h"
#include "vendors/maintenance.h"

namespace tintoral {
namespace {

constexpr int kUnreachable = -1;
constexpr std::size_t kLongestAddress = 64;
constexpr std::uint16_t kUsualPort = 9100;

struct Target {
    std::string host;
    std::uint16_t port;
};

bool isInactive(const PrinterRecord& printer) {
    return printer.text(keys::active) == kNo;
}

std::string addressOf(const PrinterRecord& printer) {
    return printer.text(keys::ipAdrs).substr(0, kLongestAddress);
}

std::optional<Target> targetOf(const PrinterRecord& printer) {
    const std::string host = addressOf(printer);
    const auto port = printer.integer(keys::port).value_or(0);
    if (host.empty() || port < 1 || port > 65535) return std::nullopt;
    return Target{host, static_cast<std::uint16_t>(port)};
}

std::string_view firstEpsonCommand(const PrinterRecord& printer) {
    if (printer.text(keys::addedByAddress) == kYes) return epson_commands::rc;
    return epsonSpeaksD4(printer.text(keys::usbCmd)) ? epson_commands::d4 : epson_commands::rc0;
}

// One inquiry. What it refers to must outlive the link.
EpsonLink remoteLink(std::string_view commandType, const Target& target, InkQuantities& record,
                     BoundedText& status) {
    return {commandType, [&, variant = epsonVariant(commandType)] {
                return tcpEpsonRCInquiry(target.host, target.port, variant, status, record,
                                         nullptr);
            }};
}

EpsonLink d4Link(const Target& target, InkQuantities& record, BoundedText& status) {
    return {epson_commands::d4,
            [&] { return tcpEpsonD4Inquiry(target.host, target.port, status, record, nullptr); }};
}

int epsonInkStatus(PrinterRecord& printer, const Target& target, InkQuantities& record,
                   BoundedText& status) {
    const std::array links{d4Link(target, record, status),
                           remoteLink(epson_commands::rc, target, record, status),
                           remoteLink(epson_commands::rc1, target, record, status),
                           remoteLink(epson_commands::rc0, target, record, status)};
    return runEpsonChain(printer, firstEpsonCommand(printer), links);
}

int canonInkStatus(const PrinterRecord& printer, const Target& target, InkQuantities& record,
                   BoundedText& status) {
    return tcpCanonInquiry(target.host, target.port, printer.text(keys::modelName),
                           printer.text(keys::usbCmd), status, record, nullptr);
}

}  // namespace

int port9100GetInkStatus(PrinterRecord& printer, InkQuantities& record, BoundedText& status) {
    if (isInactive(printer)) return 0;
    const std::string address = addressOf(printer);
    if (address.empty()) return kUnreachable;
    const std::string maker = printer.text(keys::makerName);
    if (maker != makers::epson && maker != makers::canon)
        return inkStatusOfRecordByPMib(printer, address, record, status);
    const auto target = targetOf(printer);
    if (!target) return kUnreachable;
    return maker == makers::epson ? epsonInkStatus(printer, *target, record, status)
                                  : canonInkStatus(printer, *target, record, status);
}

int port9100GetEpsonRemoteInkStatus(PrinterRecord& printer, InkQuantities& record,
                                    BoundedText& status) {
    const Target target{addressOf(printer), kUsualPort};
    if (target.host.empty()) return kUnreachable;
    const std::array links{remoteLink(epson_commands::rc, target, record, status),
                           remoteLink(epson_commands::rc1, target, record, status),
                           remoteLink(epson_commands::rc0, target, record, status)};
    return runEpsonChain(printer, epson_commands::rc, links);
}

void port9100NozzleOptions(const PrinterRecord& printer, int option) {
    if (isInactive(printer)) return;
    const auto target = targetOf(printer);
    if (!target) return;
    std::array<std::uint8_t, 256> command{};
    const std::size_t size = mkNozzleOption(printer.text(keys::makerName),
                                            printer.text(keys::modelName), option, command);
    if (size > 0) tcpSend(target->host, target->port, Bytes(command).first(size));
}

}  // namespace tintoral
