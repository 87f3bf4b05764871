// Printers that announce nothing, because they stand on another network: the person names their
// address, and the program asks there who answers.
#pragma once

#include <cstdint>
#include <string>

#include "monitor/update_cycle.h"
#include "records/model_table.h"
#include "records/printer_record.h"

namespace tintoral {

enum class Connection { RawPort, PrinterMib, Lpd };

// What the person typed.
struct AddressRequest {
    std::string host;  // IPv4 address or host name
    Connection connection = Connection::RawPort;
    std::uint16_t port = 9100;  // used by RawPort
    std::string makerAndModel;  // as on the printer's front; its first word is the maker

    friend bool operator==(const AddressRequest&, const AddressRequest&) = default;
};

// A sentence that says what is wrong with the request; empty when it can be tried.
std::string problemWith(const AddressRequest& request);

// The record of the printer. Its "addedByAddress" is "YES"; its "printerId" names the model and the
// address, so two printers of one model stay apart.
PrinterRecordPtr makeAddressedRecord(const AddressRequest& request);

// The printer's own name for itself, asked over SNMP (RFC 2790 hrDeviceDescr); empty when it does
// not say.
std::string askPrinterName(const std::string& host);

// What came back from the address.
struct AddressAnswer {
    UpdateOutcome outcome;
    std::string words;         // for the person, plain text
    PrinterRecordPtr printer;  // with what was learned on the way
};

// Tries one update of the printer that the request describes, with what `models` knows of it, and a
// Canon that tells no levels once more in its other language. Takes at most the time-outs of that
// connection, or twice those.
AddressAnswer testAddress(const AddressRequest& request, const ModelTable& models);

}  // namespace tintoral
