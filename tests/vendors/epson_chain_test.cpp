#include "vendors/epson_chain.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>

namespace tintoral {
namespace {

// Four links that answer as told and write down that they were asked.
struct Chain {
    std::map<std::string, int> answers;
    std::string asked;

    int run(PrinterRecord& printer, std::string_view start) {
        const auto link = [&](const char* name) {
            return EpsonLink{name, [this, name] {
                                 asked += std::string(name) + " ";
                                 return answers[name];
                             }};
        };
        const std::array links{EpsonLink{"D4", {}}, link("RC"), link("RC1"), link("RC0")};
        asked.clear();
        return runEpsonChain(printer, start, links);
    }
};

TEST(EpsonChain, WalksOnAndRemembersWhatWorked) {
    Chain chain{{{"RC", 0}, {"RC1", -1}, {"RC0", 4}}, ""};
    PrinterRecord printer;
    EXPECT_EQ(chain.run(printer, "D4"), 4);
    EXPECT_EQ(chain.asked, "RC RC1 RC0 ");
    EXPECT_EQ(printer.text(keys::commandType), "RC0");
    EXPECT_EQ(chain.run(printer, "D4"), 4);
    EXPECT_EQ(chain.asked, "RC0 ");
    chain.answers["RC0"] = -1;
    EXPECT_EQ(chain.run(printer, "D4"), -1);
    EXPECT_FALSE(printer.contains(keys::commandType));
}

TEST(EpsonChain, StoredTypes) {
    Chain chain{{{"RC", 1}, {"RC1", 0}, {"RC0", 0}}, ""};
    PrinterRecord printer{{std::string(keys::commandType), "RC1"}};
    EXPECT_EQ(chain.run(printer, "D4"), 0);  // never back to a variant before it
    EXPECT_EQ(chain.asked, "RC1 RC0 ");
    EXPECT_FALSE(printer.contains(keys::commandType));

    printer.set(keys::commandType, "BDC");
    EXPECT_EQ(chain.run(printer, "D4"), 0);
    EXPECT_EQ(chain.asked, "");
    EXPECT_EQ(printer.text(keys::commandType), "BDC");
}

}  // namespace
}  // namespace tintoral
