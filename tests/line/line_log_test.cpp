#include "line/line_log.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "complaint.h"

namespace dov417 {

namespace {

using std::chrono::microseconds;

// 2026-01-31 11:34:56.789012 UTC
const LogTime noon{microseconds(1769859296789012)};

class TimeZone {
public:
    explicit TimeZone(const char* zone)
    {
        const char* now = std::getenv("TZ");
        before_ = now ? now : "";
        set(zone);
    }
    ~TimeZone()
    {
        if (before_.empty())
            unsetenv("TZ");
        else
            setenv("TZ", before_.c_str(), 1);
        tzset();
    }

private:
    static void set(const char* zone)
    {
        setenv("TZ", zone, 1);
        tzset();
    }
    std::string before_;
};

TEST(LineLog, WritesTimeDirectionBytesAndMeaning)
{
    const TimeZone zone("UTC-1");
    const QByteArray bytes = QByteArray::fromHex("0103050A0001A4C4");
    EXPECT_EQ(logLine({noon, Direction::sent, bytes, "station 1: read"}),
              "2026-01-31T12:34:56.789012+01:00 TX 01 03 05 0A 00 01 A4 C4 | station 1: read");
    EXPECT_EQ(logLine({noon, Direction::note, QByteArray(), "no reply"}),
              "2026-01-31T12:34:56.789012+01:00 -- | no reply");
}

TEST(LineLog, KnowsWhatItsNotesSay)
{
    EXPECT_EQ(gapText(1), "1 frame is missing here");
    EXPECT_EQ(gapText(7), "7 frames are missing here");
    LogEntry entry{noon, Direction::note, QByteArray(), gapText(7)};
    EXPECT_TRUE(tellsGap(entry));
    EXPECT_FALSE(tellsNoAnswer(entry));
    EXPECT_FALSE(tellsPort(entry));
    entry.direction = Direction::stray;
    EXPECT_FALSE(tellsGap(entry));
    entry = {noon, Direction::note, QByteArray(), "no answer within 500 ms: no byte came"};
    EXPECT_TRUE(tellsNoAnswer(entry));
    EXPECT_FALSE(tellsGap(entry));
    entry.meaning = "port /dev/ttyUSB0 is gone";
    EXPECT_TRUE(tellsPort(entry));
}

TEST(LineLog, TheOffsetFromUtcHasItsSign)
{
    const TimeZone zone("UTC3:30");
    EXPECT_EQ(logLine({noon, Direction::stray, QByteArray(1, 0), ""}),
              "2026-01-31T08:04:56.789012-03:30 RX? 00 | ");
}

TEST(LineLog, OneFrameIsOneLineWhateverItsMeaningHolds)
{
    const TimeZone zone("UTC0");
    EXPECT_EQ(logLine({noon, Direction::note, QByteArray(), "a\nb\rc"}),
              "2026-01-31T11:34:56.789012+00:00 -- | a b c");
}

TEST(LineLog, LinesAreReadBack)
{
    const auto entry = parseLogLine("2026-01-31T12:34:56.789012+01:00 RX 01 83 02 C0 F1 | a | b");
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->time, noon);
    EXPECT_EQ(entry->direction, Direction::received);
    EXPECT_EQ(entry->bytes, QByteArray::fromHex("018302C0F1"));
    EXPECT_EQ(entry->meaning, "a | b");
}

TEST(LineLog, OtherTimeZonesSmallLettersAndMissingMeaningsAreUnderstood)
{
    const auto entry = parseLogLine("2026-01-31T08:04:56.789012-03:30 TX 0a FF\r");
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->time, noon);
    EXPECT_EQ(entry->bytes, QByteArray::fromHex("0AFF"));
    EXPECT_EQ(entry->meaning, "");
    ASSERT_TRUE(parseLogLine("2026-01-31T08:04:56.789012-03:30 -- | note").has_value());
    ASSERT_TRUE(parseLogLine("2026-01-31T08:04:56.789012-03:30 RX? 00 |").has_value());
}

TEST(LineLog, WhatIsNoLineOfALogIsNothing)
{
    for (const char* line :
         {"", "rubbish", "# remark", "2026-01-31T12:34:56+01:00 TX 01 | no microseconds",
          "2026-01-31T12:34:56.789012 TX 01 | no offset",
          "2026-01-31T12:34:56.789012+01:00 XX 01 | unknown direction",
          "2026-01-31T12:34:56.789012+01:00 TX 0 | half a byte",
          "2026-01-31T12:34:56.789012+01:00 TX 0G | no hex",
          "2026-01-31T12:34:56.789012+01:00 TX | no bytes",
          "2026-01-31T12:34:56.789012+01:00 -- 01 | a note with bytes"})
        EXPECT_FALSE(parseLogLine(line).has_value()) << line;
}

TEST(LineLog, AppendsToTheFileLineByLine)
{
    const std::string file = ::testing::TempDir() + "line_log_test.log";
    std::remove(file.c_str());
    for (const char* meaning : {"first", "second"}) {
        LineLog log;
        log.open(file);
        log.remark("settings");
        log.add({LogTime(), Direction::sent, QByteArray::fromHex("0102"), meaning});
        EXPECT_FALSE(log.hasFailed());
    }
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    std::remove(file.c_str());
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "# settings");
    ASSERT_TRUE(parseLogLine(lines[1]).has_value());
    EXPECT_EQ(parseLogLine(lines[1])->meaning, "first");
    EXPECT_EQ(parseLogLine(lines[3])->meaning, "second");
}

TEST(LineLog, IsSilentUntilItIsOpenAndSaysWhyItCannotBe)
{
    LineLog log;
    log.add({LogTime(), Direction::note, QByteArray(), "nowhere"});
    EXPECT_FALSE(log.isOpen());
    EXPECT_EQ(complaint([&] { log.open("/no/such/folder/x.log"); }),
              "cannot write the log /no/such/folder/x.log: No such file or directory");
}

TEST(LineLog, TwoDoNotWriteIntoOneFile)
{
    const std::string file = ::testing::TempDir() + "line_log_of_two.log";
    std::remove(file.c_str());
    LineLog second;
    {
        LineLog first;
        first.open(file);
        first.remark("first");
        EXPECT_EQ(complaint([&] { second.open(file); }),
                  "cannot write the log " + file + ": another recording is writing into it");
        EXPECT_FALSE(second.isOpen());
        second.remark("second");
        first.remark("first again");
    }
    LineLog third;
    third.open(file);
    third.remark("third");
    std::ifstream in(file);
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::remove(file.c_str());
    EXPECT_EQ(text, "# first\n# first again\n# third\n");
}

TEST(LineLog, WhatIsNoFileIsForAll)
{
    LineLog one;
    LineLog other;
    one.open("/dev/null");
    other.open("/dev/null");
    other.remark("nowhere");
    EXPECT_TRUE(one.isOpen());
    EXPECT_FALSE(other.hasFailed());
}

TEST(LineLog, AFullDiskIsNoticed)
{
    LineLog log;
    log.open("/dev/full");
    log.add({LogTime(), Direction::note, QByteArray(), "lost"});
    EXPECT_TRUE(log.hasFailed());
}

} // namespace

} // namespace dov417
