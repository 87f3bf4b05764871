// What can be read can be written in both formats; the binary one reads back as the same value.
#include <cstdlib>

#include "support/binary_property_list.h"
#include "support/byte_reader.h"
#include "support/property_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    const auto value = parsePropertyList(asText(Bytes(data, size)));
    if (!value) return 0;
    if (!parsePropertyList(formatPropertyList(*value))) std::abort();
    // Its texts have been made fit once it is read again.
    const auto fit = parseBinaryPropertyList(formatBinaryPropertyList(*value));
    if (!fit) std::abort();
    const std::string binary = formatBinaryPropertyList(*fit);
    const auto again = parseBinaryPropertyList(binary);
    if (!again || formatBinaryPropertyList(*again) != binary) std::abort();
    const auto last = parseLastItem(asText(Bytes(data, size)));
    const auto* items = value->as<Array>();
    if (items && !items->empty() != last.has_value()) std::abort();
    return 0;
}
