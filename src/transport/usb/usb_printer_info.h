// A USB printer as browsing finds it, and as it is found again to be opened.
#pragma once

#include <cstdint>

#include "support/fixed_text.h"

namespace tintoral {

// The texts are clean (support/text.h). USBPrinterOpen() reads model, maker, vendor and product ID
// and serial number only.
struct USBPrinterInfo {
    std::int32_t index = -1;  // position in the list that browsing gave
    FixedText<64> model;
    FixedText<64> maker;
    std::uint16_t vendorID = 0;
    std::uint16_t productID = 0;
    std::uint32_t locationID = 0;  // bus << 24, then a nibble for each port on the way
    FixedText<128> serialNumber;   // UTF-8
    FixedText<1025> deviceID;      // IEEE 1284, without its length; empty when it cannot be read
};

}  // namespace tintoral
