#include "support/virtual_ipp_printer.h"

#include <algorithm>
#include <optional>

namespace tintoral::test {
namespace {

using namespace std::string_literals;

constexpr std::string_view kEmptyLine = "\r\n\r\n";
constexpr std::size_t kChunk = 1000;

std::string big16(std::size_t value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}

std::string encoded(const IppAttribute& attribute) {
    std::string all;
    for (const std::string& value : attribute.values) {
        const std::string name = all.empty() ? attribute.name : "";
        all += static_cast<char>(attribute.tag) + big16(name.size()) + name + big16(value.size()) +
               value;
    }
    return all;
}

std::string hex(std::size_t number) {
    std::string digits;
    for (; number > 0 || digits.empty(); number /= 16)
        digits.insert(digits.begin(), "0123456789ABCDEF"[number % 16]);
    return digits;
}

std::string chunked(std::string_view body) {
    std::string all;
    for (; !body.empty(); body.remove_prefix(std::min(kChunk, body.size()))) {
        const std::string_view piece = body.substr(0, kChunk);
        all += hex(piece.size()) + "\r\n" + std::string(piece) + "\r\n";
    }
    return all + "0" + std::string(kEmptyLine);
}

// Takes a chunked body off the front of `text`; nothing when it is not wholly there.
std::optional<std::string> takeChunks(std::string& text) {
    std::string body;
    std::size_t at = 0;
    while (true) {
        const auto lineEnd = text.find("\r\n", at);
        if (lineEnd == std::string::npos) return std::nullopt;
        const std::size_t size = std::stoul(text.substr(at, lineEnd - at), nullptr, 16);
        at = lineEnd + 2;
        if (text.size() < at + size + 2) return std::nullopt;
        body += text.substr(at, size);
        at += size + 2;
        if (size == 0) break;
    }
    text.erase(0, at);
    return body;
}

std::optional<std::string> takePlain(std::string& text, std::size_t size) {
    if (text.size() < size) return std::nullopt;
    std::string body = text.substr(0, size);
    text.erase(0, size);
    return body;
}

std::optional<std::string> takeBody(const std::string& head, std::string& text) {
    if (head.find("Transfer-Encoding: chunked\r\n") != std::string::npos) return takeChunks(text);
    const auto length = textBetween(head, "Content-Length: ", '\r');
    return takePlain(text, length ? std::stoul(std::string(*length)) : 0);
}

}  // namespace

std::string ippInteger(std::int32_t number) {
    const auto bits = static_cast<std::uint32_t>(number);
    return big16(bits >> 16) + big16(bits & 0xFFFF);
}

std::string ippAnswer(const std::vector<IppAttribute>& attributes) {
    std::string message = "\1\1\0\0\0\0\0\1\1"s + encoded({0x47, "attributes-charset", {"utf-8"}}) +
                          encoded({0x48, "attributes-natural-language", {"en-us"}}) + "\4";
    for (const IppAttribute& attribute : attributes) message += encoded(attribute);
    return message + "\3";
}

TcpScript VirtualIppPrinter::script() {
    return {[this] {
                const std::lock_guard lock(mutex_);
                pending_.clear();
            },
            [this](Bytes bytes) {
                const std::string answer = onReceive(asText(bytes));
                return std::vector<std::uint8_t>(answer.begin(), answer.end());
            }};
}

std::vector<HttpRequestHeard> VirtualIppPrinter::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::string VirtualIppPrinter::onReceive(std::string_view bytes) {
    const std::lock_guard lock(mutex_);
    pending_ += bytes;
    std::string answer;
    HttpRequestHeard request;
    while (takeRequest(request)) {
        answer += answerTo(request);
        requests_.push_back(request);
    }
    return answer;
}

// Empty lines before a request line are passed over (RFC 9112 2.2).
bool VirtualIppPrinter::takeRequest(HttpRequestHeard& request) {
    const std::size_t lineEnds = std::min(pending_.find_first_not_of("\r\n"), pending_.size());
    if (!requests_.empty()) requests_.back().trailer += pending_.substr(0, lineEnds);
    pending_.erase(0, lineEnds);
    const auto headEnd = pending_.find(kEmptyLine);
    if (headEnd == std::string::npos) return false;
    const std::string head = pending_.substr(0, headEnd + kEmptyLine.size());
    std::string rest = pending_.substr(head.size());
    const auto body = takeBody(head, rest);
    if (!body) return false;
    pending_ = rest;
    request = {head, *body, ""};
    return true;
}

std::string VirtualIppPrinter::answerTo(const HttpRequestHeard& request) const {
    const bool refused =
        !setup_.challenge.empty() && request.head.find("\r\nAuthorization: ") == std::string::npos;
    if (refused)
        return "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: " + setup_.challenge +
               "\r\nContent-Length: 4\r\n\r\nno!\n";
    const std::string start = "HTTP/1.1 " + std::to_string(setup_.httpStatus) +
                              " Answer\r\nContent-Type: application/ipp\r\n";
    if (setup_.answersChunked)
        return start + "Transfer-Encoding: chunked\r\n\r\n" + chunked(setup_.body);
    return start + "Content-Length: " + std::to_string(setup_.body.size()) + "\r\n\r\n" +
           setup_.body;
}

}  // namespace tintoral::test
