#include "netproto/ipp.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <span>
#include <vector>

#include "netproto/printer_mib.h"
#include "support/text.h"
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

// Reads a body to its end. Result: false when it is longer than kLargestIppAnswer or broke off.
bool readBody(NHttpRequester& requester, std::vector<std::uint8_t>& body) {
    std::array<std::uint8_t, kPieceSize> piece{};
    int received = 0;
    while ((received = nHttpRecvContent(requester, piece)) > 0) {
        const Bytes bytes = Bytes(piece).first(static_cast<std::size_t>(received));
        if (bytes.size() > kLargestIppAnswer - body.size()) return false;
        body.insert(body.end(), bytes.begin(), bytes.end());
    }
    return received == 0;
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

std::string_view pickText(const IppTuples& list, std::string_view name) {
    const IppTuple* const node = findTuple(list, name, ipp_kinds::text);
    return node != nullptr ? node->value : std::string_view();
}

// The four bytes of the value; none of them set when the printer did not name it.
std::string_view pickWord(const IppTuples& list, std::string_view name) {
    constexpr std::string_view kZero("\0\0\0\0", 4);
    const IppTuple* const node = findTuple(list, name, ipp_kinds::word);
    return node != nullptr ? node->value : kZero;
}

void keepAnswer(IppContext& context, IppTuples&& attributes) {
    context.attributes = std::move(attributes);
    const IppTuples& list = context.attributes;
    context.printerState = ippNumber(pickWord(list, "printer-state")).value_or(0);
    context.printerStateMessage = pickText(list, "printer-state-message");
    context.printerIsShared = pickWord(list, "printer-is-shared").front() != '\0';
    context.printerLocation = pickText(list, "printer-location");
    context.cupsVersion = pickText(list, "cups-version");
}

// A stopped printer is "Unknown", as meant.
std::string_view stateName(int state) {
    constexpr int kIdle = 3;
    constexpr std::array<std::string_view, 3> kNames{"Idle", "Printing", "Unknown"};
    const int row = state - kIdle;
    return state >= kIdle && row < 3 ? kNames[static_cast<std::size_t>(row)] : "None";
}

void dumpPrinter(BoundedText& dump, const IppContext& context) {
    dump.appendFormat("  Printer State = %d\n", context.printerState);
    dump.appendFormat("  Printer-state-message = '%s'\n",
                      cleanText(context.printerStateMessage).c_str());
    dump.appendFormat("  Location     = '%s'\n", cleanText(context.printerLocation).c_str());
    dump.appendFormat("  Cups version = '%s'\n", cleanText(context.cupsVersion).c_str());
}

// "1.4.2" is read as 1.4, and no words ("infinity") are numbers.
bool knowsMarkers(std::string_view cupsVersion) {
    constexpr double kLastWithoutMarkers = 1.3;
    double version = 0;
    cupsVersion = cupsVersion.substr(0, cupsVersion.find_first_not_of("0123456789."));
    std::from_chars(cupsVersion.data(), cupsVersion.data() + cupsVersion.size(), version,
                    std::chars_format::fixed);
    return version > kLastWithoutMarkers;
}

struct Marker {
    std::string type;
    std::string name;
    std::string color;
    std::int32_t level;  // as reported
};

Marker markerAt(const IppTuples& list, int index) {
    constexpr std::int32_t kUnknownLevel = -2;
    const auto valueOf = [&](std::string_view name) {
        std::string_view value;
        GetTupleValueAtIndex(list, name, value, index);
        return value;
    };
    return {cleanText(valueOf("marker-types")), cleanText(valueOf("marker-names")),
            cleanText(valueOf("marker-colors")),
            ippNumber(valueOf("marker-levels")).value_or(kUnknownLevel)};
}

void dumpMarker(BoundedText& dump, int index, const Marker& marker) {
    dump.appendFormat("  marker-types %2d = '%s'\n", index, marker.type.c_str());
    dump.appendFormat("  marker-levels = %d\n", marker.level);
    dump.appendFormat("  marker-names = %s\n", marker.name.c_str());
    dump.appendFormat("  marker-colors = %s\n", marker.color.c_str());
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

int ippSendAndRecv(const IppContext& context, Bytes request, IppAnswer& answer) {
    answer = {};
    const Requester requester = ippSend(context, request);
    if (!requester || nHttpCheckResp(*requester, kAnswerWait) != kHttpOk) return -1;
    std::vector<std::uint8_t> body;
    if (!readBody(*requester, body) || body.size() < kIppHeaderSize) return -1;
    // The extra CR LF, as meant, but late: cupsd breaks an answer off when more comes meanwhile.
    if (!isChunked(*requester)) nHttpSendContent(*requester, {});
    if (ParseIppAttr(Bytes(body).subspan(kIppHeaderSize), answer.attributes) < 0) return -1;
    std::ranges::copy(Bytes(body).first(kIppHeaderSize), answer.head.begin());
    return 0;
}

std::size_t IppGetPrinterAttrReq(IppContext& context, std::string_view requested) {
    std::array<std::uint8_t, kLargestRequest> buffer{};
    const std::size_t size = buildQuery(context, requested, buffer);
    IppAnswer answer;
    if (size == 0 || ippSendAndRecv(context, Bytes(buffer).first(size), answer) != 0) return 0;
    keepAnswer(context, std::move(answer.attributes));
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
    status.assign(stateName(context.printerState));
    if (dump != nullptr) dumpPrinter(*dump, context);
    const IppTuple* const types = findTuple(context.attributes, "marker-types", ipp_kinds::text);
    if (!knowsMarkers(context.cupsVersion) || types == nullptr) return 0;
    const int count = types->index + 1;  // 1, since only the first value has the name, as meant
    for (int index = 0; index < count; ++index) {
        const auto row = static_cast<std::size_t>(index);
        const Marker marker = markerAt(context.attributes, index);
        if (!marker.type.empty()) inks.entries[row] = {0, supplyLevel(marker.level, 100)};
        names[row].assign(marker.name);
        colors[row].assign(marker.color);
        if (dump != nullptr) dumpMarker(*dump, index, marker);
    }
    return count;
}

}  // namespace tintoral
