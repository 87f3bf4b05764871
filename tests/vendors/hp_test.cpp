#include "vendors/hp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <vector>

namespace tintoral {
namespace {

struct Reading {
    std::string_view text;
    int result;
    std::string_view status;
    std::vector<InkEntry> entries;  // from the first on; the rest are empty
};

void expectReadings(std::span<const Reading> rows, const auto& parse) {
    for (const Reading& row : rows) {
        StatusText status("old");
        InkQuantities record, expected;
        std::ranges::copy(row.entries, expected.entries.begin());
        EXPECT_EQ(parse(row.text, status, record), row.result) << row.text;
        EXPECT_EQ(status.view(), row.status) << row.text;
        EXPECT_EQ(record.entries, expected.entries) << row.text;
        EXPECT_EQ(record.count, std::max(row.result, 0)) << row.text;
    }
}

TEST(HPDeviceID, PensOfVStatusAndOfTheSField) {
    const Reading rows[] = {
        {"MFG:HP;VSTATUS:$HB0$FC0,DN,IDLE,CUT,K0,KP045,C1,DP;CP099;", 2, "Idle", {{1, 45}, {2, 0}}},
        {"VSTATUS:BUSY,K1,C3,CP100,", 2, "Busy", {{1, 0}, {2, 100}}},
        {"VSTATUS:IDLE,C0,CP050,;",
         1,
         "Idle",
         {{0, 0}, {2, 50}}},  // the colour pen keeps the second place
        {"VSTATUS:CLNO,PAJM,K0,;", 1, "Cleen out tray missing", {}},  // as meant
        {"VSTATUS:,K0,K1,KP7", 1, "Online", {{1, 7}}},
        // The S field: the version, filler up to the count's place, the count, the pens.
        {"MDL:x;S:00..............2C10000284500005F;", 2, "Online", {{1, 40}, {5, 95}}},
        {";S:02..............1FF0000FE", 1, "Online", {{63, -2}}},
        {";S:04....................106000064", 1, "Online", {{6, 100}}},
        {";S:00..............F410000284200002", 1, "Online", {{1, 40}}},
        {";S:00............../41000028", 0, "Online", {}},
        {";S:00..............041000028", 0, "Online", {}},
        {";S:05..............141000028", -1, "Version missing at deviceID.", {}},
    };
    expectReadings(rows, parseHPDeviceID);
    const Reading noField[] = {{"S:00;MFG:HP;MDL:x;", 0, "", {}}};
    expectReadings(noField, [](auto text, auto& status, auto& record) {
        setIQByColorID(record, 1, 50);  // to be cleared
        return parseHPDeviceID(text, status, record);
    });
}

TEST(HPDeviceID, APenWithoutALevelKeepsWhatItsEntryHeld) {
    for (const char* field : {"VSTATUS:IDLE,K0,C0,CP050,", "VSTATUS:IDLE,C0,CP050,"}) {
        StatusText status;
        InkQuantities record;
        setIQByColorID(record, 1, 100);
        setIQByColorID(record, 2, 100);
        parseVStatus(field, record, status);
        EXPECT_EQ(record.entries[0], (InkEntry{1, 100})) << field;
        EXPECT_EQ(record.entries[1], (InkEntry{2, 50})) << field;
    }
}

TEST(HPWarnings, KnownCodesSetLevels) {
    const Reading rows[] = {
        {"BST:00;DWS:1501,1573,NO;", 2, "old", {{1, 20}, {4, 40}}},
        {"DWS:15111582;", 2, "old", {{6, 20}, {5, 70}}},
        {"DWS:9999,1515,1502;", 2, "old", {{7, 20}, {65, 20}}},
        {"DWS:NO,1501;", 0, "old", {}},
        {"DWS:1501,1510", 0, "old", {}},
    };
    expectReadings(rows, [](auto text, auto&, auto& record) { return parseDWS(text, record); });
}

std::string framed(const std::string& query) {
    std::string command = "\033E\033%-12345X@PJL ENTER LANGUAGE=PCL3GUI\n";
    return command.append(query).append("\033E\033%-12345X");
}

TEST(HPCommands, CleaningFollowsTheCommandSet) {
    const std::string pml("\x04\0\x06\x01\x04\x01\x05\x01\x01\x04\x01\x64", 12);
    std::array<std::uint8_t, 130> buffer{};
    EXPECT_EQ(mkHPCleaningCmd("PJL,PML,BIDI", buffer), 72U);
    EXPECT_EQ(asText(Bytes(buffer).first(72)), framed("\033&b16WPML " + pml));
    EXPECT_EQ(mkHPCleaningCmd("MLC,PCL,PML", buffer), 12U);
    EXPECT_EQ(asText(Bytes(buffer).first(12)), pml);
    buffer.fill(1);
    EXPECT_EQ(mkHPCleaningCmd("PCL,PJL,PML", buffer), 0U);
    EXPECT_EQ(std::ranges::count(buffer, 0), 128);
}

TEST(HPCommands, DiagnosticRequestsResetBeforeTheQuery) {
    const std::string queries[] = {
        {"\033E\033&b11WPML \0\0\x04\x01\x01\x03\x02", 19},
        {"\033E\033&b14WPML \0\0\x07\x02\x0B\x01\x01\x06\x01\x01", 22},
        {"\033E\033&b14WPML \0\0\x07\x02\x0B\x01\x01\x06\x01\x02", 22},
    };
    std::array<std::uint8_t, 72> buffer{};
    for (int i = 0; i < kHPDiagnosticRequests; ++i) {
        const std::size_t size = mkHPDiagnosticRequest(i, buffer);
        EXPECT_EQ(size, i == 0 ? 69U : 72U);
        EXPECT_EQ(asText(Bytes(buffer).first(size)), framed(queries[i]));
    }
    EXPECT_EQ(mkHPDiagnosticRequest(3, buffer), 0U);
    EXPECT_EQ(mkHPDiagnosticRequest(1, MutableBytes(buffer).first(71)), 0U);
}

}  // namespace
}  // namespace tintoral
