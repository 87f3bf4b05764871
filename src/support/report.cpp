#include "support/report.h"

#include <cstdio>

#include "support/text.h"

namespace tintoral {
namespace {

const char* reportPrefix = "Tintoral: ";

}  // namespace

void setReportPrefix(const char* prefix) {
    reportPrefix = prefix;
}

void reportLine(std::string_view line) {
    std::fprintf(stderr, "%s%s\n", reportPrefix, cleanText(line).c_str());
}

}  // namespace tintoral
