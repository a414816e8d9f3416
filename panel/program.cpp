#include "panel/program.h"

#include <QApplication>
#include <QScreen>
#include <QStyle>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "driver/debug_lines.h"
#include "line/failure.h"
#include "live/child_program.h"
#include "live/shutdown.h"
#include "panel/desk/english_plurals.h"
#include "panel/desk/give_way.h"
#include "panel/desk/panel_language.h"
#include "panel/main_window.h"
#include "panel/panel_options.h"
#include "panel/pictures.h"
#include "panel/project/recent_projects.h"
#include "panel/start_page.h"

namespace dov417 {

namespace {

constexpr QSize wantedSize(1280, 800);
constexpr int pictureDelayMs = 3000; // lamps have been on and off by then

// What the window's title leaves of the screen.
QSize firstSize()
{
    const QSize screen = QGuiApplication::primaryScreen()->availableSize();
    const int title = QApplication::style()->pixelMetric(QStyle::PM_TitleBarHeight);
    return wantedSize.boundedTo(screen - QSize(0, title));
}

// These return what the program ends with.
int work(MainWindow& window)
{
    QTimer::singleShot(0, &window, [&window]() {
        QStringList projects = recentProjects();
        const QString file = window.document().file();
        if (!file.isEmpty())
            projects.append(file);
        window.actions().offerUnsaved(projects);
    });
    return QApplication::exec();
}

int photograph(MainWindow& window, const PanelOptions& options)
{
    int code = EXIT_SUCCESS;
    QTimer::singleShot(pictureDelayMs, &window, [&window, &options, &code]() {
        try {
            takePictures(window, QString::fromStdString(options.pictures), options.line.simulated);
        } catch (const Failure& failure) {
            std::fprintf(stderr, "dov417-panel: %s\n", failure.what());
            code = EXIT_FAILURE;
        }
        window.actions().dropUnsaved();
        QApplication::quit();
    });
    const int ended = QApplication::exec();
    return code == EXIT_SUCCESS ? ended : code;
}

// What the options say, before the window is shown.
void begin(MainWindow& window, PanelDesk& desk, const PanelOptions& options)
{
    const Library& library = desk.library();
    std::vector<Item> items;
    const bool isAnyNamed = !options.addresses.empty() || !options.source.tags.empty();
    if (isAnyNamed)
        items = Items(library, options.source).chosen(options.addresses, Access::read);
    if (!options.project.empty()) {
        window.document().open(QString::fromStdString(options.project));
        if (!items.empty())
            desk.addItems(items);
    } else {
        std::vector<ProjectStation> stations;
        if (!isAnyNamed && options.line.simulated) {
            items = trialItems(library);
            stations = trialStations();
        }
        window.document().begin(items, options.line, stations);
    }
    if (window.currentPage() == 0 && (desk.hasLine() || !desk.tags().items.empty()))
        window.showPage(1);
}

int run(const PanelOptions& options)
{
    const Library library(options.library);
    PanelDesk desk(library);
    giveWay(); // the line's thread is there by now
    int code = EXIT_SUCCESS;
    {
        MainWindow window(desk);
        // Of a picture everything is to be seen, also where nobody has a screen for it.
        window.resize(options.pictures.empty() ? firstSize() : wantedSize);
        const Shutdown shutdown([&window]() { window.leave(); });
        begin(window, desk, options);
        window.show();
        code = options.pictures.empty() ? work(window) : photograph(window, options);
    }
    // A port that hangs hangs the line's thread, and with it whoever waits for that.
    if (!desk.end())
        std::_Exit(code);
    return code;
}

} // namespace

int runPanel(int argc, char** argv)
{
    if (const std::optional<int> code = runAsChild(argc, argv))
        return *code;
    if (const std::optional<int> code = writePanelManual(argc, argv))
        return *code;
    int code = EXIT_SUCCESS;
    const std::optional<PanelOptions> options = parsePanelOptions(argc, argv, code);
    if (!options)
        return code;
    dropDebugLines();
    const QApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(QStringLiteral("dov417-panel"));
    EnglishPlurals plurals;
    QCoreApplication::installTranslator(&plurals);
    const PanelLanguage language(QLocale::system(), languageFolders());
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("dov417-panel")));
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

} // namespace dov417
