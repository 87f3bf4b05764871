// Epson's D4 exchanges and the diagnosis; the remote-mode inquiry is tested with the raw port.
#include <gtest/gtest.h>

#include "simulators/tcp_peer.h"
#include "simulators/virtual_d4_epson.h"
#include "support/hex_dump.h"
#include "support/test_clock.h"
#include "transport/channels/d4_epson.h"
#include "transport/net/sockets.h"
#include "vendors/epson.h"
#include "vendors/epson_exchange.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;

constexpr const char* kAddress = "10.77.0.11";
constexpr std::uint16_t kPort = 9100;

class EpsonD4 : public testing::Test {
  protected:
    test::TestClock clock;
    ScopedClock scope{clock};
    StatusText status{"before"};
    InkQuantities ink;
    DumpText dump;
};

template <typename Printer>
test::TcpScript scriptFor(Printer& printer) {
    return {.received = [&](Bytes bytes) { return printer.onReceive(bytes); }};
}

TEST_F(EpsonD4, InquiryReadsLevelsAndJobsRunOnTheChannel) {
    test::VirtualD4Epson printer;
    test::TcpPeer peer(kAddress, kPort, scriptFor(printer));
    testing::internal::CaptureStdout();
    EXPECT_EQ(tcpEpsonD4NozzleOption(kAddress, kPort, kOptionCleaning), 7);  // "ei:OK;" FF
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(tcpEpsonD4Inquiry(kAddress, kPort, status, ink, &dump), 4);
    EXPECT_EQ(ink.entries.at(1), (InkEntry{4, 40}));
    EXPECT_EQ(status.view(), "Idle");
    EXPECT_TRUE(dump.view().starts_with("Epson D4 =  30\n0000  40 42 ")) << dump.c_str();
    ASSERT_TRUE(peer.waitForClients(2));
    EXPECT_EQ(printer.commands(), (std::vector<std::string>{"ch", "ei", "st"}));
    EXPECT_FALSE(printer.inPacketMode());
}

TEST_F(EpsonD4, NoChannelNoConnectionOrUnknownReply) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(tcpEpsonD4Inquiry(kAddress, kPort, status, ink, nullptr), -1);
    EXPECT_EQ(tcpEpsonD4NozzleOption(kAddress, kPort, kOptionCleaning), -1);
    testing::internal::GetCapturedStderr();

    test::VirtualD4Epson refusing({.habits = {.refuses = 0x09}});
    {
        const test::TcpPeer peer(kAddress, kPort, scriptFor(refusing));
        EXPECT_EQ(tcpEpsonD4Inquiry(kAddress, kPort, status, ink, nullptr), -1);
    }
    test::VirtualD4Epson printer;
    test::TcpPeer peer(kAddress, kPort, scriptFor(printer), {.silent = true});
    const auto start = Steady::now();
    EXPECT_EQ(tcpEpsonD4Inquiry(kAddress, kPort, status, ink, &dump), -1);
    EXPECT_LT(Steady::now() - start, 6s);
    EXPECT_EQ(status.view(), "before");
    EXPECT_TRUE(dump.empty());
}

// The report without the hex dump's lines.
std::string diagnosis(std::string_view commandType, int expected) {
    DumpText report;
    const UniqueFd socket = TcpOpenConnection(kAddress, kPort);
    EXPECT_EQ(epsonDiagnose0(TcpSocket{socket.get()}, commandType, report), expected);
    std::string lines;
    std::string_view rest = report.view();
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n') + 1);
        if (!line.starts_with("00")) lines += line;
        rest.remove_prefix(line.size());
    }
    return lines;
}

TEST_F(EpsonD4, DiagnosisInEitherLanguage) {
    DumpText inks;
    const InkQuantities four{.count = 4, .entries = {{{1, 60}, {4, 42}, {5, 31}, {6, 80}}}};
    sdumpInkQuantities(inks, 4, four);
    const std::string levels = "Status = Idle\n" + std::string(inks.view());
    {
        test::VirtualD4Epson printer;
        const test::TcpPeer peer(kAddress, kPort, scriptFor(printer));
        EXPECT_EQ(diagnosis("D4", 30), "Epson D4 response = 030\n" + levels);
        EXPECT_EQ(diagnosis("RC0", 0), "Epson RC0 response = 000\n");
    }
    test::VirtualEpson remote;
    const test::TcpPeer peer(kAddress, kPort, scriptFor(remote));
    EXPECT_EQ(diagnosis("RC", 33), "Epson RC response = 033\n" + levels);
    EXPECT_EQ(diagnosis("D4", 0), "Epson D4 response = 000\n");
    EXPECT_EQ(remote.commands(), "SM ST ST SM ");
}

}  // namespace
}  // namespace tintoral
