#include "netproto/http_body.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

namespace tintoral {
namespace {

constexpr std::size_t kLineEnd = 2;  // CR LF after a chunk

// The number that `text` begins with, when it is no larger than any length may be. `rest` is what
// follows it.
std::optional<std::int32_t> leadingNumber(std::string_view text, int base, std::string_view& rest) {
    std::uint32_t number = 0;  // unsigned: a minus sign is no digit
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc{} || number > std::numeric_limits<std::int32_t>::max()) return {};
    rest = text.substr(static_cast<std::size_t>(end - text.data()));
    return static_cast<std::int32_t>(number);
}

std::optional<std::int32_t> decimalLength(std::string_view text) {
    std::string_view rest;
    const auto length = leadingNumber(text, 10, rest);
    return rest.empty() ? length : std::nullopt;
}

// What follows the number (RFC 9112 section 7.1.1 calls it extensions) does not count.
std::optional<std::int32_t> chunkSize(std::string_view line) {
    std::string_view extensions;
    return leadingNumber(line, 16, extensions);
}

MutableBytes atMost(MutableBytes buffer, std::int32_t size) {
    return buffer.first(std::min(buffer.size(), static_cast<std::size_t>(size)));
}

}  // namespace

bool HttpBody::frame(const PairList& headers) {
    *this = HttpBody{};
    std::string announced;
    if (GetPairValue(headers, "content-length", announced) > 0) {
        const auto length = decimalLength(announced);
        if (!length) end_ = http_errors::malformed;
        contentLength_ = contentLeft_ = length.value_or(0);
        return length.has_value();
    }
    if (CmpPair(headers, "transfer-encoding:", "chunked") == 0) {
        contentLength_ = kChunked;
        return true;
    }
    untilClose_ = true;
    contentLeft_ = kLongestUnannounced;
    return true;
}

int HttpBody::read(HttpReader& reader, HttpConnection& connection, MutableBytes buffer,
                   const HttpWaits& waits) {
    if (buffer.empty()) return 0;
    if (!started_) reader.allow(waits.body, waits.byte);
    started_ = true;
    if (end_) return *end_;
    const int result = contentLength_ == kChunked ? readChunked(reader, connection, buffer)
                                                  : readPlain(reader, connection, buffer);
    if (result <= 0) end_ = result;
    return result;
}

int HttpBody::readPlain(HttpReader& reader, HttpConnection& connection, MutableBytes buffer) {
    const int count = reader.read(connection, atMost(buffer, contentLeft_));
    if (count == http_errors::closed) return untilClose_ ? 0 : http_errors::timedOut;
    if (count > 0) contentLeft_ -= count;
    return count;
}

// Result: 0 and chunkLeft_ set, or an error.
int HttpBody::openChunk(HttpReader& reader, HttpConnection& connection) {
    // Only now, so that bytes that are there need not wait for the end of their chunk.
    if (inChunk_ && reader.skip(connection, kLineEnd) != 0) return http_errors::timedOut;
    inChunk_ = false;
    std::string line;
    if (const int failed = reader.readLine(connection, line)) return failed;
    const std::string_view text = trimmed(line);
    if (text.empty()) return http_errors::timedOut;
    const auto size = chunkSize(text);
    if (!size) return http_errors::malformed;
    inChunk_ = true;
    chunkLeft_ = *size;
    return 0;
}

int HttpBody::readChunked(HttpReader& reader, HttpConnection& connection, MutableBytes buffer) {
    if (chunkLeft_ == 0) {
        if (const int failed = openChunk(reader, connection)) return failed;
    }
    const int count = reader.read(connection, atMost(buffer, chunkLeft_));
    if (count == http_errors::closed) return http_errors::timedOut;
    if (count > 0) chunkLeft_ -= count;
    return count;
}

}  // namespace tintoral
