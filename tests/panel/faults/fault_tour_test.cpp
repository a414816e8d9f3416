// What is done to the controller at the page of faults, and what each other page shows of it:
// requests that are sent again, given up, and answered again; a port that goes and comes back.
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <algorithm>
#include <numeric>

#include "panel/faults/faults_page.h"
#include "panel/frames/line_page.h"
#include "panel/frames/wire_page.h"
#include "panel/health/health_page.h"
#include "panel/main_window.h"
#include "panel/plan/plan_page.h"
#include "panel/recipes/recipes_page.h"
#include "panel/trends/trend_stack.h"
#include "panel/trends/trends_page.h"
#include "panel/values/lamps_page.h"
#include "panel/values/values_page.h"
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ATourOfAFault : public PanelWorld {
protected:
    ATourOfAFault()
    {
        window.resize(1280, 800);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        // Given up soon, and asked again soon.
        setup.simulated = true;
        setup.line = "115200,8,EVEN,1";
        setup.timeoutMs = 100;
        setup.maxProbeMs = 150;
        options.set = {"R_W:100=7", "M_bit:1.0=1"};
    }
    void begin()
    {
        watch({"R_W:100", "M_bit:1.0"});
        desk.open(setup, options);
        ASSERT_TRUE(
            waitUntil([this]() { return allAre(ValueState::good) && desk.controllerReport(); }));
        onPage<TrendsPage>().showValues({desk.tags().values.front().address});
    }
    // With Ctrl and its number; its widget.
    template <typename Page>
    Page& onPage() const
    {
        auto* const page = window.findChild<Page*>();
        const auto place = std::find(window.pages().begin(), window.pages().end(), page);
        const auto number = static_cast<int>(place - window.pages().begin()) + 1;
        QTest::keyClick(const_cast<MainWindow*>(&window),
                        static_cast<Qt::Key>(Qt::Key_0 + number % 10), Qt::ControlModifier);
        EXPECT_TRUE(page->isVisible());
        return *page;
    }
    void setRate(const char* kind, const char* percent)
    {
        auto* const rate = onPage<FaultsPage>().findChild<QDoubleSpinBox*>(QStringLiteral("rate-") +
                                                                           QLatin1String(kind));
        rate->setFocus();
        rate->selectAll();
        QTest::keyClicks(rate, percent);
        QTest::keyClick(rate, Qt::Key_Return);
    }
    static std::string cell(const QTableView& table, int row, int column)
    {
        return table.model()->index(row, column).data().toString().toStdString();
    }
    // On each page that shows the values: they are as they were read last, and of this standing.
    void expectOnEachPage(const char* symbol, const char* word) const
    {
        const std::string standing = std::string(symbol) + " " + word;
        const auto& values = *onPage<ValuesPage>().findChild<QTableView*>("values");
        EXPECT_EQ(cell(values, 0, ValuesModel::value), "7");
        EXPECT_EQ(cell(values, 0, ValuesModel::state), standing);
        const auto& lamps = *onPage<LampsPage>().findChild<QTableView*>("lamps");
        EXPECT_EQ(lamps.model()->index(0, 0).data(Qt::AccessibleTextRole).toString().toStdString(),
                  "1/M_bit:1.0 (1/M_bit:1.0): on, " + standing);
        const auto& recipe = *onPage<RecipesPage>().findChild<QTableView*>("recipe");
        EXPECT_TRUE(waitUntil([&]() {
            return cell(recipe, 0, RecipeModel::age).find(symbol) == 0;
        })) << cell(recipe, 0, RecipeModel::age);
        EXPECT_EQ(cell(recipe, 0, RecipeModel::controller), "7");
        const auto& readout = *onPage<TrendsPage>().findChild<QTableView*>("trendReadout");
        EXPECT_TRUE(waitUntil([&]() { return cell(readout, 0, TrendReadout::state) == standing; }));
    }
    std::string faultSentence() const
    {
        return onPage<FaultsPage>().findChild<QLabel*>("faultSentence")->text().toStdString();
    }
    std::string lineSentence() const
    {
        return window.findChild<QLabel*>("lineSentence")->text().toStdString();
    }
    // By its requests, once there is one.
    std::string plan() const
    {
        const auto& page = onPage<PlanPage>();
        EXPECT_TRUE(waitUntil([&page]() { return !page.isBusy(); }));
        const auto texts = shownIn(*page.findChild<QTableView*>("planRequests"), 1);
        return std::accumulate(
            texts.begin(), texts.end(), std::string(),
            [](const std::string& all, const std::string& each) { return all + each + ";"; });
    }
    // What the trends know of a moment, at cursor A.
    std::string trendAt(TrendTime at) const
    {
        const auto& page = onPage<TrendsPage>();
        page.findChild<TrendStack*>()->setCursor(0, at);
        return cell(*page.findChild<QTableView*>("trendReadout"), 0, TrendReadout::atA);
    }
    static TrendTime now()
    {
        return toTrendTime(Clock::now());
    }
    std::string shownState() const
    {
        return cell(*onPage<ValuesPage>().findChild<QTableView*>("values"), 0, ValuesModel::state);
    }
    std::string counter(HealthModel::Column column) const
    {
        return cell(*onPage<HealthPage>().findChild<QTableView*>("counters"), 0, column);
    }
    std::string health(const char* label) const
    {
        return onPage<HealthPage>().findChild<QLabel*>(QLatin1String(label))->text().toStdString();
    }
    std::string share(WireUse use) const
    {
        const auto& page = onPage<WirePage>();
        QTest::keyClick(page.findChild<WireView*>("wire"), Qt::Key_0); // all that is kept
        return cell(*page.findChild<QTableView*>("uses"), static_cast<int>(use),
                    WireSharesModel::inAll);
    }
    // What the page of the line has of this.
    int framesWith(const char* words) const
    {
        const auto& model = *onPage<LinePage>().findChild<QTableView*>("frames")->model();
        int frames = 0;
        for (int row = 0; row < model.rowCount(); ++row)
            frames += model.index(row, LineModel::meaning).data().toString().contains(words);
        return frames;
    }

    MainWindow window{desk};
};

