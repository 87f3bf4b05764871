// `tintoral-dump KIND [FILE]`: one captured packet or reply, from a file or standard input, as the
// program understands it. Ends with 0 when it was printed, 1 when it cannot be read or holds
// nothing of that kind, 2 when it was not called so.
#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "ink/ink_quantities.h"
#include "netproto/ipp_message.h"
#include "netproto/ipp_names.h"
#include "netproto/ipp_printer.h"
#include "netproto/snmp.h"
#include "support/file_read.h"
#include "support/text.h"
#include "transport/channels/pml.h"
#include "transport/usb/device_id.h"
#include "vendors/canon_reply.h"
#include "vendors/epson.h"
#include "vendors/hp.h"

namespace tintoral {
namespace {

constexpr std::size_t kLargest = 65536;
constexpr std::size_t kIppHeader = 8;

// False when there is nothing to show. `result` is a parser's.
bool showInks(int result, StatusText& status, const InkQuantities& inks) {
    if (result < 0 || (result == 0 && status.empty())) return false;
    status.assign(cleanText(status.view()));
    showQuantities(status, inks);
    return true;
}

bool dumpEpson(Bytes reply) {
    StatusText status;
    InkQuantities inks;
    return showInks(parseEpsonReply(reply, status, inks, 0), status, inks);
}

bool dumpCanon(Bytes reply) {
    StatusText status;
    InkQuantities inks;
    return showInks(parseCanonReply(reply, status, inks), status, inks);
}

bool dumpBjnp(Bytes reply) {
    return reply.size() > 2 && dumpCanon(reply.subspan(2));
}

bool dumpHPDeviceID(Bytes deviceID) {
    StatusText status;
    InkQuantities pens;
    return showInks(parseHPDeviceID(asText(deviceID), status, pens), status, pens);
}

bool dumpVStatus(Bytes field) {
    StatusText status;
    InkQuantities pens;
    return showInks(parseVStatus(asText(field), pens, status), status, pens);
}

bool dumpSStatus(Bytes field) {
    StatusText status;
    InkQuantities pens;
    return showInks(parseSStatus(asText(field), pens, status), status, pens);
}

bool dumpWarnings(Bytes field) {
    StatusText status;
    InkQuantities inks;
    return showInks(parseDWS(asText(field), inks), status, inks);
}

bool dumpDeviceID(Bytes deviceID) {
    FixedText<256> make;
    FixedText<256> model;
    if (backendGetMakeModel(asText(deviceID), make, model, 256) != 0) return false;
    std::printf("make = %s\nmodel = %s\n", cleanText(make.view()).c_str(),
                cleanText(model.view()).c_str());
    return true;
}

bool dumpIppRequest(Bytes message) {
    if (message.size() < kIppHeader) return false;
    DumpIppHdr(message);
    DumpIppAttributes(message.subspan(kIppHeader));
    return true;
}

// An answer's status stands where a request has its operation.
bool dumpIppAnswer(Bytes message) {
    ByteReader reader(message);
    reader.skip(2);
    const std::uint16_t code = reader.be16();
    reader.skip(4);
    IppTuples attributes;
    if (reader.failed() || ParseIppAttr(reader.rest(), attributes) < 0) return false;
    std::printf("%s (0x%04x)\n", std::string(getStatusString(code)).c_str(), code);
    DumpIppAttributes(message.subspan(kIppHeader));
    StatusText status;
    InkQuantities inks;
    SupplyNames names;
    SupplyNames colors;
    DumpText markers;
    readStatusAndMarkers(readIppPrinter(std::move(attributes)), status, inks, names, colors,
                         &markers);
    std::printf("%sstatus = %s\n", markers.c_str(), cleanText(status.view()).c_str());
    return true;
}

bool dumpSnmp(Bytes packet) {
    SnmpMessage message;
    if (parseSnmpPacket(packet, message) == 0) return false;
    dumpSnmpPacket(packet);
    return true;
}

bool dumpPml(Bytes reply) {
    PMLResponse response;
    if (parsePMLResponse(reply, response) != 0) return false;
    const PMLValue& value = response.value;
    std::printf("object = %s\ntype = %02x, number = %d, text = %s\n", response.object.c_str(),
                value.type, value.number, cleanText(value.text.view()).c_str());
    return true;
}

struct Kind {
    std::string_view name;
    const char* input;
    bool (*dump)(Bytes);
};
constexpr std::array kKinds{
    Kind{"epson", R"(status reply: "@BDC ST..." or "@EJL STATUS CODE=...")", dumpEpson},
    Kind{"canon", "status reply, from behind its two bytes of length", dumpCanon},
    Kind{"bjnp", "payload of a BJNP status reply, with its two bytes of length", dumpBjnp},
    Kind{"dws", R"(warnings: "DWS:...;")", dumpWarnings},
    Kind{"hp-id", R"(device ID with "VSTATUS:" or "S:")", dumpHPDeviceID},
    Kind{"hp-vstatus", R"("VSTATUS:" field)", dumpVStatus},
    Kind{"hp-s", R"("S:" field)", dumpSStatus},
    Kind{"device-id", "device ID of any maker (IEEE 1284)", dumpDeviceID},
    Kind{"pml", "reply on the MLC channel", dumpPml},
    Kind{"ipp", "IPP request, from its first byte (behind HTTP's headers)", dumpIppRequest},
    Kind{"ipp-answer", "IPP answer likewise", dumpIppAnswer},
    Kind{"snmp", "SNMPv1 packet", dumpSnmp},
};

int usage() {
    std::fputs("usage: tintoral-dump KIND [FILE]\nKinds of packets and replies:\n", stderr);
    for (const Kind& kind : kKinds)
        std::fprintf(stderr, "  %-10s  %s\n", std::string(kind.name).c_str(), kind.input);
    return 2;
}

std::string readStandardInput(std::error_code& error) {
    std::string bytes(kLargest + 1, '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), stdin));
    if (std::ferror(stdin) != 0) error = std::make_error_code(std::errc::io_error);
    return bytes;
}

int fail(const std::string& name, const std::string& why) {
    std::fflush(stdout);
    std::fprintf(stderr, "tintoral-dump: %s: %s\n", name.c_str(), why.c_str());
    return 1;
}

int run(int argc, char** argv) {
    const std::string_view name = argc > 1 ? argv[1] : "";
    const auto kind = std::ranges::find(kKinds, name, &Kind::name);
    if (kind == kKinds.end() || argc > 3) return usage();
    const std::string file = argc == 3 ? argv[2] : "standard input";
    std::error_code error;
    const std::string bytes =
        argc == 3 ? readFileStart(argv[2], kLargest + 1, error) : readStandardInput(error);
    if (error) return fail(file, error.message());
    if (bytes.size() > kLargest) return fail(file, "longer than 65536 bytes");
    if (!kind->dump(asBytes(bytes))) return fail(file, "no " + std::string(kind->input));
    return 0;
}

}  // namespace
}  // namespace tintoral

int main(int argc, char** argv) {
    return tintoral::run(argc, argv);
}
