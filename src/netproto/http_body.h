// The body of an HTTP message on its way in (RFC 9112 section 6).
//
//   header                        body
//   Content-Length: n             n bytes
//   Transfer-Encoding: chunked    chunks: size in hexadecimal CR LF, the bytes, CR LF; size 0 ends
//   neither                       until the peer closes, at most 100,000 bytes
//
// Content-Length wins where both are there. "chunked" counts in just this spelling.
#pragma once

#include <cstdint>
#include <optional>

#include "netproto/http_connection.h"
#include "netproto/http_headers.h"
#include "support/byte_reader.h"

namespace tintoral {

class HttpBody {
  public:
    static constexpr std::int32_t kChunked = -1;
    static constexpr std::int32_t kLongestUnannounced = 100000;

    // Takes the framing from the headers of a message. False when the length is no number from 0 to
    // 2,147,483,647: every read then gives http_errors::malformed.
    bool frame(const PairList& headers);

    // Reads at most `buffer` and never past the body. Result: the number of bytes; 0 at the end;
    // timedOut when nothing came in time, and at once when the peer closed before the announced
    // end; malformed when a chunk's size is no number or above 2,147,483,647. An end or an error is
    // final: further reads give it again without a wait.
    int read(HttpReader& reader, HttpConnection& connection, MutableBytes buffer,
             const HttpWaits& waits);

    // As announced; kChunked; 0 when nothing was announced.
    std::int32_t contentLength() const { return contentLength_; }

  private:
    int readPlain(HttpReader& reader, HttpConnection& connection, MutableBytes buffer);
    int readChunked(HttpReader& reader, HttpConnection& connection, MutableBytes buffer);
    int openChunk(HttpReader& reader, HttpConnection& connection);

    std::int32_t contentLength_ = 0;
    std::int32_t contentLeft_ = 0;
    std::int32_t chunkLeft_ = 0;
    bool untilClose_ = false;
    bool inChunk_ = false;  // its trailing CR LF is still to come
    bool started_ = false;
    std::optional<int> end_;  // what every further read gives
};

}  // namespace tintoral
