#include "scan_world.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Lt;
using ::testing::UnorderedElementsAre;

const char* const own = "38400,8,EVEN,1";
const char* const second = "9600,8,NONE,1";
const char* const third = "9600,8,ODD,1";

Slave slaveAt(int station, const char* line = own, int delayMs = 5)
{
    Slave slave;
    slave.station = station;
    slave.line = line;
    slave.delayMs = delayMs;
    return slave;
}

Micros ms(int count)
{
    return milliseconds(count);
}

class StationScanTest : public ScanWorld {
protected:
    void scanThreeLines()
    {
        settings.lines = {parseRtuFormat(own), parseRtuFormat(second), parseRtuFormat(third)};
    }
};

TEST_F(StationScanTest, FindsWhoAnswersWithTheTimeItTakes)
{
    slaves = {slaveAt(3, own, 7), slaveAt(9, own, 31)};
    run();
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 3", "38400,8,EVEN,1 9"));
    EXPECT_EQ(times.at(3), ms(7));
    EXPECT_EQ(times.at(9), ms(31));
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(StationScanTest, AsksForAWordOfTheFirstAreaAndThenOfOneThatIsReadOtherwise)
{
    slaves = {slaveAt(3)};
    settings.stations = {3};
    run();
    EXPECT_THAT(sent, ElementsAre(withCrc(QByteArray::fromHex("030100000010")),
                                  withCrc(QByteArray::fromHex("030301800001"))));
}

TEST_F(StationScanTest, TellsAStationAsSoonAsItHasAnswered)
{
    slaves = {slaveAt(1)};
    begin();
    pass(settings.listening + ms(40));
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 1"));
    EXPECT_FALSE(isDone);
}

TEST_F(StationScanTest, FindsEachAtItsOwnSpeedAndParity)
{
    scanThreeLines();
    slaves = {slaveAt(2, second), slaveAt(2, third), slaveAt(7, own), slaveAt(8, third)};
    run();
    EXPECT_THAT(lines, ElementsAre(own, second, third));
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 7", "9600,8,NONE,1 2", "9600,8,ODD,1 2",
                                   "9600,8,ODD,1 8"));
}

TEST_F(StationScanTest, CountsAnExceptionAsAnAnswer)
{
    slaves = {slaveAt(4)};
    slaves.front().answer = "048102";
    settings.stations = {4};
    begin();
    pass(settings.listening + ms(6));
    slaves.front().answer = "048301";
    pass(ms(5000));
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 4"));
}

