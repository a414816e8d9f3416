#include "panel/frames/wire_page.h"

#include <QTest>
#include <QWheelEvent>
#include <fstream>
#include <set>

#include "line/crc16.h"
#include "panel/frames/line_page.h"
#include "panel/frames/wire_words.h"
#include "panel/main_window.h"
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class TheWirePage : public PanelWorld {
protected:
    TheWirePage()
    {
        // As slow as a real line.
        options.stations = {1, 2};
        options.baudLimit = true;
        options.responseTimeMs = 3;
        page.resize(1200, 700);
        page.show();
        view = page.findChild<WireView*>("wire");
        QObject::connect(&page, &WirePage::frameWanted, &page,
                         [this](long long number) { wanted = number; });
    }
    template <typename Widget>
    Widget* part(const char* name) const
    {
        return page.findChild<Widget*>(name);
    }
    std::string text(const char* name) const
    {
        return part<QLabel>(name)->text().toStdString();
    }
    // Two stations are read, some cycles are over, and it stands still.
    void openAndStop()
    {
        watch({"R_W:100", "2/T:3"});
        open();
        stop();
    }
    void stop()
    {
        const long long before = desk.state().cycles;
        ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > before + 5; }));
        key(Qt::Key_End); // at once, not with the next picture
        part<QPushButton>("follow")->click();
        ASSERT_FALSE(view->isFollowing());
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(view, key, modifiers);
    }
    std::string share(WireUse use, int column = WireSharesModel::part) const
    {
        return part<QTableView>("uses")
            ->model()
            ->index(static_cast<int>(use), column)
            .data()
            .toString()
            .toStdString();
    }
    // Where the chosen frame is on the lane of its station.
    QPoint placeOfFrame(int station) const
    {
        const QRect lane = view->lane(view->laneOf(station));
        const QImage image = view->grab().toImage();
        for (int x = lane.left() + 2; x < lane.right(); ++x)
            if (image.pixelColor(x, lane.bottom() - 8) == QColor(0x00, 0x72, 0xB2))
                return {x + 1, lane.bottom() - 8};
        return {};
    }

    WirePage page{desk};
    WireView* view = nullptr;
    long long wanted = 0;
};

TEST_F(TheWirePage, ShowsTheLastCyclesToScaleAndWhatTheyWereUsedFor)
{
    EXPECT_THAT(text("frame"), HasSubstr("Point at a frame"));
    openAndStop();
    EXPECT_LT(view->from(), view->to());
    EXPECT_THAT(text("shares"), HasSubstr("A cycle takes"));
    EXPECT_EQ(text("known"), "");
    EXPECT_NE(share(WireUse::requests), "0.0 %");
    EXPECT_NE(share(WireUse::replies), "0.0 %");
    EXPECT_NE(share(WireUse::responseTime), "0.0 %");
    EXPECT_NE(share(WireUse::interFrame), "0.0 %");
    EXPECT_EQ(share(WireUse::timeOuts), "0.0 %");
    // 8 bytes of 11 bits at 38400 baud, twice a cycle.
    EXPECT_EQ(share(WireUse::requests, WireSharesModel::perCycle), "4.58 ms");
}

TEST_F(TheWirePage, NamesTheFrameBelowTheMouseAndGoesToItWithAClick)
{
    openAndStop();
    QPoint place = placeOfFrame(2);
    for (int i = 0; i < 20 && place.isNull(); ++i) { // cycles that a busy machine drew out
        part<QPushButton>("follow")->click();
        stop();
        place = placeOfFrame(2);
    }
    ASSERT_FALSE(place.isNull());
    QTest::mouseMove(view, place);
    QCoreApplication::processEvents();
    const std::string day = QDate::currentDate().toString(Qt::ISODate).toStdString();
    EXPECT_THAT(text("frame"), StartsWith(day + " "));
    EXPECT_THAT(text("frame"), HasSubstr("\nstation 2: read 1 register from"));
    EXPECT_THAT(text("frame"), HasSubstr("T:3 = "));
    EXPECT_THAT(text("frame"), HasSubstr("request 2.292 ms"));
    EXPECT_THAT(text("frame"), HasSubstr("the controller's time "));
    EXPECT_EQ(view->accessibleDescription().toStdString(), text("frame"));
    EXPECT_EQ(wanted, 0);
    QTest::mouseClick(view, Qt::LeftButton, Qt::NoModifier, place);
    EXPECT_EQ(wanted, view->current());
    EXPECT_GT(wanted, 0);
    wanted = 0;
    QTest::mouseClick(view, Qt::LeftButton, Qt::NoModifier,
                      QPoint(place.x(), view->lane(view->laneOf(1)).bottom() - 8));
    EXPECT_EQ(wanted, 0) << "the other station said nothing then";
}

