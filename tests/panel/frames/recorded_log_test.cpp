#include "panel/frames/recorded_log.h"

#include <QTemporaryDir>
#include <fstream>
#include <gmock/gmock.h>

#include "complaint.h"
#include "line/crc16.h"
#include "line/failure.h"
#include "line/frame_text.h"
#include "panel/frames/wire_words.h"

namespace dov417 {

namespace {

using std::chrono::microseconds;
using testing::ElementsAre;
using testing::HasSubstr;

// 10 bits a character at 10000 baud: a byte takes a millisecond.
const char* const header = "# port /dev/ttyUSB0, line 10000,8,NONE,1\n";

std::string hexWithCrc(const char* hex)
{
    return hexText(withCrc(QByteArray::fromHex(hex)));
}

// So many milliseconds after noon.
std::string logLineAt(int ms, const std::string& rest)
{
    const LogTime noon{microseconds(1769860800000000)};
    return logTimeText(noon + std::chrono::milliseconds(ms)) + " " + rest + "\n";
}

std::string readAt(int ms, int station = 1)
{
    return logLineAt(ms, "TX " + hexWithCrc(station == 1 ? "010305640001" : "020305640001") + " |");
}

std::string replyAt(int ms, int station = 1)
{
    return logLineAt(ms, "RX " + hexWithCrc(station == 1 ? "0103020007" : "0203020007") + " |");
}

class ARecordedLog : public testing::Test {
protected:
    RecordedLog logOf(const std::string& text) const
    {
        const std::string file = folder.filePath("line.log").toStdString();
        std::ofstream(file) << text;
        return readRecordedLog(file);
    }
    // As in "request 8.000 ms", in their order.
    static std::vector<std::string> spansOf(const WireTimes& times)
    {
        std::vector<std::string> texts;
        for (const WireSpan& span : times.spans())
            texts.push_back(
                (wordOf(span.kind) + " " + wireTimeText(span.end - span.begin, 1)).toStdString());
        return texts;
    }

