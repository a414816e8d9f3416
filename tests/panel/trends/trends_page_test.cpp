#include "panel/trends/trends_page.h"

#include <QApplication>
#include <QDir>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QTest>
#include <fstream>
#include <qwt_scale_draw.h>
#include <qwt_scale_widget.h>
#include <set>
#include <sstream>

#include "answering.h"
#include "panel/main_window.h"
#include "panel/trends/trend_style.h"
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class TheTrendsPage : public PanelWorld {
protected:
    void show()
    {
        page = std::make_unique<TrendsPage>(desk);
        QObject::connect(page.get(), &PanelPage::told, page.get(),
                         [this](const QString& text) { told = text.toStdString(); });
        QObject::connect(page.get(), &PanelPage::settingsChanged, page.get(),
                         [this]() { ++changes; });
        page->resize(1160, 740);
        page->show();
        page->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(page.get()));
        stack = page->findChild<TrendStack*>();
        readout = page->findChild<QTableView*>("trendReadout")->model();
    }
    // Watches, opens, and shows all of it.
    void showAll(const std::vector<std::string>& texts)
    {
        watch(texts);
        show();
        open();
        showWatched();
    }
    void showWatched()
    {
        std::vector<Address> addresses;
        for (const PanelValue& value : desk.tags().values)
            addresses.push_back(value.address);
        page->showValues(addresses);
    }
    void draw() const
    {
        EXPECT_TRUE(waitUntil([this]() { return stack->draw(); }));
    }
    QWidget* canvas(std::size_t plot = 0) const
    {
        return stack->plots().at(plot)->canvas();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(canvas(), key, modifiers);
    }
    // Where in the first plot's canvas a time is.
    QPoint placeOf(TrendTime at) const
    {
        const QwtPlot& plot = *stack->plots().front();
        const double x = plot.axisScaleDiv(QwtPlot::xBottom).lowerBound() +
                         static_cast<double>(at - stack->view().from()) / 1000;
        return {static_cast<int>(plot.transform(QwtPlot::xBottom, x)), canvas()->height() / 2};
    }
    std::string cell(int row, TrendReadout::Column column) const
    {
        return readout->index(row, column).data().toString().toStdString();
    }
    std::vector<std::string> column(TrendReadout::Column which) const
    {
        std::vector<std::string> texts;
        for (int row = 0; row < readout->rowCount(); ++row)
            texts.push_back(cell(row, which));
        return texts;
    }
    std::vector<std::string> plots() const
    {
        return column(TrendReadout::plot);
    }
    void refresh() const
    {
        static_cast<TrendReadout*>(const_cast<QAbstractItemModel*>(readout))->refresh();
    }
    static TrendTime now()
    {
        return toTrendTime(Clock::now());
    }
    // Does the curve of that number pass through this column of the first plot?
    bool isDrawnAt(int curve, int x) const
    {
        const QImage image = canvas()->grab().toImage();
        const QRgb colour = trendColour(curve, QApplication::palette()).rgb();
        for (int y = 0; y < image.height(); ++y)
            if (image.pixel(x, y) == colour)
                return true;
        return false;
    }
    static std::string contentOf(const QString& file)
    {
        std::ifstream stream(file.toStdString());
        std::stringstream content;
        content << stream.rdbuf();
        return content.str();
    }
    // Each value has been confirmed since, and that was told.
    void waitForConfirmation() const
    {
        const Clock::time_point since = Clock::now();
        EXPECT_TRUE(waitUntil([&]() {
            for (const PanelValue& value : desk.tags().values)
                if (const View* const view = desk.book().find(value.address);
                    !view || view->lastGood <= since)
                    return false;
            return true;
        }));
    }
    void mouse(QEvent::Type type, const QPoint& at, Qt::MouseButton button,
               Qt::KeyboardModifiers modifiers) const
    {
        QMouseEvent event(type, at, canvas()->mapToGlobal(at), button, button, modifiers);
        QApplication::sendEvent(canvas(), &event);
    }
    void drag(const QPoint& from, const QPoint& to,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        mouse(QEvent::MouseButtonPress, from, Qt::LeftButton, modifiers);
        mouse(QEvent::MouseMove, (from + to) / 2, Qt::LeftButton, modifiers);
        mouse(QEvent::MouseMove, to, Qt::LeftButton, modifiers);
        mouse(QEvent::MouseButtonRelease, to, Qt::LeftButton, modifiers);
    }
    // The controller says nothing for a while, and then again; returns a time between.
    TrendTime makeGap() const
    {
        stopController(true);
        EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::old); }));
        QTest::qWait(120);
        const TrendTime at = now() - 60 * 1000;
        stopController(false);
        EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
        return at;
    }

    std::unique_ptr<TrendsPage> page;
    TrendStack* stack = nullptr;
    const QAbstractItemModel* readout = nullptr;
    std::string told;
    int changes = 0;
};

