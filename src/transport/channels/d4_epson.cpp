#include "transport/channels/d4_epson.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string_view>

#include "support/clock.h"
#include "support/hex_dump.h"
#include "transport/channels/d4.h"
#include "vendors/epson.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

constexpr std::string_view kControlService = "EPSON-CTRL";
constexpr int kRevision = 16;
constexpr milliseconds kPause{100};
constexpr milliseconds kOpenRetryPause{500};
constexpr std::array<std::uint8_t, 5> kStatusInquiry{'s', 't', 0x01, 0x00, 0x01};

std::unique_ptr<D4Channel> openControlChannel(const IoHandle& handle) {
    const SessionEnd end = sessionEndIn(kD4SessionTime);
    if (D4start(handle, kControlService, end) != 0) return nullptr;
    if (auto channel = D4open(handle, kControlService, kRevision, end)) return channel;
    pauseFor(kOpenRetryPause);
    return D4open(handle, kControlService, kRevision, end);
}

int writeAfterPause(D4Channel& channel, Bytes command) {
    pauseFor(kPause);
    return D4write(channel, command);
}

// Result: the length of the reply, 0 when there is none.
int readAfterPause(D4Channel& channel, MutableBytes reply) {
    pauseFor(kPause);
    std::size_t length = 0;
    return D4read(channel, reply, length) == 0 ? static_cast<int>(length) : 0;
}

int runJob(D4Channel& channel, Bytes job) {
    std::array<std::uint8_t, kD4PayloadRoom> reply;
    std::array<std::uint8_t, 32> end;
    if (writeAfterPause(channel, job) != 0) return kNoD4Channel;
    const int jobReply = readAfterPause(channel, reply);
    D4write(channel, Bytes(end).first(mkEpsonD4ExitCmd(end)));
    const int endReply = readAfterPause(channel, reply);
    return endReply > 0 ? endReply : jobReply;
}

}  // namespace

int d4GetEpsonInkStatus(const IoHandle& handle, MutableBytes reply, BoundedText* dump) {
    std::ranges::fill(reply, std::uint8_t{0});
    auto channel = openControlChannel(handle);
    if (!channel) return kNoD4Channel;
    writeAfterPause(*channel, kStatusInquiry);
    const int length = readAfterPause(*channel, reply);
    if (dump != nullptr) {
        dump->appendFormat("Epson D4 = %3d\n", length);
        sDumpPacket(*dump, reply.first(static_cast<std::size_t>(length)));
    }
    D4close(channel);
    return length;
}

int d4EpsonNozzleOption(const IoHandle& handle, int option) {
    auto channel = openControlChannel(handle);
    if (!channel) return kNoD4Channel;
    std::array<std::uint8_t, 32> job;
    const std::size_t length = mkEpsonD4NozzleOption(job, 0, option);
    std::printf("aaaaaaaa cmdlen = %d\n", static_cast<int>(length));
    const int result = runJob(*channel, Bytes(job).first(length));
    D4close(channel);
    return result;
}

}  // namespace tintoral
