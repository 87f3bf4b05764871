// An IPP printer on port 631: gives the same answer to every request, whatever its operation.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulators/virtual_http_server.h"

namespace tintoral::test {

// An attribute of an answer, with its value tag and the encoded values.
struct IppAttribute {
    int tag;
    std::string name;
    std::vector<std::string> values;
};

std::string ippInteger(std::int32_t number);

// The attributes as an IPP message: header (successful-ok), two groups, end tag.
std::string ippMessage(const std::vector<IppAttribute>& attributes);

// The HTTP answer with the message in chunks of `piece` bytes, or in one piece of known length.
HttpAnswer ippAnswer(const std::string& message, std::optional<std::size_t> piece = {});

class VirtualIppPrinter final : public VirtualHttpServer {
  public:
    VirtualIppPrinter(const std::string& address, HttpAnswer answer,
                      std::optional<HttpLogin> login = {});
};

}  // namespace tintoral::test
