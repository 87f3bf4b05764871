#include "netproto/ipp_builders.h"

#include <array>

namespace tintoral {
namespace {

namespace operations {
constexpr std::uint16_t printJob = 0x0002;
constexpr std::uint16_t cancelJob = 0x0008;
constexpr std::uint16_t getJobAttributes = 0x0009;
constexpr std::uint16_t getJobs = 0x000A;
constexpr std::uint16_t createJobSubscriptions = 0x0017;
constexpr std::uint16_t getSubscriptionAttributes = 0x0018;
constexpr std::uint16_t getSubscriptions = 0x0019;
constexpr std::uint16_t cancelSubscription = 0x001B;
constexpr std::uint16_t cupsGetDevices = 0x400B;
constexpr std::uint16_t cupsGetPpds = 0x400C;
constexpr std::uint16_t cupsGetPpd = 0x400F;
}  // namespace operations

// A request on its way: begun with what all have in common, closed by finish().
class Request {
  public:
    Request(const IppRequestHead& head, std::uint16_t operation, MutableBytes output)
        : message_(output) {
        MkIppHeaderTop(message_, head.version, operation, head.requestId);
        beginIppRequest(message_, head.printerUri);
    }

    Request& with(std::uint8_t tag, std::string_view name, const IppValue& value) {
        make_attr(message_, tag, name, value);
        return *this;
    }

    Request& user(std::string_view name) {
        return with(ipp_tags::name, "requesting-user-name", name);
    }

    Request& keywords(std::string_view name, IppKeywords words) {
        make_1setOfattr(message_, ipp_tags::keyword, name, words);
        return *this;
    }

    Request& asking(IppKeywords attributes) { return keywords("requested-attributes", attributes); }

    // The group that says who is to be told of which events.
    Request& notifying(std::string_view recipientUri, IppKeywords events) {
        message_.u8(ipp_tags::subscriptionAttributes);
        with(ipp_tags::uri, "notify-recipient-uri", recipientUri);
        with(ipp_tags::octetString, "notify-user-data", kNotifyUserData);
        return keywords("notify-events", events);
    }

    std::size_t finish() { return message_.u8(ipp_tags::endOfAttributes).finish(); }

  private:
    ByteWriter message_;
};

constexpr std::string_view kJobId = "job-id";
constexpr std::string_view kNotifyJobId = "notify-job-id";
constexpr std::string_view kSubscriptionId = "notify-subscription-id";

}  // namespace

std::size_t mkPrintJobRequest(const IppRequestHead& head, const IppPrintJob& job,
                              MutableBytes output) {
    const std::array<IppValue, 1> events{"job-state-changed"};
    return Request(head, operations::printJob, output)
        .with(ipp_tags::name, "job-name", job.jobName)
        .user(job.userName)
        .with(ipp_tags::name, "document-name", job.documentName)
        .with(ipp_tags::mimeMediaType, "document-format", job.documentFormat)
        .notifying(job.recipientUri, events)
        .finish();
}

std::size_t mkCancelJobRequest(const IppRequestHead& head, std::int32_t jobId,
                               std::string_view userName, MutableBytes output) {
    return Request(head, operations::cancelJob, output)
        .with(ipp_tags::integer, kJobId, jobId)
        .user(userName)
        .finish();
}

std::size_t mkGetJobAttrRequest(const IppRequestHead& head, std::int32_t jobId,
                                std::string_view userName, IppKeywords attributes,
                                MutableBytes output) {
    return Request(head, operations::getJobAttributes, output)
        .with(ipp_tags::integer, kJobId, jobId)
        .user(userName)
        .asking(attributes)
        .finish();
}

std::size_t mkGetJobsRequest(const IppRequestHead& head, std::string_view userName,
                             IppKeywords attributes, MutableBytes output) {
    return Request(head, operations::getJobs, output).user(userName).asking(attributes).finish();
}

std::size_t mkCreateSubscriptionRequest(const IppRequestHead& head, std::string_view userName,
                                        std::int32_t jobId, std::string_view recipientUri,
                                        MutableBytes output) {
    const std::array<IppValue, 2> events{"job-state-changed", "printer-state-changed"};
    return Request(head, operations::createJobSubscriptions, output)
        .user(userName)
        .with(ipp_tags::integer, kNotifyJobId, jobId)
        .notifying(recipientUri, events)
        .finish();
}

std::size_t mkGetSubscriptionAttrRequest(const IppRequestHead& head, std::int32_t subscriptionId,
                                         IppKeywords attributes, MutableBytes output) {
    return Request(head, operations::getSubscriptionAttributes, output)
        .with(ipp_tags::integer, kSubscriptionId, subscriptionId)
        .asking(attributes)
        .finish();
}

std::size_t mkGetSubscriptionsRequest(const IppRequestHead& head, std::int32_t jobId,
                                      IppKeywords attributes, MutableBytes output) {
    return Request(head, operations::getSubscriptions, output)
        .with(ipp_tags::integer, kNotifyJobId, jobId)
        .asking(attributes)
        .finish();
}

std::size_t mkCancelSubscriptionRequest(const IppRequestHead& head, std::int32_t subscriptionId,
                                        MutableBytes output) {
    return Request(head, operations::cancelSubscription, output)
        .with(ipp_tags::integer, kSubscriptionId, subscriptionId)
        .finish();
}

std::size_t mkRenewSubscriptionRequest(const IppRequestHead& head, std::int32_t subscriptionId,
                                       MutableBytes output) {
    return mkCancelSubscriptionRequest(head, subscriptionId, output);  // the same id, as meant
}

std::size_t mkCupsGetPpdRequest(const IppRequestHead& head, MutableBytes output) {
    return Request(head, operations::cupsGetPpd, output).finish();
}

std::size_t mkCupsGetPpdsRequest(const IppRequestHead& head, std::string_view make,
                                 IppKeywords attributes, MutableBytes output) {
    return Request(head, operations::cupsGetPpds, output)
        .with(ipp_tags::text, "ppd-make", make)
        .asking(attributes)
        .finish();
}

std::size_t mkCupsGetDevicesRequest(const IppRequestHead& head, IppKeywords attributes,
                                    MutableBytes output) {
    return Request(head, operations::cupsGetDevices, output).asking(attributes).finish();
}

}  // namespace tintoral
