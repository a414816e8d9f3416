// Notes at a moment, in the project and in their list.
#include <QInputDialog>
#include <QMenu>
#include <ctime>

#include "panel/desk/panel_clock.h"
#include "panel/trends/trends_page.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const char* const noteProject = R"({
  "version": 1,
  "tags": [{"name": "oven", "register": "R_W", "address": 100}],
  "panel": {"trends": {
    "plots": [{"values": [{"name": "oven", "address": "1/R_W:100"}]}],
    "notes": [
      {"time": "2026-03-04T14:03:07.250+01:00", "text": "belt <b>changed</b>", "mood": 3},
      {"time": "2026-03-05T06:00:00.000Z", "text": "warm start"}]}}})";

class NotesOfATrend : public ProjectWorld {
protected:
    NotesOfATrend() : zone(qgetenv("TZ"))
    {
        setZone("UTC0");
    }
    ~NotesOfATrend() override
    {
        setZone(zone);
    }
    static void setZone(const QByteArray& zone)
    {
        zone.isEmpty() ? qunsetenv("TZ") : qputenv("TZ", zone);
        tzset();
    }

    void openProject(const std::string& text = noteProject)
    {
        ASSERT_TRUE(window.actions().open(written("machine.json", text)));
        showTrends();
    }
    void showTrends()
    {
        for (int page = 0; page < static_cast<int>(window.pages().size()); ++page)
            if (window.pages().at(static_cast<std::size_t>(page)) == trends())
                window.showPage(page);
    }
    TrendsPage* trends() const
    {
        return window.findChild<TrendsPage*>();
    }
    TrendStack* stack() const
    {
        return window.findChild<TrendStack*>();
    }
    void type(const QString& text)
    {
        whenAsked<QInputDialog>(&window, [text](QInputDialog& dialog) {
            QTest::keyClicks(dialog.findChild<QLineEdit*>(), text);
            QTest::keyClick(&dialog, Qt::Key_Return);
        });
        QTest::keyClick(stack()->plots().front()->canvas(), Qt::Key_N);
    }
    QTableView* openList()
    {
        window.findChild<QMenu*>("trendNote")->actions().last()->trigger();
        auto* const list = window.findChild<QTableView*>("trendNotes");
        EXPECT_TRUE(waitUntil([list]() { return QApplication::activeWindow() == list->window(); }));
        list->setFocus();
        EXPECT_EQ(QApplication::focusWidget(), list);
        return list;
    }
    std::vector<std::string> listed() const
    {
        const QAbstractItemModel& model = *window.findChild<QTableView*>("trendNotes")->model();
        std::vector<std::string> rows;
        for (int row = 0; row < model.rowCount(); ++row)
            rows.push_back((model.index(row, TrendNotesModel::time).data().toString() + " " +
                            model.index(row, TrendNotesModel::text).data().toString())
                               .toStdString());
        return rows;
    }
    static void click(const QTableView& list, const char* button)
    {
        QTest::mouseClick(list.window()->findChild<QPushButton*>(QLatin1String(button)),
                          Qt::LeftButton);
    }
    std::vector<std::string> inPlot() const
    {
        std::vector<std::string> texts;
        for (const TrendNote& note : stack()->notes())
            texts.push_back(note.text.toStdString());
        return texts;
    }
    OrderedJson saved()
    {
        press("saveProject");
        return jsonOf(path("machine.json")).at("panel").at("trends").at("notes");
    }

    const QByteArray zone;
};

