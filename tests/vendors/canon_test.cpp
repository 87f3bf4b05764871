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
    EXPECT_EQ(inquiryText("iP4300"),
              "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,HCU,CIR,CTK,AOF,PFS,FSI,PRF,HRI;");
    EXPECT_EQ(inquiryText("iP4000R"), "SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,HCU,PFS,FSI,PRF;");
    for (const auto* other : {"iP4000RX", "ip4000"}) {
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

    // The length of an IVEC request is told, but nothing is written, as meant.
    std::array<std::uint8_t, 512> untouched{};
    untouched.fill(0xA5);
    EXPECT_EQ(mkCanonStatusInquire("MP110", untouched, "BJL,IVEC,IVECPLI"), 358U);
    EXPECT_EQ(std::ranges::count(untouched, 0xA5), 512);
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
    EXPECT_EQ(mkCanonNozzleOption(buffer, 3), 0U);
    EXPECT_EQ(std::ranges::count(buffer, 0), 64);
}

TEST(CanonReplies, GiveStatusAndInksInOrder) {
    const struct {
        std::string_view reply, status;
        std::vector<InkEntry> entries;
    } rows[] = {
        {"xx BST:00;", "Idle", {}},
        {"BST:0c;", "not idle", {}},
        {{"\0\x10\x42ST:00;", 9}, "Online", {}},  // a binary length before the text ends it
        {"BST:0C;CIR:BK=40,C=UK,PBK=75,G=2;", "Ink error", {{1, 40}, {4, 0}, {65, 75}, {66, 2}}},
        {"CIR:M=UKX,bk= 12,C=-4,Y=1000000000000000000356,XX=+7;",
         "Online",
         {{5, 0}, {0, 12}, {4, -4}, {6, 100}, {0, 7}}},
        {"CIR:BK=40,,C=50;", "Online", {{1, 40}, {0, 50}}},  // the 2nd comma is the name's
        {"CIR:BK=40,C;", "Online", {{1, 40}}},
    };
    for (const auto& row : rows) {
        StatusText status("old");
        InkQuantities record;
        EXPECT_EQ(parseCIR(asBytes(row.reply), status, record),
                  static_cast<int>(row.entries.size()));
        EXPECT_EQ(status.view(), row.status) << row.reply;
        ASSERT_EQ(record.usableCount(), row.entries.size());
        EXPECT_TRUE(std::equal(row.entries.begin(), row.entries.end(), record.entries.begin()));
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
