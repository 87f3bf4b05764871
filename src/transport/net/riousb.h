// The client of an AirPort base station that shares its USB printer ("riousb"): requests and
// replies on one TCP connection over IPv6, each a header of six 32-bit words, big-endian, and a
// payload.
//
//   word   field                      request      type  payload
//   0      version: 1                 open         1     the printer's name on the base station
//   1      type                       close        2     none
//   2      sequence number, from 1    read         3     1024, the bytes wanted
//   3      payload length             write        4     the data
//   4      status: 0 is success       device ID    5     1, 8192
//   5      connection handle: 0 in the open request, then the one of its reply
//
// Replies come under the request's type; printer data (3) and the device ID (5) may also come while
// another reply is awaited, and are kept for the call that wants them.
//
// A length on the wire is only believed as far as bytes follow: of a payload 65536 bytes are kept
// and the rest read and dropped. A header that nothing follows has no payload. When a message
// breaks off inside its header or its payload, the bytes after it have no meaning any more: what
// came of its payload counts, the connection is closed, and what is asked after it fails.
//
// Results: -1 for a failure, which is a status other than 0, a connection that is lost or closed,
// or a send that makes no progress; 0 when nothing came in time.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "support/byte_reader.h"
#include "support/fixed_text.h"
#include "support/unique_fd.h"
#include "transport/net/riousb_cache.h"

namespace tintoral {

struct RiousbConnection {
    UniqueFd socket;
    std::uint32_t handle = 0;
    std::uint32_t nextSequence = 1;
    RiousbReadCache cache;
    FixedText<513> deviceID;  // one that came unasked, up to 512 bytes of it
};

// Connects (openTCP6) and opens the printer; the reply has 200 ms. Null when the base station does
// not answer or refuses.
std::unique_ptr<RiousbConnection> riousbOpen(const std::string& host, std::uint16_t port,
                                             std::string_view printerName);

// The same on a stream socket that is connected already.
std::unique_ptr<RiousbConnection> riousbOpenOn(UniqueFd socket, std::string_view printerName);

// Tells the base station, waits up to 200 ms for its reply and closes. Null is let pass.
void riousbClose(std::unique_ptr<RiousbConnection> connection);

// Sends bytes to the printer and waits for the acknowledgement; each message on the way to it has
// 500 ms for its header and 500 ms for its payload, and after 5 s no further one is awaited.
// Result: the length of the acknowledgement's payload; 0 when it has none, which only the time-out
// shows. Only a negative result says that the bytes were not taken.
int riousbWrite(RiousbConnection& connection, Bytes bytes);

// Takes cached data, or else asks for data again and again, 100 ms before each look for the reply,
// until some comes or the time is up; a reply that has begun in time may take as long once more.
// What does not fit the buffer is kept for the next read. Result: the bytes delivered.
int riousbRead(RiousbConnection& connection, MutableBytes buffer,
               std::chrono::milliseconds timeout);

// The printer's IEEE 1284 device ID: one that came unasked, or else asked for like data. Result:
// the length of the text.
int riousbGetDeviceID(RiousbConnection& connection, BoundedText& deviceID,
                      std::chrono::milliseconds timeout);

}  // namespace tintoral
