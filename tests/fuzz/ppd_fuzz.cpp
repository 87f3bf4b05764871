// Whatever the lines say, a value is clean text.
#include <cstdlib>

#include "records/icon_path_table.h"
#include "support/byte_reader.h"
#include "support/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    IconPathEntry entry;
    readPpdLines(asText(Bytes(data, size)), entry);
    for (const auto& value : {entry.modelname, entry.iconPath}) {
        if (value && cleanText(*value) != *value) std::abort();
    }
    return 0;
}
