#include "app/low_ink_notifier.h"

#include <QStringList>

#include "app/ink_rows.h"
#include "app/shown_text.h"
#include "monitor/low_ink.h"

namespace tintoral {
namespace {

LowInkNews judge(const PrinterRecord& printer) {
    const Dictionary* announced = printer.dictionary(keys::announcedInks);
    const Dictionary* inkDict = printer.dictionary(keys::inkDict);
    return judgeReading(announced ? *announced : Dictionary(), inkDict ? *inkDict : Dictionary());
}

void keepAnnounced(PrinterRecord& printer, const Dictionary& announced) {
    if (announced.empty()) {
        printer.remove(keys::announcedInks);
    } else {
        printer.set(keys::announcedInks, announced);
    }
}

DesktopNotifications::Content contentOf(const PrinterRecord& printer,
                                        const std::vector<LowInk>& inks) {
    QStringList lines;
    for (const LowInk& ink : inks)
        lines << QString::fromStdString(ink.name) + QStringLiteral(": ") + levelText(ink.level);
    return {QStringLiteral("Ink is low: ") + shownName(printer), lines.join(QLatin1Char('\n'))};
}

}  // namespace

LowInkNotifier::LowInkNotifier(PrinterTable& printers, UserDefaults& defaults)
    : printers_(printers), defaults_(defaults) {
    connect(&notifications_, &DesktopNotifications::clicked, this, &LowInkNotifier::clicked);
    connect(&notifications_, &DesktopNotifications::failed, this, &LowInkNotifier::takeBack);
}

void LowInkNotifier::readingTaken(PrinterRecord& printer) {
    if (!defaults_.notifyLowInk()) return;
    const LowInkNews news = judge(printer);
    keepAnnounced(printer, news.announced);
    const QString key = QString::fromStdString(printer.text(keys::printerId));
    if (news.announced.empty()) {
        notifications_.withdraw(key);
    } else if (news.isNew) {
        notifications_.show(key, contentOf(printer, news.inks));
    } else if (!news.inks.empty()) {
        notifications_.refresh(key, contentOf(printer, news.inks));
    }
}

void LowInkNotifier::forget(const std::string& printerId) {
    notifications_.withdraw(QString::fromStdString(printerId));
}

void LowInkNotifier::forgetAll() {
    for (const PrinterRecordPtr& printer : printers_) {
        printer->remove(keys::announcedInks);
        forget(printer->text(keys::printerId));
    }
}

// Nobody has seen it: it is news again at the next reading.
void LowInkNotifier::takeBack(const QString& printerId) {
    if (const PrinterRecordPtr printer = findPrinter(printers_, printerId.toStdString()))
        printer->remove(keys::announcedInks);
    storePrinterTable(printers_, defaults_);
    defaults_.synchronize();
}

}  // namespace tintoral
