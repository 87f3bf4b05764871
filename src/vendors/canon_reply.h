// The status reply of a Canon printer whose levels may come in either of two fields. Pure.
#pragma once

#include "ink/ink_quantities.h"
#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

// Levels and status of a reply, from behind its two bytes of length: those of "CIR:" (canon.h), or
// else the warnings of "DWS:" (hp.h). A record that is then still without a count gets that of the
// result. Result: the number of inks, 0 when neither field holds any.
int parseCanonReply(Bytes reply, BoundedText& status, InkQuantities& record);

}  // namespace tintoral
