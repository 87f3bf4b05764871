// The IPP client against a virtual printer with any answer, and against a real CUPS server.
#include "netproto/ipp.h"

#include <gtest/gtest.h>

#include "netproto/record_ipp.h"
#include "simulators/virtual_ipp_printer.h"
#include "support/cups_server.h"

namespace tintoral {
namespace {

using test::HttpAnswer;
using test::HttpLogin;
using test::ippAnswer;
using test::IppAttribute;
using test::ippInteger;
using test::ippMessage;
using test::VirtualHttpServer;
using test::VirtualIppPrinter;

constexpr const char* kAddress = "10.77.0.11";
constexpr const char* kUrl = "http://10.77.0.11:631/ipp/print";

// What a CUPS queue with three supplies says.
std::vector<IppAttribute> threeMarkers(const std::string& version, int state, int level) {
    return {{0x42, "marker-names", {"Black \x1B[1mink", "Cyan", "Magenta"}},
            {0x42, "marker-colors", {"#000000", "#00FFFF", "#FF00FF"}},
            {0x21, "marker-levels", {ippInteger(level), ippInteger(5), ippInteger(-3)}},
            {0x44, "marker-types", {"ink", "toner", "waste-ink"}},
            {0x23, "printer-state", {ippInteger(state)}},
            {0x21, "printer-state-change-time", {ippInteger(1700000000)}},
            {0x41, "printer-state-message", {"out of\npaper"}},
            {0x44, "printer-state-reasons", {"none"}},
            {0x22, "printer-is-shared", {"\1"}},
            {0x41, "printer-location", {"Room 7"}},
            {0x41, "cups-version", {version}}};
}

// What one inquiry made of a printer.
struct Inquiry {
    StatusText status{"as it was"};
    InkQuantities inks;
    SupplyNames names;
    SupplyNames colors;
    DumpText dump{"old"};
    int result;

    explicit Inquiry(const char* url = kUrl) {
        inks.count = 7;
        inks.entries[0] = {65, 100};
        result = ippGetPrinterStatusAndQuantities(url, status, inks, names, colors, &dump);
    }

