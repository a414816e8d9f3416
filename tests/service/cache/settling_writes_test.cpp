// Settling host writes, for the shipped register types.

#include <climits>

#include "cache_world.h"

namespace {

class SettlingWrites : public CacheTest {
protected:
    enum {
        failed = 0,
        accepted = 1
    };
};

// Words

TEST_F(SettlingWrites, AnAcceptedWordBecomesTheDeviceValueWithoutAnAnnouncement)
{
    putPending("M", 3, "11 22 33 44", "34 12 56 78");
    watch("M", 3, 7, 0xFFFF);
    settleNamed("M_W", 3, 1, accepted);
    EXPECT_FALSE(isPending("M", 3));
    EXPECT_EQ(device("M", 3), "34 12 33 44");
    EXPECT_EQ(notices(), Notices());
}

TEST_F(SettlingWrites, AFailedWordGoesBackToTheDeviceValueAndIsAnnounced)
{
    putPending("M", 3, "01 02", "34 12");
    watch("M", 3, 1, 0xFFFF);
    settleNamed("M_W", 3, 1, failed);
    EXPECT_FALSE(isPending("M", 3));
    EXPECT_EQ(device("M", 3), "01 02 00 00");
    // 0x1234 to 0x0201: bits 0, 2, 4, 5 and 12
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_bit", 48},
                                  {7, 1, "M_bit", 50},
                                  {7, 1, "M_bit", 52},
                                  {7, 1, "M_bit", 53},
                                  {7, 1, "M_bit", 60},
                                  {7, 1, "M_W", 3}}));
    EXPECT_EQ(read("M_W", 3, 1), "01 02");
}

TEST_F(SettlingWrites, AFailedWordIsAnnouncedEvenWhenTheControllerHasTheSameValue)
{
    putPending("R", 3, "34 12", "34 12");
    watch("R", 3, 7, 0xFFFF);
    settleNamed("R_W", 3, 1, failed);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 3}, {7, 1, "R_D", 3}, {7, 1, "R_D", 2}}));
}

TEST_F(SettlingWrites, AnyResultButOneIsAFailure)
{
    for (int result : {0, 2, -1, 8}) {
        driver.dataAreas.clear();
        putPending("M", 3, "01 02", "34 12");
        watch("M", 3, 1);
        settleNamed("M_W", 3, 1, result);
        EXPECT_EQ(device("M", 3), "01 02 00 00");
        EXPECT_EQ(notices(), (Notices{{7, 1, "M_W", 3}}));
    }
}

TEST_F(SettlingWrites, ACallbackThatReadsBackAFailedWordSeesTheDeviceValue)
{
    putPending("M", 3, "01 02", "34 12");
    watch("M", 3, 1);
    std::string seen;
    whenTold([&](const Notice&) { seen = read("M_W", 3, 1); });
    settleNamed("M_W", 3, 1, failed);
    EXPECT_EQ(seen, "01 02");
}

TEST_F(SettlingWrites, EveryWordOfTheWriteIsSettledAndNoOther)
{
    for (int address = 9; address < 13; ++address) {
        putPending("R", address, "01 00", "02 00");
        watch("R", address, 1);
    }
    settleNamed("R_W", 10, 2, failed);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}, {7, 1, "R_W", 11}}));
    EXPECT_TRUE(isPending("R", 9));
    EXPECT_TRUE(isPending("R", 12));
    settleNamed("R_W", 9, 4, accepted);
    EXPECT_EQ(device("R", 9), "02 00 00 00");
    EXPECT_EQ(device("R", 12), "02 00 00 00");
    EXPECT_FALSE(isPending("R", 9));
    EXPECT_FALSE(isPending("R", 12));
}

TEST_F(SettlingWrites, AWordThatIsNotPendingIsSettledAllTheSame)
{
    putPending("R", 10, "01 00", "02 00");
    driver.dataAreas[0].writePending = 0;
    watch("R", 10, 1);
    settleNamed("R_W", 10, 1, failed);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}}));
    settleNamed("R_W", 10, 1, accepted);
    EXPECT_EQ(device("R", 10), "02 00 00 00");
}

