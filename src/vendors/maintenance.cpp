#include "vendors/maintenance.h"

#include "vendors/canon.h"
#include "vendors/epson.h"

namespace tintoral {

std::size_t mkNozzleOption(std::string_view maker, std::string_view model, int option,
                           MutableBytes buffer) {
    if (maker == "EPSON") return mkEpsonNozzleOption(buffer, model, option);
    return maker == "Canon" ? mkCanonNozzleOption(buffer, option) : 0;
}

}  // namespace tintoral
