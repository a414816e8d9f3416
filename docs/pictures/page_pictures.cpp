#include "page_pictures.h"

#include <QApplication>
#include <QDir>
#include <QDoubleSpinBox>
#include <QEventLoop>
#include <QLabel>
#include <QTableView>
#include <QTimer>
#include <algorithm>
#include <map>

#include "few_colours.h"
#include "panel/frames/wire_view.h"
#include "panel/pictures.h"
#include "panel/recipes/recipes_page.h"
#include "panel/start_page.h"
#include "panel/trends/trend_stack.h"
#include "panel/trends/trends_page.h"
#include "recovery_picture.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;

constexpr int settlingMs = 350; // every page looks for news sooner

struct Stage {
    MainWindow& window;
    PanelPage& page;
};

struct Scene {
    const char* title; // of the page
    milliseconds moment;
    void (*prepare)(const Stage& stage);
    bool isDarkInManual = false;
};

template <typename Widget>
Widget& widgetOf(const Stage& stage, const char* name)
{
    auto* const widget = stage.page.findChild<Widget*>(QLatin1String(name));
    if (!widget)
        throw Failure(std::string("there is no ") + name + " on the page " +
                      stage.page.title().toStdString());
    return *widget;
}

// The last row of which a column holds the text.
void chooseRow(QTableView& table, const QString& text)
{
    const QAbstractItemModel& model = *table.model();
    for (int row = model.rowCount() - 1; row >= 0; --row)
        for (int column = 0; column < model.columnCount(); ++column)
            if (model.index(row, column).data().toString().contains(text)) {
                table.selectRow(row);
                table.scrollTo(model.index(row, column), QAbstractItemView::PositionAtCenter);
                return;
            }
    throw Failure("no row holds " + text.toStdString());
}

// ---- what a person has done on each page ------------------------------------------------------

void nothing(const Stage&) {}

void prepareStart(const Stage& stage)
{
    auto& page = dynamic_cast<StartPage&>(stage.page);
    const std::string group = "dialout";
    page.showPorts(
        {{"/dev/ttyUSB0", "FTDI USB-RS485 Cable", "ftdi_sio", {}, true, group},
         {"/dev/ttyUSB1", "CP2102 USB to UART", "cp210x", {{1417, "minicom"}}, true, group},
         {"/dev/ttyS0", "built in", "serial8250", {}, false, group}});
    page.showRecent(
        {QStringLiteral("/home/ada/bottling.json"), QStringLiteral("/home/ada/press.json")});
}

void prepareValues(const Stage& stage)
{
    chooseRow(widgetOf<QTableView>(stage, "values"), QStringLiteral("pump.flow"));
}

void prepareTrends(const Stage& stage)
{
    auto& stack = *stage.page.findChild<TrendStack*>();
    const TrendTime now = toTrendTime(RecordedSession::begin);
    stack.addNote({now + 5 * trendSecond, QStringLiteral("oven set to 72.5 \u00b0C")});
    stack.setCursor(0, now + 34 * trendSecond);
    stack.setCursor(1, now + 52 * trendSecond);
    stack.draw();
}

// At the last frame that was waited for in vain, with rulers around it.
void prepareWire(const Stage& stage)
{
    auto& view = widgetOf<WireView>(stage, "wire");
    const auto& words = widgetOf<QLabel>(stage, "frame");
    constexpr int maxFrames = 60;
    for (int i = 0; i < maxFrames && !words.text().contains(QChar(0x2717)); ++i)
        view.chooseNext(-1);
    view.setRuler(WireRuler::a);
    for (int edge = 0; edge < 4; ++edge)
        view.setRuler(WireRuler::b);
}

void prepareLine(const Stage& stage)
{
    chooseRow(widgetOf<QTableView>(stage, "frames"), QStringLiteral("CRC"));
}

void prepareRecipes(const Stage& stage)
{
    auto& page = dynamic_cast<RecipesPage&>(stage.page);
    page.prepared({{"file", std::string(DOV417_PICTURES) + "/recipe.json"}})();
    QApplication::processEvents();
    auto& table = *stage.page.findChild<QTableView*>();
    const QAbstractItemModel& model = *table.model();
    for (int row = 0; row < model.rowCount(); ++row)
        if (model.index(row, 0).data().toString() == QLatin1String("oven.wanted"))
            table.model()->setData(model.index(row, RecipeModel::buffer), QStringLiteral("75"));
}