TEST_F(SettlingWrites, SettlingAWordLeavesItsCountOfBitWritesAlone)
{
    putPending("R", 10, "01 00", "02 00");
    driver.dataAreas[0].pendingBits = 0x55;
    settleNamed("R_W", 10, 1, accepted);
    EXPECT_FALSE(isPending("R", 10));
    EXPECT_EQ(pendingBits("R", 10), 0x55u);
}

TEST_F(SettlingWrites, OnlyTheStationOfTheWriteIsSettled)
{
    putPending("R", 10, "01 00", "02 00");
    settleNamed("R_W", 10, 1, accepted, 2);
    EXPECT_TRUE(isPending("R", 10));
    EXPECT_EQ(units(), Units({"1/R 10", "2/R 10"}));
}

TEST_F(SettlingWrites, FailedTimersAndCountersAreAnnouncedUnderTheAreaNameAlone)
{
    putPending("T", 4, "00", "FF");
    watch("T", 4, 7, 0xFFFF);
    putPending("C", 5, "00", "FF");
    watch("C", 5, 7, 0xFFFF);
    settleNamed("T", 4, 1, failed);
    settleNamed("C", 5, 1, failed);
    EXPECT_EQ(notices(), (Notices{{7, 1, "T", 4}, {7, 1, "C", 5}}));
}

TEST_F(SettlingWrites, UnitsThatAreMissingAreCreated)
{
    settleNamed("R_W", 10, 2, failed);
    settleNamed("M_bit", 20, 1, accepted);
    EXPECT_EQ(units(), Units({"1/R 10", "1/R 11", "1/M 1"}));
}

TEST_F(SettlingWrites, BitsOfTheFirstTypeAreSettledAsThoseOfAnyOther)
{
    save("I_bit", 18, 1, "01");
    settleNamed("I_bit", 18, 1, failed);
    EXPECT_EQ(read("I_bit", 17, 3), "00 00 00");
    EXPECT_FALSE(isPending("I", 1));
}

TEST_F(SettlingWrites, AnUnknownRegisterIsNotSettled)
{
    putPending("R", 10, "01 00", "02 00");
    for (const char* regName : {"X_W", "R", "r_w", ""}) {
        settleNamed(regName, 10, 1, accepted);
        settleNamed(regName, 10, 1, failed);
    }
    EXPECT_TRUE(isPending("R", 10));
    EXPECT_EQ(units(), Units({"1/R 10"}));
}

TEST_F(SettlingWrites, LengthsOfZeroAndBelowSettleNothing)
{
    for (const char* regName : {"M_bit", "M_W", "R_D", "T"}) {
        for (int length : {0, -1, -2, INT_MIN}) {
            settleNamed(regName, 5, length, failed);
            settleNamed(regName, 5, length, accepted);
        }
    }
    EXPECT_EQ(units(), Units());
}

TEST_F(SettlingWrites, WordsRunAcrossTheHighestNumberIntoTheLowest)
{
    settleNamed("M_W", INT_MAX, 2, accepted);
    settleNamed("R_D", INT_MAX, 2, accepted);
    settleNamed("Q_bit", INT_MAX, 2, accepted);
    EXPECT_EQ(units(), Units({"1/M 2147483647", "1/M -2147483648", "1/R 2147483647",
                              "1/R -2147483648", "1/Q 134217727", "1/Q -134217728"}));
}

// Double words

TEST_F(SettlingWrites, AnAcceptedDoubleWordSettlesEveryWordOfItsLength)
{
    for (int address = 10; address < 14; ++address) {
        putPending("R", address, "01 02 03 04", "05 06 07 08");
        watch("R", address, 7, 0xFFFF);
    }
    settleNamed("R_D", 10, 3, accepted);
    for (int address = 10; address < 13; ++address) {
        EXPECT_FALSE(isPending("R", address));
        EXPECT_EQ(device("R", address), "05 06 03 04");
    }
    EXPECT_TRUE(isPending("R", 13));
    EXPECT_EQ(notices(), Notices());
}

