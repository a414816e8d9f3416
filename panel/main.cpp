#include <QApplication>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "driver/debug_lines.h"
#include "line/failure.h"
#include "live/child_program.h"
#include "live/shutdown.h"
#include "panel/main_window.h"
#include "panel/panel_options.h"
#include "panel/panel_project.h"
#include "panel/pictures.h"
#include "panel/start_page.h"

using namespace dov417;

namespace {

constexpr int usageCode = 2;
constexpr int pictureDelayMs = 3000; // lamps have been on and off by then

// Returns what the program ends with.
int show(MainWindow& window, const PanelOptions& options)
{
    constexpr int width = 1280;
    constexpr int height = 800;
    window.resize(width, height);
    window.show();
    int code = EXIT_SUCCESS;
    if (!options.pictures.empty())
        QTimer::singleShot(pictureDelayMs, &window, [&window, &options, &code]() {
            try {
                takePictures(window, QString::fromStdString(options.pictures));
            } catch (const Failure& failure) {
                std::fprintf(stderr, "dov417-panel: %s\n", failure.what());
                code = EXIT_FAILURE;
            }
            window.close();
        });
    const int ended = QApplication::exec();
    return code == EXIT_SUCCESS ? ended : code;
}

int run(const PanelOptions& options)
{
    const Library library(options.library);
    std::vector<Item> items;
    if (options.project.empty() && (!options.addresses.empty() || !options.source.tags.empty()))
        items = Items(library, options.source).chosen(options.addresses, Access::read);
    PanelDesk desk(library);
    int code = EXIT_SUCCESS;
    {
        MainWindow window(desk);
        const Shutdown shutdown([&window]() { window.close(); });
        if (items.empty() && options.line.simulated)
            items = trialItems(library);
        desk.setItems(items);
        if (!options.project.empty())
            openProject(desk, options.project);
        else if (options.line.simulated || !options.line.port.empty())
            desk.open(options.line, trialController());
        if (desk.hasLine() || !desk.tags().items.empty())
            window.showPage(1);
        code = show(window, options);
    }
    // A port that hangs hangs the line's thread, and with it whoever waits for that.
    if (!desk.end())
        std::_Exit(code);
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    if (const std::optional<int> code = runAsChild(argc, argv))
        return *code;
    int code = EXIT_SUCCESS;
    const std::optional<PanelOptions> options = parsePanelOptions(argc, argv, code);
    if (!options)
        return code;
    dropDebugLines();
    const QApplication application(argc, argv);
    // Qt takes the user's locale; numbers in files and on the screen keep their point.
    std::setlocale(LC_NUMERIC, "C");
    try {
        return run(*options);
    } catch (const UsageFailure& failure) {
        std::fprintf(stderr, "dov417-panel: %s\n", failure.what());
        return usageCode;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "dov417-panel: %s\n", failure.what());
        return EXIT_FAILURE;
    }
}