Item namedItem(const Item& item, const std::string& name, const Scaling& scaling = {})
{
    Item other = item;
    other.name = name;
    other.format.scaling = scaling;
    return other;
}

Item itemIn(const Library& library, const char* address, const char* unit)
{
    Scaling scaling;
    scaling.unit = unit;
    return namedItem(Items(library, ItemSource()).find(address, Access::read), address, scaling);
}

TEST_F(TheTrendsPage, ShowsValuesThatMoveBeforeAnybodyHasChosen)
{
    options.frozen = false;
    watch({"R_W:500", "R_W:0", "R_W:32", "I_bit:0.0"});
    show();
    EXPECT_EQ(readout->rowCount(), 0);
    open();
    EXPECT_TRUE(waitUntil([this]() {
        return column(TrendReadout::name) ==
               std::vector<std::string>{"1/R_W:0", "1/R_W:32", "1/I_bit:0.0"};
    })) << "what stands is left out";
    EXPECT_TRUE(waitUntil([this]() {
        draw();
        return stack->plots().front()->curves().front()->dataSize() > 4;
    }));
    EXPECT_EQ(cell(0, TrendReadout::state), "\u2713 good");
    EXPECT_EQ(changes, 0) << "nobody has arranged anything";
    EXPECT_TRUE(page->settings().at("plots").empty());
}

TEST_F(TheTrendsPage, DrawsNothingWhereTheControllerSaidNothing)
{
    setup.timeoutMs = 40;
    options.set = {"R_W:100=1234"};
    showAll({"R_W:100"});
    const TrendTime before = now() + 1000;
    waitForConfirmation();
    const TrendTime gap = makeGap();
    waitForConfirmation();
    const TrendTime after = now() + 1000;
    waitForConfirmation();
    waitForConfirmation();
    press(Qt::Key_Home);
    draw();
    EXPECT_TRUE(isDrawnAt(0, placeOf(before).x()));
    EXPECT_FALSE(isDrawnAt(0, placeOf(gap).x()));
    EXPECT_TRUE(isDrawnAt(0, placeOf(after).x()));
    QTest::mouseClick(canvas(), Qt::LeftButton, Qt::NoModifier, placeOf(gap));
    EXPECT_EQ(cell(0, TrendReadout::atA), "request failed");
    QTest::mouseClick(canvas(), Qt::LeftButton, Qt::ShiftModifier, placeOf(after));
    EXPECT_EQ(cell(0, TrendReadout::atB), "1234");
    EXPECT_EQ(cell(0, TrendReadout::difference), "");
    EXPECT_EQ(cell(0, TrendReadout::mean), "1234");
    EXPECT_THAT(cell(0, TrendReadout::known),
                testing::AllOf(testing::EndsWith(" %"), testing::Ne("100 %")));
}

TEST_F(TheTrendsPage, NeverJoinsTwoLines)
{
    options.set = {"R_W:100=1000"};
    showAll({"R_W:100"});
    const TrendTime before = now() + 1000;
    waitForConfirmation();
    options.set = {"R_W:100=2000"};
    options.dumpFile.clear();
    auto other = std::make_unique<ControllerProcess>(options);
    setup.port = other->port();
    desk.open(setup);
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    waitForConfirmation();
    const TrendTime after = now() + 1000;
    waitForConfirmation();
    waitForConfirmation();
    press(Qt::Key_Home);
    draw();
    stack->setCursor(0, before);
    stack->setCursor(1, after);
    EXPECT_EQ(cell(0, TrendReadout::atA), "1000");
    EXPECT_EQ(cell(0, TrendReadout::atB), "2000");
    EXPECT_EQ(cell(0, TrendReadout::minimum), "another line");
    for (const auto each : {TrendReadout::difference, TrendReadout::mean, TrendReadout::maximum})
        EXPECT_EQ(cell(0, each), "");
    ASSERT_EQ(stack->notes().size(), 1U);
    EXPECT_THAT(stack->notes().front().text.toStdString(), HasSubstr(other->port()));
    const QVector<QPointF>& samples =
        static_cast<const QwtPointSeriesData*>(stack->plots().front()->curves().front()->data())
            ->samples();
    EXPECT_EQ(samples.front().y(), 1000);
    EXPECT_EQ(samples.back().y(), 2000);
    EXPECT_GT(samples.size(), 3);
    desk.end();
}

