#include "panel/plan/plan_page.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTest>

#include "panel_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class ThePlanPage : public PanelWorld {
protected:
    // Returns once there is a plan.
    void show()
    {
        page = std::make_unique<PlanPage>(desk);
        QObject::connect(page.get(), &PanelPage::told, page.get(),
                         [this](const QString& text) { told = text.toStdString(); });
        page->resize(1150, 700);
        page->show();
        map = page->findChild<QTableView*>("planMap");
        planned();
    }
    void planned()
    {
        ASSERT_TRUE(waitUntil([this]() { return !page->isBusy(); }));
    }
    // Controllers that are planned to answer at once, whatever they take here.
    void showQuickOnes()
    {
        show();
        page->prepared(OrderedJson{{"responseTime", 0}})();
        planned();
    }
    std::string text(const char* label) const
    {
        return page->findChild<QLabel*>(label)->text().toStdString();
    }
    QPushButton* button(const char* name) const
    {
        return page->findChild<QPushButton*>(name);
    }
    // A cell for each word of a row that is anything: watched #, read along -, uncovered x, beyond
    // the limit !, with [ and ] where requests begin and end and | where a part does.
    std::string drawn(int row) const
    {
        std::string text;
        const auto* const model = static_cast<const PlanMapModel*>(map->model());
        for (int column = 0; column < model->columnCount(); ++column) {
            const PlanWord& word = model->wordAt(model->index(row, column));
            text += word.beginsRequest ? "[" : word.beginsPart ? "|" : "";
            switch (word.use) {
            case WordUse::notAsked:
                text += ".";
                break;
            case WordUse::watched:
                text += word.isBeyondLimit ? "!" : "#";
                break;
            case WordUse::readAlong:
                text += word.isBeyondLimit ? "?" : "-";
                break;
            case WordUse::uncovered:
                text += "x";
                break;
            }
            text += word.endsRequest ? "]" : "";
        }
        return text;
    }
    std::vector<std::string> rowNames() const
    {
        std::vector<std::string> names;
        for (int row = 0; row < map->model()->rowCount(); ++row)
            names.push_back(map->model()->headerData(row, Qt::Vertical).toString().toStdString());
        return names;
    }
    std::vector<std::string> column(const char* table, int number) const
    {
        return shownIn(*page->findChild<QTableView*>(table), number);
    }
    // What the driver has asked for since, "words: count".
    void follow()
    {
        QObject::connect(&desk, &PanelDesk::framesPassed, page.get(),
                         [this](const std::vector<Passed>& frames) {
                             for (const Passed& each : frames)
                                 if (each.what == Passed::What::ended)
                                     asked.insert(each.transmission.request.length);
                         });
    }

    std::unique_ptr<PlanPage> page;
    QTableView* map = nullptr;
    std::string told;
    std::set<int> asked; // lengths
};

TEST_F(ThePlanPage, ShowsStationByAreaWhatIsWatchedAndWhatIsReadAlong)
{
    setup.gap = 4;
    watch({"2/R_W:100..101", "R_W:64", "R_W:69..70", "R_W:76", "M_bit:1.3", "M_bit:1.4"});
    desk.setGap(4);
    show();
    EXPECT_THAT(rowNames(), ElementsAre("1/M_W:0", "1/R_W:64", "2/R_W:96"));
    EXPECT_THAT(drawn(0), StartsWith(".[#]...."));
    EXPECT_THAT(drawn(1), StartsWith("[#----##]"));
    EXPECT_THAT(drawn(1), HasSubstr("]....."));
    EXPECT_THAT(drawn(1), HasSubstr(".[#]..."));
    EXPECT_THAT(drawn(2), StartsWith("....[##]."));
    EXPECT_THAT(column("planRequests", 1),
                ElementsAre("1/M_W:1", "1/R_W:64..70", "1/R_W:76", "2/R_W:100..101"));
    EXPECT_THAT(column("planRequests", 3), ElementsAre("0", "4", "0", "0"));
    EXPECT_THAT(text("planHeading"), HasSubstr("merge gap of 4 that is in use: 4 request"));
    EXPECT_THAT(text("planHeading"), HasSubstr("no line is open"));
}

