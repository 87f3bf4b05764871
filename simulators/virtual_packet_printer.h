// What a D4 and an MLC printer have in common, as a machine over bytes: packets, credit and bad
// habits. It knows nothing of sockets: give onReceive() to a TcpPeer, or use it as a USB printer
// with PrinterStream.
#pragma once

#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "simulators/hex_bytes.h"
#include "support/byte_reader.h"

namespace tintoral::test {

enum class CreditHabit {
    Grants,           // one packet for each request
    Never,            // answers requests with 0
    ByReverseCredit,  // grants in a transaction of its own, then answers the request with 0
};

// The bad habits name the command that they concern.
struct PacketHabits {
    CreditHabit credit = CreditHabit::Grants;
    std::uint16_t creditOnOpen = 0;
    std::uint16_t dataCreditField = 0;                   // credit and control byte of its data
    std::optional<std::uint8_t> refuses = std::nullopt;  // replies with result 1
    std::optional<std::uint8_t> errorTo = std::nullopt;  // replies with an Error packet
    std::optional<std::uint8_t> wrongTo = std::nullopt;  // replies as to another command
    std::optional<std::uint8_t> lateTo = std::nullopt;   // replies when the next packet comes
    int packetsUntilSilent = std::numeric_limits<int>::max();
};

class VirtualPacketPrinter {
  public:
    virtual ~VirtualPacketPrinter() = default;

    // Takes bytes as they come, in pieces of any size. Result: the packets that answer them; in one
    // piece from onReceive().
    std::vector<ByteVector> transfersFor(Bytes heard);
    ByteVector onReceive(Bytes heard);

    const PacketHabits& habits() const { return habits_; }

  protected:
    explicit VirtualPacketPrinter(PacketHabits habits) : habits_(habits) {}

    // Takes what is no packet from the start of `heard`; true when a packet may follow.
    virtual bool takeText(std::string& heard) = 0;
    virtual void onTransaction(std::uint8_t command, Bytes arguments) = 0;
    virtual void onData(std::uint8_t socket, Bytes data) = 0;

    void say(ByteVector packet);
    void transaction(std::uint8_t headerCredit, const ByteVector& payload);
    void reply(std::uint8_t headerCredit, std::uint8_t command, const ByteVector& fields);
    void error();
    void queueData(std::uint8_t socket, const ByteVector& payload);
    void addReadCredit(std::uint16_t credit);

  private:
    bool takePacket();
    void onPacket(Bytes packet);
    void sendData();

    PacketHabits habits_;
    std::string heard_;
    std::vector<ByteVector> answer_;
    std::optional<ByteVector> late_;
    std::deque<ByteVector> data_;
    unsigned readCredit_ = 0;
};

}  // namespace tintoral::test