TEST_F(TheTrendsPage, HasNothingOfAnotherProjectUnderItsNames)
{
    options.set = {"R_W:100=215"};
    showAll({"R_W:100"});
    waitForConfirmation();
    const TrendTime before = now();
    waitForConfirmation();
    stack->setCursor(0, before);
    ASSERT_EQ(cell(0, TrendReadout::atA), "215");
    std::vector<Item> items = desk.tags().items;
    items.front() = namedItem(items.front(), "oven", {0.1, 0, 1, "K"});
    desk.beginProject(items);
    page->prepared(OrderedJson::object())();
    EXPECT_FALSE(stack->cursors().front());
    EXPECT_EQ(readout->rowCount(), 0);
    desk.open(setup);
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    waitForConfirmation();
    showWatched();
    const TrendTime after = now();
    waitForConfirmation();
    stack->setCursor(0, before);
    stack->setCursor(1, after);
    EXPECT_EQ(cell(0, TrendReadout::name), "oven");
    EXPECT_EQ(cell(0, TrendReadout::atA), "not recorded");
    EXPECT_EQ(cell(0, TrendReadout::atB), "21.5 K");
    EXPECT_TRUE(stack->notes().empty());
    press(Qt::Key_Home);
    EXPECT_GT(stack->view().from(), before);
    desk.end();
}

TEST_F(TheTrendsPage, WritesNoTableOnceAnotherProjectIsOpened)
{
    options.set = {"R_W:100=215"};
    showAll({"R_W:100"});
    waitForConfirmation();
    const QString file = folder.filePath("values.csv");
    std::ofstream(file.toStdString()) << "before";
    ASSERT_TRUE(page->saveTable(file));
    desk.beginProject(desk.tags().items);
    EXPECT_EQ(told, "The table was not written: another project was opened meanwhile.");
    QCoreApplication::processEvents();
    EXPECT_EQ(contentOf(file), "before");
    desk.end();
}

TEST_F(TheTrendsPage, ReadsOutAtAndBetweenTwoCursors)
{
    Scaling tenths{0.1, 0, 1, "bar"};
    options.set = {"R_W:100=70"};
    const Item item = Items(library, ItemSource()).find("R_W:100", Access::read);
    desk.setItems({namedItem(item, "pressure", tenths)});
    show();
    open();
    unlock();
    showWatched();
    const TrendTime first = now();
    QTest::qWait(60);
    desk.write(desk.tags().values.front(), "9.0");
    ASSERT_TRUE(waitUntil([this]() { return desk.writesUnderWay() == 0; }));
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    const TrendTime written = now();
    QTest::qWait(60);
    press(Qt::Key_Space);
    draw();
    const auto* const table = page->findChild<QTableView*>("trendReadout");
    EXPECT_TRUE(table->isColumnHidden(TrendReadout::atA));
    stack->setCursor(0, first);
    EXPECT_FALSE(table->isColumnHidden(TrendReadout::atA));
    EXPECT_TRUE(table->isColumnHidden(TrendReadout::mean));
    // That a value that stays is still good is told twice a second.
    ASSERT_TRUE(waitUntil([&]() {
        const TrendTime at = now() - trendSecond;
        stack->setCursor(1, at);
        // So long after it that the mean shows it.
        return at > written + trendSecond / 100 && cell(0, TrendReadout::atB) == "9.0 bar";
    }));
    EXPECT_FALSE(table->isColumnHidden(TrendReadout::mean));
    EXPECT_EQ(cell(0, TrendReadout::atA), "7.0 bar");
    EXPECT_EQ(cell(0, TrendReadout::difference), "2.00 bar");
    EXPECT_EQ(cell(0, TrendReadout::minimum), "7.00 bar");
    EXPECT_EQ(cell(0, TrendReadout::maximum), "9.00 bar");
    const double mean =
        QString::fromStdString(cell(0, TrendReadout::mean)).split(' ').at(0).toDouble();
    EXPECT_GT(mean, 7.0);
    EXPECT_LT(mean, 9.0);
    EXPECT_EQ(cell(0, TrendReadout::known), "100 %");
    EXPECT_THAT(page->findChild<QLabel*>("trendCursors")->text().toStdString(),
                HasSubstr("B \u2212 A = "));
    press(Qt::Key_Escape);
    EXPECT_TRUE(table->isColumnHidden(TrendReadout::atA));
    EXPECT_EQ(held("R_W", 100), 90);
}