    void expectNothing() const {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(status.view(), "as it was");
        EXPECT_EQ(inks.entries[0], (InkEntry{65, 100}));
        EXPECT_EQ(dump.view(), "Response from IPP printer\nCan't get any response\n");
    }
};

Inquiry ask(const HttpAnswer& answer) {
    const VirtualIppPrinter printer(kAddress, answer);
    return Inquiry();
}

TEST(Ipp, TakesTheFirstOfThreeMarkers) {
    const VirtualHttpServer printer(
        kAddress, 631,
        {.steps = {{"HTTP/1.1 200 OK\r\n\r\n" + ippMessage(threeMarkers("1.4.2", 3, 80))}}});
    const Inquiry inquiry;
    EXPECT_EQ(inquiry.result, 1);
    EXPECT_EQ(inquiry.status.view(), "Idle");
    EXPECT_EQ(inquiry.inks.count, 7) << "left to the caller";
    EXPECT_EQ(inquiry.inks.entries[0], (InkEntry{0, 80}));
    EXPECT_EQ(inquiry.inks.entries[1], InkEntry{});
    EXPECT_EQ(inquiry.names[0].view(), "Black [1mink");
    EXPECT_EQ(inquiry.colors[0].view(), "#000000");
    EXPECT_EQ(inquiry.dump.view(),
              "Response from IPP printer\n  Printer State = 3\n"
              "  Printer-state-message = 'out ofpaper'\n  Location     = 'Room 7'\n"
              "  Cups version = '1.4.2'\n  marker-types  0 = 'ink'\n  marker-levels = 80\n"
              "  marker-names = Black [1mink\n  marker-colors = #000000\n");

    const std::string heard = printer.heard();
    EXPECT_TRUE(
        heard.starts_with("POST /ipp/print HTTP/1.1\r\nHost: 10.77.0.11\r\nUser-Agent: Tintoral\r\n"
                          "Content-Type: application/ipp\r\nContent-Length: 183\r\n\r\n\1\1"))
        << heard;
    // The line end behind the body is meant.
    constexpr std::string_view kEnd("\x44\0\x14requested-attributes\0\3all\3\r\n", 31);
    EXPECT_TRUE(heard.ends_with(kEnd)) << heard;
}

TEST(Ipp, BelievesNewerServersOnlyAndHoldsLevels) {
    const struct {
        const char* version;
        const char* status;
        int state, level;
        int result;
        InkEntry entry;
    } rows[] = {
        {"1.3", "Printing", 4, 80, 0, {65, 100}},        {"1.3.9", "Idle", 3, 80, 0, {65, 100}},
        {"2.4.2", "Unknown", 5, 0, 1, {0, 0}},  // stopped, as meant
        {"10.0", "None", 6, 101, 1, {0, 100}},           {"1.4", "None", 2, -3, 1, {0, -3}},
        {"1.4", "None", INT32_MIN, -1000, 1, {0, -128}}, {"", "Idle", 3, 80, 0, {65, 100}},
        {"infinity", "Idle", 3, 80, 0, {65, 100}},
    };
    for (const auto& row : rows) {
        const auto attributes = threeMarkers(row.version, row.state, row.level);
        const Inquiry inquiry = ask(ippAnswer(ippMessage(attributes)));
        EXPECT_EQ(inquiry.result, row.result) << row.version;
        EXPECT_EQ(inquiry.status.view(), row.status);
        EXPECT_EQ(inquiry.inks.entries[0], row.entry) << row.level;
    }
    const Inquiry noLevel = ask(
        ippAnswer(ippMessage({{0x41, "cups-version", {"2.4"}}, {0x44, "marker-types", {"ink"}}})));
    EXPECT_EQ(noLevel.result, 1);
    EXPECT_EQ(noLevel.inks.entries[0], (InkEntry{0, -2}));
}

TEST(Ipp, NoAnswerLeavesTheStatus) {
    const std::string good = ippMessage(threeMarkers("1.4", 3, 80));
    const std::string tooLong =
        ippMessage(std::vector<IppAttribute>(30, {0x30, "x", {std::string(40000, 'x')}}));
    for (const std::string& message : {good.substr(0, good.size() - 3), std::string("\1\1"),
                                       std::string(), std::string("<html>hello</html>"), tooLong}) {
        ask(ippAnswer(message)).expectNothing();
        ask(ippAnswer(message, 20000)).expectNothing();
    }
    for (const int status : {401, 404, 500}) {
        HttpAnswer answer = ippAnswer(good);
        answer.status = status;
        ask(answer).expectNothing();
    }
    {
        const VirtualHttpServer mute(kAddress, 631, {.steps = {}});
        Inquiry().expectNothing();
    }
    Inquiry().expectNothing();
    Inquiry("").expectNothing();
}

TEST(Ipp, AWholeMessageCountsHoweverItsBodyEnds) {
    const std::string message = ippMessage(threeMarkers("1.4", 3, 80));
    const std::string ok = "HTTP/1.1 200 OK\r\n";
    for (const auto& [head, closes] :
         {std::pair(ok + "\r\n", false), {ok + "Content-Length: 5000\r\n\r\n", true}}) {
        const VirtualHttpServer server(kAddress, 631, {{{head + message}}, closes});
        const Inquiry inquiry;
        EXPECT_EQ(inquiry.result, 1);
        EXPECT_EQ(inquiry.status.view(), "Idle");
    }
}

TEST(Ipp, AnswersAChallengeOnANewConnection) {
    const std::optional<HttpLogin> logins[] = {
        HttpLogin{"Basic", "Tintoral", "secret", ""},
        HttpLogin{"Digest", "Tintoral", "secret", "opaque"},
        std::nullopt,
    };
    IppContext context = makeIppContext(kUrl);
    context.authentication = true;
    for (const auto& login : logins) {
        const VirtualIppPrinter printer(kAddress, ippAnswer(ippMessage(threeMarkers("2", 4, 80))),
                                        login);
        context.password = "secret";
        context.printer = {};
        EXPECT_GT(IppGetPrinterAttrReq(context, "status-only"), 0U);
        EXPECT_EQ(context.printer.state, 4);
        EXPECT_TRUE(context.printer.isShared);
        const auto requests = printer.requests();
        ASSERT_EQ(requests.size(), 2U);
        EXPECT_EQ(requests[0].headers.size(), 2U) << "Host and User-Agent";
        EXPECT_EQ(CmpPair(requests[1].headers, "Transfer-Encoding:", "chunked"), 0);
        EXPECT_EQ(requests[1].headers.front().name, login ? "Authorization:" : "Host:");
        EXPECT_NE(requests[1].body.find("printer-state-reasons"), std::string::npos);
        context.password = "wrong";
        EXPECT_EQ(IppGetPrinterAttrReq(context, "status-only") > 0, !login.has_value());
    }
    const VirtualHttpServer stranger(
        kAddress, 631,
        {.steps = {
             {"HTTP/1.1 401 No\r\nWWW-Authenticate: Negotiate\r\nContent-Length: 0\r\n\r\n"}}});
    EXPECT_EQ(IppGetPrinterAttrReq(context, "all"), 0U);
}

TEST(Ipp, ReadsARealCupsServer) {
    if (!test::hasCupsServer()) GTEST_SKIP() << "no cupsd on this machine";
    const std::vector<std::string> markers{R"(marker-colors \#000000,\#00FFFF)",
                                           "marker-levels 80,5", "marker-names Black Ink,Cyan",
                                           "marker-types ink,ink"};
    const test::CupsServer server(
        {{"inks", "Idle", "", "Attic", markers}, {"stopped", "Stopped", "Paused by hand", "", {}}});
    PrinterRecord record{{"ippURL", "http://127.0.0.1:631/printers/inks"},
                         {"Colors", std::vector<std::string>{"Old"}}};
    InkQuantities inks;
    StatusText status;
    EXPECT_EQ(inkStatusOfRecordByIpp(record, inks, status), 1);
    EXPECT_EQ(status.view(), "Idle");
    EXPECT_EQ(inks.entries[0], (InkEntry{0, 80}));
    EXPECT_EQ(record.texts(keys::colors), (std::vector<std::string>{"Black Ink"}));
    EXPECT_EQ(record.texts(keys::rgbColors), (std::vector<std::string>{"#000000"}));

    IppContext context = makeIppContext("http://127.0.0.1:631/printers/inks");
    context.authentication = true;
    EXPECT_GT(IppGetPrinterAttrReq(context, "printer-location"), 0U);
    EXPECT_EQ(context.printer.location, "Attic");
    EXPECT_EQ(context.printer.state, 0) << "not asked for";

    record.set(keys::ippURL, "http://127.0.0.1:631/printers/stopped");
    EXPECT_EQ(inkStatusOfRecordByIpp(record, inks, status), 0);
    EXPECT_EQ(status.view(), "Unknown");
    EXPECT_EQ(record.texts(keys::colors), (std::vector<std::string>{"Black Ink"}));
    const Inquiry missing("http://127.0.0.1:631/printers/nowhere");
    EXPECT_EQ(missing.result, 0);
    EXPECT_EQ(missing.status.view(), "None") << "answered, with nothing in it";
}

}  // namespace
}  // namespace tintoral
