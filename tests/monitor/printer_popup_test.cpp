#include "monitor/printer_popup.h"

#include <gtest/gtest.h>

namespace tintoral {
namespace {

PrinterRecordPtr printerNamed(const std::string& id) {
    return std::make_shared<PrinterRecord>(PrinterRecord{{std::string(keys::printerId), id}});
}

TEST(PrinterPopup, ListsTheNewestFirstAndLosesTheOldestWhenFull) {
    PrinterPopup popup;
    for (int i = 0; i < 98; ++i) popup.insertFirst(printerNamed(std::to_string(i)));
    EXPECT_EQ(popup.dropWhenFull(), nullptr);
    popup.insertFirst(printerNamed("98"));
    EXPECT_EQ(popup.indexOf("98"), 0);
    EXPECT_EQ(popup.find("97"), popup.printers()[1]);
    const PrinterRecordPtr dropped = popup.dropWhenFull();
    ASSERT_TRUE(dropped);
    EXPECT_EQ(dropped->text(keys::printerId), "0");
    EXPECT_EQ(popup.indexOf("0"), -1);
    EXPECT_EQ(popup.find("0"), nullptr);
}

}  // namespace
}  // namespace tintoral
