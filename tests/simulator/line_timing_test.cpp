#include "line/line_timing.h"

#include <gtest/gtest.h>

#include "support.h"

namespace dov417::simulator {
namespace {

LineSettings lineOf(const char* text)
{
    return parseLineSettings(QLatin1String(text), nullptr).value();
}

TEST(LineSettings, AreReadInTheirWrittenForm)
{
    const LineSettings line = lineOf("9600,7,ODD,2");
    EXPECT_EQ(line.baudRate, 9600);
    EXPECT_EQ(line.dataBits, 7);
    EXPECT_EQ(line.parity, Parity::odd);
    EXPECT_EQ(line.stopBits, 2);
    EXPECT_EQ(text(lineSettingsText(line)), "9600,7,ODD,2");
    EXPECT_EQ(text(lineSettingsText(lineOf("19200, 8, none, 1"))), "19200,8,NONE,1");
    EXPECT_EQ(text(lineSettingsText(lineOf("38400,8,E,1"))), "38400,8,EVEN,1");
    EXPECT_EQ(text(lineSettingsText(LineSettings())), "38400,8,EVEN,1");
}

TEST(LineSettings, AreRefusedWithAReasonWhereTheyAreNoLine)
{
    for (const char* bad :
         {"", "38400", "38400,8,EVEN", "38400,8,EVEN,1,1", "0,8,EVEN,1", "fast,8,EVEN,1",
          "38400,9,EVEN,1", "38400,8,MARK,1", "38400,8,EVEN,3", "-9600,8,EVEN,1", "38400,8,,1"}) {
        QString error;
        EXPECT_FALSE(parseLineSettings(QLatin1String(bad), &error).has_value()) << bad;
        EXPECT_FALSE(error.isEmpty()) << bad;
    }
}

TEST(CharacterTime, CountsStartDataParityAndStopBits)
{
    EXPECT_EQ(bitsPerCharacter(lineOf("38400,8,EVEN,1")), 11);
    EXPECT_EQ(bitsPerCharacter(lineOf("38400,8,NONE,1")), 10);
    EXPECT_EQ(bitsPerCharacter(lineOf("38400,8,NONE,2")), 11);
    EXPECT_EQ(bitsPerCharacter(lineOf("38400,7,ODD,1")), 10);
}

TEST(CharacterTime, IsRoundedUpOnceForTheWholeRun)
{
    const LineSettings line = lineOf("38400,8,EVEN,1");
    EXPECT_EQ(characterTime(line, 0), 0);
    EXPECT_EQ(characterTime(line, 1), 286459);      // 286 458.3
    EXPECT_EQ(characterTime(line, 13), 3723959);    // 3 723 958.3
    EXPECT_EQ(characterTime(line, 384), 110000000); // exact
    EXPECT_EQ(characterTime(lineOf("9600,8,NONE,1"), 3), 3125000);
}

TEST(FrameSilence, IsThreeAndAHalfCharactersAndFixedAbove19200Baud)
{
    EXPECT_EQ(frameSilence(lineOf("9600,8,EVEN,1")), 4010417);  // 38.5 bits: 4 010 416.7
    EXPECT_EQ(frameSilence(lineOf("19200,8,EVEN,1")), 2005209); // 2 005 208.3
    EXPECT_EQ(frameSilence(lineOf("38400,8,EVEN,1")), 1750000);
    EXPECT_EQ(frameSilence(lineOf("115200,8,EVEN,1")), 1750000);
}

TEST(WireClock, PassesBytesOneAfterTheOther)
{
    WireClock wire(lineOf("10000,8,NONE,1")); // 1 ms a character
    EXPECT_EQ(wire.transmit(5000000, 3), 8000000);
    EXPECT_EQ(wire.passedAt(0), 6000000);
    EXPECT_EQ(wire.passedAt(2), 8000000);
    EXPECT_EQ(wire.freeAt(), 8000000);
}

TEST(WireClock, LetsBytesWaitForThoseBeforeThem)
{
    WireClock wire(lineOf("10000,8,NONE,1"));
    wire.transmit(5000000, 3);
    EXPECT_EQ(wire.transmit(6500000, 2), 10000000); // from 8 ms on
    EXPECT_EQ(wire.passedAt(0), 9000000);
    EXPECT_EQ(wire.transmit(20000000, 1), 21000000); // an idle line is free at once
}

} // namespace
} // namespace dov417::simulator
