// The model table: what is known beforehand of each printer model.
//
// A property-list dictionary from a maker-and-model name ("EPSON Stylus Photo R300") to a
// dictionary, or to the name of another entry (an alias, followed once). An entry may hold "Colors"
// (ink names in display order), "CommandType" and "options" (titles of the maintenance menu items
// that the model supports).
#pragma once

#include <filesystem>
#include <string_view>

#include "support/property_list.h"

namespace tintoral {

class ModelTable {
  public:
    ModelTable() = default;
    explicit ModelTable(Dictionary entries) : entries_(std::move(entries)) {}

    // The table in the file. One that is missing, damaged or of the wrong root type counts as
    // empty; the reason goes to standard error.
    static ModelTable load(const std::filesystem::path& path);

    // The entry for a maker-and-model name: under the name itself; else under the name cut before
    // its first " series"; else, for a name without that word, under the name with " series" behind
    // it. Null when none of these leads to a dictionary. Lives as long as the table.
    const Dictionary* find(std::string_view makerAndModel) const;

    const Dictionary& entries() const { return entries_; }

  private:
    const Dictionary* lookUp(std::string_view name) const;

    Dictionary entries_;
};

// The table that ships with the program.
std::filesystem::path modelTablePath();

}  // namespace tintoral
