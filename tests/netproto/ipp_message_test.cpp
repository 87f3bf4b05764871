// Requests as bytes, answers as a list, and what no printer should be able to make of us.
#include "netproto/ipp_message.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "netproto/ipp_builders.h"
#include "netproto/ipp_names.h"

namespace tintoral {
namespace {

using namespace std::string_literals;

std::string length(std::size_t size) {
    return {static_cast<char>(size >> 8), static_cast<char>(size)};
}

std::string attribute(int tag, const std::string& name, const std::string& value) {
    return static_cast<char>(tag) + length(name.size()) + name + length(value.size()) + value;
}

// What a builder makes of 1000 bytes; it must then also refuse a buffer one byte too small.
template <typename Builder>
std::string built(Builder build) {
    std::vector<std::uint8_t> buffer(1000);
    buffer.resize(build(MutableBytes(buffer)));
    EXPECT_EQ(build(MutableBytes(buffer).first(buffer.size() - 1)), 0U);
    return std::string(asText(buffer));
}

std::string encoded(std::uint8_t tag, const IppValue& value) {
    return built([&](MutableBytes output) {
        ByteWriter writer(output);
        make_attr(writer, tag, "n", value);
        return writer.finish();
    });
}

TEST(IppRequest, GetPrinterAttributesIsJustTheseBytes) {
    const std::string expected =
        "\x01\x00\x00\x0B\x00\x00\x00\x01"
        "\x01"
        "\x47\x00\x12"
        "attributes-charset\x00\x05utf-8"
        "\x48\x00\x1B"
        "attributes-natural-language\x00\x05"
        "en-us"
        "\x45\x00\x0Bprinter-uri\x00\x1Bhttp://10.77.0.11:631/ipp/p"
        "\x42\x00\x14requesting-user-name\x00\x08Tintoral"
        "\x44\x00\x14requested-attributes\x00\x0Dprinter-state"
        "\x44\x00\x00\x00\x0Cmarker-types"
        "\x03"s;
    const std::vector<IppValue> keywords{"printer-state", "marker-types"};
    EXPECT_EQ(built([&](MutableBytes output) {
                  return mkGetPrinterAttrRequest(1, 0, "http://10.77.0.11:631/ipp/p", "Tintoral",
                                                 keywords, output);
              }),
              expected);
}

TEST(IppRequest, EncodesAValueByItsTag) {
    const struct {
        std::uint8_t tag;
        IppValue value;
        std::string bytes;
    } rows[] = {
        {0x21, -2, "\xFF\xFF\xFF\xFE"s},
        {0x23, 0x01020304, "\1\2\3\4"s},
        {0x22, 1, "\1"s},
        {0x33, {1, -1}, "\0\0\0\1\xFF\xFF\xFF\xFF"s},
        {0x31, "\x07\xE8\x01\x02\x03\x04\x05\x06+\x01\x02", "\x07\xE8\1\2\3\4\5\6+\1\2"s},
        {0x10, "text", ""s},
        {0x41, "text", "text"s},
        {0x30, "", ""s},
        {0x46, "ipp", "\0"s},  // as every tag outside the table, as meant
        {0x7F, 5, "\0"s},
    };
    for (const auto& row : rows)
        EXPECT_EQ(encoded(row.tag, row.value), attribute(row.tag, "n", row.bytes)) << +row.tag;

    std::vector<std::uint8_t> buffer(70000);
    ByteWriter tooLong(buffer);
    const std::string longText(65536, 'x');
    make_attr(tooLong, 0x41, "n", std::string_view(longText));
    EXPECT_TRUE(tooLong.failed());
    ByteWriter noDate(buffer);
    make_attr(noDate, 0x31, "n", "2024-01-01");
    EXPECT_TRUE(noDate.failed());
}

TEST(IppRequest, OtherOperationsBeginAlike) {
    const IppRequestHead head{10, 0x01020304, "ipp://h/p"};
    const auto request = [](std::size_t operation, const std::string& rest) {
        return "\1\0"s + length(operation) + "\1\2\3\4" + "\1" +
               attribute(0x47, "attributes-charset", "utf-8") +
               attribute(0x48, "attributes-natural-language", "en-us") +
               attribute(0x45, "printer-uri", "ipp://h/p") + rest + "\3";
    };
    const std::string subscription = attribute(0x21, "notify-subscription-id", "\0\0\0\7"s);
    // Both with the id of Cancel-Subscription, as meant.
    for (const auto build : {mkCancelSubscriptionRequest, mkRenewSubscriptionRequest}) {
        EXPECT_EQ(built([&](MutableBytes out) { return build(head, 7, out); }),
                  request(27, subscription));
    }
    const std::string notifying = "\6" + attribute(0x45, "notify-recipient-uri", "rss://h") +
                                  attribute(0x30, "notify-user-data", "Tintoral") +
                                  attribute(0x44, "notify-events", "job-state-changed") +
                                  attribute(0x44, "", "printer-state-changed");
    EXPECT_EQ(built([&](MutableBytes out) {
                  return mkCreateSubscriptionRequest(head, "u", 7, "rss://h", out);
              }),
              request(0x17, attribute(0x42, "requesting-user-name", "u") +
                                attribute(0x21, "notify-job-id", "\0\0\0\7"s) + notifying));
}

TEST(IppRequest, EachOperationHasItsNumber) {
    const IppRequestHead head{.printerUri = "ipp://h/p"};
    using Build = std::function<std::size_t(MutableBytes)>;
    const std::pair<std::size_t, Build> rows[] = {
        {0x0002,
         [&](auto out) {
             return mkPrintJobRequest(head, {"j", "u", "d", "f", "r"}, out);
         }},
        {0x0008, [&](auto out) { return mkCancelJobRequest(head, 7, "u", out); }},
        {0x0009, [&](auto out) { return mkGetJobAttrRequest(head, 7, "u", {}, out); }},
        {0x000A, [&](auto out) { return mkGetJobsRequest(head, "u", {}, out); }},
        {24, [&](auto out) { return mkGetSubscriptionAttrRequest(head, 7, {}, out); }},
        {25, [&](auto out) { return mkGetSubscriptionsRequest(head, 7, {}, out); }},
        {0x400B, [&](auto out) { return mkCupsGetDevicesRequest(head, {}, out); }},
        {0x400C, [&](auto out) { return mkCupsGetPpdsRequest(head, "HP", {}, out); }},
        {0x400F, [&](auto out) { return mkCupsGetPpdRequest(head, out); }},
    };
    for (const auto& [operation, build] : rows)
        EXPECT_EQ(built(build).substr(2, 2), length(operation)) << operation;
}

// A value of each kind, and of the tags that are passed over.
std::string sample() {
    return "\1" + attribute(0x47, "attributes-charset", "utf-8") + "\4" +
           attribute(0x23, "printer-state", "\0\0\0\3"s) +
           attribute(0x41, "printer-state-message", "fine") +
           attribute(0x22, "printer-is-shared", "\1") + attribute(0x13, "printer-location", "") +
           attribute(0x21, "short", "\7") + attribute(0x33, "copies", "\0\0\0\1\0\0\0\x63"s) +
           attribute(0x32, "resolution", "\0\0\2\x58\0\0\2\x58\3"s) +
           attribute(0x34, "media-col", "") + attribute(0x4A, "", "media-color") +
           attribute(0x44, "", "white") + attribute(0x37, "", "") +
           attribute(0x42, "marker-names", "Black") + attribute(0x42, "", "Cyan") + "\3";
}

TEST(ParseIppAttr, PutsTheLastValueFirst) {
    const std::string message = sample();
    IppTuples list;
    EXPECT_EQ(ParseIppAttr(asBytes(message + "beyond"), list),
              static_cast<int>(message.size()) + 1);
    const struct {
        int index, kind;
        std::string name, value;
    } rows[] = {
        {1, 0, "", "Cyan"},
        {0, 0, "marker-names", "Black"},
        {1, 55, "", ""},
        {1, 0, "", "white"},
        {1, 74, "", "media-color"},
        {0, 52, "media-col", ""},
        {0, 12, "resolution", "\0\0\2\x58\0\0\2\x58\3\0\0\0"s},
        {0, 8, "copies", "\0\0\0\1\0\0\0\x63"s},
        {0, 4, "short", "\7\0\0\0"s},
        {0, 4, "printer-is-shared", "\1\0\0\0"s},
        {0, 0, "printer-state-message", "fine"},
        {0, 4, "printer-state", "\0\0\0\3"s},
        {0, 0, "attributes-charset", "utf-8"},
    };
    auto node = list.begin();
    for (const auto& row : rows) {
        ASSERT_NE(node, list.end());
        EXPECT_EQ(node->index, row.index) << row.name;
        EXPECT_EQ(node->kind, row.kind) << row.name;
        EXPECT_EQ(node->name, row.name);
        EXPECT_EQ((node++)->value, row.value) << row.name;
    }
    EXPECT_EQ(node, list.end());

    std::string_view value;
    EXPECT_EQ(GetTupleValueAtIndex(list, "MARKER-N", value, 0), 5U);
    EXPECT_EQ(value, "Black");
    EXPECT_EQ(GetTupleValueAtIndex(list, "printer-state", value, 0), 4U);
    EXPECT_EQ(value, "fine") << "the last that begins so";
    EXPECT_EQ(findTuple(list, "printer-state", ipp_kinds::word)->value, "\0\0\0\3"s);
    EXPECT_EQ(GetTupleValueAtIndex(list, "marker-names", value, 1), 0U);  // as meant
    EXPECT_TRUE(value.empty());
}

TEST(ParseIppAttr, ACutMessageLeavesNothing) {
    const std::string whole = sample();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        IppTuples list{{0, 0, "old", "old"}};
        EXPECT_EQ(ParseIppAttr(asBytes(whole.substr(0, size)), list), -1) << size;
        EXPECT_TRUE(list.empty());
    }
    IppTuples list;
    EXPECT_EQ(ParseIppAttr(asBytes("\x41\x00\x01n\xFF\xFFvalue\x03"s), list), -1);
    EXPECT_EQ(ParseIppAttr(asBytes("\x41\xFF\xFFn\x00\x01v\x03"s), list), -1);
}

TEST(ParseIppAttr, HoldsAFloodDown) {
    std::string message;
    for (int i = 0; i < 1000; ++i) message += attribute(0x34, "c", "") + attribute(0x40, "u", "x");
    for (std::size_t i = 0; i < kMaximumIppTuples; ++i) message += attribute(0x21, "", "");
    message += "\3";
    IppTuples list;
    testing::internal::CaptureStdout();
    EXPECT_EQ(ParseIppAttr(asBytes(message), list), static_cast<int>(message.size()) + 1);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(printed.starts_with("parse_ipp_attr : Unkown Tag!! type = 64\n"));
    EXPECT_EQ(std::ranges::count(printed, '\n'), kMaximumUnknownTagLines);
    EXPECT_EQ(std::distance(list.begin(), list.end()), kMaximumIppTuples);
}

TEST(IppNames, DumpsARequestInCleanLines) {
    EXPECT_EQ(getStatusString(0x0406), "client-error-not-found");
    EXPECT_EQ(getOpString(0x400F), "CUPS-Get-PPD");
    EXPECT_EQ(getOpString(0xFFFF), "unknown");
    testing::internal::CaptureStdout();
    DumpIppHdr(asBytes("\1\1\0\x0B\0\0\0\1"s));
    DumpIppHdr(asBytes("\1\1\0"s));
    DumpIppAttributes(asBytes("\1" + attribute(0x42, "a\nb", "x\x1By") +
                              attribute(0x21, "n", "\xFF\xFF\xFF\xFE") + attribute(0x22, "f", "") +
                              "\x41\0\1cut"s));
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "IPP/1.1 Get-Printer-Attributes (0x000b), request 1\nIPP header cut off\n"
              "01 ----\n42 ab = 'xy'\n21 n = -2\n22 f = ''\n");
}

}  // namespace
}  // namespace tintoral
