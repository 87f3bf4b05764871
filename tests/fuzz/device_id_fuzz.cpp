// A make or model never holds a field's end, and a make never ends in a blank.
#include <cstdlib>

#include "support/byte_reader.h"
#include "transport/usb/device_id.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    FixedText<64> make;
    FixedText<64> model;
    const int result = backendGetMakeModel(asText(Bytes(data, size)), make, model, 40);
    if (result == 0 && (make.empty() || make.view().back() == ' ')) std::abort();
    for (const BoundedText* text :
         {static_cast<BoundedText*>(&make), static_cast<BoundedText*>(&model)}) {
        if (text->size() > 39 || text->view().find(';') != std::string_view::npos) std::abort();
    }
    return 0;
}
