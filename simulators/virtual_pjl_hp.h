// An HP printer on a raw port that answers the three requests of the diagnosis, PML inside PJL,
// with a text for each. It knows nothing of sockets; give its function to a TcpPeer.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "support/byte_reader.h"
#include "vendors/hp.h"

namespace tintoral::test {

class VirtualPjlHp {
  public:
    // The model's name and two supplies, as it says them.
    using Texts = std::array<std::string, kHPDiagnosticRequests>;
    explicit VirtualPjlHp(Texts texts) : texts_(std::move(texts)) {}

    // Takes a whole request. Result: its answer, empty to anything else.
    std::vector<std::uint8_t> onReceive(Bytes heard) const;

  private:
    Texts texts_;
};

}  // namespace tintoral::test
