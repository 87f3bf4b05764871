// How deep the arrays and dictionaries of an XML property list nest, found without building
// anything.
//
// The property-list library builds and frees its tree by recursion, so a file of nothing but
// opening tags would use up the stack. This look at the raw text comes first. It errs only on the
// side of "too deep": opening tags count wherever they stand, closing tags only where no comment or
// CDATA section can hide them from the library. For that reason text that no property list needs is
// refused too: attributes with quotes, declarations and processing instructions after the first
// container has begun, and comments without an end.
#pragma once

#include <string_view>

namespace tintoral {

// True when no array or dictionary in `xml` has more than `levels` - 1 others around it.
bool nestsWithin(std::string_view xml, int levels);

}  // namespace tintoral
