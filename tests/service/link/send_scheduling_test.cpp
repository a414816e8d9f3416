// Which frame goes next.
#include "link/send_scheduling.h"

#include <cstring>
#include <gmock/gmock.h>

#include "uncalled_functions.h"
#include "world.h"

using ::testing::Each;
using ::testing::ElementsAre;

namespace {

class SendScheduling : public DriverTest {
protected:
    std::vector<std::string> exchanges(int count)
    {
        std::vector<std::string> sent;
        for (int i = 0; i < count; ++i) {
            sent.push_back(exchange());
        }
        return sent;
    }

    static void queueWrites(int count)
    {
        for (int i = 0; i < count; ++i) {
            write("R_W", i, 1, "07 00");
        }
    }

    static void queueConditionReads(int count)
    {
        for (int i = 0; i < count; ++i) {
            ask(key("T", i, 1));
        }
    }
};

const std::string recipeWrite = frame("01 06 05 C8 12 34"); // "R_W" 200
const std::string recipeRead = frame("01 03 05 C8 00 01");

// The frame in progress.

TEST_F(SendScheduling, WithoutWorkAPollReturnsZeroAndLeavesIdle)
{
    driver.sendKind = 4;
    driver.burstCount = 7;
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(driver.sendKind, 0);
    EXPECT_EQ(driver.burstCount, 0);
    EXPECT_TRUE(driver.sendList.isEmpty());
}

TEST_F(SendScheduling, TheSameFrameIsHandedOutUntilItIsAnswered)
{
    plan({key("R_W", 100, 1)});
    EXPECT_EQ(poll(), cyclicRead);
    queueWrites(1);
    driver.handshakeRequest = 1;
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(poll(), cyclicRead);
    EXPECT_EQ(reply(hex("01 03")), 8);
    EXPECT_EQ(poll(), cyclicRead);
    EXPECT_EQ(driver.sendList.size(), 1);
    EXPECT_EQ(driver.sendKind, 4);
}

TEST_F(SendScheduling, TheHostGetsEveryFieldOfTheFrame)
{
    write("R_bit", 35, 1, "01", 1, 9);
    EXPECT_EQ(poll(), frame("01 03 05 02 00 01"));
    EXPECT_EQ(polled.sendLength, 8);
    EXPECT_EQ(polled.replyLength, 7);
    EXPECT_EQ(polled.dataPosition, 3);
    EXPECT_EQ(polled.dataCount, 2);
    EXPECT_EQ(polled.spare, 0);
    EXPECT_EQ(polled.request.kind, 9);
    EXPECT_EQ(polled.request.stationNo, 1);
    EXPECT_EQ(text(polled.request.regName), "R_bit");
    EXPECT_EQ(polled.request.address, 35);
    EXPECT_EQ(polled.request.length, 1);
    EXPECT_EQ(polled.request.data[0], 1);
    driver.sendList[0].spare = 77;
    poll();
    EXPECT_EQ(polled.spare, 77);
}

TEST_F(SendScheduling, TheHostGetsEveryByteOfTheLongestFrame)
{
    VARIABLE full = request("R_W", 0, 507);
    memset(full.data, 0xA5, sizeof(full.data));
    driver.writeList.append(full);
    poll();
    EXPECT_EQ(polled.sendLength, 1023);
    EXPECT_EQ(frameHex(polled),
              toHex(withCrc(hex("01 10 05 00 01 FB F6") + QByteArray(2 * 507, '\xA5'))));
    EXPECT_EQ(toHex(polled.request.data, recordDataSize),
              toHex(QByteArray(recordDataSize, '\xA5')));
    driver.sendList[0].frame[recordDataSize - 1] = 0x5A;
    poll();
    EXPECT_EQ(polled.frame[recordDataSize - 1], 0x5A);
}

TEST_F(SendScheduling, APollWithoutARecordPreparesTheFrameAllTheSame)
{
    plan({key("R_W", 100, 1)});
    EXPECT_EQ(intf_getSendFrame(nullptr), 1);
    EXPECT_EQ(intf_getSendFrame(nullptr), 1);
    EXPECT_EQ(poll(), cyclicRead);
    EXPECT_EQ(driver.sendList.size(), 1);
}

TEST_F(SendScheduling, APollThatHasNothingLeavesTheHostsRecordAlone)
{
    FRAME_PRO notFilled = FRAME_PRO();
    notFilled.sendLength = 55;
    notFilled.frame[0] = 0xEE;
    EXPECT_EQ(intf_getSendFrame(&notFilled), 0);
    EXPECT_EQ(notFilled.sendLength, 55);
    EXPECT_EQ(notFilled.frame[0], 0xEE);
}

// Priorities.

TEST_F(SendScheduling, GoesByHandshakeDownloadUploadWritesConditionReadsCyclicReads)
{
    plan({key("R_W", 100, 1)});
    queueWrites(1);
    queueConditionReads(1);
    setRecipe({recipeRecord(7, "R_W", 200, 1, 0)});
    recipeBuffer[0] = 0x1234;
    hostBlock[downloadFlag] = 1;
    hostBlock[uploadFlag] = 1;
    driver.handshakeRequest = 1;

    EXPECT_EQ(poll(), "");
    EXPECT_EQ(driver.sendKind, 1);
    driver.handshakeRequest = 0;
    reply(QByteArray());

    EXPECT_EQ(poll(), recipeWrite);
    EXPECT_EQ(driver.sendKind, 5);
    reply(goodReplyTo(polled));
    EXPECT_EQ(hostBlock[downloadFlag], 0);

    EXPECT_EQ(poll(), recipeRead);
    EXPECT_EQ(driver.sendKind, 6);
    reply(goodReplyTo(polled));
    EXPECT_EQ(hostBlock[uploadFlag], 0);

    EXPECT_EQ(poll(), frame("01 06 05 00 00 07"));
    EXPECT_EQ(driver.sendKind, 2);
    reply(goodReplyTo(polled));

    EXPECT_EQ(poll(), frame("01 03 01 80 00 01"));
    EXPECT_EQ(driver.sendKind, 3);
    reply(goodReplyTo(polled));

    EXPECT_EQ(poll(), cyclicRead);
    EXPECT_EQ(driver.sendKind, 4);
    reply(goodReplyTo(polled));
    EXPECT_EQ(poll(), cyclicRead);
}

TEST_F(SendScheduling, AHandshakeIsAnEmptyFrameThatAwaitsNothing)
{
    driver.handshakeRequest = 5;
    plan({key("R_W", 100, 1)});
    for (int i = 0; i < 2; ++i) {
        FRAME_PRO handshake = FRAME_PRO();
        handshake.sendLength = 55;
        handshake.replyLength = 55;
        handshake.dataPosition = 55;
        handshake.dataCount = 55;
        handshake.request.regName = name("R_W");
        EXPECT_EQ(intf_getSendFrame(&handshake), 1);
        EXPECT_EQ(handshake.sendLength, 0);
        EXPECT_EQ(handshake.replyLength, 0);
        EXPECT_EQ(handshake.dataPosition, 0);
        EXPECT_EQ(handshake.dataCount, 0);
        EXPECT_EQ(text(handshake.request.regName), "");
        EXPECT_EQ(reply(QByteArray()), 1); // and the next poll is a handshake again
    }
    driver.handshakeRequest = 0;
    EXPECT_EQ(poll(), cyclicRead);
}

// Bursts.

TEST_F(SendScheduling, TenWritesThenACyclicReadThenTheRest)
{
    plan({key("R_W", 100, 1)});
    queueWrites(12);
    const std::vector<std::string> sent = exchanges(14);
    EXPECT_EQ(sent[0], frame("01 06 05 00 00 07"));
    EXPECT_EQ(sent[9], frame("01 06 05 09 00 07"));
    EXPECT_EQ(sent[10], cyclicRead);
    EXPECT_EQ(sent[11], frame("01 06 05 0A 00 07"));
    EXPECT_EQ(sent[12], frame("01 06 05 0B 00 07"));
    EXPECT_EQ(sent[13], cyclicRead);
}

TEST_F(SendScheduling, TheBurstCounterCountsFramesAndACyclicReadResetsIt)
{
    plan({key("R_W", 100, 1)});
    queueWrites(2);
    queueConditionReads(2);
    EXPECT_EQ(exchange(), frame("01 06 05 00 00 07"));
    EXPECT_EQ(driver.burstCount, 1);
    EXPECT_EQ(exchange(), frame("01 06 05 01 00 07"));
    EXPECT_EQ(driver.burstCount, 2);
    EXPECT_EQ(exchange(), frame("01 03 01 80 00 01"));
    EXPECT_EQ(driver.burstCount, 3);
    EXPECT_EQ(exchange(), cyclicRead);
    EXPECT_EQ(driver.burstCount, 0);
    EXPECT_EQ(exchange(), frame("01 03 01 81 00 01"));
    EXPECT_EQ(driver.burstCount, 1);
}

TEST_F(SendScheduling, ThreeConditionReadsThenACyclicRead)
{
    plan({key("R_W", 100, 1)});
    queueConditionReads(5);
    EXPECT_THAT(exchanges(6), ElementsAre(frame("01 03 01 80 00 01"), frame("01 03 01 81 00 01"),
                                          frame("01 03 01 82 00 01"), cyclicRead,
                                          frame("01 03 01 83 00 01"), frame("01 03 01 84 00 01")));
}

TEST_F(SendScheduling, AfterThreeWritesAConditionReadWaitsForTheCyclicRead)
{
    plan({key("R_W", 100, 1)});
    queueWrites(3);
    queueConditionReads(1);
    const std::vector<std::string> sent = exchanges(5);
    EXPECT_EQ(sent[3], cyclicRead);
    EXPECT_EQ(sent[4], frame("01 03 01 80 00 01"));
}

TEST_F(SendScheduling, AWriteGoesBeforeTheCyclicReadAlsoAfterThreeConditionReads)
{
    plan({key("R_W", 100, 1)});
    queueConditionReads(4);
    exchanges(3);
    queueWrites(1);
    EXPECT_EQ(exchange(), frame("01 06 05 00 00 07"));
    EXPECT_EQ(driver.burstCount, 4);
    EXPECT_EQ(exchange(), cyclicRead);
}

TEST_F(SendScheduling, WithoutCyclicReadsABurstEndsInOneIdlePoll)
{
    queueWrites(11);
    const std::vector<std::string> sent = exchanges(12);
    EXPECT_EQ(sent[9], frame("01 06 05 09 00 07"));
    EXPECT_EQ(sent[10], "");
    EXPECT_EQ(sent[11], frame("01 06 05 0A 00 07"));
    queueConditionReads(4);
    EXPECT_THAT(exchanges(4), ElementsAre(frame("01 03 01 80 00 01"), frame("01 03 01 81 00 01"),
                                          "", frame("01 03 01 82 00 01")));
}

TEST_F(SendScheduling, RecipesAndHandshakesDoNotCountAsABurst)
{
    plan({key("R_W", 100, 1)});
    queueWrites(2);
    exchanges(2);
    setRecipe({recipeRecord(7, "R_W", 200, 1, 0)});
    hostBlock[uploadFlag] = 1;
    exchange();
    EXPECT_EQ(driver.burstCount, 2);
    hostBlock[downloadFlag] = 1;
    exchange();
    EXPECT_EQ(driver.burstCount, 2);
}

// What the builders refuse stays where it is.

TEST_F(SendScheduling, AConditionReadOfBitsIsNeverFramedAndCyclicReadsGoOn)
{
    plan({key("R_W", 100, 1)});
    ask(key("M_bit", 20, 5));
    EXPECT_EQ(exchange(), "");
    EXPECT_EQ(driver.sendKind, 3);
    EXPECT_EQ(driver.frameVarCount, 0);
    EXPECT_THAT(exchanges(3), ElementsAre("", "", cyclicRead));
    EXPECT_THAT(exchanges(4), ElementsAre("", "", "", cyclicRead));
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/M:1+1"));
}

TEST_F(SendScheduling, ACyclicReadThatCannotBeFramedStaysAtTheHead)
{
    plan({key("odd", 5, 1, 0), key("R_W", 100, 1, 0)});
    driver.readList.prepend(request("odd", 5, 1));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(exchange(), "");
        EXPECT_EQ(driver.sendKind, 4);
        EXPECT_EQ(driver.frameVarCount, 1);
        EXPECT_EQ(summary(driver.readList).front(), "1/odd:5+1");
    }
    driver.readList.removeFirst();
    EXPECT_EQ(exchange(), ""); // station 0 is never read
    EXPECT_EQ(summary(driver.readList).front(), "0/R_W:100+1");
}

