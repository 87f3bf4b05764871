#include "simulators/virtual_ipp_printer.h"

#include <utility>

namespace tintoral::test {
namespace {

using namespace std::string_literals;

constexpr std::uint16_t kIppPort = 631;

std::string big16(std::size_t value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}

std::string encoded(const IppAttribute& attribute) {
    std::string all;
    for (const std::string& value : attribute.values) {
        const std::string name = all.empty() ? attribute.name : "";
        all += static_cast<char>(attribute.tag);
        all += big16(name.size()) + name;
        all += big16(value.size()) + value;
    }
    return all;
}

}  // namespace

std::string ippInteger(std::int32_t number) {
    const auto bits = static_cast<std::uint32_t>(number);
    return big16(bits >> 16) + big16(bits & 0xFFFF);
}

std::string ippMessage(const std::vector<IppAttribute>& attributes) {
    std::string message = "\1\1\0\0\0\0\0\1\1"s + encoded({0x47, "attributes-charset", {"utf-8"}}) +
                          encoded({0x48, "attributes-natural-language", {"en-us"}}) + "\4";
    for (const IppAttribute& attribute : attributes) message += encoded(attribute);
    return message + "\3";
}

HttpAnswer ippAnswer(const std::string& message, std::optional<std::size_t> piece) {
    HttpAnswer answer{.contentType = "application/ipp", .chunked = piece.has_value()};
    const std::size_t step = piece.value_or(message.size() + 1);
    for (std::size_t at = 0; at < message.size(); at += step)
        answer.pieces.push_back(message.substr(at, step));
    return answer;
}

VirtualIppPrinter::VirtualIppPrinter(const std::string& address, HttpAnswer answer,
                                     std::optional<HttpLogin> login)
    : VirtualHttpServer(
          address, kIppPort, [answer = std::move(answer)](const HttpRequest&) { return answer; },
          std::move(login)) {}

}  // namespace tintoral::test
