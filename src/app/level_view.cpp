#include "app/level_view.h"

#include <QtCore/QStringList>
#include <QtGui/QFontMetrics>
#include <QtGui/QHelpEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QToolTip>
#include <algorithm>
#include <array>

#include "app/level_view_accessible.h"
#include "records/printer_record.h"

namespace tintoral {
namespace {

constexpr int kTop = 270;
constexpr int kFirstRowY = 245;
constexpr int kRowPitch = 25;
constexpr int kMargin = 15;  // above the first row and below the last, together
constexpr int kBarX = 175;
constexpr int kBarLength = 125;
constexpr int kBarHeight = 12;
constexpr int kLabelLeft = 10;
constexpr int kLabelRight = 170;
constexpr int kNoteX = 180;
constexpr int kNumberLeft = 308;
constexpr int kNumberRight = 346;
constexpr int kWidth = 320;
constexpr int kWidthWithNumbers = 350;
constexpr int kPreferredWidth = 360;
constexpr int kBaselineDrop = 2;  // text stands this far below its row's y
constexpr int kNumberColor = 0x55;
constexpr ViewGeometry kGeometry(kTop);

constexpr std::size_t kShades = 7;
constexpr std::array<float, kShades> kWhiteShares{0, 0.1F, 0.2F, 0.4F, 0.5F, 0.6F, 0.7F};
constexpr std::array<float, kShades> kSaturationFactors{1, 0.9F, 0.7F, 0.6F, 0.5F, 0.4F, 0.3F};

// The layers of a strip in the order in which they cover each other.
struct Layer {
    int offset;
    int height;
    std::size_t shade;
};
constexpr std::array kLayers{
    Layer{0, kBarHeight, 0}, Layer{5, 6, 1}, Layer{6, 5, 3}, Layer{7, 3, 4}, Layer{8, 2, 6},
    Layer{0, 5, 6},          Layer{1, 3, 5}, Layer{2, 3, 4}, Layer{3, 2, 2}, Layer{4, 1, 1}};

// The rings of a glow from the outermost inwards. The third is 0.7 in the red and 0.6 in the yellow
// glow, as meant.
struct Tint {
    float red, green, blue;
};
struct Ring {
    double growth;
    double shift;
    Tint red, yellow, grey;
};
constexpr Tint tint(float white) {
    return {white, white, white};
}
constexpr std::array kRings{
    Ring{4, 1, {1, 0.9F, 0.9F}, {1, 1, 0.9F}, tint(0.95F)},
    Ring{3, 1, {1, 0.8F, 0.8F}, {1, 1, 0.8F}, tint(0.9F)},
    Ring{2, 1, {1, 0.7F, 0.7F}, {1, 1, 0.6F}, tint(0.85F)},
    Ring{1, 1, tint(0.75F), tint(0.75F), tint(0.75F)},
    Ring{0.5, 0.5, tint(0.6F), tint(0.6F), tint(0.6F)},
};

const Tint& tintForLevel(const Ring& ring, int level) {
    if (level <= 10) return ring.red;
    return level <= 20 ? ring.yellow : ring.grey;
}

QColor whiteShade(const QColor& color, std::size_t index) {
    const float white = color.redF();
    const float lighter = white + (1 - white) * kWhiteShares[index];
    return QColor::fromRgbF(lighter, lighter, lighter, color.alphaF());
}

QColor paleShade(const QColor& color, std::size_t index) {
    float hue = 0;
    float saturation = 0;
    float brightness = 0;
    float alpha = 0;
    color.getHsvF(&hue, &saturation, &brightness, &alpha);
    return QColor::fromHsvF(hue, saturation * kSaturationFactors[index], brightness, alpha);
}

QColor shade(const InkColor& ink, std::size_t index) {
    return ink.isWhite ? whiteShade(ink.color, index) : paleShade(ink.color, index);
}

// The points of a bar that are filled; an empty ink still shows a sliver, as meant.
int filledLength(int level) {
    const double length = (level == 0 ? 1 : level) * (kBarLength / 100.0);
    return static_cast<int>(std::clamp<double>(length, 0, kBarLength));
}

Dictionary sampleInkDict() {
    const std::vector<std::string> names{
        "Black",         "Cyan",       "Magenta",           "Yellow", "Light Cyan",
        "Light Magenta", "Light Gray", "Light Light Black", "Red",    "Dark Yellow"};
    Dictionary sample{{std::string(keys::colors), names}};
    for (const std::string& name : names) sample.set(name, 80);
    return sample;
}

QFont fontOfSize(QFont font, int pixels) {
    font.setPixelSize(pixels);
    return font;
}

QString numberText(int level) {
    if (level == kLevelSomeRemaining) return {};
    return level < 0 ? QStringLiteral("\u2013") : levelText(level);
}

// Draws `text` so that it ends at x `right`, cut to what fits from x `left` on.
void drawRightAligned(QPainter& painter, const QString& text, int left, int right, int y) {
    const QFontMetrics metrics = painter.fontMetrics();
    const QString shown = metrics.elidedText(text, Qt::ElideRight, right - left);
    const int x = std::max(left, right - metrics.horizontalAdvance(shown));
    painter.drawText(kGeometry.point(x, y - kBaselineDrop), shown);
}

}  // namespace

LevelView::LevelView(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    QAccessible::installFactory(levelViewAccessible);  // nothing the second time
    setAccessibleName(QStringLiteral("Ink levels"));
    setInkDict(nullptr, {});
}

void LevelView::setInkDict(const Dictionary* inkDict, const std::vector<std::string>& rgbColors) {
    isSample_ = inkDict == nullptr;
    rows_ = isSample_ ? inkRows(sampleInkDict(), {}, Picture::LevelView)
                      : inkRows(*inkDict, rgbColors, Picture::LevelView);
    describe();
    updateGeometry();
    update();
}

int LevelView::heightForInks(int inks) {
    return inks * kRowPitch + kMargin;
}

QSize LevelView::sizeHint() const {
    return {kPreferredWidth, heightForInks(inkCount())};
}

QSize LevelView::minimumSizeHint() const {
    return {kWidth, heightForInks(inkCount())};
}

void LevelView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintTo(painter);
}