TEST_F(ThePlanPage, NamesTheWordUnderTheMouseAndTheKeys)
{
    watch({"R_W:0", "R_W:2"});
    show();
    const auto place = [this](int column) {
        return map->visualRect(map->model()->index(0, column)).center();
    };
    QMouseEvent move(QEvent::MouseMove, place(1), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(map->viewport(), &move);
    EXPECT_THAT(text("planWord"), StartsWith("1/R_W:1: read along, nobody watches it; request 1 "
                                             "reads 1/R_W:0..2 (3 word"));
    QTest::mouseClick(map->viewport(), Qt::LeftButton, Qt::NoModifier, place(1));
    QTest::keyClick(map, Qt::Key_Right);
    EXPECT_THAT(text("planWord"), StartsWith("1/R_W:2: watched (1/R_W:2); request 1"));
    QTest::keyClick(map, Qt::Key_Right);
    EXPECT_EQ(text("planWord"), "1/R_W:3: not asked for");
    auto* const requests = page->findChild<QTableView*>("planRequests");
    requests->selectRow(0);
    EXPECT_THAT(text("planWord"), StartsWith("1/R_W:0: watched"));
}

TEST_F(ThePlanPage, ShowsWhatGoesBeyondTheLimitAndThePartsWithAMaximum)
{
    watch({"R_W:0..127"});
    show();
    EXPECT_THAT(drawn(3), testing::EndsWith("##!!!]"));
    EXPECT_THAT(column("planRequests", 5), ElementsAre("\u26a0 over 125 registers"));
    const auto* const requests = page->findChild<QTableView*>("planRequests")->model();
    EXPECT_THAT(requests->index(0, 5).data(Qt::ToolTipRole).toString().toStdString(),
                HasSubstr("a strict controller answers: set Registers in one request"));
    EXPECT_THAT(column("planGaps", 3).front(), HasSubstr("1 over 125"));
    page.reset();

    setup.maxRegisters = 60;
    open();
    show();
    EXPECT_THAT(drawn(3), Not(HasSubstr("!")));
    EXPECT_EQ(drawn(1) + drawn(2) + drawn(3),
              std::string(28, '#') + "|" + std::string(59, '#') + "|" + std::string(9, '#') + "]");
    EXPECT_THAT(column("planRequests", 5), ElementsAre(HasSubstr("in 3 part")));
}

TEST_F(ThePlanPage, MarksTheBestGapAndPlansTheLivingLineAnewWithIt)
{
    options.set = {"R_W:0=1", "R_W:12=2"};
    setup.gap = 2;
    watch({"R_W:0", "R_W:12"});
    open();
    showQuickOnes();
    follow();
    EXPECT_THAT(column("planGaps", 0), ElementsAre("0 \u2026 10", "11 \u2026"));
    EXPECT_THAT(column("planGaps", 1), ElementsAre("2", "1"));
    EXPECT_THAT(column("planGaps", 3), ElementsAre("\u25cf in use", "\u2605 best"));
    EXPECT_EQ(button("useBest")->text().toStdString(), "Use the &best gap, 128");
    QTest::mouseClick(button("useBest"), Qt::LeftButton);
    EXPECT_EQ(desk.lineSetup().mergeGap(), 128);
    EXPECT_TRUE(waitUntil([this]() { return asked.count(13) != 0; }));
    planned();
    EXPECT_THAT(column("planGaps", 3).back(), HasSubstr("best, \u25cf in use"));
    EXPECT_FALSE(button("useBest")->isEnabled());
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    EXPECT_EQ(desk.book().find(desk.tags().values.back().address)->value.front(), 2);
}

TEST_F(ThePlanPage, LooksAtAnotherGapBesideTheLineThatGoesOn)
{
    setup.gap = 2;
    watch({"R_W:0", "R_W:12"});
    open();
    showQuickOnes();
    follow();
    page->findChild<QTableView*>("planGaps")->selectRow(1);
    planned();
    EXPECT_THAT(text("planHeading"), StartsWith("Looked at, not in use: with a merge gap of 128"));
    EXPECT_THAT(column("planRequests", 1), ElementsAre("1/R_W:0..12"));
    EXPECT_EQ(desk.lineSetup().mergeGap(), 2);
    asked.clear();
    const long long cycles = desk.state().cycles;
    EXPECT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 2; }));
    EXPECT_THAT(asked, ElementsAre(1));
    QTest::mouseClick(button("useChosen"), Qt::LeftButton);
    EXPECT_TRUE(waitUntil([this]() { return asked.count(13) != 0; }));
    planned();
    EXPECT_THAT(text("planHeading"), StartsWith("With the merge gap of 128 that is in use"));
}

