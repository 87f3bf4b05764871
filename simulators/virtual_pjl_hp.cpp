#include "simulators/virtual_pjl_hp.h"

#include <algorithm>

namespace tintoral::test {

std::vector<std::uint8_t> VirtualPjlHp::onReceive(Bytes heard) const {
    std::array<std::uint8_t, 128> request{};
    int index = 0;
    for (const std::string& text : texts_) {
        const Bytes known = Bytes(request).first(mkHPDiagnosticRequest(index++, request));
        if (std::ranges::equal(heard, known)) return {text.begin(), text.end()};
    }
    return {};
}

}  // namespace tintoral::test
