#include "vendors/maker_and_model.h"

#include <gtest/gtest.h>

namespace tintoral {
namespace {

constexpr const char* kNames[][3] = {
    {"Canon PIXMA iP4300 - Gutenprint v5.0", "Canon", "iP4300"},
    {"Office's Canon Epson 5", "Canon", "Epson 5"},
    {"Hewlett-Packard LaserJet 4", "HP", "lett-Packard LaserJet 4"},  // as meant
    {"Canon ", "Canon", ""},
    {"Epson pm 5 STEP 2", "EPSON", "pm 5 STEP-2"},

    {"officejet 6500", "HP", "officejet 6500"},
    {"Brother MFC 240C", "", "Brother MFC-240C"},
    {"Canon", "", "Canon"},

    {"Epson PM PM PM 1", "EPSON", "PM-PM-PM 1"},
    {"Epson PX PX CL EP 5", "EPSON", "PX-PX CL-EP-5"},
    {"Canon PIXMA PIXMA pixma 1 - GUTENPRINT - x", "Canon", "PIXMA pixma 1"},
};

TEST(IdentifyMakerAndModelName, SplitsNames) {
    for (const auto& [name, expectedMaker, expectedModel] : kNames) {
        FixedText<64> maker("old");
        FixedText<64> model("old");
        EXPECT_EQ(identifyMakerAndModelName(name, maker, model), 0);
        EXPECT_EQ(maker.view(), expectedMaker) << name;
        EXPECT_EQ(model.view(), expectedModel) << name;
    }
}

}  // namespace
}  // namespace tintoral
