// The ink history: one property-list file per printer, an array of inkDicts, oldest first.
//
// The files lie directly in "library/Application Support/Tintoral" below the home folder and bear the printer's
// "printerId" as their name. No folder is ever made out of a printer's name: an id that is no plain file name has no
// history. Files are replaced atomically and never trimmed; a damaged one is kept aside before a new one begins.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "support/property_list.h"

namespace tintoral {

// The history folder. Its parents are made by prepareHistoryFolder(), never by a reading.
std::filesystem::path historyFolder();

// Makes the folder and its parents; no error when that cannot be done (readings are then not stored).
void prepareHistoryFolder();

// Stores one update. A run of equal readings is kept as its first and last entry where their dates allow (see the
// source). False when nothing was stored.
bool saveInkReadingsForPrinterId(Dictionary inkDict, std::string_view printerId);

// The last entry of a printer's history, or nothing.
std::optional<Dictionary> lastLevelForPrinterId(std::string_view printerId);

// The command filter's way to store: appends to a history that exists and removes the middle of three equal readings.
void saveInkReadings(const Dictionary& inkDict, std::string_view printerId);

}  // namespace tintoral
