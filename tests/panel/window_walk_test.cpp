// Every page of the window, as those see it who use keys, a screen reader, dark colours or another
// language. Nothing here knows a page: what is added to the window is looked at, too.
#include "window_walk.h"

#include <QAction>
#include <QLayout>

#include <qwt_plot_histogram.h>

#include "panel/frames/line_page.h"
#include "panel/frames/wire_look.h"
#include "panel/health/health_plots.h"
#include "panel/recipes/recipes_page.h"
#include "panel/trends/trend_style.h"
#include "project_world.h"

namespace dov417 {

namespace {

class TheWholeWindow : public ProjectWorld {
protected:
    int pageCount() const
    {
        return static_cast<int>(window.pages().size());
    }
    void settle()
    {
        QCoreApplication::processEvents();
        // What a text that came last is about to move.
        for (const QWidget* const each : window.findChildren<QWidget*>())
            if (each->layout())
                each->layout()->activate();
    }
    void showAll(const std::function<void(QWidget&)>& look, QWidget& where)
    {
        for (int page = 0; page < pageCount(); ++page) {
            window.showPage(page);
            settle();
            look(where);
        }
    }
    void showTrial()
    {
        QTest::mouseClick(window.findChild<QPushButton*>("trial"), Qt::LeftButton);
        EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    }
    // A port's line, on which writing is locked.
    void openLocked()
    {
        watch({"R_W:100", "R_W:300", "R_D:2000", "M_bit:1.0"});
        open();
        EXPECT_TRUE(waitUntil([this]() { return desk.statistics() != nullptr; }));
    }
    template <typename Page>
    Page& page() const
    {
        for (PanelPage* const each : window.pages())
            if (auto* const found = qobject_cast<Page*>(each))
                return *found;
        throw std::logic_error("there is no such page");
    }
    // Where a line is at work, pages show what they hide else.
    void showAtWork(const std::function<void(QWidget&)>& look)
    {
        openLocked();
        showAll(look, window);
        const QString log = path("recorded.log");
        ASSERT_TRUE(waitUntil([&]() { return page<LinePage>().saveLog(log); }));
        ASSERT_TRUE(page<LinePage>().openLog(log));
        showAll(look, window);
        window.showPage(static_cast<int>(window.pages().size()) - 2);
        ASSERT_TRUE(page<RecipesPage>().isVisible());
        stopController(true);
        QTest::mouseClick(window.findChild<QPushButton*>("upload"), Qt::LeftButton);
        ASSERT_TRUE(waitUntil(
            [this]() { return window.findChild<QPushButton*>("cancelRecipe")->isVisible(); }));
        settle();
        EXPECT_TRUE(desk.recipeIsUnderWay());
        look(window);
        stopController(false);
        EXPECT_TRUE(waitUntil([this]() { return !desk.recipeIsUnderWay(); }));
        settle();
        look(window);
    }
};

TEST_F(TheWholeWindow, HasANameForEverythingThatIsReachedWithKeys)
{
    showTrial();
    showAll(expectNames, window);
}

TEST_F(TheWholeWindow, IsReachedWithTheTabKeyEverywhere)
{
    showTrial();
    showAll(expectTabReachesAll, window);
}

// A colour that is set on a widget, and no other one beside it, is lost on dark ground.
TEST_F(TheWholeWindow, FollowsThePalette)
{
    showTrial();
    showAll(
        [](const QWidget& where) {
            for (const QWidget* const each : inSight(where))
                EXPECT_EQ(each->styleSheet(), QString()) << nameOf(*each);
            for (const QLabel* const each : inSight<QLabel>(where))
                EXPECT_EQ(each->palette().color(QPalette::WindowText),
                          QApplication::palette(each).color(QPalette::WindowText))
                    << nameOf(*each);
        },
        window);
}

// The desktop turns dark while the window is open.
TEST_F(TheWholeWindow, TurnsDarkOnEachPage)
{
    showTrial();
    EXPECT_TRUE(waitUntil([this]() { return desk.statistics() != nullptr; }));
    showAll(expectTurnsDark, window);
}

// Those of drawings are nobody's palette.
TEST_F(TheWholeWindow, DrawsInColoursThatAreSeenOnDark)
{
    showTrial();
    EXPECT_TRUE(waitUntil([this]() { return desk.statistics() != nullptr; }));
    const DarkDesktop dark;
    const QColor ground = QApplication::palette().color(QPalette::Base);
    for (int curve = 0; curve < 8; ++curve)
        EXPECT_GE(contrast(trendColour(curve, QApplication::palette()), ground), 3) << curve;
    for (const WireUse use : {WireUse::requests, WireUse::replies, WireUse::timeOuts}) {
        const QSize size(32, 16);
        const QImage sample = iconOf(use, size, QApplication::palette()).pixmap(size).toImage();
        double most = 0;
        for (int x = 0; x < size.width(); ++x)
            most = std::max(most, contrast(sample.pixelColor(x, size.height() - 4), ground));
        EXPECT_GE(most, 3) << static_cast<int>(use);
    }
    const auto* const cycles = window.findChild<CyclePlot*>("cycleTimes");
    const auto columns = cycles->itemList(QwtPlotItem::Rtti_PlotHistogram);
    ASSERT_FALSE(columns.isEmpty());
    EXPECT_GE(
        contrast(static_cast<const QwtPlotHistogram*>(columns.front())->brush().color(), ground),
        3);
    window.showPage(static_cast<int>(window.pages().size()) - 3);
    auto* const band = window.findChild<LinkBand*>("band");
    ASSERT_TRUE(band->isVisible());
    QCoreApplication::processEvents();
    const QWidget* const canvas = band->canvas();
    const QImage drawn = band->grab().toImage();
    // To the right is what it is now: good.
    EXPECT_GE(
        contrast(drawn.pixelColor(canvas->geometry().right() - 6, canvas->geometry().top() + 6),
                 ground),
        3);
}

// The language is there before the window is.
class TheTranslatedWindow : private InstalledLanguage, public TheWholeWindow {};

TEST_F(TheTranslatedWindow, LeavesNoTextOut)
{
    showAll(expectNoTextLeftOut, window);
    showTrial();
    EXPECT_TRUE(waitUntil([this]() { return desk.statistics() != nullptr; }));
    showAll(expectNoTextLeftOut, window);
    for (const QAction* const action : window.findChildren<QAction*>())
        expectTranslated(action->text(), window, "action");
}

// On a screen of this size.
void expectFitsTheScreen(const QWidget& where)
{
    EXPECT_LE(where.minimumSizeHint().width(), 1280);
    EXPECT_EQ(where.width(), 1280);
    EXPECT_EQ(where.height(), 800);
    expectNothingCutOff(where);
}

TEST_F(TheTranslatedWindow, CutsNothingOff)
{
    showTrial();
    EXPECT_TRUE(waitUntil([this]() { return desk.statistics() != nullptr; }));
    showAll(expectFitsTheScreen, window);
}

TEST_F(TheTranslatedWindow, CutsNothingOffWhileItIsAtWork)
{
    showAtWork(expectFitsTheScreen);
}

TEST_F(TheTranslatedWindow, LeavesNoTextOutWhileItIsAtWork)
{
    showAtWork(expectNoTextLeftOut);
}

class TheWindowInLargeLetters : private LargeLetters, public TheWholeWindow {};

TEST_F(TheWindowInLargeLetters, CutsNothingOff)
{
    showTrial();
    EXPECT_TRUE(waitUntil([this]() { return desk.statistics() != nullptr; }));
    showAll(expectFitsTheScreen, window);
}

TEST_F(TheWindowInLargeLetters, CutsNothingOffWhileItIsAtWork)
{
    showAtWork(expectFitsTheScreen);
}

} // namespace

} // namespace dov417
