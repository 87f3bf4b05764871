// Every exchange over TCP with every kind of hostile peer.
#include <gtest/gtest.h>

#include <memory>

#include "hostile/hostile.h"
#include "monitor/update_cycle.h"
#include "support/measure.h"
#include "support/tcp_peer.h"
#include "support/virtual_base_station.h"
#include "support/virtual_canon.h"
#include "support/virtual_d4_epson.h"
#include "support/virtual_epson.h"
#include "support/virtual_ipp_printer.h"
#include "vendors/brother_exchange.h"
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

struct Exchange {
    const char* name;
    double boundSeconds;
    Answer honest;
    std::function<TcpScript()> peer;  // of a printer that means well
    std::function<Answer(const Place&)> ask;
    LengthField length;
    std::vector<int> honestAnswers{0};  // before the hardship begins
    std::vector<Hardship> more = {};    // of its own protocol
};

// ---- Hardships ----

ByteVector bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::vector<Hardship> hardshipsFor(const Exchange& exchange) {
    const LengthField& length = exchange.length;
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
    all.insert(all.end(), exchange.more.begin(), exchange.more.end());
    return all;
}

// One byte of data in each message.
std::vector<Hardship> stationHardships() {
    return {{"a byte in each answer", {.spoil = [](ByteVector& answer) {
                 answer.resize(25, 'x');
                 lyingBy({12, 4}, 1)(answer);
             }}}};
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
test::SharedPrinter shared(Setup... setup) {
    const auto printer = std::make_shared<Printer>(setup...);
    return [printer](Bytes bytes) { return test::inOneTransfer(*printer)(bytes); };
}

TcpScript stationWithD4Epson() {
    const auto printer = std::make_shared<test::VirtualD4Epson>();
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

std::function<Answer(const Place&)> atBaseStation(std::string_view maker,
                                                  std::string_view commandSet) {
    return [=](const Place& place) {
        return askRecord({{std::string(keys::serverType), server_types::airPort},
                          {std::string(keys::kind), "riousb:x"},
                          {std::string(keys::active), kYes},
                          {std::string(keys::makerName), maker},
                          {std::string(keys::modelName), "iP4300"},
                          {std::string(keys::usbCmd), commandSet},
                          {std::string(keys::usbPrinterName), "usb1"},
                          {std::string(keys::hostName), "::1"},
                          {std::string(keys::port), int{place.ipv6Port}}});
    };
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
constexpr LengthField kPacketLength{2, 2};
constexpr LengthField kCanonLength{0, 2};
constexpr LengthField kEpsonLength{.offset = 10, .size = 2, .lowByteFirst = true};
constexpr LengthField kStationLength{12, 4};
constexpr LengthField kHttpLength{33, 1};  // its first digit

TcpScript ivecCanon() {
    return scriptOf<test::VirtualCanon>(test::CanonSetup{.ivec = true});
}
TcpScript brother() {
    return {.received = [](Bytes) { return ByteVector(); }, .greeting = noise(100)};
}
TcpScript hp() {
    return answering("model", [](std::string_view) { return true; });
}
TcpScript stationWithHp() {
    return stationWith(test::saying({}),
                       "MFG:HP;VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,C0,DP,NR,KP075,CP060;");
}
TcpScript stationWithEpson() {
    return stationWith(shared<test::VirtualEpson>());
}
TcpScript stationWithCanon() {
    return stationWith(shared<test::VirtualCanon>());
}
TcpScript stationWithIvecCanon() {
    return stationWith(shared<test::VirtualCanon>(test::CanonSetup{.ivec = true}));
}

const std::vector<Exchange>& exchanges() {
    static const std::vector<Exchange> all{
        {"Epson, remote mode", 16, kEpson, scriptOf<test::VirtualEpson>, onRawPort("EPSON", "RC"),
         kEpsonLength},
        {"Epson, D4 channel",
         65,
         kEpson,
         scriptOf<test::VirtualD4Epson>,
         onRawPort("EPSON", "D4"),
         kPacketLength,
         {0, 1, 2, 3, 4, 5}},
        {"Canon", 11, kCanon, scriptOf<test::VirtualCanon>, onRawPort("Canon", "BJL"),
         kCanonLength},
        {"Canon, IVEC", 11, kCanon, ivecCanon, onRawPort("Canon", "BJL,IVEC"), kCanonLength},
        {"Brother, diagnosis", 4, {}, brother, askDiagnosis<kBrother>, kCanonLength},
        {"HP, diagnosis", 5, {}, hp, askDiagnosis<tcpHPDiagnose>, kCanonLength, {0, 1}},
        {"base station, HP",
         5,
         kHP,
         stationWithHp,
         atBaseStation("HP", ""),
         kStationLength,
         {0, 1}},
        {"base station, Epson",
         10,
         kEpson,
         stationWithEpson,
         atBaseStation("EPSON", "BDC"),
         kStationLength,
         {0, 1, 2}},
        {"base station, Epson, D4 channel",
         52,
         kEpson,
         stationWithD4Epson,
         atBaseStation("EPSON", "D4"),
         kStationLength,
         {0, 1, 2, 4, 8, 12}},
        {"base station, Canon",
         16,
         kCanon,
         stationWithCanon,
         atBaseStation("Canon", "BJL"),
         kStationLength,
         {0, 1, 2}},
        {"base station, Canon, IVEC",
         16,
         kCanon,
         stationWithIvecCanon,
         atBaseStation("Canon", "IVEC"),
         kStationLength,
         {0, 1, 2, 3},
         stationHardships()},
        {"IPP", 172, {1, "Idle", {42}}, ippQueue, askIpp, kHttpLength, {0}, httpHardships()},
    };
    return all;
}

Case caseOf(const Exchange& exchange, const std::string& name, const TcpManners& manners) {
    const auto peer = [&exchange, manners](const Place& place) {
        const bool isStation = std::string_view(exchange.name).starts_with("base");
        return std::make_shared<test::TcpPeer>(isStation ? "::1" : place.ipv4,
                                               isStation ? place.ipv6Port : 9100, exchange.peer(),
                                               manners);
    };
    return {exchange.name, name, exchange.boundSeconds, exchange.honest, peer, exchange.ask};
}

TEST(HostilePeers, OverTcp) {
    std::vector<Case> cases;
    for (const Exchange& exchange : exchanges()) {
        cases.push_back(caseOf(exchange, "", {}));
        for (const int honest : exchange.honestAnswers) {
            for (auto [name, manners] : hardshipsFor(exchange)) {
                manners.honestAnswers = honest;
                cases.push_back(
                    caseOf(exchange, name + " from answer " + std::to_string(honest), manners));
            }
        }
    }
    runAll(cases);
}

}  // namespace
}  // namespace tintoral::hostile