TEST_F(ATourOfAFault, ShowsRepetitionGivingUpAndRecoveryOnEachPage)
{
    begin();
    expectOnEachPage("\u2713", "good");
    EXPECT_THAT(faultSentence(), StartsWith("Nothing is wrong."));
    const std::string planned = plan();
    EXPECT_EQ(planned, "1/M_W:1;1/R_W:100;");
    ASSERT_TRUE(waitUntil([this]() { return !counter(HealthModel::sent).empty(); }));
    EXPECT_EQ(counter(HealthModel::abandoned), "");
    // On a busy machine a reply may be too late without the fault.
    const std::string timeOuts = share(WireUse::timeOuts);
    const std::string retries = share(WireUse::retries);
    const int failed = framesWith("no byte came");

    setRate("silence", "100");
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::old); }));
    // Now: what is asked shortly before the end of the silence may be answered after it.
    const TrendTime silent = now();
    expectOnEachPage("\u25f7", "old");
    EXPECT_THAT(faultSentence(), StartsWith("Requests have been given up: their values are old."));
    EXPECT_EQ(plan(), planned);
    EXPECT_TRUE(waitUntil([this]() { return !counter(HealthModel::abandoned).empty(); }));
    EXPECT_NE(counter(HealthModel::retries), "");
    EXPECT_NE(counter(HealthModel::noByte), "");
    EXPECT_THAT(health("advice"), Not(StartsWith("\u2713")));
    EXPECT_TRUE(waitUntil(
        [this]() { return health("linkHistory").find("\u2717 failing") != std::string::npos; }));
    EXPECT_TRUE(waitUntil([&]() { return share(WireUse::timeOuts) != timeOuts; }));
    EXPECT_TRUE(waitUntil([&]() { return share(WireUse::retries) != retries; }));
    EXPECT_TRUE(waitUntil([&]() { return framesWith("no byte came") > failed + 2; }));
    EXPECT_THAT(lineSentence(), HasSubstr("not every request is answered"));

    setRate("silence", "0");
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    expectOnEachPage("\u2713", "good");
    EXPECT_TRUE(
        waitUntil([this]() { return lineSentence() == "The simulated controller answers."; }));
    EXPECT_TRUE(waitUntil([this]() { return faultSentence().find("Nothing is wrong.") == 0; }));
    EXPECT_EQ(plan(), planned);
    // What was is not forgotten.
    EXPECT_TRUE(waitUntil([&]() { return trendAt(silent) == "request failed"; }))
        << trendAt(silent);
    EXPECT_NE(counter(HealthModel::abandoned), "");
    EXPECT_THAT(health("linkHistory"), HasSubstr("\u2713 good"));
    EXPECT_GT(framesWith("no byte came"), failed + 2);
}

TEST_F(ATourOfAFault, ShowsACableThatIsPulledAndPluggedInOnEachPage)
{
    begin();
    expectOnEachPage("\u2713", "good");
    const std::string planned = plan();
    const auto useCable = [this]() {
        QTest::mouseClick(onPage<FaultsPage>().findChild<QPushButton*>("cable"), Qt::LeftButton);
    };
    useCable();
    ASSERT_TRUE(waitUntil(
        [this]() { return allAre(ValueState::old) && desk.state().phase == LinePhase::away; }));
    expectOnEachPage("\u25f7", "old");
    EXPECT_THAT(faultSentence(), StartsWith("The cable is pulled: the port is gone"));
    EXPECT_THAT(lineSentence(), HasSubstr("its cable is pulled."));
    EXPECT_EQ(plan(), planned);
    EXPECT_TRUE(waitUntil(
        [this]() { return health("linkHistory").find("port away") != std::string::npos; }));
    EXPECT_TRUE(waitUntil([this]() { return share(WireUse::noLine) != "0.00 ms"; }))
        << "it is away all the while";
    const TrendTime pulled = now();
    const int frames = framesWith("");
    EXPECT_GT(frames, 0);

    useCable();
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    expectOnEachPage("\u2713", "good");
    EXPECT_EQ(lineSentence(), "The simulated controller answers.");
    EXPECT_TRUE(waitUntil([this]() { return faultSentence().find("Nothing is wrong.") == 0; }));
    EXPECT_EQ(plan(), planned);
    EXPECT_TRUE(waitUntil([&]() { return framesWith("") > frames; }));
    EXPECT_NE(share(WireUse::noLine), "0.00 ms");
    // The last request was under way then, or none was.
    EXPECT_TRUE(waitUntil([&]() {
        const std::string known = trendAt(pulled);
        return known == "request failed" || known == "line not open";
    })) << trendAt(pulled);
}

} // namespace

} // namespace dov417
