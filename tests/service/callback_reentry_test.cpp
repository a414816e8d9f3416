// Hosts call the driver from within the value-change callback, though they should not. Whatever
// they do there: no fault, nothing of what they queued is lost, and the driver goes on.
#include <functional>
#include <gmock/gmock.h>

#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const int downloadFlag = 60115;
const int uploadFlag = 60116;

std::string frame(const char* bytes)
{
    return toHex(withCrc(bytes));
}

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
    onceWhenTold([&] {
        KEY_ADDRESS wanted = key("R_W", 11, 1);
        intf_addConditionRead(wanted, 3);
    });
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
        KEY_ADDRESS wanted = key("R_W", 10, 1);
        intf_addConditionRead(wanted, 3);
        poll();
        onceWhenTold([&] {
            configure();
            KEY_ADDRESS other = key("T", 5, 1);
            intf_addConditionRead(other, 3);
        });
        EXPECT_EQ(reply(failed ? QByteArray() : withCrc("01 03 02 00 00")), failed ? 2 : 1);
        EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/T:5+1")) << failed;
    }
}

TEST_F(CallbackReentry, EmptyingTheListWhileAConditionReadIsReportedDoesNotFault)
{
    KEY_ADDRESS wanted = key("R_W", 10, 1);
    intf_addConditionRead(wanted, 3);
    poll();
    onceWhenTold([&] { driver.conditionList.clear(); });
    EXPECT_EQ(reply(withCrc("01 03 02 00 00")), 1);
    EXPECT_THAT(summary(driver.conditionList), IsEmpty());
}

// Everything against everything.

struct Moment {
    const char* name;
    std::function<void(DriverTest&)> prepare; // the frame on the line afterwards is answered
    const char* answer;                       // without CRC; "" is a reply that fails
};

struct Deed {
    const char* name;
    std::function<void()> act;
};

void pollAway()
{
    FRAME_PRO ignored = FRAME_PRO();
    intf_getSendFrame(&ignored);
}

void handIn(const QByteArray& bytes)
{
    QByteArray received = bytes;
    intf_dealRcvFrame(&received, nullptr);
}

void planAway(const QList<KEY_ADDRESS>& keys)
{
    const DebugLines quiet;
    QList<KEY_ADDRESS> copy = keys;
    intf_addrMerge(copy);
}

void writeAway(const char* regName, int address, int length)
{
    const DebugLines quiet;
    unsigned char bytes[] = {1, 0, 1, 0};
    intf_setData(1, name(regName), address, length, bytes, 2);
}

void askAway(const char* regName, int address)
{
    KEY_ADDRESS wanted = key(regName, address, 1);
    intf_addConditionRead(wanted, 3);
}

void recipeAway(int length)
{
    QVector<_RCP_VAR_PRO> records;
    for (int i = 0; i < length; ++i) {
        records.append(recipeRecord(7, "R_W", 10 + 20 * i, 2, i));
    }
    intf_setRcpAddress(records);
}

const Deed deeds[] = {
    {"InitialisesWithoutAnything",
     [] { intf_initProperty(nullptr, 0, nullptr, nullptr, "7#0#0#1#10", nullptr); }},
    {"PlansTheSame",
     [] {
         planAway({key("R_W", 10, 3), key("R_bit", 160, 16)});
     }},
    {"PlansNothing", [] { planAway({}); }},
    {"PlansMuch",
     [] {
         planAway({key("R_W", 0, 2000), key("M_bit", 0, 2048)});
     }},
    {"Polls", pollAway},
    {"HandsNothingIn", [] { handIn(QByteArray()); }},
    {"HandsAReadIn", [] { handIn(withCrc("01 03 06 00 01 00 02 00 03")); }},
    {"HandsAnEchoIn", [] { handIn(withCrc("01 06 05 0A 00 01")); }},
    {"PollsAndHandsIn",
     [] {
         handIn(withCrc("01 03 06 00 01 00 02 00 03"));
         pollAway();
         handIn(QByteArray());
         pollAway();
     }},
    {"WritesAWord", [] { writeAway("R_W", 10, 2); }},
    {"WritesABit", [] { writeAway("R_bit", 161, 1); }},
    {"ReadsMuch",
     [] {
         std::vector<unsigned char> out(4000);
         intf_getData(1, name("R_W"), 5, 2000, out.data());
     }},
    {"Asks", [] { askAway("R_W", 10); }},
    {"AsksForBits", [] { askAway("M_bit", 10); }},
    {"SetsARecipe", [] { recipeAway(3); }},
    {"SetsNoRecipe", [] { recipeAway(0); }},
    {"TakesTheCallbackAway", [] { intf_setAddrValueChangeCallBack(nullptr); }},
    {"EmptiesTheCache", [] { driver.dataAreas.clear(); }},
    {"EmptiesTheLists",
     [] {
         driver.readList.clear();
         driver.writeList.clear();
         driver.conditionList.clear();
         driver.sendList.clear();
         driver.recipeRequests.clear();
         driver.recipeVars.clear();
         driver.groupStarts.clear();
     }},
};

