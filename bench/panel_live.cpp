// The panel without a screen, at work on a line: panel_live PORT SECONDS ADDRESS... shows each page
// in turn for a second, with every value in a trend, and prints how long cycles took, in
// milliseconds, as one line of
//
//     MEAN MEDIAN MIN MAX CYCLES UPDATES PICTURES
//
// UPDATES is how often in a second the window was told something new and had dealt with it.
// PICTURES is how often in a second the page that is shown was painted as a whole: 25 times are
// asked for, whether anything on it has changed or not.
//
// panel_live --trial presses *Try it*, and prints after how many milliseconds the first value has
// changed, and after how many each page, shown one by one, had something to show.
#include <QApplication>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/panel_window.h"
#include "live/child_program.h"
#include "panel/desk/give_way.h"

using namespace dov417;

namespace {

constexpr int pageMs = 1000;
constexpr int pictureMs = 40;
constexpr int settlingMs = 2000; // the first cycles are not counted

double inMs(Micros duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

class PaintCount : public QObject {
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

    long long count = 0;
};

int watch(const std::string& port, int seconds, const std::vector<std::string>& addresses)
{
    MeasuredWindow measured;
    giveWay(); // as the program does
    PanelDesk& desk = measured.desk;
    MainWindow& window = measured.window;
    const std::vector<Item> items = measured.itemsAt(addresses);
    desk.setItems(items);
    plotAll(window, items);
    LineSetup setup;
    setup.port = port;
    setup.line = "38400,8,EVEN,1";
    desk.open(setup);
    window.show();

    int page = 0;
    QTimer pages;
    QObject::connect(&pages, &QTimer::timeout, &window, [&]() {
        page = (page + 1) % static_cast<int>(window.pages().size());
        window.showPage(page);
    });
    pages.start(pageMs);
    PaintCount painted;
    for (PanelPage* const each : window.pages())
        each->installEventFilter(&painted);
    QTimer pictures;
    pictures.setTimerType(Qt::PreciseTimer);
    QObject::connect(&pictures, &QTimer::timeout, &window,
                     [&]() { window.pages().at(static_cast<std::size_t>(page))->update(); });
    pictures.start(pictureMs);
    long long updates = 0;
    QObject::connect(&desk, &PanelDesk::stateChanged, &window, [&updates]() { ++updates; });
    long long cyclesBefore = 0;
    Clock::time_point began{};
    QTimer::singleShot(settlingMs, &window, [&]() {
        cyclesBefore = desk.state().cycles;
        began = Clock::now();
        updates = 0;
        painted.count = 0;
    });
    QTimer::singleShot(settlingMs + seconds * 1000, &window, []() { QApplication::quit(); });
    QApplication::exec();

    const double elapsed = std::chrono::duration<double>(Clock::now() - began).count();
    const long long cycles = desk.state().cycles - cyclesBefore;
    const auto statistics = desk.statistics();
    if (cycles < 1 || !statistics) {
        std::fprintf(stderr, "panel_live: no cycle on %s\n", port.c_str());
        return EXIT_FAILURE;
    }
    std::printf("%.3f %.1f %.1f %.1f %lld %.1f %.1f\n", 1e3 * elapsed / static_cast<double>(cycles),
                inMs(statistics->cycles.median()), inMs(statistics->cycles.minimum()),
                inMs(statistics->cycles.maximum()), cycles, static_cast<double>(updates) / elapsed,
                static_cast<double>(painted.count) / elapsed);
    desk.end();
    return EXIT_SUCCESS;
}

template <typename Condition>
double waitMs(Clock::time_point began, Condition isSo)
{
    constexpr std::chrono::seconds patience{60};
    while (!isSo()) {
        if (Clock::now() - began > patience)
            throw std::runtime_error("nothing came of the trial");
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return inMs(std::chrono::duration_cast<Micros>(Clock::now() - began));
}

int tryIt()
{
    MeasuredWindow measured;
    giveWay();
    const PanelDesk& desk = measured.desk;
    MainWindow& window = measured.window;
    window.show();
    QApplication::processEvents();
    const Clock::time_point began = Clock::now();
    window.findChild<QPushButton*>("trial")->click();
    const double changed = waitMs(began, [&desk]() {
        const std::vector<PanelValue>& values = desk.tags().values;
        return std::any_of(values.begin(), values.end(), [&desk](const PanelValue& value) {
            const View* const view = desk.book().find(value.address);
            return view && view->changes > 0;
        });
    });
    double shown = 0;
    for (const char* const name :
         {"values", "lamps", "frames", "counters", "recipe", "trendReadout", "planMap"}) {
        const auto* const table = window.findChild<QTableView*>(QLatin1String(name));
        int page = 0;
        while (!window.pages().at(static_cast<std::size_t>(page))->isAncestorOf(table))
            ++page;
        window.showPage(page);
        shown = waitMs(began, [table]() { return table->model()->rowCount() > 0; });
    }
    std::printf("%.0f %.0f\n", changed, shown);
    measured.desk.end();
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    if (const std::optional<int> code = runAsChild(argc, argv))
        return *code;
    measureWithoutScreen();
    const QApplication application(argc, argv);
    if (argc == 2 && std::string(argv[1]) == "--trial")
        return tryIt();
    if (argc < 4 || std::atoi(argv[2]) < 1) {
        std::fprintf(stderr, "usage: %s PORT SECONDS ADDRESS..., or --trial\n", argv[0]);
        return 2;
    }
    return watch(argv[1], std::atoi(argv[2]), std::vector<std::string>(argv + 3, argv + argc));
}
