#include "records/user_defaults.h"

#include <cstdlib>

#include "support/folders.h"
#include "support/report.h"

namespace tintoral {
namespace {

std::filesystem::path configFolder() {
    const char* variable = std::getenv("XDG_CONFIG_HOME");
    if (variable && *variable == '/') return variable;
    const auto home = homeFolder();
    return home.empty() ? home : home / ".config";
}

}  // namespace

std::filesystem::path userDefaultsPath() {
    const auto folder = configFolder();
    return folder.empty() ? folder : folder / "Tintoral" / "Tintoral.plist";
}

UserDefaults::UserDefaults(std::filesystem::path file) : file_(std::move(file)) {
    if (file_.empty()) {
        saveFailure_ = "there is no home folder";
        reportLine("no home folder: settings are not kept");
    } else {
        load();
    }
}

void UserDefaults::load() {
    PropertyListFile file = readPropertyListFile(file_);
    if (file.state == FileState::Absent) return;
    if (auto* values = file.root.as<Dictionary>()) {
        values_ = std::move(*values);
    } else {
        setAside(file);
    }
}

void UserDefaults::setAside(const PropertyListFile& file) {
    const auto reason = file.reason.empty() ? file_.string() + ": not a dictionary" : file.reason;
    if (file.state != FileState::OutOfReach) keptAside_ = keepAside(file_);
    if (keptAside_.empty()) {
        saveFailure_ = reason;
        file_.clear();
    }
    reportLine(
        "the settings cannot be read: " + reason +
        (keptAside_.empty() ? "; settings are not kept" : "; kept as " + keptAside_.string()));
}

const Array& UserDefaults::printerTable() const {
    static const Array kNone;
    const Array* table = values_.array(kPrinterTable);
    return table ? *table : kNone;
}

void UserDefaults::set(std::string_view key, Value value) {
    const Value* existing = values_.find(key);
    if (existing && *existing == value) return;
    values_.set(key, std::move(value));
    changed_ = true;
}

bool UserDefaults::synchronize() {
    if (!changed_) return true;
    if (file_.empty()) return false;
    auto error = makeFolders(file_.parent_path());
    if (!error) error = writePropertyListFile(file_, values_);
    changed_ = static_cast<bool>(error);
    saveFailure_ = error ? error.message() : std::string();
    if (error) reportOnce();
    return !error;
}

void UserDefaults::reportOnce() {
    if (failureReported_) return;
    failureReported_ = true;
    reportLine("the settings cannot be saved: " + file_.string() + ": " + saveFailure_);
}

}  // namespace tintoral
