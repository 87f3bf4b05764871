#include "transport/channels/pml_exchange.h"

#include <array>
#include <chrono>

#include "support/clock.h"
#include "support/hex_dump.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kGetPause{800};
constexpr std::size_t kRequestRoom = 512;

// Every request is a "get", also that of a value to set, as meant.
bool writeRequest(MLCChannel& channel, std::string_view object, std::uint8_t type,
                  const PMLArgument& value) {
    std::array<std::uint8_t, kRequestRoom> bytes;
    const std::size_t size = makePMLRequest(bytes, kPMLGet, object, type, value);
    return size > 0 && MLCwrite(channel, Bytes(bytes).first(size)) == 0;
}

int readResponse(MLCChannel& channel, PMLResponse& response, BoundedText* dump) {
    std::array<std::uint8_t, kMLCPayloadRoom> storage;
    std::size_t length = 0;
    if (const int error = MLCread(channel, storage, length); error != 0) return error;
    if (length == 0) return 0;
    const Bytes reply = Bytes(storage).first(length);
    if (dump != nullptr) sDumpPacket(*dump, reply);
    return parsePMLResponse(reply, response);
}

}  // namespace

int getPMLvalue(MLCChannel& channel, std::string_view object, PMLResponse& response,
                BoundedText* dump) {
    response = {};
    if (!writeRequest(channel, object, 0, {})) return -1;
    pauseFor(kGetPause);
    return readResponse(channel, response, dump);
}

int setPMLvalue(MLCChannel& channel, std::string_view object, std::uint8_t type,
                const PMLArgument& value, PMLResponse& response, BoundedText* dump) {
    response = {};
    if (!writeRequest(channel, object, type, value)) return -1;
    return readResponse(channel, response, dump);
}

}  // namespace tintoral
