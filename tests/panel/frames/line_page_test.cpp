#include "panel/frames/line_page.h"

#include <QApplication>
#include <QProcess>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>
#include <algorithm>
#include <fstream>
#include <sstream>

#include "made_views.h"
#include "panel/desk/panel_clock.h"
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class TheLinePage : public PanelWorld {
protected:
    TheLinePage()
    {
        QObject::connect(&page, &PanelPage::told, &page,
                         [this](const QString& text) { told = text.toStdString(); });
        page.resize(1200, 700);
        page.show();
        table = part<QTableView>("frames");
    }
    template <typename Widget>
    Widget* part(const char* name) const
    {
        return page.findChild<Widget*>(name);
    }
    int rows() const
    {
        return table->model()->rowCount();
    }
    std::string cell(int row, LineModel::Column column) const
    {
        return table->model()->index(row, column).data().toString().toStdString();
    }
    std::vector<std::string> fields() const
    {
        const auto* const parts = part<QTableWidget>("fields");
        std::vector<std::string> texts;
        for (int row = 0; row < parts->rowCount(); ++row)
            texts.push_back(
                (parts->item(row, 2)->text() + ": " + parts->item(row, 3)->text()).toStdString());
        return texts;
    }

    LinePage page{desk};
    QTableView* table = nullptr;
    std::string told;
};

TEST_F(TheLinePage, ShowsEachFrameInWordsAndByteByByte)
{
    options.set = {"R_W:100=7"};
    watch({"R_W:100"});
    open();
    ASSERT_TRUE(waitUntil([this]() { return rows() >= 4; }));
    int request = 0;
    while (request + 2 < rows() &&
           cell(request, LineModel::meaning).find("read") == std::string::npos)
        ++request;
    EXPECT_EQ(cell(request, LineModel::direction), "\u2192 request");
    EXPECT_THAT(cell(request, LineModel::meaning),
                HasSubstr("station 1: read 1 register from 1380 (R_W:100)"));
    EXPECT_EQ(cell(request + 1, LineModel::direction), "\u2190 reply");
    EXPECT_EQ(cell(request + 1, LineModel::meaning), "station 1: R_W:100 = 7");
    EXPECT_EQ(cell(request + 1, LineModel::bytes), "01 03 02 00 07 F9 86");
    table->selectRow(request + 1);
    EXPECT_THAT(fields(), ElementsAre("station: 1", "function: read registers", "byte count: 2",
                                      "register 1380: 7", "CRC: right"));
}

TEST_F(TheLinePage, StandsStillWhileTheLineGoesOn)
{
    watch({"R_W:100"});
    open();
    ASSERT_TRUE(waitUntil([this]() { return rows() >= 4; }));
    QTest::mouseClick(part<QPushButton>("hold"), Qt::LeftButton);
    const int before = rows();
    const long long cycles = desk.state().cycles;
    ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 10; }));
    EXPECT_EQ(rows(), before);
    EXPECT_THAT(part<QLabel>("standing")->text().toStdString(), HasSubstr("have passed since"));
    QTest::mouseClick(part<QPushButton>("hold"), Qt::LeftButton);
    EXPECT_GE(rows(), before + 20);
}

