#include <gtest/gtest.h>

#include "simulators/tcp_peer.h"
#include "simulators/virtual_mlc_hp.h"
#include "simulators/virtual_pjl_hp.h"
#include "support/byte_streams.h"
#include "support/hex_dump.h"
#include "vendors/brother_exchange.h"
#include "vendors/hp.h"
#include "vendors/hp_exchange.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using test::ByteVector;
using Steady = std::chrono::steady_clock;

constexpr const char* kAddress = "10.77.0.11";
constexpr std::uint16_t kPort = 9100;

ByteVector bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::string dumpOf(std::string_view text) {
    DumpText dump;
    sDumpPacket(dump, asBytes(text));
    return std::string(dump.view());
}

TEST(HPExchange, CleaningIsTheCommandAlone) {
    std::string heard;
    test::TcpPeer peer(kAddress, kPort, {.received = [&](Bytes bytes) {
                           heard += asText(bytes);
                           return ByteVector();
                       }});
    EXPECT_EQ(tcpHPNozzleCleaning(kAddress, kPort), 0);
    ASSERT_TRUE(peer.waitForClients(1));
    std::array<std::uint8_t, 128> command;
    EXPECT_EQ(heard, asText(Bytes(command).first(mkHPCleaningCmd("PJL,PML", command))));
}

TEST(HPExchange, PjlDiagnosisReportsEachAnswer) {
    const test::VirtualPjlHp printer({"model", "black", "color"});
    test::TcpPeer peer(kAddress, kPort,
                       {.received = [&](Bytes bytes) { return printer.onReceive(bytes); }});
    DumpText report;
    EXPECT_EQ(tcpHPDiagnose(kAddress, kPort, report), 0);
    EXPECT_EQ(report.view(), "PJL/PML Modelname = 005\n" + dumpOf("model") +
                                 "PJL/PML SUPPLIES DESCRIPTION = 005\n" + dumpOf("black") +
                                 "PJL/PML SUPPLIES DESCRIPTION = 005\n" + dumpOf("color"));

    peer.setManners({.silent = true});
    report.clear();
    const auto start = Steady::now();
    EXPECT_EQ(tcpHPDiagnose(kAddress, kPort, report), 0);
    EXPECT_LT(Steady::now() - start, 3500ms);
    EXPECT_EQ(report.view(),
              "PJL/PML Modelname = 000\nPJL/PML SUPPLIES DESCRIPTION = 000\n"
              "PJL/PML SUPPLIES DESCRIPTION = 000\n");
}

std::string mlcReport(const test::PacketHabits& habits) {
    test::TestClock clock;
    const ScopedClock scope(clock);
    test::VirtualMlcHp printer(habits);
    test::PrinterStream stream(clock, printer);
    DumpText report;
    const int length = hpDiagnose1(UsbPrinter{stream}, report, "MLC,PCL,PML,DW-PCL");
    EXPECT_EQ(length, report.size());
    return std::string(report.view());
}

TEST(HPExchange, MlcDiagnosisReadsTwoObjects) {
    using namespace std::string_literals;
    EXPECT_EQ(mlcReport({}), "MLC/PML Modelname\n" +
                                 dumpOf("\x80\x00\x00\x04\x01\x01\x03\x02\x10\x0C"
                                        "DeskJet 900C"s) +
                                 "MLC/PML SUPPLIES DESCRIPTION \n" +
                                 dumpOf("\x80\x00\x00\x07\x02\x0B\x01\x01\x06\x01\x01\x10\x0A"
                                        "black (45)"s));
    EXPECT_EQ(mlcReport({.refuses = 0x00}), "MLC open error\n");
    EXPECT_EQ(mlcReport({.packetsUntilSilent = 3}),
              "MLC/PML Modelname\nMLC/PML SUPPLIES DESCRIPTION \n");
    DumpText report;
    EXPECT_EQ(hpDiagnose1(StandardOutput{}, report, "PCL"), 0);
    EXPECT_TRUE(report.empty());
}

TEST(BrotherExchange, OnlyListens) {
    test::TestClock clock;
    test::ScriptedStream stream(clock, {test::hexOf(asBytes("STATUS 10001"))});
    DumpText report;
    EXPECT_EQ(brotherDiagnose0(UsbPrinter{stream}, 0, report), 12);
    EXPECT_EQ(brotherDiagnose0(UsbPrinter{stream}, 0, report), 0);
    EXPECT_EQ(report.view(),
              "Brother status = 012\n" + dumpOf("STATUS 10001") + "Brother status = 000\n");
    EXPECT_EQ(stream.sends(), 0);

    DumpText dump;
    {
        const test::TcpPeer peer(
            kAddress, kPort,
            {.received = [](Bytes) { return ByteVector(); }, .greeting = bytesOf("READY")});
        EXPECT_EQ(tcpBrotherDiagnose(kAddress, kPort, &dump), 0);
        EXPECT_EQ(dump.view(), dumpOf("READY"));
        EXPECT_EQ(tcpBrotherDiagnose(kAddress, kPort, nullptr), 0);
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(tcpBrotherDiagnose(kAddress, kPort, &dump), 0);
    EXPECT_EQ(tcpHPNozzleCleaning(kAddress, kPort), 0);
    EXPECT_EQ(tcpHPDiagnose(kAddress, kPort, report), 0);
    testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace tintoral
