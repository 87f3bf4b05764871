// The IEEE 1284 device ID: "KEY:value;" fields in which a printer names its maker, model and command set.
#pragma once

#include <cstddef>
#include <string_view>

#include "support/fixed_text.h"

namespace tintoral {

// Splits the device ID into make and model, each cut to `size` bytes with its NUL (and to its own capacity).
// Result: 0 when a make was produced, -1 otherwise. An empty device ID or a size below 32 gives -1 and leaves both
// texts alone.
int backendGetMakeModel(std::string_view deviceID, BoundedText& make, BoundedText& model, std::size_t size);

}  // namespace tintoral