TEST_F(SettlingWrites, AFailedDoubleWordIsAnnouncedWordByWordInIncreasingOrder)
{
    putPending("R", 10, "01 00", "00 00");
    watch("R", 10, 3, 0x0003);
    putPending("R", 11, "00 80", "00 00");
    watch("R", 11, 4, 0x8001);
    settleNamed("R_D", 10, 2, failed);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_bit", 160},
                                  {7, 1, "R_W", 10},
                                  {7, 1, "R_D", 10},
                                  {7, 1, "R_bit", 191},
                                  {7, 1, "R_D", 10}}));
    EXPECT_EQ(read("R_D", 10, 2), "01 00 00 80");
}

// Bits

TEST_F(SettlingWrites, ABitWrittenOnceIsSettledByOneResult)
{
    save("M_bit", 20, 1, "01");
    settleNamed("M_bit", 20, 1, accepted);
    EXPECT_EQ(pendingBits("M", 1), 0u);
    EXPECT_FALSE(isPending("M", 1));
    EXPECT_EQ(device("M", 1), "10 00 00 00");
}

TEST_F(SettlingWrites, EachResultTakesOneWriteOffTheCountOfItsBit)
{
    const struct {
        unsigned int before;
        unsigned int after;
    } rows[] = {{0x0, 0x0}, {0x100, 0x0}, {0x200, 0x0}, {0x300, 0x200}};
    for (const auto& row : rows) {
        for (int result : {failed, accepted}) {
            driver.dataAreas.clear();
            putPending("M", 1, "", "");
            driver.dataAreas[0].pendingBits = row.before;
            settleNamed("M_bit", 20, 1, result);
            EXPECT_EQ(pendingBits("M", 1), row.after) << "from " << row.before;
            EXPECT_EQ(isPending("M", 1), row.after != 0) << "from " << row.before;
        }
    }
}

TEST_F(SettlingWrites, TheHighestBitOfAWordIsCountedDownToo)
{
    putPending("M", 1, "", "");
    driver.dataAreas[0].pendingBits = 0xC0000000u;
    settleNamed("M_bit", 31, 1, accepted);
    EXPECT_EQ(pendingBits("M", 1), 0x80000000u);
    settleNamed("M_bit", 31, 1, accepted);
    EXPECT_EQ(pendingBits("M", 1), 0u);
}

TEST_F(SettlingWrites, AWordStaysPendingUntilTheLastOfItsBitsIsSettled)
{
    plan({key("M_bit", 16, 16), key("M_W", 1, 1)});
    save("M_bit", 16, 1, "01");
    save("M_bit", 25, 1, "01");
    notices();
    settleNamed("M_bit", 16, 1, accepted);
    EXPECT_TRUE(isPending("M", 1));
    EXPECT_EQ(device("M", 1), "01 00 00 00");
    EXPECT_EQ(notices(), Notices());
    EXPECT_EQ(read("M_W", 1, 1), "01 02");
    settleNamed("M_bit", 25, 1, failed);
    EXPECT_FALSE(isPending("M", 1));
    EXPECT_EQ(read("M_W", 1, 1), "01 00");
    EXPECT_EQ(notices().size(), 17u);
}

TEST_F(SettlingWrites, AnAcceptedBitIsCopiedAloneInEitherDirection)
{
    putPending("M", 1, "00 00", "FF FF");
    settleNamed("M_bit", 20, 1, accepted);
    EXPECT_EQ(device("M", 1), "10 00 00 00");
    settleNamed("M_bit", 31, 1, accepted);
    EXPECT_EQ(device("M", 1), "10 80 00 00");

    driver.dataAreas.clear();
    putPending("M", 1, "FF FF", "00 00");
    settleNamed("M_bit", 20, 1, accepted);
    EXPECT_EQ(device("M", 1), "EF FF 00 00");
    settleNamed("M_bit", 25, 1, accepted);
    EXPECT_EQ(device("M", 1), "EF FD 00 00");
}

