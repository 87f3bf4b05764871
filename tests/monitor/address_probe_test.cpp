#include "monitor/address_probe.h"

#include <gtest/gtest.h>

namespace tintoral {
namespace {

AddressRequest requestFor(std::string host, Connection connection, std::string model) {
    return {std::move(host), connection, 9101, std::move(model)};
}

TEST(AddressProbe, RecordReachesThePrinterItsConnectionNames) {
    const auto raw =
        makeAddressedRecord(requestFor("10.0.0.9", Connection::RawPort, "Epson Stylus Photo R300"));
    EXPECT_EQ(raw->text(keys::printerId), "Network:EPSON Stylus Photo R300 (10.0.0.9:9101)");
    EXPECT_EQ(raw->text(keys::kind), "port9101:10.0.0.9");
    EXPECT_EQ(raw->text(keys::makerName), "EPSON");
    EXPECT_EQ(raw->text(keys::modelName), "Stylus Photo R300");
    EXPECT_EQ(raw->integer(keys::port), 9101);
    EXPECT_EQ(raw->text(keys::addedByAddress), kYes);

    const auto mib = makeAddressedRecord(
        requestFor("printer.example", Connection::PrinterMib, "Acme Color/100"));
    EXPECT_EQ(mib->text(keys::printerId), "Network:Acme Color-100 (printer.example)");
    EXPECT_EQ(mib->text(keys::kind), "lpd:printer.example");
    EXPECT_EQ(mib->text(keys::makerAndModelName), "Acme Color/100");
}

TEST(AddressProbe, SaysWhatIsWrong) {
    const auto problem = [](const char* host, const char* model) {
        return problemWith(requestFor(host, Connection::RawPort, model));
    };
    EXPECT_EQ(problem("10.0.0.9", "Acme One"), "");
    for (const char* host :
         {"", "10.0.0.9:9100", "http://x", "a b", "a\tb", "fe80::1", "user@host"}) {
        EXPECT_NE(problem(host, "Acme One"), "") << host;
    }
    EXPECT_NE(problem("10.0.0.9", ""), "");
}

}  // namespace
}  // namespace tintoral
