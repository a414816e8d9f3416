// What a reply does to the request on the line: accepted, asked for again, given up.
#include "link/response_handling.h"

#include <gmock/gmock.h>

#include "uncalled_functions.h"
#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class ResponseHandling : public DriverTest {};

// Nothing outstanding.

TEST_F(ResponseHandling, AReplyThatNobodyAwaitsChangesNothing)
{
    plan({key("R_W", 10, 1)});
    driver.commFailed = 1;
    driver.retryCount = 2;
    driver.sendKind = 4;
    QByteArray late = withCrc("01 03 02 12 34");
    QString text_ = name("from before");
    EXPECT_EQ(intf_dealRcvFrame(&late, &text_), 0);
    EXPECT_EQ(text(text_), "");
    EXPECT_EQ(read("R_W", 10, 1), "00 00");
    EXPECT_EQ(driver.commFailed, 1);
    EXPECT_EQ(driver.retryCount, 2);
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/R_W:10+1"));
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(ResponseHandling, ASecondReplyToTheSameFrameIsNotTaken)
{
    plan({key("R_W", 10, 1)});
    poll();
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(reply(withCrc("01 03 02 55 66")), 0);
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
}

// Good replies.

TEST_F(ResponseHandling, AGoodReadReplyGoesToTheCache)
{
    plan({key("R_W", 10, 1)});
    poll();
    EXPECT_EQ(polled.replyLength, 7);
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}}));
    EXPECT_TRUE(driver.sendList.isEmpty());
}

TEST_F(ResponseHandling, AGoodReadReplyRestoresTheLinkBeforeTheHostIsTold)
{
    plan({key("R_W", 10, 1)});
    driver.commFailed = 1;
    driver.retryCount = 2;
    int failedWhenTold = -1;
    whenTold([&](const Notice&) { failedWhenTold = driver.commFailed; });
    poll();
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(failedWhenTold, 0);
    EXPECT_EQ(driver.commFailed, 0);
    EXPECT_EQ(driver.retryCount, 0);
}

TEST_F(ResponseHandling, AGoodReadReplyMovesTheCyclicListOn)
{
    plan({key("R_W", 10, 1), key("R_W", 100, 1)});
    poll();
    reply(withCrc("01 03 02 12 34"));
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/R_W:100+1", "1/R_W:10+1"));
}

TEST_F(ResponseHandling, TheEchoOfAWriteReportsItsSuccess)
{
    write("R_W", 10, 1, "34 12");
    driver.commFailed = 1;
    driver.retryCount = 2;
    EXPECT_EQ(poll(), frame("01 06 05 0A 12 34"));
    EXPECT_EQ(reply(withCrc("01 06 05 0A 12 34")), 1);
    EXPECT_EQ(unit(1, "R", 10).writePending, 0);
    EXPECT_EQ(toHex(unit(1, "R", 10).deviceValue, 2), "34 12");
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_EQ(driver.commFailed, 0);
    EXPECT_EQ(driver.retryCount, 0);
}

TEST_F(ResponseHandling, AWriteIsReportedBeforeTheLinkIsRestored)
{
    plan({key("Q_bit", 5, 1)});
    exchange();
    write("Q_bit", 5, 1, "01");
    notices();
    driver.commFailed = 1;
    int failedWhenTold = -1;
    whenTold([&](const Notice&) { failedWhenTold = driver.commFailed; });
    EXPECT_EQ(poll(), frame("01 05 08 05 FF 00"));
    EXPECT_EQ(reply(goodReplyTo(polled)), 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "Q_bit", 5}}));
    EXPECT_EQ(failedWhenTold, 1);
    EXPECT_EQ(driver.commFailed, 0);
}

TEST_F(ResponseHandling, AGoodReplyWithoutDataRestoresTheLinkWhateverItAnswers)
{
    driver.handshakeRequest = 1;
    driver.commFailed = 1;
    poll();
    EXPECT_EQ(reply(QByteArray()), 1);
    EXPECT_EQ(driver.commFailed, 0);
    driver.handshakeRequest = 0;

    setRecipe({recipeRecord(7, "R_W", 10, 1, 0), recipeRecord(7, "R_W", 20, 1, 1)});
    hostBlock[downloadFlag] = 1;
    driver.commFailed = 1;
    poll();
    EXPECT_EQ(reply(goodReplyTo(polled)), 1);
    EXPECT_EQ(driver.commFailed, 0);
    EXPECT_EQ(driver.recipeIndex, 1); // and so the download goes on
}

