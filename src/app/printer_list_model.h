// The rows of the printer list: one for each known printer, in the order in which they were added.
// The texts are made once for each loading, clean of control characters.
#pragma once

#include <QAbstractTableModel>
#include <array>
#include <vector>

#include "app/ink_rows.h"
#include "records/printer_table.h"

namespace tintoral {

class PrinterListModel : public QAbstractTableModel {
  public:
    enum Column { Name, Levels, Status, LastUpdate, kColumns };

    // By which rows are sorted: the name's and the status's text, the lowest known level in
    // percent, the seconds of the last update. Nothing where there is none: such rows come after
    // all others in ascending order.
    static constexpr int SortRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    // Replaces all rows. The records are shared, their values are read here.
    void setRecords(const PrinterTable& records);

    const PrinterRecordPtr& record(int row) const;
    // The inks of the last reading, for those who draw them.
    const std::vector<InkRow>& inks(int row) const;
    // The row of the printer of that id, or -1.
    int rowOf(std::string_view printerId) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    struct Row {
        PrinterRecordPtr printer;
        std::vector<InkRow> inks;
        std::array<QString, kColumns> cells;
        std::array<QVariant, kColumns> sortKeys;
        QString inkLines;
    };

    static Row makeRow(const PrinterRecordPtr& printer);
    static QString toolTip(const Row& row, std::size_t column);

    std::vector<Row> rows_;
};

// The ink that will run out first, of those whose level is known; null when no level is.
const InkRow* lowestInk(const std::vector<InkRow>& inks);

// An ink and its level in words: "Cyan 42 %".
QString inkInWords(const InkRow& ink);

}  // namespace tintoral
