#include "records/printer_table.h"

#include <algorithm>

#include "records/model_merge.h"
#include "support/clock.h"

namespace tintoral {
namespace {

constexpr std::int64_t kMaximumAgeInDays = 90;

auto hasId(std::string_view printerId) {
    return [printerId](const PrinterRecordPtr& record) {
        return record->text(keys::printerId) == printerId;
    };
}

bool isForgotten(const PrinterRecord& record, Date now) {
    constexpr std::int64_t kSecondsPerDay = 86400;
    const auto lastSeen = record.date(keys::date);
    return lastSeen && (*lastSeen - now).count() / -kSecondsPerDay > kMaximumAgeInDays;
}

}  // namespace

PrinterTable loadPrinterTable(const UserDefaults& defaults) {
    PrinterTable table;
    for (const Value& stored : defaults.printerTable()) {
        const auto* record = stored.as<Dictionary>();
        if (!record || record->text(keys::printerId).empty()) continue;
        table.push_back(std::make_shared<PrinterRecord>(*record));
    }
    return table;
}

void storePrinterTable(const PrinterTable& table, UserDefaults& defaults) {
    Array records;
    for (const PrinterRecordPtr& record : table) records.emplace_back(*record);
    defaults.setPrinterTable(std::move(records));
}

void prunePrinterTable(PrinterTable& table, std::string_view selectedId, const ModelTable& models) {
    for (const PrinterRecordPtr& record : table) updatePrinterDict(*record, models);
    std::erase_if(table, [&, now = currentDate()](const PrinterRecordPtr& record) {
        return !hasId(selectedId)(record) && isForgotten(*record, now);
    });
}

PrinterRecordPtr findPrinter(const PrinterTable& table, std::string_view printerId) {
    const auto at = std::ranges::find_if(table, hasId(printerId));
    return at == table.end() ? nullptr : *at;
}

void removePrinter(PrinterTable& table, std::string_view printerId) {
    std::erase_if(table, hasId(printerId));
}

}  // namespace tintoral
