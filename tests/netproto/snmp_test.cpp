#include "netproto/snmp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace tintoral {
namespace {

using Octets = std::vector<std::uint8_t>;

Octets joined(std::initializer_list<Octets> parts) {
    Octets all;
    for (const Octets& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

Octets tlv(std::uint8_t tag, const Octets& content) {
    Octets whole(content.size() + 4, tag);
    whole.resize(mkBerPkt(content, whole));
    return whole;
}

// An answer with request-id 1, error-status 2, error-index 3 and the bindings given.
Octets response(const Octets& bindings) {
    return tlv(0x30,
               joined({{2, 1, 0},
                       {4, 6, 'p', 'u', 'b', 'l', 'i', 'c'},
                       tlv(0xA2, joined({{2, 1, 1, 2, 1, 2, 2, 1, 3}, tlv(0x30, bindings)}))}));
}

Octets binding(const Octets& name, const Octets& value) {
    return tlv(0x30, joined({tlv(6, name), value}));
}

TEST(BerLength, HasThreeForms) {
    const std::pair<std::size_t, Octets> rows[] = {
        {127, {4, 0x7F}}, {128, {4, 0x81, 0x80}}, {65535, {4, 0x82, 255, 255}}};
    for (const auto& [length, header] : rows) {
        Octets built(4, 4);
        const std::size_t size = setBerLength(built, length);
        EXPECT_EQ(berOffset(built), size) << length;
        EXPECT_EQ(berLength(built), length);
        built.resize(size);
        EXPECT_EQ(built, header) << length;
        EXPECT_EQ(setBerLength(MutableBytes(built).first(size - 1), length), 0U);
    }
    Octets big(8, 4);
    EXPECT_EQ(setBerLength(big, 65536), 0U);
}

TEST(MkBer, EncodesByTag) {
    Octets number(9, 0xEE);
    EXPECT_EQ(mkBER(2, -2, 4, number), 6U);
    EXPECT_EQ(number, (Octets{2, 4, 255, 255, 255, 254, 0, 0, 0xEE})) << "8 bytes are cleared";
    EXPECT_EQ(mkBER(2, -2, 1, number), 3U);
    EXPECT_EQ(number, (Octets{2, 1, 254, 0, 0, 0, 0, 0, 0xEE}));
    const Octets content{10, 77, 0, 11};
    Octets output(6);
    EXPECT_EQ(mkBER(64, content, output), 6U);
    EXPECT_EQ(output, (Octets{64, 4, 10, 77, 0, 11}));
    EXPECT_EQ(mkBER(64, content, MutableBytes(output).first(5)), 0U);
    EXPECT_EQ(mkBER(65, -2, 1, output), 6U);  // a counter is never shortened
    EXPECT_EQ(mkBER(5, content, output), 2U);
    EXPECT_EQ(mkBER(165, content, output), 0U);
}

TEST(ObjectId, ConvertsBothWays) {
    const struct {
        const char* text;
        Octets content;
        const char* back;
    } rows[] = {
        {"2B.6.127.128", {0x2B, 6, 127, 0x81, 0}, "1.3.6.127.128"},
        {"1.3.6.1.4.1.2435.16383.16384",
         {0x2B, 6, 1, 4, 1, 0x93, 3, 0xFF, 0x7F, 0x81, 0x80, 0},
         "1.3.6.1.4.1.2435.16383.16384"},
        {"1.2.5", {1, 2, 5}, "1.2.5"},  // not split, as meant
        {"1.3.2097152.2097151", {0x2B, 0x80, 0x80, 0, 0xFF, 0xFF, 0x7F}, "1.3.0.2097151"},
        {"", {}, ""},
    };
    for (const auto& row : rows) {
        Octets content(40);
        content.resize(inet10tobjid(row.text, content));
        EXPECT_EQ(content, row.content) << row.text;
        OidText text;
        EXPECT_EQ(objid2str(text, content), std::strlen(row.back));
        EXPECT_EQ(text.view(), row.back);
    }
    Octets small(5);
    EXPECT_EQ(inet10tobjid("1.3.6.1.2.1.43", small), 0U);

    FixedText<12> narrow;
    EXPECT_EQ(objid2str(narrow, Octets{0x2B, 6, 1, 0x93, 3, 1}), 7U);
    EXPECT_EQ(narrow.view(), "1.3.6.1") << "a cut sub-identifier would be another object";
    EXPECT_EQ(objid2str(narrow, Octets{0x2B, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F}), 6U);
    EXPECT_EQ(narrow.view(), "1.3.-1");
    OidText full;
    objid2str(full, Octets(2000, 0x7F));
    EXPECT_TRUE(full.view().ends_with(".127"));
}

TEST(BerGetValue, DecodesByTag) {
    const struct {
        Octets tlv;
        std::string text;
        std::uint32_t tag, size;
        std::int32_t number;
    } rows[] = {
        {{2, 1, 0xFE}, "", 2, 3, -2},
        {{2, 2, 0xFF, 0xFE}, "", 2, 4, 65534},
        {{2, 5, 0, 1, 1, 1, 1}, "", 2, 7, 0},
        {{64, 4, 10, 77, 0, 11}, "", 64, 6, 0x0A4D000B},
        {{4, 2, 'h', 'i', 9, 9}, "hi", 4, 4, 0},
        {{6, 3, 0x2B, 6, 1}, "1.3.6.1", 6, 5, 0},
        {{2, 4, 1, 2, 3}, "", 0, 0, 0},
        {{4, 0x83, 0, 0, 1, 'x'}, "", 0, 0, 0},
        {{4, 0x82, 1}, "", 0, 0, 0},
    };
    for (const auto& row : rows) {
        SnmpValue value{99, FixedText<512>("old")};
        std::uint32_t tag = 99, length = 99;
        SCOPED_TRACE(testing::PrintToString(row.tlv));
        EXPECT_EQ(berGetValue3(row.tlv, tag, value, length), row.size);
        EXPECT_EQ(tag, row.tag);
        EXPECT_EQ(value.number, row.number);
        EXPECT_EQ(value.text.view(), row.text);
    }
}

TEST(MkSnmpSrcPacket, AsksWithNullsWhateverTheValues) {
    SnmpMessage message;
    message.pduType = snmp_pdus::getNextRequest;
    message.requestId = 0x01020304;
    message.errorStatus = 0x105;
    message.varBinds[0] = {OidText("1.3.6.1"), ber_tags::octetString, 1, {0, FixedText<512>("v")}};
    message.varBinds[2].oid.assign("1.3.9");  // behind an empty one: not sent
    const Octets head{0x30, 36, 2, 1, 0, 4, 6, 'p', 'u', 'b', 'l', 'i', 'c'};
    const Octets ids{2, 4, 1, 2, 3, 4, 2, 1, 5, 2, 1, 0};
    const Octets asked =
        joined({head, {0xA1, 23}, ids, {0x30, 9, 0x30, 7, 6, 3, 0x2B, 6, 1, 5, 0}});
    std::array<std::uint8_t, 1024> buffer{};
    ASSERT_EQ(mkSNMPSrcPacket(buffer, message), asked.size());
    EXPECT_TRUE(std::equal(asked.begin(), asked.end(), buffer.begin()));
    EXPECT_EQ(mkSNMPSrcPacket(MutableBytes(buffer).first(asked.size() - 1), message), 0U);

    message.pduType = snmp_pdus::setRequest;
    const std::size_t size = mkSNMPSrcPacket(buffer, message);
    ASSERT_EQ(size, asked.size() + 1);
    EXPECT_TRUE(std::ranges::equal(Bytes(buffer).first(size).last(3), Octets{4, 1, 'v'}));
}

TEST(ParseSnmpPacket, KeepsTenBindingsAndWholeTexts) {
    const Octets one = binding({0x2B, 6, 1}, {2, 1, 35});
    SnmpMessage message;
    message.varBinds[1].oid.assign("1.3.6.1.2");  // what was asked must not pass for an answer
    EXPECT_EQ(parseSnmpPacket(response(one), message), 1);
    EXPECT_EQ(message.varBinds[0].oid.view(), "1.3.6.1");
    EXPECT_TRUE(message.varBinds[1].oid.empty());

    Octets many;
    for (int i = 0; i < 12; ++i) many = joined({many, one});
    EXPECT_EQ(parseSnmpPacket(response(many), message), 10);

    const Octets longText = binding({0x2B, 6}, tlv(4, Octets(1500, 'x')));
    EXPECT_EQ(parseSnmpPacket(response(joined({longText, one})), message), 2);
    EXPECT_EQ(message.varBinds[0].value.text.view(), std::string(511, 'x'));
    EXPECT_EQ(message.varBinds[1].value.number, 35);
}

// Every cut of a packet, and every single byte of it made hostile, decodes to fewer bindings or
// other values, never to a read outside (which the sanitizers would see).
TEST(ParseSnmpPacket, ToleratesAnyDamage) {
    const Octets one = binding({0x2B, 6, 1}, {2, 1, 35});
    const Octets whole = response(joined({one, one, one}));
    SnmpMessage message;
    FixedText<256> dump;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::size_t missing = whole.size() - size;
        const Octets cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const auto expected = 3 - static_cast<int>((missing + one.size() - 1) / one.size());
        EXPECT_EQ(parseSnmpPacket(cut, message), std::max(expected, 0)) << size;
        sdumpSnmpPacket(dump, cut);
    }
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const int byte : {0, 1, 0x7F, 0x80, 0x81, 0x82, 0x83, 0xFF}) {
            Octets damaged = whole;
            damaged[at] = static_cast<std::uint8_t>(byte);
            EXPECT_LE(parseSnmpPacket(damaged, message), 4);
            dump.clear();
            sdumpSnmpPacket(dump, damaged);
        }
    }
}

TEST(Dump, IsReadableAndOfOneLineAText) {
    const Octets packet =
        response(joined({binding({0x2B, 6}, {2, 1, 0xFE}), binding({0x2B, 8}, {5, 0}),
                         binding({0x2B, 9}, {6, 1, 0x2B}), binding({0x2B, 10}, {0x41, 1, 5}),
                         binding({0x2B, 7}, tlv(4, {'a', '\n', 0x1B, 'b', 0, 'c'}))}));
    FixedText<1024> text("before\n");
    EXPECT_EQ(sdumpSnmpPacket(text, packet), 0U);
    // No separator before the name of the PDU, the body's length in hexadecimal, as meant.
    EXPECT_EQ(text.view(),
              "before\nheader len = 0 73 \nversion = 0 len = 3\ncommunity = public \n"
              "PDU Type = a2 len = 62Response\nrequestID = 1 \nerror status = 2 \n"
              "error index = 3 \nBody 30 len = 33 \noid = 1.3.6v = -2 \noid = 1.3.8v = null\n"
              "oid = 1.3.9v = 1.3 \noid = 1.3.10v = 5\noid = 1.3.7v = 'ab'\n");
}

}  // namespace
}  // namespace tintoral
