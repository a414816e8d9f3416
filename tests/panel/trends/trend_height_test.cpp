// The height of a plot, by keys as by dragging.
#include <QTest>

#include "made_views.h"
#include "panel/trends/trends_page.h"
#include "panel_world.h"

namespace dov417 {

namespace {

class TheHeightOfAPlot : public PanelWorld {
protected:
    TheHeightOfAPlot()
    {
        page.resize(1160, 740);
        page.show();
        page.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&page));
        stack = page.findChild<TrendStack*>();
    }
    void showAll(const std::vector<std::string>& texts)
    {
        watch(texts);
        open();
        std::vector<Address> addresses;
        for (const PanelValue& value : desk.tags().values)
            addresses.push_back(value.address);
        page.showValues(addresses);
        const Clock::time_point since = Clock::now();
        EXPECT_TRUE(waitUntil([&]() {
            const View* const view = desk.book().find(addresses.front());
            return view && view->lastGood > since;
        }));
        press(Qt::Key_Space); // nothing follows the values by itself from now on
        draw();
    }
    void draw() const
    {
        EXPECT_TRUE(waitUntil([this]() { return stack->draw(); }));
    }
    QwtPlot& plot() const
    {
        return *stack->plots().front();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(plot().canvas(), key, modifiers);
        draw();
    }
    struct Height {
        double low;
        double high;
    };
    Height height(QwtPlot::Axis axis = QwtPlot::yLeft) const
    {
        return {plot().axisScaleDiv(axis).lowerBound(), plot().axisScaleDiv(axis).upperBound()};
    }
    static void expectHeight(const Height& is, double low, double high)
    {
        EXPECT_NEAR(is.low, low, 1e-6 * (high - low));
        EXPECT_NEAR(is.high, high, 1e-6 * (high - low));
    }
    void mouse(QEvent::Type type, const QPoint& at) const
    {
        QWidget* const canvas = plot().canvas();
        QMouseEvent event(type, at, canvas->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QApplication::sendEvent(canvas, &event);
    }
    // The middle half of the plot's height.
    void dragTheMiddle() const
    {
        const QSize size = plot().canvas()->size();
        const QPoint from(size.width() / 4, size.height() / 4);
        const QPoint to(size.width() / 2, size.height() * 3 / 4);
        mouse(QEvent::MouseButtonPress, from);
        mouse(QEvent::MouseMove, (from + to) / 2);
        mouse(QEvent::MouseMove, to);
        mouse(QEvent::MouseButtonRelease, to);
        draw();
    }

    TrendsPage page{desk};
    TrendStack* stack = nullptr;
};

TEST_F(TheHeightOfAPlot, IsChosenWithKeysAndFollowsTheValuesAgainWithZero)
{
    options.set = {"R_W:100=1000"};
    showAll({"R_W:100"});
    const Height all = height();
    const double middle = (all.low + all.high) / 2;
    const double half = (all.high - all.low) / 2;
    ASSERT_GT(half, 0);
    press(Qt::Key_Up, Qt::ControlModifier);
    expectHeight(height(), middle - half / 2, middle + half / 2);
    press(Qt::Key_Up, Qt::ShiftModifier);
    expectHeight(height(), middle - 0.4 * half, middle + 0.6 * half);
    press(Qt::Key_Down, Qt::ShiftModifier);
    press(Qt::Key_Down, Qt::ControlModifier);
    expectHeight(height(), all.low, all.high);
    press(Qt::Key_Down, Qt::ControlModifier);
    expectHeight(height(), middle - 2 * half, middle + 2 * half);
    press(Qt::Key_0);
    expectHeight(height(), all.low, all.high);
}

TEST_F(TheHeightOfAPlot, EndsWhereNumbersHaveNoFinerSteps)
{
    options.set = {"R_W:100=1000"};
    showAll({"R_W:100"});
    for (int i = 0; i < 200; ++i)
        QTest::keyClick(plot().canvas(), Qt::Key_Up, Qt::ControlModifier);
    draw();
    EXPECT_LT(height().low, height().high);
    for (int i = 0; i < 1000; ++i)
        QTest::keyClick(plot().canvas(), Qt::Key_Down, Qt::ControlModifier);
    draw();
    EXPECT_TRUE(std::isfinite(height().high - height().low));
    EXPECT_LT(height().low, height().high);
}

TEST_F(TheHeightOfAPlot, OfBitsStaysThatOfTheirLanes)
{
    options.set = {"R_W:100=1000"};
    showAll({"M_bit:1.0", "R_W:100"});
    ASSERT_EQ(stack->plots().size(), 1U);
    const bool areBitsLeft = plot().axisTitle(QwtPlot::yLeft).text() == QLatin1String("on / off");
    const auto bits = areBitsLeft ? QwtPlot::yLeft : QwtPlot::yRight;
    const auto numbers = areBitsLeft ? QwtPlot::yRight : QwtPlot::yLeft;
    const Height lanes = height(bits);
    const Height before = height(numbers);
    press(Qt::Key_Up, Qt::ControlModifier);
    press(Qt::Key_Up, Qt::ShiftModifier);
    expectHeight(height(bits), lanes.low, lanes.high);
    EXPECT_NEAR(height(numbers).high - height(numbers).low, (before.high - before.low) / 2, 1e-6);
}

TEST_F(TheHeightOfAPlot, IsDraggedAgainAfterItWasDragged)
{
    options.set = {"R_W:100=1000"};
    showAll({"R_W:100"});
    const Height all = height();
    dragTheMiddle();
    const Height once = height();
    EXPECT_LT(once.high - once.low, 0.6 * (all.high - all.low));
    dragTheMiddle();
    EXPECT_LT(height().high - height().low, 0.6 * (once.high - once.low));
}

} // namespace

} // namespace dov417
