#include "app/printer_table_model.h"

#include <QBrush>
#include <QGuiApplication>
#include <QPalette>
#include <algorithm>

#include "app/shown_text.h"
#include "monitor/record_rules.h"

namespace tintoral {
namespace {

struct KindInWords {
    std::string_view prefix;
    std::string_view words;
};

constexpr std::array kKinds{
    KindInWords{"USB", "USB"},     KindInWords{"bjnp:", "Canon BJNP"}, KindInWords{"ipp:", "IPP"},
    KindInWords{"riousb:", "USB"}, KindInWords{"port", "Raw port"},    KindInWords{"lpd:", "LPD"},
};

std::string kindInWords(const PrinterRecord& printer) {
    constexpr std::int64_t kUsualRawPort = 9100;
    const std::string kind = printer.text(keys::kind);
    const auto* row = std::ranges::find_if(
        kKinds, [&](const KindInWords& candidate) { return kind.starts_with(candidate.prefix); });
    if (row == kKinds.end()) return {};
    const std::int64_t port = printer.integer(keys::port).value_or(kUsualRawPort);
    const bool isUnusualPort = row->prefix == "port" && port > 0 && port != kUsualRawPort;
    return std::string(row->words) + (isUnusualPort ? " " + std::to_string(port) : "");
}

// What stands between this computer and the printer.
std::string connectionInWords(const PrinterRecord& printer) {
    const std::string serverType = printer.text(keys::serverType);
    const std::string words = kindInWords(printer);
    if (serverType == server_types::airPort) return words + ", AirPort";
    return serverType.starts_with(server_types::mac) ? words + ", shared" : words;
}

std::string statusInWords(const PrinterRecord& printer) {
    return printer.text(keys::active) == kNo ? "Offline" : printer.text(keys::printerStatus);
}

struct ColumnRule {
    const char* title;
    std::string (*text)(const PrinterRecord&);
};

template <const std::string_view& key>
std::string valueOf(const PrinterRecord& printer) {
    return printer.text(key);
}

constexpr std::array<ColumnRule, PrinterTableModel::kColumns> kColumnRules{{
    {"Name", valueOf<keys::printerName>},
    {"Connection", connectionInWords},
    {"Address", valueOf<keys::ipAdrs>},
    {"Status", statusInWords},
    {"Maker and model", valueOf<keys::makerAndModelName>},
}};

// A tool tip would read a text with tags as rich text.
QString plainToolTip(const QString& text) {
    return text.isEmpty() ? text : "<qt>" + text.toHtmlEscaped() + "</qt>";
}

// Lighter than the other rows on any ground, and still readable; many styles draw disabled text too
// faintly for whole sentences.
QBrush refusedText() {
    QColor color = QGuiApplication::palette().color(QPalette::Active, QPalette::Text);
    color.setAlphaF(0.6F);
    return color;
}

bool isSameEntry(const PrinterRecord& a, const PrinterRecord& b) {
    return a.text(keys::printerId) == b.text(keys::printerId) &&
           a.text(keys::kind) == b.text(keys::kind);
}

}  // namespace

PrinterTableModel::Row PrinterTableModel::makeRow(const PrinterRecordPtr& printer) {
    Row row{printer, {}, QString::fromStdString(refusalToSelect(*printer))};
    for (std::size_t column = 0; column < row.cells.size(); ++column)
        row.cells[column] = shownText(kColumnRules[column].text(*printer));
    return row;
}

void PrinterTableModel::setRecords(const PrinterTable& records) {
    beginResetModel();
    rows_.clear();
    std::ranges::transform(records, std::back_inserter(rows_), makeRow);
    endResetModel();
}

const PrinterRecordPtr& PrinterTableModel::record(int row) const {
    return rows_.at(static_cast<std::size_t>(row)).printer;
}

int PrinterTableModel::rowOf(const PrinterRecordPtr& printer) const {
    auto row = std::ranges::find(rows_, printer, &Row::printer);
    if (row == rows_.end()) {
        row = std::ranges::find_if(
            rows_, [&](const Row& other) { return isSameEntry(*other.printer, *printer); });
    }
    return row == rows_.end() ? -1 : static_cast<int>(row - rows_.begin());
}

int PrinterTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int PrinterTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumns;
}

QVariant PrinterTableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const Row& row = rows_.at(static_cast<std::size_t>(index.row()));
    const QString& text = row.cells.at(static_cast<std::size_t>(index.column()));
    switch (role) {
        case Qt::DisplayRole:
            return text;
        case Qt::ToolTipRole:
            return plainToolTip(row.refusal.isEmpty() ? text : row.refusal);
        case Qt::AccessibleDescriptionRole:
            return row.refusal;
        case Qt::ForegroundRole:
            return row.refusal.isEmpty() ? QVariant() : refusedText();
        default:
            return {};
    }
}

QVariant PrinterTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Vertical || section < 0 || section >= kColumns) return {};
    if (role == Qt::TextAlignmentRole) return {Qt::AlignLeft | Qt::AlignVCenter};
    if (role != Qt::DisplayRole) return {};
    return QString::fromLatin1(kColumnRules[static_cast<std::size_t>(section)].title);
}

Qt::ItemFlags PrinterTableModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    const Row& row = rows_.at(static_cast<std::size_t>(index.row()));
    const Qt::ItemFlags enabled = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return (row.refusal.isEmpty() ? enabled : Qt::NoItemFlags) | Qt::ItemNeverHasChildren;
}

}  // namespace tintoral
