// The local print queues' PPD files, searched for the model and for the picture that stands for it.
//
// PPD files are written by installers of many makers and are taken as foreign: see the limits
// below. Of each file the first 100 lines count; in them
//
//   *ModelName: "MODEL"             gives modelname
//   *APPrinterIconPath: "PATH"      gives iconPath
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tintoral {

struct IconPathEntry {
    std::string queuename;  // the file's name
    std::optional<std::string> modelname;
    std::optional<std::string> iconPath;
    std::string path;
};

// One entry per file of the folder, whatever it is; a value that cannot be had is absent. At most
// 1000 files are looked at, and the first 32 KiB of each (100 lines of 255 characters, the longest
// that the PPD format allows, fit in). Nothing that is not a regular file is read. Empty when the
// folder cannot be listed.
std::vector<IconPathEntry> makeIconPathTable(const std::filesystem::path& folder = "/etc/cups/ppd");

// Fills in what the lines of a PPD file say; of several lines the last one counts. Values are
// cleaned (cleanText), so a file in another encoding than UTF-8 does no harm.
void readPpdLines(std::string_view ppd, IconPathEntry& entry);

// The text between the first two double quotes; nothing when there are fewer than two.
std::optional<std::string> stripDoubleQuotes(std::string_view text);

}  // namespace tintoral
