#include "transport/usb/usb_ink_status.h"

#include <gtest/gtest.h>

#include "monitor/record_rules.h"
#include "monitor/update_cycle.h"
#include "simulators/sim_usb_printer.h"
#include "simulators/virtual_canon.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_epson.h"
#include "simulators/virtual_mlc_hp.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

using namespace test;

template <typename Printer>
SimUsbAnswer answerOf(Printer& printer) {
    return [&printer](Bytes heard) -> std::vector<ByteVector> {
        ByteVector answer = printer.onReceive(heard);
        if (answer.empty()) return {};
        return {std::move(answer)};
    };
}

template <typename Printer>
SimUsbAnswer packetsOf(Printer& printer) {
    return [&printer](Bytes heard) { return printer.transfersFor(heard); };
}

class UsbInkStatusTest : public testing::Test {
  protected:
    SimUsbPrinter& attach(std::string_view maker, std::string_view model,
                          std::string_view more = "") {
        SimUsbSetup setup;
        setup.deviceID =
            "MFG:" + std::string(maker) + ";MDL:" + std::string(model) + ";" + std::string(more);
        record_.set(keys::serverType, server_types::usb);
        record_.set(keys::kind, "USB");
        record_.set(keys::makerName, maker);
        record_.set(keys::modelName, model);
        record_.set(keys::vendorID, int{setup.vendor});
        record_.set(keys::productID, int{setup.product});
        return bus_.attach(std::move(setup));
    }

    int ask() {
        inks_ = {};
        status_.clear();
        return queryPrinter(record_, inks_, status_);
    }

    std::vector<InkEntry> inks() const {
        return {inks_.entries.begin(), inks_.entries.begin() + inks_.count};
    }

    TestClock clock_;
    ScopedClock scope_{clock_};
    SimUsbBus bus_;
    PrinterRecord record_;
    InkQuantities inks_;
    StatusText status_;
};

const std::vector<InkEntry> kEpsonInks{{1, 60}, {4, 42}, {5, 31}, {6, 80}};

TEST_F(UsbInkStatusTest, EpsonIsAskedInEachCommandTypeAndRemembered) {
    VirtualEpson epson({.replies = {EpsonReply::Text, EpsonReply::None, EpsonReply::None}});
    SimUsbPrinter& usb = attach("EPSON", "Stylus C84");
    usb.answerWith(answerOf(epson));
    record_.set(keys::commandType, "RC1");  // the variants before it would take their time
    EXPECT_EQ(ask(), 4);
    EXPECT_EQ(record_.text(keys::commandType), "RC0");
    EXPECT_EQ(status_.view(), "Idle");
    EXPECT_EQ(usb.owner(), "usblp");

    epson.change({.replies = {EpsonReply::None, EpsonReply::None, EpsonReply::Binary}});
    EXPECT_EQ(ask(), -1);  // only RC0 is tried, and then forgotten
    EXPECT_FALSE(record_.contains(keys::commandType));
}

// The stated length of a reply is what had been left in the printer. A reply that is longer, or
// comes in pieces, is whole all the same.
TEST_F(UsbInkStatusTest, EpsonReplyInPiecesBehindStaleBytes) {
    VirtualEpson epson;
    SimUsbPrinter& usb = attach("EPSON", "Stylus C84");
    usb.answerWith([&](Bytes heard) -> std::vector<ByteVector> {
        const ByteVector answer = epson.onReceive(heard);
        if (answer.empty()) return {};
        const auto middle = answer.begin() + 20;
        return {{answer.begin(), middle}, {middle, answer.end()}};
    });
    usb.say({'s', 't', 'a', 'l', 'e'});
    record_.set(keys::commandType, "RC");
    EXPECT_EQ(ask(), 4);
    EXPECT_EQ(inks(), kEpsonInks);
}

TEST_F(UsbInkStatusTest, EpsonOverD4ReadAndCleaned) {
    VirtualD4Epson epson;
    SimUsbPrinter& usb = attach("EPSON", "Stylus Photo R2400");
    usb.answerWith(packetsOf(epson));
    EXPECT_EQ(ask(), 4);
    EXPECT_EQ(inks(), kEpsonInks);
    EXPECT_EQ(record_.text(keys::commandType), "D4");
    EXPECT_FALSE(epson.inPacketMode());
    sendMaintenance(record_, 1);
    EXPECT_EQ(epson.jobs(), std::vector<std::string>{"cleaning"});
    EXPECT_EQ(usbEpsonD4NozzelOptions(usbPrinterOfRecord(record_), 0, 2), -1);
    EXPECT_EQ(epson.commands().back(), "ei");
    EXPECT_EQ(usb.owner(), "usblp");
}

TEST_F(UsbInkStatusTest, CanonIsReadAndToldThatTheInquiryIsOver) {
    VirtualCanon canon({.status = "0C"});
    SimUsbPrinter& usb = attach("Canon", "Pro9000", "CMD:BJL,BJRaster3;");
    usb.answerWith(answerOf(canon));
    EXPECT_EQ(ask(), 5);
    EXPECT_EQ(status_.view(), "Ink error");
    EXPECT_EQ(inks().at(1), (InkEntry{1, 40}));
    EXPECT_EQ(canon.requests().back(), "SSR=DF;");
    sendMaintenance(record_, 2);
    EXPECT_EQ(canon.jobs(), std::vector<std::string>{"nozzle check"});
}

TEST_F(UsbInkStatusTest, CanonThatSpeaksIvecIsAskedOnce) {
    VirtualCanon canon({.ivec = true});
    attach("Canon", "MG5200").answerWith(answerOf(canon));
    record_.set(keys::usbCmd, "BJL,IVEC;");
    EXPECT_EQ(ask(), 5);
    EXPECT_EQ(canon.requests(), std::vector<std::string>{"IVEC"});
}

TEST_F(UsbInkStatusTest, HPTellsItsPensWithoutBeingOpenedAndIsCleanedInItsLanguage) {
    VirtualMlcHp hp;
    SimUsbPrinter& usb = attach("Hewlett-Packard", "HP PSC 1350",
                                "VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,KP030,C0,CP045;");
    usb.answerWith(packetsOf(hp));
    record_.set(keys::makerName, "HP");
    record_.set(keys::devModelName, "HP PSC 1350");
    record_.set(keys::modelName, "PSC 1350");
    usb.holdElsewhere(true);
    EXPECT_EQ(ask(), 2);
    EXPECT_EQ(inks_.entries[0].level, 30);
    EXPECT_EQ(inks_.entries[1].level, 45);
    usb.holdElsewhere(false);

    record_.set(keys::usbCmd, "MLC,PCL,PML;");
    sendMaintenance(record_, 1);
    ASSERT_EQ(hp.requests().size(), 1U);
    EXPECT_EQ(hp.requests().front().size(), 12U);
    const std::size_t before = usb.heard().size();
    record_.set(keys::usbCmd, "PJL,PML,PCL;");
    sendMaintenance(record_, 1);
    EXPECT_EQ(usb.heard().size() - before, 72U);
}

TEST_F(UsbInkStatusTest, UnreachableAndUnknownPrinters) {
    SimUsbPrinter& usb = attach("EPSON", "Stylus C84");
    usb.holdElsewhere(true);
    EXPECT_EQ(ask(), -1);
    usb.holdElsewhere(false);
    usb.unplug();
    EXPECT_EQ(ask(), -1);
    EXPECT_EQ(status_.view(), "");
    record_.set(keys::makerName, "Acme");
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(status_.view(), "This printer is not suppoted yet.");
}

}  // namespace
}  // namespace tintoral
