// Whatever a printer answers, no parser counts more inks than the record holds or returns more than
// it wrote. The first byte picks the count that the record already holds.
#include <cstdlib>

#include "vendors/epson.h"

namespace {

using namespace tintoral;

void check(int result, const InkQuantities& record, std::int8_t preset) {
    const int capacity = InkQuantities::kCapacity;
    if (result > capacity) std::abort();
    if (record.count > capacity && record.count != preset) std::abort();
    if (result > record.count && preset == 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const Bytes reply = Bytes(data, size).subspan(1);
    const auto preset = static_cast<std::int8_t>(data[0]);
    StatusText status;
    StatusText error;
    StatusText warning;
    FixedText<32> revision;
    std::uint32_t extra = 0;

    InkQuantities record;
    record.count = preset;
    check(parseST2(reply, status, record), record, preset);
    record.count = preset;
    check(parseBDCST(reply, status, error, record, warning, revision), record, preset);
    check(parseEJLStatusCode(reply, status, record, extra), record, 0);
    parseBDCPS(reply);
    record.clear();
    check(parseEpsonReply(reply, status, record, 0), record, 0);
    return 0;
}
