#include "panel/health/health_page.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>

#include "panel_world.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// ---- pictures, without a window ---------------------------------------------------------------

std::vector<long long> heights(const CycleColumns& columns)
{
    std::vector<long long> all;
    for (const CycleColumn& each : columns.columns)
        all.push_back(each.cycles);
    return all;
}

TEST(CycleTimes, AreCountedInColumns)
{
    Durations cycles;
    EXPECT_TRUE(columnsOf(cycles, 10).columns.empty());
    for (const int micros : {10000, 10010, 10100, 10300})
        cycles.add(Micros(micros));
    const CycleColumns columns = columnsOf(cycles, 10);
    EXPECT_THAT(heights(columns), testing::ElementsAre(2, 1, 0, 1));
    EXPECT_EQ(columns.columns.front().from, Micros(9950));
    EXPECT_EQ(columns.columns.front().to, Micros(10050));
    EXPECT_EQ(columns.longer, 0);
    EXPECT_THAT(heights(columnsOf(cycles, 2)), testing::ElementsAre(3, 1));
}

TEST(CycleTimes, OfAFewThatAreVeryLongArePressedIntoNoColumn)
{
    Durations cycles;
    for (int i = 0; i < 500; ++i)
        cycles.add(milliseconds(10 + i % 5));
    for (int i = 0; i < 3; ++i)
        cycles.add(seconds(15));
    const CycleColumns columns = columnsOf(cycles, 60);
    EXPECT_EQ(columns.longer, 3);
    EXPECT_LE(columns.columns.size(), 60U);
    EXPECT_LT(columns.columns.back().to, milliseconds(15));
    long long sum = columns.longer;
    for (const long long each : heights(columns))
        sum += each;
    EXPECT_EQ(sum, 503);
}

LineState lineState(LinePhase phase, bool isGood = true, long long cycles = 5)
{
    LineState state;
    state.phase = phase;
    state.isGood = isGood;
    state.cycles = cycles;
    return state;
}

TEST(TheLink, HasAStandingInEachState)
{
    EXPECT_EQ(standingOf(lineState(LinePhase::open), false), LinkStanding::good);
    EXPECT_EQ(standingOf(lineState(LinePhase::open), true), LinkStanding::hanging);
    EXPECT_EQ(standingOf(lineState(LinePhase::open, false), false), LinkStanding::failing);
    EXPECT_EQ(standingOf(lineState(LinePhase::open, true, 0), false), LinkStanding::opening);
    EXPECT_EQ(standingOf(lineState(LinePhase::opening), false), LinkStanding::opening);
    EXPECT_EQ(standingOf(lineState(LinePhase::away), false), LinkStanding::away);
    EXPECT_EQ(standingOf(lineState(LinePhase::refused), false), LinkStanding::closed);
    EXPECT_EQ(standingOf(lineState(LinePhase::closed), false), LinkStanding::closed);
}

TEST(TheLink, IsRememberedAsItWas)
{
    LinkHistory history;
    const Clock::time_point start = Clock::time_point(std::chrono::hours(1));
    const std::pair<int, LinkStanding> told[] = {
        {0, LinkStanding::good},     {5, LinkStanding::good},  {10, LinkStanding::failing},
        {12, LinkStanding::good},    {20, LinkStanding::away}, {21, LinkStanding::good},
        {200, LinkStanding::failing}};
    for (const auto& [second, standing] : told)
        history.add(start + seconds(second), standing);
    ASSERT_EQ(history.stretches().size(), 6U);
    EXPECT_EQ(history.stretches().front().end, start + seconds(10));
    EXPECT_EQ(
        historyText(history, start),
        "\u2713 good for 3.3 min (3 times), \u2717 failing for 2.0 s (2 times), port away for "
        "1.0 s");
    EXPECT_EQ(historyText(history, start + seconds(190)), "\u2713 good for 10.0 s");
    for (std::size_t i = 0; i < 2 * LinkHistory::maxStretches; ++i)
        history.add(start + seconds(300 + i),
                    i % 2 == 0 ? LinkStanding::good : LinkStanding::failing);
    EXPECT_LE(history.stretches().size(), LinkHistory::maxStretches);
}

// ---- the page -------------------------------------------------------------------------------

