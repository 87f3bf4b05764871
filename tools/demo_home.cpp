// The home folder of the demo: `tintoral-demo-home seed`, `list`, `select ID`, `levels`, `show ID`,
// `readings ID`. It works on the settings and histories of $HOME through the program's own code.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "discovery/listing.h"
#include "history/ink_history_store.h"
#include "monitor/address_probe.h"
#include "records/ink_dict.h"
#include "records/maintenance_items.h"
#include "records/model_merge.h"
#include "records/printer_table.h"
#include "transport/usb/usb_browse.h"

namespace tintoral {
namespace {

constexpr std::string_view kFirstShown = "Network:EPSON Stylus Photo R2400 (127.0.1.18)";

struct DemoPrinter {
    PrinterRecordPtr record = {};
    std::string commandType = {};          // the variant that worked last
    std::vector<std::string> colors = {};  // as the printer reports them
    std::vector<int> levels = {};          // of the last reading, in the same order
    std::string commandSet = {};           // of the device ID, for those whose language it decides
};

// A printer that an announcement would bring: without one it counts as typed in.
PrinterRecordPtr announcedRecord(PrinterRecord record) {
    record.set(keys::addedByAddress, kYes);
    record.set(keys::active, kYes);
    record.set(keys::date, currentDate());
    return std::make_shared<PrinterRecord>(std::move(record));
}

PrinterRecordPtr baseStationRecord() {
    return announcedRecord({{std::string(keys::printerId), "AirPort:EPSON Stylus C86"},
                            {std::string(keys::printerName), "EPSON Stylus C86"},
                            {std::string(keys::serverType), server_types::airPort},
                            {std::string(keys::serviceType), service_types::riousbprint},
                            {std::string(keys::kind), "riousb:::1"},
                            {std::string(keys::hostName), "::1"},
                            {std::string(keys::ipAdrs), "::1"},
                            {std::string(keys::port), 10000},
                            {std::string(keys::usbPrinterName), "usb1"},
                            {std::string(keys::makerName), makers::epson},
                            {std::string(keys::modelName), "Stylus C86"},
                            {std::string(keys::makerAndModelName), "EPSON Stylus C86"}});
}

PrinterRecordPtr sharedQueueRecord() {
    return announcedRecord({{std::string(keys::printerId), "Mac:Office @ server"},
                            {std::string(keys::printerName), "Office @ server"},
                            {std::string(keys::serverType), server_types::macCups14},
                            {std::string(keys::serviceType), service_types::ipp},
                            {std::string(keys::kind), "ipp:127.0.0.1"},
                            {std::string(keys::ipAdrs), "127.0.0.1"},
                            {std::string(keys::port), 631},
                            {std::string(keys::ippURL), "http://127.0.0.1:631/printers/office"},
                            {std::string(keys::makerName), "Brother"},
                            {std::string(keys::modelName), "HL-5250DN"},
                            {std::string(keys::makerAndModelName), "Brother HL-5250DN"}});
}

PrinterRecordPtr bjnpRecord() {
    BjnpPrinter printer;
    printer.address = {127, 0, 1, 19};
    printer.model.assign("MP640 series");
    printer.commandSet.assign("BJL,BJRaster3,BSCCe");
    return recordOfBjnpPrinter(printer);
}

// The addresses and models are those of tools/virtual_printers.cpp, of the SNMP agents and
// the cupsd of tools/demo/printers.sh.
std::vector<DemoPrinter> demoPrinters() {
    const auto raw = [](const char* address, const char* model) {
        return makeAddressedRecord({address, Connection::RawPort, 9100, model});
    };
    return {
        {raw("127.0.1.11", "EPSON Stylus Photo R300"),
         "RC0",
         {"Black", "Cyan", "Magenta", "Yellow", "Light Cyan", "Light Magenta"},
         {84, 62, 47, 71, 33, 28}},
        {raw("127.0.1.12", "EPSON Stylus CX6400"),
         "RC1",
         {"Black", "Cyan", "Magenta", "Yellow"},
         {75, 12, 60, 38}},
        {raw("127.0.1.13", "EPSON Stylus Photo R800"),
         "RC",
         {"Black", "Cyan", "Magenta", "Yellow", "Red", "Blue", "Gloss Optimizer"},
         {92, 55, 43, 38, 12, 67, 81}},
        {makeAddressedRecord({"127.0.1.14", Connection::PrinterMib, 9100, "Lexmark C543"}),
         "",
         {"Black", "Cyan", "Magenta", "Yellow"},
         {50, 41, 36, 88}},
        {raw("127.0.1.15", "EPSON AcuLaser C1100"),
         "RC0",
         {"Black", "Cyan", "Magenta", "Yellow"},
         {64, 51, 48, 77}},
        {raw("127.0.1.16", "Canon iP4300"),
         "",
         {"Photo Black", "Black", "Magenta", "Cyan", "Yellow"},
         {67, 40, 73, 57, 23},
         "BJL,BJRaster3,BSCCe"},
        {raw("127.0.1.17", "Canon MG5200"),
         "",
         {"Photo Black", "Black", "Magenta", "Cyan", "Yellow"},
         {85, 49, 32, 94, 68},
         "BJL,BJRaster3,BSCCe,IVEC,IVECPLI"},
        {raw("127.0.1.18", "EPSON Stylus Photo R2400"),
         "D4",
         {"Black", "Cyan", "Magenta", "Yellow", "Light Cyan", "Light Magenta", "Light Black",
          "Light Light Black"},
         {79, 60, 36, 63, 47, 27, 50, 70},
         "ESCPL2,BDC,D4"},
        {raw("127.0.1.20", "HP Officejet Pro K550"),
         "",
         {"Black", "Cyan", "Magenta", "Yellow"},
         {58, 69, 32, 84}},
        {raw("127.0.1.21", "Brother MFC-8440"), "", {"Black Toner", "Drum Unit"}, {65, 62}},
        {sharedQueueRecord(), "", {"Black Toner"}, {48}},
        {bjnpRecord(),
         "",
         {"Photo Black", "Black", "Magenta", "Cyan", "Yellow"},
         {73, 48, 30, 92, 65}},
        {baseStationRecord(), "RC", {"Black", "Cyan", "Magenta", "Yellow"}, {36, 78, 53, 89}},
    };
}

// Those that hang on this computer. The virtual ones (tools/virtual_usb.cpp) have been read before.
std::vector<DemoPrinter> usbPrinters() {
    const std::vector<DemoPrinter> read = {
        {nullptr, "RC", {"Black", "Cyan", "Magenta", "Yellow"}, {68, 50, 16, 61}},
        {nullptr,
         "D4",
         {"Black", "Cyan", "Magenta", "Yellow", "Light Cyan", "Light Magenta"},
         {90, 73, 55, 38, 21, 64}},
        {nullptr, "", {"Black", "Magenta", "Cyan", "Yellow"}, {59, 85, 28, 43}},
        {nullptr, "", {"Black", "CMY Color"}, {39, 66}},
    };
    std::vector<USBPrinterInfo> found;
    USBPrinterBrowse(found);
    std::vector<DemoPrinter> printers;
    for (const USBPrinterInfo& printer : found) {
        const std::size_t i = printers.size();
        printers.push_back(i < read.size() ? read[i] : DemoPrinter());
        printers.back().record = recordOfUsbPrinter(printer);
    }
    return printers;
}

// A reading for each of the last `days` days: cartridges run down and are replaced, each at its own
// pace.
void seedHistory(const PrinterRecord& printer, const DemoPrinter& demo) {
    constexpr int kDays = 200;
    Array history;
    for (int daysAgo = kDays; daysAgo >= 1; daysAgo -= 2) {
        InkQuantities inks;
        for (std::size_t i = 0; i < demo.levels.size(); ++i) {
            const int usedPerWeek = 3 + static_cast<int>(i) % 4;
            const int level = (demo.levels[i] + daysAgo * usedPerWeek / 7) % 101;
            inks.entries[i] = {0, static_cast<std::int8_t>(level)};
        }
        history.emplace_back(
            makeInkDict(demo.colors, inks, currentDate() - std::chrono::days(daysAgo)));
    }
    writePropertyListFile(historyFolder() / printer.text(keys::printerId), history);
}

// Makes the record what it would be after some use.
void complete(const DemoPrinter& demo, const ModelTable& models) {
    PrinterRecord& printer = *demo.record;
    if (!demo.colors.empty()) printer.set(keys::colors, demo.colors);
    if (!demo.commandType.empty()) printer.set(keys::commandType, demo.commandType);
    if (!demo.commandSet.empty()) printer.set(keys::usbCmd, demo.commandSet);
    updatePrinterDict(printer, models);
    if (!demo.levels.empty()) seedHistory(printer, demo);
}

int seed() {
    const ModelTable models = ModelTable::load(modelTablePath());
    UserDefaults defaults;
    PrinterTable table;
    prepareHistoryFolder();
    std::vector<DemoPrinter> printers = usbPrinters();
    std::ranges::move(demoPrinters(), std::back_inserter(printers));
    for (const DemoPrinter& demo : printers) {
        complete(demo, models);
        table.push_back(demo.record);
    }
    defaults.setPrinterId(kFirstShown);
    storePrinterTable(table, defaults);
    return defaults.synchronize() ? 0 : 1;
}

int list() {
    for (const PrinterRecordPtr& printer : loadPrinterTable(UserDefaults())) {
        std::printf("%s\n", printer->text(keys::printerId).c_str());
    }
    return 0;
}

int select(std::string_view id) {
    UserDefaults defaults;
    defaults.setPrinterId(id);
    return defaults.synchronize() ? 0 : 1;
}

std::string levelInWords(std::int64_t level) {
    if (level >= 0) return std::to_string(level) + " %";
    return level == kLevelSomeRemaining ? "not empty" : "unknown";
}

void printLevels(const PrinterRecord& printer) {
    std::printf("%s: %s\n", printer.text(keys::printerName).c_str(),
                printer.text(keys::printerStatus).c_str());
    const Dictionary* inkDict = printer.dictionary(keys::inkDict);
    if (!inkDict) return;
    for (const std::string& color :
         inkDict->texts(keys::colors).value_or(std::vector<std::string>())) {
        std::printf("  %-20s %10s\n", color.c_str(),
                    levelInWords(inkDict->integer(color).value_or(0)).c_str());
    }
}

int levels() {
    for (const PrinterRecordPtr& printer : loadPrinterTable(UserDefaults())) printLevels(*printer);
    return 0;
}

// The connection that carries no maintenance job, in a word.
std::string_view connectionName(const PrinterRecord& printer) {
    const std::string kind = printer.text(keys::kind);
    if (kind.starts_with("bjn")) return "BJNP";
    return kind.starts_with("ipp") ? "IPP" : "SNMP";
}

// Whether the person can have the printer cleaned: "yes", or why not.
std::string cleaningOf(const PrinterRecord& printer) {
    if (printer.text(keys::nozzleCleaning) != kYes) return "not for this model";
    if (carriesMaintenance(printer)) return "yes";
    return "not by " + std::string(connectionName(printer));
}

std::string levelsOf(const PrinterRecord& printer) {
    const Dictionary* inkDict = printer.dictionary(keys::inkDict);
    if (!inkDict) return "none";
    std::string line;
    for (const std::string& color :
         inkDict->texts(keys::colors).value_or(std::vector<std::string>())) {
        const std::int64_t level = inkDict->integer(color).value_or(0);
        line += (line.empty() ? "" : " ") + (level < 0 ? "?" : std::to_string(level));
    }
    return line;
}

// Levels and cleaning of one printer, with a tab between.
int show(std::string_view id) {
    const PrinterRecordPtr printer = findPrinter(loadPrinterTable(UserDefaults()), id);
    if (!printer) return 1;
    std::printf("%s\t%s\n", levelsOf(*printer).c_str(), cleaningOf(*printer).c_str());
    return 0;
}

int readings(std::string_view id) {
    const auto history = inkHistory(id);
    std::printf("%zu\n", history ? history->size() : 0);
    return 0;
}

int run(int argc, char** argv) {
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "seed") return seed();
    if (command == "list") return list();
    if (command == "select" && argc == 3) return select(argv[2]);
    if (command == "levels") return levels();
    if (command == "show" && argc == 3) return show(argv[2]);
    if (command == "readings" && argc == 3) return readings(argv[2]);
    std::fputs(
        "usage: tintoral-demo-home seed | list | select ID | levels | show ID | readings ID\n",
        stderr);
    return 2;
}

}  // namespace
}  // namespace tintoral

int main(int argc, char** argv) {
    return tintoral::run(argc, argv);
}
