// What can be asked of a printer to find out why its levels do not show: a list of phases that
// depends on how the printer is connected.
//
//   "kind"        phases
//   "USB"         device ID, levels in each language of the maker, the maker's diagnosis
//   "rio..."      opening, device ID, levels as an update asks for them, the maker's diagnosis
//   "port..."     connection, levels, the maker's diagnosis, the Printer MIB
//   "lpd..."      the Printer MIB; for an Epson printer at a base station its remote mode first
//   "bjn..."      device ID and status over BJNP
//   "ipp..."      state and markers over IPP; the Printer MIB unless a computer shares the printer
//
// The last phase of each list tells what maintenance the program could do. Nothing is ever printed
// or cleaned, and the record is not changed. An inactive printer is asked all the same: that it
// does not answer is what the report is to show.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "records/printer_record.h"

namespace tintoral {

struct DiagnosticPhase {
    std::string progress;  // "Phase 1...", for the progress line
    std::string title;     // what it does, in words

    // Asks and appends to the report: an empty line, a heading, what came (of more than 32 KiB the
    // beginning) and the time it took. Lines are clean (support/text.h), and a printer's text
    // begins none. Blocks for as long as the exchange may take (see the header of each: a few
    // seconds for most, up to 60 s for IPP); call it on any thread, but one phase at a time.
    std::function<void(std::string& report)> run;
};

// The phases for a printer, in order, to be run one by one. They hold a copy of the record. Of a
// kind that is not known there is none that asks anything.
std::vector<DiagnosticPhase> diagnosticPhases(const PrinterRecord& printer);

}  // namespace tintoral
