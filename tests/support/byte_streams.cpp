#include "support/byte_streams.h"

#include <algorithm>

namespace tintoral::test {

void QueuedStream::note(const char* direction, Bytes bytes) {
    constexpr std::size_t kKept = 1000;
    transcript_.push_back(direction + hexOf(bytes));
    if (transcript_.size() > kKept) transcript_.pop_front();
}

void QueuedStream::send(Bytes bytes) {
    ++sends_;
    note("> ", bytes);
    onSend(bytes);
}

int QueuedStream::receive(MutableBytes buffer, std::chrono::milliseconds timeout) {
    ++receives_;
    if (queue_.empty()) onEmpty();
    if (queue_.empty()) {
        clock_.advance(timeout);
        return 0;
    }
    ByteVector& transfer = queue_.front();
    const std::size_t count = std::min(buffer.size(), transfer.size());
    std::copy_n(transfer.begin(), count, buffer.begin());
    note("< ", Bytes(buffer).first(count));
    transfer.erase(transfer.begin(), transfer.begin() + static_cast<std::ptrdiff_t>(count));
    if (transfer.empty()) queue_.pop_front();
    return static_cast<int>(count);
}

std::string QueuedStream::transcript() const {
    std::string text;
    for (const std::string& line : transcript_) text += line + "\n";
    return text;
}

ScriptedStream::ScriptedStream(TestClock& clock, const std::vector<std::string>& hexTransfers,
                               bool repeats)
    : QueuedStream(clock), repeats_(repeats) {
    for (const std::string& hex : hexTransfers) push(last_ = bytesOfHex(hex));
}

void ScriptedStream::onEmpty() {
    if (repeats_) push(last_);
}

void PrinterStream::onSend(Bytes bytes) {
    for (ByteVector& transfer : printer_.transfersFor(bytes)) push(std::move(transfer));
}

}  // namespace tintoral::test
