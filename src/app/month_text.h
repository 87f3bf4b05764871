// How a month is written in the charts.
#pragma once

#include <QDate>
#include <QLocale>
#include <QString>
#include <chrono>

namespace tintoral {

// "Mar/26", in the person's language as all dates in the window.
inline QString monthText(std::chrono::year_month month) {
    const QDate date(static_cast<int>(month.year()),
                     static_cast<int>(static_cast<unsigned>(month.month())), 1);
    return QLocale().toString(date, QStringLiteral("MMM/yy"));
}

}  // namespace tintoral
