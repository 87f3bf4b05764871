#include "vendors/hp_exchange.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "support/clock.h"
#include "support/hex_dump.h"
#include "transport/channels/mlc.h"
#include "transport/channels/pml_exchange.h"
#include "transport/net/sockets.h"
#include "vendors/hp.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

constexpr std::string_view kPjlCommandSet = "PJL,PML";
constexpr std::string_view kMlcCommandSet = "MLC,PCL,PML";
constexpr milliseconds kReceiveTimeout{1000};
constexpr milliseconds kPauseAfterOpen{1};
constexpr std::array<const char*, kHPDiagnosticRequests> kPjlSubjects{
    "Modelname", "SUPPLIES DESCRIPTION", "SUPPLIES DESCRIPTION"};

using Command = std::array<std::uint8_t, 128>;

void askByPjl(const IoHandle& handle, int index, BoundedText& report) {
    Command request{};
    std::array<std::uint8_t, 2048> reply{};
    ioSend(handle, Bytes(request).first(mkHPDiagnosticRequest(index, request)));
    const int count = std::max(ioWaitRecv(handle, reply, kReceiveTimeout), 0);
    const char* const subject = kPjlSubjects.at(static_cast<std::size_t>(index));
    report.appendFormat("PJL/PML %s = %03d\n", subject, count);
    sDumpPacket(report, Bytes(reply).first(static_cast<std::size_t>(count)));
}

void diagnoseByPjl(const IoHandle& handle, BoundedText& report) {
    for (int index = 0; index < kHPDiagnosticRequests; ++index) askByPjl(handle, index, report);
}

void diagnoseByMlc(const IoHandle& handle, BoundedText& report) {
    auto channel = MLCopen(handle);
    if (!channel) return report.append("MLC open error\n");
    pauseFor(kPauseAfterOpen);
    PMLResponse response;
    report.append("MLC/PML Modelname\n");
    getPMLvalue(*channel, "1.1.3.2", response, &report);
    report.append("MLC/PML SUPPLIES DESCRIPTION \n");
    getPMLvalue(*channel, "2.11.1.1.6.1.1", response, &report);
    MLCclose(channel);
}

}  // namespace

int tcpHPNozzleCleaning(const std::string& host, std::uint16_t port) {
    Command command{};
    tcpSend(host, port, Bytes(command).first(mkHPCleaningCmd(kPjlCommandSet, command)));
    return 0;
}

int hpDiagnose1(const IoHandle& handle, BoundedText& report, std::string_view commandSet) {
    if (commandSet.starts_with(kPjlCommandSet)) {
        diagnoseByPjl(handle, report);
    } else if (commandSet.starts_with(kMlcCommandSet)) {
        diagnoseByMlc(handle, report);
    } else {
        return 0;
    }
    return static_cast<int>(report.size());
}

int tcpHPDiagnose(const std::string& host, std::uint16_t port, BoundedText& report) {
    const UniqueFd socket = TcpOpenConnection(host, port);
    if (socket.valid()) hpDiagnose1(TcpSocket{socket.get()}, report, kPjlCommandSet);
    return 0;
}

}  // namespace tintoral
