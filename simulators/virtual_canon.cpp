#include "simulators/virtual_canon.h"

#include <algorithm>

namespace tintoral::test {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kIvecRequest = 358;
constexpr std::size_t kFrameHeader = 5;
constexpr std::size_t kLongestFrame = 256;
constexpr auto kStatusRequest = "\0\x1E"sv;
constexpr auto kBjlMode = "\0\x1F"sv;

std::string big16(std::size_t value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}

std::string plainReply(const std::string& fields) {
    return big16(fields.size() + 2) + fields;
}

std::string ivecReply(const std::string& fields) {
    return R"(<?xml version="1.0" encoding="utf-8" ?><cmd><ivec:contents>)"
           R"(<ivec:param_set servicetype="print"><vcn:ijinfo>)" +
           fields + "</vcn:ijinfo></ivec:param_set></ivec:contents></cmd>";
}

}  // namespace

void VirtualCanon::connected() {
    const std::lock_guard lock(mutex_);
    pending_.clear();
    inJob_ = false;
}

std::vector<std::uint8_t> VirtualCanon::onReceive(Bytes bytes) {
    const std::lock_guard lock(mutex_);
    pending_ += asText(bytes);
    std::string answer;
    while (step(answer)) {
    }
    const Bytes sent = asBytes(answer);
    return {sent.begin(), sent.end()};
}

// Uses up one thing of what is pending; false when more must come first.
bool VirtualCanon::step(std::string& answer) {
    if (pending_.empty()) return false;
    if (inJob_) return takeJobLine();
    if (pending_.front() == '\x1B') return takeFrame(answer);
    if (setup_.ivec && pending_.front() == '\0') return takeIvecRequest(kIvecRequest, answer);
    if (!setup_.ivec || pending_.front() != '<') return drop(1);
    const auto end = pending_.find("</cmd>");
    return end != std::string::npos && takeIvecRequest(end + 6, answer);
}

bool VirtualCanon::drop(std::size_t count) {
    pending_.erase(0, count);
    return true;
}

bool VirtualCanon::takeFrame(std::string& answer) {
    if (pending_.starts_with("\x1B@")) return drop(2);
    if (pending_.size() < kFrameHeader) return false;
    ByteReader reader(asBytes(pending_));
    const bool isFrame = asText(reader.take(3)) == "\x1B[K";
    const std::size_t length = reader.le16();
    if (!isFrame || length > kLongestFrame) return drop(1);
    if (reader.remaining() < length) return false;
    const std::string frame(asText(reader.take(length)));
    drop(kFrameHeader + length);
    inJob_ = frame.starts_with(kBjlMode);
    if (frame.starts_with(kStatusRequest)) obey(std::string_view(frame).substr(4), answer);
    return true;
}

bool VirtualCanon::takeIvecRequest(std::size_t length, std::string& answer) {
    if (pending_.size() < length) return false;
    requests_.emplace_back("IVEC");
    answer += ivecReply(fields("BST,CIR,DWS"));
    return drop(length);
}

bool VirtualCanon::takeJobLine() {
    constexpr int kInkPerCleaning = 2;
    const auto end = pending_.find('\n');
    if (end == std::string::npos) return false;
    const std::string line = pending_.substr(0, end);
    inJob_ = line != "BJLEND";
    if (line == "@TestPrint=NozzleCheck") jobs_.emplace_back("nozzle check");
    if (line == "@CLEANING=1ALL") {
        jobs_.emplace_back("cleaning");
        const int used = setup_.cleaningUsesInk ? kInkPerCleaning : 0;
        for (CanonInk& ink : setup_.inks) ink.level -= std::clamp(ink.level, 0, used);
    }
    return drop(end + 1);
}

void VirtualCanon::obey(std::string_view text, std::string& answer) {
    requests_.emplace_back(text);
    const auto names = textBetween(text, "SSR=", ';');
    if (!setup_.ivec && names && *names != "DF") answer += plainReply(fields(*names));
}

std::string VirtualCanon::fields(std::string_view names) const {
    std::string all;
    while (!names.empty()) {
        const std::string_view name = names.substr(0, names.find(','));
        all += field(name);
        names.remove_prefix(std::min(names.size(), name.size() + 1));
    }
    return all;
}

std::string VirtualCanon::field(std::string_view name) const {
    const std::string tag = std::string(name) + ":";
    if (name == "BST") return tag + setup_.status + ";";
    if (name == "DWS") return tag + setup_.warnings + ";";
    if (name == "CIR") return tag + inkField() + ";";
    return setup_.fillers ? tag + "0000,0000,0000,0000;" : "";
}

std::string VirtualCanon::inkField() const {
    std::string all;
    for (const CanonInk& ink : setup_.inks) {
        const std::string level = ink.level < 0 ? "UK" : std::to_string(ink.level);
        all += (all.empty() ? "" : ",") + ink.name + "=" + level;
    }
    return all;
}

std::vector<std::string> VirtualCanon::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<std::string> VirtualCanon::jobs() const {
    const std::lock_guard lock(mutex_);
    return jobs_;
}

}  // namespace tintoral::test
