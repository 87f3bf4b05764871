// Whatever an ink field holds, the record says no more than was written, and a report of it stays
// in its text.
#include <array>
#include <cstdlib>

#include "ink/byte_helpers.h"
#include "ink/ink_quantities.h"

namespace {

using namespace tintoral;

void check(int result, const InkQuantities& record) {
    if (result > 20 || record.count != result || record.padding != 0) std::abort();
    for (std::size_t i = record.usableCount(); i < record.entries.size(); ++i) {
        if (record.entries[i] != InkEntry{}) std::abort();
    }
    FixedText<128> text;
    if (sdumpInkQuantities(text, record.count, record) != text.size()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes input(data, size);
    InkQuantities fromField;
    check(biInkStatusToIQ(input, fromField), fromField);
    InkQuantities fromText;
    check(parseIQ(input, fromText), fromText);
    std::array<std::uint8_t, 8> bytes{};
    if (hexToBin(asText(input), bytes) > bytes.size()) std::abort();
    return 0;
}
