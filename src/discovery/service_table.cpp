#include "discovery/service_table.h"

#include <algorithm>

namespace tintoral {

PrinterRecordPtr ServiceTable::find(const ServiceId& id) const {
    const auto entry = byId_.find(id);
    return entry == byId_.end() ? nullptr : entry->second;
}

PrinterRecordPtr ServiceTable::found(const ServiceId& id) {
    PrinterRecordPtr record = find(id);
    if (!record) {
        if (records_.size() >= kMostRecords && !dropOldestInactive()) return nullptr;
        record = std::make_shared<PrinterRecord>();
        record->set(keys::printerName, id.name);
        record->set(keys::serviceType, id.type);
        records_.push_back(record);
        byId_.emplace(id, record);
    }
    record->set(keys::date, currentDate());
    record->set(keys::active, kYes);
    std::erase(inactive_, id);
    return record;
}

PrinterRecordPtr ServiceTable::resolved(const ResolvedService& service) {
    PrinterRecordPtr record = find(service.id);
    if (!record) return nullptr;
    const std::string address = addressOf(service);
    fillServiceRecord(*record, service, lookForAirPort(address));
    if (service.id.type == service_types::riousbprint) setAirPort(address);
    return record;
}

void ServiceTable::txtUpdated(const ServiceId& id, const TxtRecord& txt) const {
    const PrinterRecordPtr record = find(id);
    if (record && record->text(keys::makerName) == makers::hp) copyStatusTexts(txt, *record);
}

void ServiceTable::withdrawn(const ServiceId& id) {
    const PrinterRecordPtr record = find(id);
    if (!record) return;
    record->set(keys::active, kNo);
    std::erase(inactive_, id);
    inactive_.push_back(id);
    if (inactive_.size() > kMostInactive) dropOldestInactive();
}

bool ServiceTable::dropOldestInactive() {
    if (inactive_.empty()) return false;
    const auto entry = byId_.find(inactive_.front());
    std::erase(records_, entry->second);
    byId_.erase(entry);
    inactive_.pop_front();
    return true;
}

std::optional<PrinterRecord> ServiceTable::getPrinterDictByMakerAndModelName(
    std::string_view name) const {
    for (const PrinterRecordPtr& record : records_) {
        if (record->text(keys::makerAndModelName) == name) return *record;
    }
    return std::nullopt;
}

bool ServiceTable::lookForAirPort(std::string_view address) const {
    // An address that is not known yet is nobody's.
    return !address.empty() && std::ranges::any_of(byId_, [&](const auto& entry) {
        return entry.first.type == service_types::riousbprint &&
               entry.second->text(keys::ipAdrs) == address;
    });
}

void ServiceTable::setAirPort(std::string_view address) {
    if (address.empty()) return;  // so is that of a record that is not resolved yet
    for (const PrinterRecordPtr& record : records_) {
        if (record->text(keys::ipAdrs) != address) continue;
        record->set(keys::serverType, server_types::airPort);
        record->set(keys::printerId, airPortIdOf(*record));
    }
}

}  // namespace tintoral
