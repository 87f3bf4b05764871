// One printer as the program knows it, and the names of all that is kept about it.
//
// A record is a string-keyed dictionary, shared by reference between the printer table, the pop-up
// and the windows. Every key is optional but "printerId"; a getter yields nothing for a key that is
// absent or wrongly typed. Flags are the texts "YES" and "NO".
#pragma once

#include <memory>
#include <string_view>

#include "support/property_list.h"

namespace tintoral {

using PrinterRecord = Dictionary;
using PrinterRecordPtr = std::shared_ptr<PrinterRecord>;

namespace keys {
inline constexpr std::string_view printerId = "printerId";      // unique; the pop-up's title
inline constexpr std::string_view printerName = "printerName";  // the selection table's title
inline constexpr std::string_view kind = "kind";  // locator; its first 3 characters: transport
inline constexpr std::string_view serverType = "serverType";    // how the printer is reached
inline constexpr std::string_view serviceType = "serviceType";  // Bonjour type with trailing dot
inline constexpr std::string_view ipAdrs = "ipAdrs";            // dotted address or host name
inline constexpr std::string_view port = "port";                // TCP port
inline constexpr std::string_view hostName = "hostName";        // the resolver's host name
inline constexpr std::string_view ippURL = "ippURL";            // "http://ADDRESS:631/RP"
inline constexpr std::string_view usbPrinterName = "usbPrinterName";  // behind a base station
inline constexpr std::string_view makerName = "makerName";
inline constexpr std::string_view modelName = "modelName";
inline constexpr std::string_view makerAndModelName = "makerAndModelName";
inline constexpr std::string_view devModelName = "devModelName";  // the USB device's own model text
inline constexpr std::string_view serialID = "serialID";
inline constexpr std::string_view vendorID = "vendorID";
inline constexpr std::string_view productID = "productID";
inline constexpr std::string_view location = "location";
inline constexpr std::string_view usbCmd = "usb_CMD";  // command set of the IEEE 1284 device ID
inline constexpr std::string_view usbMfg = "usb_MFG";
inline constexpr std::string_view usbMdl = "usb_MDL";
inline constexpr std::string_view usbS = "usb_S";              // HP's status, as announced
inline constexpr std::string_view usbVStatus = "usb_VSTATUS";  // HP's status, as announced
inline constexpr std::string_view date = "Date";               // last seen, selected or updated
inline constexpr std::string_view active = "Active";
inline constexpr std::string_view printerStatus = "printerStatus";
inline constexpr std::string_view colors = "Colors";  // ink names in display order
inline constexpr std::string_view rgbColors =
    "rgbColors";  // "#RRGGBB" for each ink, as IPP reports them
inline constexpr std::string_view inkDict = "inkDict";  // the last successful update
inline constexpr std::string_view commandType = "commandType";
inline constexpr std::string_view nozzleCleaning = "nozzleCleaning";
inline constexpr std::string_view printNozzleCheckPattern = "printNozzleCheckPattern";
inline constexpr std::string_view cleaningAndTestPrint = "cleaningAndTestPrint";
inline constexpr std::string_view addedByAddress =
    "addedByAddress";  // typed in by the person; never announced
inline constexpr std::string_view announcedInks =
    "announcedInks";  // those whose low level the person was told of (monitor/low_ink.h)
}  // namespace keys

// Keys of a model-table entry that are not keys of a record.
namespace model_keys {
inline constexpr std::string_view commandType = "CommandType";
inline constexpr std::string_view options = "options";
}  // namespace model_keys

inline constexpr std::string_view kYes = "YES";
inline constexpr std::string_view kNo = "NO";

// Kinds of server.
namespace server_types {
inline constexpr std::string_view usb = "USB";
inline constexpr std::string_view network = "Network";
inline constexpr std::string_view airPort = "AirPort";
inline constexpr std::string_view mac = "Mac";
inline constexpr std::string_view macCups14 = "Mac cups1.4";
inline constexpr std::string_view macCups15 = "Mac cups1.5";
}  // namespace server_types

// Service types, as records hold them.
namespace service_types {
inline constexpr std::string_view ipp = "_ipp._tcp.";
inline constexpr std::string_view pdlDatastream = "_pdl-datastream._tcp.";
inline constexpr std::string_view printer = "_printer._tcp.";
inline constexpr std::string_view riousbprint = "_riousbprint._tcp.";
inline constexpr std::string_view bjnp = "_bjnp._udp.";
}  // namespace service_types

// Makers as "makerName" has them, compared exactly.
namespace makers {
inline constexpr std::string_view epson = "EPSON";
inline constexpr std::string_view canon = "Canon";
inline constexpr std::string_view hp = "HP";
}  // namespace makers

}  // namespace tintoral
