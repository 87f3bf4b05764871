// Status and supplies of any printer that serves the Host Resources MIB (RFC 2790) and the Printer
// MIB (RFC 3805), asked over SNMPv1 with the community "public". Every query is a GetNextRequest; a
// table is walked by sending the answered record again, until an answer leaves the column.
//
//   1.3.6.1.2.1.25.3.2.1.3         hrDeviceDescr, the printer's name for itself
//   1.3.6.1.2.1.25.3.5.1.1, .2     hrPrinterStatus, hrPrinterDetectedErrorState
//   1.3.6.1.2.1.43.11.1.1.2 - .9   prtMarkerSupplies: marker, colorant, class, type,
//                                  description, unit, maximum, level
//   1.3.6.1.2.1.43.12.1.1.2 - .5   prtMarkerColorant: marker, role, value, tonality
//   1.3.6.1.4.1.11.2.3.9.1.1.7     HP: IEEE 1284 device ID
//   1.3.6.1.4.1.2435..., 1240...   Brother and others: only dumped
//
// Each exchange takes at most 200 ms, and what the look-up of a host's name takes. Dumps are
// appended to a text of the caller's, which may be null.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "ink/ink_quantities.h"
#include "ink/supply_names.h"
#include "netproto/snmp.h"
#include "support/fixed_text.h"

namespace tintoral {

// A walk is given up after this many rows.
inline constexpr std::size_t kMaximumSupplies = 10;

// Names or descriptions, a row for each step of a walk; cut at 63 bytes, as the printer sent them.
using SupplyRows = std::array<SupplyName, kMaximumSupplies>;

// Status and levels in one go. `maker` is compared exactly: "HP" reads the printer's IEEE 1284
// device ID first and falls back to the supplies table. Of the supplies' descriptions only the last
// one ends up in `names`, in its first row, as meant.
//
// Result: the number of inks; 0 when the printer has no supplies table; negative when it did not
// answer (the status text then says so).
int getInkStatusByPMib(std::string_view maker, const std::string& host, BoundedText& status,
                       InkQuantities& record, SupplyNames& names);

// The printer's state in words. Result: the size of the reply, or -1 when none came.
int pmibGetPrinterStatus(const std::string& host, BoundedText& status, BoundedText* dump);

// Levels and descriptions of up to ten supplies. The record's count and levels are set, its colours
// are not touched. A level is the percentage of the maximum (0 to 100); the reported level itself
// (up to 127) when there is no maximum; -1 (other), -2 (unknown) or -3 (some remaining) as
// reported. `dump` is cleared first. Result: the number of supplies.
int pmibGetSupplies(const std::string& host, SupplyRows& descriptions, InkQuantities& record,
                    BoundedText* dump);

// The names of up to ten colorants. Result: their number.
int pmibGetColorant(const std::string& host, SupplyRows& names, BoundedText* dump);

// HP's IEEE 1284 device ID, of which 511 bytes are kept; `deviceID` and `dump` are cleared first.
// Result: the size of the reply, 0 or -1 when none came.
int pmibGetHPDeviceID(const std::string& host, BoundedText& deviceID, BoundedText* dump);

// What the printer calls itself; `description` is cleared first. Result: the size of the reply, 0
// or -1 when none came.
int pmibGetDeviceDescription(const std::string& host, BoundedText& description);

// Vendor objects, asked only for their dump. Result: the length of the dump.
int pmibGetBrotherMib1(const std::string& host, BoundedText& dump);
int pmibGetBrotherMib2(const std::string& host, BoundedText& dump);

// Makes the message the next request of a walk: round 0 fills in the columns, a later round asks
// for the successors of the bindings that were answered last.
void mkSnmpMakerSuppliesQuery(SnmpMessage& message, std::uint32_t requestId, int round);
void mkSnmpColorantMarkerQuery(SnmpMessage& message, std::uint32_t requestId, int round);

// The words for hrPrinterStatus and the first byte of hrPrinterDetectedErrorState.
void printerStatusToString(std::int32_t status, std::string_view errorState, BoundedText& text);

// The level as the record keeps it, from prtMarkerSuppliesLevel and prtMarkerSuppliesMaxCapacity.
std::int8_t supplyLevel(std::int32_t level, std::int32_t maximum);

}  // namespace tintoral
