// Whatever a reply holds, the record says no more than was written.
#include <array>
#include <cstdlib>

#include "vendors/canon.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    const Bytes input(data, size);
    StatusText status;
    InkQuantities record;
    if (parseCIR(input, status, record) != record.count || record.count > 20 || record.padding != 0)
        std::abort();
    for (std::size_t i = record.usableCount(); i < record.entries.size(); ++i) {
        if (record.entries[i] != InkEntry{}) std::abort();
    }
    std::array<std::uint8_t, 85> buffer{};
    if (mkCanonStatusInquire(asText(input), buffer, "") > buffer.size()) std::abort();
    return 0;
}
