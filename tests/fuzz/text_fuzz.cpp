// Cleaned text is clean: cleaning it again changes nothing.
#include <cstdlib>

#include "support/byte_reader.h"
#include "support/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    const std::string once = cleanText(asText(Bytes(data, size)));
    if (cleanText(once) != once) std::abort();
    return 0;
}
