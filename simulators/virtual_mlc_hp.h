// An older HP printer that speaks MLC, with PML on socket 1: it knows its model name (object
// 1.1.3.2) and one supply (2.11.1.1.6.1.1) and writes down every PML request.
#pragma once

#include <string>
#include <vector>

#include "simulators/virtual_packet_printer.h"

namespace tintoral::test {

class VirtualMlcHp final : public VirtualPacketPrinter {
  public:
    explicit VirtualMlcHp(PacketHabits habits = {}) : VirtualPacketPrinter(habits) {}

    const std::vector<ByteVector>& requests() const { return requests_; }

  private:
    bool takeText(std::string& heard) override;
    void onTransaction(std::uint8_t command, Bytes arguments) override;
    void onData(std::uint8_t socket, Bytes data) override;
    void onCreditRequest();

    std::vector<ByteVector> requests_;
};

}  // namespace tintoral::test
