#include "netproto/ipp.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "transport/net/sockets.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

constexpr std::string_view kSelf = "Tintoral";
constexpr std::string_view kContentType = "application/ipp";
constexpr std::uint32_t kRequestId = 1;  // of every request
constexpr int kChunked = -1;

constexpr int kHttpOk = 200;
constexpr int kHttpUnauthorized = 401;
constexpr milliseconds kChallengeWait{10000};
constexpr milliseconds kAnswerWait{50000};

constexpr std::size_t kLargestRequest = 4096;
constexpr std::size_t kPieceSize = 15360;
constexpr std::size_t kIppHeaderSize = 8;

using Requester = std::unique_ptr<NHttpRequester>;

Requester beginPost(const IppContext& context) {
    const std::string url =
        "http://" + context.host + ":" + std::to_string(context.port) + context.path;
    return nHttpBegin(url, "POST", "1.1", context.userAgent);
}

bool isChunked(const NHttpRequester& requester) {
    return requester.sendMode < 0;
}

// Reads a body until the peer stops; whether all has come is for the decoder to say. Result: false
// when it is longer than kLargestIppAnswer.
bool readBody(NHttpRequester& requester, std::vector<std::uint8_t>& body) {
    std::array<std::uint8_t, kPieceSize> piece{};
    int received = 0;
    while ((received = nHttpRecvContent(requester, piece)) > 0) {
        const Bytes bytes = Bytes(piece).first(static_cast<std::size_t>(received));
        if (bytes.size() > kLargestIppAnswer - body.size()) return false;
        body.insert(body.end(), bytes.begin(), bytes.end());
    }
    return true;
}

// What the server says to a head alone: whether it answered, and its challenge if it has one.
bool askForChallenge(const IppContext& context, std::string& challenge) {
    const Requester requester = beginPost(context);
    if (nHttpSendReq(*requester, "", 0) != 0) return false;
    const int code = nHttpCheckResp(*requester, kChallengeWait);
    if (code != kHttpUnauthorized) return code > 0;
    std::vector<std::uint8_t> dropped;
    readBody(*requester, dropped);
    nHttpGetPairValue(*requester, "www-authenticate:", challenge);
    return true;
}

Requester sendAuthenticatedHead(const IppContext& context) {
    std::string challenge;
    if (!askForChallenge(context, challenge)) return nullptr;
    Requester requester = beginPost(context);
    if (!challenge.empty() && nHttpMakeAuthorization(*requester, challenge, context.userName,
                                                     context.password) != kHttpOk)
        return nullptr;
    return nHttpSendReq(*requester, kContentType, kChunked) == 0 ? std::move(requester) : nullptr;
}

Requester sendHead(const IppContext& context, std::size_t requestSize) {
    if (context.authentication) return sendAuthenticatedHead(context);
    Requester requester = beginPost(context);
    const auto size = static_cast<std::int64_t>(requestSize);
    return nHttpSendReq(*requester, kContentType, size) == 0 ? std::move(requester) : nullptr;
}

std::size_t buildQuery(const IppContext& context, std::string_view requested, MutableBytes output) {
    std::vector<IppValue> attributes{requested};
    if (requested == "status-only")
        attributes = {"printer-state", "printer-state-reasons", "printer-state-message"};
    return mkGetPrinterAttrRequest(kRequestId, context.minorVersion, context.printerUri,
                                   context.userName, attributes, output);
}

}  // namespace

IppContext makeIppContext(std::string_view printerUri) {
    IppContext context;
    UrlParts parts;
    Url2host_port_location(printerUri, parts);
    context.printerUri = printerUri;
    context.host = parts.host;
    context.port = parts.port;
    context.path = parts.location;
    context.userName = kSelf;
    context.userAgent = kSelf;
    return context;
}

Requester ippSend(const IppContext& context, Bytes request) {
    Requester requester = sendHead(context, request.size());
    if (!requester || nHttpSendContent(*requester, request) != 0) return nullptr;
    if (isChunked(*requester) && nHttpSendContent(*requester, {}) != 0) return nullptr;
    return requester;
}

int ippSendAndRecv(const IppContext& context, Bytes request, IppTuples& attributes) {
    attributes = {};
    const Requester requester = ippSend(context, request);
    if (!requester || nHttpCheckResp(*requester, kAnswerWait) != kHttpOk) return -1;
    std::vector<std::uint8_t> body;
    if (!readBody(*requester, body) || body.size() < kIppHeaderSize) return -1;
    // The extra CR LF, as meant, but late: cupsd breaks an answer off when more comes meanwhile.
    if (!isChunked(*requester)) nHttpSendContent(*requester, {});
    return ParseIppAttr(Bytes(body).subspan(kIppHeaderSize), attributes) < 0 ? -1 : 0;
}

std::size_t IppGetPrinterAttrReq(IppContext& context, std::string_view requested) {
    std::array<std::uint8_t, kLargestRequest> buffer{};
    const std::size_t size = buildQuery(context, requested, buffer);
    IppTuples attributes;
    if (size == 0 || ippSendAndRecv(context, Bytes(buffer).first(size), attributes) != 0) return 0;
    context.printer = readIppPrinter(std::move(attributes));
    return size;
}

int ippGetPrinterStatusAndQuantities(std::string_view printerUri, BoundedText& status,
                                     InkQuantities& inks, SupplyNames& names, SupplyNames& colors,
                                     BoundedText* dump) {
    if (dump != nullptr) dump->assign("Response from IPP printer\n");
    IppContext context = makeIppContext(printerUri);
    if (IppGetPrinterAttrReq(context, "all") == 0) {
        if (dump != nullptr) dump->append("Can't get any response\n");
        return 0;
    }
    return readStatusAndMarkers(context.printer, status, inks, names, colors, dump);
}

}  // namespace tintoral
