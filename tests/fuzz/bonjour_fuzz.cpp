// Whatever a service says, its record can be stored and shown: every text in it is clean, and so
// are the fields of a device ID.
//
// The input is a row of strings, each a length byte and as many bytes; the last one may be short:
// the service's name, its type (by the first byte), the host name, then the TXT record.
#include <algorithm>
#include <cstdlib>

#include "discovery/listing.h"
#include "discovery/service_table.h"
#include "support/byte_reader.h"
#include "support/text.h"

namespace {

using namespace tintoral;

std::string_view nextString(ByteReader& input) {
    return asText(input.take(std::min<std::size_t>(input.u8(), input.remaining())));
}

std::string typeOf(std::string_view choice) {
    constexpr std::string_view kTypes[] = {service_types::ipp, service_types::riousbprint,
                                           service_types::pdlDatastream, service_types::printer};
    return std::string(kTypes[choice.empty() ? 0 : static_cast<unsigned char>(choice[0]) % 4]);
}

void checkTexts(const PrinterRecord& record) {
    for (const auto& [key, value] : record) {
        const auto* text = value.as<std::string>();
        if (text && cleanText(*text) != *text) std::abort();
    }
}

ResolvedService readService(ByteReader& input) {
    ResolvedService service;
    service.id.name = spelledOutText(nextString(input));
    service.id.type = typeOf(nextString(input));
    service.hostName = nextString(input);
    if (service.hostName.size() % 2 != 0) service.address = "10.77.0.11";
    while (!input.atEnd()) service.txt.add(nextString(input));
    return service;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteReader input(Bytes(data, size));
    const ResolvedService service = readService(input);
    ServiceTable table;
    table.found(service.id);
    const PrinterRecordPtr record = table.resolved(service);
    if (!record || record->text(keys::printerName) != service.id.name) std::abort();
    checkTexts(*record);

    const std::string_view deviceID = asText(Bytes(data, size));
    for (const std::string& field : {commandSetOf(deviceID), serialOf(deviceID).serial}) {
        if (cleanText(field) != field) std::abort();
    }
    return 0;
}