TEST_F(NotesOfATrend, AreListedWithDayAndTimeWhenTheirProjectIsOpenedAnew)
{
    openProject();
    openList();
    EXPECT_THAT(listed(), ElementsAre("2026-03-04 13:03:07.250 \u270e belt <b>changed</b>",
                                      "2026-03-05 06:00:00.000 \u270e warm start"));
    EXPECT_FALSE(window.document().isModified());
    ASSERT_TRUE(window.actions().begin({}, LineSetup()));
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(NotesOfATrend, AreKeptInTheProjectWithWhatANewerProgramPutsThere)
{
    openProject();
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    type("valve, opened");
    const qint64 after = QDateTime::currentMSecsSinceEpoch();
    EXPECT_TRUE(window.document().isModified());
    const OrderedJson notes = saved();
    ASSERT_EQ(notes.size(), 3U);
    EXPECT_EQ(notes.at(0).dump(),
              R"({"time":"2026-03-04T13:03:07.250Z","text":"belt <b>changed</b>","mood":3})");
    EXPECT_EQ(notes.at(2).at("text"), "valve, opened");
    const qint64 at =
        QDateTime::fromString(QString::fromStdString(notes.at(2).at("time").get<std::string>()),
                              Qt::ISODateWithMs)
            .toMSecsSinceEpoch();
    EXPECT_GE(at, before - 1); // clocks of this computer are told in milliseconds
    EXPECT_LE(at, after + 1);
    ASSERT_TRUE(window.actions().open(path("machine.json")));
    openList();
    ASSERT_EQ(listed().size(), 3U);
    EXPECT_THAT(listed().at(2), HasSubstr("valve, opened"));
}

TEST_F(NotesOfATrend, HaveTheTimeThatItIsOnceTheComputerHasSlept)
{
    openProject();
    type("evening");
    const Clock::time_point woken = panelNow() + std::chrono::seconds(1);
    const QDateTime morning = panelTimeOfDay().addSecs(8 * 3600);
    setPanelTime(woken, morning);
    const auto isNoticed = [this]() {
        for (const std::string& text : inPlot())
            if (text == "this computer's clock was moved by 28799.0 s; times before are as it was "
                        "then")
                return true;
        return false;
    };
    EXPECT_TRUE(waitUntil(isNoticed));
    type("morning");
    const OrderedJson notes = saved();
    openList();
    const std::vector<std::string> rows = listed();
    letPanelTimeRun();
    ASSERT_EQ(notes.size(), 4U);
    const auto timeOf = [&notes](std::size_t place) {
        return QDateTime::fromString(
            QString::fromStdString(notes.at(place).at("time").get<std::string>()),
            Qt::ISODateWithMs);
    };
    EXPECT_EQ(timeOf(3), morning);
    EXPECT_LT(timeOf(2), morning.addSecs(-8 * 3600 + 1));
    EXPECT_THAT(rows.back(), StartsWith(morning.toString("yyyy-MM-dd HH:mm:ss.zzz").toStdString()));
}

TEST_F(NotesOfATrend, AreUndoneAndDoneAgain)
{
    openProject();
    type("valve opened");
    press("undo");
    EXPECT_THAT(inPlot(), ElementsAre("belt <b>changed</b>", "warm start"));
    press("redo");
    EXPECT_THAT(inPlot(), ElementsAre("belt <b>changed</b>", "warm start", "valve opened"));
}

TEST_F(NotesOfATrend, AreChangedAndTakenAwayInTheirList)
{
    openProject();
    QTableView* const list = openList();
    list->setFocus();
    list->setCurrentIndex(list->model()->index(1, TrendNotesModel::text));
    QTest::keyClick(list, Qt::Key_F2);
    auto* const field = list->findChild<QLineEdit*>();
    ASSERT_TRUE(field);
    EXPECT_EQ(field->text(), "warm start");
    EXPECT_EQ(QApplication::focusWidget(), field);
    field->selectAll();
    QTest::keyClicks(field, "cold start");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(waitUntil([this]() { return inPlot().back() == "cold start"; }));
    list->selectRow(0);
    EXPECT_EQ(QApplication::focusWidget(), list) << "as before the cell was edited";
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_THAT(listed(), ElementsAre("2026-03-05 06:00:00.000 \u270e cold start"));
    EXPECT_EQ(saved().dump(), R"([{"time":"2026-03-05T06:00:00.000Z","text":"cold start"}])");
    press("undo");
    press("undo");
    EXPECT_THAT(inPlot(), ElementsAre("belt <b>changed</b>", "warm start"));
    EXPECT_EQ(listed().size(), 2U) << "the list follows";
}

TEST_F(NotesOfATrend, DoNotSayThatSomethingWasRecordedThen)
{
    openProject();
    QTableView* const list = openList();
    auto* const show = list->window()->findChild<QPushButton*>("showNote");
    EXPECT_FALSE(show->isEnabled());
    list->selectRow(1);
    EXPECT_TRUE(show->isEnabled());
    click(*list, "showNote");
    EXPECT_THAT(message(), HasSubstr("nothing is recorded"));
    const TrendNote& note = stack()->notes().at(1);
    EXPECT_FALSE(stack()->view().isRunning());
    EXPECT_LT(stack()->view().from(), note.at);
    EXPECT_GT(stack()->view().to(), note.at);
}

TEST_F(NotesOfATrend, AreShownAmongWhatWasRecorded)
{
    open(); // of nothing yet
    openProject();
    setup.port = controller->port();
    desk.open(setup);
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    const auto isGoodAfter = [this](TrendTime time) {
        const View* const view = desk.book().find(desk.tags().values.front().address);
        return view && toTrendTime(view->lastGood) > time;
    };
    const TrendTime opened = toTrendTime(Clock::now());
    ASSERT_TRUE(waitUntil([&]() { return isGoodAfter(opened); }));
    const TrendTime now = toTrendTime(Clock::now()); // between two that were recorded
    ASSERT_TRUE(waitUntil([&]() { return isGoodAfter(now); }));
    stack()->setCursor(0, now);
    type("read");
    QTableView* const list = openList();
    list->selectRow(list->model()->rowCount() - 1);
    ASSERT_THAT(listed().back(), HasSubstr("read"));
    click(*list, "showNote");
    EXPECT_EQ(message(), "");
}

TEST_F(NotesOfATrend, AreWrittenAsATableAllOfThem)
{
    openProject();
    const QString file = path("notes.csv");
    ASSERT_TRUE(trends()->saveNotes(file));
    EXPECT_TRUE(waitUntil([this]() { return message().find("written as a table") < 99; }));
    EXPECT_EQ(textOf(file), "time,name,address,value,unit,state\n"
                            "2026-03-04T13:03:07.250Z,,,,,note: belt <b>changed</b>\n"
                            "2026-03-05T06:00:00.000Z,,,,,note: warm start\n");
    setZone("CET-1");
    ASSERT_TRUE(trends()->saveNotes(file));
    EXPECT_TRUE(waitUntil([&]() { return textOf(file).find("+01:00,") < 99; }));
    EXPECT_THAT(textOf(file), HasSubstr("\n2026-03-04T14:03:07.250+01:00,,,,,note: belt"));
    ASSERT_TRUE(trends()->saveTable(path("seen.csv")));
    EXPECT_TRUE(waitUntil([this]() { return message().find("What is seen") < 99; }));
    EXPECT_THAT(textOf(path("seen.csv")), Not(HasSubstr("note: ")));
}

TEST_F(NotesOfATrend, OfItsOwnAreNeitherKeptNorTakenAway)
{
    openProject();
    stack()->addNote({stack()->notes().front().at + 1, "another line", false});
    QTableView* const list = openList();
    EXPECT_EQ(listed().at(1), "2026-03-04 13:03:07.250 \u26a0 another line");
    list->selectRow(1);
    EXPECT_FALSE(list->window()->findChild<QPushButton*>("removeNote")->isEnabled());
    QTest::keyClick(list, Qt::Key_Delete);
    list->setCurrentIndex(list->model()->index(1, TrendNotesModel::text));
    QTest::keyClick(list, Qt::Key_F2);
    EXPECT_FALSE(list->findChild<QLineEdit*>());
    EXPECT_EQ(listed().size(), 3U);
    EXPECT_FALSE(window.document().isModified());
    type("mine");
    EXPECT_EQ(saved().size(), 3U) << "two of the file, and mine";
    EXPECT_THAT(inPlot(), testing::Contains("another line"));
}

TEST_F(NotesOfATrend, TakeNoPlotAwayThatWasChosenByItself)
{
    QTest::mouseClick(window.findChild<QPushButton*>("trial"), Qt::LeftButton);
    showTrends();
    ASSERT_TRUE(waitUntil([this]() { return !stack()->plots().empty(); }));
    const std::size_t plots = stack()->plots().size();
    type("valve opened");
    press("undo");
    EXPECT_EQ(stack()->plots().size(), plots);
    EXPECT_THAT(inPlot(), Not(testing::Contains("valve opened")));
}

TEST_F(NotesOfATrend, AreRefusedWithTheirPlace)
{
    const std::pair<const char*, const char*> rows[] = {
        {R"(7)", "panel.trends.notes: a list"},
        {R"([7])", "panel.trends.notes[0]: an object"},
        {R"([{"text": "a"}])", "panel.trends: notes[0].time: a time with its zone"},
        {R"([{"time": "yesterday", "text": "a"}])", "panel.trends.notes[0].time: "},
        {R"([{"time": "2026-03-04T13:03:07", "text": "a"}])", "panel.trends.notes[0].time: "},
        {R"([{"time": "2026-03-04T13:03:07Z", "text": ""}])", "panel.trends.notes[0].text: "},
        {R"([{"time": "2026-03-04T13:03:07Z"}])", "panel.trends: notes[0].text: "},
    };
    openProject();
    for (const auto& [notes, why] : rows) {
        const std::string text =
            std::string(R"({"version": 1, "panel": {"trends": {"notes": )") + notes + "}}}";
        EXPECT_FALSE(window.actions().open(written("broken.json", text)));
        EXPECT_THAT(message(), HasSubstr(why));
    }
    EXPECT_EQ(inPlot().size(), 2U);
}

} // namespace

} // namespace dov417