TEST_F(SettlingWrites, AFailedBitLeavesTheDeviceValueAlone)
{
    putPending("M", 1, "00 00", "FF FF");
    settleNamed("M_bit", 20, 1, failed);
    EXPECT_EQ(device("M", 1), "00 00 00 00");
    EXPECT_EQ(read("M_bit", 20, 1), "00");
}

TEST_F(SettlingWrites, ASettledBitUnitAnnouncesEveryWatchedViewOnSuccessAndOnFailure)
{
    for (int result : {failed, accepted}) {
        driver.dataAreas.clear();
        putPending("R", 10, "34 12", "34 12");
        watch("R", 10, 7, 0x8001);
        settleNamed("R_bit", 164, 1, result);
        EXPECT_EQ(notices(), (Notices{{7, 1, "R_bit", 160},
                                      {7, 1, "R_bit", 175},
                                      {7, 1, "R_W", 10},
                                      {7, 1, "R_D", 10},
                                      {7, 1, "R_D", 9}}));
    }
}

TEST_F(SettlingWrites, ARunOfBitsInOneWordIsAnnouncedOnceWithItsLastBit)
{
    plan({key("M_W", 1, 1)});
    save("M_bit", 17, 3, "01 01 01");
    notices();
    settleNamed("M_bit", 17, 3, accepted);
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_W", 1}}));
    EXPECT_EQ(device("M", 1), "0E 00 00 00");
}

TEST_F(SettlingWrites, ARunOfBitsSettlesEveryWordItTouches)
{
    plan({key("M_W", 0, 2)});
    save("M_bit", 14, 4, "01 01 01 01");
    notices();
    settleNamed("M_bit", 14, 4, accepted);
    EXPECT_EQ(device("M", 0), "00 C0 00 00");
    EXPECT_EQ(device("M", 1), "03 00 00 00");
    EXPECT_FALSE(isPending("M", 0));
    EXPECT_FALSE(isPending("M", 1));
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_W", 0}, {7, 1, "M_W", 1}}));
}

TEST_F(SettlingWrites, BitsWhoseCountANewPlanForgotAreSettledOneByOne)
{
    save("M_bit", 17, 3, "01 01 01");
    plan({key("M_W", 1, 1)});
    settleNamed("M_bit", 17, 3, accepted);
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_W", 1}, {7, 1, "M_W", 1}, {7, 1, "M_W", 1}}));
    EXPECT_EQ(device("M", 1), "0E 00 00 00");
    EXPECT_FALSE(isPending("M", 1));
}

TEST_F(SettlingWrites, ACallbackThatReadsBackAnAcceptedBitSeesIt)
{
    plan({key("M_bit", 20, 1)});
    save("M_bit", 20, 1, "01");
    std::string seen;
    whenTold([&](const Notice&) { seen = read("M_bit", 20, 1); });
    settleNamed("M_bit", 20, 1, accepted);
    EXPECT_EQ(seen, "01");
}

// A write from the host to the controller's answer

TEST_F(SettlingWrites, AWriteThatTheControllerAnswersBecomesItsValue)
{
    write("R_W", 100, 1, "34 12");
    EXPECT_EQ(poll(), toHex(withCrc("01 06 05 64 12 34")));
    EXPECT_TRUE(isPending("R", 100));
    EXPECT_EQ(reply(withCrc("01 06 05 64 12 34")), 1);
    EXPECT_FALSE(isPending("R", 100));
    EXPECT_EQ(device("R", 100), "34 12 00 00");
    EXPECT_EQ(read("R_W", 100, 1), "34 12");
}