TEST_F(SendScheduling, ACyclicReadThatCannotBeFramedEndsABurstToo)
{
    driver.readList << request("odd", 5, 1);
    driver.burstCount = 10;
    queueWrites(1);
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(driver.burstCount, 0);
    EXPECT_EQ(poll(), frame("01 06 05 00 00 07"));
}

TEST_F(SendScheduling, AWriteThatCannotBeFramedStaysAtTheHead)
{
    plan({key("R_W", 100, 1)});
    driver.writeList.append(request("odd", 5, 1));
    const std::vector<std::string> sent = exchanges(11);
    EXPECT_THAT(std::vector<std::string>(sent.begin(), sent.begin() + 10), Each(""));
    EXPECT_EQ(sent[10], cyclicRead);
    EXPECT_EQ(driver.writeList.size(), 1);
}

TEST_F(SendScheduling, AWriteLongerThanAFrameOrOfNegativeLengthIsNotSent)
{
    for (const VARIABLE& odd : {request("R_W", 5, 508), request("M_W", 5, 508),
                                request("R_W", 5, -1), request("Q_bit", 5, 9000)}) {
        driver.writeList.clear();
        driver.writeList.append(odd);
        driver.burstCount = 0;
        EXPECT_EQ(poll(), "") << summary(odd);
        EXPECT_EQ(driver.sendKind, 2);
        EXPECT_EQ(driver.writeList.size(), 1);
    }
}