TEST_F(TheLinePage, StandsStillWhereOneLooksAndRunsOnAtTheEnd)
{
    watch({"R_W:100"});
    open();
    QScrollBar* const bar = table->verticalScrollBar();
    const auto* const hold = part<QPushButton>("hold");
    const auto turnWheel = [this](int lines) {
        QWheelEvent turned(
            QPointF(50, 50), table->viewport()->mapToGlobal(QPointF(50, 50).toPoint()), QPoint(),
            QPoint(0, 120 * lines), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(table->viewport(), &turned);
    };
    const auto passMore = [this]() {
        const long long cycles = desk.state().cycles;
        ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 10; }));
    };
    const auto expectStanding = [&]() {
        EXPECT_TRUE(hold->isChecked());
        const int before = rows();
        const int place = bar->value();
        passMore();
        EXPECT_EQ(rows(), before);
        EXPECT_EQ(bar->value(), place);
        EXPECT_LT(place, bar->maximum());
    };
    const auto expectRunning = [&]() {
        EXPECT_FALSE(hold->isChecked());
        const int before = rows();
        passMore();
        EXPECT_GT(rows(), before);
        EXPECT_EQ(bar->value(), bar->maximum());
    };
    ASSERT_TRUE(waitUntil([&]() { return bar->maximum() > 50; }));
    expectRunning();
    turnWheel(1);
    expectStanding();
    turnWheel(-50);
    expectRunning();
    bar->triggerAction(QAbstractSlider::SliderPageStepSub);
    expectStanding();
    bar->triggerAction(QAbstractSlider::SliderToMaximum);
    expectRunning();
    table->setFocus();
    QTest::keyClick(table, Qt::Key_Home);
    QTest::keyClick(table, Qt::Key_Down);
    expectStanding();
    EXPECT_EQ(table->currentIndex().row(), 1);
    QTest::keyClick(table, Qt::Key_End);
    expectRunning();
}

TEST_F(TheLinePage, ShowsOnlyWhatIsAskedFor)
{
    options.stations = {1, 2};
    watch({"R_W:100", "2/T:3"});
    open();
    QTest::mouseClick(part<QPushButton>("hold"), Qt::LeftButton);
    ASSERT_GE(rows(), 4);
    part<QSpinBox>("station")->setValue(2);
    ASSERT_GE(rows(), 2);
    for (int row = 0; row < rows(); ++row)
        EXPECT_THAT(cell(row, LineModel::meaning), StartsWith("station 2: "));
    part<QSpinBox>("station")->setValue(0);
    part<QComboBox>("kind")->setCurrentIndex(2);
    for (int row = 0; row < rows(); ++row)
        EXPECT_EQ(cell(row, LineModel::direction), "\u2190 reply");
    part<QComboBox>("kind")->setCurrentIndex(0);
    QTest::keyClicks(part<QLineEdit>("lineSearch"), "t:3 =");
    ASSERT_GE(rows(), 1);
    for (int row = 0; row < rows(); ++row)
        EXPECT_THAT(cell(row, LineModel::meaning), HasSubstr("T:3 = 0"));
    part<QLineEdit>("lineSearch")->clear();
    part<QCheckBox>("trouble")->setChecked(true);
    EXPECT_EQ(rows(), 0);
    EXPECT_THAT(part<QLabel>("standing")->text().toStdString(), HasSubstr("None of the rows"));
    part<QCheckBox>("trouble")->setChecked(false);
    EXPECT_THAT(part<QLabel>("standing")->text().toStdString(), HasSubstr("It stands still"));
}

TEST_F(TheLinePage, ShowsTheBeginningOfALongFrameAndFindsWhatIsInTheRestOfIt)
{
    options.set = {"R_W:199=0xABCD"};
    watch({"R_W:100..199"});
    open();
    QTest::mouseClick(part<QPushButton>("hold"), Qt::LeftButton);
    const int all = rows();
    QTest::keyClicks(part<QLineEdit>("lineSearch"), "00 AB CD");
    ASSERT_GE(rows(), 1);
    EXPECT_LT(rows(), all);
    EXPECT_THAT(cell(0, LineModel::bytes), StartsWith("01 03 C8 00 00"));
    EXPECT_THAT(cell(0, LineModel::bytes), testing::EndsWith("00 00 \u2026"));
    EXPECT_LT(cell(0, LineModel::bytes).size(), 210U);
    EXPECT_THAT(
        table->model()->index(0, LineModel::bytes).data(Qt::ToolTipRole).toString().toStdString(),
        HasSubstr("AB CD"));
}

TEST_F(TheLinePage, MarksTroubleAndShowsItAlone)
{
    setup.timeoutMs = 50;
    watch({"R_W:100"});
    open();
    stopController(true);
    part<QCheckBox>("trouble")->setChecked(true);
    EXPECT_TRUE(waitUntil([this]() { return rows() > 0; }));
    stopController(false);
    EXPECT_THAT(cell(0, LineModel::meaning), StartsWith("\u2717 "));
    EXPECT_THAT(cell(0, LineModel::meaning), HasSubstr("no byte came"));
}

