#include "simulators/sim_usb_printer.h"

#include <fcntl.h>
#include <link.h>
#include <sys/ioctl.h>  // before usbdevice_fs.h, which needs it
#include <sys/stat.h>
#include <unistd.h>

#include <linux/usbdevice_fs.h>
#include <umockdev.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <list>
#include <mutex>
#include <stdexcept>

#include "simulators/hex_bytes.h"
#include "support/unique_fd.h"

namespace tintoral::test {
namespace {

// A close of the node reaches the simulator late; a claim that it would free waits for it.
constexpr long kLater = SimUsbDevice::kClaimedByClient;
constexpr unsigned kRetryMilliseconds = 5;
constexpr int kRetries = 20;

constexpr unsigned kFirstAddress = 2;

struct DataRelease {
    void operator()(UMockdevIoctlData* data) const { umockdev_ioctl_data_unref(data); }
};
using IoctlData = std::unique_ptr<UMockdevIoctlData, DataRelease>;

template <class T>
T& contentOf(const IoctlData& data) {
    return *reinterpret_cast<T*>(data->data);
}

// What an ioctl's argument points to, copied in and written back when the ioctl completes.
IoctlData resolve(UMockdevIoctlData* pointer, std::size_t offset, std::size_t size) {
    return IoctlData(umockdev_ioctl_data_resolve(pointer, offset, size, nullptr));
}

IoctlData argument(UMockdevIoctlClient* client, std::size_t size) {
    return resolve(umockdev_ioctl_client_get_arg(client), 0, size);
}

template <class T>
T valueOf(UMockdevIoctlClient* client) {
    return contentOf<T>(argument(client, sizeof(T)));
}

void complete(UMockdevIoctlClient* client, long result) {
    const bool failed = result < 0;
    umockdev_ioctl_client_complete(client, failed ? -1 : result,
                                   failed ? static_cast<int>(-result) : 0);
}

// umockdev makes a regular file for a node, which is always ready, so that libusb would spin. A
// pipe of which nothing is read is ready to be written exactly while it is empty.
class ReadinessGate {
  public:
    // Replaces the file at `path`.
    void make(const std::string& path) {
        ::unlink(path.c_str());
        if (::mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("no FIFO for a USB node");
        pipe_.reset(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
        if (!pipe_.valid()) throw std::runtime_error("cannot open a USB node");
        ::fcntl(pipe_.get(), F_SETPIPE_SZ, 4096);
        set(false);
    }
    void set(bool ready) {
        if (!pipe_.valid() || ready == ready_) return;
        std::array<char, 4096> filler{};
        if (ready) {
            while (::read(pipe_.get(), filler.data(), filler.size()) > 0) continue;
        } else {
            while (::write(pipe_.get(), filler.data(), filler.size()) > 0) continue;
        }
        ready_ = ready;
    }

  private:
    UniqueFd pipe_;
    bool ready_ = true;
};

// A transfer that libusb has handed over.
struct Urb {
    UMockdevIoctlClient* client;
    IoctlData data;

    usbdevfs_urb& content() const { return contentOf<usbdevfs_urb>(data); }
    MutableBytes buffer() const {
        return {static_cast<std::uint8_t*>(content().buffer),
                static_cast<std::size_t>(content().buffer_length)};
    }
};
using Urbs = std::list<Urb>;

bool preloadIsFirst() {
    int verdict = 0;
    dl_iterate_phdr(
        [](dl_phdr_info* library, std::size_t, void* found) {
            const bool preload = std::strstr(library->dlpi_name, "libumockdev-preload") != nullptr;
            if (preload) *static_cast<int*>(found) = 1;
            return preload || std::strstr(library->dlpi_name, "/libc.so") != nullptr ? 1 : 0;
        },
        &verdict);
    return verdict == 1;
}

std::string nodeOf(unsigned address) {
    std::array<char, 32> node{};
    std::snprintf(node.data(), node.size(), "bus/usb/001/%03u", address);
    return node.data();
}

// The device as umockdev's text format has it; "\\n" in an attribute stays escaped.
std::string deviceRecord(const SimUsbDevice& device, unsigned address) {
    const std::string number = std::to_string(address);
    const std::string node = nodeOf(address);
    return "P: /devices/usb1/1-" + std::to_string(address - kFirstAddress + 1) + "\nN: " + node +
           "\nE: SUBSYSTEM=usb\nE: DRIVER=usb\nE: DEVTYPE=usb_device\nE: BUSNUM=001\nE: DEVNUM=" +
           node.substr(node.size() - 3) + "\nE: DEVNAME=/dev/" + node +
           "\nA: busnum=1\\n\nA: devnum=" + number +
           "\\n\nA: bConfigurationValue=" + std::to_string(device.setup().activeValue) +
           "\\n\nA: speed=12\\n\nH: descriptors=" + hexOf(device.descriptors()) + "\n";
}

}  // namespace

struct SimUsbPrinter::Impl : std::enable_shared_from_this<Impl> {
    explicit Impl(SimUsbSetup setup) : device(std::move(setup)) {}
    ~Impl() { g_object_unref(handler); }

