// Whatever a printer says, a session ends, and no reply is longer than its buffer.
#include <array>
#include <cstdlib>

#include "fuzz_stream.h"
#include "transport/channels/d4.h"
#include "transport/channels/d4_epson.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    fuzz::StandingClock clock;
    const ScopedClock scope(clock);
    fuzz::FuzzStream stream(Bytes(data, size));
    std::array<std::uint8_t, kD4PayloadRoom> reply{};
    const int length = d4GetEpsonInkStatus(UsbPrinter{stream}, reply, nullptr);
    if (length < 0 || (length != kNoD4Channel && length > static_cast<int>(reply.size())))
        std::abort();

    fuzz::FuzzStream another(Bytes(data, size));
    auto channel = D4open(BaseStation{another}, "EPSON-CTRL", 32);
    if (!channel) return 0;
    D4write(*channel, asBytes("st"));
    std::array<std::uint8_t, 20> small{};
    std::size_t taken = 0;
    D4read(*channel, small, taken);
    if (taken > small.size() || channel->readCredit > 1) std::abort();
    if ((D4close(channel) == 0) != (channel == nullptr)) std::abort();
    return 0;
}
