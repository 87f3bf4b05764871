#include "netproto/bjnp.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>

namespace tintoral {
namespace {

using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr UdpService kService{8611, milliseconds(500), true};

constexpr int kRounds = 3;
constexpr milliseconds kRoundTime{400};
constexpr milliseconds kRoundWait{100};
constexpr std::size_t kMostPrinters = 256;
constexpr std::chrono::seconds kNamingTime{30};
constexpr std::size_t kComparedMacBytes = 4;

using Request = std::array<std::uint8_t, kBjnpRequestRoom>;
using Reply = std::array<std::uint8_t, 1500>;

std::uint16_t nextSequence() {
    static std::uint16_t next = 1;
    return next++;
}

Bytes firstOf(const Reply& reply, int size) {
    return Bytes(reply).first(static_cast<std::size_t>(std::max(size, 0)));
}

// Hands out the payload of the answer. Result: its length, or the size of a reply that is no
// answer.
int takeText(std::uint8_t command, Bytes reply, BoundedText& text) {
    const auto answer = bjnpAnswerTo(command, reply);
    if (!answer) return static_cast<int>(reply.size());
    text.assign(asText(answer->payload));
    return static_cast<int>(text.size());
}

int askInSession(const std::string& address, std::uint8_t command, std::uint16_t session,
                 MutableBytes reply) {
    const auto destination = ipv4FromDotted(address);
    if (!destination) return 0;
    Request request;
    const std::size_t size = mkBjnpRequest(request, command, nextSequence(), session);
    return udpSendAndReceive(*destination, Bytes(request).first(size), reply);
}

Ipv4Address ownBroadcastAddress() {
    std::string interfaceName;
    Ipv4Address address{};
    Ipv4Address netmask{};
    myIPAddress(interfaceName, address, netmask);
    for (std::size_t i = 0; i < address.size(); ++i)
        address[i] = static_cast<std::uint8_t>(address[i] | ~netmask[i]);
    return address;
}

void addIfNew(std::vector<BjnpPrinter>& printers, const BjnpPrinter& printer) {
    const bool isNew = isBJNPPrinter(printers, printer.address, printer.mac) != 0;
    if (isNew && printers.size() < kMostPrinters) printers.push_back(printer);
}

void listenForRound(int socket, std::vector<BjnpPrinter>& printers) {
    std::array<std::uint8_t, 1024> buffer;
    // Not by the wall clock, which may be set back meanwhile.
    const auto end = Steady::now() + kRoundTime;
    while (Steady::now() < end) {
        const int size = SelectRecv(socket, buffer, kRoundWait);
        if (size < 1) continue;
        const Bytes packet = Bytes(buffer).first(static_cast<std::size_t>(size));
        if (const auto printer = bjnpDiscoveredPrinter(packet)) addIfNew(printers, *printer);
    }
}

void collectPrinters(int socket, std::vector<BjnpPrinter>& printers) {
    Request request;
    const std::size_t size = mkBjnpRequest(request, bjnp_commands::discover, 0, 0);
    const Ipv4Address everyone = ownBroadcastAddress();
    for (int round = 0; round < kRounds; ++round) {
        sendDatagramTo(socket, everyone, kService.port, Bytes(request).first(size));
        listenForRound(socket, printers);
    }
}

void namePrinters(std::span<BjnpPrinter> printers) {
    const auto end = Steady::now() + kNamingTime;
    for (BjnpPrinter& printer : printers) {
        if (Steady::now() > end) return;
        BjnpText deviceID;
        if (bjnpGetDeviceID(printer.address, 0, deviceID) > 0)
            nameBjnpPrinter(printer, deviceID.view());
    }
}

}  // namespace

int bjnpDiscovery(std::vector<BjnpPrinter>& printers) {
    printers.clear();
    UniqueFd socket = openBroadcastSocket();
    if (!socket.valid()) return -1;
    collectPrinters(socket.get(), printers);
    socket.reset();
    namePrinters(printers);
    return static_cast<int>(printers.size());
}

int isBJNPPrinter(std::span<const BjnpPrinter> printers, const Ipv4Address& address,
                  const MacAddress& mac) {
    const bool known = std::ranges::any_of(printers, [&](const BjnpPrinter& printer) {
        return printer.address == address &&
               std::equal(mac.begin(), mac.begin() + kComparedMacBytes, printer.mac.begin());
    });
    return known ? 0 : 1;
}

int bjnpGetDeviceID(const Ipv4Address& address, int /*ignored*/, BoundedText& deviceID) {
    Request request;
    Reply reply;
    const std::size_t length = mkBjnpDeviceIDRequest(request);
    const int size = udpSendAndReceive(address, Bytes(request).first(length), reply);
    return takeText(bjnp_commands::getDeviceID, firstOf(reply, size), deviceID);
}

int bjnpSetJobInfo(const std::string& address, std::uint16_t& session, std::string_view /*maker*/,
                   std::string_view /*product*/) {
    const auto destination = ipv4FromDotted(address);
    if (!destination) return 0;
    Request request;
    Reply reply;
    const std::size_t length = mkBjnpJobInfo(request, nextSequence(), address);
    const int size = udpSendAndReceive(*destination, Bytes(request).first(length), reply);
    if (const auto answer = bjnpAnswerTo(bjnp_commands::setJobInfo, firstOf(reply, size)))
        session = answer->session;
    return size;
}

int bjnpGetStatus(const std::string& address, std::uint16_t session, BoundedText& status) {
    Reply reply;
    const int size = askInSession(address, bjnp_commands::getStatus, session, reply);
    return takeText(bjnp_commands::getStatus, firstOf(reply, size), status);
}

int bjnpUdpClose(const std::string& address, std::uint16_t session) {
    Reply reply;
    return askInSession(address, bjnp_commands::close, session, reply);
}

int udpSendAndReceive(const Ipv4Address& address, Bytes packet, MutableBytes reply) {
    return sendAndReceive(dottedText(address), packet, reply, kService);
}

}  // namespace tintoral
