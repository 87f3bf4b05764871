// What can be read can be written, and reads back as the same value.
#include <cstdlib>

#include "support/byte_reader.h"
#include "support/property_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    const auto value = parsePropertyList(asText(Bytes(data, size)));
    if (!value) return 0;
    const auto again = parsePropertyList(formatPropertyList(*value));
    if (!again) std::abort();
    return 0;
}
