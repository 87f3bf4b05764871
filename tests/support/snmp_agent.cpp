#include "support/snmp_agent.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "netproto/snmp.h"
#include "netproto/snmp_exchange.h"
#include "support/clock.h"

namespace tintoral::test {
namespace {

constexpr const char* kStartScript = TINTORAL_SOURCE_DIR "/tests/support/snmp/start_agent.sh";

void writeSupply(std::ostream& out, const SnmpSupply& supply, std::size_t row) {
    const std::string table = ".1.3.6.1.2.1.43.11.1.1.";
    const std::string index = ".1." + std::to_string(row);
    out << table << "2" << index << " integer 1\n"
        << table << "3" << index << " integer " << row << "\n"
        << table << "4" << index << " integer 3\n"
        << table << "5" << index << " integer 5\n"
        << table << "6" << index << " string " << supply.description << "\n"
        << table << "7" << index << " integer 19\n"
        << table << "8" << index << " integer " << supply.maximum << "\n"
        << table << "9" << index << " integer " << supply.level << "\n"
        << ".1.3.6.1.2.1.43.12.1.1.2" << index << " integer 1\n"
        << ".1.3.6.1.2.1.43.12.1.1.3" << index << " integer 3\n"
        << ".1.3.6.1.2.1.43.12.1.1.4" << index << " string " << supply.description << "\n"
        << ".1.3.6.1.2.1.43.12.1.1.5" << index << " integer 2\n";
}

std::string objectsOf(const SnmpPrinter& printer) {
    std::ostringstream out;
    out << ".1.3.6.1.2.1.25.3.2.1.3.1 string " << printer.description << "\n"
        << ".1.3.6.1.2.1.25.3.5.1.1.1 integer " << printer.status << "\n"
        << ".1.3.6.1.2.1.25.3.5.1.2.1 octet " << printer.errors << "\n";
    for (std::size_t i = 0; i < printer.supplies.size(); ++i)
        writeSupply(out, printer.supplies[i], i + 1);
    if (!printer.deviceID.empty())
        out << ".1.3.6.1.4.1.11.2.3.9.1.1.7.0 string " << printer.deviceID << "\n";
    out << printer.furtherObjects;
    return out.str();
}

}  // namespace

bool hasSnmpAgent() {
    return std::system("PATH=$PATH:/usr/sbin command -v snmpd >/dev/null 2>&1") == 0;
}

SnmpAgent::SnmpAgent(const std::string& address, const SnmpPrinter& printer) {
    change(printer);
    const std::string objects = folder_ / "objects";
    const std::string state = folder_ / "state";
    pid_ = ::fork();
    if (pid_ == 0) {
        ::execl(kStartScript, kStartScript, address.c_str(), objects.c_str(), state.c_str(),
                nullptr);
        ::_exit(127);
    }
    waitUntilReady(address);
}

SnmpAgent::~SnmpAgent() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
}

void SnmpAgent::change(const SnmpPrinter& printer) {
    writeFile(folder_ / "objects", objectsOf(printer));
}

void SnmpAgent::waitUntilReady(const std::string& address) {
    constexpr int kAttempts = 25;  // of 200 ms
    SnmpMessage message;
    message.pduType = snmp_pdus::getNextRequest;
    message.varBinds[0].oid.assign("1.3.6.1.2.1.25.3.5.1.1");
    std::array<std::uint8_t, 512> request{};
    std::array<std::uint8_t, 2048> reply{};
    const Bytes packet = Bytes(request).first(mkSNMPSrcPacket(request, message));
    for (int i = 0; i < kAttempts; ++i) {
        if (snmpSendAndReceive(address, packet, reply) > 0) return;
    }
    throw std::runtime_error("the SNMP agent does not answer");
}

}  // namespace tintoral::test
