// Printer data that arrived at a base station's connection while another reply was awaited. Kept
// until the next read, under the sequence number of the message that brought it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/byte_reader.h"

namespace tintoral {

class RiousbReadCache {
  public:
    // All data together; of what is added beyond it only the part that fits is kept.
    static constexpr std::size_t kRoom = 65536;

    bool empty() const { return nodes_.empty(); }

    // Adds a node. It becomes the head when there is none, or none of a lower sequence number.
    // Otherwise it comes second, and what follows it is, as meant, only what followed the first
    // later node whose number is not lower: that node and those before it are dropped, and all of
    // them when there is no such node.
    void addReadCache(std::uint32_t sequence, Bytes data);

    // Takes from the head as much as the buffer holds; the head goes with its last byte. Result:
    // the bytes taken, 0 when the cache is empty.
    std::size_t topReadCache(MutableBytes buffer);

    // Drops the first node of that sequence number. Result: its length, 0 when there is none.
    std::size_t delReadCache(std::uint32_t sequence);
    void delAllReadCache() { nodes_.clear(); }

  private:
    struct Node {
        std::uint32_t sequence;
        std::vector<std::uint8_t> data;
    };

    std::size_t size() const;

    std::vector<Node> nodes_;
};

}  // namespace tintoral
