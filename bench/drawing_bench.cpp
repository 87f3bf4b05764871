// What it takes to draw each picture of the window once, in memory. The argument is the pixels to a
// point.
#include <benchmark/benchmark.h>

#include <QtGui/QImage>
#include <QtGui/QPainter>

#include "app/dock_icon.h"
#include "app/graph3d_view.h"
#include "app/graph_view.h"
#include "app/level_view.h"
#include "support/clock.h"

namespace tintoral {
namespace {

constexpr QSize kChartSize(720, 420);
constexpr int kMonths = 12;
const std::vector<std::string> kInks{"Black",  "Cyan",       "Magenta",
                                     "Yellow", "Light Cyan", "Light Magenta"};

Dictionary reading(int monthsAgo) {
    Dictionary entry{{"Colors", kInks},
                     {"Date", Date(std::chrono::floor<std::chrono::seconds>(
                                  currentDate() - std::chrono::days(30 * monthsAgo)))}};
    int level = 20 + 5 * monthsAgo;
    for (const std::string& ink : kInks) entry.set(ink, level = (level + 37) % 101);
    return entry;
}

std::shared_ptr<const Array> yearOfReadings() {
    auto history = std::make_shared<Array>();
    for (int month = kMonths - 1; month >= 0; --month) history->emplace_back(reading(month));
    return history;
}

// Calls draw(painter) on an image of that many points.
template <typename Draw>
void drawEach(benchmark::State& state, QSize points, const Draw& draw) {
    const auto ratio = static_cast<int>(state.range(0));
    QImage image(points * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    for (auto _ : state) {
        QPainter painter(&image);
        draw(painter);
    }
}

void levelView(benchmark::State& state) {
    const Dictionary inkDict = reading(0);
    LevelView view;
    view.setInkDict(&inkDict, {});
    view.resize(350, LevelView::heightForInks(view.inkCount()));
    drawEach(state, view.size(), [&](QPainter& painter) { view.paintTo(painter); });
}

void icon(benchmark::State& state) {
    const Dictionary inkDict = reading(0);
    const QImage background = applicationPicture();
    drawEach(state, {128, 128},
             [&](QPainter& painter) { drawIcon(painter, &inkDict, {}, background); });
}

void chart(benchmark::State& state) {
    GraphView view;
    view.setInkHistory(yearOfReadings());
    view.periodSliderMoved(3);
    view.resize(kChartSize);
    drawEach(state, kChartSize, [&](QPainter& painter) { view.paintTo(painter); });
}

void chart3d(benchmark::State& state, bool isSmooth) {
    Graph3DView view(Graph3DView::Renderer::Painter, nullptr);
    view.resize(kChartSize);
    view.setInkHistory(yearOfReadings(), {Qt::black, Qt::cyan, Qt::magenta, Qt::yellow});
    Frame3D frame = *view.frame();
    frame.isSmooth = isSmooth;
    drawEach(state, kChartSize, [&](QPainter& painter) {
        paintFaces(painter, frame);
        paintOverlay(painter, frame);
    });
}

BENCHMARK(levelView)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK(icon)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK(chart)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(chart3d, Smooth, true)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(chart3d, InMotion, false)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tintoral
