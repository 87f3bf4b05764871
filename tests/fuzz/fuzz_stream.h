// A printer that says what the fuzz input holds, whatever it hears, without any real time passing.
#pragma once

#include <algorithm>
#include <cstdlib>

#include "support/clock.h"
#include "vendors/transport_io.h"

namespace tintoral::fuzz {

class StandingClock final : public Clock {
  public:
    std::chrono::sys_time<std::chrono::milliseconds> now() override { return {}; }
    void pause(std::chrono::microseconds) override {}
};

// The input is a row of transfers, each a length byte and as many bytes; the last one may be short.
class FuzzStream final : public ByteStream {
  public:
    explicit FuzzStream(Bytes input) : input_(input) {}

    void send(Bytes bytes) override {
        if (bytes.size() > kLongestMessage) std::abort();
    }

    int receive(MutableBytes buffer, std::chrono::milliseconds) override {
        if (++receives_ > kMostReceives) std::abort();
        if (transfer_.empty())
            transfer_ = input_.take(std::min<std::size_t>(input_.u8(), input_.remaining()));
        const Bytes piece = transfer_.first(std::min(transfer_.size(), buffer.size()));
        std::ranges::copy(piece, buffer.begin());
        transfer_ = transfer_.subspan(piece.size());
        return static_cast<int>(piece.size());
    }

  private:
    static constexpr std::size_t kLongestMessage = 512;
    static constexpr int kMostReceives = 2000;

    ByteReader input_;
    Bytes transfer_;
    int receives_ = 0;
};

}  // namespace tintoral::fuzz
