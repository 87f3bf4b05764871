// Connections without a wire: the program's side of a virtual printer, and one that plays a script.
// A wait in which nothing comes takes no real time; it moves the test's clock.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "simulators/hex_bytes.h"
#include "simulators/virtual_packet_printer.h"
#include "support/test_clock.h"
#include "vendors/transport_io.h"

namespace tintoral::test {

// Transfers that wait to be read, and all that went either way. A transfer that is longer than the
// read is read on by the next one.
class QueuedStream : public ByteStream {
  public:
    explicit QueuedStream(TestClock& clock) : clock_(clock) {}

    void send(Bytes bytes) override;
    int receive(MutableBytes buffer, std::chrono::milliseconds timeout) override;

    void push(ByteVector transfer) { queue_.push_back(std::move(transfer)); }

    // "> hex" for what the program sent, "< hex" for what it received, in order, a line for each
    // transfer. The last 1000 are kept.
    std::string transcript() const;
    int sends() const { return sends_; }
    int receives() const { return receives_; }

  protected:
    virtual void onSend(Bytes) {}
    virtual void onEmpty() {}

  private:
    void note(const char* direction, Bytes bytes);

    TestClock& clock_;
    std::deque<ByteVector> queue_;
    std::deque<std::string> transcript_;
    int sends_ = 0;
    int receives_ = 0;
};

// Plays its transfers whatever it hears, and then the last one of them for ever when it `repeats`.
class ScriptedStream final : public QueuedStream {
  public:
    ScriptedStream(TestClock& clock, const std::vector<std::string>& hexTransfers,
                   bool repeats = false);

  private:
    void onEmpty() override;

    ByteVector last_;
    bool repeats_;
};

class PrinterStream final : public QueuedStream {
  public:
    PrinterStream(TestClock& clock, VirtualPacketPrinter& printer)
        : QueuedStream(clock), printer_(printer) {}

  private:
    void onSend(Bytes bytes) override;

    VirtualPacketPrinter& printer_;
};

}  // namespace tintoral::test
