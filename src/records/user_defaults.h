// The user's settings: one XML property list, held in memory and written when asked.
//
//   VT1printerTable   array of printer records
//   VT1printerId      text, the "printerId" of the selected printer
//   VT1useModelIcon   integer 0 or 1, whether the Dock icon is the model's own
//
// The file is `$XDG_CONFIG_HOME/Tintoral/Tintoral.plist` (`~/.config` where that is unset or
// relative: the XDG base directories). Keys that the program does not know survive. The
// file is replaced atomically, so two windows that write at once leave the settings of one of them,
// whole.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "support/property_list.h"

namespace tintoral {

// Where the settings are kept; empty when the person has no home folder.
std::filesystem::path userDefaultsPath();

class UserDefaults {
  public:
    // Reads the file; a missing one counts as empty. One that is damaged, of the wrong root type or
    // unreadable counts as empty too and is renamed first, so that nothing written later replaces
    // it. Where it cannot be renamed, or could not be read for lack of descriptors or memory, or
    // `file` is empty, nothing is written in this run. Each of these is one line on standard error.
    explicit UserDefaults(std::filesystem::path file = userDefaultsPath());

    // Empty (false) for a setting that is absent or of another type.
    const Array& printerTable() const;
    std::string printerId() const { return values_.text(kPrinterId); }
    bool useModelIcon() const { return values_.integer(kUseModelIcon).value_or(0) != 0; }

    void setPrinterTable(Array table) { set(kPrinterTable, std::move(table)); }
    void setPrinterId(std::string_view id) { set(kPrinterId, id); }
    void setUseModelIcon(bool use) { set(kUseModelIcon, use ? 1 : 0); }

    // Writes the settings when they have changed, making the folder (0700) when it is missing.
    // False when they could not be written: the old file stays whole, the reason goes to standard
    // error the first time, and the next call tries again.
    bool synchronize();

    // Why nothing is saved: the reason of the last synchronize() that failed, or what kept the file
    // from being used in this run. Empty while all is well.
    const std::string& saveFailure() const { return saveFailure_; }

    // Where the file lies that could not be read at start; empty when it could.
    const std::filesystem::path& keptAside() const { return keptAside_; }

  private:
    static constexpr std::string_view kPrinterTable = "VT1printerTable";
    static constexpr std::string_view kPrinterId = "VT1printerId";
    static constexpr std::string_view kUseModelIcon = "VT1useModelIcon";

    void load();
    void setAside(const PropertyListFile& file);
    void set(std::string_view key, Value value);
    void reportOnce();

    std::filesystem::path file_;  // empty: nothing is written
    Dictionary values_;
    bool changed_ = false;
    std::filesystem::path keptAside_;
    std::string saveFailure_;
    bool failureReported_ = false;
};

}  // namespace tintoral