TEST_F(StationScanTest, CreditsALateAnswerToItsStationAndCallsItSlow)
{
    slaves = {slaveAt(2, own, 210), slaveAt(5), slaveAt(6)};
    run();
    EXPECT_THAT(found, UnorderedElementsAre("38400,8,EVEN,1 2 slow", "38400,8,EVEN,1 5",
                                            "38400,8,EVEN,1 6"));
    EXPECT_EQ(times.at(2), ms(210));
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(StationScanTest, WaitsForWhatIsLateBeforeTheSettingsAreChanged)
{
    scanThreeLines();
    slaves = {slaveAt(10, own, 450)};
    run();
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 10 slow"));
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(StationScanTest, CreditsNoStationToSettingsThatItDoesNotHear)
{
    isWire = false; // as on a pseudo-terminal, where a late answer is not garbled
    scanThreeLines();
    settings.stations = {3};
    slaves = {slaveAt(3, own, 570)};
    run();
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 3 slow"));
    EXPECT_EQ(times.at(3), ms(570));
    EXPECT_THAT(heardKinds(), ElementsAre(HeardKind::otherLine));
    EXPECT_EQ(toText(heard.front().line.value()), own);
}

TEST_F(StationScanTest, AsksAgainWhereALateAnswerComesBeforeItsStationIsAskedElsewhere)
{
    isWire = false;
    scanThreeLines();
    slaves = {slaveAt(10, own, 700)};
    run();
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 10 slow"));
    EXPECT_THAT(heardKinds(), ElementsAre(HeardKind::otherLine));
    EXPECT_THAT(lines, ElementsAre(own, second, third, own));
}

TEST_F(StationScanTest, TakesASecondAnswerOfOneKindFromWhoKnowsOneOnly)
{
    slaves = {slaveAt(3)};
    slaves.front().knowsRegisters = false;
    run();
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 3"));
    EXPECT_EQ(sent.size(), settings.stations.size() + 2);
}

TEST_F(StationScanTest, TellsThatAStationAnsweredOnce)
{
    slaves = {slaveAt(3)};
    settings.stations = {3};
    begin();
    pass(settings.listening + ms(9));
    slaves.clear();
    pass(std::chrono::minutes(1));
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 3 once"));
}

TEST_F(StationScanTest, AsksNothingWhereOthersSpeakAndTellsAtWhichSettings)
{
    scanThreeLines();
    slaves = {slaveAt(3)};
    for (int at = 100; at < 2000; at += 100) {
        sendFrame(at, "020300000001", second);
        sendFrame(at + 5, "0203021234", second);
    }
    run();
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_THAT(heardKinds(), ElementsAre(HeardKind::inUse, HeardKind::inUse, HeardKind::inUse));
    EXPECT_THAT(heard.at(0).stations, IsEmpty());
    EXPECT_THAT(heard.at(1).stations, ElementsAre(2));
    EXPECT_EQ(toText(heard.at(1).line.value()), second);
    EXPECT_THAT(found, IsEmpty()) << "what others ask is no answer";
}

TEST_F(StationScanTest, AsksWhereOthersSpeakIfItIsTold)
{
    settings.asksAnyway = true;
    slaves = {slaveAt(3)};
    sendFrame(100, "090300000001");
    run();
    EXPECT_THAT(heardKinds(), ElementsAre(HeardKind::inUse));
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 3"));
}

TEST_F(StationScanTest, TakesAStrayByteForNoUse)
{
    slaves = {slaveAt(3)};
    sendBytes(100, QByteArray::fromHex("000000"));
    run();
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 3"));
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(StationScanTest, StopsAskingWhereOthersBeginToSpeak)
{
    slaves = {slaveAt(10)};
    for (int at = 600; at < 1000; at += 20)
        sendFrame(at, "630600000001");
    run();
    EXPECT_THAT(heardKinds(), ElementsAre(HeardKind::inUse));
    EXPECT_THAT(heard.front().stations, ElementsAre(0x63));
    EXPECT_THAT(sent.size(), Lt(settings.stations.size()));
    EXPECT_THAT(found, IsEmpty());
}

TEST_F(StationScanTest, TellsGarbledAnswersOfOneStation)
{
    slaves = {slaveAt(2), slaveAt(6)};
    slaves.front().isBroken = true;
    run();
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 6"));
    ASSERT_THAT(heardKinds(), ElementsAre(HeardKind::garbled));
    EXPECT_EQ(heard.front().station, 2);
    EXPECT_EQ(heard.front().bytes, 3 * 7);
}

TEST_F(StationScanTest, TellsBytesWithoutAFrameOnceWhoeverIsAsked)
{
    settings.stations.clear();
    for (int station = 1; station <= 40; ++station) {
        settings.stations.push_back(station);
        slaves.push_back(slaveAt(station));
        slaves.back().isBroken = true;
    }
    run();
    EXPECT_THAT(heardKinds(), ElementsAre(HeardKind::garbled, HeardKind::garbled,
                                          HeardKind::garbled, HeardKind::noFrame));
    EXPECT_THAT(found, IsEmpty());
}

TEST_F(StationScanTest, AsksAgainWhoseAnswerMayHaveBeenLost)
{
    slaves = {slaveAt(3)};
    begin();
    pass(settings.listening + ms(2 * 53)); // while station 3 is asked
    slaves.front().isBroken = true;
    pass(ms(20));
    slaves.front().isBroken = false;
    pass(std::chrono::minutes(1));
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 3"));
    EXPECT_EQ(times.at(3), ms(5)) << "of the question that was answered";
}

TEST_F(StationScanTest, AsksAgainWhereAFrameOfAnotherMayHaveCoveredTheAnswer)
{
    slaves = {slaveAt(3)};
    begin();
    pass(settings.listening + ms(2 * 53)); // while station 3 is asked
    sendFrame(1, "630600000001");
    slaves.clear();
    pass(ms(50));
    slaves = {slaveAt(3)};
    slaves.front().delayMs = 6;
    pass(std::chrono::minutes(1));
    EXPECT_EQ(sent.size(), settings.stations.size() + 2);
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 3"));
}

TEST_F(StationScanTest, TakesTheAnswersToTwoQuestionsForNoMoreThanThat)
{
    settings.stations = {2, 3};
    settings.lastWait = ms(2000);
    slaves = {slaveAt(3, own, 130)};
    begin();
    pass(settings.listening + ms(60)); // station 3 is asked, and a frame of another comes
    sendFrame(1, "630600000001");
    pass(std::chrono::minutes(1));
    EXPECT_GE(std::count(sent.begin(), sent.end(), questionsOfTheTest().at(0).frameTo(3)), 2);
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 3 slow"));
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(StationScanTest, TellsTwoAnswersToOneQuestion)
{
    slaves = {slaveAt(3), slaveAt(4)};
    slaves.front().copies = 2;
    run();
    EXPECT_THAT(found, UnorderedElementsAre("38400,8,EVEN,1 3", "38400,8,EVEN,1 4"));
    ASSERT_THAT(heardKinds(), ElementsAre(HeardKind::answeredTwice));
    EXPECT_EQ(heard.front().station, 3);
}

TEST_F(StationScanTest, HearsTheAnswerBehindAnEchoAndAGlitch)
{
    echoes = true;
    glitch = QByteArray::fromHex("00");
    slaves = {slaveAt(3)};
    run();
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 3"));
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(StationScanTest, FindsNobodyInAnEcho)
{
    echoes = true;
    run();
    EXPECT_THAT(found, IsEmpty());
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_EQ(sent.size(), settings.stations.size());
}

TEST_F(StationScanTest, EndsSoonWithWhatWasFoundIfItIsStopped)
{
    scanThreeLines();
    slaves = {slaveAt(1), slaveAt(10)};
    begin();
    pass(settings.listening + ms(100));
    scan->stop(now);
    const std::size_t asked = sent.size();
    pass(ms(60));
    EXPECT_TRUE(isDone);
    EXPECT_EQ(sent.size(), asked);
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 1"));
}

TEST_F(StationScanTest, EndsAtOnceIfItIsStoppedWhileItListens)
{
    begin();
    scan->stop(now);
    pass(ms(0));
    EXPECT_TRUE(isDone);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(StationScanTest, LeavesOutSettingsThatThePortRefuses)
{
    scanThreeLines();
    refusedLine = second;
    slaves = {slaveAt(2, second), slaveAt(7, third)};
    run();
    EXPECT_THAT(found, ElementsAre("9600,8,ODD,1 7"));
}

TEST_F(StationScanTest, SetsNoLineAndKeepsNoSilenceOverANetwork)
{
    settings.lines = {std::nullopt};
    slaves = {slaveAt(3, "", 0), slaveAt(4, "", 7)};
    run();
    EXPECT_THAT(found, ElementsAre("network 3", "network 4"));
    EXPECT_EQ(times.at(4), ms(7));
    EXPECT_THAT(lines, IsEmpty());
    EXPECT_EQ(elapsedMs(),
              (settings.listening + 8 * settings.timeout + 2 * ms(7) + settings.lastWait) / ms(1));
}

TEST_F(StationScanTest, DoesNotWaitForAStationThatAGatewayCallsAbsent)
{
    settings.lines = {std::nullopt};
    settings.isModbusTcp = true;
    settings.listening = Micros(0);
    for (int station = 1; station <= 10; ++station) {
        slaves.push_back(slaveAt(station, "", 20));
        slaves.back().answer = QByteArray(1, static_cast<char>(station)).toHex().toStdString() +
                               (station % 2 == 0 ? "810A" : "810B");
    }
    slaves.at(5).answer.clear();
    run();
    EXPECT_THAT(found, ElementsAre("network 6"));
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_EQ(elapsedMs(), (11 * ms(20) + settings.lastWait) / ms(1));
}

TEST_F(StationScanTest, FindsAStationThatIsAbsentForOneQuestionOnly)
{
    settings.lines = {std::nullopt};
    settings.isModbusTcp = true;
    settings.stations = {3};
    slaves = {slaveAt(3, "", 5)};
    begin();
    pass(settings.listening + ms(5));
    slaves.front().answer = "03830B";
    pass(ms(5));
    slaves.front().answer.clear();
    pass(std::chrono::minutes(1));
    EXPECT_THAT(found, ElementsAre("network 3"));
}

TEST_F(StationScanTest, CountsTheExceptionsOfAGatewayAsAnswersOnALine)
{
    settings.stations = {4};
    slaves = {slaveAt(4)};
    slaves.front().answer = "04810B";
    run();
    EXPECT_THAT(found, ElementsAre("38400,8,EVEN,1 4"));
}

TEST_F(StationScanTest, TakesTheSumOfItsWaitsAndSaysSoBefore)
{
    settings.stations.clear();
    for (int station = 1; station <= 247; ++station)
        settings.stations.push_back(station);
    begin();
    // 8 characters of 11 bits each: 2.292 ms.
    const Micros sum = ms(500) + 247 * (ms(50) + Micros(2292)) + ms(500);
    EXPECT_EQ(scan->progress(now).left, sum);
    pass(ms(5000));
    const ScanProgress progress = scan->progress(now);
    EXPECT_EQ(progress.elapsed, ms(5000));
    EXPECT_NEAR(static_cast<double>(progress.left.count()),
                static_cast<double>((sum - ms(5000)).count()), 2000);
    EXPECT_EQ(progress.station, 87);
    pass(std::chrono::minutes(1));
    ASSERT_TRUE(isDone);
    EXPECT_NEAR(static_cast<double>(elapsedMs()), 13916, 3);
}

} // namespace

} // namespace dov417
