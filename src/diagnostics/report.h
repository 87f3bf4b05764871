// The diagnostics report as text: its head, the printer's record, and what the phases wrote
// (diagnosis.h); and the report as a mail.
//
//   Tintoral 0.1.0
//   System: Debian GNU/Linux 12
//   Time: 2026-03-14 09:26:53 UTC
//   Printer:
//     Active: YES
//     ...                      each value of the record, sorted by key, a line each
//
//   Phase 1: ...               as the phases wrote it
//
// Lines end in LF. Nothing that a printer, a network or a system says begins a line of its own or
// holds a control character (cleanText).
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "records/printer_record.h"
#include "support/clock.h"

namespace tintoral {

struct ReportHead {
    std::string programVersion;
    std::string systemVersion;
    Date time;  // UTC
};

enum class SerialNumbers { Shown, Hidden };

// The whole report. `phases` is all that the phases wrote, clean as they left it. Hidden: as
// serial_numbers.h says, with the record's "serialID" as the serial number, also in the record's
// own values.
std::string diagnosticReport(const ReportHead& head, const PrinterRecord& printer,
                             std::string_view phases, SerialNumbers serialNumbers);

// What many mail programs still take in a "mailto:" URL.
inline constexpr std::size_t kLongestMailBody = 1800;

// The report as a mail's text, at most kLongestMailBody bytes. A longer one is cut between two
// characters and ends with a sentence that names the file with the whole report (only its last
// component where the path has more than 256 bytes).
std::string mailBody(std::string_view report, const std::filesystem::path& savedFile);

// A URL that opens a new mail (RFC 6068). All but unreserved characters is percent-encoded, the "@"
// of the address excepted; line breaks of the body go as CR LF. `address` may be empty.
std::string mailtoUrl(std::string_view address, std::string_view subject, std::string_view body);

}  // namespace tintoral