    long handle(UMockdevIoctlClient* client);
    void forget(UMockdevIoctlClient* client);
    void connectSignals();
    void pump();
    void finishAll(int status);

    mutable std::recursive_mutex mutex;  // an answer may use the printer
    SimUsbDevice device;
    UMockdevIoctlBase* handler = umockdev_ioctl_base_new();
    std::string nodePath;
    ReadinessGate gate;
    Urbs flying;  // not finished by the device
    Urbs done;    // to be taken back by libusb
    bool pumping = false;
    int opens = 0;
    int closes = 0;

  private:
    using Handler = long (Impl::*)(UMockdevIoctlClient*);
    static Handler handlerOf(unsigned long request);

    long onCapabilities(UMockdevIoctlClient* client);
    long onClaim(UMockdevIoctlClient* client);
    long onDetachAndClaim(UMockdevIoctlClient* client);
    long onRelease(UMockdevIoctlClient* client);
    long onGetDriver(UMockdevIoctlClient* client);
    long onDriverIoctl(UMockdevIoctlClient* client);
    long onSetConfiguration(UMockdevIoctlClient* client);
    long onSetInterface(UMockdevIoctlClient* client);
    long onClearHalt(UMockdevIoctlClient* client);
    long onSubmit(UMockdevIoctlClient* client);
    long onDiscard(UMockdevIoctlClient* client);
    long onReap(UMockdevIoctlClient* client);

    void finish(Urbs::iterator urb, int status, std::size_t count);
    bool progress(Urbs::iterator urb);
    void updateGate() { gate.set(device.unplugged || !done.empty()); }

