// Whatever a datagram holds: a payload is a part of it, and a printer's texts are clean and short.
#include <cstdlib>

#include "netproto/bjnp_packets.h"
#include "support/text.h"

namespace {

void requireClean(std::string_view text) {
    if (text.size() > 64 || tintoral::cleanText(text) != text) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    const Bytes packet(data, size);
    const auto found = bjnpDiscoveredPrinter(packet);
    if (found && size < 32) std::abort();
    BjnpPrinter printer = found.value_or(BjnpPrinter());
    const auto answer = bjnpAnswerTo(bjnp_commands::getDeviceID, packet);
    if (answer && answer->payload.size() + 16 != size) std::abort();
    nameBjnpPrinter(printer, asText(answer ? answer->payload : packet));
    requireClean(printer.model.view());
    requireClean(printer.commandSet.view());
    return 0;
}
