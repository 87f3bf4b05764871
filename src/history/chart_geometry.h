// What the 2-D chart of a history shows, and where: pure arithmetic, without a window.
//
// Points with y upwards; W is the view's width. All dates are UTC, days and months alike, so that a
// month's line stands exactly on its first day wherever the person is.
//
//   x 30..W, y 20..240   the plotting frame
//   y = 2 * L + 20       a level of L percent, moved into 0 to 100
//   x = 30 + days * 12 / xScale
//                        a day; whole days since `startDate`, xScale the months of the period
//
// The period is set in steps of three months: 1, 4, 7 ... The month that the person picks is
// counted from January 2006, which is 0.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "support/property_list.h"

namespace tintoral {

inline constexpr int kChartLeft = 30;
inline constexpr int kChartBottom = 20;
inline constexpr int kChartTop = 240;

// The period's length in months.
int periodMonths(int periodSteps);

// The month of `now`, counted from January 2006; negative before.
int monthIndexAt(Date now);

// "03/2026", and back: nothing for a text of another form, a month that there is not, or one before
// January 2006.
std::string monthLabel(int monthIndex);
std::optional<int> monthIndexOfLabel(std::string_view label);

// The first day shown. At launch it lies `months` before the current month; once a month is picked,
// `months` before the one after it. The two are a month apart for the same month, as meant.
std::chrono::sys_days startAtLaunch(Date now, int months);
std::chrono::sys_days startForMonth(int monthIndex, int months);

// The day at which a reading is charted. It is taken from the date's text "%m/%d/%y", as meant: the
// time of day and the century are lost, and years are read as 1969 to 2068.
std::chrono::sys_days chartDay(Date date);

struct ChartScale {
    std::chrono::sys_days startDate;
    int xScale = 1;  // months, at least 1

    int days(std::chrono::sys_days day) const;
    // Points right of the frame's left edge.
    double offset(int days) const;
    double x(int days) const { return kChartLeft + offset(days); }
};

double levelY(int level);

// One month's mark on the axis.
struct MonthMark {
    std::chrono::year_month month;
    double offset = 0;  // points right of the frame's left edge
    bool hasLine = false;
    bool hasLabel = false;
};

// The marks from the first month shown up to W. Where more than eight months fit into the frame,
// only those with an even number have a label.
std::vector<MonthMark> monthMarks(const ChartScale& scale, int width);

struct ChartReading {
    std::chrono::sys_days day;
    int level = 0;
};

// One ink over time, in the history's order.
struct ChartSeries {
    std::string key;       // in the entries
    std::string name;      // the same, fit to show
    std::string rgbColor;  // what the last entry holds for it in "rgbColors", else empty
    std::vector<ChartReading> readings;
};

// The inks of a history: those that the last entry names in their order, then all others by name;
// at most 100. Entries that are no dictionaries or have no "Date" are left out, and so are values
// that are no numbers ("80" is one, as a text may hold a number; reals are cut to whole percents).
std::vector<ChartSeries> chartSeries(const Array& history);

struct ChartPoint {
    double x = 0;
    double y = 0;
};

// The line of one ink: the pen moves to the first point and draws to each of the others. Readings
// before `startDate` that come first leave one point at the frame's left edge, on the level of the
// last of them. After that a day never lies before the previous one. Readings beyond `right` add
// one point; readings of one day no more than four, which draw the same line as all of them. Empty
// for a series without readings.
std::vector<ChartPoint> chartLine(const ChartSeries& series, const ChartScale& scale, double right);

// The last reading of a series that has one, which a square marks: on its own day, or at the
// frame's left edge when that lies before `startDate`.
ChartPoint chartEnd(const ChartSeries& series, const ChartScale& scale);

// A reading that is drawn, and the index of its series.
struct ChartHit {
    std::size_t series = 0;
    ChartReading reading;
};

// The reading drawn nearest to a point, of those at most 8 points away.
std::optional<ChartHit> readingNear(const std::vector<ChartSeries>& series, const ChartScale& scale,
                                    ChartPoint point);

}  // namespace tintoral
