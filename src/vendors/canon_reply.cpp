#include "vendors/canon_reply.h"

#include <algorithm>

#include "vendors/canon.h"
#include "vendors/hp.h"

namespace tintoral {

int parseCanonReply(Bytes reply, BoundedText& status, InkQuantities& record) {
    constexpr std::size_t kLengthPrefix = 2;
    const Bytes fields = reply.subspan(std::min(kLengthPrefix, reply.size()));
    int inks = parseCIR(fields, status, record);
    if (inks == 0) inks = parseDWS(textBeforeNul(fields), record);
    if (record.count == 0) record.count = static_cast<std::int8_t>(inks);
    return inks;
}

}  // namespace tintoral
