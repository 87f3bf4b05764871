// The bulk transfers of usb_printer.h.
#include <libusb.h>

#include <algorithm>
#include <limits>

#include "support/clock.h"
#include "transport/usb/usb_printer.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr milliseconds kPauseBeforeRead{100};
constexpr milliseconds kPauseBeforeReadAfterCommand{120};
constexpr milliseconds kShortestRead{10};  // 0 would be no time-out to libusb
constexpr std::size_t kPieceSize = 512;
constexpr std::size_t kLongestTransfer = std::numeric_limits<int>::max() / 2;

struct PipeRead {
    int result = 0;
    std::size_t count = 0;
    bool silent = false;  // the time was up before anything came
};

// What libusb sends it may not change, but its functions do not say so.
unsigned char* forLibusb(Bytes bytes) {
    return const_cast<unsigned char*>(bytes.data());
}

void clearStall(const USBPrinterHandle& handle, std::uint8_t pipe, int result) {
    if (result == LIBUSB_ERROR_PIPE) libusb_clear_halt(handle.deviceInterface.get(), pipe);
}

// `buffer` has room for whole packets.
PipeRead readPackets(const USBPrinterHandle& handle, MutableBytes buffer, milliseconds timeout) {
    int count = 0;
    const int result = libusb_bulk_transfer(handle.deviceInterface.get(), handle.pipes.in,
                                            buffer.data(), static_cast<int>(buffer.size()), &count,
                                            static_cast<unsigned>(timeout.count()));
    clearStall(handle, handle.pipes.in, result);
    const bool timedOut = result == LIBUSB_ERROR_TIMEOUT;
    return {timedOut ? 0 : result, static_cast<std::size_t>(count), timedOut && count == 0};
}

std::size_t takeUnread(USBPrinterHandle& handle, MutableBytes buffer) {
    const std::size_t count = std::min(buffer.size(), handle.unread.size());
    const auto end = handle.unread.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(handle.unread.begin(), end, buffer.begin());
    handle.unread.erase(handle.unread.begin(), end);
    return count;
}

// One read of any size. A host controller drops a packet that is longer than what was asked for, so
// whole packets are asked for and the rest is kept.
PipeRead readPipe(USBPrinterHandle& handle, MutableBytes buffer, milliseconds timeout) {
    if (!handle.interfaceOpen || handle.pipes.in == 0) return {LIBUSB_ERROR_NOT_FOUND};
    if (buffer.empty()) return {};
    buffer = buffer.first(std::min(buffer.size(), kLongestTransfer));
    if (!handle.unread.empty()) return {0, takeUnread(handle, buffer)};
    const std::size_t packet = std::max<std::size_t>(handle.pipes.inPacketSize, 1);
    const std::size_t lastPacket = buffer.size() % packet;
    if (lastPacket == 0) return readPackets(handle, buffer, timeout);
    handle.unread.resize(buffer.size() + packet - lastPacket);
    PipeRead read = readPackets(handle, handle.unread, timeout);
    handle.unread.resize(std::min(read.count, handle.unread.size()));
    read.count = takeUnread(handle, buffer);
    return read;
}

int writePipe(USBPrinterHandle& handle, Bytes bytes) {
    if (!handle.interfaceOpen || handle.pipes.out == 0) return LIBUSB_ERROR_NOT_FOUND;
    if (bytes.size() > kLongestTransfer) return LIBUSB_ERROR_INVALID_PARAM;
    int count = 0;
    const int result = libusb_bulk_transfer(
        handle.deviceInterface.get(), handle.pipes.out, forLibusb(bytes),
        static_cast<int>(bytes.size()), &count, static_cast<unsigned>(kUsbWriteTimeout.count()));
    clearStall(handle, handle.pipes.out, result);
    return result;
}

// Who reads a reply: how it waits and by what name its errors go.
struct Reader {
    milliseconds pause;
    const char* name;
};
constexpr Reader kReplyReader{kPauseBeforeRead, "USBGetReply"};
constexpr Reader kCommandReader{kPauseBeforeReadAfterCommand, "USBSendCmdAndGetReply"};

// The text and its NUL, as far as they fit.
void putText(MutableBytes buffer, const BoundedText& text) {
    if (buffer.empty()) return;
    const Bytes fitting = asBytes(text.view().substr(0, buffer.size() - 1));
    *std::ranges::copy(fitting, buffer.begin()).out = 0;
}

