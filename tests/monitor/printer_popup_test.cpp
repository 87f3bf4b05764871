#include "monitor/printer_popup.h"

#include <gtest/gtest.h>

namespace tintoral {
namespace {

PrinterRecordPtr printerNamed(const std::string& id) {
    return std::make_shared<PrinterRecord>(PrinterRecord{{std::string(keys::printerId), id}});
}

TEST(PrinterPopup, NewestFirstAndFoundById) {
    PrinterPopup popup;
    popup.insertFirst(printerNamed("old"));
    popup.insertFirst(printerNamed("new"));
    EXPECT_EQ(popup.indexOf("new"), 0);
    EXPECT_EQ(popup.indexOf("old"), 1);
    EXPECT_EQ(popup.indexOf("Select printer"), -1);
    EXPECT_EQ(popup.find("old"), popup.printers()[1]);
    EXPECT_EQ(popup.find("none"), nullptr);
}

TEST(PrinterPopup, FullOneLosesItsOldestPrinter) {
    PrinterPopup popup;
    for (int i = 0; i < 98; ++i) popup.insertFirst(printerNamed(std::to_string(i)));
    EXPECT_EQ(popup.entryCount(), 100U);
    EXPECT_EQ(popup.dropWhenFull(), nullptr);
    popup.insertFirst(printerNamed("98"));
    EXPECT_EQ(popup.entryCount(), PrinterPopup::kMaximumEntries);
    const PrinterRecordPtr dropped = popup.dropWhenFull();
    ASSERT_TRUE(dropped);
    EXPECT_EQ(dropped->text(keys::printerId), "0");
    EXPECT_EQ(popup.indexOf("0"), -1);
}

}  // namespace
}  // namespace tintoral
