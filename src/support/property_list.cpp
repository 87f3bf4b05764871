#include "support/property_list.h"

#include <plist/plist.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>

#include "support/binary_property_list.h"
#include "support/file_read.h"
#include "support/file_replace.h"
#include "support/folders.h"
#include "support/text.h"
#include "support/xml_nesting.h"

namespace tintoral {
namespace {

constexpr std::size_t kMaximumFileSize = 64 << 20;
constexpr Date kLibraryEpoch = std::chrono::sys_days{std::chrono::year{2001} / 1 / 1};

struct PlistDeleter {
    void operator()(void* node) const { plist_free(node); }
};
struct MallocDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;
template <typename T>
using MallocPtr = std::unique_ptr<T, MallocDeleter>;

bool keyLess(const Dictionary::Entry& a, const Dictionary::Entry& b) {
    return a.first < b.first;
}

// From the library's nodes.
Value fromNode(plist_t node);

Value textFromNode(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text ? Value(std::string_view(text, length)) : Value();
}

Value integerFromNode(plist_t node) {
    std::uint64_t number = 0;  // the library hands out negative numbers in two's complement
    plist_get_uint_val(node, &number);
    return static_cast<std::int64_t>(number);
}

Value realFromNode(plist_t node) {
    double number = 0;
    plist_get_real_val(node, &number);
    return number;
}

Value flagFromNode(plist_t node) {
    std::uint8_t flag = 0;
    plist_get_bool_val(node, &flag);
    return flag != 0;
}

// A date outside 1932 to 2069, which the library hands out in its binary format alone.
Value distantDateFromNode(plist_t node) {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(node, &bytes, &size);
    const MallocPtr<char> owner(bytes);
    return parseBinaryPropertyList({bytes, size}).value_or(Value(kLibraryEpoch));
}

Value dateFromNode(plist_t node) {
    using Limits = std::numeric_limits<std::int32_t>;
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    if (seconds == Limits::min() || seconds == Limits::max()) return distantDateFromNode(node);
    return kLibraryEpoch + std::chrono::seconds(seconds);
}

Value dataFromNode(plist_t node) {
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return Data(bytes, bytes + (bytes ? length : 0));
}

Value arrayFromNode(plist_t node) {
    Array array;
    plist_array_iter rawIterator = nullptr;
    plist_array_new_iter(node, &rawIterator);
    const MallocPtr<void> iterator(rawIterator);
    for (;;) {
        plist_t item = nullptr;
        plist_array_next_item(node, iterator.get(), &item);
        if (!item) return array;
        array.push_back(fromNode(item));
    }
}

Value dictionaryFromNode(plist_t node) {
    std::vector<Dictionary::Entry> entries;
    plist_dict_iter rawIterator = nullptr;
    plist_dict_new_iter(node, &rawIterator);
    const MallocPtr<void> iterator(rawIterator);
    for (;;) {
        char* rawKey = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator.get(), &rawKey, &item);
        const MallocPtr<char> key(rawKey);
        if (!item) return Dictionary(std::move(entries));
        entries.emplace_back(key ? key.get() : "", fromNode(item));
    }
}

Value fromNode(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_STRING:
            return textFromNode(node);
        case PLIST_UINT:
            return integerFromNode(node);
        case PLIST_REAL:
            return realFromNode(node);
        case PLIST_BOOLEAN:
            return flagFromNode(node);
        case PLIST_DATE:
            return dateFromNode(node);
        case PLIST_DATA:
            return dataFromNode(node);
        case PLIST_ARRAY:
            return arrayFromNode(node);
        case PLIST_DICT:
            return dictionaryFromNode(node);
        default:
            return {};
    }
}

