#include "netproto/printer_mib.h"

#include <algorithm>
#include <span>

#include "netproto/snmp_exchange.h"
#include "support/clock.h"
#include "vendors/hp.h"

namespace tintoral {
namespace {

constexpr std::array<std::string_view, 2> kStatusOids{"1.3.6.1.2.1.25.3.5.1.1",
                                                      "1.3.6.1.2.1.25.3.5.1.2"};
constexpr std::array<std::string_view, 8> kSuppliesColumns{
    "1.3.6.1.2.1.43.11.1.1.2", "1.3.6.1.2.1.43.11.1.1.3", "1.3.6.1.2.1.43.11.1.1.4",
    "1.3.6.1.2.1.43.11.1.1.5", "1.3.6.1.2.1.43.11.1.1.6", "1.3.6.1.2.1.43.11.1.1.7",
    "1.3.6.1.2.1.43.11.1.1.8", "1.3.6.1.2.1.43.11.1.1.9"};
constexpr std::array<std::string_view, 4> kColorantColumns{
    "1.3.6.1.2.1.43.12.1.1.2", "1.3.6.1.2.1.43.12.1.1.3", "1.3.6.1.2.1.43.12.1.1.4",
    "1.3.6.1.2.1.43.12.1.1.5"};
constexpr std::string_view kHPDeviceIDOid = "1.3.6.1.4.1.11.2.3.9.1.1.7";
constexpr std::string_view kDeviceDescriptionOid = "1.3.6.1.2.1.25.3.2.1.3";
constexpr std::array<std::string_view, 2> kBrotherOids1{"1.3.6.1.4.1.2435.2.3.9.4.2.1.5.5.6.0",
                                                        "1.3.6.1.4.1.2435.2.3.9.4.2.1.5.5.8.0"};
constexpr std::array<std::string_view, 2> kBrotherOids2{"1.3.6.1.4.1.2435.2.3.9.1.1.7.0",
                                                        "1.3.6.1.4.1.1240.2.3.4.3.2.1.10.1"};

// Positions of the bindings in an answer.
constexpr std::size_t kDescription = 4;
constexpr std::size_t kMaximum = 6;
constexpr std::size_t kLevel = 7;
constexpr std::size_t kColorantValue = 2;

using OidList = std::span<const std::string_view>;

struct ErrorWord {
    std::uint8_t bit;
    std::string_view text;
};

// RFC 2790 hrPrinterDetectedErrorState, first byte. "serviceRequested" has no comma, as meant.
constexpr ErrorWord kErrorWords[] = {
    {0x01, "serviceRequested"}, {0x02, "offline,"},  {0x04, "jammed,"},  {0x08, "doorOpen,"},
    {0x10, "noToner,"},         {0x20, "lowToner,"}, {0x40, "noPaper,"}, {0x80, "lowPaper,"},
};

std::uint32_t firstRequestId() {
    return static_cast<std::uint32_t>(currentDate().time_since_epoch().count());
}

// Round 0 asks for the columns themselves; afterwards the answered bindings stay.
void makeQuery(SnmpMessage& message, OidList columns, std::uint32_t requestId, int round) {
    if (round == 0) {
        message = {};
        for (std::size_t i = 0; i < columns.size(); ++i) message.varBinds[i].oid.assign(columns[i]);
    }
    message.pduType = snmp_pdus::getNextRequest;
    message.requestId = requestId;
    message.errorStatus = 0;
    message.errorIndex = 0;
}

// Sends the message and decodes the answer into it. Result: the size of the reply, 0 or -1 when
// none came.
int exchange(const std::string& host, SnmpMessage& message, BoundedText* dump) {
    std::array<std::uint8_t, 1024> request{};
    std::array<std::uint8_t, 2048> reply{};
    const std::size_t size = mkSNMPSrcPacket(request, message);
    if (size == 0) return 0;  // what came back is longer than a request may be
    const int received = snmpSendAndReceive(host, Bytes(request).first(size), reply);
    if (received < 1) return received;
    const Bytes answer = Bytes(reply).first(static_cast<std::size_t>(received));
    parseSnmpPacket(answer, message);
    if (dump != nullptr) sdumpSnmpPacket(*dump, answer);
    return received;
}

bool isInside(const SnmpVarBind& binding, std::string_view column) {
    return binding.oid.view().starts_with(column);
}

// Asks for the successor of one object and copies its text when the answer is still inside it.
int askForText(const std::string& host, std::string_view oid, BoundedText& text,
               BoundedText* dump) {
    text.clear();
    SnmpMessage message;
    makeQuery(message, OidList(&oid, 1), firstRequestId(), 0);
    const int received = exchange(host, message, dump);
    if (received > 0 && isInside(message.varBinds[0], oid))
        text.assign(message.varBinds[0].value.text.view());
    return received;
}

using MakeQuery = void (*)(SnmpMessage& message, std::uint32_t requestId, int round);

// Walks a table row by row: `keepRow(row, message)` tells whether the answer still belongs to it.
// Result: the rows.
template <typename KeepRow>
int walk(const std::string& host, MakeQuery makeRowQuery, BoundedText* dump, KeepRow keepRow) {
    SnmpMessage message;
    const std::uint32_t requestId = firstRequestId();
    std::size_t row = 0;
    for (; row < kMaximumSupplies; ++row) {
        makeRowQuery(message, requestId + static_cast<std::uint32_t>(row), static_cast<int>(row));
        if (exchange(host, message, dump) < 1 || !keepRow(row, message)) break;
    }
    return static_cast<int>(row);
}

int dumpObjects(const std::string& host, OidList oids, BoundedText& dump) {
    std::uint32_t requestId = firstRequestId();
    for (const std::string_view& oid : oids) {
        SnmpMessage message;
        makeQuery(message, OidList(&oid, 1), requestId++, 0);
        exchange(host, message, &dump);
    }
    return static_cast<int>(dump.size());
}

int inkStatusByDeviceID(const std::string& host, BoundedText& status, InkQuantities& record) {
    FixedText<1024> deviceID;
    pmibGetHPDeviceID(host, deviceID, nullptr);
    return parseHPDeviceID(deviceID.view(), status, record);
}

}  // namespace

void mkSnmpMakerSuppliesQuery(SnmpMessage& message, std::uint32_t requestId, int round) {
    makeQuery(message, kSuppliesColumns, requestId, round);
}

void mkSnmpColorantMarkerQuery(SnmpMessage& message, std::uint32_t requestId, int round) {
    makeQuery(message, kColorantColumns, requestId, round);
}

std::int8_t supplyLevel(std::int32_t level, std::int32_t maximum) {
    constexpr std::int64_t kFull = 100;
    constexpr std::int64_t kHighest = 127;
    constexpr std::int64_t kLowest = -128;
    if (level < 0) return static_cast<std::int8_t>(std::max<std::int64_t>(level, kLowest));
    if (maximum < 1) return static_cast<std::int8_t>(std::min<std::int64_t>(level, kHighest));
    return static_cast<std::int8_t>(std::min(std::int64_t{level} * kFull / maximum, kFull));
}

void printerStatusToString(std::int32_t status, std::string_view errorState, BoundedText& text) {
    constexpr std::int32_t kIdle = 3;
    constexpr std::int32_t kPrinting = 4;
    if (status == kPrinting) return text.assign("Printing");
    if (status == kIdle) return text.assign("Idle");
    const std::uint8_t errors =
        errorState.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(errorState[0]);
    if (errors == 0) return text.assign("Unknown");
    text.clear();
    for (const ErrorWord& word : kErrorWords) {
        if ((errors & word.bit) != 0) text.append(word.text);
    }
}

int pmibGetPrinterStatus(const std::string& host, BoundedText& status, BoundedText* dump) {
    if (dump != nullptr) dump->clear();
    SnmpMessage message;
    makeQuery(message, kStatusOids, firstRequestId(), 0);
    const int received = exchange(host, message, dump);
    if (received < 1) {
        status.assign("Can't communicate to the printer.");
        return -1;
    }
    const SnmpVarBind& printerStatus = message.varBinds[0];
    const SnmpVarBind& errorState = message.varBinds[1];
    if (isInside(printerStatus, kStatusOids[0])) {
        printerStatusToString(printerStatus.value.number, errorState.value.text.view(), status);
    } else {
        status.assign("Can't get status");
    }
    return received;
}

int pmibGetSupplies(const std::string& host, SupplyRows& descriptions, InkQuantities& record,
                    BoundedText* dump) {
    if (dump != nullptr) dump->clear();
    const int count =
        walk(host, mkSnmpMakerSuppliesQuery, dump, [&](std::size_t row, const SnmpMessage& answer) {
            const bool inside = isInside(answer.varBinds[kLevel], kSuppliesColumns[kLevel]);
            const std::int32_t level = answer.varBinds[kLevel].value.number;
            const std::int32_t maximum = answer.varBinds[kMaximum].value.number;
            record.entries[row].level = inside ? supplyLevel(level, maximum) : std::int8_t{0};
            if (inside) descriptions[row].assign(answer.varBinds[kDescription].value.text.view());
            return inside;
        });
    record.count = static_cast<std::int8_t>(count);
    return count;
}

int pmibGetColorant(const std::string& host, SupplyRows& names, BoundedText* dump) {
    return walk(host, mkSnmpColorantMarkerQuery, dump,
                [&](std::size_t row, const SnmpMessage& answer) {
                    const SnmpVarBind& value = answer.varBinds[kColorantValue];
                    const bool inside = isInside(value, kColorantColumns[kColorantValue]);
                    if (inside) names[row].assign(value.value.text.view());
                    return inside;
                });
}

int pmibGetHPDeviceID(const std::string& host, BoundedText& deviceID, BoundedText* dump) {
    if (dump != nullptr) dump->clear();
    return askForText(host, kHPDeviceIDOid, deviceID, dump);
}

int pmibGetDeviceDescription(const std::string& host, BoundedText& description) {
    return askForText(host, kDeviceDescriptionOid, description, nullptr);
}

int pmibGetBrotherMib1(const std::string& host, BoundedText& dump) {
    return dumpObjects(host, kBrotherOids1, dump);
}

int pmibGetBrotherMib2(const std::string& host, BoundedText& dump) {
    return dumpObjects(host, kBrotherOids2, dump);
}

int getInkStatusByPMib(std::string_view maker, const std::string& host, BoundedText& status,
                       InkQuantities& record, SupplyNames& names) {
    const int reached = pmibGetPrinterStatus(host, status, nullptr);
    if (reached < 1) return reached;
    if (maker == "HP") {
        // Without pens in the device ID the status text is lost, as meant.
        const int pens = inkStatusByDeviceID(host, status, record);
        if (pens != 0) return pens;
    }
    SupplyRows descriptions;
    const int count = pmibGetSupplies(host, descriptions, record, nullptr);
    // Each description takes the place of the one before, as meant: the last one remains.
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
        names[0].assign(descriptions[i].view());
    return count;
}

}  // namespace tintoral
