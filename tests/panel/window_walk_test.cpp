// Every page of the window, as those see it who use keys, a screen reader, dark colours or another
// language. Nothing here knows a page: what is added to the window is looked at, too.
#include "window_walk.h"

#include <QAction>

#include "project_world.h"

namespace dov417 {

namespace {

class TheWholeWindow : public ProjectWorld {
protected:
    int pageCount() const
    {
        return static_cast<int>(window.pages().size());
    }
    void showAll(const std::function<void(QWidget&)>& look, QWidget& where)
    {
        for (int page = 0; page < pageCount(); ++page) {
            window.showPage(page);
            QCoreApplication::processEvents();
            look(where);
        }
    }
    void showTrial()
    {
        QTest::mouseClick(window.findChild<QPushButton*>("trial"), Qt::LeftButton);
        EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
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

class TheWindowInLargeLetters : private LargeLetters, public TheWholeWindow {};

TEST_F(TheWindowInLargeLetters, CutsNothingOff)
{
    showTrial();
    EXPECT_TRUE(waitUntil([this]() { return desk.statistics() != nullptr; }));
    showAll(expectFitsTheScreen, window);
}

} // namespace

} // namespace dov417
