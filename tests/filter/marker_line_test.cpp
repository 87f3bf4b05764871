#include "filter/marker_line.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "filter/filter_streams.h"

namespace tintoral {
namespace {

std::string written(const MarkerLine& line) {
    CapturedStream out;
    const int result = line.write(out.file());
    std::fflush(out.file());
    std::string text = out.take();
    EXPECT_EQ(result, static_cast<int>(text.size()));
    return text;
}

TEST(MarkerLine, NamesCannotBreakTheLine) {
    MarkerLine line;
    line.add("Bl\"ack\nERROR: x\\", -3);
    line.add("d'Or, mat\xE9\r\t\x1B[2J", 2);
    EXPECT_EQ(written(line),
              "ATTR: marker-colors=#0000FF,#0000FF marker-levels=-3,2 "
              "marker-names=\"BlackERROR: x\",\"dOr mat\xC3\xA9[2J\" marker-types=ink,ink\n");
}

TEST(MarkerLine, KeepsTheListsOfEqualLengthWhenOneIsFull) {
    MarkerLine line;
    EXPECT_FALSE(line.add(std::string(113, 'x'), 1));  // 13 + 113 + 2 quotes: one too many
    EXPECT_TRUE(line.add(std::string(110, 'x'), 2));   // leaves room for two characters more
    EXPECT_FALSE(line.add("y", 3));
    const std::string one = written(line);
    EXPECT_EQ(std::ranges::count(one, ','), 0) << one;
    EXPECT_NE(one.find("marker-levels=2 "), std::string::npos) << one;

    MarkerLine many;  // "#0000FF," fourteen times is what the colours hold
    int added = 0;
    while (added < 20 && many.add("K", added)) ++added;
    EXPECT_EQ(added, 14);
    EXPECT_EQ(std::ranges::count(written(many), ','), 4 * 13);
}

}  // namespace
}  // namespace tintoral