void LevelView::paintTo(QPainter& painter) const {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(rect(), Qt::white);  // the band of the rows, and what is beside it
    showInkReadings(painter);
    painter.restore();
}

void LevelView::showInkReadings(QPainter& painter) const {
    int y = kFirstRowY;
    for (const InkRow& row : rows_) {
        const bool isNotEmpty = row.level == kLevelSomeRemaining;
        drawBar(painter, row.color, {kBarX, y}, isNotEmpty ? 0 : row.level);
        showLabel(painter, row, y);
        if (!isSample_ && width() >= kWidthWithNumbers) showNumber(painter, row, y);
        y -= kRowPitch;
    }
}

void LevelView::showLabel(QPainter& painter, const InkRow& row, int y) const {
    painter.setFont(fontOfSize(font(), 13));
    painter.setPen(Qt::black);
    drawRightAligned(painter, QString::fromStdString(row.name), kLabelLeft, kLabelRight, y);
    if (row.level != kLevelSomeRemaining) return;
    painter.drawText(kGeometry.point(kNoteX, y - kBaselineDrop), levelText(row.level));
}

void LevelView::showNumber(QPainter& painter, const InkRow& row, int y) const {
    painter.setFont(fontOfSize(font(), 11));
    painter.setPen(QColor(kNumberColor, kNumberColor, kNumberColor));
    drawRightAligned(painter, numberText(row.level), kNumberLeft, kNumberRight, y);
}

void LevelView::drawBar(QPainter& painter, const InkColor& color, QPoint at, int level) const {
    const int filled = filledLength(level);
    drawShadow12(painter, at, level);
    drawBar12(painter, color, at, filled);
    drawBar12(painter, whiteInk(0.85F), at + QPoint(filled, 0), kBarLength - filled);
    for (const int quarter : {1, 2, 3}) {
        const double center = at.x() + quarter * (kBarLength / 4.0);
        painter.fillRect(kGeometry.rect({center - 0.5, at.y() - 6.0, 1, 5}), Qt::black);
    }
}

void LevelView::drawBar12(QPainter& painter, const InkColor& color, QPoint at, int length) const {
    if (length < 1 || !color.color.isValid()) return;
    for (const Layer& layer : kLayers) {
        const QRectF strip(at.x(), at.y() + layer.offset, length, layer.height);
        painter.fillRect(kGeometry.rect(strip), shade(color, layer.shade));
    }
}

void LevelView::drawShadow12(QPainter& painter, QPoint at, int level) const {
    const QRectF base(at.x(), at.y(), kBarLength, kBarHeight);
    for (const Ring& ring : kRings) {
        const double d = ring.growth;
        const QRectF grown = base.adjusted(-d, -d, d, d).translated(ring.shift, -ring.shift);
        const Tint& tint = tintForLevel(ring, level);
        painter.fillRect(kGeometry.rect(grown), QColor::fromRgbF(tint.red, tint.green, tint.blue));
    }
}

QString LevelView::levelInWords(int index) const {
    return isSample_ ? QStringLiteral("no level yet") : levelText(row(index).level);
}

// A row reaches half the gap beyond its bar, upwards and downwards.
QRect LevelView::rectOfRow(int index) const {
    constexpr int kHalfGap = (kRowPitch - kBarHeight + 1) / 2;
    const QRect line =
        kGeometry.rect(QRect(0, kFirstRowY - kHalfGap - index * kRowPitch, kWidth, kRowPitch));
    return {0, line.top(), width(), line.height()};
}

std::optional<int> LevelView::rowAt(QPoint pixel) const {
    for (int index = 0; index < inkCount(); ++index) {
        if (rectOfRow(index).contains(pixel)) return index;
    }
    return std::nullopt;
}

void LevelView::describe() {
    QStringList parts;
    for (const InkRow& row : rows_) {
        parts << QString::fromStdString(row.name) + QLatin1Char(' ') + levelText(row.level);
    }
    setAccessibleDescription(isSample_ ? QStringLiteral("No levels yet")
                                       : parts.join(QStringLiteral(", ")));
    QAccessibleEvent changed(this, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&changed);
}

bool LevelView::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    if (const auto index = rowAt(help->pos())) {
        const QString words =
            QString::fromStdString(row(*index).name) + QStringLiteral(": ") + levelInWords(*index);
        // Marked up on purpose: a name that looks like markup would otherwise be taken as such.
        const QString text = QStringLiteral("<qt>%1</qt>").arg(words.toHtmlEscaped());
        QToolTip::showText(help->globalPos(), text, this);
    } else {
        QToolTip::hideText();
        event->ignore();
    }
    return true;
}

}  // namespace tintoral
