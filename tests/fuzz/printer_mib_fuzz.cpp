// Whatever an agent answers to the queries of a whole update and of a diagnosis: every walk ends
// after at most ten rows, and no other rows than those are counted.
//
// The input is a row of datagrams, each two length bytes and as many bytes; an empty one is none.
// This file stands in for the one that sends them.
#include <algorithm>
#include <cstdlib>

#include "fuzz_stream.h"
#include "netproto/printer_mib.h"
#include "netproto/snmp_exchange.h"

namespace {

tintoral::ByteReader answers{tintoral::Bytes()};
int exchanges = 0;

void check(int count, const tintoral::InkQuantities& record) {
    if (count > static_cast<int>(tintoral::kMaximumSupplies) || record.padding != 0) std::abort();
}

}  // namespace

int tintoral::snmpSendAndReceive(const std::string&, Bytes packet, MutableBytes reply) {
    constexpr int kMostExchanges = 40;
    if (packet.empty() || ++exchanges > kMostExchanges) std::abort();
    const std::size_t announced = answers.remaining() > 1 ? answers.be16() : 0;
    const Bytes datagram = answers.take(std::min({announced, answers.remaining(), reply.size()}));
    std::ranges::fill(reply, std::uint8_t{0});
    std::ranges::copy(datagram, reply.begin());
    return static_cast<int>(datagram.size());
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    answers = ByteReader(Bytes(data, size));
    exchanges = 0;
    fuzz::StandingClock clock;
    const ScopedClock scope(clock);
    StatusText status;
    InkQuantities record;
    SupplyNames names;
    check(getInkStatusByPMib(size % 2 == 0 ? "HP" : "Brother", "printer", status, record, names),
          record);
    DumpText dump;
    SupplyRows rows;
    check(pmibGetSupplies("printer", rows, record, &dump), record);
    if (pmibGetColorant("printer", rows, &dump) > static_cast<int>(kMaximumSupplies)) std::abort();
    pmibGetBrotherMib1("printer", dump);
    return 0;
}
