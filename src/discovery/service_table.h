// The records of all services that were ever announced, one for each (name, type). Pure; what moves
// is BonjourBrowser.
//
// A record is not removed when its service goes: it becomes inactive, and active again when the
// service comes back. Only so that announcements cannot fill the memory, no more than 256 inactive
// records are kept (the ones that left last) and no more than 4096 in all.
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "discovery/service_record.h"

namespace tintoral {

class ServiceTable {
  public:
    static constexpr std::size_t kMostRecords = 4096;
    static constexpr std::size_t kMostInactive = 256;

    // In the order in which the services were first seen. Records are shared with who shows them.
    const std::vector<PrinterRecordPtr>& records() const { return records_; }

    // The record of a service, or null.
    PrinterRecordPtr find(const ServiceId& id) const;

    // A service is announced (again): its record, active and with a fresh date. Null when the table
    // is full of active records.
    PrinterRecordPtr found(const ServiceId& id);

    // A service was resolved: its record, filled; null when there is none. A base station's service
    // also makes AirPort printers of all other records at its address.
    PrinterRecordPtr resolved(const ResolvedService& service);

    // A resolved service's TXT record is another now: an HP printer's status texts are taken over.
    void txtUpdated(const ServiceId& id, const TxtRecord& txt) const;

    // A service went.
    void withdrawn(const ServiceId& id);

    // A copy of the first record of that maker and model.
    std::optional<PrinterRecord> getPrinterDictByMakerAndModelName(std::string_view name) const;

    // Whether a base station announced itself at that address.
    bool lookForAirPort(std::string_view address) const;

    // Every record at that address becomes an AirPort printer.
    void setAirPort(std::string_view address);

  private:
    bool dropOldestInactive();  // false: there is none

    std::vector<PrinterRecordPtr> records_;
    std::map<ServiceId, PrinterRecordPtr> byId_;
    std::deque<ServiceId> inactive_;  // the longest gone first
};

}  // namespace tintoral
