#include "app/save_notice.h"

#include <QAccessible>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>
#include <QStyle>
#include <memory>

#include "app/shown_text.h"

namespace tintoral {
namespace {

// Of the window's 480; the window has a fixed size and must not be widened by a long reason.
constexpr int kTextWidth = 424;
constexpr int kMargin = 12;
constexpr int kIconSize = 16;

QLabel* makeNotice(QMainWindow& window) {
    QStatusBar& bar = *window.statusBar();
    bar.setSizeGripEnabled(false);
    bar.setContentsMargins(kMargin, 0, kMargin, kMargin);
    auto icon = std::make_unique<QLabel>();
    icon->setPixmap(bar.style()
                        ->standardIcon(QStyle::SP_MessageBoxWarning)
                        .pixmap(QSize(kIconSize, kIconSize)));
    auto text = std::make_unique<QLabel>();
    text->setObjectName(QStringLiteral("saveNotice"));
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    text->setFixedWidth(kTextWidth);
    bar.addWidget(icon.release());  // the bar owns them
    bar.addWidget(text.get(), 1);
    return text.release();
}

void announce(QLabel& notice) {
    QAccessibleEvent alert(&notice, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

QString noticeOf(const UserDefaults& defaults) {
    if (!defaults.saveFailure().empty()) {
        return QStringLiteral("Levels and settings cannot be saved: %1")
            .arg(shownText(defaults.saveFailure()));
    }
    if (defaults.keptAside().empty()) return {};
    return QStringLiteral("The settings could not be read; they are kept as %1")
        .arg(shownText(defaults.keptAside().string()));
}

}  // namespace

void showSaveNotice(QMainWindow& window, const UserDefaults& defaults) {
    const QString text = noticeOf(defaults);
    auto* notice = window.findChild<QLabel*>(QStringLiteral("saveNotice"));
    if (!notice && text.isEmpty()) return;
    if (!notice) notice = makeNotice(window);
    window.statusBar()->setVisible(!text.isEmpty());
    if (text.isEmpty() || notice->text() == text) return;
    notice->setText(text);
    notice->setFixedHeight(notice->heightForWidth(kTextWidth));
    announce(*notice);
}

}  // namespace tintoral
