#include <gtest/gtest.h>

#include "monitor/address_probe.h"
#include "simulators/tcp_peer.h"
#include "simulators/virtual_canon.h"

namespace tintoral {
namespace {

constexpr const char* kAddress = "10.77.0.11";

AddressAnswer answerOf(const test::CanonSetup& setup, const test::TcpManners& manners = {}) {
    test::VirtualCanon canon(setup);
    const test::TcpPeer peer(
        kAddress, 9100,
        {[&] { canon.connected(); }, [&](Bytes bytes) { return canon.onReceive(bytes); }}, manners);
    return testAddress({kAddress, Connection::RawPort, 9100, "Canon MG5200"}, {});
}

TEST(AddressPeer, CanonIsAskedInTheLanguageThatItAnswers) {
    const auto ivec = answerOf({.ivec = true});
    EXPECT_EQ(ivec.outcome, UpdateOutcome::Levels);
    EXPECT_EQ(ivec.printer->text(keys::usbCmd), "IVEC");
    const auto plain = answerOf({});
    EXPECT_EQ(plain.outcome, UpdateOutcome::Levels);
    EXPECT_FALSE(plain.printer->contains(keys::usbCmd));
    const auto silent = answerOf({}, {.silent = true});
    EXPECT_NE(silent.outcome, UpdateOutcome::Levels);
    EXPECT_FALSE(silent.printer->contains(keys::usbCmd));
}

}  // namespace
}  // namespace tintoral
