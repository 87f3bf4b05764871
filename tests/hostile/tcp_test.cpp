#include <gtest/gtest.h>

#include <memory>

#include "hostile/hostile.h"
#include "monitor/address_probe.h"
#include "simulators/tcp_peer.h"
#include "simulators/virtual_base_station.h"
#include "simulators/virtual_canon.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_epson.h"
#include "simulators/virtual_ipp_printer.h"
#include "simulators/virtual_mlc_hp.h"
#include "support/byte_streams.h"
#include "support/byte_writer.h"
#include "transport/net/riousb_byte_stream.h"
#include "vendors/brother_exchange.h"
#include "vendors/epson.h"
#include "vendors/epson_exchange.h"
#include "vendors/hp_exchange.h"

namespace tintoral::hostile {
namespace {

using namespace std::chrono_literals;
using test::TcpManners;
using test::TcpScript;

struct BadManners {
    std::string name;
    TcpManners manners;
};

struct Protocol {
    LengthField length;
    std::vector<BadManners> hardships = {};  // of its own
    bool onIpv6 = false;
};

// ---- Hardships ----

ByteVector bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::vector<BadManners> mannersFor(const Protocol& protocol) {
    std::vector<BadManners> all{
        {"", {}},
        {"silent", {.silent = true}},
        {"a byte at a time", {.pieceSize = 1, .pieceGap = 100ms}},
        {"resets", {.resets = true}},
        {"resets in the answer", {.atMost = 5, .resetsAfter = true}},
        {"garbage", {.spoil = [](ByteVector& answer) { answer = noise(answer.size()); }}},
        {"endless", {.endless = noise(4096)}},
        {"drips without end", {.pieceSize = 1, .pieceGap = 100ms, .endless = noise(1)}},
    };
    for (const Lie& lie : liesAbout(protocol.length))
        all.push_back({lie.name, {.spoil = lie.spoil}});
    const Spoil longest = all.back().manners.spoil;
    all.push_back({"long, now and then",
                   {.pieceSize = 512, .pieceGap = 700ms, .spoil = longest, .endless = noise(512)}});
    all.insert(all.end(), protocol.hardships.begin(), protocol.hardships.end());
    return all;
}

// The peers behind which such a printer stands.
std::vector<Hardship> peersOf(const std::function<TcpScript()>& printer, const Protocol& protocol) {
    std::vector<Hardship> all;
    for (const BadManners& bad : mannersFor(protocol)) {
        const auto peer = [=, manners = bad.manners, onIpv6 = protocol.onIpv6](const Place& place,
                                                                               int honest) mutable {
            manners.honestAnswers = honest;
            return std::make_shared<test::TcpPeer>(
                onIpv6 ? "::1" : place.ipv4, onIpv6 ? place.ipv6Port : 9100, printer(), manners);
        };
        all.push_back({bad.name, peer});
    }
    return all;
}

// What is right as a message but was not asked for, or says next to nothing.
std::vector<BadManners> stationHardships() {
    const ByteVector chatter =
        test::bytesOfHex("00000001 0000004D 00000001 00000000 00000000 1234ABCD");
    ByteVector data = test::bytesOfHex("00000001 00000003 00000001 00000400 00000000 1234ABCD");
    data.resize(data.size() + 1024, 'x');
    const auto oneByte = [](ByteVector& answer) {
        answer.resize(25, 'x');
        ByteWriter(MutableBytes(answer).subspan(12)).be32(1);
    };
    return {{"a byte in each answer", {.spoil = oneByte}},
            {"data without end", {.endless = data}},
            {"chatter without end", {.endless = chatter}},
            {"chatter now and then", {.pieceGap = 400ms, .endless = chatter}}};
}

std::vector<BadManners> packetHardships() {
    const ByteVector request = test::bytesOfHex("00000009 0100 0402 02");  // for credit
    const ByteVector others = test::bytesOfHex("05050007 0000 41");        // another channel's
    return {{"transactions without end", {.endless = request}},
            {"transactions now and then", {.pieceGap = 700ms, .endless = request}},
            {"another channel without end", {.endless = others}},
            {"another channel now and then", {.pieceGap = 700ms, .endless = others}}};
}

// HTTP tells its lengths in words.
std::vector<BadManners> httpHardships() {
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
        {"chunk of 2 GiB", chunked + "7fffffff\r\n", page},
        {"body of 2 GiB", ok + "Content-Length: 2147483647\r\n\r\n", page},
        {"dripping body", ok + "Content-Length: 2147483647\r\n\r\n", "x", 4900ms},
        {"endless body of no length", ok + "\r\n", page},
    };
    std::vector<BadManners> all;
    for (const auto& row : rows) {
        all.push_back({row.name,
                       {.pieceGap = row.gap,
                        .spoil = [=](ByteVector& answer) { answer = bytesOf(row.start); },
                        .endless = bytesOf(row.endless)}});
    }
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

TcpScript ivecCanon() {
    return scriptOf<test::VirtualCanon>(test::CanonSetup{.ivec = true});
}

TcpScript brother() {
    return {.received = [](Bytes) { return ByteVector(); }, .greeting = noise(100)};
}

TcpScript hpAnswers() {
    return {.received = [](Bytes) { return bytesOf("model"); }};
}

// Answers what ends like an IPP request.
TcpScript ippQueue() {
    const std::string message = test::ippMessage({{0x42, "marker-names", {"Black"}},
                                                  {0x42, "marker-colors", {"#000000"}},
                                                  {0x21, "marker-levels", {test::ippInteger(42)}},
                                                  {0x44, "marker-types", {"ink"}},
                                                  {0x23, "printer-state", {test::ippInteger(3)}},
                                                  {0x41, "cups-version", {"2.4"}}});
    return {.received = [=](Bytes request) {
        if (request.back() != '\3') return ByteVector();
        return bytesOf("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(message.size()) +
                       "\r\n\r\n" + message);
    }};
}

TcpScript stationWith(test::SharedPrinter printer, const std::string& deviceID) {
    return scriptOf<test::VirtualBaseStation>(
        test::BaseStationSetup{.printer = std::move(printer), .deviceID = deviceID});
}
constexpr const char* kHPDeviceID =
    "MFG:HP;VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,C0,DP,NR,KP075,CP060;";

template <typename Printer, typename... Setup>
test::SharedPrinter transfersOf(std::size_t size, Setup... setup) {
    const auto printer = std::make_shared<Printer>(setup...);
    return [=](Bytes bytes) { return test::inTransfersOf(size, *printer)(bytes); };
}

template <typename Printer>
test::SharedPrinter packetsOf() {
    const auto printer = std::make_shared<Printer>();
    return [printer](Bytes bytes) { return printer->transfersFor(bytes); };
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

TEST(HostilePeers, OverTcp) {
    using namespace test;
    const Answer epson{4, "Idle", {60, 42, 31, 80}};
    const Answer canon{5, "Idle", {75, 40, 62, 0, 18}};
    const Answer hp{2, "Idle", {75, 60}};
    const Protocol remote{{.offset = 10, .size = 2, .lowByteFirst = true}};
    const Protocol packets{{2, 2}, packetHardships()};
    const Protocol fields{{0, 2}};
    const auto d4 = peersOf(scriptOf<VirtualD4Epson>, packets);
    const auto plain = peersOf(scriptOf<VirtualCanon>, fields);
    const auto station = [protocol = Protocol{{12, 4}, stationHardships(), true}](
                             const auto& printer, const std::string& deviceID = "") {
        return peersOf([=] { return stationWith(printer(), deviceID); }, protocol);
    };
    runAll({
        {"Epson, remote mode", 16, epson, onRawPort("EPSON", "RC"),
         peersOf(scriptOf<VirtualEpson>, remote)},
        {"Epson, D4 channel", 65, epson, onRawPort("EPSON", "D4"), d4, 4},
        {"Epson, D4 channel, cleaning", 51, {}, cleanOverD4, d4, 4},
        {"Canon", 11, canon, onRawPort("Canon", "BJL"), plain},
        {"Canon, by address", 22, {1, "Idle"}, addByAddress, plain},
        {"Canon, IVEC", 11, canon, onRawPort("Canon", "BJL,IVEC"), peersOf(ivecCanon, fields)},
        {"Brother, diagnosis", 4, {}, askDiagnosis<kBrother>, peersOf(brother, fields)},
        {"HP, diagnosis", 5, {}, askDiagnosis<tcpHPDiagnose>, peersOf(hpAnswers, fields), 1},
        {"IPP", 172, {1, "Idle", {42}}, askIpp, peersOf(ippQueue, {{33, 1}, httpHardships()})},
        {"station, HP", 5, hp, atBaseStation("HP", ""),
         station([] { return saying({}); }, kHPDeviceID), 1},
        {"station, HP, MLC channel", 71, {1}, diagnoseMlc, station(packetsOf<VirtualMlcHp>), 8},
        {"station, Epson", 10, epson, atBaseStation("EPSON", "BDC"),
         station([] { return transfersOf<VirtualEpson>(4096); }), 4},
        {"station, Epson, D4 channel", 52, epson, atBaseStation("EPSON", "D4"),
         station(packetsOf<VirtualD4Epson>), 8},
        {"station, Canon", 16, canon, atBaseStation("Canon", "BJL"),
         station([] { return transfersOf<VirtualCanon>(4096); }), 4},
        {"station, Canon, IVEC", 16, canon, atBaseStation("Canon", "IVEC"),
         station([] { return transfersOf<VirtualCanon>(100, CanonSetup{.ivec = true}); }), 4},
    });
}

}  // namespace
}  // namespace tintoral::hostile