TEST_F(TheTrendsPage, MovesItsCursorsWithTheKeys)
{
    showAll({"R_W:100"});
    press(Qt::Key_Space);
    draw();
    press(Qt::Key_A);
    press(Qt::Key_B);
    ASSERT_TRUE(stack->cursors().front() && stack->cursors().back());
    const TrendTime at = *stack->cursors().back();
    press(Qt::Key_Right, Qt::ShiftModifier);
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_GT(*stack->cursors().back(), at);
    EXPECT_EQ(*stack->cursors().front(), at);
    press(Qt::Key_A);
    press(Qt::Key_Left, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_LT(*stack->cursors().front(), at);
}

TEST_F(TheTrendsPage, StandsStillZoomsAndMovesWithKeysAndMouse)
{
    showAll({"R_W:100"});
    draw();
    const TrendView& view = stack->view();
    EXPECT_TRUE(view.isRunning());
    const TrendTime before = view.to();
    EXPECT_TRUE(waitUntil([&]() {
        draw();
        return view.to() > before;
    }));
    auto* const hold = page->findChild<QPushButton*>("trendHold");
    QTest::mouseClick(hold, Qt::LeftButton);
    EXPECT_FALSE(view.isRunning());
    const TrendTime standing = view.to();
    QTest::qWait(60);
    draw();
    EXPECT_EQ(view.to(), standing);
    const TrendTime span = view.span();
    press(Qt::Key_Plus);
    EXPECT_EQ(view.span(), span / 2);
    press(Qt::Key_Minus);
    EXPECT_EQ(view.span(), span);
    press(Qt::Key_Left);
    EXPECT_EQ(view.to(), standing - span / 10);
    press(Qt::Key_PageDown);
    EXPECT_EQ(view.to(), standing - span / 10 + span);
    draw();
    // Dragging chooses a part of it, and Backspace goes back.
    const QSize size = canvas()->size();
    const TrendTime from = view.from();
    drag(QPoint(size.width() / 4, 20), QPoint(size.width() / 2, size.height() - 20));
    EXPECT_NEAR(static_cast<double>(view.span()), static_cast<double>(span) / 4,
                static_cast<double>(span) / 50);
    EXPECT_NEAR(static_cast<double>(view.from() - from), static_cast<double>(span) / 4,
                static_cast<double>(span) / 50);
    EXPECT_FALSE(stack->plots().front()->axisAutoScale(QwtPlot::yLeft));
    press(Qt::Key_0);
    EXPECT_TRUE(stack->plots().front()->axisAutoScale(QwtPlot::yLeft));
    press(Qt::Key_Backspace);
    EXPECT_EQ(view.span(), span);
    EXPECT_EQ(view.from(), from);
    // With Control it is moved.
    draw();
    drag(QPoint(200, 50), QPoint(300, 50), Qt::ControlModifier);
    EXPECT_LT(view.from(), from);
    EXPECT_EQ(view.span(), span);
    QWheelEvent wheel(QPointF(size.width() / 2.0, 50), canvas()->mapToGlobal(QPoint(0, 0)),
                      QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(canvas(), &wheel);
    EXPECT_LT(view.span(), span);
    press(Qt::Key_End);
    EXPECT_TRUE(view.isRunning());
    EXPECT_FALSE(hold->isChecked());
    EXPECT_GT(changes, 0);
}

TEST_F(TheTrendsPage, TakesValuesFromAListWithAFilter)
{
    watch({"R_W:100", "R_W:101", "T:5", "M_bit:1.0"});
    show();
    QTest::mouseClick(page->findChild<QPushButton*>("trendValues"), Qt::LeftButton);
    auto* const choice = page->findChild<QTableView*>("trendChoice");
    QTest::keyClicks(page->findChild<QLineEdit*>("trendSearch"), "r_w");
    ASSERT_EQ(choice->model()->rowCount(), 2);
    choice->setCurrentIndex(choice->model()->index(1, TrendChoice::address));
    QTest::keyClick(choice, Qt::Key_Space);
    EXPECT_THAT(column(TrendReadout::name), ElementsAre("1/R_W:101"));
    EXPECT_EQ(choice->model()->index(1, 0).data(Qt::CheckStateRole).toInt(), Qt::Checked);
    QTest::keyClick(choice, Qt::Key_Space);
    EXPECT_EQ(readout->rowCount(), 0);
    page->findChild<QLineEdit*>("trendSearch")->clear();
    EXPECT_EQ(choice->model()->rowCount(), 4);
    for (int row = 0; row < 4; ++row)
        choice->model()->setData(choice->model()->index(row, 0), Qt::Checked, Qt::CheckStateRole);
    EXPECT_THAT(plots(), ElementsAre("1", "1", "1", "1"));
    page->findChild<QDialog*>()->close();
    page->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(page.get()));
    page->findChild<QTableView*>("trendReadout")->setFocus();
    page->findChild<QTableView*>("trendReadout")->selectRow(1);
    QTest::keyClick(page->findChild<QTableView*>("trendReadout"), Qt::Key_Delete);
    EXPECT_THAT(column(TrendReadout::name), ElementsAre("1/R_W:100", "1/T:5", "1/M_bit:1.0"));
}

TEST_F(TheTrendsPage, GoesFromPlotToPlotWithTheTabKey)
{
    desk.setItems({itemIn(library, "R_W:1", "bar"), itemIn(library, "R_W:2", "l"),
                   itemIn(library, "R_W:3", "mm"), itemIn(library, "R_W:4", "V"),
                   itemIn(library, "R_W:5", "A")});
    show();
    showWatched();
    ASSERT_EQ(stack->plots().size(), 3U);
    canvas(0)->setFocus();
    for (const std::size_t next : {1U, 2U}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), canvas(next));
    }
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    EXPECT_EQ(QApplication::focusWidget(), canvas(1));
}

