// A small HTTP/1.1 client (RFC 9112) for IPP: one requester is one exchange on one TCP connection.
//
//   nHttpBegin -> nHttpSendReq -> nHttpSendContent ... -> nHttpCheckResp -> nHttpRecvContent ...
//
//   request    "POST /path HTTP/1.1" CR LF, the request list, then Host, User-Agent and, for a
//              body, Content-Type and Content-Length or Transfer-Encoding: chunked; an empty line
//   answer     "HTTP/1.1 200 OK" CR LF, headers, an empty line, the body (http_body.h)
//
// After a 401 a new requester takes the challenge (nHttpMakeAuthorization) on a new connection. A
// requester goes, with its socket, when its unique_ptr does. The other side is http_responder.h.
//
// Waits: 2 s to connect, 5 s for each byte that is read; a whole head may take 30 s and a whole
// body 60 s, so that a peer that sends a byte now and then is left in the end; a send may take 30 s
// in all and 2 s without progress. Bounds: 128 header lines of 8192 bytes, 8 answers "100
// Continue" (http_errors::malformed beyond).
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "netproto/http_body.h"
#include "netproto/http_connection.h"
#include "netproto/http_headers.h"
#include "support/fixed_text.h"

namespace tintoral {

struct NHttpRequester {
    bool responder = false;                      // made without a URL
    std::unique_ptr<HttpConnection> connection;  // null while not yet connected
    std::string host;
    std::uint16_t port = 0;
    FixedText<5> version;  // "1.1"; from the answer on the peer's
    FixedText<17> method;
    std::string location;     // the path of the URL
    FixedText<64> peerName;   // responder: dotted address of the peer
    FixedText<33> agent;      // User-Agent, or Server of a responder; empty: left out
    FixedText<64> realm;      // responder: for Digest
    FixedText<64> nonce;      // responder: for Digest
    PairList requestHeaders;  // a client's are to send, a responder's received
    PairList responseHeaders;
    int statusCode = 200;
    FixedText<32> reason;
    std::int64_t sendMode = 0;   // body length of the head that was sent; below 0 chunked
    bool endsByClosing = false;  // responder: the body goes without a frame
    HttpWaits waits;
    HttpReader reader;
    HttpBody body;  // on its way in
};

// A requester for a URL as Url2host_port_location() splits it; for an empty URL a responder, whose
// realm is the base64 of `agent`. Up to 16 characters of `method`, 4 of `version` ("1.1") and 32 of
// `agent` are taken. Nothing is connected yet.
std::unique_ptr<NHttpRequester> nHttpBegin(std::string_view url, std::string_view method,
                                           std::string_view version, std::string_view agent);

// Connects when there is no connection, appends the headers of the page's table to the request list
// and sends the head. `bodyLength` is in bytes, 0 for no body, negative for a chunked one;
// `contentType` counts for a body only. Control characters in what is sent are left out. Result: 0;
// -1 when nobody answers at the host, or the send failed ("HttpSendReq: http send " on standard
// error).
int nHttpSendReq(NHttpRequester& requester, std::string_view contentType, std::int64_t bodyLength);

// Sends the request line and the request list as it stands, on the open connection. Result and
// error text as nHttpSendReq.
int nHttpResendReq(NHttpRequester& requester);

// Sends bytes of the body, as a chunk in chunked mode. No bytes: the last chunk, or an extra CR LF
// after a body of known length. Result: 0; -1 when a send failed ("HttpSendContent: ..." and the
// system error on standard error), or when bytes are given though the head announced no body. After
// a failure the requester is good for nothing more.
int nHttpSendContent(NHttpRequester& requester, Bytes bytes);

// Waits up to `timeout` for the answer to begin, then reads its head. Result: as nHttpRecvResp(),
// or -1 when nothing came in time.
int nHttpCheckResp(NHttpRequester& requester, std::chrono::milliseconds timeout);

// Reads the head of an answer, past those of "100 Continue". Result: the status code, 0 when the
// first line names none; http_errors::timedOut when a byte or the whole does not come in time or
// the peer closed; http_errors::malformed for a head beyond the bounds or a length that is none.
int nHttpRecvResp(NHttpRequester& requester);

// Reads a piece of the body into the caller's buffer; see HttpBody::read() for the result.
int nHttpRecvContent(NHttpRequester& requester, MutableBytes buffer);

// Appends to what this side sends: the request list of a client, the response list of a responder.
void nHttpNewPair(NHttpRequester& requester, std::string_view name, std::string_view value);

// GetPairValue() in what this side received.
std::size_t nHttpGetPairValue(const NHttpRequester& requester, std::string_view name,
                              std::string& value);

// Answers a challenge, the value of a WWW-Authenticate header, by an Authorization header in the
// request list: "Basic" (RFC 7617) or "Digest" (RFC 2617 without qop; http_auth.h). Result: 200; -1
// for another scheme, and nothing is added.
int nHttpMakeAuthorization(NHttpRequester& requester, std::string_view challenge,
                           std::string_view user, std::string_view password);

// Empty both header lists for another exchange; Reset connects anew as well. Result: 0, or -1 when
// nobody answers at the host or there is no connection to go on with.
int nHttpResetRequester(NHttpRequester& requester);
int nHttpResumeRequester(NHttpRequester& requester);

// The descriptor of the connection, 0 while there is none. Bytes that the requester has read ahead
// are no longer there to read.
int nHttpGetSocket(const NHttpRequester& requester);

// The body length that the peer announced, -1 for a chunked body.
std::int32_t nHttpGetContentLen(const NHttpRequester& requester);

std::string_view nHttpGetLocation(const NHttpRequester& requester);
int nHttpGetScode(const NHttpRequester& requester);
std::string_view nHttpGetMethod(const NHttpRequester& requester);

}  // namespace tintoral
