#include "simulators/sim_usb_device.h"

#include <algorithm>
#include <cerrno>
#include <set>

#include "simulators/hex_bytes.h"

namespace tintoral::test {
namespace {

constexpr const char* kDriver = "usblp";
constexpr std::size_t kSetupSize = 8;
constexpr std::uint8_t kConfigurationValue = 1;
constexpr std::uint8_t kSerialIndex = 3;
constexpr std::uint8_t kBulkPacketSize = 64;

constexpr std::uint8_t kDevice = 1;
constexpr std::uint8_t kString = 3;

constexpr std::uint8_t kPrinterClass = 7;
constexpr std::uint8_t kBulk = 2;
constexpr std::uint8_t kInterrupt = 3;

std::uint8_t low(unsigned value) {
    return static_cast<std::uint8_t>(value & 0xFF);
}

std::uint8_t high(unsigned value) {
    return static_cast<std::uint8_t>(value >> 8 & 0xFF);
}

void append(ByteVector& bytes, const ByteVector& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

std::uint8_t outPipe(const SimUsbSetting& setting) {
    return low(0x01U + 2U * setting.interface);
}

std::uint8_t inPipe(const SimUsbSetting& setting) {
    return low(0x82U + 2U * setting.interface);
}

std::uint8_t interruptPipe(const SimUsbSetting& setting) {
    return low(0x89U + setting.interface);
}

ByteVector endpoint(std::uint8_t address, std::uint8_t type) {
    return {7, 5, address, type, kBulkPacketSize, 0, 1};
}

ByteVector settingDescriptor(const SimUsbSetting& setting) {
    const int endpoints = setting.bulkOut + setting.bulkIn + setting.interruptIn;
    ByteVector bytes{9,
                     4,
                     setting.interface,
                     setting.alternate,
                     low(static_cast<unsigned>(endpoints)),
                     setting.interfaceClass,
                     setting.subclass,
                     setting.protocol,
                     0};
    if (setting.interruptIn) append(bytes, endpoint(interruptPipe(setting), kInterrupt));
    if (setting.bulkOut) append(bytes, endpoint(outPipe(setting), kBulk));
    if (setting.bulkIn) append(bytes, endpoint(inPipe(setting), kBulk));
    return bytes;
}

ByteVector configurationDescriptor(const SimUsbSetup& setup) {
    ByteVector settings;
    std::set<std::uint8_t> interfaces;
    for (const SimUsbSetting& setting : setup.settings) {
        append(settings, settingDescriptor(setting));
        interfaces.insert(setting.interface);
    }
    const auto total = static_cast<unsigned>(9 + settings.size());
    ByteVector bytes{9,
                     2,
                     low(total),
                     high(total),
                     low(static_cast<unsigned>(interfaces.size())),
                     kConfigurationValue,
                     0,
                     0xC0,
                     1};
    append(bytes, settings);
    return bytes;
}

ByteVector deviceDescriptor(const SimUsbSetup& setup) {
    const std::uint8_t serial = setup.serialDescriptor.empty() ? 0 : kSerialIndex;
    const std::uint8_t configurations = setup.configured ? 1 : 0;
    return {18,
            kDevice,
            0x10,
            0x01,
            0,
            0,
            0,
            64,
            low(setup.vendor),
            high(setup.vendor),
            low(setup.product),
            high(setup.product),
            0,
            1,
            0,
            0,
            serial,
            configurations};
}

}  // namespace

SimUsbDevice::SimUsbDevice(SimUsbSetup setup) : setup_(std::move(setup)) {
    for (const SimUsbSetting& setting : setup_.settings) {
        interfaces_[setting.interface].driver = setup_.driverIsBound ? kDriver : "";
    }
}

ByteVector SimUsbDevice::descriptors() const {
    ByteVector bytes = deviceDescriptor(setup_);
    if (setup_.configured) append(bytes, configurationDescriptor(setup_));
    return bytes;
}

SimUsbDevice::Interface* SimUsbDevice::find(unsigned interface) {
    const auto found = interfaces_.find(interface);
    return found == interfaces_.end() ? nullptr : &found->second;
}

const SimUsbSetting* SimUsbDevice::findSetting(unsigned interface, unsigned alternate) const {
    const auto found = std::ranges::find_if(setup_.settings, [&](const SimUsbSetting& setting) {
        return setting.interface == interface && setting.alternate == alternate;
    });
    return found == setup_.settings.end() ? nullptr : &*found;
}

long SimUsbDevice::claim(Client client, unsigned interface) {
    Interface* const found = find(interface);
    if (found == nullptr) return -ENOENT;
    if (heldElsewhere || !found->driver.empty()) {
        ++refusedClaims;
        return -EBUSY;
    }
    if (found->claimant != nullptr && found->claimant != client) return kClaimedByClient;
    found->claimant = client;
    return 0;
}

long SimUsbDevice::detachAndClaim(Client client, unsigned interface) {
    if (Interface* const found = find(interface); found != nullptr && !heldElsewhere)
        found->driver.clear();
    return claim(client, interface);
}

long SimUsbDevice::release(Client client, unsigned interface) {
    Interface* const found = find(interface);
    if (found == nullptr || found->claimant != client) return -EINVAL;
    *found = {};
    return 0;
}

long SimUsbDevice::detachDriver(unsigned interface) {
    Interface* const found = find(interface);
    if (found == nullptr || found->driver.empty()) return -ENODATA;
    found->driver.clear();
    return 0;
}

long SimUsbDevice::attachDriver(unsigned interface) {
    Interface* const found = find(interface);
    if (found == nullptr || found->claimant != nullptr || heldElsewhere) return -EBUSY;
    found->driver = kDriver;
    return 1;
}

long SimUsbDevice::setAlternate(Client client, unsigned interface, unsigned alternate) {
    Interface* const found = find(interface);
    if (found == nullptr || found->claimant != client) return -EINVAL;
    if (findSetting(interface, alternate) == nullptr) return -EINVAL;
    found->alternate = low(alternate);
    return 0;
}

long SimUsbDevice::setConfiguration(unsigned value) {
    const bool inUse = std::ranges::any_of(
        interfaces_, [&](const auto& entry) { return !owner(entry.first).empty(); });
    if (inUse) return -EBUSY;
    return value == kConfigurationValue ? 0 : -EINVAL;
}

long SimUsbDevice::clearHalt(unsigned endpoint) {
    (endpoint < 0x80 ? outHalted : inHalted) = false;
    return 0;
}

void SimUsbDevice::forget(Client client) {
    for (auto& [number, interface] : interfaces_) {
        if (interface.claimant == client) interface = {};
    }
}

std::string SimUsbDevice::owner(unsigned interface) const {
    const auto found = interfaces_.find(interface);
    if (found == interfaces_.end()) return {};
    const bool claimed = heldElsewhere || found->second.claimant != nullptr;
    return claimed ? "usbfs" : found->second.driver;
}

std::uint8_t SimUsbDevice::alternate(unsigned interface) const {
    const auto found = interfaces_.find(interface);
    return found == interfaces_.end() ? 0 : found->second.alternate;
}

// A class request to an interface wants it claimed, and claims it if need be; only the device ID of
// a printer interface is free to all.
long SimUsbDevice::mayAsk(Client client, Bytes setup) {
    const bool toInterface = (setup[0] & 0x1F) == 1;
    const bool vendor = (setup[0] & 0x60) == 0x40;
    if (!toInterface || vendor) return 0;
    const SimUsbSetting* const setting = findSetting(setup[5], setup[4]);
    const bool deviceID = setup[0] == 0xA1 && setup[1] == 0;
    if (deviceID && setting != nullptr && setting->interfaceClass == kPrinterClass) return 0;
    return claim(client, setup[4]);
}

std::optional<ByteVector> SimUsbDevice::descriptor(std::uint8_t type, std::uint8_t index) const {
    if (type == kDevice) return deviceDescriptor(setup_);
    if (type == kString && index == 0) return ByteVector{4, kString, 0x09, 0x04};
    if (type == kString && index == kSerialIndex) return setup_.serialDescriptor;
    return std::nullopt;
}

ByteVector SimUsbDevice::deviceIDReply() const {
    const auto trueLength = static_cast<unsigned>(setup_.deviceID.size() + 2);
    const unsigned length = setup_.deviceIDLength.value_or(static_cast<std::uint16_t>(trueLength));
    ByteVector reply(trueLength);
    reply[0] = high(length);
    reply[1] = low(length);
    std::ranges::copy(setup_.deviceID, reply.begin() + 2);
    return reply;
}

std::optional<ByteVector> SimUsbDevice::replyTo(Bytes setup) const {
    if (setup[0] == 0x80 && setup[1] == 6) return descriptor(setup[3], setup[2]);
    if (setup[0] == 0xA1 && setup[1] == 0 && !setup_.refusesDeviceID) return deviceIDReply();
    if (setup[0] == 0x40 && setup[1] == 4) return ByteVector{};
    return std::nullopt;
}

long SimUsbDevice::control(Client client, MutableBytes packet) {
    if (packet.size() < kSetupSize) return -EINVAL;
    const Bytes setup = packet.first(kSetupSize);
    controls.push_back(hexOf(setup));
    if (const long refused = mayAsk(client, setup); refused != 0) return refused;
    const auto reply = replyTo(setup);
    if (!reply) return -EPIPE;
    const MutableBytes data = packet.subspan(kSetupSize);
    const std::size_t count = std::min(reply->size(), data.size());
    std::copy_n(reply->begin(), count, data.begin());
    return static_cast<long>(count);
}

long SimUsbDevice::checkPipe(Client client, unsigned endpoint) const {
    for (const auto& [number, interface] : interfaces_) {
        const SimUsbSetting* const setting = findSetting(number, interface.alternate);
        if (setting == nullptr) continue;
        const bool out = setting->bulkOut && endpoint == outPipe(*setting);
        const bool in = setting->bulkIn && endpoint == inPipe(*setting);
        if (out || in) return interface.claimant == client ? 0 : -EINVAL;
    }
    return -ENOENT;
}

std::optional<SimUsbDevice::Transfer> SimUsbDevice::write(Bytes bytes) {
    if (outHalted) return Transfer{-EPIPE, 0};
    if (waits) return std::nullopt;
    heard.insert(heard.end(), bytes.begin(), bytes.end());
    if (answer) std::ranges::copy(answer(bytes), std::back_inserter(toSay));
    return Transfer{0, bytes.size()};
}

// A transfer that is longer than the read is read on by the next one when it ends with a packet;
// else the controller has nowhere to put the packet's rest.
std::optional<SimUsbDevice::Transfer> SimUsbDevice::read(MutableBytes buffer) {
    if (inHalted) return Transfer{-EPIPE, 0};
    if (toSay.empty()) return std::nullopt;
    ByteVector transfer = std::move(toSay.front());
    toSay.pop_front();
    const std::size_t count = std::min(transfer.size(), buffer.size());
    std::copy_n(transfer.begin(), count, buffer.begin());
    transfer.erase(transfer.begin(), transfer.begin() + static_cast<std::ptrdiff_t>(count));
    if (transfer.empty()) return Transfer{0, count};
    if (buffer.size() % kBulkPacketSize != 0) return Transfer{-EOVERFLOW, count};
    toSay.push_front(std::move(transfer));
    return Transfer{0, count};
}

}  // namespace tintoral::test
