// PML requests over an open MLC channel.
#pragma once

#include <string_view>

#include "support/fixed_text.h"
#include "transport/channels/mlc.h"
#include "transport/channels/pml.h"

namespace tintoral {

// Asks for an object ("1.1.3.2") and, after 800 ms, reads the reply, whose hex dump is appended to
// `dump` when that is not null. Result: 0, also for an empty reply (the response is then empty); -1
// when the channel fails to write or read, the reply's status is negative (response.status) or the
// reply is malformed.
int getPMLvalue(MLCChannel& channel, std::string_view object, PMLResponse& response,
                BoundedText* dump);

// The same without the wait. As meant, the value is not sent: the request is a "get" of the object.
int setPMLvalue(MLCChannel& channel, std::string_view object, std::uint8_t type,
                const PMLArgument& value, PMLResponse& response, BoundedText* dump);

}  // namespace tintoral