TEST_F(ResponseHandling, SettlesTheRequestOfTheFrameNotTheOneThatWasMadeLast)
{
    for (const bool good : {true, false}) {
        write("R_W", 10, 1, "34 12");
        poll();
        driver.currentVar = request("R_W", 20, 1);
        if (good) {
            EXPECT_EQ(reply(goodReplyTo(polled)), 1);
        } else {
            EXPECT_EQ(abandon(), 3);
        }
        EXPECT_EQ(unit(1, "R", 10).writePending, 0) << good;
    }
}

// What a callback finds shows the order of the steps.

TEST_F(ResponseHandling, AGivenUpWriteIsReportedBeforeItsFramesGo)
{
    plan({key("R_W", 10, 1)});
    exchange();
    write("R_W", 10, 1, "34 12");
    notices();
    poll();
    int framesWhenTold = -1;
    int retriesWhenTold = -1;
    whenTold([&](const Notice&) {
        framesWhenTold = static_cast<int>(driver.sendList.size());
        retriesWhenTold = driver.retryCount;
    });
    EXPECT_EQ(abandon(), 3);
    EXPECT_EQ(framesWhenTold, 1);
    EXPECT_EQ(retriesWhenTold, 3);
    EXPECT_EQ(driver.sendList.size(), 0);
}

TEST_F(ResponseHandling, AGivenUpRequestIsFinishedWithItsFramesGoneAndItsCountReset)
{
    ask(key("R_W", 10, 1));
    poll();
    int framesWhenTold = -1;
    int retriesWhenTold = -1;
    whenTold([&](const Notice&) {
        framesWhenTold = static_cast<int>(driver.sendList.size());
        retriesWhenTold = driver.retryCount;
    });
    EXPECT_EQ(abandon(), 3);
    EXPECT_EQ(framesWhenTold, 0);
    EXPECT_EQ(retriesWhenTold, 0);
}

TEST_F(ResponseHandling, AnAnsweredRequestIsFinishedBeforeItsCountIsReset)
{
    ask(key("R_W", 10, 1));
    poll();
    reply(QByteArray());
    int framesWhenTold = -1;
    int retriesWhenTold = -1;
    whenTold([&](const Notice& notice) {
        if (notice.tag == -1) {
            framesWhenTold = static_cast<int>(driver.sendList.size());
            retriesWhenTold = driver.retryCount;
        }
    });
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(framesWhenTold, 0);
    EXPECT_EQ(retriesWhenTold, 1);
    EXPECT_EQ(driver.retryCount, 0);
}

TEST_F(ResponseHandling, TheTextIsThereBeforeTheHostIsTold)
{
    plan({key("R_W", 10, 1)});
    poll();
    std::string textWhenTold;
    whenTold([&](const Notice&) { textWhenTold = errorText(); });
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(textWhenTold, "1#R_W10(1)");
}