TEST_F(ThePlanPage, PlansNothingAnewWhileAValueIsBeingWritten)
{
    setup.gap = 2;
    watch({"R_W:0", "R_W:12"});
    open();
    unlock();
    showQuickOnes();
    stopController(true);
    desk.write(desk.tags().values.front(), "5");
    QTest::mouseClick(button("useBest"), Qt::LeftButton);
    EXPECT_THAT(told, HasSubstr("being written"));
    EXPECT_EQ(desk.lineSetup().mergeGap(), 2);
    stopController(false);
    EXPECT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_EQ(held("R_W", 0), 5);
}

TEST_F(ThePlanPage, FollowsWhatIsWatched)
{
    watch({"R_W:0"});
    show();
    EXPECT_THAT(rowNames(), ElementsAre("1/R_W:0"));
    watch({"3/T:5"});
    planned();
    EXPECT_THAT(rowNames(), ElementsAre("3/T:0"));
    EXPECT_THAT(drawn(0), StartsWith(".....[#]."));
    page->hide();
    watch({"R_W:64"});
    page->show();
    planned();
    EXPECT_THAT(rowNames(), ElementsAre("1/R_W:64"));
    watch({});
    planned();
    EXPECT_THAT(rowNames(), IsEmpty());
    EXPECT_THAT(text("planHeading"), StartsWith("Nothing is watched"));
}

TEST_F(ThePlanPage, KeepsItsTimeInTheProject)
{
    watch({"R_W:0"});
    show();
    const auto time = page->prepared(OrderedJson{{"responseTime", 25}});
    EXPECT_EQ(page->settings().dump(), "{}");
    const std::string before = column("planRequests", 4).front();
    time();
    planned();
    EXPECT_EQ(page->settings().dump(), R"({"responseTime":25})");
    EXPECT_NEAR(std::stod(column("planRequests", 4).front()), std::stod(before) + 25, 0.2);
    EXPECT_THAT(complaint([this]() {
                    page->prepared(OrderedJson{{"responseTime", "long"}});
                }),
                StartsWith("responseTime: "));
    page->prepared(OrderedJson::object())();
    EXPECT_EQ(page->settings().dump(), "{}");
}

TEST_F(ThePlanPage, BeginsWithTheTimeThatWasMeasuredOnTheLine)
{
    options.responseTimeMs = 30;
    watch({"R_W:0"});
    show();
    EXPECT_THAT(text("measuredTime"), StartsWith("Nothing is measured yet: planned as if"));
    open();
    const auto cycle = [this]() { return std::stod(column("planRequests", 4).front()); };
    EXPECT_TRUE(waitUntil(
        [this]() { return !page->isBusy() && text("measuredTime").find("Planned with") == 0; }));
    const double measured = cycle();
    EXPECT_EQ(page->settings().dump(), "{}") << "nobody has typed it";
    page->findChild<QSpinBox*>("responseTime")->setValue(5);
    planned();
    // On this line bytes take no time, so that a part of it seems to be the request's.
    EXPECT_GT(measured, cycle() - 5 + 20);
    EXPECT_THAT(text("measuredTime"), StartsWith("On this line the slowest station took "));
    EXPECT_EQ(page->settings().dump(), R"({"responseTime":5})");
}

TEST(APlanMap, ShowsWhatNoRequestReadsAndWhatTwoRead)
{
    PanelValue value;
    value.address.regName = "R_D";
    value.address.width = Width::doubleWord;
    value.address.first = 30;
    value.address.length = 2;
    PanelValue next = value;
    next.address.first = 32;
    PlannedRequest request = PlannedRequest();
    request.station = 1;
    request.regName = "R_W";
    request.address = 31;
    request.length = 1;
    Plan plan;
    plan.requests = {request, request};
    const std::vector<PlanRow> rows = planRows({value, next}, plan);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows.at(0).cells.at(30).use, WordUse::uncovered);
    EXPECT_EQ(rows.at(0).cells.at(31).use, WordUse::watched);
    EXPECT_THAT(rows.at(0).cells.at(31).requests, ElementsAre(0, 1));
    EXPECT_EQ(rows.at(1).cells.at(1).use, WordUse::uncovered);
    EXPECT_TRUE(rows.at(1).goesOn);
}

TEST(AGapOutcome, IsUsedWithTheLongestGapInWholeValues)
{
    GapOutcome outcome = GapOutcome();
    for (const auto& [first, last, gap] :
         {std::tuple{0, 10, 8}, {5, 7, 6}, {5, 5, 5}, {11, -1, 128}, {12, 15, 12}, {0, 0, 0}}) {
        outcome.firstGap = first;
        outcome.lastGap = last;
        EXPECT_EQ(gapToUse(outcome), gap) << first << " to " << last;
    }
}

} // namespace

} // namespace dov417
