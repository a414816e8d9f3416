// A write of "R_bit" bits: the registers are read, the requested bits changed, all written back.
#include <cstring>
#include <gmock/gmock.h>

#include "uncalled_functions.h"
#include "world.h"

using ::testing::IsEmpty;

namespace {

class BitWritePatch : public DriverTest {
protected:
    // The write back that follows this answer to the pre-read.
    std::string writeBack(const char* answer)
    {
        EXPECT_NE(poll(), "");
        EXPECT_EQ(reply(withCrc(answer)), 1);
        return poll();
    }
};

TEST_F(BitWritePatch, SetsTheRequestedBitAndKeepsTheOthers)
{
    write("R_bit", 35, 1, "01");
    EXPECT_EQ(writeBack("01 03 02 A5 50"), frame("01 10 05 02 00 01 02 A5 58"));
    EXPECT_EQ(polled.replyLength, 8);
}

TEST_F(BitWritePatch, ClearsTheRequestedBitAndKeepsTheOthers)
{
    write("R_bit", 38, 1, "00");
    EXPECT_EQ(writeBack("01 03 02 FF FF"), frame("01 10 05 02 00 01 02 FF BF"));
}

TEST_F(BitWritePatch, CountsBitsFromTheLowByteUp)
{
    const char* sent[] = {"01 10 05 02 00 01 02 00 01", "01 10 05 02 00 01 02 00 80",
                          "01 10 05 02 00 01 02 01 00", "01 10 05 02 00 01 02 80 00"};
    const int bits[] = {32, 39, 40, 47};
    for (int i = 0; i < 4; ++i) {
        configure();
        write("R_bit", bits[i], 1, "01");
        EXPECT_EQ(writeBack("01 03 02 00 00"), frame(sent[i])) << bits[i];
    }
}

TEST_F(BitWritePatch, GoesOnInTheNextRegister)
{
    write("R_bit", 46, 4, "01 00 01 00");
    EXPECT_EQ(writeBack("01 03 04 80 01 80 03"), frame("01 10 05 02 00 02 04 40 01 80 01"));
}

TEST_F(BitWritePatch, ReachesOverThreeRegisters)
{
    configure("7#0#0#3#20");
    write("R_bit", 47, 18, "01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01");
    EXPECT_EQ(writeBack("01 03 06 00 00 00 00 00 00"),
              frame("01 10 05 02 00 03 06 80 00 FF FF 00 01"));
}

TEST_F(BitWritePatch, AnyValueButZeroSetsTheBit)
{
    write("R_bit", 32, 3, "02 00 FF");
    EXPECT_EQ(writeBack("01 03 02 00 02"), frame("01 10 05 02 00 01 02 00 05"));
}

TEST_F(BitWritePatch, StoresAndAnnouncesNothingOfThePreRead)
{
    write("R_bit", 35, 1, "01");
    plan({key("R_bit", 32, 16), key("R_W", 2, 1)});
    notices();
    poll();
    const int units = static_cast<int>(driver.dataAreas.size());
    EXPECT_EQ(reply(withCrc("01 03 02 A5 50")), 1);
    EXPECT_EQ(driver.dataAreas.size(), units);
    EXPECT_EQ(toHex(unit(1, "R", 2).deviceValue, 2), "00 00");
    EXPECT_EQ(unit(1, "R", 2).writePending, 1);
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(BitWritePatch, OfARecipeDownloadKeepsTheOtherBitsToo)
{
    setRecipe({recipeRecord(7, "R_bit", 35, 1, 4)});
    recipeBuffer[4] = 1;
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(writeBack("01 03 02 A5 50"), frame("01 10 05 02 00 01 02 A5 58"));
    EXPECT_EQ(driver.sendKind, 5);
    EXPECT_EQ(reply(withCrc("01 10 05 02 00 01")), 1);
    EXPECT_EQ(hostBlock[downloadFlag], 0);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(BitWritePatch, IsMadeAfreshWhenThePreReadIsRepeated)
{
    write("R_bit", 35, 1, "01");
    poll();
    EXPECT_EQ(reply(hex("01 03 02 12 34 00 00")), 8);
    EXPECT_EQ(writeBack("01 03 02 A5 50"), frame("01 10 05 02 00 01 02 A5 58"));
}

TEST_F(BitWritePatch, OtherReadsOfBitNamesAreDecodedIntoTheCache)
{
    for (const int kind : {3, 4, 6}) {
        driver.dataAreas.clear();
        driver.sendKind = kind;
        driver.sendList.clear();
        driver.sendList << FRAME_PRO() << FRAME_PRO();
        driver.sendList[1].sendLength = 11;
        driver.sendList[1].dataPosition = 7;
        analyzeFrameOfVal(hex("01 03 02 12 34"), 1, 3, request("R_bit", 35, 1));
        EXPECT_EQ(toHex(unit(1, "R", 35).deviceValue, 2), "34 12") << kind;
        EXPECT_EQ(driver.sendList.at(1).frame[7], 0) << kind;
    }
}

TEST_F(BitWritePatch, OfAWordNameIsNone)
{
    driver.sendKind = 2;
    driver.sendList << FRAME_PRO() << FRAME_PRO();
    driver.sendList[1].sendLength = 11;
    driver.sendList[1].dataPosition = 7;
    analyzeFrameOfVal(hex("01 03 02 12 34"), 1, 3, request("R_W", 2, 1));
    EXPECT_EQ(toHex(unit(1, "R", 2).deviceValue, 2), "34 12");
    EXPECT_EQ(driver.sendList.at(1).frame[7], 0);
}

TEST_F(BitWritePatch, WithoutAWriteBackInTheListIsNothing)
{
    write("R_bit", 35, 1, "01");
    poll();
    driver.sendList.removeLast();
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_TRUE(driver.sendList.isEmpty());
}

// The write back belongs to another request than the reply: bytes that do not fit stay out.

class UnfitWriteBack : public BitWritePatch {
protected:
    void expectUntouched(int sendLength, int position, int count, const QByteArray& bytes)
    {
        driver.sendKind = 2;
        driver.sendList.clear();
        driver.sendList << FRAME_PRO() << FRAME_PRO();
        FRAME_PRO& next = driver.sendList[1];
        memset(next.frame, 0x5A, sizeof(next.frame));
        next.sendLength = sendLength;
        next.dataPosition = position;
        analyzeFrameOfVal(bytes, count, 3, request("R_bit", 35, 1));
        EXPECT_EQ(toHex(driver.sendList.at(1).frame, recordDataSize),
                  toHex(QByteArray(recordDataSize, '\x5A')))
            << sendLength << ", " << position << ", " << count;
    }
};

TEST_F(UnfitWriteBack, IsLeftAlone)
{
    const QByteArray reply_ = hex("01 03 04 12 34 56 78 00 00");
    expectUntouched(11, 7, 4, reply_);    // two bytes of room
    expectUntouched(11, 1022, 4, reply_); // past its end
    expectUntouched(11, -1, 2, reply_);
    expectUntouched(0, 7, 2, reply_);
    expectUntouched(-5, 7, 2, reply_);
    expectUntouched(11, 2147483647, 2, reply_);
    expectUntouched(11, 7, -2, reply_);
    expectUntouched(11, 7, 2147483647, reply_);
}

TEST_F(UnfitWriteBack, LongerThanAFrameIsLeftAlone)
{
    expectUntouched(4000, 7, 2000, QByteArray(2100, '\x11'));
    expectUntouched(4000, 1023, 2, QByteArray(2100, '\x11'));
}

TEST_F(UnfitWriteBack, TakesNoBitsBeyondTheRegistersThatWereRead)
{
    driver.sendKind = 2;
    driver.sendList << FRAME_PRO() << FRAME_PRO();
    FRAME_PRO& next = driver.sendList[1];
    next.sendLength = 11;
    next.dataPosition = 7;
    VARIABLE tooLong = request("R_bit", 35, 2000);
    memset(tooLong.data, 1, sizeof(tooLong.data));
    analyzeFrameOfVal(hex("01 03 02 12 34"), 2, 3, tooLong);
    EXPECT_EQ(toHex(driver.sendList.at(1).frame + 7, 2), "FF FC");
}

TEST_F(UnfitWriteBack, OfABitBelowZeroDoesNotFault)
{
    write("R_bit", -3, 2, "01 01"); // -3 + 2 bits: no register at all
    EXPECT_EQ(poll(), frame("01 03 05 00 00 00"));
    EXPECT_EQ(reply(withCrc("01 03 00")), 1);
    EXPECT_EQ(poll(), frame("01 10 05 00 00 00 00"));
    EXPECT_EQ(reply(withCrc("01 10 05 00 00 00")), 1);
    EXPECT_TRUE(driver.writeList.isEmpty());
}

} // namespace
