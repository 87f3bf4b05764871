// A Canon printer without paper: hears its extended commands, BJL jobs and, where it speaks IVEC,
// the XML request as bytes, answers status requests and writes down its jobs. It knows nothing of
// sockets; give its two functions to a TcpPeer, or call them from any other transport.
//
//   hears                                                      answers
//   ESC "[K" frame with "SSR=" and fields, but for "DF"        length, and each field asked for
//   358 NULs, which is what the program sends, or XML (IVEC)   an XML document with "BST:", "CIR:"
//                                                              and "DWS:"
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/byte_reader.h"

namespace tintoral::test {

// An ink as "CIR:" names it; a negative level is "UK".
struct CanonInk {
    std::string name;
    int level = 100;
};

struct CanonSetup {
    bool ivec = false;
    std::vector<CanonInk> inks{{"PBK", 75}, {"BK", 40}, {"M", 62}, {"C", -1}, {"Y", 18}};
    std::string status = "00";     // of "BST:"
    std::string warnings = "NO";   // of "DWS:"
    bool fillers = true;           // fields that say nothing take up the reply's first 256 bytes
    bool cleaningUsesInk = false;  // each cleaning takes 2 percent of every ink
};

class VirtualCanon {
  public:
    explicit VirtualCanon(CanonSetup setup = {}) : setup_(std::move(setup)) {}

    // A new connection: half a command left over from the one before is forgotten.
    void connected();

    // Takes bytes as they come, in pieces of any size. Result: what the printer answers to them.
    std::vector<std::uint8_t> onReceive(Bytes bytes);

    // The status requests heard ("SSR=...;", or "IVEC"), and the jobs done: "cleaning", "nozzle
    // check".
    std::vector<std::string> requests() const;
    std::vector<std::string> jobs() const;

  private:
    bool step(std::string& answer);
    bool drop(std::size_t count);
    bool takeFrame(std::string& answer);
    bool takeIvecRequest(std::size_t length, std::string& answer);
    bool takeJobLine();
    void obey(std::string_view text, std::string& answer);
    std::string fields(std::string_view names) const;
    std::string field(std::string_view name) const;
    std::string inkField() const;

    mutable std::mutex mutex_;
    CanonSetup setup_;
    std::string pending_;  // heard, not yet understood
    bool inJob_ = false;
    std::vector<std::string> requests_;
    std::vector<std::string> jobs_;
};

}  // namespace tintoral::test
