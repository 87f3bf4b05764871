#include "diagnostics/diagnosis.h"

#include <array>
#include <memory>

#include "diagnostics/diagnostic_steps.h"
#include "support/clock.h"
#include "support/text.h"

namespace tintoral {
namespace {

void sayUnknown(const PrinterRecord& printer, BoundedText& report) {
    reportText(report, "Nothing was asked: unknown kind of connection", printer.text(keys::kind));
}
constexpr std::array kUnknownSteps{
    DiagnosticStep{"Looking at how the printer is connected", "", sayUnknown}};

DiagnosticSteps unknownSteps() {
    return kUnknownSteps;
}

DiagnosticSteps noSteps() {
    return {};
}

// The first row whose server type (empty: any) and kind prefix fit.
struct Connection {
    std::string_view serverType;
    std::string_view kindPrefix;
    DiagnosticSteps (*first)();
    DiagnosticSteps (*second)();
};
constexpr std::array kConnections{
    Connection{"", "USB", usbSteps, noSteps},
    Connection{"", "rio", baseStationSteps, noSteps},
    Connection{"", "port", rawPortSteps, printerMibSteps},
    Connection{"", "bjn", bjnpSteps, noSteps},
    Connection{server_types::airPort, "lpd", epsonRemoteSteps, printerMibSteps},
    Connection{"", "lpd", printerMibSteps, noSteps},
    Connection{server_types::network, "ipp", ippSteps, printerMibSteps},
    Connection{"", "ipp", ippSteps, noSteps},
    Connection{"", "", unknownSteps, noSteps},
};

const Connection& connectionOf(const PrinterRecord& printer) {
    const std::string serverType = printer.text(keys::serverType);
    const std::string kind = printer.text(keys::kind);
    const Connection* row = kConnections.data();
    const auto fits = [&](const Connection& c) {
        return (c.serverType.empty() || c.serverType == serverType) &&
               kind.starts_with(c.kindPrefix);
    };
    while (!fits(*row)) ++row;  // the last one fits all
    return *row;
}

// Each line cleaned, without the empty ones.
std::string cleanLines(std::string_view text) {
    std::string lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string line = cleanText(text.substr(0, end));
        if (!line.empty()) lines += line + '\n';
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return lines;
}

void runStep(const DiagnosticStep& step, const PrinterRecord& printer, const std::string& number,
             std::string& report) {
    const auto start = currentTime();
    const auto text = std::make_unique<StepText>();
    step.run(printer, *text);
    report += "\n" + number + ": " + std::string(step.title) + "\n";
    report += text->empty() ? "Nothing came.\n" : cleanLines(text->view());
    report += "(" + std::to_string(millisecondsSince(start)) + " ms)\n";
}

DiagnosticPhase phaseOf(const DiagnosticStep& step, std::shared_ptr<const PrinterRecord> printer,
                        std::size_t index) {
    const std::string number = "Phase " + std::to_string(index);
    return {number + "...", std::string(step.title),
            [step, number, printer = std::move(printer)](std::string& report) {
                runStep(step, *printer, number, report);
            }};
}

}  // namespace

std::vector<DiagnosticPhase> diagnosticPhases(const PrinterRecord& printer) {
    const auto copy = std::make_shared<const PrinterRecord>(printer);
    const std::string maker = printer.text(keys::makerName);
    const Connection& connection = connectionOf(printer);
    std::vector<DiagnosticPhase> phases;
    for (const DiagnosticSteps steps :
         {connection.first(), connection.second(), maintenanceSteps()}) {
        for (const DiagnosticStep& step : steps) {
            if (!step.maker.empty() && step.maker != maker) continue;
            phases.push_back(phaseOf(step, copy, phases.size() + 1));
        }
    }
    return phases;
}

}  // namespace tintoral
