// Hosts call the driver from within the value-change callback, though they should not. Whatever
// they do there: no fault, nothing of what they queued is lost, and the driver goes on.
#include <functional>
#include <gmock/gmock.h>

#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class CallbackReentry : public DriverTest {
protected:
    // Does this in the first notice only.
    void onceWhenTold(const std::function<void()>& action)
    {
        whenTold([this, action](const Notice&) {
            whenTold(nullptr);
            action();
        });
    }

    // A read of "R_W" 10 to 12 is on the line, two other reads come after it.
    void askForThreeWords()
    {
        plan({key("R_W", 10, 3), key("R_bit", 160, 16), key("R_D", 10, 2), key("T", 1, 1),
              key("C", 1, 1)});
        EXPECT_EQ(poll(), frame("01 03 05 0A 00 03"));
    }

    static QByteArray threeWords()
    {
        return withCrc("01 03 06 12 34 56 78 9A BC");
    }
};

// While a reply is decoded.

TEST_F(CallbackReentry, InitialisingWhileAReplyIsDecodedLeavesTheDriverAsInitialised)
{
    askForThreeWords();
    onceWhenTold([&] { configure("9#0#0#3#10"); });
    EXPECT_EQ(reply(threeWords()), 1);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
    EXPECT_TRUE(driver.readList.isEmpty());
    EXPECT_TRUE(driver.sendList.isEmpty());
    EXPECT_EQ(driver.sendKind, 0);
    EXPECT_EQ(notices().size(), 1u);
    EXPECT_EQ(poll(), "");
}

TEST_F(CallbackReentry, AFreshPlanAndFrameMadeWhileAReplyIsDecodedStay)
{
    askForThreeWords();
    std::string asked;
    onceWhenTold([&] {
        configure();
        plan({key("M_W", 5, 1), key("M_W", 100, 1)});
        asked = poll();
    });
    reply(threeWords());
    EXPECT_EQ(asked, frame("01 01 10 50 00 10"));
    EXPECT_EQ(poll(), asked); // still on the line
    EXPECT_EQ(reply(withCrc("01 01 02 34 12")), 1);
    EXPECT_EQ(poll(), frame("01 01 16 40 00 10"));
    EXPECT_EQ(read("M_W", 5, 1), "34 12");
}

TEST_F(CallbackReentry, PlanningWhileAReplyIsDecodedDoesNotDisturbIt)
{
    askForThreeWords();
    onceWhenTold([&] { plan({key("R_W", 10, 3), key("M_W", 5, 1)}); });
    EXPECT_EQ(reply(threeWords()), 1);
    EXPECT_EQ(read("R_W", 10, 3), "34 12 78 56 BC 9A");
    EXPECT_THAT(summary(driver.readList),
                ::testing::UnorderedElementsAre("1/M_W:5+1", "1/R_W:10+3"));
    EXPECT_TRUE(driver.sendList.isEmpty());
}

TEST_F(CallbackReentry, PollingWhileAReplyIsDecodedHandsTheSameFrameOutAndAsksNothingTwice)
{
    askForThreeWords();
    std::string asked;
    onceWhenTold([&] { asked = poll(); });
    EXPECT_EQ(reply(threeWords()), 1);
    EXPECT_EQ(asked, frame("01 03 05 0A 00 03"));
    EXPECT_EQ(poll(), frame("01 03 01 81 00 01"));
}

TEST_F(CallbackReentry, AReplyHandedInWhileItIsDecodedEndsTheRequestOnce)
{
    askForThreeWords();
    int inner = -1;
    onceWhenTold([&] { inner = reply(threeWords()); });
    EXPECT_EQ(reply(threeWords()), 1);
    EXPECT_EQ(inner, 1);
    EXPECT_EQ(read("R_W", 10, 3), "34 12 78 56 BC 9A");
    EXPECT_EQ(poll(), frame("01 03 01 81 00 01")); // the next one, not the one after it
    EXPECT_EQ(driver.readList.size(), 3);
}

TEST_F(CallbackReentry, ABadReplyHandedInWhileAGoodOneIsDecodedLosesNoRequest)
{
    driver.retryLimit = 1;
    askForThreeWords();
    onceWhenTold([&] { reply(QByteArray()); });
    reply(threeWords());
    EXPECT_EQ(read("R_W", 10, 3), "34 12 78 56 BC 9A");
    EXPECT_EQ(driver.readList.size(), 3);
    EXPECT_EQ(poll(), frame("01 03 01 81 00 01"));
}

TEST_F(CallbackReentry, AWriteQueuedWhileAReplyIsDecodedGoesOut)
{
    askForThreeWords();
    onceWhenTold([&] { write("R_W", 11, 1, "66 55"); });
    EXPECT_EQ(reply(threeWords()), 1);
    EXPECT_EQ(read("R_W", 11, 1), "66 55");
    EXPECT_EQ(poll(), frame("01 06 05 0B 55 66"));
}

TEST_F(CallbackReentry, AConditionReadQueuedWhileAReplyIsDecodedGoesOut)
{
    askForThreeWords();
    onceWhenTold([&] { ask(key("R_W", 11, 1)); });
    EXPECT_EQ(reply(threeWords()), 1);
    EXPECT_EQ(poll(), frame("01 03 05 0B 00 01"));
}

