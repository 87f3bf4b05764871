// Whatever a device ID or a reply holds, the record says no more than was written.
#include <cstdlib>

#include "vendors/hp.h"

namespace {

using namespace tintoral;

void check(int result, const InkQuantities& record) {
    if (result > 15 || record.padding != 0) std::abort();
    if (record.count != (result < 0 ? 0 : result)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = asText(Bytes(data, size));
    StatusText status;
    InkQuantities pens;
    check(parseHPDeviceID(input, status, pens), pens);
    check(parseSStatus(input, pens, status), pens);
    InkQuantities warnings;
    check(parseDWS(input, warnings), warnings);
    return 0;
}
