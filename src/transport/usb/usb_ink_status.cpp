#include "transport/usb/usb_ink_status.h"

#include <array>
#include <chrono>
#include <memory>
#include <string>

#include "support/clock.h"
#include "transport/channels/d4.h"
#include "transport/channels/d4_epson.h"
#include "transport/channels/mlc.h"
#include "transport/usb/usb_byte_stream.h"
#include "transport/usb/usb_printer.h"
#include "vendors/canon.h"
#include "vendors/canon_reply.h"
#include "vendors/epson.h"
#include "vendors/epson_chain.h"
#include "vendors/hp.h"
#include "vendors/maintenance.h"

namespace tintoral {
namespace {

constexpr int kFailed = -1;
constexpr std::size_t kD4DrainRoom = 512;
constexpr std::size_t kRemoteDrainRoom = 2558;
constexpr std::size_t kRemoteReplyRoom = 2560;
constexpr std::chrono::seconds kRemotePause{2};
constexpr int kRemoteRetries = 5;
constexpr std::size_t kCanonReplyRoom = 2048;
constexpr int kCanonRetries = 2;
constexpr std::size_t kLongestHPCommandSet = 30;
constexpr std::string_view kMlcCommandSet = "MLC,PCL,PML";

using Command = std::array<std::uint8_t, 512>;
using OpenPrinter = std::unique_ptr<USBPrinterHandle>;
using Message = FixedText<1024>;  // what went wrong; nobody is shown it here

OpenPrinter openPrinter(const USBPrinterInfo& info) {
    Message message;
    return USBPrinterOpen(&info, message);
}

// Its end closes the interface too.
OpenPrinter openInterface(const USBPrinterInfo& info) {
    Message message;
    auto printer = USBPrinterOpen(&info, message);
    if (printer && USBPrinterInterfaceOpen(*printer, message) != 0) printer.reset();
    return printer;
}

// Reads what an earlier exchange has left in the printer. Result: bytes read.
std::size_t drain(USBPrinterHandle& printer, MutableBytes room) {
    std::size_t length = 0;
    USBRecv(printer, room, length, kUsbDrainTimeout);
    return length;
}

int parseEpson(Bytes reply, BoundedText& status, InkQuantities& record) {
    return reply.empty() ? kFailed : parseEpsonReply(reply, status, record, kFailed);
}

bool endCanonInquiry(USBPrinterHandle& printer, std::string_view commandSet) {
    if (canonSpeaksIvec(commandSet)) return true;
    Command command{};
    return USBSendCmd(printer, Bytes(command).first(mkCanonExitCmd(command))) == 0;
}

void cleanOverMlc(USBPrinterHandle& printer, Bytes command) {
    UsbByteStream stream(printer);
    auto channel = MLCopen(UsbPrinter{stream});
    if (!channel) return;
    MLCwrite(*channel, command);
    MLCclose(channel);
}

// One inquiry; what it refers to must outlive the link.
EpsonLink remoteLink(std::string_view commandType, const USBPrinterInfo& info,
                     InkQuantities& record, BoundedText& status) {
    return {commandType, [&, variant = epsonVariant(commandType)] {
                return usbEpsonRCGetStatusAndInkQuantities(info, status, record, variant);
            }};
}

int epsonInkStatus(PrinterRecord& printer, const USBPrinterInfo& info, InkQuantities& record,
                   BoundedText& status) {
    const EpsonLink d4{epson_commands::d4,
                       [&] { return usbEpsonD4GetStatusAndInkQuantities(info, status, record); }};
    const std::array links{d4, remoteLink(epson_commands::rc, info, record, status),
                           remoteLink(epson_commands::rc1, info, record, status),
                           remoteLink(epson_commands::rc0, info, record, status)};
    return runEpsonChain(printer, epson_commands::d4, links);
}

std::uint16_t idOf(const PrinterRecord& printer, std::string_view key) {
    return static_cast<std::uint16_t>(printer.integer(key).value_or(0));
}

}  // namespace

USBPrinterInfo usbPrinterOfRecord(const PrinterRecord& printer) {
    const std::string deviceModel = printer.text(keys::devModelName);
    USBPrinterInfo info;
    info.maker.assign(printer.text(keys::makerName));
    info.model.assign(deviceModel.empty() ? printer.text(keys::modelName) : deviceModel);
    info.vendorID = idOf(printer, keys::vendorID);
    info.productID = idOf(printer, keys::productID);
    info.serialNumber.assign(printer.text(keys::serialID));
    return info;
}

int USBGetInkStatus(PrinterRecord& printer, InkQuantities& record, BoundedText& status) {
    const USBPrinterInfo info = usbPrinterOfRecord(printer);
    const std::string_view maker = info.maker.view();
    if (maker == makers::epson) return epsonInkStatus(printer, info, record, status);
    if (maker == makers::canon) {
        return usbCanonGetStatusAndInkQuantities(info, status, record, printer.text(keys::usbCmd));
    }
    if (maker == makers::hp) return usbHPGetStatusAndInkQuantities(info, status, record);
    status.assign("This printer is not suppoted yet.");
    return 0;
}

int usbEpsonD4GetStatusAndInkQuantities(const USBPrinterInfo& info, BoundedText& status,
                                        InkQuantities& record) {
    const auto printer = openInterface(info);
    if (!printer) return kFailed;
    std::array<std::uint8_t, kD4DrainRoom> stale;
    drain(*printer, stale);
    UsbByteStream stream(*printer);
    std::array<std::uint8_t, 1024> reply;
    const int length = d4GetEpsonInkStatus(UsbPrinter{stream}, reply, nullptr);
    if (length < 1 || length == kNoD4Channel) return kFailed;
    return parseEpson(Bytes(reply).first(static_cast<std::size_t>(length)), status, record);
}

int usbEpsonRCGetStatusAndInkQuantities(const USBPrinterInfo& info, BoundedText& status,
                                        InkQuantities& record, int variant) {
    const auto printer = openInterface(info);
    if (!printer) return kFailed;
    std::array<std::uint8_t, kRemoteReplyRoom> reply{};
    std::size_t length = drain(*printer, MutableBytes(reply).first(kRemoteDrainRoom));
    Command command{};
    const Bytes inquiry = Bytes(command).first(mkEpsonStatusInquire(command, variant));
    if (USBSendCmd(*printer, inquiry) != 0) return kFailed;
    pauseFor(kRemotePause);
    reply.fill(0);
    USBGetReply(*printer, reply, length, kRemoteRetries);
    USBSendCmd(*printer, Bytes(command).first(mkEpsonExitCmd(command, variant)));
    return parseEpson(Bytes(reply).first(length), status, record);
}

int usbCanonGetStatusAndInkQuantities(const USBPrinterInfo& info, BoundedText& status,
                                      InkQuantities& record, std::string_view commandSet) {
    const auto printer = openInterface(info);
    if (!printer) return kFailed;
    Command command{};
    const std::size_t size = mkCanonStatusInquire(info.model.view(), command, commandSet);
    std::array<std::uint8_t, kCanonReplyRoom> reply{};
    std::size_t length = reply.size();
    const int result =
        USBSendCmdAndGetReply(*printer, Bytes(command).first(size), reply, length, kCanonRetries);
    if (result != 0 || !endCanonInquiry(*printer, commandSet) || length == 0) return kFailed;
    return parseCanonReply(Bytes(reply).first(length), status, record);
}

int usbHPGetStatusAndInkQuantities(const USBPrinterInfo& info, BoundedText& status,
                                   InkQuantities& record) {
    const auto printer = openPrinter(info);
    if (!printer) return kFailed;
    FixedText<1025> deviceID;
    USBPrinterGetDeviceID(*printer, deviceID);
    return parseHPDeviceID(deviceID.view(), status, record);
}

void usbNozzleOptions(const PrinterRecord& printer, int option) {
    const USBPrinterInfo info = usbPrinterOfRecord(printer);
    if (info.maker.view() == makers::hp) {
        usbHPNozzleCleaning(info, printer.text(keys::usbCmd).substr(0, kLongestHPCommandSet));
        return;
    }
    Command command{};
    const std::size_t size =
        mkNozzleOption(info.maker.view(), printer.text(keys::modelName), option, command);
    if (size > 0) USBPrinterPrintSendCommand(info, Bytes(command).first(size));
}

int usbHPNozzleCleaning(const USBPrinterInfo& info, std::string_view commandSet) {
    const auto printer = openInterface(info);
    Command storage{};
    const Bytes command = Bytes(storage).first(mkHPCleaningCmd(commandSet, storage));
    if (!printer || command.empty()) return 0;
    if (commandSet.starts_with(kMlcCommandSet)) {
        cleanOverMlc(*printer, command);
    } else {
        USBSendCmd(*printer, command);
    }
    return 0;
}

int usbEpsonD4NozzelOptions(const USBPrinterInfo& info, int, int option) {
    const auto printer = openInterface(info);
    if (!printer) return kFailed;
    std::array<std::uint8_t, kD4DrainRoom> stale;
    drain(*printer, stale);
    UsbByteStream stream(*printer);
    d4EpsonNozzleOption(UsbPrinter{stream}, option);
    return kFailed;
}

int USBPrinterPrintSendCommand(const USBPrinterInfo& info, Bytes bytes) {
    if (const auto printer = openInterface(info)) USBSendCmd(*printer, bytes);
    return 0;
}

}  // namespace tintoral
