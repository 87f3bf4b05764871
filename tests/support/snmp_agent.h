// A real net-snmp agent on UDP port 161 that serves a printer's objects from a file.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace tintoral::test {

// A supply as the Printer MIB has it (RFC 3805 prtMarkerSupplies).
struct SnmpSupply {
    std::string description;
    int maximum;
    int level;
};

struct SnmpPrinter {
    std::string description = "Acme Color 100";
    int status = 3;             // hrPrinterStatus: 3 idle, 4 printing, 5 warm-up
    std::string errors = "00";  // hrPrinterDetectedErrorState as hex bytes
    std::vector<SnmpSupply> supplies;
    std::string deviceID = {};        // HP's object; none when empty
    std::string furtherObjects = {};  // lines as serve_oids.pl reads them
};

// False where no agent is installed.
bool hasSnmpAgent();

class SnmpAgent {
  public:
    // Starts the agent and waits until it answers; throws std::runtime_error after 5 s.
    SnmpAgent(const std::string& address, const SnmpPrinter& printer);
    ~SnmpAgent();
    SnmpAgent(const SnmpAgent&) = delete;
    SnmpAgent& operator=(const SnmpAgent&) = delete;

    // The printer as it is from the next request on.
    void change(const SnmpPrinter& printer);

  private:
    void waitUntilReady(const std::string& address);

    TemporaryFolder folder_;
    pid_t pid_ = -1;
};

}  // namespace tintoral::test
