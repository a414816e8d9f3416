// Plots of which most wait for their turn to be drawn.
#include <QApplication>
#include <QTest>
#include <qwt_date_scale_draw.h>
#include <qwt_scale_widget.h>

#include "made_trends.h"
#include "panel/pictures.h"
#include "panel/trends/trends_page.h"
#include "panel_world.h"

namespace dov417 {

namespace {

class ManyTrendPlots : public PanelWorld {
protected:
    ManyTrendPlots() : light(QApplication::palette())
    {
        watch({"R_W:0..39"});
        page.resize(1160, 740);
        stack = page.findChild<TrendStack*>();
    }
    ~ManyTrendPlots() override
    {
        QApplication::setPalette(light);
    }
    // Each value in a plot of its own.
    void plotAll()
    {
        OrderedJson plots = OrderedJson::array();
        for (const PanelValue& value : desk.tags().values)
            plots.push_back(
                {{"values", {{{"name", value.label.name}, {"address", value.label.address}}}}});
        page.prepared({{"plots", plots}})();
    }
    void show()
    {
        page.show();
        page.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&page));
    }
    const TrendPlot& last() const
    {
        return *stack->plots().back();
    }
    QColor groundOfTheLast() const
    {
        const QImage picture = stack->plots().back()->canvas()->grab().toImage();
        return picture.pixelColor(picture.rect().topLeft() + QPoint(2, 2));
    }

    const QPalette light;
    TrendsPage page{desk};
    TrendStack* stack = nullptr;
};

// It stands still: nothing else comes that would have it drawn.
TEST_F(ManyTrendPlots, AreDrawnAlsoWhereTheFirstTakesMoreThanOneTurn)
{
    constexpr int events = 2 * static_cast<int>(TrendStack::eventsPerTurn) + 1;
    TrendHistory history;
    const TrendClock clock;
    TrendGroup group;
    group.values = {trendValueOf(desk.tags().values.front())};
    for (int i = 0; i < events; ++i)
        tell(history, wordView(group.values.front().at, i % 100, i * 1e-3, i * 1e-3));
    TrendStack standing(history, clock);
    standing.resize(600, 400);
    standing.show();
    standing.arrange([](TrendView& view) { view.choose(second(0), second(events * 1e-3)); });
    standing.setPlots({group});
    ASSERT_TRUE(waitUntil([&]() { return standing.draw(); }));
    EXPECT_GT(standing.plots().front()->curves().front()->dataSize(), 100U);
}

TEST_F(ManyTrendPlots, ShowNoTimeBeforeTheyAreDrawn)
{
    plotAll(); // unseen, so nothing is drawn
    QWidget& scale = *stack->plots().back()->axisWidget(QwtPlot::xBottom);
    const auto hasTimes = [&scale]() {
        const QImage picture = scale.grab().toImage();
        const QColor ground = picture.pixelColor(0, 0);
        // Below the line, which is there always.
        for (int y = scale.fontMetrics().height() / 2; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixelColor(x, y) != ground)
                    return true;
        return false;
    };
    EXPECT_FALSE(hasTimes()) << "of 1970";
    show();
    ASSERT_TRUE(waitUntil([this]() { return stack->draw(); }));
    EXPECT_TRUE(hasTimes());
    const auto* const times =
        static_cast<const QwtDateScaleDraw*>(last().axisScaleDraw(QwtPlot::xBottom));
    const double begin = last().axisScaleDiv(QwtPlot::xBottom).lowerBound();
    EXPECT_GT(times->toDateTime(begin).date().year(), 1970);
}

TEST_F(ManyTrendPlots, AreDarkAsSoonAsTheDesktopIs)
{
    plotAll();
    show();
    ASSERT_TRUE(waitUntil([this]() { return stack->draw(); }));
    EXPECT_EQ(groundOfTheLast(), light.color(QPalette::Base));
    const QPalette dark = darkPalette();
    QApplication::setPalette(dark);
    EXPECT_EQ(groundOfTheLast(), dark.color(QPalette::Base)) << "its turn has not come";
}

} // namespace

} // namespace dov417