void prepareFaults(const Stage& stage)
{
    const std::map<const char*, double> rates = {
        {"rate-flip", 3}, {"rate-silence", 2}, {"rate-exception", 0.5}};
    for (const auto& [name, percent] : rates)
        widgetOf<QDoubleSpinBox>(stage, name).setValue(percent);
    widgetOf<QSpinBox>(stage, "responseTime").setValue(30);
}

// In the order of their moments.
const Scene scenes[] = {
    {"Start", milliseconds(0), prepareStart},
    {"Lamps", milliseconds(13050), nothing},
    {"Plan", milliseconds(16000), nothing},
    {"Trends", milliseconds(61000), prepareTrends},
    {"Time on the wire", milliseconds(62000), prepareWire, true},
    {"Line", milliseconds(62000), prepareLine},
    {"Values", milliseconds(90050), prepareValues},
    {"Health", milliseconds(91500), nothing},
    {"Recipes", milliseconds(91500), prepareRecipes},
    {"Faults", milliseconds(91500), prepareFaults},
};

// ---- pictures ---------------------------------------------------------------------------------

void settle(const PanelPage& page)
{
    QEventLoop loop;
    QTimer::singleShot(settlingMs, &loop, &QEventLoop::quit);
    loop.exec();
    while (page.isBusy())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QApplication::processEvents();
}

void savePicture(const QPixmap& picture, const QString& folder, const QString& name, bool isDark)
{
    const QString file =
        QStringLiteral("%1/%2-%3.png")
            .arg(folder, name, isDark ? QStringLiteral("dark") : QStringLiteral("light"));
    constexpr int smallest = 0; // of Qt's qualities: the file, not the picture
    if (!inFewColours(picture.toImage()).save(file, nullptr, smallest))
        throw Failure("cannot write " + file.toStdString());
}

void takePicture(MainWindow& window, const PanelPage& page, const QString& folder, bool isDark)
{
    settle(page);
    savePicture(window.grab(), folder, page.title().toLower().replace(' ', '-'), isDark);
}

// Of the values with these names.
void chooseTrends(MainWindow& window, const PanelTags& tags)
{
    const std::vector<std::vector<std::string>> wanted = {
        {"oven.temperature", "water.temperature", "pressure"},
        {"flow", "pump.flow"},
        {"belt.runs", "lid.closed", "emergency.stop"}};
    OrderedJson plots = OrderedJson::array();
    for (const std::vector<std::string>& names : wanted) {
        OrderedJson values = OrderedJson::array();
        for (const std::string& name : names)
            for (const PanelValue& value : tags.values)
                if (value.label.name == name)
                    values.push_back({{"name", name}, {"address", value.label.address}});
        plots.push_back({{"values", values}});
    }
    for (PanelPage* const page : window.pages())
        if (page->settingsName() == "trends")
            page->prepared({{"span", 60}, {"plots", plots}})();
}

} // namespace

void takePagePictures(MainWindow& window, SessionPlayer& player, const PictureSettings& settings)
{
    QDir().mkpath(settings.folder);
    chooseTrends(window, player.desk().tags());
    const QPalette light = QApplication::palette();
    std::size_t taken = 0;
    for (const Scene& scene : scenes) {
        player.playUntil(scene.moment);
        for (std::size_t i = 0; i < window.pages().size(); ++i) {
            PanelPage& page = *window.pages().at(i);
            if (page.title() != QLatin1String(scene.title))
                continue;
            window.showPage(static_cast<int>(i));
            scene.prepare({window, page});
            if (settings.isLight)
                takePicture(window, page, settings.folder, false);
            if (settings.isDark || (settings.isManual && scene.isDarkInManual)) {
                QApplication::setPalette(darkPalette());
                takePicture(window, page, settings.folder, true);
                QApplication::setPalette(light);
            }
            ++taken;
        }
    }
    if (taken != window.pages().size())
        throw Failure("there is a page of which no picture is known");
    if (settings.isLight)
        savePicture(recoveryPicture(window, player.desk().tags().items), settings.folder,
                    QStringLiteral("unsaved-work"), false);
}

} // namespace dov417
