#include "vendors/maintenance_command.h"

#include "records/printer_record.h"
#include "vendors/canon.h"
#include "vendors/epson.h"

namespace tintoral {

std::size_t mkMaintenanceCommand(MutableBytes buffer, std::string_view maker,
                                 std::string_view model, int option) {
    if (maker == makers::epson) return mkEpsonNozzleOption(buffer, model, option);
    return maker == makers::canon ? mkCanonNozzleOption(buffer, option) : 0;
}

}  // namespace tintoral
