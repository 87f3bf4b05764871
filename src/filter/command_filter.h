// The printing system's command filter (filter(7) of CUPS): maintenance commands in, printer bytes
// out.
//
//   input            one command per line (cupsCommands of the PPD), "#" begins a comment
//   standard output  the bytes for the printer; the backend passes them on, nothing comes back
//   standard error   one "ATTR: " line per report (marker_line.h), "ERROR: " lines for the job log
//   DEVICE_URI       where the job goes; only its scheme is used
//
//   command            EPSON                 Canon                 HP
//   Clean              cleaning job          cleaning job          "PJL,PML" cleaning command
//   PrintSelfTestPage  nozzle check          nozzle check          -
//   ReportLevels       status exchange       status exchange       -
//
// Commands match by their beginning and without regard to case ("cleaning" is a Clean); every other
// line is ignored.
#pragma once

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "ink/ink_quantities.h"
#include "support/byte_reader.h"
#include "support/fixed_text.h"
#include "support/property_list.h"

namespace tintoral {

// The ink query over an IEEE 1284.4 (D4) channel whose sending side is standard output. Fills the
// cleared `reply`. Result: the length of the reply, 0 or less when there is none.
using D4InkQuery = int (*)(MutableBytes reply);

// The query itself (d4_epson.h). Standard output brings nothing back, so the printer is asked for
// packet mode in vain, and the result is the one for a channel that cannot be opened.
int d4InkQueryOnStandardOutput(MutableBytes reply);

// What the filter speaks to. The streams belong to the caller.
struct FilterPorts {
    std::FILE* printer = stdout;     // flushed after every command
    std::FILE* attributes = stderr;  // "ATTR: " lines
    D4InkQuery d4InkQuery = d4InkQueryOnStandardOutput;
};

// The printer that a command stream is for.
struct FilterPrinter {
    std::string kind;  // connectionKind() of the device URI
    std::string maker;
    std::string model;
};

// The connection kind of a device URI's scheme: "USB", "AirPort", "ipp", "Network", or else the
// scheme itself.
std::string connectionKind(std::string_view scheme);

// Runs one command stream to its end, for one printer.
class CommandFilter {
  public:
    // The model table at `modelTable` is read once, when the first command asks for it.
    CommandFilter(FilterPrinter printer, std::filesystem::path modelTable, FilterPorts ports = {});

    // Reads up to the end of `commands` or its first error. What a line holds beyond 1024
    // characters is dropped.
    void run(std::FILE* commands);

  private:
    struct Command;
    static const Command kCommands[];

    void obey(std::string_view line);
    void clean();
    void printSelfTestPage();
    void reportLevels();
    const Dictionary* printerDictionary();

    FilterPrinter printer_;
    std::filesystem::path modelTable_;
    FilterPorts ports_;
    bool lookedUp_ = false;
    std::optional<Dictionary> dictionary_;
};

// Asks the printer that `printer` (an entry of the model table with "makerName" and "modelName", or
// null) describes, stores the answer in the history of `printerId` and writes the marker line.
// Entries that do not fit into the line end it. Result: what the writing of the line returned; the
// query's own result when that is below 1 and nothing is stored or written; 0 when not even the
// first entry fits, in which case no line is written.
int ReportLevels(const Dictionary* printer, std::string_view printerId,
                 const FilterPorts& ports = {});

// Sends the maker's status request, and for a D4 printer reads the reply into `record` and
// `status`, which the caller clears. `commandSet` is the "CMD:" list of the device ID;
// `commandType` is "D4", "RC0", "RC1" or another. Takes 500 ms for Canon and for Epson but D4.
// Result: the number of entries, or -1, also wherever no reply is read (all but D4).
int getInkStatusByBackend(std::string_view maker, std::string_view model,
                          std::string_view commandSet, std::string_view commandType,
                          InkQuantities& record, BoundedText& status,
                          const FilterPorts& ports = {});

// The whole of filter mode. `argv` is that of filter(7); with exactly 7 arguments the last one
// names the command file, otherwise the commands come from standard input. A DEVICE_URI that is
// missing or names no scheme counts as an empty scheme and is reported. Result: 0 at the end of the
// stream, 1 when the command file cannot be opened.
int doCupsCommands(int argc, char** argv);

}  // namespace tintoral