class TheHealthPage : public PanelWorld {
protected:
    TheHealthPage()
    {
        page.resize(1200, 700);
        page.show();
        table = page.findChild<QTableView*>("counters");
        setup.timeoutMs = 50;
    }
    std::string text(const char* name) const
    {
        return page.findChild<QLabel*>(name)->text().toStdString();
    }
    bool advises(const char* words) const
    {
        return text("advice").find(words) != std::string::npos;
    }
    std::string cell(const std::string& request, HealthModel::Column column) const
    {
        for (int row = 0; row < table->model()->rowCount(); ++row)
            if (named(row) == request)
                return table->model()->index(row, column).data().toString().toStdString();
        return "no such row";
    }
    // It has a row to itself, as wide as the table.
    std::string remarkBelow(const std::string& request) const
    {
        for (int row = 1; row < table->model()->rowCount(); ++row)
            if (named(row - 1) == request && table->columnSpan(row, 0) == HealthModel::columns)
                return named(row);
        return "there is none";
    }
    std::string named(int row) const
    {
        return table->model()->index(row, 0).data().toString().trimmed().toStdString();
    }
    int count(const std::string& request, HealthModel::Column column) const
    {
        return std::atoi(cell(request, column).c_str());
    }
    // Whether or not anything is answered.
    void openWithoutWaiting()
    {
        controller = std::make_unique<ControllerProcess>(options);
        setup.port = controller->port();
        desk.open(setup);
    }

    HealthPage page{desk};
    QTableView* table = nullptr;
};

TEST_F(TheHealthPage, CountsEachRequestBelowItsStation)
{
    EXPECT_THAT(text("advice"), HasSubstr("As soon as a line is open"));
    options.stations = {1, 2};
    watch({"R_W:100", "2/T:3"});
    open();
    ASSERT_TRUE(waitUntil([this]() { return count("read 2/T:3", HealthModel::good) > 5; }));
    EXPECT_EQ(cell("station 1", HealthModel::good), cell("read 1/R_W:100", HealthModel::good));
    EXPECT_EQ(cell("station 2", HealthModel::sent), cell("read 2/T:3", HealthModel::sent));
    EXPECT_THAT(remarkBelow("station 2"), StartsWith("answers after "));
    EXPECT_EQ(cell("read 2/T:3", HealthModel::badCrc), "");
    EXPECT_TRUE(table->isColumnHidden(HealthModel::others));
    EXPECT_THAT(text("advice"), StartsWith("\u2713 Each request of the last minute"));
    EXPECT_THAT(text("brief"), HasSubstr("link good"));
    EXPECT_THAT(text("linkHistory"), HasSubstr("\u2713 good for "));
    const auto* const plot = page.findChild<CyclePlot*>("cycleTimes");
    EXPECT_GT(plot->itemList(QwtPlotItem::Rtti_PlotHistogram).size(), 0);
}

TEST_F(TheHealthPage, CallsAClosedLineGoodNoMore)
{
    watch({"R_W:100"});
    open();
    ASSERT_TRUE(waitUntil([this]() { return advises("\u2713 Each request"); }));
    desk.close();
    EXPECT_TRUE(waitUntil([this]() { return advises("The link is not good at present"); }));
}

TEST_F(TheHealthPage, SaysThatNothingComesAtAll)
{
    watch({"R_W:100"});
    openWithoutWaiting();
    stopController(true);
    EXPECT_TRUE(waitUntil([this]() { return advises("\u26a0 No byte comes."); }));
    stopController(false);
    EXPECT_GE(count("read 1/R_W:100", HealthModel::noByte), 3);
    EXPECT_THAT(text("linkHistory"), HasSubstr("\u2717 failing"));
}

TEST_F(TheHealthPage, NamesTheStationThatAloneIsSilent)
{
    watch({"R_W:100", "3/R_W:5"});
    openWithoutWaiting();
    EXPECT_TRUE(waitUntil([this]() { return advises("Only station 3 is silent."); }));
    // The echo before it is not answered, and so it does not go out at first.
    EXPECT_FALSE(table->isColumnHidden(HealthModel::notSent));
    EXPECT_GT(count("read 3/R_W:5", HealthModel::notSent), 0);
    EXPECT_FALSE(table->isColumnHidden(HealthModel::abandoned));
    EXPECT_NE(remarkBelow("read 3/R_W:5"), "there is none");
}

