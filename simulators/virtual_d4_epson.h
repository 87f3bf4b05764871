// An Epson printer that speaks IEEE 1284.4 and has one service, "EPSON-CTRL" on socket 2.
//
//   text "@EJL 1284.4\n@EJL\n@EJL\n" -> packet mode -> transactions, data -> Exit -> text
//   other text is for its remote mode, which does jobs and answers nothing
//   commands as data: "st" (status), "ch" (cleaning), "nc" (nozzle check), "ei" (end)
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "simulators/virtual_epson.h"
#include "simulators/virtual_packet_printer.h"

namespace tintoral::test {

struct D4EpsonSetup {
    PacketHabits habits = {};
    bool leftInPacketMode = false;
    std::vector<EpsonInk> inks{{0, 60}, {1, 42}, {2, 31}, {3, 80}};
};

class VirtualD4Epson final : public VirtualPacketPrinter {
  public:
    explicit VirtualD4Epson(D4EpsonSetup setup = {})
        : VirtualPacketPrinter(setup.habits),
          packetMode_(setup.leftInPacketMode),
          remoteMode_(remoteModeWith(std::move(setup.inks))) {}

    bool inPacketMode() const { return packetMode_; }

    // The commands heard as data, letters only.
    const std::vector<std::string>& commands() const { return commands_; }

    // The jobs that came in remote mode.
    std::vector<std::string> jobs() const { return remoteMode_.jobs(); }

  private:
    bool takeText(std::string& heard) override;
    void onTransaction(std::uint8_t command, Bytes arguments) override;
    void onData(std::uint8_t socket, Bytes data) override;
    void onOpenChannel();
    void onCreditRequest();
    void clean();
    std::string statusReply() const;
    static EpsonSetup remoteModeWith(std::vector<EpsonInk> inks);

    bool packetMode_;
    bool revision16_ = true;
    VirtualEpson remoteMode_;  // has the inks
    std::vector<std::string> commands_;
};

}  // namespace tintoral::test