TEST_F(ResponseHandling, EveryKindOfWriteIsSettledByItsEcho)
{
    plan({key("Q_bit", 0, 16), key("M_W", 5, 2), key("R_D", 10, 2), key("T", 1, 1)});
    struct Row {
        const char* regName;
        int address;
        int length;
        const char* bytes;
        const char* sent;
        const char* echo;
    };
    const Row rows[] = {
        {"Q_bit", 5, 1, "01", "01 05 08 05 FF 00", "01 05 08 05 FF 00"},
        {"Q_bit", 6, 3, "01 00 01", "01 0F 00 06 00 03 01 05", "01 0F 00 06 00 03"},
        {"M_W", 5, 2, "01 02 03 04", "01 0F 10 50 00 20 04 01 02 03 04", "01 0F 10 50 00 20"},
        {"T", 1, 1, "34 12", "01 06 01 81 12 34", "01 06 01 81 12 34"},
        {"R_D", 10, 2, "78 56 34 12", "01 10 05 0A 00 02 04 56 78 12 34", "01 10 05 0A 00 02"},
    };
    for (const Row& row : rows) {
        ASSERT_EQ(write(row.regName, row.address, row.length, row.bytes), 1) << row.sent;
        EXPECT_EQ(poll(), frame(row.sent));
        EXPECT_EQ(polled.replyLength, 8);
        EXPECT_EQ(reply(withCrc(row.echo)), 1) << row.sent;
        EXPECT_TRUE(driver.writeList.isEmpty()) << row.sent;
        EXPECT_EQ(read(row.regName, row.address, row.length), toHex(hex(row.bytes)));
    }
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_& one = driver.dataAreas.at(i);
        EXPECT_EQ(one.writePending, 0) << text(one.area) << one.address;
        EXPECT_EQ(toHex(one.deviceValue, 2), toHex(one.pendingValue, 2))
            << text(one.area) << one.address;
    }
}

TEST_F(ResponseHandling, ABroadcastIsDoneWithoutAnyReply)
{
    write("R_W", 10, 1, "34 12", 0);
    EXPECT_EQ(poll(), frame("00 06 05 0A 12 34"));
    EXPECT_EQ(polled.replyLength, 0);
    EXPECT_EQ(reply(QByteArray()), 1);
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_EQ(toHex(unit(0, "R", 10).deviceValue, 2), "34 12");
}

TEST_F(ResponseHandling, AnAnswerToABroadcastIsBad)
{
    write("R_W", 10, 1, "34 12", 0);
    poll();
    EXPECT_EQ(reply(withCrc("00 06 05 0A 12 34")), 8);
    EXPECT_EQ(driver.writeList.size(), 1);
}

TEST_F(ResponseHandling, TheEchoOfARecipeDownloadSettlesNoWriteOfTheHost)
{
    setRecipe({recipeRecord(7, "R_W", 10, 1, 0)});
    recipeBuffer[0] = 0x5566;
    write("R_W", 10, 1, "34 12");
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(poll(), frame("01 06 05 0A 55 66"));
    EXPECT_EQ(reply(withCrc("01 06 05 0A 55 66")), 1);
    EXPECT_EQ(unit(1, "R", 10).writePending, 1);
    EXPECT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(hostBlock[downloadFlag], 0);
}

TEST_F(ResponseHandling, ARequestOfTwoFramesIsDoneWithTheSecond)
{
    write("R_bit", 35, 1, "01");
    poll();
    driver.retryCount = 2;
    EXPECT_EQ(reply(withCrc("01 03 02 00 00")), 1);
    EXPECT_EQ(driver.retryCount, 0);
    EXPECT_EQ(driver.sendList.size(), 1);
    EXPECT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(unit(1, "R", 2).writePending, 1);
    EXPECT_EQ(poll(), frame("01 10 05 02 00 01 02 00 08"));
    EXPECT_EQ(reply(withCrc("01 10 05 02 00 01")), 1);
    EXPECT_TRUE(driver.sendList.isEmpty());
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_EQ(unit(1, "R", 2).writePending, 0);
}

TEST_F(ResponseHandling, LooksAtLengthAndCrcOnly)
{
    plan({key("R_W", 10, 1)});
    poll();
    EXPECT_EQ(reply(withCrc("63 44 02 12 34")), 1); // another station, another function
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
    write("R_W", 10, 1, "34 12");
    poll();
    EXPECT_EQ(reply(withCrc("63 10 FF FF FF FF")), 1);
    EXPECT_TRUE(driver.writeList.isEmpty());
}

TEST_F(ResponseHandling, ALateReplyOfTheSameLengthIsTakenForTheFrameOnTheLine)
{
    plan({key("R_W", 10, 1), key("R_W", 100, 1)});
    driver.retryLimit = 1;
    poll();
    EXPECT_EQ(reply(QByteArray()), 2);
    EXPECT_EQ(poll(), frame("01 03 05 64 00 01"));
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(read("R_W", 10, 1), "00 00");
    EXPECT_EQ(read("R_W", 100, 1), "34 12");
}