TEST_F(TheHealthPage, NamesTheExceptionsOfARequest)
{
    options.faults = {"exception:2=100%"};
    watch({"R_W:100"});
    openWithoutWaiting();
    EXPECT_TRUE(waitUntil([this]() {
        return advises("read 1/R_W:100 is refused with exception 2 (illegal data address)");
    }));
    EXPECT_THAT(cell("read 1/R_W:100", HealthModel::exceptions),
                HasSubstr("\u00d7 2 (illegal data address)"));
}

// What is beside the list of pages in a window of 1280 x 800.
TEST_F(TheHealthPage, ShowsItsWordsInFull)
{
    page.resize(1100, 700);
    options.faults = {"exception:2=every:2", "flip=every:3"};
    watch({"R_W:100", "R_D:2000"});
    openWithoutWaiting();
    ASSERT_TRUE(waitUntil([this]() {
        return count("station 1", HealthModel::badCrc) > 10 &&
               cell("read 1/R_W:100", HealthModel::exceptions).size() > 20;
    }));
    EXPECT_THAT(cell("station 1", HealthModel::exceptions), testing::EndsWith(" \u00d7 2"));
    EXPECT_THAT(remarkBelow("station 1"), StartsWith("answers after "));
    const QAbstractItemView& view = *table;
    for (int row = 0; row < table->model()->rowCount(); ++row)
        for (int column = 0; column < HealthModel::others; ++column) { // which has what is left
            const QModelIndex index = table->model()->index(row, column);
            const QRect shown = table->visualRect(index); // of all that it spans
            EXPECT_TRUE(table->isColumnHidden(column) ||
                        view.sizeHintForIndex(index).width() <= shown.width())
                << index.data().toString().toStdString();
        }
}

TEST_F(TheHealthPage, CallsNoLineGoodOnWhichAReplyWasBad)
{
    options.faults = {"exception:2=every:30"};
    watch({"R_W:100"});
    openWithoutWaiting();
    EXPECT_TRUE(waitUntil([this]() { return advises("requests had no good reply"); }))
        << text("advice");
}

TEST_F(TheHealthPage, SaysThatNothingSoundComes)
{
    options.faults = {"flip=100%"};
    watch({"R_W:100"});
    openWithoutWaiting();
    EXPECT_TRUE(waitUntil([this]() { return advises("another speed or parity?"); }));
}

TEST_F(TheHealthPage, KnowsAnAdapterThatEchoes)
{
    options.faults = {"echo=100%"};
    watch({"R_W:100"});
    openWithoutWaiting();
    EXPECT_TRUE(waitUntil([this]() { return advises("sends back what it is sent"); }));
}

TEST_F(TheHealthPage, CopiesAllCountersAsTheToolPrintsThem)
{
    watch({"R_W:100"});
    open();
    auto* const copy = page.findChild<QPushButton*>("copy");
    ASSERT_TRUE(waitUntil([copy]() { return copy->isEnabled(); }));
    QTest::mouseClick(copy, Qt::LeftButton);
    const std::string text = QApplication::clipboard()->text().toStdString();
    EXPECT_THAT(text, StartsWith("Link statistics over "));
    EXPECT_THAT(text, HasSubstr("read  1#R_W100(1): "));
}

TEST_F(TheHealthPage, CountsAnewOnAnotherLine)
{
    watch({"R_W:100"});
    open();
    ASSERT_TRUE(waitUntil([this]() { return count("read 1/R_W:100", HealthModel::good) > 0; }));
    LineSetup nowhere;
    nowhere.port = "/dev/there-is-none";
    desk.open(nowhere);
    EXPECT_EQ(table->model()->rowCount(), 0);
    EXPECT_THAT(text("advice"), HasSubstr("As soon as a line is open"));
    EXPECT_EQ(text("brief"), "Nothing has been counted yet.");
}

TEST_F(TheHealthPage, HoldsTheLinkOfAnotherProjectForNothingOfThisOne)
{
    watch({"R_W:100"});
    open();
    ASSERT_TRUE(waitUntil([this]() { return text("linkHistory").find("good for") < 100; }));
    desk.beginProject(desk.tags().items);
    const auto isOfThisOne = testing::AllOf(HasSubstr("closed for"), Not(HasSubstr("good for")));
    waitUntil([&]() { return testing::Value(text("linkHistory"), isOfThisOne); });
    EXPECT_THAT(text("linkHistory"), isOfThisOne);
}

} // namespace

} // namespace dov417
