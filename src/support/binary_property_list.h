// The binary format of property lists, version "00".
//
//   "bplist00"      8 bytes
//   objects         a marker each, then what the table below says; numbers are big-endian
//   offset table    for each object, where it begins in the file
//   trailer         32 bytes: 6 unused, size of an offset, size of a reference (1 byte each), count
//                   of objects, index of the root, position of the offset table (8 bytes each)
//
//   marker  object       content                  marker  object      content
//   00      null         -                        4n      data        n bytes
//   08, 09  false, true  -                        5n      text        n bytes of ASCII
//   1n      integer      2^n bytes                6n      text        n units of UTF-16
//   2n      real         2^n bytes, IEEE 754      8n      UID         n + 1 bytes
//   33      date         seconds since 2001       An      array       n references
//                        as 8 bytes of real       Dn      dictionary  n references to keys, then n
//                                                             to values
//
// An n of 15 in the last six but UID means that an integer object with the count follows. An object
// may be referred to any number of times. Integers of 1, 2 and 4 bytes have no sign.
//
// A file is foreign: every position, size and count is checked against what is there, and the
// values built are bounded by the size of the file, however its references multiply them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/property_list.h"

namespace tintoral {

// Whether `content` begins like one; it may yet be damaged.
bool isBinaryPropertyList(std::string_view content);

// The property list, or nothing when it is damaged, nests deeper than kPropertyListLevels (as one
// that contains itself does), or would take more memory than files of its size do. Dates outside
// the years 1 to 9999 are moved to the nearer end, and what is no type of Value (null, UID) is an
// empty text.
std::optional<Value> parseBinaryPropertyList(std::string_view content);

// The last item of the root array; the others are not looked at. Nothing also when the root is no
// array or an empty one.
std::optional<Value> parseLastItemOfBinary(std::string_view content);

// What is written once when it occurs again: texts up to so many bytes, and arrays of up to so many
// numbers, flags, dates and such texts, equal to the shared one before them. A reader that allows
// for it can bound by the size of a file what a reference multiplies.
inline constexpr std::size_t kLongestSharedText = 64;
inline constexpr std::size_t kLargestSharedArray = 24;

// The property list in the binary format. Texts pass storableText().
std::string formatBinaryPropertyList(const Value& root);

}  // namespace tintoral
