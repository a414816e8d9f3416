// Time that is handed in, and a session that was recorded.
#include "panel/desk/panel_clock.h"

#include <QCoreApplication>
#include <QLabel>
#include <gmock/gmock.h>

#include "panel/desk/state_words.h"
#include "panel/main_window.h"
#include "panel_world.h"

namespace dov417 {
namespace {

using std::chrono::seconds;

class PanelClock : public PanelWorld {
protected:
    ~PanelClock() override
    {
        letPanelTimeRun();
    }

    const Clock::time_point noon{std::chrono::hours(5)};
    const QDateTime dayTime = QDateTime::fromString("2026-02-03T12:00:00", Qt::ISODate);
};

TEST_F(PanelClock, StandsStillAtWhatWasHandedIn)
{
    setPanelTime(noon, dayTime);
    EXPECT_EQ(panelNow(), noon);
    EXPECT_EQ(panelTimeOfDay(), dayTime);
    const LogTime then = panelLogTime(noon - seconds(90));
    EXPECT_EQ(then, LogTime(std::chrono::milliseconds(dayTime.addSecs(-90).toMSecsSinceEpoch())));
}

TEST_F(PanelClock, IsThisComputersElse)
{
    setPanelTime(noon, dayTime);
    letPanelTimeRun();
    const Clock::time_point before = Clock::now();
    const Clock::time_point now = panelNow();
    EXPECT_LE(before, now);
    EXPECT_LE(now, Clock::now());
    EXPECT_NE(panelTimeOfDay(), dayTime);
}

// What was recorded is known to the desk, and what is asked of the line reaches nobody.
TEST_F(PanelClock, ADeskShowsARecordingAtTheTimeHandedIn)
{
    PanelDesk played(library, PanelDesk::Source::recording);
    const Items find(library, ItemSource());
    played.setItems({find.find("R_W:100", Access::read)});
    LineBatch batch;
    batch.made = noon;
    batch.state.phase = LinePhase::open;
    batch.state.isUnlocked = true;
    View view;
    view.address = played.tags().values.front().address;
    view.hasValue = true;
    view.value = {0x12, 0x34};
    view.lastGood = noon - seconds(3);
    batch.values = {view};
    setPanelTime(noon, dayTime);
    played.play(batch);

    const Address& address = view.address;
    EXPECT_EQ(played.book().standing(address).state, ValueState::good);
    EXPECT_EQ(ageText(played.book().find(address), panelNow()), "3.0 s");

    played.write(played.tags().values.front(), "7");
    EXPECT_EQ(played.writes().front().asked, dayTime);
    QCoreApplication::processEvents();
    EXPECT_EQ(played.book().standing(address).state, ValueState::beingWritten);
    LineBatch answer = batch;
    answer.values.clear();
    answer.outcomes = {{1, Result::refused("no answer")}};
    played.play(answer);
    EXPECT_EQ(played.book().standing(address).reason, "no answer");
}

// One station is silent, the others answer: the link is good, and not all that is shown is.
TEST_F(PanelClock, TheStatusLineCountsWhatIsOld)
{
    PanelDesk played(library, PanelDesk::Source::recording);
    MainWindow window(played);
    const auto* const sentence = window.findChild<QLabel*>("lineSentence");
    const Items find(library, ItemSource());
    played.setItems({find.find("R_W:100..101", Access::read)});
    LineBatch batch;
    batch.state.phase = LinePhase::open;
    batch.state.cycles = 1;
    for (const PanelValue& value : played.tags().values) {
        View view;
        view.address = value.address;
        view.hasValue = true;
        view.value = {0, 1};
        batch.values.push_back(view);
    }
    played.play(batch);
    EXPECT_FALSE(sentence->text().contains("Old"));
    batch.values.back().isOld = true;
    played.play(batch);
    EXPECT_TRUE(sentence->text().endsWith("answers. Old: 1 value(s)."))
        << qPrintable(sentence->text());
}

TEST(LineSentence, NamesNoPortOfASimulatedController)
{
    LineState state;
    state.phase = LinePhase::away;
    state.reason = "port /run/controller is gone";
    EXPECT_TRUE(lineSentence(state, false, nullptr).contains("/run/controller"));
    state.isSimulated = true;
    EXPECT_FALSE(lineSentence(state, false, nullptr).contains("/run/controller"));
    EXPECT_TRUE(lineSentence(state, false, nullptr).contains("cable is pulled"));
}

} // namespace
} // namespace dov417
