#include "vendors/canon_exchange.h"

#include <gtest/gtest.h>

#include <utility>

#include "simulators/tcp_peer.h"
#include "simulators/virtual_canon.h"
#include "support/test_clock.h"
#include "transport/net/sockets.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr const char* kAddress = "10.77.0.11";
constexpr std::uint16_t kPort = 9100;

struct Printer {
    explicit Printer(const test::CanonSetup& setup, test::TcpManners manners = {})
        : canon(setup),
          peer(kAddress, kPort,
               {[this] { canon.connected(); }, [this](Bytes b) { return canon.onReceive(b); }},
               std::move(manners)) {}

    test::VirtualCanon canon;
    test::TcpPeer peer;
};

// One inquiry; its pause of half a second is counted, not waited.
struct Inquiry {
    int result;
    StatusText status{"before"};
    InkQuantities ink;
    DumpText dump;
    milliseconds took;
    std::vector<std::chrono::microseconds> pauses;

    explicit Inquiry(bool ivec) {
        test::TestClock clock;
        const ScopedClock scope(clock);
        const auto start = Steady::now();
        result = tcpCanonInquiry(kAddress, kPort, "Pro9000", ivec ? "BJL,IVEC" : "BJL", status, ink,
                                 &dump);
        took = std::chrono::duration_cast<milliseconds>(Steady::now() - start);
        pauses = clock.pauses();
    }

    std::vector<InkEntry> entries() const {
        return {ink.entries.begin(), ink.entries.begin() + ink.count};
    }
};

const std::vector<InkEntry> kInks{{65, 75}, {1, 40}, {5, 62}, {4, 0}, {6, 18}};

TEST(CanonExchange, AsksPlainPrintersAndEndsTheInquiry) {
    Printer printer({.status = "0C"});
    const Inquiry inquiry(false);
    EXPECT_EQ(inquiry.result, 5);
    EXPECT_EQ(inquiry.entries(), kInks);
    EXPECT_EQ(inquiry.status.view(), "Ink error");
    EXPECT_EQ(inquiry.pauses, std::vector<std::chrono::microseconds>{500ms});
    EXPECT_LT(inquiry.took, 300ms);
    EXPECT_TRUE(inquiry.dump.view().starts_with("0000  01 ")) << inquiry.dump.c_str();
    ASSERT_TRUE(printer.peer.waitForClients(1));
    EXPECT_EQ(
        printer.canon.requests(),
        (std::vector<std::string>{
            "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,CIR,CTK,FSI,PRF,HRI,MSI,PDR;", "SSR=DF;"}));
}

TEST(CanonExchange, AsksIvecPrintersWithNulsAndReadsXmlInPieces) {
    Printer printer({.ivec = true}, {.pieceSize = 100, .pieceGap = 20ms});
    const Inquiry inquiry(true);
    EXPECT_EQ(inquiry.result, 5);
    EXPECT_EQ(inquiry.entries(), kInks);
    EXPECT_EQ(inquiry.status.view(), "Idle");
    ASSERT_TRUE(printer.peer.waitForClients(1));
    EXPECT_EQ(printer.canon.requests(), std::vector<std::string>{"IVEC"});  // no end is sent
}

// As meant: the zero byte in the length of a short reply hides all but the warnings.
TEST(CanonExchange, LevelsThenWarningsAndOnlyThoseInShortReplies) {
    const struct {
        bool fillers;
        const char* warnings;
        std::vector<InkEntry> entries;
        const char* status;
    } cases[] = {
        {true, "1501", kInks, "Idle"},
        {false, "NO", {}, "Online"},
        {false, "1501,1573,NO", {{1, 20}, {4, 40}}, "Online"},
    };
    for (const auto& c : cases) {
        const Printer printer({.warnings = c.warnings, .fillers = c.fillers});
        const Inquiry inquiry(false);
        EXPECT_EQ(inquiry.result, c.entries.size());
        EXPECT_EQ(inquiry.entries(), c.entries);
        EXPECT_EQ(inquiry.status.view(), c.status);
    }
}

std::string diagnosis(std::string_view commandSet) {
    test::TestClock clock;
    const ScopedClock scope(clock);
    DumpText report("Before\n");
    const UniqueFd socket = TcpOpenConnection(kAddress, kPort);
    canonDiagnose0(TcpSocket{socket.get()}, "iP4300", commandSet, report);
    return std::string(report.view());
}

TEST(CanonExchange, NobodyThereOrSomebodyElse) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(Inquiry(false).result, -1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("TcpOpen:connect"), std::string::npos);

    const test::TcpPeer mailServer(kAddress, kPort, {.received = [](Bytes) {
                                       const Bytes reply = asBytes("CIR:BK=40;</cmd>");
                                       return std::vector<std::uint8_t>(reply.begin(), reply.end());
                                   }});
    const Inquiry inquiry(true);
    EXPECT_EQ(inquiry.result, 0);
    EXPECT_EQ(inquiry.status.view(), "before");
    EXPECT_TRUE(inquiry.dump.empty());
    EXPECT_EQ(diagnosis("IVEC"), "Before\nCanon response = 016\n");
}

TEST(CanonExchange, NoMoreInksThanTheRecordHolds) {
    const Printer printer({.inks = std::vector<test::CanonInk>(100, {"LC", 9})});
    const Inquiry inquiry(false);
    EXPECT_EQ(inquiry.result, 20);
    EXPECT_EQ(inquiry.entries(), std::vector<InkEntry>(20, {7, 9}));
}

TEST(CanonExchange, DiagnosisSaysHowMuchCameAndWhatItHolds) {
    Printer printer({.inks = {{"BK", 40}}});
    DumpText inks;
    sdumpInkQuantities(inks, 1, {.count = 1, .entries = {{{1, 40}}}});
    EXPECT_EQ(diagnosis("BJL"), "Before\nCanon response = 362\n" + std::string(inks.view()));
    EXPECT_EQ(diagnosis("IVEC"), "Before\nCanon response = 000\n");
    ASSERT_TRUE(printer.peer.waitForClients(2));
    EXPECT_EQ(printer.canon.requests().back(), "SSR=DF;");
}

}  // namespace
}  // namespace tintoral