    QTemporaryDir folder;
};

TEST_F(ARecordedLog, IsDrawnAsItsLineWas)
{
    const RecordedLog log = logOf(header + readAt(0) + replyAt(25) + readAt(40, 2) +
                                  logLineAt(148, "-- | no answer within 100 ms: 3 bytes came"));
    ASSERT_TRUE(log.wire);
    const WireTimes times = timesOf(log);
    EXPECT_THAT(spansOf(times),
                ElementsAre("request 8.0 ms", "the controller's time 10.0 ms", "reply 7.0 ms",
                            "inter-frame delay 3.5 ms", "idle 11.5 ms", "request 8.0 ms",
                            "waited in vain 100.0 ms"));
    ASSERT_EQ(times.frames().size(), 2U);
    EXPECT_EQ(requestsIn(log), 2U);
    EXPECT_THAT(times.stations(), ElementsAre(1, 2));
    const WireFrame* const second = times.find(numberOfEntry(2));
    ASSERT_TRUE(second);
    EXPECT_EQ(entryOfNumber(log, second->told.number).bytes, second->told.sent);
    EXPECT_THAT(frameText(*second, {}).toStdString(),
                HasSubstr("no answer within 100 ms: 3 bytes came"));
}

TEST_F(ARecordedLog, TellsWhatWasSentAgainAndWhereACycleEnds)
{
    const RecordedLog log =
        logOf(header + readAt(0) + replyAt(25) + readAt(40, 2) +
              logLineAt(148, "-- | no answer within 100 ms: no byte came") + readAt(160, 2) +
              replyAt(190, 2) + readAt(200) + replyAt(225) + readAt(240, 2) + replyAt(265, 2));
    const WireTimes times = timesOf(log);
    std::vector<bool> again;
    for (const WireFrame& frame : times.frames())
        again.push_back(frame.told.repeats);
    EXPECT_THAT(again, ElementsAre(false, false, true, false, false));
    ASSERT_EQ(times.cycles().size(), 2U);
    EXPECT_EQ(times.cycles().back() - times.cycles().front(), std::chrono::milliseconds(200));
}

TEST_F(ARecordedLog, WaitsForNoReplyToABroadcast)
{
    const std::string broadcast = "TX " + hexWithCrc("000605640001") + " |";
    const WireTimes times =
        timesOf(logOf(header + logLineAt(0, broadcast) + logLineAt(100, broadcast) + readAt(200)));
    ASSERT_EQ(times.frames().size(), 3U);
    EXPECT_FALSE(times.frames().at(1).told.repeats);
    EXPECT_EQ(times.frames().at(1).told.reception.result, LineResult::broadcast);
    EXPECT_EQ(times.frames().at(1).tookFor(SpanKind::timeOut).count(), 0);
}

TEST_F(ARecordedLog, JoinsNothingAcrossTwoRecordings)
{
    const RecordedLog log = logOf(header + readAt(0) + replyAt(25) + readAt(30) + header +
                                  readAt(5000) + replyAt(5025));
    const WireTimes times = timesOf(log);
    EXPECT_THAT(spansOf(times),
                ElementsAre("request 8.0 ms", "the controller's time 10.0 ms", "reply 7.0 ms",
                            "inter-frame delay 3.5 ms", "idle 1.5 ms", "request 8.0 ms",
                            "not recorded 5.0 s", "request 8.0 ms", "the controller's time 10.0 ms",
                            "reply 7.0 ms"));
    EXPECT_THAT(frameText(times.frames().at(1), {}).toStdString(),
                HasSubstr("what became of it was not recorded"));
    EXPECT_FALSE(times.frames().back().told.repeats);
}

TEST_F(ARecordedLog, GoesOnWhereTheClockOnTheWallWasPutBack)
{
    const RecordedLog log =
        logOf(header + readAt(1000) + replyAt(1025) + readAt(0, 2) + replyAt(25, 2));
    const WireTimes times = timesOf(log);
    ASSERT_EQ(times.frames().size(), 2U);
    EXPECT_EQ(times.frames().at(1).begin, times.frames().at(0).end);
    EXPECT_EQ(times.frames().at(0).took.at(static_cast<std::size_t>(SpanKind::reply)),
              microseconds(7000));
}

// As it is written: a note when it is told, and the frame behind it begins some microseconds
// before.
TEST_F(ARecordedLog, TakesANoteThatWasToldLateForNoClockThatWasPutBack)
{
    const std::string note = " -- | no answer within 100 ms: no byte came\n";
    const LogTime noon{microseconds(1769860800000000)};
    const WireTimes times = timesOf(logOf(
        header + readAt(40, 2) + logTimeText(noon + microseconds(160050)) + note + readAt(160, 2) +
        logTimeText(noon + microseconds(290040)) + note + readAt(290, 2) + replyAt(320, 2)));
    std::vector<bool> again;
    for (const WireFrame& frame : times.frames())
        again.push_back(frame.told.repeats);
    EXPECT_THAT(again, ElementsAre(false, true, true));
    EXPECT_EQ(times.cycles().size(), 1U);
    for (const std::string& span : spansOf(times))
        EXPECT_THAT(span, testing::Not(HasSubstr("not recorded")));
}

TEST_F(ARecordedLog, GoesOnWhereAYearIsWrong)
{
    const std::string far =
        "2926-01-31T12:00:01.000000+00:00 TX " + hexWithCrc("020305640001") + " |\n";
    const WireTimes times =
        timesOf(logOf(header + readAt(0) + replyAt(25) + far + readAt(2000) + replyAt(2025)));
    ASSERT_EQ(times.frames().size(), 3U);
    EXPECT_LT(times.end() - times.begin(), std::chrono::seconds(10));
}

TEST_F(ARecordedLog, KnowsARepetitionBehindAMarker)
{
    const std::string marker = "TX " + hexWithCrc("020800001234") + " |";
    const std::string echo = "RX " + hexWithCrc("020800001234") + " |";
    const WireTimes times = timesOf(
        logOf(header + readAt(0, 2) + logLineAt(108, "-- | no answer within 100 ms: no byte came") +
              logLineAt(110, marker) + logLineAt(130, echo) + readAt(140, 2)));
    ASSERT_EQ(times.frames().size(), 3U);
    EXPECT_TRUE(times.frames().back().told.repeats);
}

TEST_F(ARecordedLog, KnowsNoSpeedWhereItsRemarksNameNoneOrTwo)
{
    EXPECT_FALSE(logOf(readAt(0)).wire);
    EXPECT_FALSE(logOf("# port tcp://there:4001\n" + readAt(0)).wire);
    EXPECT_FALSE(logOf(header + readAt(0) + "# line 9600,8,EVEN,1\n" + readAt(50)).wire);
    EXPECT_EQ(toText(*logOf("# saved from dov417-panel, line 9600,8,EVEN,1\n" + readAt(0)).wire),
              "9600,8,EVEN,1");
}

TEST_F(ARecordedLog, IsRefusedWithoutALineOfALog)
{
    EXPECT_THAT(complaint([this]() { logOf("# line 9600,8,EVEN,1\nnothing\n"); }),
                HasSubstr("holds no line of a line log"));
}

} // namespace

} // namespace dov417