TEST_F(TheTrendsPage, GivesAThirdUnitAPlotOfItsOwnAndBitsTheirLanes)
{
    options.set = {"M_bit:1.1=1"};
    desk.setItems({itemIn(library, "R_W:1", "bar"), itemIn(library, "R_W:2", "l"),
                   itemIn(library, "R_W:3", "bar"), itemIn(library, "R_W:4", "mm"),
                   itemIn(library, "M_bit:1.0", ""), itemIn(library, "M_bit:1.1", "")});
    show();
    open();
    showWatched();
    EXPECT_THAT(plots(), ElementsAre("1", "1", "1", "2", "2", "2"));
    ASSERT_EQ(stack->plots().size(), 2U);
    const TrendPlot& first = *stack->plots().front();
    EXPECT_EQ(first.axisTitle(QwtPlot::yLeft).text(), "bar");
    EXPECT_EQ(first.axisTitle(QwtPlot::yRight).text(), "l");
    EXPECT_EQ(first.curves().at(2)->yAxis(), QwtPlot::yLeft);
    const TrendPlot& second = *stack->plots().back();
    EXPECT_EQ(second.axisTitle(QwtPlot::yRight).text(), "on / off");
    EXPECT_EQ(second.axisScaleDraw(QwtPlot::yRight)->label(0.3).text(), "M_bit:1.1");
    draw();
    const QRectF off = second.curves().at(1)->dataRect();
    const QRectF on = second.curves().at(2)->dataRect();
    EXPECT_DOUBLE_EQ(off.bottom(), 1.0) << "in the upper lane";
    EXPECT_DOUBLE_EQ(on.bottom(), TrendCurve::laneHeight);
    EXPECT_TRUE(first.axisEnabled(QwtPlot::xBottom) != second.axisEnabled(QwtPlot::xBottom));
}

TEST_F(TheTrendsPage, NamesLanesInWholeBesideThem)
{
    const Items find(library, ItemSource());
    const std::string name = "the.valve.behind.the.second.filler.is.open";
    desk.setItems({namedItem(find.find("M_bit:1.0", Access::read), name),
                   namedItem(find.find("M_bit:1.1", Access::read), "pump")});
    show();
    showWatched();
    EXPECT_EQ(stack->plots().front()->axisWidget(QwtPlot::yLeft)->toolTip().toStdString(),
              name + "\npump");
}