TEST_F(TheWirePage, StandsStillWhileTheLineGoesOn)
{
    openAndStop();
    const auto from = view->from();
    const long long cycles = desk.state().cycles;
    ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 10; }));
    EXPECT_EQ(view->from(), from);
    key(Qt::Key_End);
    EXPECT_TRUE(view->isFollowing());
    EXPECT_TRUE(part<QPushButton>("follow")->isChecked());
    EXPECT_GT(view->from(), from);
    EXPECT_TRUE(waitUntil([&]() { return view->from() > from + std::chrono::seconds(1); }));
}

TEST_F(TheWirePage, GoesFromFrameToFrameWithKeys)
{
    openAndStop();
    key(Qt::Key_Left);
    const long long last = view->current();
    ASSERT_GT(last, 3);
    key(Qt::Key_Left);
    EXPECT_EQ(view->current(), last - 1);
    const std::string before = text("frame");
    key(Qt::Key_Left);
    EXPECT_NE(text("frame"), before);
    key(Qt::Key_Right);
    EXPECT_EQ(view->current(), last - 1);
    EXPECT_EQ(text("frame"), before);
    EXPECT_EQ(wanted, 0);
    key(Qt::Key_Return);
    EXPECT_EQ(wanted, last - 1);
    for (int i = 0; i < 1000; ++i)
        key(Qt::Key_Left);
    EXPECT_EQ(view->current(), 1) << "the first one stays";
}

TEST_F(TheWirePage, ZoomsAndPans)
{
    openAndStop();
    const auto length = [this]() { return view->to() - view->from(); };
    const auto first = length();
    const int middle = view->lane(0).center().x();
    const auto below = view->timeAt(middle);
    QWheelEvent wheel(QPointF(middle, 50), view->mapToGlobal(QPoint(middle, 50)), QPoint(),
                      QPoint(0, 240), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(view, &wheel);
    EXPECT_LT(length(), first);
    EXPECT_NEAR(view->xOf(below), middle, 1) << "what is below the mouse stays there";
    key(Qt::Key_Minus);
    key(Qt::Key_Minus);
    EXPECT_NEAR(std::chrono::duration<double>(length()).count(),
                std::chrono::duration<double>(first).count(), 1e-6);
    key(Qt::Key_Plus); // so that there is room on both sides
    key(Qt::Key_Plus);
    const auto from = view->from();
    key(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_LT(view->from(), from);
    key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(view->from(), from);
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, QPoint(middle, 60));
    QTest::mouseMove(view, QPoint(middle + 100, 60));
    QMouseEvent move(QEvent::MouseMove, QPointF(middle + 100, 60), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(view, &move);
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, QPoint(middle + 100, 60));
    EXPECT_LT(view->from(), from);
    EXPECT_EQ(wanted, 0) << "who drags chooses no frame";
    for (int i = 0; i < 200; ++i)
        key(Qt::Key_Plus);
    EXPECT_EQ(length(), WireView::minLength);
    key(Qt::Key_0);
    EXPECT_GT(length(), first);
}

TEST_F(TheWirePage, MeasuresBetweenTwoRulers)
{
    openAndStop();
    EXPECT_EQ(text("distance"), "");
    key(Qt::Key_Left);
    key(Qt::Key_A);
    key(Qt::Key_B);
    EXPECT_EQ(text("distance"), "A to B: 0.000 ms");
    key(Qt::Key_B); // the request's end: 8 bytes of 11 bits at 38400 baud
    EXPECT_EQ(text("distance"), "A to B: 2.292 ms");
    const QPoint flag(static_cast<int>(view->xOf(*view->ruler(WireRuler::b))), 60);
    const auto before = *view->ruler(WireRuler::b);
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, flag);
    QMouseEvent move(QEvent::MouseMove, QPointF(flag.x() - 100, 60), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(view, &move);
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, QPoint(flag.x() - 100, 60));
    EXPECT_LT(*view->ruler(WireRuler::b), before);
    key(Qt::Key_Escape);
    EXPECT_EQ(text("distance"), "");
}

