// Whatever a peer sends: at most ten bindings, every text ended, and a dump of harmless text. What
// was decoded can be sent again as the next request of a walk.
#include <cstdlib>

#include "netproto/snmp.h"
#include "support/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    const Bytes packet(data, size);
    SnmpMessage message;
    const int count = parseSnmpPacket(packet, message);
    if (count < 0 || count > 10) std::abort();

    message.pduType = snmp_pdus::getNextRequest;
    std::array<std::uint8_t, 4096> request{};
    const std::size_t length = mkSNMPSrcPacket(request, message);
    SnmpMessage again;
    if (length > request.size()) std::abort();
    if (length > 0 && parseSnmpPacket(Bytes(request).first(length), again) > count) std::abort();

    FixedText<1024> dump;
    sdumpSnmpPacket(dump, packet);
    for (const char c : dump.view()) {
        if (static_cast<unsigned char>(c) < ' ' && c != '\n') std::abort();
    }
    OidText oid;
    objid2str(oid, packet);
    std::array<std::uint8_t, 520> content{};
    if (inet10tobjid(oid.view(), content) > oid.size() + 1) std::abort();
    return 0;
}
