#include <algorithm>
#include <array>

#include "diagnostics/diagnostic_steps.h"
#include "records/maintenance_items.h"
#include "support/clock.h"
#include "support/text.h"
#include "vendors/brother_exchange.h"
#include "vendors/canon_exchange.h"
#include "vendors/epson.h"
#include "vendors/epson_exchange.h"
#include "vendors/hp.h"
#include "vendors/hp_exchange.h"
#include "vendors/maintenance.h"

namespace tintoral {
namespace {

void diagnoseEpson(const IoHandle& handle, const PrinterRecord& printer, BoundedText& report) {
    epsonDiagnose0(handle, epsonCommandTypeToTry(printer), report);
}

void diagnoseCanon(const IoHandle& handle, const PrinterRecord& printer, BoundedText& report) {
    canonDiagnose0(handle, printer.text(keys::modelName), printer.text(keys::usbCmd), report);
}

void diagnoseHP(const IoHandle& handle, const PrinterRecord& printer, BoundedText& report) {
    const std::string commandSet = printer.text(keys::usbCmd);
    if (hpDiagnose1(handle, report, commandSet) == 0) {
        reportText(report, "Not asked: no diagnosis is known for the command set", commandSet);
    }
}

void diagnoseBrother(const IoHandle& handle, const PrinterRecord&, BoundedText& report) {
    constexpr int kIgnored = 0;
    brotherDiagnose0(handle, kIgnored, report);
}

struct Maker {
    std::string_view name;
    void (*diagnose)(const IoHandle&, const PrinterRecord&, BoundedText&);
};
constexpr std::array kMakers{Maker{makers::epson, diagnoseEpson},
                             Maker{makers::canon, diagnoseCanon}, Maker{makers::hp, diagnoseHP},
                             Maker{"Brother", diagnoseBrother}};

std::size_t maintenanceJobSize(const PrinterRecord& printer, int option) {
    std::array<std::uint8_t, 512> job{};
    const std::string maker = printer.text(keys::makerName);
    return maker == makers::hp ? mkHPCleaningCmd(printer.text(keys::usbCmd), job)
                               : mkNozzleOption(maker, printer.text(keys::modelName), option, job);
}

void reportMaintenance(const PrinterRecord& printer, BoundedText& report) {
    const bool carried = carriesMaintenance(printer);
    for (const MaintenanceItem& item : kMaintenanceItems) {
        report.append(item.title);
        if (printer.text(item.flagKey) != kYes) {
            report.append(": not listed for this model\n");
        } else if (!carried) {
            report.append(": listed for this model, but not sent over this connection\n");
        } else {
            report.appendFormat(": listed for this model; the job has %zu bytes, not sent now\n",
                                maintenanceJobSize(printer, item.option));
        }
    }
}
constexpr std::array kMaintenanceSteps{
    DiagnosticStep{"Looking up the maintenance that the model offers", "", reportMaintenance}};

}  // namespace

DiagnosticSteps maintenanceSteps() {
    return kMaintenanceSteps;
}

void reportText(BoundedText& report, std::string_view name, std::string_view text) {
    report.append(name);
    report.append(" = ");
    report.append(cleanText(text));
    report.append("\n");
}

void reportLevels(BoundedText& report, int result, const BoundedText& status,
                  const InkQuantities& inks) {
    report.appendFormat("Result = %d\n", result);
    if (!status.empty()) reportText(report, "Status", status.view());
    sdumpInkQuantities(report, result, inks);
}

void diagnoseMaker(const IoHandle& handle, const PrinterRecord& printer, BoundedText& report) {
    const std::string name = printer.text(keys::makerName);
    const auto maker = std::ranges::find(kMakers, name, &Maker::name);
    if (maker == kMakers.end()) {
        reportText(report, "Not asked: no diagnosis is known for the maker", name);
        return;
    }
    maker->diagnose(handle, printer, report);
}

std::string epsonCommandTypeToTry(const PrinterRecord& printer) {
    std::string known = printer.text(keys::commandType);
    if (!known.empty()) return known;
    return std::string(epsonSpeaksD4(printer.text(keys::usbCmd)) ? epson_commands::d4
                                                                 : epson_commands::rc);
}

std::optional<std::uint16_t> portOf(const PrinterRecord& printer) {
    const auto port = printer.integer(keys::port).value_or(0);
    if (port < 1 || port > 65535) return std::nullopt;
    return static_cast<std::uint16_t>(port);
}

long long millisecondsSince(std::chrono::sys_time<std::chrono::milliseconds> start) {
    return (currentTime() - start).count();
}

}  // namespace tintoral
