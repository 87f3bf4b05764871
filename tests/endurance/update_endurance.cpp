// update_endurance TURNS: as many updates over each transport, all transports at the same time.
//
// Each transport has a process for its virtual printer and a process for the updates, so that the
// footprint is that of the program's own code alone: printers write down all that they hear.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "history/ink_history_store.h"
#include "monitor/record_rules.h"
#include "monitor/update_cycle.h"
#include "simulators/sim_usb_printer.h"
#include "simulators/tcp_peer.h"
#include "simulators/virtual_base_station.h"
#include "simulators/virtual_bjnp_printer.h"
#include "simulators/virtual_canon.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_epson.h"
#include "simulators/virtual_ipp_printer.h"
#include "simulators/virtual_mlc_hp.h"
#include "support/footprint.h"
#include "support/snmp_agent.h"
#include "support/temporary_folder.h"
#include "support/time_lapse.h"
#include "vendors/epson.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using namespace test;

constexpr const char* kEpsonAddress = "10.77.0.11";
constexpr const char* kD4Address = "10.77.0.12";
constexpr const char* kCanonAddress = "10.77.0.1";
constexpr const char* kBaseStation = "::1";
constexpr std::uint16_t kRawPort = 9100;
constexpr std::uint16_t kSharedUsbPort = 10000;
constexpr int kMostWarmUp = 100;
constexpr long kHurry = 10;  // for those that wait for what does not come

// A pause of the protocols takes no time, and there are ten minutes between two updates.
class HurriedClock final : public Clock {
  public:
    std::chrono::sys_time<std::chrono::milliseconds> now() override {
        return std::chrono::floor<std::chrono::milliseconds>(now_);
    }
    void pause(std::chrono::microseconds duration) override { now_ += duration; }
    void advance(std::chrono::microseconds duration) { now_ += duration; }

  private:
    std::chrono::sys_time<std::chrono::microseconds> now_ =
        std::chrono::sys_days{std::chrono::year{2026} / 3 / 14};
};

// The printer at the far end. When it goes, it says whether the program left it as it should.
class Peer {
  public:
    virtual ~Peer() = default;
    virtual bool isLeftAlone(const char* /*name*/) { return true; }
};
using PeerPtr = std::unique_ptr<Peer>;

// Each connection finds other levels, so that each reading is news for the history.
struct RawEpson final : Peer {
    void connected() {
        printer.connected();
        const int level = 100 - ++connections % 101;
        printer.change({.inks = {{0, level}, {1, level / 2}, {2, 31}, {3, 80}}});
    }
    int connections = 0;
    VirtualEpson printer;
    TcpPeer peer{kEpsonAddress,
                 kRawPort,
                 {[this] { connected(); }, [this](Bytes b) { return printer.onReceive(b); }}};
};

// A connection begins anew, whatever was left of a packet by the one before.
template <typename Printer, const auto& address>
struct RawPortPeer final : Peer {
    std::optional<Printer> printer;
    TcpPeer peer{
        address,
        kRawPort,
        {[this] { printer.emplace(); }, [this](Bytes b) { return printer->onReceive(b); }}};
};

struct BaseStationPeer final : Peer {
    VirtualEpson printer;
    VirtualBaseStation station{{.printer = inOneTransfer(printer)}};
    TcpPeer peer{
        kBaseStation,
        kSharedUsbPort,
        {[this] { station.connected(); }, [this](Bytes b) { return station.onReceive(b); }}};
};

template <typename Printer>
std::vector<ByteVector> transfersOf(Printer& printer, Bytes heard) {
    if constexpr (std::is_base_of_v<VirtualPacketPrinter, Printer>) {
        return printer.transfersFor(heard);
    } else {
        ByteVector answer = printer.onReceive(heard);
        if (answer.empty()) return {};
        return {std::move(answer)};
    }
}

template <typename Printer>
class UsbPeer final : public Peer {
  public:
    explicit UsbPeer(const char* deviceID) : usb_(bus_.attach({.deviceID = deviceID})) {
        usb_.answerWith([this](Bytes heard) { return transfersOf(printer_, heard); });
    }