struct NodeBuilder {
    plist_t operator()(const std::string& text) const {
        return plist_new_string(storableText(text).c_str());
    }
#ifdef TINTORAL_PLIST_HAS_SIGNED_INTEGERS
    plist_t operator()(std::int64_t number) const {
        return plist_new_int(number);
    }
#else
    plist_t operator()(std::int64_t number) const {
        return plist_new_uint(static_cast<std::uint64_t>(number));
    }
#endif
    plist_t operator()(double number) const {
        return plist_new_real(number);
    }
    plist_t operator()(bool flag) const {
        return plist_new_bool(flag ? 1 : 0);
    }
    plist_t operator()(Date date) const {
        using Limits = std::numeric_limits<std::int32_t>;
        const std::int64_t seconds = (date - kLibraryEpoch).count();
        return plist_new_date(static_cast<std::int32_t>(
                                  std::clamp<std::int64_t>(seconds, Limits::min(), Limits::max())),
                              0);
    }
    plist_t operator()(const Data& data) const {
        return plist_new_data(reinterpret_cast<const char*>(data.data()), data.size());
    }
    plist_t operator()(const Array& array) const {
        plist_t node = plist_new_array();
        for (const Value& item : array)
            plist_array_append_item(node, std::visit(*this, item.storage()));
        return node;
    }
    plist_t operator()(const Dictionary& dictionary) const {
        plist_t node = plist_new_dict();
        for (const auto& [key, value] : dictionary) {
            plist_dict_set_item(node, storableText(key).c_str(),
                                std::visit(*this, value.storage()));
        }
        return node;
    }
};

std::optional<Value> parseXml(std::string_view xml) {
    if (!nestsWithin(xml, kPropertyListLevels)) return std::nullopt;
    plist_t root = nullptr;
    plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &root);
    const PlistPtr owner(root);
    return root ? std::optional(fromNode(root)) : std::nullopt;
}

bool isForLackOfMeans(std::error_code error) {
    return error == std::errc::too_many_files_open || error == std::errc::not_enough_memory ||
           error == std::errc::too_many_files_open_in_system;
}

PropertyListFile failure(FileState state, const std::filesystem::path& path, std::string_view why) {
    return {state, {}, path.string() + ": " + std::string(why)};
}

}  // namespace

Dictionary::Dictionary(std::initializer_list<Entry> entries)
    : Dictionary(std::vector<Entry>(entries)) {}

Dictionary::Dictionary(std::vector<Entry> entries) : entries_(std::move(entries)) {
    const auto notLess = [](const Entry& a, const Entry& b) { return a.first >= b.first; };
    if (std::ranges::adjacent_find(entries_, notLess) == entries_.end()) return;  // as files are
    std::ranges::reverse(entries_);  // so that the last of equal keys is the one that stays
    std::ranges::stable_sort(entries_, keyLess);
    const auto sameKey = [](const Entry& a, const Entry& b) { return a.first == b.first; };
    entries_.erase(std::unique(entries_.begin(), entries_.end(), sameKey), entries_.end());
}

std::vector<Dictionary::Entry>::const_iterator Dictionary::position(std::string_view key) const {
    return std::ranges::lower_bound(entries_, key, std::less<>(), &Entry::first);
}

const Value* Dictionary::find(std::string_view key) const {
    const auto at = position(key);
    return at != entries_.end() && at->first == key ? &at->second : nullptr;
}

Value* Dictionary::find(std::string_view key) {
    return const_cast<Value*>(std::as_const(*this).find(key));
}

std::string Dictionary::text(std::string_view key) const {
    const Value* value = find(key);
    const auto* text = value ? value->as<std::string>() : nullptr;
    return text ? *text : std::string();
}

std::optional<std::int64_t> Dictionary::integer(std::string_view key) const {
    const Value* value = find(key);
    const auto* number = value ? value->as<std::int64_t>() : nullptr;
    return number ? std::optional(*number) : std::nullopt;
}

std::optional<Date> Dictionary::date(std::string_view key) const {
    const Value* value = find(key);
    const auto* date = value ? value->as<Date>() : nullptr;
    return date ? std::optional(*date) : std::nullopt;
}

const Array* Dictionary::array(std::string_view key) const {
    const Value* value = find(key);
    return value ? value->as<Array>() : nullptr;
}

const Dictionary* Dictionary::dictionary(std::string_view key) const {
    const Value* value = find(key);
    return value ? value->as<Dictionary>() : nullptr;
}

