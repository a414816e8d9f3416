#include "simulator/other_speed.h"

#include <gtest/gtest.h>

#include "line/crc16.h"

namespace dov417::simulator {

namespace {

const QByteArray request = QByteArray::fromHex("0103050A0001A4C4");

SerialFormat line(const char* text)
{
    return parseSerialFormat(text);
}

QByteArray heard(const char* own, const QByteArray& bytes, const char* sent)
{
    return heardAs(line(own), bytes, line(sent));
}

TEST(OtherSpeed, IsNoneWhereBothAreTheSame)
{
    for (const char* format : {"38400,8,EVEN,1", "9600,8,NONE,1", "1200,8,ODD,2", "300,8,NONE,2"})
        EXPECT_EQ(heard(format, request, format), request) << format;
}

TEST(OtherSpeed, ChangesNoByteWhereItDiffersByAFewPercent)
{
    EXPECT_EQ(heard("9600,8,NONE,1", request, "9800,8,NONE,1"), request);
    EXPECT_EQ(heard("9600,8,EVEN,1", request, "9400,8,EVEN,1"), request);
}

TEST(OtherSpeed, MergesBitsOfAFasterSender)
{
    // Nine bits of 0 are four and a half of the receiver's: the start bit and three more.
    EXPECT_EQ(heard("9600,8,NONE,1", QByteArray::fromHex("00"), "19200,8,NONE,1"),
              QByteArray::fromHex("F8"));
    EXPECT_EQ(heard("9600,8,NONE,1", QByteArray::fromHex("FF"), "19200,8,NONE,1"),
              QByteArray::fromHex("FF"));
}

TEST(OtherSpeed, SplitsBytesOfASlowerSender)
{
    // Eighteen bits of 0, of which ten make a byte without a stop bit.
    EXPECT_EQ(heard("19200,8,NONE,1", QByteArray::fromHex("00"), "9600,8,NONE,1"),
              QByteArray::fromHex("00"));
    // Two bits of 0, then 16 of 1: the rest is silence.
    EXPECT_EQ(heard("19200,8,NONE,1", QByteArray::fromHex("FF"), "9600,8,NONE,1"),
              QByteArray::fromHex("FE"));
    EXPECT_EQ(heard("19200,8,NONE,1", QByteArray::fromHex("0F"), "9600,8,NONE,1"),
              QByteArray::fromHex("FE80"));
}

TEST(OtherSpeed, LeavesNoFrameOfARequest)
{
    const char* speeds[] = {"1200,8,EVEN,1",  "9600,8,EVEN,1",  "19200,8,EVEN,1",
                            "38400,8,EVEN,1", "57600,8,EVEN,1", "115200,8,EVEN,1"};
    for (const char* own : speeds)
        for (const char* sent : speeds)
            EXPECT_EQ(hasGoodCrc(heard(own, request, sent)), own == sent)
                << own << " hears " << sent;
}

TEST(OtherSpeed, HearsNothingWhereNothingIsSent)
{
    EXPECT_EQ(heard("9600,8,NONE,1", QByteArray(), "19200,8,NONE,1"), QByteArray());
}

} // namespace

} // namespace dov417::simulator
