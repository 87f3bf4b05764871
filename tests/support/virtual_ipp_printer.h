// An IPP printer on HTTP/1.1: answers each POST, whatever its IPP request, with the attributes that
// it was given, or with any bytes. It parses HTTP by itself and knows nothing of sockets; give its
// script to a TcpPeer.
#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/byte_reader.h"
#include "support/tcp_peer.h"

namespace tintoral::test {

// An attribute of an IPP answer with its value tag and encoded values.
struct IppAttribute {
    int tag;
    std::string name;
    std::vector<std::string> values;
};

std::string ippInteger(std::int32_t number);

// The attributes as an IPP message: header (successful-ok), two groups, end tag.
std::string ippAnswer(const std::vector<IppAttribute>& attributes);

struct IppPrinterSetup {
    std::string body = {};       // of the answer, see ippAnswer()
    int httpStatus = 200;        // of the answer
    std::string challenge = {};  // WWW-Authenticate: then 401 to all requests without Authorization
    bool answersChunked = false;
};

struct HttpRequestHeard {
    std::string head;     // request line and headers, with the empty line
    std::string body;     // without the chunks' sizes
    std::string trailer;  // line ends that came after it
};

class VirtualIppPrinter {
  public:
    explicit VirtualIppPrinter(IppPrinterSetup setup) : setup_(std::move(setup)) {}

    // Good while the printer lives.
    TcpScript script();

    std::vector<HttpRequestHeard> requests() const;

  private:
    std::string onReceive(std::string_view bytes);
    bool takeRequest(HttpRequestHeard& request);
    std::string answerTo(const HttpRequestHeard& request) const;

    mutable std::mutex mutex_;
    IppPrinterSetup setup_;
    std::string pending_;
    std::vector<HttpRequestHeard> requests_;
};

}  // namespace tintoral::test
