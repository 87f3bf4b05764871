// Property lists: the values that the program keeps in files, and the files themselves.
//
// Two kinds of file are read: those that this program wrote (user defaults, ink histories) and the
// model table that it ships. Both may have been damaged or edited since, so a typed getter yields
// nothing for a key that is absent or holds another type, and reading never trusts a size or a
// depth. Two formats are read, told apart by their first bytes: XML, and the binary format
// (support/binary_property_list.h), which is many times faster for large files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "support/clock.h"

namespace tintoral {

class Value;
using Array = std::vector<Value>;
using Data = std::vector<std::uint8_t>;

// A string-keyed dictionary, kept sorted by key. Keys that the program does not know survive a load
// and a save.
class Dictionary {
  public:
    using Entry = std::pair<std::string, Value>;

    Dictionary() = default;
    Dictionary(std::initializer_list<Entry> entries);
    // Of entries that share a key the last one counts.
    explicit Dictionary(std::vector<Entry> entries);

    // The value under `key`, or null. The pointer is good until the dictionary changes.
    const Value* find(std::string_view key) const;
    Value* find(std::string_view key);
    bool contains(std::string_view key) const { return find(key) != nullptr; }

    // The value under `key` as the named type; empty (0, null) when it is absent or of another
    // type.
    std::string text(std::string_view key) const;
    std::optional<std::int64_t> integer(std::string_view key) const;
    std::optional<Date> date(std::string_view key) const;
    const Array* array(std::string_view key) const;
    const Dictionary* dictionary(std::string_view key) const;

    // An array of strings; an element of another type counts as an empty string, so that positions
    // hold. Nothing when there is no array.
    std::optional<std::vector<std::string>> texts(std::string_view key) const;

    void set(std::string_view key, Value value);
    void remove(std::string_view key);

    std::size_t size() const;
    bool empty() const { return size() == 0; }
    std::vector<Entry>::const_iterator begin() const;
    std::vector<Entry>::const_iterator end() const;

    friend bool operator==(const Dictionary&, const Dictionary&);

  private:
    std::vector<Entry>::const_iterator position(std::string_view key) const;

    std::vector<Entry> entries_;
};

class Value {
  public:
    using Storage =
        std::variant<std::string, std::int64_t, double, bool, Date, Data, Array, Dictionary>;

    Value() = default;
    Value(std::string text) : storage_(std::move(text)) {}
    Value(std::string_view text) : storage_(std::string(text)) {}
    Value(const char* text) : storage_(std::string(text)) {}
    Value(std::int64_t number) : storage_(number) {}
    Value(int number) : storage_(std::int64_t{number}) {}
    Value(double number) : storage_(number) {}
    Value(bool flag) : storage_(flag) {}
    Value(Date date) : storage_(date) {}
    Value(Data data) : storage_(std::move(data)) {}
    Value(Array array) : storage_(std::move(array)) {}
    Value(Dictionary dictionary) : storage_(std::move(dictionary)) {}
    Value(const std::vector<std::string>& texts);

    // The value as a T of Storage, or null when it is of another type.
    template <typename T>
    const T* as() const {
        return std::get_if<T>(&storage_);
    }
    template <typename T>
    T* as() {
        return std::get_if<T>(&storage_);
    }
    const Storage& storage() const { return storage_; }

    friend bool operator==(const Value&, const Value&) = default;

  private:
    Storage storage_;
};

// How deep arrays and dictionaries may nest in a file.
inline constexpr int kPropertyListLevels = 64;

// The property list that `content` holds in either format, or nothing when it is damaged or nested
// deeper.
std::optional<Value> parsePropertyList(std::string_view content);

// The last item of the array that `content` holds, in the binary format without reading the others;
// nothing when it is damaged, no array or an empty one.
std::optional<Value> parseLastItem(std::string_view content);

// The property list as XML. Texts with bytes that XML cannot hold are written without them
// (cleanText). Dates outside 1932 to 2069 are moved to the nearer end. Empty when memory runs out.
std::string formatPropertyList(const Value& root);

// OutOfReach: there are no descriptors or no memory left to read it with; it may well be whole.
enum class FileState { Loaded, Absent, OutOfReach, Unreadable, Damaged };

struct PropertyListFile {
    FileState state = FileState::Absent;
    Value root;          // meaningful when Loaded
    std::string reason;  // one line for the person, when there is a file and it is not Loaded
};

// Reads a property list file of at most 64 MiB. Never waits on a file that is not a regular one.
PropertyListFile readPropertyListFile(const std::filesystem::path& path);

// parseLastItem() of such a file; nothing also when it is absent or cannot be read.
std::optional<Value> readLastItemOfFile(const std::filesystem::path& path);

enum class PropertyListFormat { Xml, Binary };

// Writes the file through replaceFile(); the same errors and the same `temporaryFolder`.
std::error_code writePropertyListFile(const std::filesystem::path& path, const Value& root,
                                      const std::filesystem::path& temporaryFolder = {},
                                      PropertyListFormat format = PropertyListFormat::Xml);

// Renames a damaged file to its name plus ".damaged" (".damaged-2" and so on when that is taken),
// so that nothing in it is lost when a new one is written. It stays in its folder, or goes to
// `folder` on the same file system, which is made when missing. The new path, or an empty one when
// the file could not be renamed and is still where it was.
std::filesystem::path keepAside(const std::filesystem::path& path,
                                const std::filesystem::path& folder = {});

}  // namespace tintoral
