// A printer whose D4 channel answers: idle, with three inks of Epson's codes, at 40, 75 and 7
// percent.
#pragma once

#include "support/byte_writer.h"

namespace tintoral {

inline int threeInks(MutableBytes reply) {
    ByteWriter writer(reply);
    writer.text("@BDC ST2\r\n").le16(15).u8(1).u8(1).u8(4).u8(0x0F).u8(10).u8(3);
    writer.u8(1).u8(0).u8(40);  // cartridge type, colour code, level
    writer.u8(2).u8(0).u8(75);
    writer.u8(1).u8(4).u8(7);
    return static_cast<int>(writer.finish());
}

}  // namespace tintoral