    struct Retry;
    struct Watch;
    static gboolean onIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer self);
    static gboolean onRetry(gpointer retry);
    static void onClient(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer self);
    static void onClientGone(gpointer watch, GObject* client);
    void connect(const char* signal, GCallback callback);
};

using Impl = SimUsbPrinter::Impl;

Impl::Handler Impl::handlerOf(unsigned long request) {
    static constexpr struct {
        unsigned long request;
        Handler handler;
    } kHandlers[] = {
        {USBDEVFS_GET_CAPABILITIES, &Impl::onCapabilities},
        {USBDEVFS_CLAIMINTERFACE, &Impl::onClaim},
        {USBDEVFS_DISCONNECT_CLAIM, &Impl::onDetachAndClaim},
        {USBDEVFS_RELEASEINTERFACE, &Impl::onRelease},
        {USBDEVFS_GETDRIVER, &Impl::onGetDriver},
        {USBDEVFS_IOCTL, &Impl::onDriverIoctl},
        {USBDEVFS_SETCONFIGURATION, &Impl::onSetConfiguration},
        {USBDEVFS_SETINTERFACE, &Impl::onSetInterface},
        {USBDEVFS_CLEAR_HALT, &Impl::onClearHalt},
        {USBDEVFS_SUBMITURB, &Impl::onSubmit},
        {USBDEVFS_DISCARDURB, &Impl::onDiscard},
        {USBDEVFS_REAPURB, &Impl::onReap},
        {USBDEVFS_REAPURBNDELAY, &Impl::onReap},
    };
    const auto* const found =
        std::ranges::find(kHandlers, request, [](const auto& row) { return row.request; });
    return found == std::end(kHandlers) ? nullptr : found->handler;
}

long Impl::handle(UMockdevIoctlClient* client) {
    const Handler handler = handlerOf(umockdev_ioctl_client_get_request(client));
    if (handler == nullptr) return -ENOTTY;
    if (device.unplugged && handler != &Impl::onReap) return -ENODEV;
    return (this->*handler)(client);
}

long Impl::onCapabilities(UMockdevIoctlClient* client) {
    contentOf<std::uint32_t>(argument(client, sizeof(std::uint32_t))) =
        USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_BULK_CONTINUATION |
        USBDEVFS_CAP_NO_PACKET_SIZE_LIM | USBDEVFS_CAP_BULK_SCATTER_GATHER |
        USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
    return 0;
}

long Impl::onClaim(UMockdevIoctlClient* client) {
    return device.claim(client, valueOf<unsigned>(client));
}

long Impl::onDetachAndClaim(UMockdevIoctlClient* client) {
    return device.detachAndClaim(client, valueOf<usbdevfs_disconnect_claim>(client).interface);
}

long Impl::onRelease(UMockdevIoctlClient* client) {
    return device.release(client, valueOf<unsigned>(client));
}

// NOLINTNEXTLINE(readability-make-member-function-const): one of a table
long Impl::onGetDriver(UMockdevIoctlClient* client) {
    const IoctlData data = argument(client, sizeof(usbdevfs_getdriver));
    auto& request = contentOf<usbdevfs_getdriver>(data);
    const std::string owner = device.owner(request.interface);
    if (owner.empty()) return -ENODATA;
    std::snprintf(request.driver, sizeof request.driver, "%s", owner.c_str());
    return 0;
}

long Impl::onDriverIoctl(UMockdevIoctlClient* client) {
    const auto request = valueOf<usbdevfs_ioctl>(client);
    const auto interface = static_cast<unsigned>(request.ifno);
    switch (static_cast<unsigned>(request.ioctl_code)) {
        case USBDEVFS_DISCONNECT:
            return device.detachDriver(interface);
        case USBDEVFS_CONNECT:
            return device.attachDriver(interface);
        default:
            return -ENOTTY;
    }
}

long Impl::onSetConfiguration(UMockdevIoctlClient* client) {
    return device.setConfiguration(valueOf<unsigned>(client));
}

long Impl::onSetInterface(UMockdevIoctlClient* client) {
    const auto request = valueOf<usbdevfs_setinterface>(client);
    return device.setAlternate(client, request.interface, request.altsetting);
}

long Impl::onClearHalt(UMockdevIoctlClient* client) {
    return device.clearHalt(valueOf<unsigned>(client));
}

long Impl::onSubmit(UMockdevIoctlClient* client) {
    Urb urb{client, argument(client, sizeof(usbdevfs_urb))};
    usbdevfs_urb& content = urb.content();
    // From here on the buffer is our copy, written back when the transfer is taken.
    const IoctlData buffer = resolve(urb.data.get(), offsetof(usbdevfs_urb, buffer),
                                     static_cast<std::size_t>(content.buffer_length));
    const bool control = content.type == USBDEVFS_URB_TYPE_CONTROL;
    const long result =
        control ? device.control(client, urb.buffer()) : device.checkPipe(client, content.endpoint);
    if (result < 0 && (!control || result == -EBUSY || result == kLater)) return result;
    flying.push_back(std::move(urb));
    if (control) {
        finish(std::prev(flying.end()), static_cast<int>(std::min(result, 0L)),
               static_cast<std::size_t>(std::max(result, 0L)));
    }
    pump();
    return 0;
}

// The argument is the address of the transfer in the client.
long Impl::onDiscard(UMockdevIoctlClient* client) {
    const UMockdevIoctlData* const argument = umockdev_ioctl_client_get_arg(client);
    const gulong address = *reinterpret_cast<const gulong*>(argument->data);
    const auto urb = std::ranges::find_if(flying, [&](const Urb& candidate) {
        return candidate.client == client && candidate.data->client_addr == address;
    });
    if (urb == flying.end()) return -EINVAL;  // it has finished
    finish(urb, -ENOENT, 0);
    updateGate();
    return 0;
}

long Impl::onReap(UMockdevIoctlClient* client) {
    const auto urb = std::ranges::find(done, client, &Urb::client);
    if (urb == done.end()) return device.unplugged ? -ENODEV : -EAGAIN;
    const IoctlData pointer = argument(client, sizeof(void*));
    umockdev_ioctl_data_set_ptr(pointer.get(), 0, urb->data.get());
    done.erase(urb);
    updateGate();
    return 0;
}

void Impl::finish(Urbs::iterator urb, int status, std::size_t count) {
    urb->content().status = status;
    urb->content().actual_length = static_cast<int>(count);
    done.splice(done.end(), flying, urb);
}

void Impl::finishAll(int status) {
    while (!flying.empty()) finish(flying.begin(), status, 0);
    updateGate();
}

// True when the device has finished the transfer.
bool Impl::progress(Urbs::iterator urb) {
    if (urb->content().type != USBDEVFS_URB_TYPE_BULK) return false;
    const bool in = (urb->content().endpoint & 0x80) != 0;
    const auto transfer = in ? device.read(urb->buffer()) : device.write(urb->buffer());
    if (!transfer || device.unplugged) return device.unplugged;
    finish(urb, transfer->status, transfer->count);
    return true;
}

// What the printer hears may make it say something, so a transfer that was passed is tried again.
void Impl::pump() {
    if (pumping) return;  // an answer may say something at once
    pumping = true;
    for (auto urb = flying.begin(); urb != flying.end();) {
        const auto next = std::next(urb);
        urb = progress(urb) ? flying.begin() : next;
    }
    pumping = false;
    updateGate();
}

void Impl::forget(UMockdevIoctlClient* client) {
    device.forget(client);
    const auto isOurs = [&](const Urb& urb) { return urb.client == client; };
    flying.remove_if(isOurs);
    done.remove_if(isOurs);
    updateGate();
}

struct Impl::Retry {
    std::weak_ptr<Impl> self;
    UMockdevIoctlClient* client;
    int left = kRetries;

