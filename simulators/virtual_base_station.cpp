#include "simulators/virtual_base_station.h"

#include <algorithm>
#include <array>

#include "support/byte_writer.h"

namespace tintoral::test {
namespace {

constexpr std::uint32_t kOpen = 1;
constexpr std::uint32_t kRead = 3;
constexpr std::uint32_t kWrite = 4;
constexpr std::uint32_t kDeviceID = 5;
constexpr std::uint32_t kHandle = 0x1234ABCD;
constexpr std::size_t kHeaderSize = 24;
constexpr int kChatter = 100;

std::string word(std::size_t value) {
    std::array<std::uint8_t, 4> bytes;
    ByteWriter(bytes).be32(static_cast<std::uint32_t>(value));
    return std::string(asText(bytes));
}

}  // namespace

SharedPrinter saying(const std::vector<std::string>& transfers) {
    return [transfers](Bytes) {
        Transfers said;
        for (const std::string& text : transfers) said.emplace_back(text.begin(), text.end());
        return said;
    };
}

void VirtualBaseStation::connected() {
    const std::lock_guard lock(mutex_);
    pending_.clear();
    data_.clear();
    requests_.clear();
    deviceIDSent_ = false;
}

void VirtualBaseStation::change(BaseStationSetup setup) {
    const std::lock_guard lock(mutex_);
    setup_ = std::move(setup);
}

std::vector<std::string> VirtualBaseStation::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<std::uint8_t> VirtualBaseStation::onReceive(Bytes bytes) {
    const std::lock_guard lock(mutex_);
    pending_ += asText(bytes);
    std::string answer;
    while (takeRequest(answer)) {
    }
    return {answer.begin(), answer.end()};
}

bool VirtualBaseStation::takeRequest(std::string& answer) {
    ByteReader reader(asBytes(pending_));
    reader.be32();  // version
    Request request{};
    request.type = reader.be32();
    request.sequence = reader.be32();
    const std::size_t length = reader.be32();
    reader.be32();  // status
    request.handle = reader.be32();
    const std::string payload(asText(reader.take(length)));
    if (reader.failed()) return false;
    request.payload = asBytes(payload);
    requests_.push_back(pending_.substr(0, kHeaderSize + length));
    pending_.erase(0, kHeaderSize + length);
    if (!setup_.ignores.contains(request.type)) obey(request, answer);
    return true;
}

std::uint32_t VirtualBaseStation::statusFor(const Request& request) const {
    if (setup_.refuses.contains(request.type)) return 3;
    if (request.type != kOpen) return request.handle == kHandle ? 0 : 2;
    return asText(request.payload) == setup_.printerName ? 0 : 1;
}

std::string VirtualBaseStation::message(std::uint32_t type, std::uint32_t sequence,
                                        std::uint32_t status, std::string_view payload) const {
    const std::size_t length = payload.size() + (type == kRead ? setup_.addedLength : 0) +
                               (type == kOpen ? setup_.openLength : 0);
    return word(1) + word(type) + word(sequence) + word(length) + word(status) + word(kHandle) +
           std::string(payload);
}

void VirtualBaseStation::obey(const Request& request, std::string& answer) {
    const auto reply = [&](std::string_view payload) {
        answer += message(request.type, request.sequence, statusFor(request), payload);
    };
    const std::uint32_t chatter = setup_.chatterType;
    for (int i = 0; chatter != 0 && request.type != kOpen && i < kChatter; ++i)
        answer += message(chatter, 0, 0, "");
    if (request.type == kRead && setup_.deviceIDBeforeData && !deviceIDSent_) {
        deviceIDSent_ = true;
        answer += message(kDeviceID, request.sequence, 0, setup_.deviceID);
    }
    if (statusFor(request) != 0) return reply("");
    if (request.type == kRead) return reply(nextData(request));
    if (request.type == kDeviceID) return reply(setup_.deviceID);
    if (request.type != kWrite) return reply("");
    onWrite(request, answer);
    reply(setup_.emptyAcknowledgements ? "" : word(request.payload.size()));
}

void VirtualBaseStation::onWrite(const Request& request, std::string& answer) {
    for (const auto& transfer : setup_.printer(request.payload)) {
        const std::string said(transfer.begin(), transfer.end());
        if (setup_.dataBeforeAcknowledgement) {
            answer += message(kRead, request.sequence, 0, said);
        } else {
            data_.push_back(said);
        }
    }
}

std::string VirtualBaseStation::nextData(const Request& request) {
    if (data_.empty()) return "";
    const std::size_t wanted = ByteReader(request.payload).be32();
    std::string all = std::move(data_.front());
    data_.pop_front();
    if (setup_.ignoresBytesWanted || all.size() <= wanted) return all;
    data_.push_front(all.substr(wanted));
    return all.substr(0, wanted);
}

}  // namespace tintoral::test
