#include "transport/net/riousb_cache.h"

#include <algorithm>
#include <utility>

namespace tintoral {

std::size_t RiousbReadCache::size() const {
    std::size_t bytes = 0;
    for (const Node& node : nodes_) bytes += node.data.size();
    return bytes;
}

void RiousbReadCache::addReadCache(std::uint32_t sequence, Bytes data) {
    data = data.first(std::min(data.size(), kRoom - size()));
    if (data.empty()) return;
    Node node{sequence, {data.begin(), data.end()}};
    if (nodes_.empty() || nodes_.front().sequence >= sequence) {
        nodes_.insert(nodes_.begin(), std::move(node));
        return;
    }
    const auto second = nodes_.begin() + 1;
    auto later = std::find_if(second, nodes_.end(),
                              [&](const Node& other) { return other.sequence >= sequence; });
    if (later != nodes_.end()) ++later;
    // The nodes from the second one to `later` go, as meant.
    nodes_.insert(nodes_.erase(second, later), std::move(node));
}

std::size_t RiousbReadCache::topReadCache(MutableBytes buffer) {
    if (nodes_.empty()) return 0;
    std::vector<std::uint8_t>& data = nodes_.front().data;
    const std::size_t count = std::min(buffer.size(), data.size());
    const auto end = data.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(data.begin(), end, buffer.begin());
    data.erase(data.begin(), end);
    if (data.empty()) nodes_.erase(nodes_.begin());
    return count;
}

std::size_t RiousbReadCache::delReadCache(std::uint32_t sequence) {
    const auto node = std::ranges::find(nodes_, sequence, &Node::sequence);
    if (node == nodes_.end()) return 0;
    const std::size_t length = node->data.size();
    nodes_.erase(node);
    return length;
}

}  // namespace tintoral