TEST_F(SendScheduling, AWriteOfNothingIsSentAsSuch)
{
    write("R_W", 5, 0, "");
    EXPECT_EQ(exchange(), frame("01 10 05 05 00 00 00"));
    EXPECT_TRUE(driver.writeList.isEmpty());
}

// The request in progress.

TEST_F(SendScheduling, ACyclicReadIsTheOneCurrentRequest)
{
    plan({key("R_W", 100, 2, 3), key("R_W", 200, 1, 3)});
    driver.currentVars << request("T", 1, 1) << request("T", 2, 1);
    driver.frameVarCount = 9;
    poll();
    EXPECT_THAT(summary(driver.currentVars), ElementsAre("3/R_W:100+2"));
    EXPECT_EQ(summary(driver.currentVar), "3/R_W:100+2");
    EXPECT_EQ(driver.frameVarCount, 1);
    EXPECT_EQ(polled.request.kind, 4);
}

TEST_F(SendScheduling, AConditionReadIsTheOneCurrentRequest)
{
    queueConditionReads(1);
    driver.currentVars << request("T", 1, 1) << request("T", 2, 1);
    driver.frameVarCount = 9;
    poll();
    EXPECT_THAT(summary(driver.currentVars), ElementsAre("1/T:0+1"));
    EXPECT_EQ(driver.frameVarCount, 1);
    EXPECT_EQ(polled.request.kind, 3);
}

