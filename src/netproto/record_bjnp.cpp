#include "netproto/record_bjnp.h"

#include <string>

#include "netproto/bjnp.h"
#include "vendors/canon_reply.h"

namespace tintoral {
namespace {

constexpr int kUnreachable = -1;

}  // namespace

int inkStatusOfRecordByBjnp(PrinterRecord& printer, InkQuantities& record, BoundedText& status) {
    const std::string address = printer.text(keys::ipAdrs);
    std::uint16_t session = 0;
    bjnpSetJobInfo(address, session, "Vantrel Software", "Tintoral");
    BjnpText reply;
    if (bjnpGetStatus(address, session, reply) < 1) {
        status.assign("Can't communicate to the printer.");
        return kUnreachable;
    }
    bjnpUdpClose(address, session);
    return parseCanonReply(asBytes(reply.view()), status, record);
}

}  // namespace tintoral
