#include "line/frame_length.h"

#include <gtest/gtest.h>

#include "line/crc16.h"

namespace dov417 {

namespace {

QByteArray begins(const char* hex)
{
    return QByteArray::fromHex(hex);
}

TEST(FrameLength, OfARequestIsToldByItsFunctionAndItsCount)
{
    EXPECT_EQ(lengthOfRequest(begins("01")), notYetTold);
    EXPECT_EQ(lengthOfRequest(begins("01 03")), 8);
    EXPECT_EQ(lengthOfRequest(begins("01 07")), 4);
    EXPECT_EQ(lengthOfRequest(begins("01 16")), 10);
    EXPECT_EQ(lengthOfRequest(begins("01 10 00 00 00 02")), notYetTold);
    EXPECT_EQ(lengthOfRequest(begins("01 10 00 00 00 02 04")), 13);
    EXPECT_EQ(lengthOfRequest(begins("01 0F 00 00 00 0A 02")), 11);
    EXPECT_EQ(lengthOfRequest(begins("01 17 00 00 00 02 00 09 00 01 02")), 15);
    EXPECT_EQ(lengthOfRequest(begins("01 2B 0E 01 00")), neverTold);
}

TEST(FrameLength, TwoHundredFiftySixBytesOfDataAreCountedAsNone)
{
    EXPECT_EQ(lengthOfRequest(begins("01 10 00 00 00 80 00")), 265);
    EXPECT_EQ(lengthOfReplyTo(withCrc(begins("01 03 00 00 00 80"))), 261);
}

TEST(FrameLength, OfAReplyIsToldByItsFunctionAndItsCount)
{
    EXPECT_EQ(lengthOfReply(begins("01 83")), 5);
    EXPECT_EQ(lengthOfReply(begins("01 03")), notYetTold);
    EXPECT_EQ(lengthOfReply(begins("01 03 04")), 9);
    EXPECT_EQ(lengthOfReply(begins("01 10")), 8);
    EXPECT_EQ(lengthOfReply(begins("01 11 05")), 10);
    EXPECT_EQ(lengthOfReply(begins("01 16")), 10);
    EXPECT_EQ(lengthOfReply(begins("01 17 04")), 9);
    EXPECT_EQ(lengthOfReply(begins("01 2B")), neverTold);
}

TEST(FrameLength, OfTheReplyIsToldByTheWholeRequest)
{
    EXPECT_EQ(lengthOfReplyTo(withCrc(begins("01 03 00 00 00 02"))), 9);
    EXPECT_EQ(lengthOfReplyTo(withCrc(begins("01 01 00 00 00 09"))), 7);
    EXPECT_EQ(lengthOfReplyTo(withCrc(begins("01 02 00 00 00 08"))), 6);
    EXPECT_EQ(lengthOfReplyTo(withCrc(begins("01 06 00 00 00 02"))), 8);
    EXPECT_EQ(lengthOfReplyTo(withCrc(begins("01 07"))), 5);
    EXPECT_EQ(lengthOfReplyTo(withCrc(begins("01 17 00 00 00 02 00 09 00 01 02 00 05"))), 9);
    EXPECT_EQ(lengthOfReplyTo(withCrc(begins("01 11"))), neverTold);
    EXPECT_EQ(lengthOfReplyTo(withCrc(begins("01 2B 0E 01 00"))), neverTold);
    EXPECT_EQ(lengthOfReplyTo(withCrc(begins("01 03 00 00"))), neverTold) << "no such request";
}

TEST(FrameLength, WritesComeBackWithTheirAddressAndEchoesWithTheirNumber)
{
    EXPECT_EQ(echoedHead(withCrc(begins("01 03 00 00 00 02"))), 2);
    EXPECT_EQ(echoedHead(withCrc(begins("01 06 00 00 00 02"))), 4);
    EXPECT_EQ(echoedHead(withCrc(begins("01 10 00 00 00 01 02 00 00"))), 4);
    EXPECT_EQ(echoedHead(withCrc(begins("01 16 00 00 00 F2 00 25"))), 4);
    EXPECT_EQ(echoedHead(withCrc(begins("01 08 00 00 12 34"))), 6);
    EXPECT_EQ(echoedHead(withCrc(begins("01 08 00 0B 00 00"))), 4) << "a counter comes back";
    EXPECT_EQ(echoedHead(withCrc(begins("01 17 00 00 00 02 00 09 00 01 02 00 05"))), 2);
    EXPECT_EQ(echoedHead(withCrc(begins("01 2B 0E 01 00"))), 2);
}

} // namespace

} // namespace dov417
