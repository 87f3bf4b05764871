// The maintenance commands as the person knows them: items of the Tools menu, titles in the model
// table, flags in a record.
#pragma once

#include <array>
#include <string_view>

#include "records/printer_record.h"

namespace tintoral {

struct MaintenanceItem {
    std::string_view title;
    std::string_view flagKey;  // "YES" in a record whose model lists the title
    int option;                // as the builders number it (vendors/epson.h)
};

// Whether a maintenance job for the printer reaches it by the way it is connected. HP's go over USB
// only.
inline bool carriesMaintenance(const PrinterRecord& printer) {
    const std::string serverType = printer.text(keys::serverType);
    if (serverType == server_types::usb) return true;
    const std::string kind = printer.text(keys::kind);
    return (serverType == server_types::airPort || serverType == server_types::network) &&
           (kind.starts_with("rio") || kind.starts_with("por")) &&
           printer.text(keys::makerName) != makers::hp;
}

inline constexpr std::array<MaintenanceItem, 3> kMaintenanceItems{{
    {"Nozzle Cleaning", keys::nozzleCleaning, 1},
    {"Print Nozzle Check Pattern", keys::printNozzleCheckPattern, 2},
    {"Cleaning and Test Print", keys::cleaningAndTestPrint, 3},
}};

}  // namespace tintoral
