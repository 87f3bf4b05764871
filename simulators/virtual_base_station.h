// An AirPort base station without radio that shares one USB printer: answers requests of the
// shared-USB protocol and passes bytes to and from the printer. It knows nothing of sockets; give
// its two functions to a TcpPeer at an IPv6 address.
//
//   open        status 1 for a name that is not the printer's, else a handle
//   read        the printer's next transfer, or the part of it that was asked for; empty when there
//               is none
//   write       4 bytes, the length of the data
//   device ID   the device ID, or empty when there is none
//   close       empty
//
// A request of another handle than the open reply's has status 2.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/byte_reader.h"

namespace tintoral::test {

using Transfers = std::vector<std::vector<std::uint8_t>>;
using SharedPrinter = std::function<Transfers(Bytes)>;

struct BaseStationSetup {
    // What the printer says to bytes, in transfers.
    SharedPrinter printer = [](Bytes) { return Transfers(); };
    std::string deviceID = {};
    std::string printerName = "usb1";

    std::set<std::uint32_t> refuses = {};  // request types answered with status 3
    std::set<std::uint32_t> ignores = {};  // request types not answered
    bool emptyAcknowledgements = false;    // of writes
    bool dataBeforeAcknowledgement = false;
    bool deviceIDBeforeData = false;  // sent unasked, once a connection
    bool ignoresBytesWanted = false;  // a read gets all that there is
    std::uint32_t addedLength = 0;    // to the length of each data reply's header
    std::uint32_t openLength = 0;     // in the header of the reply to open, which has no payload
    std::uint32_t chatterType = 0;    // 100 empty messages of that type before each reply
};

// The answers of a printer in transfers of up to that many bytes.
template <typename Printer>
SharedPrinter inTransfersOf(std::size_t size, Printer& printer) {
    return [size, &printer](Bytes bytes) {
        Transfers transfers;
        const auto answer = printer.onReceive(bytes);
        for (ByteReader rest(answer); !rest.atEnd();) {
            const Bytes piece = rest.take(std::min(size, rest.remaining()));
            transfers.emplace_back(piece.begin(), piece.end());
        }
        return transfers;
    };
}
template <typename Printer>
SharedPrinter inOneTransfer(Printer& printer) {
    return inTransfersOf(65536, printer);
}

// A printer that says the same to all it hears.
SharedPrinter saying(const std::vector<std::string>& transfers);

class VirtualBaseStation {
  public:
    explicit VirtualBaseStation(BaseStationSetup setup) : setup_(std::move(setup)) {}

    // A new connection.
    void connected();

    // Takes bytes as they come, in pieces of any size. Result: the messages that answer them.
    std::vector<std::uint8_t> onReceive(Bytes bytes);

    // The requests heard since the last connection, headers with payloads, in order.
    std::vector<std::string> requests() const;

    void change(BaseStationSetup setup);

  private:
    struct Request {
        std::uint32_t type;
        std::uint32_t sequence;
        std::uint32_t handle;
        Bytes payload;
    };

    bool takeRequest(std::string& answer);
    void obey(const Request& request, std::string& answer);
    void onWrite(const Request& request, std::string& answer);
    std::string nextData(const Request& request);
    std::uint32_t statusFor(const Request& request) const;
    std::string message(std::uint32_t type, std::uint32_t sequence, std::uint32_t status,
                        std::string_view payload) const;

    mutable std::mutex mutex_;
    BaseStationSetup setup_;
    std::string pending_;  // heard, not yet understood
    std::deque<std::string> data_;
    bool deviceIDSent_ = false;
    std::vector<std::string> requests_;
};

}  // namespace tintoral::test