std::optional<std::vector<std::string>> Dictionary::texts(std::string_view key) const {
    const Array* items = array(key);
    if (!items) return std::nullopt;
    std::vector<std::string> texts;
    for (const Value& item : *items) {
        const auto* text = item.as<std::string>();
        texts.push_back(text ? *text : std::string());
    }
    return texts;
}

void Dictionary::set(std::string_view key, Value value) {
    if (Value* existing = find(key)) {
        *existing = std::move(value);
    } else {
        entries_.emplace(position(key), std::string(key), std::move(value));
    }
}

void Dictionary::remove(std::string_view key) {
    const auto at = position(key);
    if (at != entries_.end() && at->first == key) entries_.erase(at);
}

std::size_t Dictionary::size() const {
    return entries_.size();
}
std::vector<Dictionary::Entry>::const_iterator Dictionary::begin() const {
    return entries_.begin();
}
std::vector<Dictionary::Entry>::const_iterator Dictionary::end() const {
    return entries_.end();
}

bool operator==(const Dictionary& a, const Dictionary& b) {
    return a.entries_ == b.entries_;
}

Value::Value(const std::vector<std::string>& texts) : storage_(Array(texts.begin(), texts.end())) {}

std::optional<Value> parsePropertyList(std::string_view content) {
    return isBinaryPropertyList(content) ? parseBinaryPropertyList(content) : parseXml(content);
}

std::optional<Value> parseLastItem(std::string_view content) {
    if (isBinaryPropertyList(content)) return parseLastItemOfBinary(content);
    auto root = parseXml(content);
    auto* items = root ? root->as<Array>() : nullptr;
    return items && !items->empty() ? std::optional(std::move(items->back())) : std::nullopt;
}

std::string formatPropertyList(const Value& root) {
    const PlistPtr node(std::visit(NodeBuilder(), root.storage()));
    char* rawXml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node.get(), &rawXml, &length);
    const MallocPtr<char> xml(rawXml);
    return xml ? std::string(xml.get(), length) : std::string();
}

PropertyListFile readPropertyListFile(const std::filesystem::path& path) {
    std::error_code error;
    const std::string content = readFileStart(path, kMaximumFileSize + 1, error);
    if (error == std::errc::no_such_file_or_directory) return {};
    const auto state = isForLackOfMeans(error) ? FileState::OutOfReach : FileState::Unreadable;
    if (error) return failure(state, path, error.message());
    if (content.size() > kMaximumFileSize) return failure(FileState::Damaged, path, "too large");
    auto root = parsePropertyList(content);
    if (!root) return failure(FileState::Damaged, path, "not a property list");
    return {FileState::Loaded, *std::move(root), {}};
}

std::optional<Value> readLastItemOfFile(const std::filesystem::path& path) {
    std::error_code error;
    const std::string content = readFileStart(path, kMaximumFileSize + 1, error);
    if (error || content.size() > kMaximumFileSize) return std::nullopt;
    return parseLastItem(content);
}

std::error_code writePropertyListFile(const std::filesystem::path& path, const Value& root,
                                      const std::filesystem::path& temporaryFolder,
                                      PropertyListFormat format) {
    const std::string content = format == PropertyListFormat::Binary
                                    ? formatBinaryPropertyList(root)
                                    : formatPropertyList(root);
    if (content.empty()) return std::make_error_code(std::errc::not_enough_memory);
    return replaceFile(path, content, temporaryFolder);
}

std::filesystem::path keepAside(const std::filesystem::path& path,
                                const std::filesystem::path& folder) {
    constexpr int kAttempts = 1000;
    constexpr std::size_t kLongestStem = 240;  // of the 255 bytes that a file name may have
    if (!folder.empty() && makeFolders(folder)) return {};
    const auto stem = path.filename().string().substr(0, kLongestStem) + ".damaged";
    const auto asideFolder = folder.empty() ? path.parent_path() : folder;
    for (int n = 1; n < kAttempts; ++n) {
        const auto aside = asideFolder / (n == 1 ? stem : stem + "-" + std::to_string(n));
        std::error_code error;
        if (std::filesystem::exists(std::filesystem::symlink_status(aside, error))) continue;
        std::filesystem::rename(path, aside, error);
        return error ? std::filesystem::path() : aside;
    }
    return {};
}

}  // namespace tintoral
