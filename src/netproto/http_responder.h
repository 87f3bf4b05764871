// The other side of the exchange in http.h: reads a request and answers it, with a requester that
// was begun without a URL. Nothing in the program listens; the tests' servers do.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "netproto/http.h"
#include "netproto/http_auth.h"

namespace tintoral {

// Reads the head of a request from a connection, which the requester owns from now on: the
// peer's address, the method (up to 8 characters), the location (up to 128), the version and the
// headers; nHttpRecvContent() then reads the body. Result: 0; http_errors::timedOut or malformed,
// the latter also for a body length that is none.
int nHttpRecvReq(NHttpRequester& requester, std::unique_ptr<HttpConnection> connection);

// Sends the status line, what the response list holds, Date (local time), Server when the agent is
// set, and the headers of the body; nHttpSendContent() then sends that. A body of negative length
// is chunked for a peer of version "1.1" and ends with the connection for another. Result: 0; -1
// when the send failed ("HttpSendResp: http send " on standard error).
int nHttpSendResp(NHttpRequester& requester, int statusCode, std::string_view contentType,
                  std::int64_t bodyLength);

// Checks the Authorization header of the request. Result: 200; 401 when it is missing or does not
// hold under the requester's realm and nonce.
int nHttpAuthenticate(const NHttpRequester& requester, const PasswordOf& passwordOf);

// The words for a status code, "Unknown error" for one without.
std::string_view nHttpStatusMessage(int statusCode);

}  // namespace tintoral
