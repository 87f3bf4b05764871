// The rows of the selection window's table: one for each printer record, in the order of the
// records. The texts are made once for each loading, clean of control characters; a printer that
// cannot be chosen has a disabled row that says why.
#pragma once

#include <QAbstractTableModel>
#include <array>
#include <vector>

#include "records/printer_table.h"

namespace tintoral {

class PrinterTableModel : public QAbstractTableModel {
  public:
    enum Column { Name, Connection, Address, Status, MakerAndModel, kColumns };

    using QAbstractTableModel::QAbstractTableModel;

    // Replaces all rows. The records are shared, their texts are read here.
    void setRecords(const PrinterTable& records);

    const PrinterRecordPtr& record(int row) const;

    // The row of this very record, else of one with the same "printerId" and "kind", else -1.
    int rowOf(const PrinterRecordPtr& printer) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    struct Row {
        PrinterRecordPtr printer;
        std::array<QString, kColumns> cells;
        QString refusal;
    };

    static Row makeRow(const PrinterRecordPtr& printer);

    std::vector<Row> rows_;
};

}  // namespace tintoral