TEST_F(TheTrendsPage, SaysWhyAPlotIsEmpty)
{
    const auto absence = [this]() -> std::string {
        const auto labels = stack->plots().front()->itemList(QwtPlotItem::Rtti_PlotTextLabel);
        const auto* const label = static_cast<const QwtPlotTextLabel*>(labels.front());
        return label->isVisible() ? label->text().text().toStdString() : "drawn";
    };
    const auto says = [&absence](const std::string& text) {
        return waitUntil([&]() { return absence() == text; });
    };
    watch({"3/R_W:100"});
    show();
    showWatched();
    EXPECT_TRUE(says("Nothing has been read yet: no line is open.")) << absence();
    setup.timeoutMs = 40;
    controller = std::make_unique<ControllerProcess>(options); // of station 1 alone
    setup.port = controller->port();
    desk.open(setup);
    EXPECT_TRUE(says("Nothing has been read yet: no answer from station 3.")) << absence();
    desk.setStationNames({{3, "filler"}});
    EXPECT_TRUE(says("Nothing has been read yet: no answer from 3 filler.")) << absence();
    watch({"R_W:100"});
    EXPECT_TRUE(says("None of its values is watched.")) << absence();
    showWatched();
    EXPECT_TRUE(says("drawn")) << absence();
    press(Qt::Key_PageUp);
    press(Qt::Key_PageUp);
    EXPECT_TRUE(says("Nothing is known of this time.")) << absence();
    page->prepared({{"plots", {{{"values", OrderedJson::array()}}}}})();
    EXPECT_TRUE(says("No value is in this plot yet: Values \u2026 chooses some.")) << absence();
}

TEST_F(TheTrendsPage, RefusesATextWithAWord)
{
    ItemSource source;
    source.format = "text";
    Item text = Items(library, source).find("R_W:10..13", Access::read);
    text.name = "label";
    desk.setItems({text, Items(library, ItemSource()).find("R_W:1", Access::read)});
    show();
    showWatched();
    EXPECT_THAT(column(TrendReadout::name), ElementsAre("1/R_W:1"));
    EXPECT_THAT(told, HasSubstr("label"));
    QTest::mouseClick(page->findChild<QPushButton*>("trendValues"), Qt::LeftButton);
    const auto* const choice = page->findChild<QTableView*>("trendChoice");
    EXPECT_THAT(choice->model()->index(0, TrendChoice::unit).data().toString().toStdString(),
                StartsWith("a text"));
    EXPECT_FALSE(choice->model()->index(0, 0).data(Qt::CheckStateRole).isValid());
}

TEST_F(TheTrendsPage, HasRoomForThreeHundredValues)
{
    watch({"R_W:0..349"});
    show();
    showWatched();
    EXPECT_EQ(readout->rowCount(), 300);
    EXPECT_THAT(told, HasSubstr("300 value"));
    QTest::mouseClick(page->findChild<QPushButton*>("trendValues"), Qt::LeftButton);
    const auto labels = page->findChild<TrendValuesDialog*>()->findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
        return label->text().contains(QStringLiteral("300 value"));
    }));
}

TEST_F(TheTrendsPage, TellsCurvesByPairsOfColourAndSignThatComeAgainInOrder)
{
    const auto pair = [](int curve) {
        const QColor colour = trendColour(curve, QApplication::palette());
        return std::pair(colour.rgb(), trendSign(curve, colour, 8)->style());
    };
    std::set<std::pair<QRgb, QwtSymbol::Style>> pairs;
    for (int curve = 0; curve < 56; ++curve)
        pairs.insert(pair(curve));
    EXPECT_EQ(pairs.size(), 56U);
    for (int curve = 56; curve < static_cast<int>(TrendArrangement::maxValues); ++curve)
        EXPECT_EQ(pair(curve), pair(curve - 56)) << curve;
}