    Retry(std::weak_ptr<Impl> printer, UMockdevIoctlClient* waiting)
        : self(std::move(printer)), client(waiting) {
        g_object_ref(client);
    }
    ~Retry() { g_object_unref(client); }
    Retry(const Retry&) = delete;
    Retry& operator=(const Retry&) = delete;
};

gboolean Impl::onRetry(gpointer data) {
    auto* const retry = static_cast<Retry*>(data);
    long result = -ENODEV;
    if (const auto self = retry->self.lock()) {
        const std::lock_guard lock(self->mutex);
        result = self->handle(retry->client);
    }
    if (result == kLater && --retry->left > 0) return G_SOURCE_CONTINUE;
    complete(retry->client, result == kLater ? -EBUSY : result);
    return G_SOURCE_REMOVE;
}

gboolean Impl::onIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer data) {
    const auto self = static_cast<std::weak_ptr<Impl>*>(data)->lock();
    if (!self) return FALSE;
    const std::lock_guard lock(self->mutex);
    const long result = self->handle(client);
    if (result != kLater) {
        complete(client, result);
        return TRUE;
    }
    GSource* const source = g_timeout_source_new(kRetryMilliseconds);
    auto retry = std::make_unique<Retry>(self, client);
    g_source_set_callback(source, onRetry, retry.release(), [](gpointer owned) {
        const std::unique_ptr<Retry> done(static_cast<Retry*>(owned));
    });
    g_source_attach(source, g_main_context_get_thread_default());
    g_source_unref(source);
    return TRUE;
}

struct Impl::Watch {
    std::weak_ptr<Impl> self;
};

// umockdev tells of no close, but the client is gone after it. It is only compared here.
void Impl::onClientGone(gpointer data, GObject* client) {
    const std::unique_ptr<Watch> watch(static_cast<Watch*>(data));
    if (const auto self = watch->self.lock()) {
        const std::lock_guard lock(self->mutex);
        ++self->closes;
        self->forget(reinterpret_cast<UMockdevIoctlClient*>(client));
    }
}

void Impl::onClient(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer data) {
    auto watch = std::make_unique<Watch>(Watch{*static_cast<std::weak_ptr<Impl>*>(data)});
    if (const auto self = watch->self.lock()) {
        const std::lock_guard lock(self->mutex);
        ++self->opens;
    }
    g_object_weak_ref(G_OBJECT(client), onClientGone, watch.release());
}

// umockdev's thread may outlive the printer, so it gets weak pointers.
void Impl::connect(const char* signal, GCallback callback) {
    auto self = std::make_unique<std::weak_ptr<Impl>>(weak_from_this());
    g_signal_connect_data(
        handler, signal, callback, self.release(),
        [](gpointer owned, GClosure*) {
            const std::unique_ptr<std::weak_ptr<Impl>> done(
                static_cast<std::weak_ptr<Impl>*>(owned));
        },
        GConnectFlags(0));
}

void Impl::connectSignals() {
    connect("handle-ioctl", G_CALLBACK(onIoctl));
    connect("client-connected", G_CALLBACK(onClient));
}

SimUsbPrinter::SimUsbPrinter(std::shared_ptr<Impl> impl) : impl_(std::move(impl)) {}
SimUsbPrinter::~SimUsbPrinter() = default;

void SimUsbPrinter::answerWith(SimUsbAnswer answer) {
    const std::lock_guard lock(impl_->mutex);
    impl_->device.answer = std::move(answer);
}

void SimUsbPrinter::say(ByteVector transfer) {
    const std::lock_guard lock(impl_->mutex);
    impl_->device.toSay.push_back(std::move(transfer));
    impl_->pump();
}

void SimUsbPrinter::takeNoWrites(bool waits) {
    const std::lock_guard lock(impl_->mutex);
    impl_->device.waits = waits;
    impl_->pump();
}

void SimUsbPrinter::haltOut() {
    const std::lock_guard lock(impl_->mutex);
    impl_->device.outHalted = true;
}

void SimUsbPrinter::haltIn() {
    const std::lock_guard lock(impl_->mutex);
    impl_->device.inHalted = true;
}

void SimUsbPrinter::unplug() {
    const std::lock_guard lock(impl_->mutex);
    impl_->device.unplugged = true;
    impl_->finishAll(-ENODEV);
}

void SimUsbPrinter::holdElsewhere(bool held) {
    const std::lock_guard lock(impl_->mutex);
    impl_->device.heldElsewhere = held;
}

void SimUsbPrinter::changeDeviceID(std::string deviceID) {
    const std::lock_guard lock(impl_->mutex);
    impl_->device.changeDeviceID(std::move(deviceID));
}

void SimUsbPrinter::refuseAccess() {
    ::chmod(impl_->nodePath.c_str(), 0);
}

std::string SimUsbPrinter::owner() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->device.owner(0);
}

