// Runs exchanges of the program with peers that mean it harm: each case in a process of its own, so
// that what it takes of time and memory is its own, many side by side, in a lapse of time.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "records/printer_record.h"

namespace tintoral::hostile {

using ByteVector = std::vector<std::uint8_t>;

// What the program made of a peer. Without levels the result is 0 or negative.
struct Answer {
    int result = 0;
    std::string status = "";
    std::vector<int> levels = {};
};

// Asks the printer of a record as an update does.
Answer askRecord(PrinterRecord record);

// Bytes that mean nothing; the same each time.
ByteVector noise(std::size_t size);

// The number that tells how long an answer is.
struct LengthField {
    std::size_t offset;
    std::size_t size;
    bool lowByteFirst = false;
};

// Puts `value` where the answer tells its length, and such values.
std::function<void(ByteVector&)> lyingBy(const LengthField& field, std::uint64_t value);
inline constexpr std::uint64_t kLies[] = {0, 1, 0x10, 0x7FFFFFFF, 0x80000000, ~0ULL};

// Where a case finds its peer; no two cases share one.
struct Place {
    std::string ipv4;        // on the loopback interface
    std::uint16_t ipv6Port;  // at ::1
};

struct Case {
    std::string exchange;
    std::string hardship;  // empty for a peer that means well, whose answer must be whole
    double boundSeconds;   // what the program states
    Answer honest;         // what a well-meaning peer tells
    std::function<std::shared_ptr<void>(const Place&)> peer;  // on threads of its own
    std::function<Answer(const Place&)> ask;
    bool mayStopEarly = false;  // a peer that is lost half-way has told the first levels
};

// Runs all cases and expects of each: it ends within its bound, takes little memory, and tells
// nothing that the honest answer does not. Prints the longest time of each exchange.
void runAll(const std::vector<Case>& cases, std::size_t sideBySide = 32);

}  // namespace tintoral::hostile
