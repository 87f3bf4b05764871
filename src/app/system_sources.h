// The printers of this computer and its network, as the selection window takes them.
#pragma once

#include "app/printer_sources.h"

namespace tintoral {

PrinterSources systemPrinterSources();

}  // namespace tintoral