TEST_F(CallbackReentry, TakingTheCallbackAwayWhileAReplyIsDecodedEndsTheNotices)
{
    askForThreeWords();
    onceWhenTold([&] { intf_setAddrValueChangeCallBack(nullptr); });
    EXPECT_EQ(reply(threeWords()), 1);
    EXPECT_EQ(notices().size(), 1u);
    EXPECT_EQ(read("R_W", 10, 3), "34 12 78 56 BC 9A");
}

TEST_F(CallbackReentry, EmptyingTheCacheWhileAReplyIsDecodedDoesNotFault)
{
    askForThreeWords();
    onceWhenTold([&] { driver.dataAreas.clear(); });
    EXPECT_EQ(reply(threeWords()), 1);
    EXPECT_EQ(read("R_W", 11, 2), "78 56 BC 9A");
    EXPECT_EQ(poll(), frame("01 03 01 81 00 01"));
}

TEST_F(CallbackReentry, EmptyingTheSendListWhileAReplyIsDecodedDoesNotFault)
{
    askForThreeWords();
    onceWhenTold([&] { driver.sendList.clear(); });
    EXPECT_EQ(reply(threeWords()), 1);
    EXPECT_EQ(poll(), frame("01 03 01 81 00 01"));
}

TEST_F(CallbackReentry, TheHostMayReuseItsReplyBufferWhileAReplyIsDecoded)
{
    askForThreeWords();
    QByteArray received = threeWords();
    onceWhenTold([&] { received.fill('\x55'); });
    EXPECT_EQ(intf_dealRcvFrame(&received, nullptr), 1);
    EXPECT_EQ(read("R_W", 10, 3), "34 12 78 56 BC 9A");
}

// While a write is settled.

TEST_F(CallbackReentry, InitialisingWhileAWriteIsReportedDoneLeavesTheDriverAsInitialised)
{
    plan({key("Q_bit", 0, 16)});
    write("Q_bit", 5, 1, "01");
    poll();
    onceWhenTold([&] {
        configure();
        write("R_W", 50, 1, "07 00");
    });
    reply(withCrc("01 05 08 05 FF 00"));
    EXPECT_THAT(summary(driver.writeList), ElementsAre("1/R_W:50+1"));
    EXPECT_EQ(poll(), frame("01 06 05 32 00 07"));
}

TEST_F(CallbackReentry, InitialisingWhileAWriteIsReportedFailedLeavesTheDriverAsInitialised)
{
    driver.retryLimit = 1;
    plan({key("R_W", 10, 3)});
    write("R_W", 10, 2, "34 12 78 56");
    poll();
    onceWhenTold([&] {
        configure();
        write("R_W", 50, 1, "07 00");
    });
    EXPECT_EQ(reply(QByteArray()), 2);
    EXPECT_THAT(summary(driver.writeList), ElementsAre("1/R_W:50+1"));
    EXPECT_EQ(unitIndex(1, "R", 11), -1);
    EXPECT_EQ(poll(), frame("01 06 05 32 00 07"));
}

TEST_F(CallbackReentry, AWriteQueuedWhileAnotherIsReportedFailedGoesOut)
{
    driver.retryLimit = 1;
    plan({key("R_W", 10, 1)});
    write("R_W", 10, 1, "34 12");
    poll();
    onceWhenTold([&] { write("R_W", 10, 1, "78 56"); });
    EXPECT_EQ(reply(QByteArray()), 2);
    EXPECT_EQ(poll(), frame("01 06 05 0A 56 78"));
    EXPECT_EQ(read("R_W", 10, 1), "78 56");
}

TEST_F(CallbackReentry, AWriteQueuedWhileAnotherIsReportedDoneGoesOut)
{
    plan({key("Q_bit", 0, 16)});
    write("Q_bit", 5, 1, "01");
    poll();
    onceWhenTold([&] { write("Q_bit", 6, 1, "01"); });
    EXPECT_EQ(reply(withCrc("01 05 08 05 FF 00")), 1);
    EXPECT_EQ(poll(), frame("01 05 08 06 FF 00"));
}

// While a condition read is reported.

TEST_F(CallbackReentry, AskingAgainWhileAConditionReadIsReportedQueuesIt)
{
    KEY_ADDRESS wanted = key("R_W", 10, 1);
    intf_addConditionRead(wanted, 3);
    poll();
    onceWhenTold([&] { intf_addConditionRead(wanted, 3); });
    EXPECT_EQ(reply(withCrc("01 03 02 00 00")), 1);
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/R_W:10+1"));
    EXPECT_EQ(poll(), frame("01 03 05 0A 00 01"));
}

TEST_F(CallbackReentry, InitialisingWhileAConditionReadIsReportedKeepsWhatIsAskedAfterwards)
{
    for (const bool failed : {false, true}) {
        configure("7#0#0#1#10");
        ask(key("R_W", 10, 1));
        poll();
        onceWhenTold([&] {
            configure();
            ask(key("T", 5, 1));
        });
        EXPECT_EQ(reply(failed ? QByteArray() : withCrc("01 03 02 00 00")), failed ? 2 : 1);
        EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/T:5+1")) << failed;
    }
}

TEST_F(CallbackReentry, EmptyingTheListWhileAConditionReadIsReportedDoesNotFault)
{
    ask(key("R_W", 10, 1));
    poll();
    onceWhenTold([&] { driver.conditionList.clear(); });
    EXPECT_EQ(reply(withCrc("01 03 02 00 00")), 1);
    EXPECT_THAT(summary(driver.conditionList), IsEmpty());
}

} // namespace