    // A close reaches the simulator late.
    bool isLeftAlone(const char* name) override {
        for (int i = 0; i < 200 && usb_.closes() < usb_.opens(); ++i)
            std::this_thread::sleep_for(10ms);
        std::printf("%-28s its node was opened %d times and closed %d times\n", name, usb_.opens(),
                    usb_.closes());
        std::fflush(stdout);
        return usb_.opens() > 0 && usb_.closes() == usb_.opens() && usb_.owner() == "usblp" &&
               usb_.transfersInFlight() == 0;
    }

  private:
    Printer printer_;
    SimUsbBus bus_;
    SimUsbPrinter& usb_;
};

struct IppPeer final : Peer {
    VirtualIppPrinter printer{
        kEpsonAddress,
        ippAnswer(ippMessage({{0x42, "marker-names", {"Black", "Cyan"}},
                              {0x42, "marker-colors", {"#000000", "#00FFFF"}},
                              {0x21, "marker-levels", {ippInteger(80), ippInteger(5)}},
                              {0x44, "marker-types", {"ink", "ink"}},
                              {0x23, "printer-state", {ippInteger(3)}},
                              {0x41, "cups-version", {"1.7"}}}))};
};

struct SnmpPeer final : Peer {
    SnmpAgent agent{kEpsonAddress, {.supplies = {{"Black", 70, 35}, {"Cyan", 100, 50}}}};
};

struct BjnpPeer final : Peer {
    VirtualBjnpPrinter printer{kEpsonAddress};
};

template <typename T>
PeerPtr make() {
    return std::make_unique<T>();
}
template <typename Printer, const char* deviceID>
PeerPtr usbPeer() {
    return std::make_unique<UsbPeer<Printer>>(deviceID);
}
constexpr char kUsbEpsonID[] = "MFG:EPSON;MDL:Stylus C84;";
constexpr char kUsbD4ID[] = "MFG:EPSON;MDL:Stylus Photo R2400;";
constexpr char kUsbCanonID[] = "MFG:Canon;MDL:Pro9000;CMD:BJL,BJRaster3;";
constexpr char kUsbHPID[] =
    "MFG:HP;MDL:PSC 1350;VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,KP030,C0,CP045;";

PrinterRecord recordOf(std::string_view serverType, std::string_view kind, std::string_view maker,
                       std::string_view model, std::string_view commandSet = "") {
    return {{std::string(keys::printerId), "Endurance"},
            {std::string(keys::serverType), serverType},
            {std::string(keys::kind), kind},
            {std::string(keys::makerName), maker},
            {std::string(keys::modelName), model},
            {std::string(keys::usbCmd), commandSet},
            {std::string(keys::active), kYes},
            {std::string(keys::ipAdrs), kEpsonAddress},
            {std::string(keys::hostName), kBaseStation},
            {std::string(keys::ippURL), "http://10.77.0.11:631/printers/inks"},
            {std::string(keys::usbPrinterName), "usb1"},
            {std::string(keys::vendorID), 0x04B8},
            {std::string(keys::productID), 0x0005},
            {std::string(keys::port), int{kind.starts_with("rio") ? kSharedUsbPort : kRawPort}}};
}

bool update(PrinterRecord& printer) {
    return updatePrinter(printer) == UpdateOutcome::Levels;
}

bool updateAndKeep(PrinterRecord& printer) {
    return update(printer) &&
           saveInkReadingsForPrinterId(*printer.dictionary(keys::inkDict), "Endurance");
}

// An update of an HP printer reads its device ID only; MLC is the way of its maintenance.
bool updateAndClean(PrinterRecord& printer) {
    sendMaintenance(printer, kOptionCleaning);
    return update(printer);
}

struct Transport {
    const char* name;
    PeerPtr (*peer)();
    PrinterRecord record;
    int hurry = 1;
    bool (*turn)(PrinterRecord&) = update;
    bool (*isHere)() = [] { return true; };
};

PrinterRecord at(const char* address, PrinterRecord record) {
    record.set(keys::ipAdrs, address);
    return record;
}

