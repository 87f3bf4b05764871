#include "support/report.h"

#include <cstdio>

#include "support/text.h"

namespace tintoral {

void reportLine(std::string_view line) {
    std::fprintf(stderr, "Tintoral: %s\n", cleanText(line).c_str());
}

}  // namespace tintoral
