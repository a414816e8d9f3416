// The panel's window for whoever measures it: without a screen, as large as it opens.
#ifndef DOV417_BENCH_PANEL_WINDOW_H
#define DOV417_BENCH_PANEL_WINDOW_H

#include <QTemporaryDir>
#include <algorithm>
#include <string>
#include <vector>

#include "driver/debug_lines.h"
#include "panel/desk/panel_desk.h"
#include "panel/main_window.h"
#include "panel/trends/trend_arrangement.h"

namespace dov417 {

// To be called before there is an application.
inline void measureWithoutScreen()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QTemporaryDir home; // nothing of the user's is read or written
    qputenv("XDG_DATA_HOME", home.path().toLocal8Bit());
    dropDebugLines();
}

// As many values as the page of trends takes, in no more plots than are in sight together.
inline void plotAll(const MainWindow& window, const std::vector<Item>& items)
{
    constexpr std::size_t plots = 5;
    constexpr std::size_t valuesOfAPlot = TrendArrangement::maxValues / plots;
    OrderedJson all = OrderedJson::array();
    for (std::size_t i = 0; i < items.size() && all.size() < plots; i += valuesOfAPlot) {
        OrderedJson values = OrderedJson::array();
        for (std::size_t k = i; k < std::min(i + valuesOfAPlot, items.size()); ++k)
            values.push_back({{"name", items.at(k).name}, {"address", items.at(k).name}});
        all.push_back({{"values", values}});
    }
    for (PanelPage* const page : window.pages())
        if (page->settingsName() == "trends") {
            page->prepared({{"plots", all}})();
            emit page->settingsChanged(); // else the next step of the project takes them back
        }
}

struct MeasuredWindow {
    MeasuredWindow()
    {
        constexpr int width = 1280;
        constexpr int height = 800;
        window.resize(width, height);
    }
    std::vector<Item> itemsAt(const std::vector<std::string>& addresses) const
    {
        const Items find(library, ItemSource());
        std::vector<Item> items;
        items.reserve(addresses.size());
        for (const std::string& address : addresses)
            items.push_back(find.find(address, Access::read));
        return items;
    }

    const Library library;
    PanelDesk desk{library};
    MainWindow window{desk};
};

} // namespace dov417

#endif