// All at the same time, so no two share an address and a port.
std::vector<Transport> transports() {
    using namespace server_types;
    return {
        {"raw port, Epson, history", make<RawEpson>,
         recordOf(network, "port9100", "EPSON", "Stylus Photo R800", "D4"), kHurry, updateAndKeep},
        {"raw port, Epson, D4", make<RawPortPeer<VirtualD4Epson, kD4Address>>,
         at(kD4Address, recordOf(network, "port9100", "EPSON", "Stylus Photo R2400", "D4")),
         kHurry},
        {"raw port, Canon", make<RawPortPeer<VirtualCanon, kCanonAddress>>,
         at(kCanonAddress, recordOf(network, "port9100", "Canon", "iP4300", "BJL"))},
        {"SNMP", make<SnmpPeer>, recordOf(network, "lpd", "Acme", "Color 100"), 1, update,
         hasSnmpAgent},
        {"IPP", make<IppPeer>, recordOf(macCups15, "ipp", "Acme", "Queue")},
        {"BJNP", make<BjnpPeer>, recordOf(network, "bjnp", "Canon", "MP640")},
        {"AirPort base station", make<BaseStationPeer>,
         recordOf(airPort, "riousb", "EPSON", "Stylus C84", "BDC")},
        {"USB, Epson", usbPeer<VirtualEpson, kUsbEpsonID>,
         recordOf(usb, "USB", "EPSON", "Stylus C84"), kHurry},
        {"USB, Epson, D4", usbPeer<VirtualD4Epson, kUsbD4ID>,
         recordOf(usb, "USB", "EPSON", "Stylus Photo R2400", "D4"), kHurry},
        {"USB, Canon", usbPeer<VirtualCanon, kUsbCanonID>,
         recordOf(usb, "USB", "Canon", "Pro9000", "BJL"), kHurry},
        {"USB, HP, MLC", usbPeer<VirtualMlcHp, kUsbHPID>,
         recordOf(usb, "USB", "HP", "PSC 1350", "MLC,PCL,PML"), kHurry, updateAndClean},
    };
}

bool measure(const Transport& transport, int turns) {
    const TemporaryFolder home;
    const ScopedEnvironment homeVariable("HOME", home.path());
    prepareHistoryFolder();
    HurriedClock clock;
    const ScopedClock scope(clock);
    PrinterRecord printer = transport.record;
    startTimeLapse(transport.hurry);
    return repeat(transport.name, std::min(turns, kMostWarmUp), turns, 0, [&] {
        clock.advance(10min);
        return transport.turn(printer);
    });
}

// This program again, which then measures that transport.
bool measureInChild(std::size_t number, int turns) {
    std::string self = "/proc/self/exe";
    std::string which = std::to_string(number);
    std::string count = std::to_string(turns);
    char* arguments[] = {self.data(), count.data(), which.data(), nullptr};
    pid_t child = -1;
    int status = -1;
    if (::posix_spawn(&child, self.c_str(), nullptr, nullptr, arguments, environ) != 0)
        return false;
    ::waitpid(child, &status, 0);
    return status == 0;
}

bool measureWithPrinter(std::size_t number, int turns) {
    const Transport transport = transports()[number];
    const PeerPtr peer = transport.peer();
    const bool measured = measureInChild(number, turns);
    return peer->isLeftAlone(transport.name) && measured;
}

bool measureAll(int turns) {
    // What is freed counts as free at once, and is not kept in a cache of the thread.
    ::setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);
    printFootprintTitles();
    std::fflush(stdout);
    const auto all = transports();
    for (std::size_t number = 0; number < all.size(); ++number) {
        if (!all[number].isHere()) {
            std::printf("%-28s its server is not installed\n", all[number].name);
        } else if (::fork() == 0) {
            std::exit(measureWithPrinter(number, turns) ? 0 : 1);
        }
    }
    bool good = true;
    for (int status = 0; ::wait(&status) > 0;) good = status == 0 && good;
    return good;
}

}  // namespace
}  // namespace tintoral

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const int turns = std::atoi(argv[1]);
    if (argc == 2) return tintoral::measureAll(turns) ? 0 : 1;
    const auto transport = tintoral::transports().at(static_cast<std::size_t>(std::atoi(argv[2])));
    return tintoral::measure(transport, turns) ? 0 : 1;
}
