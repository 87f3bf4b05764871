// Exchanges of the program with peers that mean it harm. Each runs in a process of its own, so that
// what it takes of time and memory is its own, many side by side and in a lapse of time.
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
    std::string status = {};
    std::vector<int> levels = {};
};

// Where an exchange finds its peer; no two have the same.
struct Place {
    std::string ipv4;        // on the loopback interface
    std::uint16_t ipv6Port;  // at ::1
};

struct Hardship {
    std::string name;  // empty for a peer that means well
    // Sets up the peer, which answers honestly for so many times before it begins.
    std::function<std::shared_ptr<void>(const Place&, int honestAnswers)> peer;
};

struct Exchange {
    const char* name;
    double boundSeconds;  // as the program states it
    Answer honest;        // what a peer that means well tells
    std::function<Answer(const Place&)> ask;
    std::vector<Hardship> hardships;
    int honestAnswers = 0;  // each hardship begins after 0, 1, 2, 4 ... answers, no more than this
    bool mayStopEarly = false;  // a peer that is lost half-way has told the first levels
};

// Runs each exchange with each hardship and expects that it ends within its bound, takes little
// memory and tells nothing but what the honest answer tells. Prints the longest time of each.
void runAll(const std::vector<Exchange>& exchanges, std::size_t sideBySide = 48);

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

using Spoil = std::function<void(ByteVector&)>;
struct Lie {
    std::string name;
    Spoil spoil;  // puts the lie into an answer
};
std::vector<Lie> liesAbout(const LengthField& field);

}  // namespace tintoral::hostile