TEST_F(TheLinePage, TellsOfEachSilenceOnce)
{
    setup.timeoutMs = 40;
    watch({"R_W:100"});
    open();
    watch({"R_W:100", "2/R_W:5"});
    const auto silences = [this]() {
        int count = 0;
        for (int row = 0; row < rows(); ++row)
            count += cell(row, LineModel::meaning).find("no answer") != std::string::npos;
        return count;
    };
    EXPECT_TRUE(waitUntil([&]() { return silences() >= 6; }));
    for (int row = 1; row < rows(); ++row)
        if (cell(row, LineModel::meaning).find("no answer") != std::string::npos) {
            EXPECT_EQ(cell(row - 1, LineModel::direction), "\u2192 request") << row;
        }
}

TEST_F(TheLinePage, SavesALineLogAndOpensOne)
{
    watch({"R_W:100"});
    open();
    QTest::mouseClick(part<QPushButton>("hold"), Qt::LeftButton);
    const int before = rows();
    const QString file = folder.filePath("line.log");
    ASSERT_TRUE(page.saveLog(file));
    std::ifstream log(file.toStdString());
    std::string line;
    int entries = 0;
    while (std::getline(log, line))
        entries += parseLogLine(line) ? 1 : 0;
    EXPECT_EQ(entries, before);
    EXPECT_EQ(readRecordedLog(file.toStdString()).wire.has_value(), true);
    const std::string first = cell(0, LineModel::meaning);
    ASSERT_TRUE(page.openLog(file));
    EXPECT_EQ(rows(), before);
    EXPECT_EQ(cell(0, LineModel::meaning), first);
    EXPECT_THAT(part<QLabel>("standing")->text().toStdString(), HasSubstr("not the line"));
    const long long cycles = desk.state().cycles;
    ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 3; }));
    EXPECT_EQ(rows(), before) << "a log and the line are never mixed";
    EXPECT_FALSE(page.openLog(folder.filePath("none")));
    EXPECT_THAT(told, HasSubstr("none"));
    EXPECT_EQ(rows(), before);
}

