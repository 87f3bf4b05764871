// Whatever a printer says, a session ends, and no reply is longer than its buffer.
#include <cstdlib>

#include "fuzz_stream.h"
#include "transport/channels/pml_exchange.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    fuzz::StandingClock clock;
    const ScopedClock scope(clock);
    fuzz::FuzzStream stream(Bytes(data, size));
    auto channel = MLCopen(UsbPrinter{stream});
    if (!channel) return 0;
    PMLResponse response;
    DumpText dump;
    const int result = getPMLvalue(*channel, "1.1.3.2", response, &dump);
    if (result != 0 && result != -1) std::abort();
    if (setPMLvalue(*channel, "1.1.3.2", 16, "text", response, nullptr) > 0) std::abort();
    if (channel->readCredit > 1 || channel->replyLength > channel->reply.size()) std::abort();
    if ((MLCclose(channel) == 0) != (channel == nullptr)) std::abort();
    return 0;
}
