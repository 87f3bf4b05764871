// Whatever an IPP printer answers: bounded lists, no list without an end tag, levels and clean
// texts in the first row only.
#include <algorithm>
#include <cstdlib>

#include "netproto/ipp_names.h"
#include "netproto/ipp_printer.h"
#include "support/text.h"

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

bool isClean(const tintoral::BoundedText& text, bool manyLines = false) {
    return std::ranges::none_of(text.view(), [manyLines](char c) {
        return static_cast<unsigned char>(c) < ' ' && !(manyLines && c == '\n');
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    const Bytes message(data, size);
    IppTuples list;
    const int used = ParseIppAttr(message, list);
    require(used == -1 ? list.empty() : used >= 2 && static_cast<std::size_t>(used) <= size + 1);
    require(static_cast<std::size_t>(std::distance(list.begin(), list.end())) <= size / 5);

    const IppPrinter printer = readIppPrinter(std::move(list));
    StatusText status;
    InkQuantities inks;
    SupplyNames names;
    SupplyNames colors;
    DumpText dump;
    const int count = readStatusAndMarkers(printer, status, inks, names, colors, &dump);
    require(count == 0 || count == 1);
    require(inks.count == 0 && inks.entries[1] == InkEntry{} && inks.entries[0].level <= 100);
    require(isClean(names[0]) && isClean(colors[0]) && isClean(dump, true));
    require(names[1].empty() && !status.empty());
    DumpIppAttributes(message);
    return 0;
}