TEST_F(TheTrendsPage, KeepsNotesOfAPersonAtACursor)
{
    showAll({"R_W:100"});
    press(Qt::Key_A);
    const TrendTime at = *stack->cursors().front();
    QTimer::singleShot(0, page.get(), []() {
        auto* const dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        ASSERT_TRUE(dialog);
        QTest::keyClicks(dialog->findChild<QLineEdit*>(), "valve, opened");
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    press(Qt::Key_N);
    ASSERT_EQ(stack->notes().size(), 1U);
    EXPECT_EQ(stack->notes().front().text, "valve, opened");
    EXPECT_LE(stack->notes().front().at, at); // its time is told in milliseconds
    EXPECT_GT(stack->notes().front().at, at - trendSecond / 1000);
    const QString file = folder.filePath("notes.csv");
    ASSERT_TRUE(page->saveTable(file));
    EXPECT_TRUE(waitUntil([&]() { return told.find("is written") != std::string::npos; }));
    EXPECT_THAT(contentOf(file), HasSubstr(",,,,,\"note: valve, opened\"\n"));
}

TEST_F(TheTrendsPage, SavesValuesWithTheirGapsAndPictures)
{
    setup.timeoutMs = 40;
    options.set = {"R_W:100=1234"};
    showAll({"R_W:100"});
    makeGap();
    waitForConfirmation();
    waitForConfirmation();
    press(Qt::Key_Space);
    draw();
    const QString file = folder.filePath("values.csv");
    ASSERT_TRUE(page->saveTable(file));
    EXPECT_TRUE(waitUntil([&]() { return told.find("is written") != std::string::npos; }));
    const std::vector<std::string> wanted = {
        "time,name,address,value,unit,state", "1/R_W:100,1/R_W:100,1234,,good",
        "1/R_W:100,1/R_W:100,,,request failed", "1/R_W:100,1/R_W:100,1234,,good",
        "1/R_W:100,1/R_W:100,1234,,good"};
    std::stringstream lines(contentOf(file));
    std::vector<std::string> found;
    for (std::string line; std::getline(lines, line);) {
        if (!found.empty()) {
            EXPECT_THAT(line, testing::ContainsRegex(
                                  "^[0-9]+-[0-9]+-[0-9]+T[0-9:]+\\.[0-9]+(Z|[+-][0-9]+:[0-9]+),"));
        }
        found.push_back(found.empty() ? line : line.substr(line.find(',') + 1));
    }
    EXPECT_EQ(found, wanted);

    ASSERT_TRUE(page->savePicture(folder.filePath("plots.png")));
    const QImage image(folder.filePath("plots.png"));
    EXPECT_EQ(image.width(), stack->plots().front()->width() * 2);
    ASSERT_TRUE(page->savePicture(folder.filePath("plots.svg")));
    EXPECT_THAT(contentOf(folder.filePath("plots.svg")),
                testing::AllOf(HasSubstr("<svg"), HasSubstr("1/R_W:100")));
    EXPECT_FALSE(page->saveTable("/nowhere/values.csv"));
    EXPECT_THAT(told, HasSubstr("/nowhere/values.csv"));
    EXPECT_FALSE(page->savePicture("/nowhere/plots.png"));
}

TEST_F(TheTrendsPage, WritesATableToItsEndBeforeItBeginsAnother)
{
    showAll({"R_W:100"});
    waitForConfirmation();
    const QString first = folder.filePath("first.csv");
    const QString second = folder.filePath("second.csv");
    ASSERT_TRUE(page->saveTable(first));
    EXPECT_FALSE(page->saveNotes(second));
    EXPECT_THAT(told, AllOf(HasSubstr("first.csv"), HasSubstr("is still being written")));
    EXPECT_TRUE(waitUntil([&]() { return told.find("What is seen is written") == 0; }));
    EXPECT_THAT(contentOf(first), HasSubstr("1/R_W:100"));
    EXPECT_FALSE(QFile::exists(second));
    EXPECT_TRUE(page->saveNotes(second));
    EXPECT_TRUE(waitUntil([&]() { return QFile::exists(second); }));
}

TEST_F(TheTrendsPage, WritesATableToItsEndThoughThePanelEnds)
{
    showAll({"R_W:100"});
    waitForConfirmation();
    const QString first = folder.filePath("first.csv");
    const QString second = folder.filePath("second.csv");
    ASSERT_TRUE(page->saveTable(first));
    EXPECT_TRUE(page->mayForget());
    EXPECT_THAT(contentOf(first), HasSubstr("1/R_W:100"));
    ASSERT_TRUE(page->saveTable(second));
    EXPECT_FALSE(QFile::exists(second));
    page.reset();
    EXPECT_EQ(contentOf(second), contentOf(first));
}

TEST_F(TheTrendsPage, SaysThatATableCouldNotBeWrittenBeforeThePanelEnds)
{
    showAll({"R_W:100"});
    waitForConfirmation();
    ASSERT_TRUE(QDir(folder.path()).mkdir("stick"));
    ASSERT_TRUE(page->saveTable(folder.filePath("stick/values.csv")));
    ASSERT_TRUE(QDir(folder.filePath("stick")).removeRecursively());
    answerWith(page.get(), QMessageBox::No, "values.csv could not be written");
    EXPECT_FALSE(page->mayForget());
    EXPECT_TRUE(page->mayForget()) << "that was said";
}

TEST_F(TheTrendsPage, KeepsItsArrangementInAProject)
{
    watch({"R_W:100", "T:5"});
    show();
    showWatched();
    page->findChild<QSpinBox*>("trendMemory")->setValue(128);
    stack->arrange([](TrendView& view) { view.setSpan(600 * trendSecond); });
    const OrderedJson kept = page->settings();
    EXPECT_EQ(kept.dump(), R"({"span":600.0,"memory":128,"plots":[{"values":[)"
                           R"({"name":"1/R_W:100","address":"1/R_W:100"},)"
                           R"({"name":"1/T:5","address":"1/T:5"}]}]})");
    page->prepared(OrderedJson::object())();
    EXPECT_EQ(readout->rowCount(), 0);
    EXPECT_EQ(page->findChild<QSpinBox*>("trendMemory")->value(), 64);
    OrderedJson newer = kept;
    newer["shade"] = 7;
    page->prepared(newer)();
    EXPECT_THAT(column(TrendReadout::name), ElementsAre("1/R_W:100", "1/T:5"));
    EXPECT_EQ(stack->view().span(), 600 * trendSecond);
    EXPECT_EQ(page->settings(), newer);
}

TEST_F(TheTrendsPage, RefusesSettingsWithTheirPlaceAndIsAsBefore)
{
    watch({"R_W:100"});
    show();
    showWatched();
    const OrderedJson before = page->settings();
    const std::pair<const char*, const char*> rows[] = {
        {R"([])", "an object"},
        {R"({"span":0})", "span: "},
        {R"({"span":"long"})", "span: "},
        {R"({"memory":0})", "memory: "},
        {R"({"plots":7})", "plots: "},
        {R"({"plots":[{}, 7]})", "plots[1]: "},
        {R"({"plots":[{"values":[{"name":"a"}]}]})", "plots[0].values[0].address: "},
        {R"({"plots":[{"values":[{"name":1,"address":"x"}]}]})", "plots[0].values[0].name: "},
    };
    OrderedJson values = OrderedJson::array();
    for (std::size_t i = 0; i <= TrendArrangement::maxValues / 2; ++i)
        values.push_back({{"name", "v" + std::to_string(i)}, {"address", "1/R_W:1"}});
    EXPECT_THAT(complaint([&]() {
                    page->prepared({{"plots", {{{"values", values}}, {{"values", values}}}}});
                }),
                StartsWith("plots: no more than 300 values"));
    for (const auto& [text, why] : rows)
        EXPECT_THAT(complaint([&, json = text]() { page->prepared(OrderedJson::parse(json)); }),
                    StartsWith(why))
            << text;
    EXPECT_EQ(page->settings(), before);
}

TEST_F(TheTrendsPage, KeepsACurveOfWhatIsNoLongerWatchedAndSaysSo)
{
    showAll({"R_W:100", "R_W:101"});
    waitForConfirmation();
    desk.removeItems({0});
    refresh();
    EXPECT_EQ(cell(0, TrendReadout::state), "? not watched");
    EXPECT_EQ(cell(0, TrendReadout::value), "?");
    press(Qt::Key_Home);
    draw();
    EXPECT_GT(stack->plots().front()->curves().front()->dataSize(), 1U);
    watch({"R_W:101", "R_W:100"});
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    refresh();
    EXPECT_EQ(cell(0, TrendReadout::state), "\u2713 good");
    EXPECT_EQ(cell(0, TrendReadout::name), "1/R_W:100");
}

TEST_F(TheTrendsPage, ComesFromTheMenuOfTheValuesPage)
{
    watch({"R_W:100", "R_W:101"});
    MainWindow window(desk);
    window.show();
    window.showPage(1);
    auto* const table = window.findChild<QTableView*>("values");
    table->selectRow(1);
    QTimer::singleShot(0, &window, []() {
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_TRUE(menu);
        for (QAction* const action : menu->actions())
            if (action->text().contains("&trends")) {
                menu->setActiveAction(action);
                QTest::keyClick(menu, Qt::Key_Return);
                return;
            }
        menu->close();
        FAIL() << "no such entry";
    });
    emit table->customContextMenuRequested(table->rect().center());
    auto* const trends = window.findChild<TrendsPage*>();
    EXPECT_TRUE(trends->isVisible());
    EXPECT_EQ(trends->settings().at("plots").dump(),
              R"([{"values":[{"name":"1/R_W:101","address":"1/R_W:101"}]}])");
}

} // namespace

} // namespace dov417
