// The ink history: one property-list file per printer, an array of inkDicts, oldest first.
//
//   ~/library/Application Support/     temporary files while a history is replaced
//       Tintoral/ID                    the history of the printer whose "printerId" is ID
//       Tintoral damaged/              histories that could not be read, kept aside
//
// Everything in the middle folder but ".DS_Store" counts as a printer with a history, so nothing
// else is ever put there, not even by a crash. No folder is made out of a printer's name: an id
// that is no plain file name (empty, ".", "..", with a slash or a NUL, longer than 255 bytes) has
// no history. Files are replaced atomically and never trimmed. Symbolic links are followed; where
// one leads to another file system, the temporary file lies beside the file it points to.
//
// Histories are written in the binary format of property lists and read in either format, so an XML
// one is converted when it next grows. Entries that are no dictionaries (of a file that was edited
// since) are kept as they are.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/property_list.h"

namespace tintoral {

// The history folder, whether it exists or not; empty for a person without a home folder.
std::filesystem::path historyFolder();

// Makes the folder and its parents below the home folder; nothing else makes them. No error when
// that cannot be done: readings are then not stored.
void prepareHistoryFolder();

// The raw names of all that counts as a history, in no order.
std::vector<std::string> printersWithHistory();

// A printer's history; null when there is none that can be read.
std::shared_ptr<const Array> inkHistory(std::string_view printerId);

// Stores one update. A history that is damaged, of the wrong root type or unreadable is kept aside,
// with one line on standard error, and a new one begins. False when nothing was stored: no plain
// file name, no folder, a failed write (which leaves the old file whole), a bad file that cannot be
// kept aside, or one that cannot be read for lack of descriptors or memory (which stays). None of
// these is reported.
bool saveInkReadingsForPrinterId(Dictionary inkDict, std::string_view printerId);

// The last entry of a printer's history; nothing when there is none that can be read.
std::optional<Dictionary> lastLevelForPrinterId(std::string_view printerId);

// The command filter's way to store: appends to a history that exists and removes the middle of
// three equal readings. Writes nothing where there is no history, or it cannot be read.
void saveInkReadings(const Dictionary& inkDict, std::string_view printerId);

// What the two ways to store do to the entries.

// Appends the update with "Date" = now; or, where it and the last two entries are equal, moves the
// last one's "Date" to now (see the source for what is compared).
void addReading(Array& history, Dictionary inkDict, Date now);

// Appends the update as it is and removes the middle of three entries with equal sums, as often as
// there are any.
void addReadingCompacted(Array& history, const Dictionary& inkDict);

}  // namespace tintoral