std::uint8_t SimUsbPrinter::alternate() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->device.alternate(0);
}

int SimUsbPrinter::refusedClaims() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->device.refusedClaims;
}

ByteVector SimUsbPrinter::heard() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->device.heard;
}

std::vector<std::string> SimUsbPrinter::controls() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->device.controls;
}

int SimUsbPrinter::transfersInFlight() const {
    const std::lock_guard lock(impl_->mutex);
    return static_cast<int>(impl_->flying.size());
}

int SimUsbPrinter::opens() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->opens;
}

int SimUsbPrinter::closes() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->closes;
}

struct SimUsbBus::Testbed {
    Testbed() {
        // For a test that gives up its privileges; libudev's stand-in makes its sockets there.
        ::chmod(path("").c_str(), 01777);
    }
    // Stops umockdev's thread and removes the folder.
    ~Testbed() { g_object_unref(umockdev); }
    Testbed(const Testbed&) = delete;
    Testbed& operator=(const Testbed&) = delete;

    std::string path(const std::string& below) const {
        const std::unique_ptr<gchar, decltype(&g_free)> root(
            umockdev_testbed_get_root_dir(umockdev), g_free);
        return root.get() + below;
    }
    void add(const std::string& node, UMockdevIoctlBase* handler, const std::string& record) const {
        if (umockdev_testbed_attach_ioctl(umockdev, ("/dev/" + node).c_str(), handler, nullptr) ==
                FALSE ||
            umockdev_testbed_add_from_string(umockdev, record.c_str(), nullptr) == FALSE)
            throw std::runtime_error("umockdev takes no device " + node);
    }

    UMockdevTestbed* umockdev = umockdev_testbed_new();
};

SimUsbBus::SimUsbBus() {
    if (!preloadIsFirst()) throw std::runtime_error("umockdev's preload library is not in place");
    testbed_ = std::make_unique<Testbed>();
}

SimUsbBus::~SimUsbBus() = default;

SimUsbPrinter& SimUsbBus::attach(SimUsbSetup setup) {
    const unsigned address = kFirstAddress + static_cast<unsigned>(printers_.size());
    const auto impl = std::make_shared<SimUsbPrinter::Impl>(std::move(setup));
    impl->connectSignals();
    testbed_->add(nodeOf(address), impl->handler, deviceRecord(impl->device, address));
    impl->nodePath = testbed_->path("/dev/" + nodeOf(address));
    impl->gate.make(impl->nodePath);
    // The preload library connects even when the node may not be opened, and gives up if it cannot.
    ::chmod(testbed_->path("/ioctl/dev/" + nodeOf(address)).c_str(), 0777);
    printers_.push_back(std::make_unique<SimUsbPrinter>(impl));
    return *printers_.back();
}

}  // namespace tintoral::test
