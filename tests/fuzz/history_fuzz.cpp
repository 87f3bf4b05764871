// Any array that a history file may hold: storing adds at most one entry, compaction never removes
// the ends.
#include <cstdlib>

#include "history/ink_history_store.h"
#include "support/byte_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    const auto root = parsePropertyList(asText(Bytes(data, size)));
    const auto* history = root ? root->as<Array>() : nullptr;
    if (!history || history->empty()) return 0;
    const auto* last = history->back().as<Dictionary>();
    const Dictionary reading = last ? *last : Dictionary{{"Black", 50}};

    Array stored = *history;
    addReading(stored, reading, Date());
    if (stored.size() < history->size() || stored.size() > history->size() + 1) std::abort();
    Array compacted = *history;
    addReadingCompacted(compacted, reading);
    if (compacted.size() < 2 || compacted.size() > history->size() + 1) std::abort();
    const Value added(reading);
    // Written so that a reading that equals nothing (a real that is no number) does not count as
    // lost.
    if (reading == reading && compacted.back() != added) std::abort();
    return 0;
}
