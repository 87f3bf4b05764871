#include "records/model_table.h"

#include <string>

#include "support/report.h"
#include "support/resources.h"

namespace tintoral {

ModelTable ModelTable::load(const std::filesystem::path& path) {
    PropertyListFile file = readPropertyListFile(path);
    if (file.state == FileState::Absent) file.reason = path.string() + ": missing";
    if (auto* entries = file.root.as<Dictionary>()) return ModelTable(std::move(*entries));
    if (file.reason.empty()) file.reason = path.string() + ": not a dictionary";
    reportLine("the model table cannot be used: " + file.reason);
    return {};
}

const Dictionary* ModelTable::lookUp(std::string_view name) const {
    const Value* value = entries_.find(name);
    if (const auto* alias = value ? value->as<std::string>() : nullptr)
        value = entries_.find(*alias);
    return value ? value->as<Dictionary>() : nullptr;
}

const Dictionary* ModelTable::find(std::string_view makerAndModel) const {
    constexpr std::string_view kSeries = " series";
    if (const Dictionary* entry = lookUp(makerAndModel)) return entry;
    const auto at = makerAndModel.find(kSeries);
    if (at != std::string_view::npos) return lookUp(makerAndModel.substr(0, at));
    return lookUp(std::string(makerAndModel).append(kSeries));
}

std::filesystem::path modelTablePath() {
    return resourceFolder() / "printers.xml";
}

}  // namespace tintoral
