// What it takes to read each kind of reply, from the seeds of the fuzz targets or from the virtual
// printers; and the model table, which every start reads.
#include <benchmark/benchmark.h>
#include <sys/socket.h>

#include <array>
#include <fstream>
#include <iterator>
#include <string>

#include "discovery/txt_record.h"
#include "netproto/bjnp_packets.h"
#include "netproto/ipp_printer.h"
#include "netproto/snmp.h"
#include "records/model_table.h"
#include "simulators/virtual_canon.h"
#include "support/test_clock.h"
#include "transport/channels/d4_epson.h"
#include "transport/net/riousb.h"
#include "transport/usb/device_id.h"
#include "vendors/canon.h"
#include "vendors/canon_reply.h"
#include "vendors/epson.h"
#include "vendors/hp.h"

namespace tintoral {
namespace {

using ByteVector = std::vector<std::uint8_t>;

ByteVector seed(const std::string& name) {
    std::ifstream file(TINTORAL_SOURCE_DIR "/tests/fuzz/corpus/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Without the first byte, which is not the printer's.
ByteVector epsonSeed(const std::string& name) {
    ByteVector reply = seed("epson/" + name);
    reply.erase(reply.begin());
    return reply;
}

// Without the two bytes of length.
ByteVector canonReply(bool ivec) {
    ByteVector request(kCanonIvecStatusRequest.size(), 0);
    if (!ivec) request.resize(mkCanonStatusInquire("iP4300", request, ""));
    ByteVector reply = test::VirtualCanon({.ivec = ivec}).onReceive(request);
    reply.erase(reply.begin(), reply.begin() + 2);
    return reply;
}

// One parser of status text and levels. Fails when it finds nothing: that would be fast.
template <typename Parse>
void readReply(benchmark::State& state, const ByteVector& reply, const Parse& parse) {
    StatusText status;
    InkQuantities inks;
    int result = 0;
    for (auto _ : state) {
        inks.clear();
        result = parse(Bytes(reply), status, inks);
        benchmark::ClobberMemory();
    }
    if (result < 1) state.SkipWithError("nothing was read");
    state.counters["bytes"] = static_cast<double>(reply.size());
}

void epsonBinary(benchmark::State& state) {
    readReply(state, epsonSeed("binary-four-inks"), parseST2);
}

void epsonText(benchmark::State& state) {
    readReply(state, epsonSeed("text-preset-count"),
              [](Bytes reply, BoundedText& status, InkQuantities& inks) {
                  StatusText error;
                  StatusText warning;
                  FixedText<32> revision;
                  return parseBDCST(reply, status, error, inks, warning, revision);
              });
}

void epsonLaser(benchmark::State& state) {
    readReply(state, epsonSeed("laser-format-33"),
              [](Bytes reply, BoundedText& status, InkQuantities& inks) {
                  std::uint32_t extra = 0;
                  return parseEJLStatusCode(reply, status, inks, extra);
              });
}

void canonPlain(benchmark::State& state) {
    readReply(state, canonReply(false), parseCanonReply);
}

void canonIvec(benchmark::State& state) {
    readReply(state, canonReply(true), parseCanonReply);
}

int parseHP(Bytes deviceID, BoundedText& status, InkQuantities& pens) {
    return parseHPDeviceID(asText(deviceID), status, pens);
}

void hpPens(benchmark::State& state) {
    readReply(state, seed("hp/s-field"), parseHP);
}

void hpVStatus(benchmark::State& state) {
    readReply(state, seed("hp/vstatus"), parseHP);
}

void canonWarnings(benchmark::State& state) {
    readReply(state, seed("hp/warnings"), [](Bytes reply, BoundedText&, InkQuantities& inks) {
        inks.count = 4;
        return parseDWS(asText(reply), inks);
    });
}

void deviceID(benchmark::State& state) {
    const ByteVector text = seed("device_id/make-and-model");
    FixedText<64> make;
    FixedText<64> model;
    for (auto _ : state)
        benchmark::DoNotOptimize(backendGetMakeModel(asText(Bytes(text)), make, model, 64));
    if (make.empty()) state.SkipWithError("nothing was read");
    state.counters["bytes"] = static_cast<double>(text.size());
}

void snmpMessage(benchmark::State& state) {
    readReply(state, seed("snmp/one-supply"), [](Bytes packet, BoundedText&, InkQuantities&) {
        static SnmpMessage message;
        return parseSnmpPacket(packet, message);
    });
}

void ippMessage(benchmark::State& state) {
    readReply(state, seed("ipp/three-markers"), [](Bytes message, BoundedText&, InkQuantities&) {
        IppTuples attributes;
        const int used = ParseIppAttr(message, attributes);
        benchmark::DoNotOptimize(readIppPrinter(std::move(attributes)));
        return used;
    });
}

void bjnpPacket(benchmark::State& state) {
    readReply(state, seed("bjnp/device-id"), [](Bytes packet, BoundedText&, InkQuantities&) {
        BjnpPrinter printer;
        const auto answer = bjnpAnswerTo(bjnp_commands::getDeviceID, packet);
        if (answer) nameBjnpPrinter(printer, asText(answer->payload));
        return static_cast<int>(printer.model.size());
    });
}

// A session with a base station, of which all replies are there: open, read, device ID, close.
void baseStation(benchmark::State& state) {
    readReply(state, seed("riousb/session"), [](Bytes replies, BoundedText&, InkQuantities&) {
        test::TestClock clock;
        const ScopedClock scope(clock);
        std::array<int, 2> ends{-1, -1};
        ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data());
        const UniqueFd theirs(ends[1]);
        ::send(theirs.get(), replies.data(), replies.size(), 0);
        ::shutdown(theirs.get(), SHUT_WR);
        auto connection = riousbOpenOn(UniqueFd(ends[0]), "usb1");
        if (!connection) return 0;
        std::array<std::uint8_t, 1024> data{};
        const int received = riousbRead(*connection, data, std::chrono::milliseconds(300));
        riousbClose(std::move(connection));
        return received;
    });
}

void txtRecord(benchmark::State& state) {
    readReply(state, seed("bonjour/shared-queue"), [](Bytes record, BoundedText&, InkQuantities&) {
        TxtRecord txt;
        for (ByteReader reader(record); !reader.atEnd();) {
            const std::size_t length = reader.u8();
            txt.add(asText(reader.take(std::min(length, reader.remaining()))));
        }
        return txt.text(txt_keys::ty) ? 1 : 0;
    });
}

void modelTable(benchmark::State& state) {
    const std::string path = TINTORAL_SOURCE_DIR "/src/resources/printers.xml";
    for (auto _ : state) benchmark::DoNotOptimize(ModelTable::load(path));
}

BENCHMARK(epsonBinary);
BENCHMARK(epsonText);
BENCHMARK(epsonLaser);
BENCHMARK(canonPlain);
BENCHMARK(canonIvec);
BENCHMARK(canonWarnings);
BENCHMARK(hpPens);
BENCHMARK(hpVStatus);
BENCHMARK(deviceID);
BENCHMARK(snmpMessage);
BENCHMARK(ippMessage);
BENCHMARK(bjnpPacket);
BENCHMARK(baseStation);
BENCHMARK(txtRecord);
BENCHMARK(modelTable);

}  // namespace
}  // namespace tintoral

BENCHMARK_MAIN();