// Bad replies.

TEST_F(ResponseHandling, AWrongCrcIsRetriedUpToTheLimitAndThenGivenUp)
{
    plan({key("R_W", 10, 1)});
    QByteArray low = withCrc("01 03 02 12 34");
    QByteArray high = low;
    low[5] = static_cast<char>(low.at(5) ^ 1);
    high[6] = static_cast<char>(high.at(6) ^ 1);
    EXPECT_EQ(poll(), frame("01 03 05 0A 00 01"));
    EXPECT_EQ(reply(low), 8);
    EXPECT_EQ(driver.retryCount, 1);
    EXPECT_EQ(driver.commFailed, 0);
    EXPECT_EQ(poll(), frame("01 03 05 0A 00 01"));
    EXPECT_EQ(reply(high), 8);
    EXPECT_EQ(driver.retryCount, 2);
    EXPECT_EQ(reply(low), 2);
    EXPECT_EQ(driver.retryCount, 0);
    EXPECT_EQ(driver.commFailed, 1);
    EXPECT_TRUE(driver.sendList.isEmpty());
    EXPECT_EQ(read("R_W", 10, 1), "00 00");
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(ResponseHandling, AGoodReplyStartsTheCountOfBadOnesAgain)
{
    plan({key("R_W", 10, 1)});
    poll();
    EXPECT_EQ(reply(QByteArray()), 8);
    EXPECT_EQ(reply(QByteArray()), 8);
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    poll();
    EXPECT_EQ(reply(QByteArray()), 8);
    EXPECT_EQ(reply(QByteArray()), 8);
    EXPECT_EQ(reply(QByteArray()), 2);
}

TEST_F(ResponseHandling, WithALimitOfOneOrLessTheFirstBadReplyEndsTheRequest)
{
    for (const int limit : {1, 0, -5}) {
        plan({key("R_W", 10, 1)});
        driver.retryLimit = limit;
        poll();
        EXPECT_EQ(reply(hex("01 03")), 2) << limit;
        EXPECT_TRUE(driver.sendList.isEmpty()) << limit;
        EXPECT_EQ(driver.commFailed, 1) << limit;
    }
}

TEST_F(ResponseHandling, AnExceptionReplyIsABadOne)
{
    plan({key("R_W", 10, 1)});
    poll();
    EXPECT_EQ(reply(withCrc("01 83 02")), 8);
    write("R_W", 10, 1, "34 12");
    reply(withCrc("01 03 02 00 00"));
    poll();
    EXPECT_EQ(reply(withCrc("01 86 03")), 8);
    EXPECT_EQ(unit(1, "R", 10).writePending, 1);
}

TEST_F(ResponseHandling, NoReplyAtAllIsAnEmptyOne)
{
    plan({key("R_W", 10, 1)});
    poll();
    QString described;
    EXPECT_EQ(intf_dealRcvFrame(nullptr, &described), 8);
    EXPECT_EQ(text(described), "1#R_W10(1)");
    reply(withCrc("01 03 02 00 00"));
    write("R_W", 10, 1, "34 12", 0);
    poll();
    EXPECT_EQ(intf_dealRcvFrame(nullptr, nullptr), 1); // which is what a broadcast awaits
    EXPECT_EQ(intf_dealRcvFrame(nullptr, nullptr), 0);
}

TEST_F(ResponseHandling, TheHostsReplyIsNeverChanged)
{
    write("R_bit", 35, 1, "01");
    poll();
    QByteArray pre = withCrc("01 03 02 12 34");
    const QByteArray before = QByteArray(pre.constData(), pre.size());
    EXPECT_EQ(intf_dealRcvFrame(&pre, nullptr), 1);
    EXPECT_EQ(toHex(pre), toHex(before));
}

TEST_F(ResponseHandling, ALinkThatFailedIsGoodAgainWithTheNextReply)
{
    plan({key("R_W", 10, 1)});
    driver.retryLimit = 1;
    poll();
    reply(QByteArray());
    EXPECT_EQ(driver.commFailed, 1);
    poll();
    EXPECT_EQ(driver.commFailed, 1);
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(driver.commFailed, 0);
}

// Reads of odd lengths.

TEST_F(ResponseHandling, AReadOfNoRegistersStoresNothing)
{
    driver.readList << request("R_W", 10, 0);
    EXPECT_EQ(poll(), frame("01 03 05 0A 00 00"));
    EXPECT_EQ(polled.replyLength, 5);
    EXPECT_EQ(reply(withCrc("01 03 00")), 1);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(ResponseHandling, AReadOfNegativeLengthIsGivenUpLikeAnyOther)
{
    for (const int length : {-1, -2, -3, -1000, -2147483647}) {
        driver.readList.clear();
        driver.readList << request("R_W", 10, length) << request("R_W", 100, 1);
        poll();
        EXPECT_EQ(reply(QByteArray()), 8) << length;
        EXPECT_EQ(reply(hex("01")), 8) << length;
        EXPECT_EQ(reply(withCrc("01 83 02")), 2) << length;
        EXPECT_EQ(poll(), frame("01 03 05 64 00 01")) << length;
        reply(withCrc("01 03 02 00 00"));
    }
    EXPECT_EQ(unitIndex(1, "R", 10), -1);
}

TEST_F(ResponseHandling, ASingleReadOfEverythingIsGivenUpLikeAnyOther)
{
    configure("7#0#0#1#2147483647");
    ask(key("R_W", 0, 2147483647));
    EXPECT_EQ(poll(), frame("01 03 05 00 FF FF"));
    EXPECT_EQ(reply(withCrc("01")), 2);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(ResponseHandling, AReplyOf128RegistersHasAByteCountOfZeroAndIsTaken)
{
    plan({key("R_W", 0, 128)});
    EXPECT_EQ(poll(), frame("01 03 05 00 00 80"));
    EXPECT_EQ(polled.replyLength, 261);
    QByteArray bytes = hex("01 03 00");
    for (int i = 0; i < 128; ++i) {
        bytes.append(static_cast<char>(i));
        bytes.append(static_cast<char>(0x80 + i));
    }
    EXPECT_EQ(reply(withCrc(bytes)), 1);
    EXPECT_EQ(read("R_W", 0, 1), "80 00");
    EXPECT_EQ(read("R_W", 127, 1), "FF 7F");
    EXPECT_EQ(notices().size(), 128u);
}

// The check by its given name looks at the frame on the line.
class ReplyOnTheLine : public DriverTest {
protected:
    ReplyOnTheLine()
    {
        FRAME_PRO read = FRAME_PRO();
        read.replyLength = 7;
        read.dataCount = 1;
        FRAME_PRO write = FRAME_PRO();
        write.replyLength = 8;
        driver.sendList << read << write;
    }
    static int check(QByteArray reply, const QList<VARIABLE>& reads = QList<VARIABLE>())
    {
        return check_rcv_data(reinterpret_cast<unsigned char*>(reply.data()), reads,
                              static_cast<int>(reply.size()));
    }
};

TEST_F(ReplyOnTheLine, IsCheckedAgainstTheHeadFrameOnly)
{
    EXPECT_EQ(check(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(check(withCrc("01 06 05 0A 12 34")), 0);
    driver.sendList.removeFirst();
    EXPECT_EQ(check(withCrc("01 03 02 12 34")), 0);
    EXPECT_EQ(check(withCrc("01 06 05 0A 12 34")), 2);
}

TEST_F(ReplyOnTheLine, IsBadWhereThereIsNoFrame)
{
    driver.sendList.clear();
    EXPECT_EQ(check(withCrc("01 03 02 12 34")), 0);
    EXPECT_EQ(check_rcv_data(nullptr, QList<VARIABLE>(), 0), 0);
}

TEST_F(ReplyOnTheLine, IsCheckedWithoutALookAtTheListOfReads)
{
    QList<VARIABLE> reads;
    reads << request("M_W", 0, 128) << request("X", -1, -1);
    EXPECT_EQ(check(withCrc("01 03 02 12 34"), reads), 1);
}

} // namespace
