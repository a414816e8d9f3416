#include "panel/frames/line_page.h"

#include <QApplication>
#include <QProcess>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>
#include <fstream>

#include "made_views.h"
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

} // namespace

} // namespace dov417
