// Asks an IPP queue for its supplies while printers are being listed. A queue that answers with
// levels is from then on updated through IPP.
#pragma once

#include "monitor/update_cycle.h"
#include "netproto/record_ipp.h"
#include "records/printer_record.h"

namespace tintoral {

// Asks the queue at the record's "ippURL". With levels, sets "printerStatus", "rgbColors",
// "inkDict" (whose "Colors" are the markers' names) and "serverType" = "Mac cups1.4"; else the
// record stays as it is. Result: that of `query`.
int probeIppRecord(PrinterRecord& printer, PrinterQuery query = inkStatusOfRecordByIpp);

}  // namespace tintoral
