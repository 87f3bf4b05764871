// An element never claims more than there is, and what was read is written as it was.
#include <array>
#include <cstdlib>

#include "transport/channels/pml.h"

namespace {

using namespace tintoral;

void checkRoundTrip(const PMLValue& value, Bytes element) {
    using namespace pml_type;
    if (value.type != kObjectIdentifier && value.type != kText) return;
    std::array<std::uint8_t, 257> out{};
    const std::size_t size = makePMLBER(out, value.type, value.text.view());
    if (size != element.size() || asText(Bytes(out).first(size)) != asText(element)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes input(data, size);
    PMLValue value;
    const std::size_t elementSize = parsePMLBER(input, value);
    if (elementSize > size || (elementSize > 0 && value.length + 2 != elementSize)) std::abort();
    if (elementSize > 0) checkRoundTrip(value, input.first(elementSize));

    PMLResponse response;
    const int result = parsePMLResponse(input, response);
    if ((result != 0 && result != -1) || response.value.length > size) std::abort();
    std::array<std::uint8_t, 64> out{};
    if (makePMLRequest(out, kPMLSet, asText(input), 16, asText(input)) > out.size()) std::abort();
    return 0;
}
