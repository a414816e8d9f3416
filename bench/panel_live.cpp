// The panel without a screen, at work on a line: panel_live PORT SECONDS ADDRESS... shows each page
// in turn for a second, and prints how long cycles took, in milliseconds, as one line of
//
//     MEAN MEDIAN MIN MAX CYCLES UPDATES
//
// UPDATES is how often in a second the window was told something new and had dealt with it.
#include <QApplication>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/panel_window.h"
#include "live/child_program.h"
#include "panel/desk/give_way.h"

using namespace dov417;

namespace {

constexpr int pageMs = 1000;
constexpr int settlingMs = 2000; // the first cycles are not counted

double inMs(Micros duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

// As many values as the page of trends takes: 100.
void plot(const MainWindow& window, const std::vector<Item>& items)
{
    constexpr std::size_t plots = 10;
    constexpr std::size_t valuesOfAPlot = 10;
    OrderedJson all = OrderedJson::array();
    for (std::size_t i = 0; i < items.size() && all.size() < plots; i += valuesOfAPlot) {
        OrderedJson values = OrderedJson::array();
        for (std::size_t k = i; k < std::min(i + valuesOfAPlot, items.size()); ++k)
            values.push_back({{"name", items.at(k).name}, {"address", items.at(k).name}});
        all.push_back({{"values", values}});
    }
    for (PanelPage* const page : window.pages())
        if (page->settingsName() == "trends")
            page->prepared({{"plots", all}})();
}

int watch(const std::string& port, int seconds, const std::vector<std::string>& addresses)
{
    MeasuredWindow measured;
    giveWay(); // as the program does
    PanelDesk& desk = measured.desk;
    MainWindow& window = measured.window;
    const std::vector<Item> items = measured.itemsAt(addresses);
    desk.setItems(items);
    plot(window, items);
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
    long long updates = 0;
    QObject::connect(&desk, &PanelDesk::stateChanged, &window, [&updates]() { ++updates; });
    long long cyclesBefore = 0;
    Clock::time_point began{};
    QTimer::singleShot(settlingMs, &window, [&]() {
        cyclesBefore = desk.state().cycles;
        began = Clock::now();
        updates = 0;
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
    std::printf("%.3f %.1f %.1f %.1f %lld %.1f\n", 1e3 * elapsed / static_cast<double>(cycles),
                inMs(statistics->cycles.median()), inMs(statistics->cycles.minimum()),
                inMs(statistics->cycles.maximum()), cycles, static_cast<double>(updates) / elapsed);
    desk.end();
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    if (const std::optional<int> code = runAsChild(argc, argv))
        return *code;
    measureWithoutScreen();
    const QApplication application(argc, argv);
    if (argc < 4 || std::atoi(argv[2]) < 1) {
        std::fprintf(stderr, "usage: %s PORT SECONDS ADDRESS...\n", argv[0]);
        return 2;
    }
    return watch(argv[1], std::atoi(argv[2]), std::vector<std::string>(argv + 3, argv + argc));
}
