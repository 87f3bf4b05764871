#include "app/month_picker.h"

#include <QtWidgets/QLineEdit>
#include <algorithm>

#include "history/chart_geometry.h"

namespace tintoral {
namespace {

constexpr int kLastMonth = 94 * 12 - 1;  // December 2099
constexpr int kLongestLabel = 7;

std::optional<int> monthOf(const QString& text) {
    return monthIndexOfLabel(text.toStdString());
}

}  // namespace

MonthPicker::MonthPicker(QWidget* parent) : QSpinBox(parent) {
    setRange(0, kLastMonth);
    lineEdit()->setObjectName(QStringLiteral("monthField"));
}

QString MonthPicker::textFromValue(int monthIndex) const {
    return QString::fromStdString(monthLabel(monthIndex));
}

int MonthPicker::valueFromText(const QString& text) const {
    return monthOf(text).value_or(value());
}

QValidator::State MonthPicker::validate(QString& text, int&) const {
    if (const auto month = monthOf(text)) {
        return *month <= maximum() ? QValidator::Acceptable : QValidator::Intermediate;
    }
    const bool mayBecomeOne =
        text.size() <= kLongestLabel && std::ranges::all_of(text, [](QChar c) {
            return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('/');
        });
    return mayBecomeOne ? QValidator::Intermediate : QValidator::Invalid;
}

}  // namespace tintoral
