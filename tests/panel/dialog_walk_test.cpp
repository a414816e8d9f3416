// Every dialog, as those see it who use keys, a screen reader, another language or larger letters.
#include "panel/project/line_dialog.h"
#include "panel/project/recovery_dialog.h"
#include "panel/project/stations_dialog.h"
#include "panel/trends/trend_notes_dialog.h"
#include "panel/trends/trend_values_dialog.h"
#include "panel/values/write_dialog.h"
#include "project_world.h"
#include "window_walk.h"

namespace dov417 {

namespace {

struct NamedDialog {
    const char* name;
    std::unique_ptr<QDialog> dialog;
};

class TheDialogs : public ProjectWorld {
protected:
    // Each with something in it.
    std::vector<NamedDialog> all()
    {
        watch({"R_W:100", "R_D:200", "M_bit:1.0"});
        open();
        unlock();
        LineSetup line;
        line.port = "/dev/ttyUSB0";
        ProjectStation station;
        station.number = 1;
        station.name = "press";
        UnsavedCopy copy;
        copy.project = path("machine.json");
        copy.made = QDateTime::currentDateTime();
        copy.saved = copy.made.addSecs(-1);
        copy.differences = QStringList(QString(20, QLatin1Char('1')));
        copies = {copy};
        auto notes = std::make_unique<TrendNotesDialog>(clock, &window);
        auto values = std::make_unique<TrendValuesDialog>(desk, &window);
        values->showPlot(0, TrendGroup());
        std::vector<NamedDialog> dialogs;
        dialogs.push_back({"line", std::make_unique<LineDialog>(line, &window)});
        dialogs.push_back(
            {"stations", std::make_unique<StationsDialog>(std::vector<ProjectStation>{station},
                                                          std::set<int>{1, 2}, &window)});
        dialogs.push_back(
            {"write", std::make_unique<WriteDialog>(desk, desk.tags().values, &window)});
        dialogs.push_back({"recovery", std::make_unique<RecoveryDialog>(copies, &window)});
        dialogs.push_back({"notes", std::move(notes)});
        dialogs.push_back({"values of a plot", std::move(values)});
        return dialogs;
    }
    void showEach(const std::function<void(QDialog&)>& look)
    {
        for (const NamedDialog& each : all()) {
            SCOPED_TRACE(each.name);
            each.dialog->show();
            each.dialog->activateWindow();
            // Of its own: it counts for active where the window is.
            ASSERT_TRUE(
                waitUntil([&]() { return QApplication::activeWindow() == each.dialog.get(); }));
            look(*each.dialog);
            each.dialog->close();
        }
    }

    TrendClock clock;
    std::vector<UnsavedCopy> copies;
};

void expectFits(const QDialog& dialog)
{
    EXPECT_LE(dialog.width(), 1280);
    EXPECT_LE(dialog.height(), 800);
    expectNothingCutOff(dialog);
    for (const QScrollArea* const each : inSight<QScrollArea>(dialog))
        EXPECT_EQ(each->horizontalScrollBar()->maximum(), 0) << nameOf(*each);
}

TEST_F(TheDialogs, HaveANameForEverythingThatIsReachedWithKeys)
{
    showEach([](const QDialog& dialog) {
        EXPECT_FALSE(dialog.windowTitle().isEmpty());
        expectNames(dialog);
    });
}

TEST_F(TheDialogs, AreReachedWithTheTabKeyEverywhere)
{
    showEach([](QDialog& dialog) { expectTabReachesAll(dialog); });
}

TEST_F(TheDialogs, EndWithEscape)
{
    showEach([](QDialog& dialog) {
        QTest::keyClick(&dialog, Qt::Key_Escape);
        EXPECT_FALSE(dialog.isVisible());
        EXPECT_EQ(dialog.result(), QDialog::Rejected);
    });
    EXPECT_TRUE(desk.writes().empty());
}

TEST_F(TheDialogs, CutNothingOff)
{
    showEach(expectFits);
}

TEST_F(TheDialogs, TurnDark)
{
    showEach(expectTurnsDark);
}

class TheTranslatedDialogs : private InstalledLanguage, public TheDialogs {};

TEST_F(TheTranslatedDialogs, LeaveNoTextOut)
{
    showEach([](const QDialog& dialog) {
        expectTranslated(dialog.windowTitle(), dialog, "title");
        expectNoTextLeftOut(dialog);
    });
}

TEST_F(TheTranslatedDialogs, CutNothingOff)
{
    showEach(expectFits);
}

class TheDialogsInLargeLetters : private LargeLetters, public TheDialogs {};

TEST_F(TheDialogsInLargeLetters, CutNothingOff)
{
    showEach(expectFits);
}

} // namespace

} // namespace dov417
