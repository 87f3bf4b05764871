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

inline constexpr std::array<MaintenanceItem, 3> kMaintenanceItems{{
    {"Nozzle Cleaning", keys::nozzleCleaning, 1},
    {"Print Nozzle Check Pattern", keys::printNozzleCheckPattern, 2},
    {"Cleaning and Test Print", keys::cleaningAndTestPrint, 3},
}};

}  // namespace tintoral
