#include "vendors/maker_and_model.h"

#include <gtest/gtest.h>

namespace tintoral {
namespace {

struct NameCase {
    const char* name;
    const char* maker;
    const char* model;
};

// The last name in each group is one that a tidier reading would split otherwise.
constexpr NameCase kNames[] = {
    {"Epson Stylus Photo R800", "EPSON", "Stylus Photo R800"},
    {"Canon PIXMA iP4300 - Gutenprint v5.0", "Canon", "iP4300"},
    {"EPSON PM A820", "EPSON", "PM-A820"},
    {"HP Deskjet 5550", "HP", "Deskjet 5550"},
    {"Office's Canon Epson 5", "Canon", "Epson 5"},
    {"Hewlett-Packard LaserJet 4", "HP", "lett-Packard LaserJet 4"},
    {"Canon ", "Canon", ""},

    {"officejet 6500", "HP", "officejet 6500"},
    {"Photosmart Stylus Pixma", "Canon", "Photosmart Stylus Pixma"},
    {"Brother MFC 240C", "", "Brother MFC-240C"},
    {"Canon", "", "Canon"},
    {"", "", ""},

    {"Epson PM PM PM 1", "EPSON", "PM-PM-PM 1"},
    {"Epson PX PX CL EP 5", "EPSON", "PX-PX CL-EP-5"},
    {"Epson pm 5 STEP 2", "EPSON", "pm 5 STEP-2"},
    {"Canon PIXMA PIXMA pixma 1 - GUTENPRINT - x", "Canon", "PIXMA pixma 1"},
};

TEST(IdentifyMakerAndModelName, SplitsNames) {
    for (const NameCase& row : kNames) {
        FixedText<64> maker("old");
        FixedText<64> model("old");
        EXPECT_EQ(identifyMakerAndModelName(row.name, maker, model), 0);
        EXPECT_EQ(maker.view(), row.maker) << row.name;
        EXPECT_EQ(model.view(), row.model) << row.name;
    }
}

}  // namespace
}  // namespace tintoral
