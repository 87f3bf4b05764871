#include "diagnostics/report.h"

#include <algorithm>
#include <ctime>
#include <variant>

#include "diagnostics/serial_numbers.h"
#include "support/fixed_text.h"
#include "support/text.h"

namespace tintoral {
namespace {

constexpr std::size_t kLongestPathInMail = 256;

std::string dateText(Date date) {
    const std::time_t seconds = date.time_since_epoch().count();
    std::tm parts{};
    char text[64] = "";
    if (::gmtime_r(&seconds, &parts) != nullptr)
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &parts);
    return text;
}

std::string valueText(const Value& value);

std::string arrayText(const Array& array) {
    std::string text;
    for (const Value& value : array) text += (text.empty() ? "" : ", ") + valueText(value);
    return "[" + text + "]";
}

std::string dictionaryText(const Dictionary& dictionary) {
    std::string text;
    for (const auto& [key, value] : dictionary) {
        text += (text.empty() ? "" : ", ") + cleanText(key) + ": " + valueText(value);
    }
    return "{" + text + "}";
}

struct ValueWriter {
    std::string operator()(const std::string& text) const { return cleanText(text); }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return std::to_string(number); }
    std::string operator()(bool flag) const { return flag ? "true" : "false"; }
    std::string operator()(Date date) const { return dateText(date); }
    std::string operator()(const Data& data) const {
        return std::to_string(data.size()) + " bytes";
    }
    std::string operator()(const Array& array) const { return arrayText(array); }
    std::string operator()(const Dictionary& inner) const { return dictionaryText(inner); }
};

// On one line, whatever the value.
std::string valueText(const Value& value) {
    return std::visit(ValueWriter{}, value.storage());
}

std::string headText(const ReportHead& head, const PrinterRecord& printer) {
    std::string text = "Tintoral " + cleanText(head.programVersion) + "\n";
    text += "System: " + cleanText(head.systemVersion) + "\n";
    text += "Time: " + dateText(head.time) + "\n";
    text += "Printer:\n";
    for (const auto& [key, value] : printer) {
        text += "  " + cleanText(key) + ": " + valueText(value) + "\n";
    }
    return text;
}

// The longest beginning of at most `size` bytes that does not end inside a character.
std::string_view cutBetweenCharacters(std::string_view text, std::size_t size) {
    if (text.size() <= size) return text;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) --size;
    return text.substr(0, size);
}

bool isUnreserved(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

void appendEncoded(std::string& url, std::string_view text, std::string_view alsoAllowed = "") {
    for (const char c : text) {
        if (isUnreserved(c) || alsoAllowed.find(c) != std::string_view::npos) {
            url += c;
            continue;
        }
        FixedText<8> code;
        code.format("%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
        url += code.view();
    }
}

std::string withMailLineBreaks(std::string_view text) {
    std::string mail;
    for (const char c : text) {
        if (c == '\r') continue;
        if (c == '\n') mail += '\r';
        mail += c;
    }
    return mail;
}

}  // namespace

std::string diagnosticReport(const ReportHead& head, const PrinterRecord& printer,
                             std::string_view phases, SerialNumbers serialNumbers) {
    const bool hidden = serialNumbers == SerialNumbers::Hidden;
    PrinterRecord shown = printer;
    // A short serial number would not be found everywhere; here it is known for one.
    if (hidden && printer.contains(keys::serialID)) shown.set(keys::serialID, "(left out)");
    std::string report = headText(head, shown).append(phases);
    if (hidden) hideSerialNumbers(report, cleanText(printer.text(keys::serialID)));
    return report;
}

std::string mailBody(std::string_view report, const std::filesystem::path& savedFile) {
    if (report.size() <= kLongestMailBody) return std::string(report);
    const bool isShort = savedFile.native().size() <= kLongestPathInMail;
    const std::string name = cleanText((isShort ? savedFile : savedFile.filename()).native());
    const std::string ending =
        "\n\nThe whole report is in the file " + name + "; please attach it to this mail.\n";
    const std::size_t room = kLongestMailBody - std::min(ending.size(), kLongestMailBody);
    return std::string(cutBetweenCharacters(report, room)) + ending;
}

std::string mailtoUrl(std::string_view address, std::string_view subject, std::string_view body) {
    std::string url = "mailto:";
    appendEncoded(url, address, "@");
    url += "?subject=";
    appendEncoded(url, subject);
    url += "&body=";
    appendEncoded(url, withMailLineBreaks(body));
    return url;
}

}  // namespace tintoral
