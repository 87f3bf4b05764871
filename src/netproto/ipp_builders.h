// Requests for jobs, subscriptions (RFC 3995) and the CUPS server, beside the
// Get-Printer-Attributes of ipp_message.h. The program sends none of them; they are here for tools
// on the same encoder.
//
// Each begins with header, charset, language and the printer's URI. Result: the size of the request
// without document data, 0 when `output` is too small.
#pragma once

#include "netproto/ipp_message.h"

namespace tintoral {

// What all of these requests say of themselves. `version` is 10 for IPP/1.0, else IPP/1.1.
struct IppRequestHead {
    int version = 11;
    std::uint32_t requestId = 1;
    std::string_view printerUri;
};

// What a recipient of notifications gets back with each one (at most 63 bytes, RFC 3995 5.3.6).
inline constexpr std::string_view kNotifyUserData = "Tintoral";

using IppKeywords = std::span<const IppValue>;

struct IppPrintJob {
    std::string_view jobName;
    std::string_view userName;
    std::string_view documentName;
    std::string_view documentFormat;  // a MIME type
    std::string_view recipientUri;    // of the notifications when the job's state changes
};

std::size_t mkPrintJobRequest(const IppRequestHead& head, const IppPrintJob& job,
                              MutableBytes output);
std::size_t mkCancelJobRequest(const IppRequestHead& head, std::int32_t jobId,
                               std::string_view userName, MutableBytes output);
std::size_t mkGetJobAttrRequest(const IppRequestHead& head, std::int32_t jobId,
                                std::string_view userName, IppKeywords attributes,
                                MutableBytes output);
std::size_t mkGetJobsRequest(const IppRequestHead& head, std::string_view userName,
                             IppKeywords attributes, MutableBytes output);

// Notifications of a job's and its printer's state changes (Create-Job-Subscriptions).
std::size_t mkCreateSubscriptionRequest(const IppRequestHead& head, std::string_view userName,
                                        std::int32_t jobId, std::string_view recipientUri,
                                        MutableBytes output);
std::size_t mkGetSubscriptionAttrRequest(const IppRequestHead& head, std::int32_t subscriptionId,
                                         IppKeywords attributes, MutableBytes output);
std::size_t mkGetSubscriptionsRequest(const IppRequestHead& head, std::int32_t jobId,
                                      IppKeywords attributes, MutableBytes output);
std::size_t mkCancelSubscriptionRequest(const IppRequestHead& head, std::int32_t subscriptionId,
                                        MutableBytes output);

// Has the operation id of Cancel-Subscription, as meant.
std::size_t mkRenewSubscriptionRequest(const IppRequestHead& head, std::int32_t subscriptionId,
                                       MutableBytes output);

// The PPD file of the printer; the makes' PPD files; the devices that the server knows.
std::size_t mkCupsGetPpdRequest(const IppRequestHead& head, MutableBytes output);
std::size_t mkCupsGetPpdsRequest(const IppRequestHead& head, std::string_view make,
                                 IppKeywords attributes, MutableBytes output);
std::size_t mkCupsGetDevicesRequest(const IppRequestHead& head, IppKeywords attributes,
                                    MutableBytes output);

}  // namespace tintoral
