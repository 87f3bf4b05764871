#include "vendors/canon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace tintoral {
namespace {

std::string inquiryText(std::string_view model) {
    std::array<std::uint8_t, 128> buffer{};
    const std::size_t size = mkCanonStatusInquire(model, buffer, "BJL,BJRaster3");
    return std::string(asText(Bytes(buffer).first(size)).substr(std::min<std::size_t>(size, 9)));
}

TEST(CanonRequests, ModelsGetTheirOwnFields) {
    const std::string shortList = "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,HCU,PFS,FSI,PRF;";
    EXPECT_EQ(inquiryText("iP4300"),
              "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,HCU,CIR,CTK,AOF,PFS,FSI,PRF,HRI;");
    EXPECT_EQ(inquiryText("iP4000R"), shortList);
    EXPECT_EQ(inquiryText("iP_3100"), shortList);
    for (const auto* other : {"iP4000RX", "ip4000", "MP999", ""}) {
        EXPECT_EQ(inquiryText(other),
                  "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,CIR,CTK,FSI,PRF,HRI,MSI,PDR;");
    }
}

TEST(CanonRequests, FramesCarryBothLengths) {
    std::array<std::uint8_t, 64> buffer{};
    const auto exitCommand =
        std::to_array<std::uint8_t>({0x1B, 0x5B, 0x4B, 0x0B, 0x00, 0x00, 0x1E, 0x00, 0x09, 0x53,
                                     0x53, 0x52, 0x3D, 0x44, 0x46, 0x3B});
    ASSERT_EQ(mkCanonExitCmd(buffer), exitCommand.size());
    EXPECT_TRUE(std::ranges::equal(exitCommand, Bytes(buffer).first(exitCommand.size())));
    EXPECT_EQ(mkCanonExitCmd(MutableBytes(buffer).first(15)), 0U);
}

TEST(CanonRequests, AnIvecRequestLeavesTheBufferAlone) {
    std::array<std::uint8_t, 512> buffer{};
    buffer.fill(0xA5);
    const auto before = buffer;
    EXPECT_EQ(mkCanonStatusInquire("MP110", buffer, "BJL,IVEC,IVECPLI"), 358U);
    EXPECT_EQ(buffer, before);
}

TEST(CanonRequests, MaintenanceJobs) {
    std::array<std::uint8_t, 70> buffer{};
    const std::string start(
        "\x1B@\x1B[K\x02\0\0\x1F"
        "BJLSTART\n",
        18);
    EXPECT_EQ(mkCanonNozzleOption(buffer, 2), 48U);
    EXPECT_EQ(asText(Bytes(buffer).first(48)), start + "@TestPrint=NozzleCheck\nBJLEND\n");
    EXPECT_EQ(mkCanonNozzleOption(buffer, 1), 40U);
    EXPECT_EQ(textBeforeNul(Bytes(buffer).subspan(9)), "BJLSTART\n@CLEANING=1ALL\nBJLEND\n");
    buffer.fill(1);
    for (const int option : {3, 0, -1}) EXPECT_EQ(mkCanonNozzleOption(buffer, option), 0U);
    EXPECT_EQ(std::ranges::count(buffer, 0), 64);
}

TEST(CanonReplies, StatusComesFromBst) {
    InkQuantities record;
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"xx BST:00;", "Idle"},
        {"BST:04;", "Ink low"},
        {"BST:0C;", "Ink error"},
        {"BST:0c;", "not idle"},
        {"BST:", "not idle"},
        {"DWS:NO;", "Online"},
        {std::string_view("\0\x10"
                          "BST:00;",
                          9),
         "Online"},  // a binary length before the text ends it
    };
    for (const auto& [reply, text] : rows) {
        StatusText status("old");
        EXPECT_EQ(parseCIR(asBytes(reply), status, record), 0);
        EXPECT_EQ(status.view(), text) << reply;
    }
}

TEST(CanonReplies, InksAreReadInOrder) {
    const struct {
        std::string_view reply;
        std::vector<InkEntry> entries;
    } rows[] = {
        {"BST:00;CIR:BK=40,C=UK,PBK=75;", {{1, 40}, {4, 0}, {65, 75}}},
        {"CIR:CL=30,GY=1,G=2,LC=3,LM=4,R=5,Y=6,K=7;",
         {{2, 30}, {19, 1}, {66, 2}, {7, 3}, {8, 4}, {33, 5}, {6, 6}, {1, 7}}},
        {"CIR:M=UKX,bk= 12,C=-4,Y=1000000000000000000356,XX=+7;",
         {{5, 0}, {0, 12}, {4, -4}, {6, 100}, {0, 7}}},
        {"CIR:BK=40,,C=50;",
         {{1, 40}, {0, 50}}},  // one comma is skipped, the other belongs to the name
        {"CIR:BK=40,C;", {{1, 40}}},
    };
    for (const auto& row : rows) {
        StatusText status;
        InkQuantities record;
        ASSERT_EQ(parseCIR(asBytes(row.reply), status, record),
                  static_cast<int>(row.entries.size()));
        ASSERT_EQ(record.usableCount(), row.entries.size());
        EXPECT_TRUE(std::equal(row.entries.begin(), row.entries.end(), record.entries.begin()))
            << row.reply;
    }
}

TEST(CanonReplies, AnIncompleteFieldLeavesTheRecordAndAThousandInksFillIt) {
    StatusText status;
    InkQuantities record;
    record.count = 3;
    for (const auto* reply : {"", "CIR:;", "CIR:BK=40", "CIR:BK;"}) {
        EXPECT_EQ(parseCIR(asBytes(reply), status, record), 0) << reply;
        EXPECT_EQ(record.count, 3);
    }
    std::string items = "CIR:";
    for (int i = 0; i < 1000; ++i) items += "BK=40,";
    EXPECT_EQ(parseCIR(asBytes(items + ";"), status, record), 20);
    EXPECT_EQ(record.count, 20);
    EXPECT_EQ(record.padding, 0);
}

}  // namespace
}  // namespace tintoral
