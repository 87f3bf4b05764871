// A printer at a base station as a stream for IoHandle: BaseStation{stream}.
#pragma once

#include "transport/net/riousb.h"
#include "vendors/transport_io.h"

namespace tintoral {

class RiousbByteStream final : public ByteStream {
  public:
    // The connection is its opener's and outlives the stream.
    explicit RiousbByteStream(RiousbConnection& connection) : connection_(connection) {}

    void send(Bytes bytes) override { riousbWrite(connection_, bytes); }
    int receive(MutableBytes buffer, std::chrono::milliseconds timeout) override {
        return riousbRead(connection_, buffer, timeout);
    }

  private:
    RiousbConnection& connection_;
};

}  // namespace tintoral
