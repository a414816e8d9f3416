// The panel's window for whoever measures it: without a screen, as large as it opens.
#ifndef DOV417_BENCH_PANEL_WINDOW_H
#define DOV417_BENCH_PANEL_WINDOW_H

#include <QTemporaryDir>
#include <string>
#include <vector>

#include "driver/debug_lines.h"
#include "panel/desk/panel_desk.h"
#include "panel/main_window.h"

namespace dov417 {

// To be called before there is an application.
inline void measureWithoutScreen()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QTemporaryDir home; // nothing of the user's is read or written
    qputenv("XDG_DATA_HOME", home.path().toLocal8Bit());
    dropDebugLines();
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