void putReadError(MutableBytes buffer, const Reader& reader, int result, std::size_t received) {
    FixedText<128> line;
    line.format("    %s: ReadPipe err %x %d \n", reader.name, static_cast<unsigned>(result),
                static_cast<int>(received));
    putText(buffer, line);
}

int readReply(USBPrinterHandle& handle, MutableBytes reply, std::size_t& length, int retries,
              const Reader& reader) {
    const std::size_t capacity = std::min(length, reply.size());
    length = 0;
    putText(reply, FixedText<2>());
    PipeRead read;
    for (std::size_t piece = kPieceSize; piece > 0; --retries) {
        pauseFor(reader.pause);
        const MutableBytes rest = reply.subspan(length);
        read = readPipe(handle, rest.first(std::min(piece, rest.size())), kUsbReadTimeout);
        if (read.result != 0) {
            putReadError(rest, reader, read.result, length);
            break;
        }
        length += read.count;
        // Once past the capacity the difference is huge, as meant: only the buffer ends the reply.
        piece = std::min(capacity - length, kPieceSize);
        if (retries < 1 || (read.silent && length > 0)) break;
    }
    return read.result;
}

void LIBUSB_CALL MyCallBackFunction(libusb_transfer* transfer) {
    *static_cast<int*>(transfer->user_data) = 1;
}

}  // namespace

int USBSendCmd(USBPrinterHandle& handle, Bytes bytes) {
    return writePipe(handle, bytes);
}

int USBRecv(USBPrinterHandle& handle, MutableBytes buffer, std::size_t& length,
            milliseconds timeout) {
    const PipeRead read = readPipe(handle, buffer, std::max(timeout, kShortestRead));
    length = read.count;
    return read.result;
}

int USBWaitRecv(USBPrinterHandle& handle, MutableBytes buffer, milliseconds timeout) {
    std::size_t total = 0;
    do {
        pauseFor(kPauseBeforeRead);
        timeout -= kPauseBeforeRead;
        const auto start = Steady::now();
        const MutableBytes rest = buffer.subspan(total);
        const PipeRead read = readPipe(handle, rest, std::max(timeout, kShortestRead));
        if (read.result == 0 || read.result == LIBUSB_ERROR_OVERFLOW) {
            total += std::min(read.count, rest.size());
        } else {
            return total == 0 ? -1 : static_cast<int>(total);
        }
        timeout -= std::chrono::ceil<milliseconds>(Steady::now() - start);
    } while (total < buffer.size() && timeout > 0ms);
    return static_cast<int>(total);
}

int USBGetReply(USBPrinterHandle& handle, MutableBytes reply, std::size_t& length, int retries) {
    return readReply(handle, reply, length, retries, kReplyReader);
}

int USBSendCmdAndGetReply(USBPrinterHandle& handle, Bytes command, MutableBytes reply,
                          std::size_t& length, int retries) {
    const int result = writePipe(handle, command);
    if (result != 0) {
        FixedText<128> line;
        line.format("    USBSendCmdAndGetReply: WritePipe err %x %d\n",
                    static_cast<unsigned>(result), static_cast<int>(command.size()));
        putText(reply, line);
        length = 0;
        return result;
    }
    pauseFor(kPauseBeforeRead);
    return readReply(handle, reply, length, retries, kCommandReader);
}

int USBSendCmdAsync(USBPrinterHandle& handle, Bytes bytes) {
    if (!handle.interfaceOpen || handle.pipes.out == 0) return LIBUSB_ERROR_NOT_FOUND;
    if (bytes.size() > kLongestTransfer) return LIBUSB_ERROR_INVALID_PARAM;
    const LibusbPointer<libusb_transfer> transfer(libusb_alloc_transfer(0));
    if (transfer == nullptr) return LIBUSB_ERROR_NO_MEM;
    int ended = 0;
    libusb_fill_bulk_transfer(transfer.get(), handle.deviceInterface.get(), handle.pipes.out,
                              forLibusb(bytes), static_cast<int>(bytes.size()), MyCallBackFunction,
                              &ended, static_cast<unsigned>(kUsbWriteTimeout.count()));
    const int result = libusb_submit_transfer(transfer.get());
    if (result != 0) return result;
    // The transfer ends by itself when its time is up; until then it must not go.
    while (ended == 0) libusb_handle_events_completed(handle.masterPort.get(), &ended);
    return 0;
}

}  // namespace tintoral
