#include "discovery/listing.h"

#include "discovery/service_record.h"
#include "support/text.h"
#include "transport/net/sockets.h"

namespace tintoral {
namespace {

constexpr std::size_t kLongestField = 128;

// From `start` characters after the beginning of the field to its ";" and with it, as meant.
std::string fieldWithSemicolon(std::string_view field, std::size_t start) {
    const std::size_t semicolon = field.find(';');
    if (semicolon == std::string_view::npos || semicolon < start) return {};
    const std::string_view value = field.substr(start, semicolon - start + 1);
    return cleanText(value.substr(0, kLongestField));
}

PrinterRecordPtr newRecord(std::string_view maker, const std::string& model) {
    auto record = std::make_shared<PrinterRecord>();
    const std::string name = std::string(maker) + " " + model;
    record->set(keys::printerName, name);
    record->set(keys::makerAndModelName, name);
    record->set(keys::makerName, maker);
    record->set(keys::modelName, model);
    record->set(keys::date, currentDate());
    return record;
}

}  // namespace

std::string commandSetOf(std::string_view deviceID) {
    constexpr std::string_view kKey = "CMD:";
    const std::size_t at = deviceID.find(kKey);
    return at == std::string_view::npos ? "" : fieldWithSemicolon(deviceID.substr(at), kKey.size());
}

SerialField serialOf(std::string_view deviceID) {
    constexpr std::string_view kLongKey = "SERN:";
    std::size_t at = deviceID.find(kLongKey);
    if (at == std::string_view::npos) at = deviceID.find("SN:");
    if (at == std::string_view::npos) return {false, ""};
    return {true, fieldWithSemicolon(deviceID.substr(at), kLongKey.size())};
}

PrinterRecordPtr recordOfUsbPrinter(const USBPrinterInfo& printer) {
    PrinterRecordPtr record =
        newRecord(printer.maker.view(), modelWithoutMaker(printer.model.view()));
    const auto [hasSerial, serial] = serialOf(printer.deviceID.view());
    record->set(keys::serialID, hasSerial ? serial : std::string(printer.serialNumber.view()));
    record->set(keys::usbCmd, commandSetOf(printer.deviceID.view()));
    record->set(keys::devModelName, printer.model.view());
    record->set(keys::vendorID, int{printer.vendorID});
    record->set(keys::productID, int{printer.productID});
    record->set(keys::location, std::int64_t{printer.locationID});
    record->set(keys::kind, "USB");
    record->set(keys::serverType, server_types::usb);
    record->set(keys::printerId, "USB:" + record->text(keys::printerName));
    return record;
}

PrinterRecordPtr recordOfBjnpPrinter(const BjnpPrinter& printer) {
    PrinterRecordPtr record = newRecord(makers::canon, std::string(printer.model.view()));
    record->set(keys::ipAdrs, dottedText(printer.address));
    record->set(keys::usbCmd, printer.commandSet.view());
    record->set(keys::kind, "bjnp:" + dottedText(printer.address));
    record->set(keys::serverType, server_types::network);
    record->set(keys::serviceType, service_types::bjnp);
    record->set(keys::printerId, "BJNP:" + record->text(keys::printerName));
    return record;
}

}  // namespace tintoral
