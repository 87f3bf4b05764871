// Every exchange over TCP with every kind of hostile peer.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "hostile/hostile.h"
#include "monitor/address_probe.h"
#include "support/byte_streams.h"
#include "support/tcp_peer.h"
#include "support/virtual_base_station.h"
#include "support/virtual_canon.h"
#include "support/virtual_d4_epson.h"
#include "support/virtual_epson.h"
#include "support/virtual_ipp_printer.h"
#include "support/virtual_mlc_hp.h"
#include "transport/net/riousb_byte_stream.h"
#include "transport/net/riousb_ink_status.h"
#include "vendors/brother_exchange.h"
#include "vendors/epson.h"
#include "vendors/epson_exchange.h"
#include "vendors/hp_exchange.h"

namespace tintoral::hostile {
namespace {

using namespace std::chrono_literals;
using test::TcpManners;
using test::TcpScript;

struct Hardship {
    std::string name;
    TcpManners manners;
};

struct Protocol {
    LengthField length;
    std::vector<Hardship> hardships = {};  // of its own
    bool onIpv6 = false;
};

struct Exchange {
    const char* name;
    double boundSeconds;
    Answer honest;
    std::function<TcpScript()> peer;  // of a printer that means well
    std::function<Answer(const Place&)> ask;
    Protocol protocol;
    int honestAnswers =
        0;  // each hardship begins after so many answers, 0, 1, 2, 4 ... at the most
};

// ---- Hardships ----

constexpr LengthField kStationLength{12, 4};

ByteVector bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::vector<Hardship> hardshipsFor(const Protocol& protocol) {
    const LengthField& length = protocol.length;
    std::vector<Hardship> all{
        {"silent", {.silent = true}},
        {"a byte at a time", {.pieceSize = 1, .pieceGap = 100ms}},
        {"resets", {.resets = true}},
        {"resets in the answer", {.atMost = 5, .resetsAfter = true}},
        {"garbage", {.spoil = [](ByteVector& answer) { answer = noise(answer.size()); }}},
        {"endless", {.endless = noise(4096)}},
        {"endless zeros", {.endless = ByteVector(4096)}},
        {"drips without end", {.pieceSize = 1, .pieceGap = 100ms, .endless = noise(1)}},
        {"long, now and then",
         {.pieceSize = 512,
          .pieceGap = 700ms,
          .spoil = lyingBy(length, ~0ULL),
          .endless = noise(512)}},
        {"shortest length, then endless", {.spoil = lyingBy(length, 1), .endless = noise(4096)}},
    };
    for (const std::uint64_t lie : kLies)
        all.push_back({"length " + std::to_string(static_cast<std::int64_t>(lie)),
                       {.spoil = lyingBy(length, lie)}});
    all.insert(all.end(), protocol.hardships.begin(), protocol.hardships.end());
    return all;
}

// What is right as a message but was not asked for, or says next to nothing.
std::vector<Hardship> stationHardships() {
    const ByteVector chatter =
        test::bytesOfHex("00000001 0000004D 00000001 00000000 00000000 1234ABCD");
    ByteVector data = test::bytesOfHex("00000001 00000003 00000001 00000400 00000000 1234ABCD");
    data.resize(data.size() + 1024, 'x');
    const auto oneByte = [](ByteVector& answer) {
        answer.resize(25, 'x');
        lyingBy(kStationLength, 1)(answer);
    };
    return {{"a byte in each answer", {.spoil = oneByte}},
            {"data without end", {.endless = data}},
            {"chatter without end", {.endless = chatter}},
            {"chatter now and then", {.pieceGap = 400ms, .endless = chatter}}};
}

std::vector<Hardship> packetHardships() {
    const ByteVector request = test::bytesOfHex("00000009 0100 0402 02");  // for credit
    const ByteVector others = test::bytesOfHex("05050007 0000 41");        // another channel's
    return {{"transactions without end", {.endless = request}},
            {"transactions now and then", {.pieceGap = 700ms, .endless = request}},
            {"another channel without end", {.endless = others}},
            {"another channel now and then", {.pieceGap = 700ms, .endless = others}}};
}

// HTTP tells its lengths in words.
std::vector<Hardship> httpHardships() {
    const std::string ok = "HTTP/1.1 200 OK\r\n";
    const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
    const std::string page(4096, 'x');
    const struct {
        const char* name;
        std::string start;
        std::string endless;
        std::chrono::milliseconds gap = 0ms;
    } rows[] = {
        {"endless line", ok + "X: ", page},
        {"endless head", ok, "X: y\r\n"},
        {"dripping head", ok, "X: y\r\n", 4900ms},
        {"endless 100 Continue", "", "HTTP/1.1 100 Continue\r\n\r\n"},
        {"endless chunks", chunked, "1000\r\n" + page + "\r\n"},
        {"dripping chunks", chunked, "1\r\nx\r\n", 4900ms},
        {"endless chunk size", chunked, "0"},
        {"chunk of 2 GiB", chunked + "7fffffff\r\n", page},
        {"chunk of -1", chunked + "-1\r\n", page},
        {"body of 2 GiB", ok + "Content-Length: 2147483647\r\n\r\n", page},
        {"dripping body", ok + "Content-Length: 2147483647\r\n\r\n", "x", 4900ms},
        {"body of -1", ok + "Content-Length: -1\r\n\r\n", page},
        {"body of 0", ok + "Content-Length: 0\r\n\r\n", page},
        {"endless body of no length", ok + "\r\n", page},
    };
    std::vector<Hardship> all;
    for (const auto& row : rows)
        all.push_back({row.name,
                       {.pieceGap = row.gap,
                        .spoil = [=](ByteVector& answer) { answer = bytesOf(row.start); },
                        .endless = bytesOf(row.endless)}});
    return all;
}

// ---- Printers that mean well ----

template <typename Printer, typename... Setup>
TcpScript scriptOf(Setup... setup) {
    const auto printer = std::make_shared<Printer>(setup...);
    return {.opened =
                [printer] {
                    if constexpr (requires { printer->connected(); }) printer->connected();
                },
            .received = [printer](Bytes bytes) { return printer->onReceive(bytes); }};
}

// Answers once the request is there, as `isWhole` finds.
TcpScript answering(const std::string& answer,
                    const std::function<bool(std::string_view)>& isWhole) {
    const auto heard = std::make_shared<std::string>();
    return {.opened = [heard] { heard->clear(); },
            .received =
                [=](Bytes bytes) {
                    *heard += asText(bytes);
                    if (!isWhole(*heard)) return ByteVector();
                    return ByteVector(answer.begin(), answer.end());
                }};
}

TcpScript ippQueue() {
    const std::string message = test::ippMessage({{0x42, "marker-names", {"Black"}},
                                                  {0x42, "marker-colors", {"#000000"}},
                                                  {0x21, "marker-levels", {test::ippInteger(42)}},
                                                  {0x44, "marker-types", {"ink"}},
                                                  {0x23, "printer-state", {test::ippInteger(3)}},
                                                  {0x41, "cups-version", {"2.4"}}});
    return answering("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(message.size()) +
                         "\r\n\r\n" + message,
                     [](std::string_view request) { return request.ends_with('\3'); });
}

TcpScript stationWith(test::SharedPrinter printer, std::string deviceID = "") {
    return scriptOf<test::VirtualBaseStation>(
        test::BaseStationSetup{.printer = std::move(printer), .deviceID = std::move(deviceID)});
}

template <typename Printer, typename... Setup>
test::SharedPrinter inTransfersOf(std::size_t size, Setup... setup) {
    const auto printer = std::make_shared<Printer>(setup...);
    return [=](Bytes bytes) { return test::inTransfersOf(size, *printer)(bytes); };
}

template <typename Printer>
TcpScript stationWithPackets() {
    const auto printer = std::make_shared<Printer>();
    return stationWith([printer](Bytes bytes) { return printer->transfersFor(bytes); });
}

// ---- The program's side ----

std::function<Answer(const Place&)> onRawPort(std::string_view maker, std::string_view commandSet) {
    return [=](const Place& place) {
        return askRecord({{std::string(keys::serverType), server_types::network},
                          {std::string(keys::kind), "port9100:x"},
                          {std::string(keys::makerName), maker},
                          {std::string(keys::modelName), "Pro9000"},
                          {std::string(keys::usbCmd), commandSet},
                          {std::string(keys::commandType), maker == "EPSON" ? commandSet : ""},
                          {std::string(keys::ipAdrs), place.ipv4},
                          {std::string(keys::port), 9100}});
    };
}

Answer cleanOverD4(const Place& place) {
    tcpEpsonD4NozzleOption(place.ipv4, 9100, kOptionCleaning);
    return {};
}

Answer addByAddress(const Place& place) {
    const auto answer =
        testAddress({place.ipv4, Connection::RawPort, 9100, "Canon Pro9000"}, ModelTable());
    return {answer.outcome == UpdateOutcome::Levels ? 1 : 0,
            answer.printer->text(keys::printerStatus)};
}

PrinterRecord sharedPrinter(const Place& place, std::string_view maker,
                            std::string_view commandSet) {
    return {{std::string(keys::serverType), server_types::airPort},
            {std::string(keys::kind), "riousb:x"},
            {std::string(keys::active), kYes},
            {std::string(keys::makerName), maker},
            {std::string(keys::modelName), "iP4300"},
            {std::string(keys::usbCmd), commandSet},
            {std::string(keys::usbPrinterName), "usb1"},
            {std::string(keys::hostName), "::1"},
            {std::string(keys::port), int{place.ipv6Port}}};
}

std::function<Answer(const Place&)> atBaseStation(std::string_view maker,
                                                  std::string_view commandSet) {
    return [=](const Place& place) { return askRecord(sharedPrinter(place, maker, commandSet)); };
}

Answer cleanAtBaseStation(const Place& place) {
    riousbNozzleOptions(sharedPrinter(place, "EPSON", ""), kOptionCleaning);
    return {};
}

Answer diagnoseMlc(const Place& place) {
    auto connection = riousbOpen("::1", place.ipv6Port, "usb1");
    if (!connection) return {};
    RiousbByteStream stream(*connection);
    DumpText report;
    hpDiagnose1(BaseStation{stream}, report, "MLC,PCL,PML");
    riousbClose(std::move(connection));
    return {report.view().find("MLC open error") == std::string_view::npos ? 1 : 0};
}

Answer askIpp(const Place& place) {
    return askRecord({{std::string(keys::serverType), server_types::macCups14},
                      {std::string(keys::active), kYes},
                      {std::string(keys::ippURL), "http://" + place.ipv4 + ":9100/ipp/print"}});
}

// A diagnosis says what came in a dump and makes nothing of it.
template <auto diagnose>
Answer askDiagnosis(const Place& place) {
    DumpText report;
    diagnose(place.ipv4, 9100, report);
    return {};
}
constexpr auto kBrother = [](const std::string& host, std::uint16_t port, BoundedText& report) {
    tcpBrotherDiagnose(host, port, &report);
};

// ---- The table ----

const std::vector<int> kEpsonLevels{60, 42, 31, 80};
const std::vector<int> kCanonLevels{75, 40, 62, 0, 18};
const Answer kEpson{4, "Idle", kEpsonLevels};
const Answer kHP{2, "Idle", {75, 60}};
const Answer kCanon{5, "Idle", kCanonLevels};

TcpScript ivecCanon() {
    return scriptOf<test::VirtualCanon>(test::CanonSetup{.ivec = true});
}
TcpScript brother() {
    return {.received = [](Bytes) { return ByteVector(); }, .greeting = noise(100)};
}
TcpScript hp() {
    return answering("model", [](std::string_view) { return true; });
}
constexpr auto stationWithD4Epson = stationWithPackets<test::VirtualD4Epson>;
constexpr auto stationWithMlcHp = stationWithPackets<test::VirtualMlcHp>;
TcpScript stationWithHp() {
    return stationWith(test::saying({}),
                       "MFG:HP;VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,C0,DP,NR,KP075,CP060;");
}
TcpScript stationWithEpson() {
    return stationWith(inTransfersOf<test::VirtualEpson>(4096));
}
TcpScript stationWithCanon() {
    return stationWith(inTransfersOf<test::VirtualCanon>(4096));
}
TcpScript stationWithIvecCanon() {
    return stationWith(inTransfersOf<test::VirtualCanon>(100, test::CanonSetup{.ivec = true}));
}

std::vector<Exchange> exchanges() {
    const Protocol epson{{.offset = 10, .size = 2, .lowByteFirst = true}};
    const Protocol packets{{2, 2}, packetHardships()};
    const Protocol fields{{0, 2}};
    const Protocol http{{33, 1}, httpHardships()};  // the first digit
    const Protocol station{kStationLength, stationHardships(), true};
    return {
        {"Epson, remote mode", 16, kEpson, scriptOf<test::VirtualEpson>, onRawPort("EPSON", "RC"),
         epson},
        {"Epson, D4 channel", 65, kEpson, scriptOf<test::VirtualD4Epson>, onRawPort("EPSON", "D4"),
         packets, 4},
        {"Epson, D4 channel, cleaning",
         51,
         {},
         scriptOf<test::VirtualD4Epson>,
         cleanOverD4,
         packets,
         4},
        {"Canon", 11, kCanon, scriptOf<test::VirtualCanon>, onRawPort("Canon", "BJL"), fields},
        {"Canon, IVEC", 11, kCanon, ivecCanon, onRawPort("Canon", "BJL,IVEC"), fields},
        {"Canon, by address", 22, {1, "Idle"}, scriptOf<test::VirtualCanon>, addByAddress, fields},
        {"Brother, diagnosis", 4, {}, brother, askDiagnosis<kBrother>, fields},
        {"HP, diagnosis", 5, {}, hp, askDiagnosis<tcpHPDiagnose>, fields, 1},
        {"IPP", 172, {1, "Idle", {42}}, ippQueue, askIpp, http},
        {"station, HP", 5, kHP, stationWithHp, atBaseStation("HP", ""), station, 1},
        {"station, HP, MLC channel", 71, {1}, stationWithMlcHp, diagnoseMlc, station, 8},
        {"station, Epson", 10, kEpson, stationWithEpson, atBaseStation("EPSON", "BDC"), station, 4},
        {"station, Epson, D4 channel", 52, kEpson, stationWithD4Epson, atBaseStation("EPSON", "D4"),
         station, 8},
        {"station, Epson, cleaning", 9, {}, stationWithEpson, cleanAtBaseStation, station, 1},
        {"station, Canon", 16, kCanon, stationWithCanon, atBaseStation("Canon", "BJL"), station, 4},
        {"station, Canon, IVEC", 16, kCanon, stationWithIvecCanon, atBaseStation("Canon", "IVEC"),
         station, 4},
    };
}

Case caseOf(const Exchange& exchange, const std::string& name, const TcpManners& manners) {
    const auto peer = [&exchange, manners](const Place& place) {
        const bool onIpv6 = exchange.protocol.onIpv6;
        return std::make_shared<test::TcpPeer>(
            onIpv6 ? "::1" : place.ipv4, onIpv6 ? place.ipv6Port : 9100, exchange.peer(), manners);
    };
    return {exchange.name, name, exchange.boundSeconds, exchange.honest, peer, exchange.ask};
}

TEST(HostilePeers, OverTcp) {
    const std::vector<Exchange> all = exchanges();
    std::vector<Case> cases;
    for (const Exchange& exchange : all) {
        cases.push_back(caseOf(exchange, "", {}));
        for (int honest = 0; honest <= exchange.honestAnswers; honest += std::max(honest, 1)) {
            for (auto [name, manners] : hardshipsFor(exchange.protocol)) {
                manners.honestAnswers = honest;
                if (honest > 0) name += " after answer " + std::to_string(honest);
                cases.push_back(caseOf(exchange, name, manners));
            }
        }
    }
    runAll(cases);
}

}  // namespace
}  // namespace tintoral::hostile
