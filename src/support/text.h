// Text from outside made fit to show and to store, and comparisons that do not depend on the
// locale.
#pragma once

#include <string>
#include <string_view>

namespace tintoral {

// The text as valid UTF-8 without anything that could steer a terminal, a log line or a label:
// control characters (U+0000-001F, U+007F-009F), line and paragraph separators and bidirectional
// overrides are dropped. A byte that is not part of valid UTF-8 is read as ISO 8859-1, as many
// printers write it; a character cut in two by the end of the text is dropped.
std::string cleanText(std::string_view text);

// As cleanText(), but nothing is dropped, so that two names that differ stay different: a character
// that could do harm is spelt out ("<U+0007>"), and a byte of a character that is cut off is read
// as ISO 8859-1 too. For names that identify something.
std::string spelledOutText(std::string_view text);

// The text as property lists keep it: line breaks and tabs stay, and where it holds anything else
// that cleanText() would drop, or is no valid UTF-8, it is cleaned of all that.
std::string storableText(const std::string& text);

// UTF-8 in UTF-16 and back. Bytes that are no valid UTF-8 are read as by cleanText(); half a
// surrogate pair becomes U+FFFD.
std::u16string utf16FromUtf8(std::string_view text);
std::string utf8FromUtf16(std::u16string_view text);

// ASCII letters compare without regard to case; all other bytes compare as they are.
bool equalsIgnoringCase(std::string_view a, std::string_view b);
bool startsWithIgnoringCase(std::string_view text, std::string_view prefix);

// The index of the first occurrence, or npos. An empty needle is found at 0.
std::size_t findIgnoringCase(std::string_view text, std::string_view needle);
bool containsIgnoringCase(std::string_view text, std::string_view needle);

}  // namespace tintoral
