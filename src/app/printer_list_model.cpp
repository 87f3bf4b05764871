#include "app/printer_list_model.h"

#include <QDateTime>
#include <QLocale>
#include <QStringList>
#include <algorithm>

#include "app/shown_text.h"
#include "monitor/record_rules.h"

namespace tintoral {
namespace {

constexpr std::array<const char*, PrinterListModel::kColumns> kTitles{"Printer", "Ink levels",
                                                                      "Status", "Last update"};

std::optional<Date> lastUpdate(const PrinterRecord& printer) {
    const Dictionary* inkDict = printer.dictionary(keys::inkDict);
    return inkDict ? inkDict->date(keys::date) : std::nullopt;
}

QString dateInWords(std::optional<Date> date) {
    if (!date) return QStringLiteral("not updated yet");
    const QDateTime local = QDateTime::fromSecsSinceEpoch(date->time_since_epoch().count());
    return QLocale().toString(local, QLocale::ShortFormat);
}

QStringList inksInWords(const std::vector<InkRow>& inks) {
    QStringList words;
    std::ranges::transform(inks, std::back_inserter(words), inkInWords);
    return words;
}

}  // namespace

const InkRow* lowestInk(const std::vector<InkRow>& inks) {
    const InkRow* lowest = nullptr;
    for (const InkRow& ink : inks) {
        if (ink.level >= 0 && (!lowest || ink.level < lowest->level)) lowest = &ink;
    }
    return lowest;
}

QString inkInWords(const InkRow& ink) {
    return QString::fromStdString(ink.name) + QLatin1Char(' ') + levelText(ink.level);
}

PrinterListModel::Row PrinterListModel::makeRow(const PrinterRecordPtr& printer) {
    Row row{printer, inkRowsOf(*printer, Picture::LevelView), {}, {}, {}};
    const QStringList inks = inksInWords(row.inks);
    const std::optional<Date> date = lastUpdate(*printer);
    row.inkLines = inks.join(QLatin1Char('\n'));
    row.cells = {shownText(printer->text(keys::printerId)), inks.join(QStringLiteral(", ")),
                 shownText(statusLine(printer.get()).text), dateInWords(date)};
    const InkRow* lowest = lowestInk(row.inks);
    row.sortKeys = {
        row.cells[Name], lowest ? QVariant(lowest->level) : QVariant(), row.cells[Status],
        date ? QVariant::fromValue<qint64>(date->time_since_epoch().count()) : QVariant()};
    return row;
}

void PrinterListModel::setRecords(const PrinterTable& records) {
    beginResetModel();
    rows_.clear();
    std::ranges::transform(records, std::back_inserter(rows_), makeRow);
    endResetModel();
}

const PrinterRecordPtr& PrinterListModel::record(int row) const {
    return rows_.at(static_cast<std::size_t>(row)).printer;
}

const std::vector<InkRow>& PrinterListModel::inks(int row) const {
    return rows_.at(static_cast<std::size_t>(row)).inks;
}

int PrinterListModel::rowOf(std::string_view printerId) const {
    const auto row = std::ranges::find_if(
        rows_, [&](const Row& other) { return other.printer->text(keys::printerId) == printerId; });
    return row == rows_.end() ? -1 : static_cast<int>(row - rows_.begin());
}

int PrinterListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int PrinterListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumns;
}

// Marked up on purpose: a name that looks like markup would otherwise be taken as such.
QString PrinterListModel::toolTip(const Row& row, std::size_t column) {
    QString text = (column == Levels ? row.inkLines : row.cells.at(column)).toHtmlEscaped();
    text.replace(QLatin1Char('\n'), QStringLiteral("<br>"));
    return text.isEmpty() ? text : QStringLiteral("<qt>%1</qt>").arg(text);
}

QVariant PrinterListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const Row& row = rows_.at(static_cast<std::size_t>(index.row()));
    const auto column = static_cast<std::size_t>(index.column());
    switch (role) {
        case Qt::DisplayRole:
            return row.cells.at(column);
        case Qt::AccessibleTextRole:
            return column == Levels && row.inks.empty() ? QStringLiteral("no levels yet")
                                                        : row.cells.at(column);
        case Qt::ToolTipRole:
            return toolTip(row, column);
        case SortRole:
            return row.sortKeys.at(column);
        default:
            return {};
    }
}

QVariant PrinterListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Vertical || section < 0 || section >= kColumns) return {};
    if (role == Qt::TextAlignmentRole) return {Qt::AlignLeft | Qt::AlignVCenter};
    if (role != Qt::DisplayRole) return {};
    return QString::fromLatin1(kTitles[static_cast<std::size_t>(section)]);
}

}  // namespace tintoral
