// Whatever a printer answers in a maker's whole exchange: it ends, no more bytes are counted than
// there is room for, and the report of it stays within its text. The first byte picks the exchange
// and the transport.
#include <cstdlib>

#include "fuzz_stream.h"
#include "vendors/brother_exchange.h"
#include "vendors/canon_exchange.h"
#include "vendors/epson_exchange.h"
#include "vendors/hp_exchange.h"

namespace {

using namespace tintoral;
using Report = FixedText<8192>;
using Exchange = int (*)(const IoHandle&, Report&);

constexpr Exchange kExchanges[] = {
    [](const IoHandle& io, Report& report) { return epsonDiagnose0(io, "D4", report); },
    [](const IoHandle& io, Report& report) { return epsonDiagnose0(io, "RC", report); },
    [](const IoHandle& io, Report& report) { return epsonDiagnose0(io, "RC1", report); },
    [](const IoHandle& io, Report& report) { return epsonDiagnose0(io, "RC0", report); },
    [](const IoHandle& io, Report& report) { return canonDiagnose0(io, "iP4000", "BJL", report); },
    [](const IoHandle& io, Report& report) { return canonDiagnose0(io, "MG1", "IVEC", report); },
    [](const IoHandle& io, Report& report) { return hpDiagnose1(io, report, "PJL,PML"); },
    [](const IoHandle& io, Report& report) { return hpDiagnose1(io, report, "MLC,PCL,PML"); },
    [](const IoHandle& io, Report& report) { return brotherDiagnose0(io, 0, report); },
};
constexpr std::size_t kExchangeCount = std::size(kExchanges);
constexpr int kMostBytes = 10 * 2048;  // of the longest reply, in as many pieces as are received

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    fuzz::StandingClock clock;
    const ScopedClock scope(clock);
    fuzz::FuzzStream stream(Bytes(data, size).subspan(1));
    const bool atBaseStation = data[0] / kExchangeCount % 2 != 0;
    const IoHandle handle =
        atBaseStation ? IoHandle(BaseStation{stream}) : IoHandle(UsbPrinter{stream});
    Report report;
    if (kExchanges[data[0] % kExchangeCount](handle, report) > kMostBytes) std::abort();
    if (report.view().find('\0') != std::string_view::npos) std::abort();
    return 0;
}
