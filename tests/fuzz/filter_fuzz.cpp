// Whatever a job's command file or a printer's reply holds: the filter ends, sends only whole jobs,
// and each report is one line of printable characters. The input up to its first NUL is the command
// file, what follows is the reply and, in pieces, the names of the inks.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "filter/command_filter.h"
#include "fuzz_stream.h"
#include "records/printer_record.h"

namespace {

using namespace tintoral;

Bytes reply;

int answer(MutableBytes buffer) {
    const Bytes piece = reply.first(std::min(reply.size(), buffer.size()));
    std::ranges::copy(piece, buffer.begin());
    return static_cast<int>(piece.size());
}

struct MemoryFile {
    ~MemoryFile() {
        std::fclose(stream);
        std::free(text);
    }
    std::string_view view() const {
        std::fflush(stream);
        return {text, size};
    }

    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
};

Dictionary printerWithInks(std::string_view names) {
    std::vector<std::string> colors;
    constexpr std::size_t kLongestName = 16;
    for (; !names.empty(); names.remove_prefix(std::min(names.size(), kLongestName)))
        colors.emplace_back(names.substr(0, kLongestName));
    return {{std::string(keys::makerName), "EPSON"},
            {std::string(keys::modelName), "Stylus"},
            {std::string(keys::commandType), "D4"},
            {std::string(keys::colors), colors}};
}

void checkReports(std::string_view reports) {
    for (; !reports.empty(); reports.remove_prefix(reports.find('\n') + 1)) {
        const std::string_view line = reports.substr(0, reports.find('\n'));
        const bool isPrintable =
            std::ranges::none_of(line, [](unsigned char c) { return c < ' ' || c == 0x7F; });
        if (!line.starts_with("ATTR: ") || !isPrintable || line.size() == reports.size())
            std::abort();
    }
}

void runCommands(std::string_view commands, const FilterPorts& ports) {
    std::FILE* stream = fmemopen(nullptr, commands.size() + 1, "w+");
    std::fwrite(commands.data(), 1, commands.size(), stream);
    std::rewind(stream);
    CommandFilter({"USB", "Canon", "iP4000"}, "", ports).run(stream);
    std::fclose(stream);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::StandingClock clock;
    const ScopedClock scope(clock);
    const Bytes input(data, size);
    const std::string_view commands = textBeforeNul(input);
    reply = input.subspan(std::min(commands.size() + 1, size));
    MemoryFile printer;
    MemoryFile reports;
    const FilterPorts ports{printer.stream, reports.stream, answer};
    runCommands(commands, ports);
    const Dictionary dictionary =
        printerWithInks(asText(reply.last(std::min<std::size_t>(reply.size(), 64))));
    ReportLevels(&dictionary, "USB:fuzz", ports);
    checkReports(reports.view());
    return 0;
}
