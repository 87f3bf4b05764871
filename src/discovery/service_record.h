// What an announced printer says about itself, turned into a printer record. Pure.
//
// Four service types announce printers; each has a kind (the locator in the record) and a server
// type (how the printer is reached):
//
//   _ipp._tcp.             "ipp:ADDRESS"        Mac for a shared queue, else Network
//   _riousbprint._tcp.     "riousb:ADDRESS"     AirPort: a base station with a USB printer
//   _pdl-datastream._tcp.  "portPORT:ADDRESS"   AirPort at a base station's address, else Network
//   _printer._tcp.         "lpd:ADDRESS"        Network
//
// A service that is announced with port 0 is not offered (RFC 6763 calls it a name kept only for
// uniqueness): its record shows the port 0, which no query contacts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "discovery/txt_record.h"
#include "records/printer_record.h"

namespace tintoral {

// Identifies a service for as long as the program runs. Both texts are as the record has them.
struct ServiceId {
    std::string name;  // spelledOutText() of what was announced
    std::string type;  // with trailing dot

    // clang-tidy 14 takes the comparison of this for a null pointer.
    // NOLINTNEXTLINE(modernize-use-nullptr)
    friend auto operator<=>(const ServiceId&, const ServiceId&) = default;
};

// A service with what its resolver found.
struct ResolvedService {
    ServiceId id;
    std::string address;     // dotted IPv4; empty when the service has none
    std::uint16_t port = 0;  // as announced
    std::string hostName;
    TxtRecord txt;
};

struct MakerAndModel {
    std::string maker;
    std::string model;
};

// The maker and model of a service by its TXT record, or by its name where that tells no model. The
// maker is "HP", "EPSON", "Canon" ... for every spelling that is known, "unknown" where nothing
// tells it.
MakerAndModel makerAndModelOf(const ResolvedService& service);

// The model without a leading "Epson " or "Canon ", and then without a leading "HP ", in letters of
// either case.
std::string modelWithoutMaker(std::string_view model);

// Puts into `record` all that the service says. `atAirPort`: a base station is known at its
// address.
void fillServiceRecord(PrinterRecord& record, const ResolvedService& service, bool atAirPort);

// The status texts that an HP printer keeps in its TXT record, where it has any.
void copyStatusTexts(const TxtRecord& txt, PrinterRecord& record);

// The address as records hold it: the host name stands in for a missing IPv4 address.
std::string addressOf(const ResolvedService& service);

// The identity of a printer behind a base station.
std::string airPortIdOf(const PrinterRecord& record);

}  // namespace tintoral
