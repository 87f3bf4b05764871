#include "records/model_merge.h"

#include <algorithm>
#include <string>

#include "records/maintenance_items.h"

namespace tintoral {
namespace {

struct CommandTypeRule {
    std::string_view recorded;
    std::string_view listed;
};

// Where the table's variant replaces the recorded one. The rest stays, as meant: a learned "RC0" is
// never replaced, while a learned "RC1" falls back to the table's "RC" at every merge.
constexpr CommandTypeRule kReplacements[] = {{"RC1", "RC"}, {"RC1", "D4"}, {"RC", "D4"}};

std::string makerAndModel(const PrinterRecord& record) {
    const std::string maker = record.text(keys::makerName);
    const std::string model = record.text(keys::modelName);
    return maker.empty() || model.empty() ? std::string() : maker + " " + model;
}

bool isReplaced(std::string_view recorded, std::string_view listed) {
    return recorded.empty() || std::ranges::any_of(kReplacements, [&](const CommandTypeRule& rule) {
               return rule.recorded == recorded && rule.listed == listed;
           });
}

void mergeColors(PrinterRecord& record, const Dictionary& entry) {
    if (const Array* colors = entry.array(keys::colors)) record.set(keys::colors, *colors);
}

void mergeCommandType(PrinterRecord& record, const Dictionary& entry) {
    const std::string listed = entry.text(model_keys::commandType);
    if (listed.empty() || !isReplaced(record.text(keys::commandType), listed)) return;
    record.set(keys::commandType, listed);
}

void setMaintenanceCommands(PrinterRecord& record, const Array& options) {
    for (const MaintenanceItem& item : kMaintenanceItems) {
        record.remove(item.flagKey);
        const bool listed = std::ranges::find(options, Value(item.title)) != options.end();
        if (listed) record.set(item.flagKey, kYes);
    }
}

}  // namespace

void updatePrinterDict(PrinterRecord& record, const ModelTable& models,
                       std::optional<std::string_view> key) {
    const std::string name = key ? std::string(*key) : makerAndModel(record);
    if (name.empty()) return;
    const Dictionary* entry = models.find(name);
    if (entry) mergeColors(record, *entry);
    if (entry) mergeCommandType(record, *entry);
    const Array* options = entry ? entry->array(model_keys::options) : nullptr;
    setMaintenanceCommands(record, options ? *options : Array());
}

}  // namespace tintoral
