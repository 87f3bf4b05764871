// The IEEE 1284 device ID: "KEY:value;" fields in which a printer names its maker, model and
// command set.
//
//   make    "MANUFACTURER:", "Manufacturer:" or "MFG:"
//   model   "MODEL:", "Model:" or "MDL:"
//   both    "DES:" or "DESCRIPTION:", for a printer that names no model
//
// The keys are searched anywhere in the text and in this order; case counts. Whatever finds a
// printer again by its make and model must split the device ID with this one function.
#pragma once

#include <cstddef>
#include <string_view>

#include "support/fixed_text.h"

namespace tintoral {

// Splits the device ID (read up to its first NUL) into make and model, each cut to `size` bytes
// with its NUL (and to its own capacity). The make is "HP" for "Hewlett-Packard..." and "hp...",
// "Lexmark" for "Lexmark International...", and never ends in white space. Without a model, a
// description of at least 8 characters with a blank and a letter stands in; without either, both
// are "Unknown". Result: 0 when a make was produced, -1 otherwise. An empty device ID or a size
// below 32 gives -1 and leaves both texts alone.
int backendGetMakeModel(std::string_view deviceID, BoundedText& make, BoundedText& model,
                        std::size_t size);

}  // namespace tintoral