const Moment moments[] = {
    {"CyclicRead", [](DriverTest&) {}, "01 03 06 12 34 56 78 9A BC"},
    {"ConditionRead", [](DriverTest&) { askAway("R_W", 10); }, "01 03 02 12 34"},
    {"FailedConditionRead", [](DriverTest&) { askAway("R_W", 10); }, ""},
    {"WriteOfABit", [](DriverTest&) { writeAway("Q_bit", 5, 1); }, "01 05 08 05 FF 00"},
    {"FailedWriteOfABit", [](DriverTest&) { writeAway("Q_bit", 5, 1); }, ""},
    {"FailedWriteOfWords", [](DriverTest&) { writeAway("R_W", 10, 2); }, ""},
    {"Upload", [](DriverTest&) { recipeAway(2); }, "01 03 04 12 34 56 78"},
};

class CallbackThat : public CallbackReentry,
                     public ::testing::WithParamInterface<std::tuple<Moment, Deed, bool>> {};

TEST_P(CallbackThat, LeavesAWorkingDriver)
{
    const Moment moment = std::get<0>(GetParam());
    const Deed deed = std::get<1>(GetParam());
    const bool always = std::get<2>(GetParam());
    const bool upload = moment.name == std::string("Upload");
    configure("7#0#0#1#10");
    plan({key("R_W", 10, 3), key("R_bit", 160, 16), key("R_D", 10, 2), key("Q_bit", 0, 16),
          key("T", 1, 1)});
    driver.readList.move(1, 0);
    moment.prepare(*this);
    hostBlock[uploadFlag] = upload ? 1 : 0;
    ASSERT_NE(poll(), "");
    int told = 0;
    int depth = 0;
    whenTold([&](const Notice&) {
        ++told;
        if (depth < 3 && (always || told == 1)) {
            ++depth;
            deed.act();
            --depth;
        }
    });
    const bool fails = moment.answer[0] == '\0';
    EXPECT_EQ(reply(fails ? QByteArray() : withCrc(moment.answer)), fails ? 2 : 1);
    EXPECT_GE(told, 1);
    for (int i = 0; i < 40; ++i) {
        FRAME_PRO next = FRAME_PRO();
        if (intf_getSendFrame(&next) == 1) {
            handIn(i % 5 == 4 ? QByteArray() : goodReplyTo(next));
        }
    }
    whenTold(nullptr);

    // Whatever happened: from here on it is a driver like any other.
    intf_setAddrValueChangeCallBack(nullptr);
    hostBlock[uploadFlag] = 0;
    hostBlock[downloadFlag] = 0;
    configure();
    plan({key("R_W", 10, 1)});
    EXPECT_EQ(poll(), frame("01 03 05 0A 00 01"));
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
}

INSTANTIATE_TEST_SUITE_P(At, CallbackThat,
                         ::testing::Combine(::testing::ValuesIn(moments),
                                            ::testing::ValuesIn(deeds), ::testing::Bool()),
                         [](const ::testing::TestParamInfo<std::tuple<Moment, Deed, bool>>& row) {
                             return std::string(std::get<1>(row.param).name) +
                                    (std::get<2>(row.param) ? "EachTimeAt" : "OnceAt") +
                                    std::get<0>(row.param).name;
                         });

} // namespace