TEST_F(SendScheduling, AWriteIsTheCurrentRequest)
{
    driver.frameVarCount = 9;
    write("R_W", 5, 2, "01 02 03 04", 1, 42);
    EXPECT_EQ(poll(), frame("01 10 05 05 00 02 04 02 01 04 03"));
    EXPECT_EQ(summary(driver.currentVar), "1/R_W:5+2");
    EXPECT_EQ(driver.frameVarCount, 1);
    EXPECT_EQ(polled.request.kind, 42);
}

TEST_F(SendScheduling, TakesTheListsAsTheyAreWhenTheyWereChangedFromOutside)
{
    plan({key("R_W", 100, 1), key("T", 5, 1)});
    driver.readList.clear();
    driver.readList << request("C", 7, 1);
    EXPECT_EQ(exchange(), frame("01 03 02 07 00 01"));
    driver.readList[0].address = 8;
    EXPECT_EQ(exchange(), frame("01 03 02 08 00 01"));
    queueWrites(2);
    driver.writeList.removeFirst();
    EXPECT_EQ(exchange(), frame("01 06 05 01 00 07"));
}

TEST_F(SendScheduling, GoesOnAfterTheHostClearedTheSendList)
{
    plan({key("R_W", 100, 1)});
    poll();
    driver.sendList.clear();
    EXPECT_EQ(reply(withCrc("01 03 02 00 01")), 0);
    EXPECT_EQ(poll(), cyclicRead);
}

// The builders by their given names append to the send list.

class SendList : public DriverTest {};

TEST_F(SendList, TakesAReadOfTheFirstElementOfTheListOnly)
{
    QList<VARIABLE> list;
    list << request("R_W", 10, 1) << request("M_W", 2, 3);
    EXPECT_EQ(getReadFrame(list), 1);
    ASSERT_EQ(driver.sendList.size(), 1);
    EXPECT_EQ(frameHex(driver.sendList.at(0)), "01 03 05 0A 00 01 A4 C4");
}

TEST_F(SendList, TakesNoReadOfAnEmptyList)
{
    EXPECT_EQ(getReadFrame(QList<VARIABLE>()), 0);
    EXPECT_EQ(driver.sendList.size(), 0);
}

TEST_F(SendList, TakesEachFrameBehindThoseThatAreThere)
{
    handShakeFrame();
    VARIABLE wanted = request("R_W", 10, 1, 1, {1, 0});
    getWriteFrame(wanted);
    QList<VARIABLE> list;
    list << request("R_W", 10, 1);
    EXPECT_EQ(getReadFrame(list), 1);
    ASSERT_EQ(driver.sendList.size(), 3);
    EXPECT_EQ(driver.sendList.at(0).sendLength, 0);
    EXPECT_EQ(frameHex(driver.sendList.at(1)), frame("01 06 05 0A 00 01"));
    EXPECT_EQ(frameHex(driver.sendList.at(2)), frame("01 03 05 0A 00 01"));
}

} // namespace
