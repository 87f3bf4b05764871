#include "app/status_icon.h"

#include <QPainter>
#include <QPixmap>

#include "app/shown_text.h"
#include "monitor/record_rules.h"

namespace tintoral {
namespace {

constexpr qsizetype kLongestLine = 60;

QString elided(const QString& line) {
    return line.size() > kLongestLine ? line.left(kLongestLine - 1) + QChar(0x2026) : line;
}

QString lineOf(const InkRow& ink) {
    return elided(QString::fromStdString(ink.name)) + QStringLiteral(": ") + levelText(ink.level);
}

// An "&" would underline what follows.
QString menuText(QString text) {
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

// The same picture for a disabled line, which would otherwise be grey.
QIcon swatch(const QColor& color) {
    constexpr int kSide = 16;
    QPixmap picture(kSide, kSide);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setPen(Qt::gray);
    if (color.isValid()) painter.setBrush(color);
    painter.drawRect(2, 2, kSide - 5, kSide - 5);
    painter.end();
    QIcon icon(picture);
    icon.addPixmap(picture, QIcon::Disabled);
    return icon;
}

}  // namespace

StatusIcon::StatusIcon(QAction& update, QAction& quit, QObject* parent)
    : QObject(parent),
      show_(new QAction(QStringLiteral("&Show Tintoral"), this)),
      update_(&update),
      quit_(&quit),
      icon_(this) {
    connect(show_, &QAction::triggered, this, &StatusIcon::showRequested);
    connect(&icon_, &QSystemTrayIcon::activated, this, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
            Q_EMIT showRequested();
    });
    for (QAction* action : {update_, quit_}) action->setShortcutVisibleInContextMenu(false);
    icon_.setContextMenu(&menu_);
}

// The tooltip begins with the program's name also because a first line with "<" in it would make
// all of it markup.
void StatusIcon::describe(const PrinterRecord* printer) {
    const auto inks = printer ? inkRowsOf(*printer, Picture::LevelView) : std::vector<InkRow>();
    const QString name = printer ? elided(shownName(*printer)) : QString();
    QStringList lines{QStringLiteral("Tintoral")};
    if (printer) lines << name;
    lines << elided(shownText(statusLine(printer).text));
    for (const InkRow& ink : inks) lines << lineOf(ink);
    const QString toolTip = lines.join(QLatin1Char('\n'));
    if (toolTip == icon_.toolTip()) return;
    icon_.setToolTip(toolTip);
    fillMenu(name, inks);
}

void StatusIcon::fillMenu(const QString& name, const std::vector<InkRow>& inks) {
    menu_.clear();  // and deletes the lines, which are its own
    menu_.addActions({show_, update_});
    if (!name.isEmpty()) {
        menu_.addSeparator();
        menu_.addAction(menuText(name))->setEnabled(false);
    }
    for (const InkRow& ink : inks)
        menu_.addAction(swatch(ink.color.color), menuText(lineOf(ink)))->setEnabled(false);
    menu_.addSeparator();
    menu_.addAction(quit_);
}

}  // namespace tintoral
