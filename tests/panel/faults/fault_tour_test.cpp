// A fault that is switched on at the page of faults, and what the other pages show of it: requests
// that are sent again, given up, and answered again.
#include <QDoubleSpinBox>
#include <QTableView>
#include <QTest>

#include "panel/faults/faults_page.h"
#include "panel/frames/line_page.h"
#include "panel/frames/wire_page.h"
#include "panel/health/health_page.h"
#include "panel/main_window.h"
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
        setup.timeoutMs = 60;
        setup.maxProbeMs = 150;
        options.set = {"R_W:100=7"};
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
    watch({"R_W:100"});
    desk.open(setup, options);
    ASSERT_TRUE(
        waitUntil([this]() { return allAre(ValueState::good) && desk.controllerReport(); }));
    EXPECT_EQ(shownState(), "\u2713 good");
    ASSERT_TRUE(waitUntil([this]() { return !counter(HealthModel::sent).empty(); }));
    EXPECT_EQ(counter(HealthModel::abandoned), "");
    EXPECT_EQ(share(WireUse::timeOuts), "0.00 ms");
    EXPECT_EQ(framesWith("no byte came"), 0);

    setRate("silence", "100");
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::old); }));
    EXPECT_EQ(shownState(), "\u25f7 old");
    EXPECT_EQ(cell(*onPage<ValuesPage>().findChild<QTableView*>("values"), 0, ValuesModel::value),
              "7");
    EXPECT_TRUE(waitUntil([this]() { return !counter(HealthModel::abandoned).empty(); }));
    EXPECT_NE(counter(HealthModel::retries), "");
    EXPECT_NE(counter(HealthModel::noByte), "");
    EXPECT_THAT(health("advice"), Not(StartsWith("\u2713")));
    EXPECT_TRUE(waitUntil(
        [this]() { return health("linkHistory").find("\u2717 failing") != std::string::npos; }));
    EXPECT_TRUE(waitUntil([this]() { return share(WireUse::timeOuts) != "0.00 ms"; }));
    EXPECT_TRUE(waitUntil([this]() { return share(WireUse::retries) != "0.00 ms"; }));
    EXPECT_TRUE(waitUntil([this]() { return framesWith("no byte came") > 2; }));
    EXPECT_THAT(window.findChild<QLabel*>("lineSentence")->text().toStdString(),
                HasSubstr("not every request is answered"));

    setRate("silence", "0");
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    EXPECT_EQ(shownState(), "\u2713 good");
    EXPECT_TRUE(waitUntil([this]() {
        return window.findChild<QLabel*>("lineSentence")->text() ==
               QLatin1String("The simulated controller answers.");
    }));
    // What was is not forgotten.
    EXPECT_NE(counter(HealthModel::abandoned), "");
    EXPECT_THAT(health("linkHistory"), HasSubstr("\u2713 good"));
    EXPECT_GT(framesWith("no byte came"), 2);
    EXPECT_EQ(desk.book().find(desk.tags().values.front().address)->value.front(), 7);
}

} // namespace

} // namespace dov417