TEST(TheWireView, DrawsAStationThatAppearedSinceTheLastPicture)
{
    WireTimes times;
    times.setWire(SerialFormat());
    const std::vector<Area> areas;
    WireView view(times, areas);
    view.resize(800, 400);
    Passed passed;
    passed.what = Passed::What::began;
    for (int station = 1; station < 9; ++station) {
        passed.transmission.number = station;
        passed.transmission.request.station = station;
        passed.transmission.sent = QByteArray::fromHex("0103000000010000");
        passed.transmission.sendBegin += std::chrono::seconds(1);
        passed.transmission.sendEnd = passed.transmission.sendBegin + std::chrono::milliseconds(2);
        times.add({passed}, 0);
        if (station == 1)
            view.refresh(times.end() + std::chrono::hours(1));
    }
    view.fitAll();
    EXPECT_FALSE(view.grab().isNull());
}

TEST_F(TheWirePage, ShowsTimeOutsAndFramesThatAreSentAgain)
{
    setup.timeoutMs = 60;
    options.faults = {"silence=every:3"};
    watch({"R_W:100", "2/T:3"});
    open();
    ASSERT_TRUE(waitUntil([this]() { return desk.state().cycles > 5; }));
    part<QPushButton>("all")->click();
    EXPECT_NE(share(WireUse::timeOuts), "0.0 %");
    EXPECT_NE(share(WireUse::retries), "0.0 %");
    EXPECT_FALSE(view->isFollowing());
}

TEST_F(TheWirePage, SaysWhatIsNotKnownOfBytesThatTakeNoTime)
{
    options.baudLimit = false;
    options.responseTimeMs = 0;
    watch({"R_W:100"});
    open();
    EXPECT_TRUE(waitUntil([this]() {
        return text("known").find("faster than 38400,8,EVEN,1 carries them") != std::string::npos;
    }));
}

TEST_F(TheWirePage, SetsRulersWhereTheyAreSeenAndTakesThemAwayFromTheirButtonsToo)
{
    openAndStop();
    QTest::mouseClick(part<QPushButton>("rulerA"), Qt::LeftButton);
    QTest::mouseClick(part<QPushButton>("rulerB"), Qt::LeftButton);
    EXPECT_EQ(*view->ruler(WireRuler::a), view->from() + (view->to() - view->from()) / 3);
    EXPECT_GT(*view->ruler(WireRuler::b), *view->ruler(WireRuler::a));
    key(Qt::Key_Left); // a frame is chosen, and then far away
    key(Qt::Key_Home);
    QTest::mouseClick(part<QPushButton>("rulerA"), Qt::LeftButton);
    EXPECT_GE(*view->ruler(WireRuler::a), view->from());
    EXPECT_LE(*view->ruler(WireRuler::a), view->to());
    part<QPushButton>("rulerB")->setFocus();
    QTest::keyClick(part<QPushButton>("rulerB"), Qt::Key_Escape);
    EXPECT_FALSE(view->ruler(WireRuler::a));
    EXPECT_FALSE(view->ruler(WireRuler::b));
}

TEST_F(TheWirePage, BeginsAnewWithAnotherLine)
{
    openAndStop();
    key(Qt::Key_Left);
    key(Qt::Key_A);
    LineSetup nowhere;
    nowhere.port = "/dev/there-is-none";
    desk.open(nowhere);
    EXPECT_EQ(view->current(), 0);
    EXPECT_FALSE(view->ruler(WireRuler::a));
    EXPECT_THAT(text("frame"), HasSubstr("Point at a frame"));
    EXPECT_EQ(share(WireUse::requests), "0.0 %");
}

