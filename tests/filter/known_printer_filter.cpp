// The command filter for a printer that it knows and that answers, to be run by a real print
// server.
#include "filter/canned_reply.h"
#include "filter/command_filter.h"

int main(int argc, char** argv) {
    if (argc != 7 || !std::freopen(argv[6], "r", stdin)) return 1;
    tintoral::CommandFilter filter({"keep", "EPSON", "Test"}, KNOWN_PRINTER_TABLE,
                                   {stdout, stderr, tintoral::threeInks});
    filter.run(stdin);
}
