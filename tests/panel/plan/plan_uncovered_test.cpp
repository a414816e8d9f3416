// What no request reads, what two of them read, and what is past 125 words, on the page of the
// plan. No plan of the driver's own has either of the first with the tags of today; whoever sees a
// value there is to know that it never comes.
#include <QApplication>
#include <QLabel>
#include <QTableView>
#include <qwt_plot_canvas.h>
#include <qwt_plot_marker.h>

#include "panel/plan/plan_page.h"
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

class APlanWithHoles : public PanelWorld {
protected:
    APlanWithHoles()
    {
        watch({"R_D:30", "R_D:32", "2/R_W:5"});
        PlannedRequest request = PlannedRequest();
        request.station = 1;
        request.regName = "R_W";
        request.address = 31;
        request.length = 2;
        report.plan.requests = {request};
        report.uncovered = {{1, "R_D", 30, 1}, {1, "R_D", 33, 1}, {2, "R_W", 5, 1}};
        report.divided = {{1, "R_D", 30, 2}};
        GapOutcome outcome = GapOutcome();
        outcome.lastGap = -1;
        outcome.requests = 1;
        outcome.uncoveredWords = 3;
        report.outcomes = {outcome};
        page.resize(1150, 700);
        page.show();
        EXPECT_TRUE(waitUntil([this]() { return !page.isBusy(); }));
        map = page.findChild<QTableView*>("planMap");
        notes = page.findChild<QLabel*>("planNotes");
        EXPECT_FALSE(notes->isVisible()) << "the driver's own plan has no holes";
    }
    QImage cell(int row, int column) const
    {
        const QRect place = map->visualRect(map->model()->index(row, column));
        return map->viewport()->grab(place).toImage();
    }
    // Pixels of the cell's middle, without its frame, for which this is so.
    template <typename Condition>
    static int count(const QImage& cell, Condition isSo)
    {
        int count = 0;
        for (int y = cell.height() / 4; y < cell.height() * 3 / 4; ++y)
            for (int x = cell.width() / 4; x < cell.width() * 3 / 4; ++x)
                count += isSo(cell.pixel(x, y)) ? 1 : 0;
        return count;
    }
    static int inked(const QImage& cell)
    {
        return count(cell, [](QRgb pixel) {
            return pixel != QApplication::palette().color(QPalette::Base).rgb();
        });
    }
    static int filled(const QImage& cell)
    {
        return count(cell, [](QRgb pixel) {
            return pixel == QApplication::palette().color(QPalette::Highlight).rgb();
        });
    }

    PlanPage page{desk};
    PlanReport report;
    QTableView* map = nullptr;
    QLabel* notes = nullptr;
};

TEST_F(APlanWithHoles, SaysWhatNoRequestReadsAndWhatTwoRead)
{
    page.showPlan(desk.tags().values, report);
    EXPECT_TRUE(notes->isVisible());
    EXPECT_EQ(notes->text().toStdString(), "\u2717 No request reads 1/R_W:30.\n"
                                           "\u2717 No request reads 1/R_W:33.\n"
                                           "\u2717 No request reads 2/R_W:5.\n"
                                           "And 1 more.");
    report.uncovered.resize(1);
    page.showPlan(desk.tags().values, report);
    EXPECT_THAT(notes->text().toStdString(),
                EndsWith("\n\u26a0 Two requests read the value at 1/R_W:30..31: its words are not "
                         "of one moment."));
    EXPECT_THAT(shownIn(*page.findChild<QTableView*>("planGaps"), 3),
                ElementsAre(EndsWith("\u2717 3 word(s) not read")));
}

TEST_F(APlanWithHoles, CrossesOutEachWordThatIsNotRead)
{
    page.showPlan(desk.tags().values, report);
    EXPECT_EQ(inked(cell(0, 29)), 0) << "nobody watches it";
    EXPECT_GT(filled(cell(0, 31)), 20) << "one that is read";
    for (const auto& [row, column] : {std::pair(0, 30), {1, 1}, {2, 5}}) {
        EXPECT_GT(inked(cell(row, column)), 10) << "the cross itself, and not its frame alone";
        EXPECT_EQ(filled(cell(row, column)), 0) << "nobody is to take it for one that is read";
    }
    map->setCurrentIndex(map->model()->index(1, 1));
    EXPECT_THAT(page.findChild<QLabel*>("planWord")->text().toStdString(),
                StartsWith("1/R_W:33: \u2717 watched, and no request reads it (1/R_D:32"));
}

TEST_F(APlanWithHoles, PutsASignIntoEachWordThatAStrictControllerDoesNotAnswer)
{
    watch({"R_W:0..127"});
    ASSERT_TRUE(waitUntil([&]() { return !page.isBusy(); }));
    const int plain = filled(cell(3, 28));
    EXPECT_GT(plain, 20) << "the 125th";
    for (const int column : {29, 30}) { // the 128th ends the request, and is narrower
        EXPECT_LT(filled(cell(3, column)), plain);
        EXPECT_EQ(inked(cell(3, column)), inked(cell(3, 28))) << "it is watched all the same";
    }
}

// The gap in use may be longer than all that makes a difference, or none at all.
TEST_F(APlanWithHoles, NamesTheGapInUseWithinThePlot)
{
    watch({"R_W:0", "R_W:5"});
    const auto* const plot = page.findChild<GapPlot*>();
    for (const int gap : {0, 3, 8, 15, 20, 128}) {
        desk.setGap(gap);
        ASSERT_TRUE(waitUntil([&]() { return !page.isBusy(); }));
        QApplication::processEvents();
        for (QwtPlotItem* const item : plot->itemList(QwtPlotItem::Rtti_PlotMarker)) {
            const auto* const mark = dynamic_cast<const QwtPlotMarker*>(item);
            const double at = plot->transform(mark->xAxis(), mark->xValue());
            const double width = mark->label().textSize().width() + mark->spacing();
            const bool isLeft = mark->labelAlignment().testFlag(Qt::AlignLeft);
            const bool isRight = mark->labelAlignment().testFlag(Qt::AlignRight);
            const double begin = isLeft ? at - width : isRight ? at : at - width / 2;
            EXPECT_GE(begin, 0) << gap << mark->label().text().toStdString();
            EXPECT_LE(begin + width, plot->canvas()->width())
                << gap << mark->label().text().toStdString();
        }
    }
}

} // namespace

} // namespace dov417