TEST_F(TheWirePage, IsKeptInAProjectAsItIsArranged)
{
    part<QSpinBox>("cycles")->setValue(7);
    EXPECT_EQ(view->cycles(), 7);
    const OrderedJson kept = page.settings();
    WirePage other(desk);
    other.prepared(kept)();
    EXPECT_EQ(other.settings(), kept);
    other.prepared(OrderedJson::object())();
    EXPECT_EQ(other.settings(), OrderedJson({{"cycles", 2}}));
    for (const OrderedJson& wrong : {OrderedJson(0), OrderedJson(1.5), OrderedJson("2")})
        EXPECT_THAT(complaint([&]() {
                        other.prepared({{"cycles", wrong}});
                    }),
                    StartsWith("cycles: "));
}

// The pages together: as a person goes from one to the other.
class TheFrameOfTheWire : public PanelWorld {
protected:
    TheFrameOfTheWire()
    {
        window.resize(1280, 800);
        window.show();
        line = window.findChild<LinePage*>();
        wire = window.findChild<WirePage*>();
        frames = line->findChild<QTableView*>("frames");
        watch({"R_W:100"});
    }
    std::string chosen() const
    {
        return frames->model()
            ->index(frames->currentIndex().row(), LineModel::meaning)
            .data()
            .toString()
            .toStdString();
    }
    // The newest frame, or one before it.
    long long choose()
    {
        auto* const view = wire->findChild<WireView*>("wire");
        for (const Qt::Key key : {Qt::Key_End, Qt::Key_Left, Qt::Key_Return})
            QTest::keyClick(view, key);
        return view->current();
    }

    MainWindow window{desk};
    LinePage* line = nullptr;
    WirePage* wire = nullptr;
    QTableView* frames = nullptr;
};

TEST_F(TheFrameOfTheWire, IsChosenOnThePageOfTheLine)
{
    open();
    ASSERT_TRUE(waitUntil([this]() { return desk.state().cycles > 3; }));
    ASSERT_GT(choose(), 0);
    EXPECT_TRUE(line->isVisible());
    EXPECT_THAT(chosen(), HasSubstr("station 1: read 1 register from 1380 (R_W:100)"));
    EXPECT_TRUE(line->findChild<QPushButton*>("hold")->isChecked());
    EXPECT_THAT(line->findChild<QTableWidget*>("fields")->item(0, 3)->text().toStdString(), "1");
}

TEST_F(TheFrameOfTheWire, IsSaidToBeGoneWhereThePageOfTheLineDoesNotShowIt)
{
    open();
    ASSERT_TRUE(waitUntil([this]() { return desk.state().cycles > 3; }));
    std::string told;
    QObject::connect(line, &PanelPage::told, line,
                     [&told](const QString& text) { told = text.toStdString(); });
    EXPECT_FALSE(line->showFrame(1000000));
    EXPECT_THAT(told, HasSubstr("does not keep this frame"));
    line->findChild<QCheckBox*>("trouble")->setChecked(true);
    EXPECT_FALSE(line->showFrame(1));
    EXPECT_THAT(told, HasSubstr("only what is asked for"));
    const QString file = folder.filePath("line.log");
    ASSERT_TRUE(line->saveLog(file));
    ASSERT_TRUE(line->openLog(file));
    EXPECT_FALSE(line->showFrame(2)); // the first request of the log, behind a remark
    EXPECT_THAT(told, HasSubstr("only what is asked for"));
    line->findChild<QCheckBox*>("trouble")->setChecked(false);
    EXPECT_TRUE(line->showFrame(2));
}

// The log is that of another line: its station is no other's.
class TheRecording : public TheFrameOfTheWire {
protected:
    TheRecording()
    {
        const LogTime noon{std::chrono::microseconds(1769860800000000)};
        std::string text = "# port /dev/ttyUSB0, line 9600,8,EVEN,1\n";
        for (int i = 0; i < 6; ++i) {
            const LogTime then = noon + std::chrono::milliseconds(100 * i);
            text +=
                logLine({then, Direction::sent, withCrc(QByteArray::fromHex("070305640001")), ""}) +
                "\n" +
                logLine({then + std::chrono::milliseconds(40), Direction::received,
                         withCrc(QByteArray::fromHex("0703020007")), ""}) +
                "\n";
        }
        std::ofstream(file.toStdString()) << text;
        view = wire->findChild<WireView*>("wire");
    }
    void openLog()
    {
        ASSERT_TRUE(line->openLog(file));
        window.showPage(5);
        ASSERT_TRUE(wire->isVisible());
    }
    std::string text(const char* name) const
    {
        return wire->findChild<QLabel*>(name)->text().toStdString();
    }
    std::set<int> stationsShown() const
    {
        std::set<int> stations;
        QTest::keyClick(view, Qt::Key_Home);
        for (int i = 0; i < 6; ++i) {
            QTest::keyClick(view, Qt::Key_Right);
            stations.insert(text("frame").find("station 7: ") != std::string::npos ? 7 : 1);
        }
        return stations;
    }

