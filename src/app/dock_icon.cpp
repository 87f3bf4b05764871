#include "app/dock_icon.h"

#include <QtGui/QPainter>
#include <QtGui/QPixmap>
#include <algorithm>

#include "app/ink_rows.h"
#include "app/view_geometry.h"
#include "records/printer_record.h"

// The resources of a static library come in only on request, and only from outside every namespace.
static void initResources() {
    Q_INIT_RESOURCE(tintoral);
}

namespace tintoral {
namespace {

constexpr int kSide = 128;
constexpr int kBackgroundSide = 100;
constexpr int kBarX = 40;
constexpr int kBarLength = 80;
constexpr int kLastRowY = 20;
constexpr int kRowsHeight = 110;
constexpr int kLargestPitch = 30;
constexpr int kTallBar = 18;
constexpr ViewGeometry kGeometry(kSide);

struct RowLayout {
    int firstY;
    int pitch;
    int barHeight;
};

RowLayout layOut(int inks) {
    const int step = inks == 0 ? kLargestPitch : kRowsHeight / inks;
    const int pitch = std::min(step, kLargestPitch);
    return {(inks - 1) * pitch + kLastRowY, pitch, step > kLargestPitch ? kTallBar : step * 6 / 10};
}

Dictionary sampleInkDict() {
    return {
        {std::string(keys::colors), std::vector<std::string>{"Black", "Cyan", "Magenta", "Yellow"}},
        {"Black", 40},
        {"Cyan", 50},
        {"Magenta", 60},
        {"Yellow", 70}};
}

void drawBackground(QPainter& painter, const QImage& background) {
    if (background.isNull()) return;
    const QRect target = kGeometry.rect({0, 0, kBackgroundSide, kBackgroundSide});
    // Scaled beforehand, as the painter's own smoothing loses detail of a picture much larger than
    // the target.
    const QSize pixels = painter.deviceTransform().mapRect(target).size();
    painter.drawImage(target,
                      background.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
}

void drawBar(QPainter& painter, const InkRow& row, int y, int height) {
    const int filled = std::clamp(row.level, 0, 100) * kBarLength / 100;
    painter.fillRect(kGeometry.rect(QRect(kBarX, y, filled, height)), row.color.color);
    painter.fillRect(kGeometry.rect(QRect(kBarX + filled, y, kBarLength - filled, height)),
                     Qt::white);
}

QPixmap picture(const Dictionary* inkDict, const std::vector<std::string>& rgbColors,
                const QImage& background, int scale) {
    QImage image(kSide * scale, kSide * scale, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.scale(scale, scale);
    drawIcon(painter, inkDict, rgbColors, background);
    painter.end();
    return QPixmap::fromImage(image);
}

}  // namespace

void drawIcon(QPainter& painter, const Dictionary* inkDict,
              const std::vector<std::string>& rgbColors, const QImage& background) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(0, 0, kSide, kSide, Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    drawBackground(painter, background);
    const auto rows = inkDict ? inkRows(*inkDict, rgbColors, Picture::DockIcon)
                              : inkRows(sampleInkDict(), {}, Picture::DockIcon);
    const RowLayout layout = layOut(static_cast<int>(rows.size()));
    int y = layout.firstY;
    for (const InkRow& row : rows) {
        drawBar(painter, row, y, layout.barHeight);
        y -= layout.pitch;
    }
    painter.restore();
}

QIcon dockIcon(const Dictionary* inkDict, const std::vector<std::string>& rgbColors,
               const QImage& background) {
    QIcon icon;
    for (const int scale : {1, 2}) icon.addPixmap(picture(inkDict, rgbColors, background, scale));
    return icon;
}

QImage applicationPicture() {
    initResources();
    return QImage(QStringLiteral(":/Tintoral128.png"));
}

}  // namespace tintoral
