#include "transport/usb/device_id.h"

#include <gtest/gtest.h>

#include <string>

namespace tintoral {
namespace {

TEST(DeviceID, SplitsIntoMakeAndModel) {
    constexpr std::string_view kRows[][3] = {
        {"MFG:Hewlett-Packard;MDL:HP LaserJet 1020;", "HP", "HP LaserJet 1020"},
        {"MFG:Lexmark International, Inc.;MDL:Z52", "Lexmark", "Z52"},
        {"MFG:Canon \t;MDL: iP4300 ;", "Canon", " iP4300 "},  // only the make is trimmed
        {"MDL:b;Model:a;MFG:y;Manufacturer:x;", "x", "a"},
        {"MDL:hp deskjet 5550;", "hp deskjet 5550", "hp deskjet 5550"},
        {"mfg:EPSON;mdl:C84;", "Unknown", "Unknown"},  // the keys' case counts
        {"DES:Hewlett-Packard hp deskjet;", "HP", "deskjet"},
        {"MFG:EPSON;DES:Seiko Printer 7;", "Seiko Printer 7", ""},
        {"DES:a printe;", "a printe", ""},
        {"DES:printer;", "Unknown", "Unknown"},
        {"DES:1234;567 ab", "Unknown", "Unknown"},
    };
    for (const auto& [deviceID, expectedMake, expectedModel] : kRows) {
        FixedText<64> make("old");
        FixedText<64> model("old");
        EXPECT_EQ(backendGetMakeModel(deviceID, make, model, 64), 0) << deviceID;
        EXPECT_EQ(make.view(), expectedMake) << deviceID;
        EXPECT_EQ(model.view(), expectedModel) << deviceID;
    }
}

TEST(DeviceID, NothingToSplitLeavesTheTextsAloneAndLongNamesAreCut) {
    FixedText<256> make("old");
    FixedText<20> model("old");
    EXPECT_EQ(backendGetMakeModel("", make, model, 64), -1);
    EXPECT_EQ(backendGetMakeModel(std::string_view("\0MDL:a;", 7), make, model, 64), -1);
    EXPECT_EQ(backendGetMakeModel("MFG:a;MDL:b;", make, model, 31), -1);
    EXPECT_EQ(make.view(), "old");
    EXPECT_EQ(model.view(), "old");
    EXPECT_EQ(backendGetMakeModel("MFG:;MDL:b;", make, model, 32), -1);
    EXPECT_TRUE(make.empty());
    EXPECT_EQ(model.view(), "b");
    const std::string deviceID = "MFG:" + std::string(99, 'm') + ";MDL:" + std::string(99, 'd');
    EXPECT_EQ(backendGetMakeModel(deviceID, make, model, 32), 0);
    EXPECT_EQ(make.view(), std::string(31, 'm'));
    EXPECT_EQ(model.view(), std::string(19, 'd'));
}

}  // namespace
}  // namespace tintoral