TEST_F(SettlingWrites, AFailedWriteIsAnnouncedAndShowsWhatTheControllerSentLast)
{
    configure("7#0#0#1#10");
    plan({key("M_W", 3, 1)});
    EXPECT_EQ(poll(), toHex(withCrc("01 01 10 30 00 10")));
    EXPECT_EQ(reply(withCrc("01 01 02 34 12")), 1);
    write("M_W", 3, 1, "78 56");
    EXPECT_EQ(read("M_W", 3, 1), "78 56");
    notices();
    EXPECT_EQ(poll(), toHex(withCrc("01 0F 10 30 00 10 02 78 56")));
    EXPECT_EQ(reply(QByteArray()), 2);
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_W", 3}}));
    EXPECT_EQ(read("M_W", 3, 1), "34 12");
}

TEST_F(SettlingWrites, TwoWritesOfOneBitKeepTheWordPendingUntilBothAreSettled)
{
    write("M_bit", 20, 1, "01");
    write("M_bit", 20, 1, "00");
    EXPECT_EQ(pendingBits("M", 1), 0x300u);
    EXPECT_EQ(poll(), toHex(withCrc("01 05 10 14 FF 00")));
    EXPECT_EQ(reply(withCrc("01 05 10 14 FF 00")), 1);
    EXPECT_TRUE(isPending("M", 1));
    EXPECT_EQ(read("M_bit", 20, 1), "00");
    EXPECT_EQ(poll(), toHex(withCrc("01 05 10 14 00 00")));
    EXPECT_EQ(reply(withCrc("01 05 10 14 00 00")), 1);
    EXPECT_FALSE(isPending("M", 1));
    EXPECT_EQ(read("M_bit", 20, 1), "00");
}

TEST_F(SettlingWrites, AReplacedWriteIsSettledByTheOneThatReplacedIt)
{
    write("R_W", 1, 1, "11 00");
    write("R_W", 100, 1, "22 00");
    write("R_W", 100, 1, "33 00");
    EXPECT_EQ(poll(), toHex(withCrc("01 06 05 01 00 11")));
    EXPECT_EQ(reply(withCrc("01 06 05 01 00 11")), 1);
    EXPECT_TRUE(isPending("R", 100));
    EXPECT_EQ(poll(), toHex(withCrc("01 06 05 64 00 33")));
    EXPECT_EQ(reply(withCrc("01 06 05 64 00 33")), 1);
    EXPECT_FALSE(isPending("R", 100));
    EXPECT_EQ(device("R", 100), "33 00 00 00");
    EXPECT_EQ(poll(), "");
}

// Two writes of a bit were counted, the first is settled, and a third replaces the second while
// that still waits behind another write: it counts again, yet only one answer comes.
TEST_F(SettlingWrites, AThirdWriteOfABitThatReplacesAWaitingSecondLeavesTheWordPending)
{
    write("M_bit", 20, 1, "01");
    write("R_W", 1, 1, "11 00");
    write("M_bit", 20, 1, "00");
    exchange();
    write("M_bit", 20, 1, "01");
    EXPECT_EQ(pendingBits("M", 1), 0x300u);
    exchange();
    exchange();
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_EQ(pendingBits("M", 1), 0x200u);
    EXPECT_TRUE(isPending("M", 1));
    EXPECT_EQ(read("M_bit", 20, 1), "01");
    EXPECT_EQ(device("M", 1), "10 00 00 00"); // the controller's value is the visible one

    plan({key("M_W", 1, 1)}); // forgets the count
    poll();
    EXPECT_EQ(reply(withCrc("01 01 02 11 00")), 1);
    EXPECT_FALSE(isPending("M", 1));
    EXPECT_EQ(read("M_W", 1, 1), "11 00");
}

TEST_F(SettlingWrites, EachPieceOfALongWriteIsSettledByItsOwnAnswer)
{
    configure("7#0#0#3#1");
    write("R_W", 100, 2, "11 00 22 00");
    poll();
    EXPECT_EQ(reply(withCrc("01 06 05 64 00 11")), 1);
    EXPECT_FALSE(isPending("R", 100));
    EXPECT_TRUE(isPending("R", 101));
    poll();
    EXPECT_EQ(reply(withCrc("01 06 05 65 00 22")), 1);
    EXPECT_FALSE(isPending("R", 101));
}

} // namespace
