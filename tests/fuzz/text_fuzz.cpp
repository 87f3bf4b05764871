// Cleaned text is clean: cleaning it again changes nothing. UTF-16 in any order becomes UTF-8.
#include <cstdlib>

#include "support/byte_reader.h"
#include "support/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    const std::string once = cleanText(asText(Bytes(data, size)));
    if (cleanText(once) != once) std::abort();
    std::u16string units;
    for (ByteReader reader(Bytes(data, size)); reader.remaining() > 1;) units += reader.le16();
    const std::string utf8 = utf8FromUtf16(units);
    if (utf8.size() > 3 * units.size() || cleanText(utf8).size() > utf8.size()) std::abort();
    return 0;
}
