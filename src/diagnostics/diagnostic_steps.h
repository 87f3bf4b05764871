// The steps that the phases of a diagnosis are made of. Private to this folder.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ink/ink_quantities.h"
#include "records/printer_record.h"
#include "support/fixed_text.h"
#include "vendors/transport_io.h"

namespace tintoral {

// Opens what it needs, asks, writes what came and closes again. A step that writes nothing has
// heard nothing.
struct DiagnosticStep {
    std::string_view title;
    std::string_view maker;  // only for printers of this maker; empty: for all
    void (*run)(const PrinterRecord& printer, BoundedText& report);
};
using DiagnosticSteps = std::span<const DiagnosticStep>;

DiagnosticSteps usbSteps();
DiagnosticSteps baseStationSteps();
DiagnosticSteps rawPortSteps();
DiagnosticSteps epsonRemoteSteps();  // remote mode on port 9100, whatever the record's port
DiagnosticSteps printerMibSteps();
DiagnosticSteps bjnpSteps();
DiagnosticSteps ippSteps();
DiagnosticSteps maintenanceSteps();

// Room for what one step writes, and for one dump.
using StepText = FixedText<32768>;
using StepDump = FixedText<16384>;

// "Result", status text and levels of an inquiry.
void reportLevels(BoundedText& report, int result, const BoundedText& status,
                  const InkQuantities& inks);

// "NAME = TEXT", cleaned.
void reportText(BoundedText& report, std::string_view name, std::string_view text);

// The exchange that a maker's printers are diagnosed by, on an open connection.
void diagnoseMaker(const IoHandle& handle, const PrinterRecord& printer, BoundedText& report);

// The command type in which to diagnose an Epson printer: the one of its record, or else D4 where
// the printer names it, or else RC.
std::string epsonCommandTypeToTry(const PrinterRecord& printer);

// The record's port, or nothing when it is outside 1 to 65535.
std::optional<std::uint16_t> portOf(const PrinterRecord& printer);

// Milliseconds since `start`.
long long millisecondsSince(std::chrono::sys_time<std::chrono::milliseconds> start);

}  // namespace tintoral
