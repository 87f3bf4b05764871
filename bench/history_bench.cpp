// The ink history at the size of ten years: ten readings a day of six inks, 36,500 entries.
#include <benchmark/benchmark.h>

#include <QtGui/QImage>
#include <QtGui/QPainter>

#include "app/graph_view.h"
#include "history/history_csv.h"
#include "history/ink_history_store.h"
#include "support/temporary_folder.h"

namespace tintoral {
namespace {

constexpr int kYears = 10;
constexpr int kReadingsPerDay = 10;
constexpr int kEntries = kYears * 365 * kReadingsPerDay;
constexpr int kWidth = 1920;
constexpr std::string_view kPrinter = "Network:Printer";
constexpr const char* kInks[] = {"Black",  "Cyan",       "Magenta",
                                 "Yellow", "Light Cyan", "Light Magenta"};

Dictionary reading(int number) {
    Array colors;
    Dictionary entry;
    int usedPerDay = 2;
    for (const char* ink : kInks) {
        colors.emplace_back(ink);
        entry.set(ink, 100 - number / kReadingsPerDay * usedPerDay++ / 7 % 101);
    }
    entry.set("Colors", std::move(colors));
    const auto age = std::chrono::hours(24) / kReadingsPerDay * (kEntries - number);
    entry.set("Date", Date(std::chrono::floor<std::chrono::seconds>(currentDate() - age)));
    return entry;
}

const Array& tenYears() {
    static const Array history = [] {
        Array entries;
        for (int number = 0; number < kEntries; ++number) entries.emplace_back(reading(number));
        return entries;
    }();
    return history;
}

// A home folder with the history of one printer.
class Home {
  public:
    explicit Home(PropertyListFormat format) {
        prepareHistoryFolder();
        writePropertyListFile(historyFolder() / kPrinter, tenYears(), {}, format);
    }

  private:
    test::TemporaryFolder folder_;
    test::ScopedEnvironment variable_{"HOME", folder_.path()};
};

void paint(const GraphView& view, QImage& image) {
    QPainter painter(&image);
    view.paintTo(painter);
}

void openAndDraw(benchmark::State& state) {
    const Home home(PropertyListFormat::Binary);
    QImage image(kWidth, 300, QImage::Format_RGB32);
    for (auto _ : state) {
        GraphView view;
        view.setInkHistory(inkHistory(kPrinter));
        view.resize(image.size());
        paint(view, image);
    }
}

void redraw(benchmark::State& state) {
    QImage image(kWidth, 300, QImage::Format_RGB32);
    GraphView view;
    view.setInkHistory(std::make_shared<const Array>(tenYears()));
    view.periodSliderMoved(static_cast<int>(state.range(0)));
    view.monthPicked(view.monthIndex() - 50);  // lines over the whole width
    view.resize(image.size());
    for (auto _ : state) paint(view, image);
}

void append(benchmark::State& state) {
    const Home home(PropertyListFormat::Binary);
    for (auto _ : state) saveInkReadingsForPrinterId(reading(kEntries), kPrinter);
}

void lastLevel(benchmark::State& state) {
    const Home home(PropertyListFormat::Binary);
    for (auto _ : state) benchmark::DoNotOptimize(lastLevelForPrinterId(kPrinter));
}

void readFile(benchmark::State& state, PropertyListFormat format) {
    const Home home(format);
    for (auto _ : state) benchmark::DoNotOptimize(inkHistory(kPrinter));
    state.counters["bytes"] =
        static_cast<double>(std::filesystem::file_size(historyFolder() / kPrinter));
}

void writeFile(benchmark::State& state, PropertyListFormat format) {
    const Home home(format);
    for (auto _ : state) writePropertyListFile(historyFolder() / kPrinter, tenYears(), {}, format);
}

void exportCsv(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(historyCsv(tenYears()));
}

BENCHMARK(openAndDraw)->Unit(benchmark::kMillisecond);
BENCHMARK(redraw)->Arg(0)->Arg(1)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(append)->Unit(benchmark::kMillisecond);
BENCHMARK(lastLevel)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readFile, Binary, PropertyListFormat::Binary)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readFile, Xml, PropertyListFormat::Xml)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeFile, Binary, PropertyListFormat::Binary)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeFile, Xml, PropertyListFormat::Xml)->Unit(benchmark::kMillisecond);
BENCHMARK(exportCsv)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tintoral
