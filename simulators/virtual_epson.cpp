#include "simulators/virtual_epson.h"

#include <algorithm>
#include <cstdio>

namespace tintoral::test {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr auto kEnterRemote = "\x1B(R\x08\0\0REMOTE1"sv;
constexpr auto kLeaveRemote = "\x1B\0\0\0"sv;
constexpr std::size_t kMostHeard = 65536;
constexpr std::size_t kCommandHeader = 4;
constexpr std::size_t kLongestArgument = 64;

std::string hexByte(int value) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(value) & 0xFF);
    return digits;
}

char byteOf(std::size_t value) {
    return static_cast<char>(value & 0xFF);
}

std::string field(char code, const std::string& data) {
    return std::string{code, byteOf(data.size())} + data;
}

std::string binaryReply(const EpsonSetup& setup) {
    std::string inks = "\x03";
    for (const EpsonInk& ink : setup.inks) {
        inks += {'\x01', static_cast<char>(ink.colorCode), static_cast<char>(ink.level)};
    }
    const std::string fields = field('\x01', {static_cast<char>(setup.status)}) +
                               field('\x19', "\x01") + field('\x0F', inks);
    return "@BDC ST2\r\n"s + byteOf(fields.size()) + byteOf(fields.size() >> 8) + fields;
}

std::string textReply(const EpsonSetup& setup) {
    std::string levels;
    for (const EpsonInk& ink : setup.inks) levels += hexByte(ink.level);
    char status[8];
    std::snprintf(status, sizeof status, "%02d", setup.status % 100);
    return "@BDC ST\r\nST:"s + status + ";IQ:" + levels + ";\f";
}

// Format 1: cyan, magenta, yellow and black at bytes 16 to 19, all other supplies absent.
std::string laserReply(const EpsonSetup& setup) {
    constexpr std::array<std::size_t, 4> kOffsets{19, 16, 17, 18};
    std::array<int, 25> bytes{1, 0, setup.laserCode >> 8, setup.laserCode};
    std::fill(bytes.begin() + 16, bytes.end(), 0xFF);
    for (const EpsonInk& ink : setup.inks) {
        if (ink.colorCode < kOffsets.size()) bytes.at(kOffsets.at(ink.colorCode)) = ink.level;
    }
    std::string hex;
    for (const int byte : bytes) hex += hexByte(byte);
    return "@EJL STATUS CODE=" + hex;
}

std::string honestReply(EpsonReply form, const EpsonSetup& setup) {
    switch (form) {
        case EpsonReply::Binary:
            return binaryReply(setup);
        case EpsonReply::Text:
            return textReply(setup);
        case EpsonReply::Laser:
            return laserReply(setup);
        default:
            return "";
    }
}

std::uint8_t lastOf(Bytes argument) {
    return argument.empty() ? std::uint8_t{0} : argument.back();
}

}  // namespace

void VirtualEpson::connected() {
    const std::lock_guard lock(mutex_);
    pending_.clear();
    remote_ = false;
}

std::vector<std::uint8_t> VirtualEpson::onReceive(Bytes bytes) {
    const std::lock_guard lock(mutex_);
    pending_ += asText(bytes);
    heard_ += asText(bytes).substr(0, kMostHeard - heard_.size());
    std::string answer;
    while (step(answer)) {
    }
    const Bytes sent = asBytes(answer);
    return {sent.begin(), sent.end()};
}

// Uses up one thing of what is pending; false when more must come first.
bool VirtualEpson::step(std::string& answer) {
    if (!remote_) return enterRemoteMode();
    if (pending_.size() < kCommandHeader) return false;
    if (pending_.starts_with(kLeaveRemote)) {
        remote_ = false;
        pending_.erase(0, kLeaveRemote.size());
        return true;
    }
    ByteReader reader(asBytes(pending_));
    const std::string letters(asText(reader.take(2)));
    const std::size_t length = reader.le16();
    remote_ = length <= kLongestArgument;  // nothing that this printer knows is longer
    if (!remote_) return true;
    if (reader.remaining() < length) return false;
    obey(letters, reader.take(length), answer);
    pending_.erase(0, kCommandHeader + length);
    return true;
}

// Drops what comes before the entry sequence, but for an end that may be its beginning.
bool VirtualEpson::enterRemoteMode() {
    const auto at = pending_.find(kEnterRemote);
    remote_ = at != std::string::npos;
    const std::size_t kept = std::min(pending_.size(), kEnterRemote.size() - 1);
    pending_.erase(0, remote_ ? at + kEnterRemote.size() : pending_.size() - kept);
    return remote_;
}

void VirtualEpson::obey(std::string_view letters, Bytes argument, std::string& answer) {
    const std::uint8_t last = lastOf(argument);
    commands_ += std::string(letters) + " ";
    if (letters == "IQ") answer += statusReply(0);
    if (letters == "ST" && last == 0x01) answer += statusReply(1);
    if (letters == "ST" && last == 0x11) answer += statusReply(2);
    if (letters == "NC") jobs_.push_back("nozzle check " + hexByte(last));
    if (letters == "CH") clean();
}

void VirtualEpson::clean() {
    constexpr int kInkPerCleaning = 2;
    jobs_.emplace_back("cleaning");
    if (!setup_.cleaningUsesInk) return;
    for (EpsonInk& ink : setup_.inks) ink.level = std::max(0, ink.level - kInkPerCleaning);
}

std::string VirtualEpson::statusReply(std::size_t variant) const {
    const EpsonReply form = setup_.replies.at(variant);
    if (form == EpsonReply::None) return "";
    return honestReply(form, setup_);
}

std::string VirtualEpson::heard() const {
    const std::lock_guard lock(mutex_);
    return heard_;
}

std::string VirtualEpson::commands() const {
    const std::lock_guard lock(mutex_);
    return commands_;
}

std::vector<std::string> VirtualEpson::jobs() const {
    const std::lock_guard lock(mutex_);
    return jobs_;
}

std::vector<EpsonInk> VirtualEpson::inks() const {
    const std::lock_guard lock(mutex_);
    return setup_.inks;
}

void VirtualEpson::change(const EpsonSetup& setup) {
    const std::lock_guard lock(mutex_);
    setup_ = setup;
}

}  // namespace tintoral::test
