// An Epson printer without paper: hears remote-mode commands as bytes, answers status inquiries and
// writes down its jobs. It knows nothing of sockets; give its two functions to a TcpPeer, or call
// them from any other transport.
//
//   variant   what it hears in remote mode        answered when replies[variant] says so
//   0         "IQ" 01
//   1         "ST" 00 01
//   2         "ST" 00 11
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "support/byte_reader.h"

namespace tintoral::test {

enum class EpsonReply { None, Binary, Text, Laser };

// An ink as the binary reply describes it; the colour code is Epson's (0 black, 1 cyan, 2 magenta,
// 3 yellow, 4 light cyan, 5 light magenta, ...), the level in percent.
struct EpsonInk {
    std::uint8_t colorCode = 0;
    int level = 100;
};

struct EpsonSetup {
    std::array<EpsonReply, 3> replies{EpsonReply::None, EpsonReply::None, EpsonReply::Binary};
    std::vector<EpsonInk> inks{{0, 60}, {1, 42}, {2, 31}, {3, 80}};
    int status = 4;                // the number of field 01 and of "ST:"; 4 is idle
    int laserCode = 1000;          // the code of a laser reply; 1000 is idle
    bool cleaningUsesInk = false;  // each cleaning takes 2 percent of every ink
};

class VirtualEpson {
  public:
    explicit VirtualEpson(EpsonSetup setup = {}) : setup_(std::move(setup)) {}

    // A new connection: half a command left over from the one before is forgotten.
    void connected();

    // Takes bytes as they come, in pieces of any size. Result: what the printer answers to them.
    std::vector<std::uint8_t> onReceive(Bytes bytes);

    // Everything heard so far (at most 64 KiB), the commands obeyed in remote mode as their two
    // letters, and the jobs done: "cleaning", "nozzle check 00", "nozzle check 10" (the pattern).
    std::string heard() const;
    std::string commands() const;
    std::vector<std::string> jobs() const;

    std::vector<EpsonInk> inks() const;
    void change(const EpsonSetup& setup);

  private:
    bool step(std::string& answer);
    bool enterRemoteMode();
    void obey(std::string_view letters, Bytes argument, std::string& answer);
    void clean();
    std::string statusReply(std::size_t variant) const;

    mutable std::mutex mutex_;
    EpsonSetup setup_;
    std::string pending_;  // heard, not yet understood
    bool remote_ = false;
    std::string heard_;
    std::string commands_;
    std::vector<std::string> jobs_;
};

}  // namespace tintoral::test