    const QString file = folder.filePath("recorded.log");
    WireView* view = nullptr;
};

TEST_F(TheRecording, IsDrawnAndSaysWhatItIsAndOfWhen)
{
    openLog();
    EXPECT_THAT(text("known"), HasSubstr("A recording, not the line: " + file.toStdString()));
    EXPECT_THAT(text("known"), testing::ContainsRegex("from 2026-.* to 2026-"));
    EXPECT_THAT(stationsShown(), testing::ElementsAre(7));
    EXPECT_THAT(text("frame"), HasSubstr("2026-"));
    EXPECT_THAT(text("frame"), HasSubstr("station 7: R_W:100 = 7"));
    // 8 bytes of 11 bits at 9600 baud.
    EXPECT_THAT(text("frame"), HasSubstr("request 9.167 ms"));
    EXPECT_FALSE(wire->findChild<QPushButton*>("follow")->isVisible());
}

TEST_F(TheRecording, SaysSoWhereItHoldsNoRequest)
{
    std::ofstream(file.toStdString())
        << logLine({LogTime{std::chrono::microseconds(1769860800000000)}, Direction::received,
                    withCrc(QByteArray::fromHex("0703020007")), ""})
        << "\n";
    openLog();
    EXPECT_EQ(view->emptyText().toStdString(),
              "This recording holds no request, so there is nothing to draw.");
    QTest::mouseClick(wire->findChild<QPushButton*>("back"), Qt::LeftButton);
    EXPECT_THAT(view->emptyText().toStdString(), StartsWith("Nothing has passed on the line yet."));
}

TEST_F(TheRecording, IsGoneToFrameByFrame)
{
    openLog();
    QTest::keyClick(view, Qt::Key_Home);
    QTest::keyClick(view, Qt::Key_Right);
    QTest::keyClick(view, Qt::Key_Right);
    QTest::keyClick(view, Qt::Key_Return);
    EXPECT_TRUE(line->isVisible());
    EXPECT_EQ(frames->currentIndex().row() % 2, 0);
    EXPECT_EQ(view->current(), frames->currentIndex().row() + 1);
    EXPECT_THAT(chosen(), HasSubstr("station 7: read 1 register from 1380 (R_W:100)"));
}

TEST_F(TheRecording, IsNotMixedWithTheLineWhichComesBackWithOneClick)
{
    open();
    openLog();
    const long long cycles = desk.state().cycles;
    ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 3; }));
    EXPECT_THAT(stationsShown(), testing::ElementsAre(7));
    QTest::keyClick(view, Qt::Key_End);
    EXPECT_FALSE(view->isFollowing());
    EXPECT_FALSE(line->findChild<QPushButton*>("back")->isHidden());
    QTest::mouseClick(wire->findChild<QPushButton*>("back"), Qt::LeftButton);
    EXPECT_TRUE(line->findChild<QPushButton*>("back")->isHidden());
    EXPECT_TRUE(view->isFollowing());
    EXPECT_THAT(text("known"), testing::Not(HasSubstr("recording")));
    ASSERT_TRUE(waitUntil([this]() { return view->to() > view->from(); }));
    EXPECT_THAT(stationsShown(), testing::ElementsAre(1));
}

TEST_F(TheRecording, GoesWithTheNextLine)
{
    openLog();
    open();
    EXPECT_TRUE(view->isFollowing());
    EXPECT_THAT(text("known"), testing::Not(HasSubstr("recording")));
    ASSERT_TRUE(waitUntil([this]() { return desk.state().cycles > 3; }));
    EXPECT_THAT(stationsShown(), testing::ElementsAre(1));
}

} // namespace

} // namespace dov417
