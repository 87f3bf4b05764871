// Hiding serial numbers changes no length and leaves nothing to hide, in texts that hold dumps,
// whole or damaged.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "diagnostics/serial_numbers.h"
#include "support/byte_reader.h"
#include "support/hex_dump.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    const Bytes input(data, std::min<std::size_t>(size, 2048));
    FixedText<16384> dump;
    sDumpPacket(dump, input);
    const std::string report = std::string(asText(input)) + "\n" + std::string(dump.view());
    const std::string_view serial = asText(input.first(std::min<std::size_t>(input.size(), 5)));
    std::string hidden = report;
    hideSerialNumbers(hidden, serial);
    if (hidden.size() != report.size()) std::abort();
    const bool isPlain = serial.size() == 5 && serial.find('*') == std::string::npos;
    if (isPlain && hidden.find(serial) != std::string::npos) std::abort();
    return 0;
}
