// What announcements become, without anybody announcing anything.
#include <gtest/gtest.h>

#include "discovery/service_table.h"

namespace tintoral {
namespace {

using Strings = std::vector<std::string_view>;

TxtRecord txtOf(const Strings& strings) {
    TxtRecord txt;
    for (const std::string_view string : strings) txt.add(string);
    return txt;
}

ResolvedService serviceAt(std::string name, std::string_view type, const Strings& txt,
                          std::string address = "10.77.0.11", std::uint16_t port = 9100) {
    return {{std::move(name), std::string(type)}, std::move(address), port, "p.local", txtOf(txt)};
}

PrinterRecord recordOf(const ResolvedService& service) {
    PrinterRecord record;
    fillServiceRecord(record, service, false);
    return record;
}

TEST(TxtRecord, ReadsWhatPeersWrite) {
    const std::string longest(255, 'x');
    TxtRecord txt = txtOf({"", "=nobody", "flag", "TY=first", "ty=second", "rp=a=b\x1b[2J\n",
                           "pdl=", std::string_view("usb_CMD=\xE9\0z", 11)});
    EXPECT_EQ(txt.text("ty"), "first");
    EXPECT_EQ(txt.text("Rp"), "a=b[2J");
    EXPECT_EQ(txt.text("pdl"), "");
    EXPECT_EQ(txt.text("usb_CMD"), "\xC3\xA9z");
    EXPECT_EQ(txt.text("flag"), std::nullopt);
    EXPECT_EQ(txt.text(""), std::nullopt);
    for (int i = 0; i < 1000; ++i) txt.add("k" + std::to_string(i) + "=" + longest);
    EXPECT_TRUE(txt.text("k200"));
    EXPECT_FALSE(txt.text("k300"));
}

TEST(ServiceRecord, NamesMakerAndModel) {
    struct Row {
        std::string_view name;
        Strings txt;
        std::string_view maker;
        std::string_view model;
    };
    const Row rows[] = {
        {"q", {"ty=EPSON Stylus Photo R300 - Gutenprint v5"}, "EPSON", "Stylus Photo R300"},
        {"q", {"ty=PIXMA"}, "Canon", "PIXMA"},
        {"q", {"ty= Ricoh"}, "Ricoh", "Ricoh"},
        {"Canon iP4300", {}, "Canon", "iP4300"},
        {"canon hp 5", {"usb_MDL="}, "HP", "5"},
        {"Office", {"ty="}, "unknown", "Office"},
        {"q", {"usb_MFG=Hewlett-Packard", "usb_MDL=HP Photosmart C5180"}, "HP", "Photosmart C5180"},
        {"q", {"usb_MFG=hp", "usb_MDL=hp 8100"}, "HP", "8100"},
        {"q", {"usb_MFG=Hp", "usb_MDL=8100"}, "Hp", "8100"},
        {"q", {"usb_MFG=Seiko Epson Corp", "usb_MDL=Epson C84"}, "EPSON", "C84"},
        {"q", {"usb_MFG=Epson", "usb_MDL=C84"}, "Epson", "C84"},
        {"q", {"usb_MFG=Stylus Officejet", "usb_MDL=x"}, "HP", "x"},
        {"q", {"usb_MFG=LEXMARK International", "usb_MDL=Z52"}, "Lexmark", "Z52"},
        {"q", {"usb_MFG=", "usb_MDL=Xerox Phaser"}, "Xerox", "Xerox Phaser"},
        {"Samsung at home", {"usb_MFG=Acme", "ty=HP Deskjet 3"}, "Acme", "Samsung at home"},
        {"q", {"usb_MFG=Acme", "usb_MDL=Deskjet"}, "Acme", "Deskjet"},
    };
    for (const Row& row : rows) {
        const PrinterRecord record =
            recordOf(serviceAt(std::string(row.name), "_ipp._tcp.", row.txt));
        EXPECT_EQ(record.text("makerName"), row.maker) << row.model;
        EXPECT_EQ(record.text("modelName"), row.model);
        EXPECT_EQ(record.text("makerAndModelName"),
                  std::string(row.maker) + " " + std::string(row.model));
    }
}

TEST(ServiceRecord, TheTypeSaysHowThePrinterIsReached) {
    struct Row {
        std::string_view name;
        std::string_view type;
        Strings txt;
        std::uint16_t port;
        std::string_view kind;
        std::string_view printerId;
    };
    const Row rows[] = {
        {"Q", "_ipp._tcp.", {}, 631, "ipp:10.77.0.11", "Network:Q"},
        {"Q @ mac", "_ipp._tcp.", {}, 631, "ipp:10.77.0.11", "Mac:Q @ mac"},
        {"Q",
         "_ipp._tcp.",
         {"pdl=a/b,application/vnd.cups-raster"},
         631,
         "ipp:10.77.0.11",
         "Mac:Q"},
        {"", "_ipp._tcp.", {"pdl=application/vnd.cups-raster"}, 631, "ipp:10.77.0.11", "Network:"},
        {"Q", "_riousbprint._tcp.", {}, 10000, "riousb:10.77.0.11", "AirPort:Q"},
        {"Q@", "_pdl-datastream._tcp.", {}, 9101, "port9101:10.77.0.11", "Network:Q@"},
        {"Q", "_pdl-datastream._tcp.", {"usb_VSTATUS="}, 9100, "port9100:10.77.0.11", "AirPort:Q"},
        {"Q", "_pdl-datastream._tcp.", {"usb_S=0"}, 9100, "port9100:10.77.0.11", "AirPort:Q"},
        {"a/b\"c", "_printer._tcp.", {"usb_S=0"}, 0, "lpd:10.77.0.11", "Network:a/b\"c"},
        {"Q", "_http._tcp.", {}, 80, "", ":Q"},
    };
    for (const Row& row : rows) {
        const PrinterRecord record =
            recordOf(serviceAt(std::string(row.name), row.type, row.txt, "10.77.0.11", row.port));
        EXPECT_EQ(record.text("kind"), row.kind);
        EXPECT_EQ(record.text("printerId"), row.printerId);
        EXPECT_EQ(record.integer("port"), row.port);
    }
}

TEST(ServiceRecord, WithoutAnIPv4AddressTheHostNameStandsIn) {
    const PrinterRecord ipp = recordOf(serviceAt("Q", "_ipp._tcp.", {"rp=ipp/print"}, "", 8631));
    EXPECT_EQ(ipp.text("ipAdrs"), "p.local");
    EXPECT_EQ(ipp.text("hostName"), "p.local");
    EXPECT_EQ(ipp.integer("port"), 9100);
    EXPECT_EQ(ipp.text("ippURL"), "http://p.local:631/ipp/print");
    const PrinterRecord raw = recordOf(serviceAt("Q", "_pdl-datastream._tcp.", {}, "", 9101));
    EXPECT_EQ(raw.text("kind"), "port9100:p.local");
    const PrinterRecord notOffered = recordOf(serviceAt("Q", "_pdl-datastream._tcp.", {}, "", 0));
    EXPECT_EQ(notOffered.integer("port"), 0);
}

TEST(ServiceRecord, KeepsWhatTheTxtRecordTells) {
    const PrinterRecord hp =
        recordOf(serviceAt("Q", "_riousbprint._tcp.",
                           {"usb_MFG=HP", "usb_MDL=PSC", "usb_CMD=MLC", "usb_S=0\x07",
                            "usb_VSTATUS=$HB0", "rp=PSC 1", "printer-state=4x"}));
    EXPECT_EQ(hp.text("usb_MFG") + hp.text("usb_MDL") + hp.text("usb_CMD"), "HPPSCMLC");
    EXPECT_EQ(hp.text("usb_S"), "0");
    EXPECT_EQ(hp.text("usb_VSTATUS"), "$HB0");
    EXPECT_EQ(hp.text("usbPrinterName"), "PSC 1");
    EXPECT_EQ(hp.text("printerStatus"), "Printing");
    const PrinterRecord other =
        recordOf(serviceAt("Q", "_pdl-datastream._tcp.", {"usb_S=0", "printer-state=6", "rp=x"}));
    for (const char* key : {"usb_S", "printerStatus", "usbPrinterName", "ippURL", "usb_CMD"})
        EXPECT_FALSE(other.contains(key)) << key;
}

TEST(ServiceTable, AServiceThatComesBackIsTheSameRecord) {
    ServiceTable table;
    const ServiceId id{"Q", "_ipp._tcp."};
    const PrinterRecordPtr record = table.found(id);
    table.found({"Q", "_printer._tcp."});
    table.withdrawn(id);
    EXPECT_EQ(record->text("Active"), "NO");
    EXPECT_EQ(table.found(id), record);
    EXPECT_EQ(record->text("Active"), "YES");
    EXPECT_EQ(table.records().size(), 2U);
    EXPECT_EQ(table.resolved(serviceAt("R", "_ipp._tcp.", {})), nullptr);
    table.resolved(serviceAt("Q", "_ipp._tcp.", {}));
    record->set(keys::serverType, server_types::macCups14);  // it told levels over IPP
    table.resolved(serviceAt("Q", "_ipp._tcp.", {}));
    EXPECT_EQ(record->text(keys::serverType), server_types::macCups14);
    EXPECT_EQ(record->text(keys::printerId), "Network:Q");
}

TEST(ServiceTable, ABaseStationClaimsTheOtherServicesAtItsAddress) {
    ServiceTable table;
    const auto announce = [&](const std::string& name, std::string_view type,
                              const std::string& address) {
        const ResolvedService service = serviceAt(name, type, {"ty=EPSON C84"}, address);
        table.found(service.id);
        return table.resolved(service);
    };
    const auto early = announce("early", "_pdl-datastream._tcp.", "10.77.0.11");
    const auto elsewhere = announce("elsewhere", "_pdl-datastream._tcp.", "10.77.0.12");
    EXPECT_EQ(early->text("printerId"), "Network:early");
    EXPECT_FALSE(table.lookForAirPort("10.77.0.11"));
    table.found({"base", "_riousbprint._tcp."});
    EXPECT_FALSE(table.lookForAirPort("")) << "not resolved yet";
    announce("base", "_riousbprint._tcp.", "10.77.0.11");
    EXPECT_EQ(early->text("printerId"), "AirPort:early");
    EXPECT_EQ(early->text("kind"), "port9100:10.77.0.11");
    EXPECT_EQ(elsewhere->text("serverType"), "Network");
    EXPECT_EQ(announce("late", "_pdl-datastream._tcp.", "10.77.0.11")->text("serverType"),
              "AirPort");
    EXPECT_EQ(announce("lpd", "_printer._tcp.", "10.77.0.11")->text("serverType"), "Network");
    EXPECT_EQ(table.getPrinterDictByMakerAndModelName("EPSON C84")->text("printerName"), "early");
    EXPECT_FALSE(table.getPrinterDictByMakerAndModelName("EPSON C85"));
}

TEST(ServiceTable, OnlyAnHpPrintersStatusTextsFollowItsTxtRecord) {
    ServiceTable table;
    for (const std::string maker : {"HP", "EPSON"}) {
        const ResolvedService service =
            serviceAt(maker, "_pdl-datastream._tcp.", {"ty=" + maker + " x", "usb_S=1"});
        table.found(service.id);
        const PrinterRecordPtr record = table.resolved(service);
        table.txtUpdated(service.id, txtOf({"usb_S=2", "printer-state=4"}));
        EXPECT_EQ(record->text("usb_S"), maker == "HP" ? "2" : "");
        EXPECT_FALSE(record->contains("printerStatus"));
        table.txtUpdated(service.id, txtOf({}));
        EXPECT_EQ(record->text("usb_S"), maker == "HP" ? "2" : "");
    }
}

TEST(ServiceTable, AnnouncementsDoNotFillTheMemory) {
    ServiceTable table;
    const auto idOf = [](std::size_t i) { return ServiceId{std::to_string(i), "_ipp._tcp."}; };
    const std::size_t most = ServiceTable::kMostRecords;
    for (std::size_t i = 0; i < most; ++i) ASSERT_TRUE(table.found(idOf(i)));
    EXPECT_FALSE(table.found(idOf(most)));
    for (std::size_t i = 0; i < most; ++i) table.withdrawn(idOf(i));
    EXPECT_EQ(table.records().size(), ServiceTable::kMostInactive);
    EXPECT_FALSE(table.find(idOf(0)));
    EXPECT_TRUE(table.find(idOf(most - 1)));
    EXPECT_TRUE(table.found(idOf(most)));
}

}  // namespace
}  // namespace tintoral