TEST_F(TheLinePage, SavesWhereOneRecordingEndsAndTheNextBegins)
{
    const QString joined = folder.filePath("joined.log");
    const QString saved = folder.filePath("saved.log");
    const std::string first = "2026-01-31T12:00:00.000000+00:00 TX 01 03 05 64 00 01 C5 15 |\n";
    const std::string second = "2026-01-31T12:00:05.000000+00:00 TX 01 03 05 64 00 01 C5 15 |\n";
    std::ofstream(joined.toStdString())
        << "# line 9600,8,EVEN,1\n" + first + "# line 9600,8,EVEN,1\n" + second;
    ASSERT_EQ(readRecordedLog(joined.toStdString()).breaks, (std::vector<std::size_t>{0, 1}));
    ASSERT_TRUE(page.openLog(joined));
    ASSERT_TRUE(page.saveLog(saved));
    const RecordedLog log = readRecordedLog(saved.toStdString());
    EXPECT_EQ(log.breaks, (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(log.entries.size(), 2U);
    ASSERT_TRUE(log.wire);
    EXPECT_EQ(toText(*log.wire), "9600,8,EVEN,1");
}

TEST_F(TheLinePage, SavesThatFramesAreMissing)
{
    Passed remark;
    remark.what = Passed::What::note;
    remark.text = "a remark";
    remark.at = Clock::now();
    emit desk.framesPassed({remark}, 0);
    emit desk.framesPassed({remark}, 7);
    const QString file = folder.filePath("line.log");
    ASSERT_TRUE(page.saveLog(file));
    EXPECT_EQ(readRecordedLog(file.toStdString()).breaks, (std::vector<std::size_t>{0, 1}));
}

TEST_F(TheLinePage, SavesALogThatTheToolReads)
{
    options.set = {"R_W:100=4711"};
    watch({"R_W:100"});
    open();
    ASSERT_TRUE(waitUntil([this]() { return rows() >= 4; }));
    QTest::mouseClick(part<QPushButton>("hold"), Qt::LeftButton);
    const QString file = folder.filePath("line.log");
    ASSERT_TRUE(page.saveLog(file));
    QProcess tool;
    tool.start(QStringLiteral(DOV417_TOOL), {"trace", file});
    ASSERT_TRUE(tool.waitForFinished());
    EXPECT_EQ(tool.exitCode(), 0);
    EXPECT_EQ(tool.readAllStandardError().toStdString(), "") << "it could read every line";
    const QString trace = QString::fromUtf8(tool.readAllStandardOutput());
    int replies = 0;
    for (int row = 0; row < rows(); ++row)
        replies += cell(row, LineModel::meaning) == "station 1: R_W:100 = 4711" ? 1 : 0;
    ASSERT_GT(replies, 0);
    EXPECT_EQ(trace.count(QLatin1String("R_W:100 = 4711")), replies) << trace.toStdString();
}

// R_W:0..7 and R_W:100..107 of station 1, and 8 values.
const char* const readZero = "01 03 05 00 00 08 44 C0";
const char* const eightRead = "01 03 10 00 01 00 02 00 03 00 04 00 05 00 06 00 07 00 08 72 98";

TEST_F(TheLinePage, TellsNoReplyOfALogUnderTheAddressesOfARequestBeforeAGap)
{
    const std::string time = "2026-01-31T12:34:56.0";
    const auto sent = [&](int i) {
        return time + std::to_string(10 + i) + "000+00:00 TX " + readZero + " |\n";
    };
    const auto came = [&](int i) {
        return time + std::to_string(10 + i) + "000+00:00 RX " + eightRead + " |\n";
    };
    const QString file = folder.filePath("gap.log");
    for (const std::string& gap :
         {std::string("# dov417, line 38400,8,EVEN,1\n"),
          std::string("2026-01-31T12:34:56.013000+00:00 TX 01 03 05 64 0\n"), came(3),
          time + "13000+00:00 -- | 3 frames are missing here: this computer was too busy\n"}) {
        std::ofstream(file.toStdString()) << sent(0) + came(1) + sent(2) + gap + came(4);
        ASSERT_TRUE(page.openLog(file)) << told;
        EXPECT_EQ(cell(1, LineModel::meaning), "station 1: R_W:0..7 = 1 2 3 4 5 6 7 8");
        const int last = rows() - 1;
        EXPECT_EQ(cell(last, LineModel::meaning),
                  "station 1: read registers, 16 bytes of values: 1 2 3 4 5 6 7 8")
            << gap;
        table->selectRow(last);
        EXPECT_EQ(fields().at(3), "value 1: 1") << gap;
        table->selectRow(1);
        EXPECT_EQ(fields().at(3), "register 1280: 1") << gap;
    }
}

TEST_F(TheLinePage, SavesWhereFramesAreMissingSoThatALogTellsIt)
{
    Passed began;
    began.what = Passed::What::began;
    began.transmission.number = 1;
    began.transmission.sent = QByteArray::fromHex(readZero);
    emit desk.framesPassed({began}, 0);
    Passed ended = began;
    ended.what = Passed::What::ended;
    ended.transmission.number = 3; // to R_W:100..107, whose request was dropped
    ended.transmission.sent = QByteArray::fromHex("01 03 05 64 00 08 05 1F");
    ended.transmission.reception.result = LineResult::reply;
    ended.transmission.reception.bytes = QByteArray::fromHex(eightRead);
    emit desk.framesPassed({ended}, 3);
    ASSERT_EQ(rows(), 3);
    EXPECT_EQ(cell(2, LineModel::meaning), "station 1: R_W:100..107 = 1 2 3 4 5 6 7 8");
    const QString file = folder.filePath("saved.log");
    ASSERT_TRUE(page.saveLog(file)) << told;
    ASSERT_TRUE(page.openLog(file)) << told;
    ASSERT_EQ(rows(), 3);
    EXPECT_EQ(cell(1, LineModel::meaning), "\u2717 3 frames are missing here");
    EXPECT_EQ(cell(2, LineModel::meaning),
              "station 1: read registers, 16 bytes of values: 1 2 3 4 5 6 7 8");
    EXPECT_EQ(readRecordedLog(file.toStdString()).breaks, (std::vector<std::size_t>{0, 1}));
}

// Frames that are looked at when the computer's clock has been moved, or it has slept.
TEST_F(TheLinePage, KeepsTheTimeOfDayAtWhichFramesCameWhileItStoodStill)
{
    const Clock::time_point came{std::chrono::hours(5)};
    const QDateTime noon = QDateTime::fromString("2026-02-03T12:00:00", Qt::ISODate);
    Passed frame;
    frame.what = Passed::What::began;
    frame.transmission.number = 1;
    frame.transmission.sent = QByteArray::fromHex(readZero);
    frame.transmission.sendBegin = frame.at = came;
    setPanelTime(came, noon);
    QTest::mouseClick(part<QPushButton>("hold"), Qt::LeftButton);
    emit desk.framesPassed({frame}, 0);
    setPanelTime(came + std::chrono::seconds(1), noon.addSecs(8 * 3600));
    emit desk.framesPassed({}, 7);
    QTest::mouseClick(part<QPushButton>("hold"), Qt::LeftButton);
    letPanelTimeRun();
    ASSERT_EQ(rows(), 2);
    EXPECT_THAT(cell(0, LineModel::meaning), HasSubstr("7 frame(s) are missing here"));
    EXPECT_EQ(cell(1, LineModel::when), "12:00:00.000");
}

TEST_F(TheLinePage, TellsOnceThatItsLogCannotBeWritten)
{
    setup.log = "/dev/full";
    std::vector<std::string> notes;
    QObject::connect(&desk, &PanelDesk::framesPassed, &page,
                     [&notes](const std::vector<Passed>& passed) {
                         for (const Passed& each : passed)
                             if (each.what == Passed::What::note)
                                 notes.push_back(each.text);
                     });
    const std::string lost = "the log /dev/full could not be written: it is not complete";
    const auto times = [&]() { return std::count(notes.begin(), notes.end(), lost); };
    watch({"R_W:100"});
    open();
    ASSERT_TRUE(waitUntil([&]() { return times() > 0; }));
    for (int i = 0; i < 2; ++i) { // there is a pulse before each
        const auto known = desk.statistics();
        ASSERT_TRUE(waitUntil([&]() { return desk.statistics() != known; }));
    }
    EXPECT_EQ(times(), 1);
}

TEST_F(TheLinePage, KeepsItsMemory)
{
    std::vector<Passed> passed(LineModel::maxRows / 2);
    for (Passed& each : passed)
        each.text = "a remark";
    for (int i = 0; i < 5; ++i)
        emit desk.framesPassed(passed, i == 4 ? 7 : 0);
    EXPECT_LE(rows(), static_cast<int>(LineModel::maxRows));
    EXPECT_GE(rows(), static_cast<int>(LineModel::maxRows / 2));
    EXPECT_THAT(cell(rows() - static_cast<int>(passed.size()) - 1, LineModel::meaning),
                HasSubstr("7 frame(s) are missing here"));
}

// Else one thing has two names in the window; a log is read by others, and keeps the driver's.
TEST(ALineModel, NamesRequestsInRemarksAsAddressesAndRecordsThemAsTheyWere)
{
    const std::string remark = "station 1 answers others, but not 1#R_W9000(5) since 10:00:00";
    Passed note;
    note.text = remark;
    const std::vector<Area> areas;
    LineModel model(areas);
    model.add(model.rowsOf({note}, nullptr), 0);
    EXPECT_EQ(model.index(0, LineModel::meaning).data().toString().toStdString(),
              "station 1 answers others, but not 1/R_W:9000..9004 since 10:00:00");
    const QTemporaryDir folder;
    const std::string file = folder.filePath("line.log").toStdString();
    model.save(file, "");
    std::stringstream saved;
    saved << std::ifstream(file).rdbuf();
    EXPECT_THAT(saved.str(), HasSubstr(remark));
}

} // namespace

} // namespace dov417
