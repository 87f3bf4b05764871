#include "transport/net/riousb_ink_status.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include "transport/channels/d4_epson.h"
#include "transport/net/riousb.h"
#include "transport/net/riousb_byte_stream.h"
#include "vendors/canon.h"
#include "vendors/canon_reply.h"
#include "vendors/epson.h"
#include "vendors/hp.h"
#include "vendors/maintenance.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr milliseconds kDeviceIDTimeout{1000};
constexpr milliseconds kEpsonTimeout{800};
constexpr milliseconds kCanonTimeout{600};
constexpr milliseconds kFurtherPieceTimeout{400};
// A printer that has one more byte each time may not go on till the reply is full.
constexpr milliseconds kFurtherPiecesTime{5000};

constexpr std::size_t kReplyRoom = 1024;
using Reply = std::array<std::uint8_t, kReplyRoom>;
using Command = std::array<std::uint8_t, 512>;

Bytes firstOf(const Reply& reply, int count) {
    return Bytes(reply).first(static_cast<std::size_t>(std::max(count, 0)));
}

std::unique_ptr<RiousbConnection> connectionTo(const PrinterRecord& printer) {
    const std::string host = printer.text(keys::hostName);
    const auto port = printer.integer(keys::port).value_or(0);
    const bool isReachable = printer.text(keys::serverType) == server_types::airPort &&
                             printer.text(keys::active) != kNo && !host.empty();
    if (!isReachable || port < 1 || port > 65535) return nullptr;
    return riousbOpen(host, static_cast<std::uint16_t>(port), printer.text(keys::usbPrinterName));
}

int askHP(RiousbConnection& connection, const PrinterRecord&, InkQuantities& record,
          BoundedText& status) {
    FixedText<kReplyRoom + 1> deviceID;
    const int length = riousbGetDeviceID(connection, deviceID, kDeviceIDTimeout);
    return length < 1 ? 0 : parseHPDeviceID(deviceID.view(), status, record);
}

int inquireInRemoteMode(RiousbConnection& connection, const PrinterRecord& printer, Reply& reply) {
    Command command{};
    const int variant = epsonVariant(printer.text(keys::commandType));
    const std::size_t size = mkEpsonStatusInquire(command, variant);
    if (riousbWrite(connection, Bytes(command).first(size)) < 0) return 0;
    return riousbRead(connection, reply, kEpsonTimeout);
}

int inquireOverD4(RiousbConnection& connection, Reply& reply) {
    RiousbByteStream stream(connection);
    const int length = d4GetEpsonInkStatus(BaseStation{stream}, reply, nullptr);
    return length == kNoD4Channel ? 0 : length;
}

int askEpson(RiousbConnection& connection, const PrinterRecord& printer, InkQuantities& record,
             BoundedText& status) {
    Reply reply;
    const int length = epsonSpeaksD4(printer.text(keys::usbCmd))
                           ? inquireOverD4(connection, reply)
                           : inquireInRemoteMode(connection, printer, reply);
    return length < 1 ? 0 : parseEpsonReply(firstOf(reply, length), status, record, 0);
}

Bytes receivePlain(RiousbConnection& connection, Reply& storage) {
    const Bytes reply = firstOf(storage, riousbRead(connection, storage, kCanonTimeout));
    Command command{};
    riousbWrite(connection, Bytes(command).first(mkCanonExitCmd(command)));
    return reply;
}

bool holds(Bytes reply, std::string_view mark) {
    return asText(reply).find(mark) != std::string_view::npos;
}

Bytes receiveXml(RiousbConnection& connection, Reply& storage) {
    Bytes reply = firstOf(storage, riousbRead(connection, storage, kCanonTimeout));
    if (!holds(reply, "<?xml")) return {};
    const auto end = Steady::now() + kFurtherPiecesTime;
    while (!holds(reply, "</cmd>") && reply.size() < storage.size() && Steady::now() < end) {
        const MutableBytes room = MutableBytes(storage).subspan(reply.size());
        const int count = riousbRead(connection, room, kFurtherPieceTimeout);
        if (count < 1) break;
        reply = Bytes(storage).first(reply.size() + static_cast<std::size_t>(count));
    }
    return reply;
}

int askCanon(RiousbConnection& connection, const PrinterRecord& printer, InkQuantities& record,
             BoundedText& status) {
    const std::string commandSet = printer.text(keys::usbCmd);
    Command command{};
    const std::size_t size =
        mkCanonStatusInquire(printer.text(keys::modelName), command, commandSet);
    if (riousbWrite(connection, Bytes(command).first(size)) < 0) return 0;
    Reply storage;
    const Bytes reply = canonSpeaksIvec(commandSet) ? receiveXml(connection, storage)
                                                    : receivePlain(connection, storage);
    return reply.empty() ? 0 : parseCanonReply(reply, status, record);
}

struct Maker {
    std::string_view name;
    int (*ask)(RiousbConnection&, const PrinterRecord&, InkQuantities&, BoundedText&);
};
constexpr std::array kMakers{Maker{makers::hp, askHP}, Maker{makers::epson, askEpson},
                             Maker{makers::canon, askCanon}};

}  // namespace

int riousbGetInkStatus(PrinterRecord& printer, InkQuantities& record, BoundedText& status) {
    const auto maker = std::ranges::find(kMakers, printer.text(keys::makerName), &Maker::name);
    if (maker == kMakers.end()) return 0;
    auto connection = connectionTo(printer);
    if (!connection) return 0;
    const int inks = maker->ask(*connection, printer, record, status);
    riousbClose(std::move(connection));
    return std::max(inks, 0);
}

void riousbNozzleOptions(const PrinterRecord& printer, int option) {
    Command command{};
    const std::size_t size = mkNozzleOption(printer.text(keys::makerName),
                                            printer.text(keys::modelName), option, command);
    if (size == 0) return;
    auto connection = connectionTo(printer);
    if (!connection) return;
    riousbWrite(*connection, Bytes(command).first(size));
    riousbClose(std::move(connection));
}

}  // namespace tintoral
