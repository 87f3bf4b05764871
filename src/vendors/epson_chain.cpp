#include "vendors/epson_chain.h"

#include <algorithm>
#include <string>

namespace tintoral {
namespace {

constexpr int kUnreachable = -1;

void remember(PrinterRecord& printer, std::string_view commandType) {
    if (printer.text(keys::commandType) != commandType) {
        printer.set(keys::commandType, commandType);
    }
}

}  // namespace

int runEpsonChain(PrinterRecord& printer, std::string_view start,
                  std::span<const EpsonLink> links) {
    const std::string stored = printer.text(keys::commandType);
    const std::string_view first = stored.empty() ? start : std::string_view(stored);
    auto link = std::ranges::find(links, first, &EpsonLink::commandType);
    if (link == links.end()) return 0;
    int result = 0;
    for (; link != links.end(); ++link) {
        result = link->inquire ? link->inquire() : kUnreachable;
        if (result >= 1) {
            remember(printer, link->commandType);
            return result;
        }
    }
    printer.remove(keys::commandType);
    return result;
}

}  // namespace tintoral
