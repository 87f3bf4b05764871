#include "netproto/ipp_names.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <string>

#include "netproto/ipp_message.h"
#include "support/fixed_text.h"
#include "support/text.h"

namespace tintoral {
namespace {

struct Code {
    std::uint16_t code;
    std::string_view name;
};

constexpr Code kStatusNames[] = {
    {0x0000, "successful-ok"},
    {0x0001, "successful-ok-ignored-or-substituted-attributes"},
    {0x0002, "successful-ok-conflicting-attributes"},
    {0x0003, "successful-ok-ignored-subscriptions"},
    {0x0005, "successful-ok-too-many-events"},
    {0x0007, "successful-ok-events-complete"},
    {0x0400, "client-error-bad-request"},
    {0x0401, "client-error-forbidden"},
    {0x0402, "client-error-not-authenticated"},
    {0x0403, "client-error-not-authorized"},
    {0x0404, "client-error-not-possible"},
    {0x0405, "client-error-timeout"},
    {0x0406, "client-error-not-found"},
    {0x0407, "client-error-gone"},
    {0x0408, "client-error-request-entity-too-large"},
    {0x0409, "client-error-request-value-too-long"},
    {0x040A, "client-error-document-format-not-supported"},
    {0x040B, "client-error-attributes-or-values-not-supported"},
    {0x040C, "client-error-uri-scheme-not-supported"},
    {0x040D, "client-error-charset-not-supported"},
    {0x040E, "client-error-conflicting-attributes"},
    {0x040F, "client-error-compression-not-supported"},
    {0x0410, "client-error-compression-error"},
    {0x0411, "client-error-document-format-error"},
    {0x0412, "client-error-document-access-error"},
    {0x0413, "client-error-attributes-not-settable"},
    {0x0414, "client-error-ignored-all-subscriptions"},
    {0x0415, "client-error-too-many-subscriptions"},
    {0x0500, "server-error-internal-error"},
    {0x0501, "server-error-operation-not-supported"},
    {0x0502, "server-error-service-unavailable"},
    {0x0503, "server-error-version-not-supported"},
    {0x0504, "server-error-device-error"},
    {0x0505, "server-error-temporary-error"},
    {0x0506, "server-error-not-accepting-jobs"},
    {0x0507, "server-error-busy"},
    {0x0508, "server-error-job-canceled"},
    {0x0509, "server-error-multiple-document-jobs-not-supported"},
    {0x050A, "server-error-printer-is-deactivated"},
};

constexpr Code kOperationNames[] = {
    {0x0002, "Print-Job"},
    {0x0003, "Print-URI"},
    {0x0004, "Validate-Job"},
    {0x0005, "Create-Job"},
    {0x0006, "Send-Document"},
    {0x0007, "Send-URI"},
    {0x0008, "Cancel-Job"},
    {0x0009, "Get-Job-Attributes"},
    {0x000A, "Get-Jobs"},
    {0x000B, "Get-Printer-Attributes"},
    {0x000C, "Hold-Job"},
    {0x000D, "Release-Job"},
    {0x000E, "Restart-Job"},
    {0x0010, "Pause-Printer"},
    {0x0011, "Resume-Printer"},
    {0x0012, "Purge-Jobs"},
    {0x0013, "Set-Printer-Attributes"},
    {0x0014, "Set-Job-Attributes"},
    {0x0015, "Get-Printer-Supported-Values"},
    {0x0016, "Create-Printer-Subscriptions"},
    {0x0017, "Create-Job-Subscriptions"},
    {0x0018, "Get-Subscription-Attributes"},
    {0x0019, "Get-Subscriptions"},
    {0x001A, "Renew-Subscription"},
    {0x001B, "Cancel-Subscription"},
    {0x001C, "Get-Notifications"},
    {0x0022, "Enable-Printer"},
    {0x0023, "Disable-Printer"},
    {0x0024, "Pause-Printer-After-Current-Job"},
    {0x0025, "Hold-New-Jobs"},
    {0x0026, "Release-Held-New-Jobs"},
    {0x0027, "Deactivate-Printer"},
    {0x0028, "Activate-Printer"},
    {0x0029, "Restart-Printer"},
    {0x002A, "Shutdown-Printer"},
    {0x002B, "Startup-Printer"},
    {0x002C, "Reprocess-Job"},
    {0x002D, "Cancel-Current-Job"},
    {0x002E, "Suspend-Current-Job"},
    {0x002F, "Resume-Job"},
    {0x0030, "Promote-Job"},
    {0x0031, "Schedule-Job-After"},
    {0x4001, "CUPS-Get-Default"},
    {0x4002, "CUPS-Get-Printers"},
    {0x4003, "CUPS-Add-Modify-Printer"},
    {0x4004, "CUPS-Delete-Printer"},
    {0x4005, "CUPS-Get-Classes"},
    {0x4006, "CUPS-Add-Modify-Class"},
    {0x4007, "CUPS-Delete-Class"},
    {0x4008, "CUPS-Accept-Jobs"},
    {0x4009, "CUPS-Reject-Jobs"},
    {0x400A, "CUPS-Set-Default"},
    {0x400B, "CUPS-Get-Devices"},
    {0x400C, "CUPS-Get-PPDs"},
    {0x400D, "CUPS-Move-Job"},
    {0x400E, "CUPS-Authenticate-Job"},
    {0x400F, "CUPS-Get-PPD"},
    {0x4027, "CUPS-Get-Document"},
};

std::string_view nameIn(std::span<const Code> names, std::uint16_t code) {
    const auto entry = std::ranges::find(names, code, &Code::code);
    return entry == names.end() ? "unknown" : entry->name;
}

void dumpValue(BoundedText& text, const IppItem& item) {
    const auto word = ippNumber(asText(item.value));
    const bool isWord = item.tag == ipp_tags::integer || item.tag == ipp_tags::enumeration;
    if (isWord && word) {
        text.appendFormat("%d\n", *word);
    } else if (item.tag == ipp_tags::boolean && !item.value.empty()) {
        text.append(item.value[0] != 0 ? "true\n" : "false\n");
    } else {
        text.appendFormat("'%s'\n", cleanText(asText(item.value)).c_str());
    }
}

void dumpItem(BoundedText& text, const IppItem& item) {
    text.appendFormat("%02x ", item.tag);
    if (item.isDelimiter()) return text.append("----\n");
    text.appendFormat("%s = ", cleanText(item.name).c_str());
    dumpValue(text, item);
}

}  // namespace

std::string_view getStatusString(std::uint16_t statusCode) {
    return nameIn(kStatusNames, statusCode);
}

std::string_view getOpString(std::uint16_t operation) {
    return nameIn(kOperationNames, operation);
}

void DumpIppHdr(Bytes request) {
    ByteReader reader(request);
    const unsigned major = reader.u8();
    const unsigned minor = reader.u8();
    const std::uint16_t operation = reader.be16();
    const std::uint32_t requestId = reader.be32();
    if (reader.failed()) {
        std::printf("IPP header cut off\n");
        return;
    }
    std::printf("IPP/%u.%u %s (0x%04x), request %u\n", major, minor,
                std::string(getOpString(operation)).c_str(), operation, requestId);
}

void DumpIppAttributes(Bytes attributes) {
    FixedText<4096> text;
    ByteReader reader(attributes);
    IppItem item;
    while (item.tag != ipp_tags::endOfAttributes && takeIppItem(reader, item)) dumpItem(text, item);
    std::printf("%s", text.c_str());
}

}  // namespace tintoral
