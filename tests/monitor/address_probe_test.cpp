#include "monitor/address_probe.h"

#include <gtest/gtest.h>

namespace tintoral {
namespace {

TEST(AddressProbe, RecordReachesThePrinterItsConnectionNames) {
    const auto raw =
        makeAddressedRecord({"10.0.0.9", Connection::RawPort, 9101, "Epson Stylus Photo R300"});
    EXPECT_EQ(raw->text(keys::printerId), "Network:EPSON Stylus Photo R300 (10.0.0.9:9101)");
    EXPECT_EQ(raw->text(keys::kind), "port9101:10.0.0.9");
    EXPECT_EQ(raw->text(keys::addedByAddress), kYes);
    const auto mib =
        makeAddressedRecord({"printer.example", Connection::PrinterMib, 9101, "Acme Color/100"});
    EXPECT_EQ(mib->text(keys::printerId), "Network:Acme Color-100 (printer.example)");
    EXPECT_EQ(mib->text(keys::kind), "lpd:printer.example");
}

TEST(AddressProbe, SaysWhatIsWrong) {
    const auto problem = [](const char* host, const char* model) {
        return problemWith({host, Connection::RawPort, 9101, model});
    };
    EXPECT_EQ(problem("10.0.0.9", "Acme One"), "");
    for (const char* host :
         {"", "10.0.0.9:9100", "http://x", "a b", "a\tb", "fe80::1", "user@host"}) {
        EXPECT_NE(problem(host, "Acme One"), "") << host;
    }
    EXPECT_NE(problem(std::string(65, 'x').c_str(), "Acme One"), "");
    EXPECT_NE(problem("10.0.0.9", ""), "");
}

}  // namespace
}  // namespace tintoral
