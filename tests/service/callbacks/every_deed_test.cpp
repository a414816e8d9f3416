// Everything that a host can do within the value-change callback, at every moment that it is
// called: no fault, and a driver that goes on.
#include <functional>
#include <gmock/gmock.h>
#include <tuple>

#include "world.h"

namespace {

struct Moment {
    const char* name;
    std::function<void()> prepare; // the frame on the line afterwards is answered
    const char* answer;            // without CRC; "" is a reply that fails
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

void recipeAway(int length)
{
    QVector<_RCP_VAR_PRO> records;
    for (int i = 0; i < length; ++i) {
        records.append(recipeRecord(7, "R_W", 10 + 20 * i, 2, i));
    }
    setRecipe(records);
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
    {"Asks", [] { ask(key("R_W", 10, 1)); }},
    {"AsksForBits", [] { ask(key("M_bit", 10, 1)); }},
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
    {"CyclicRead", [] {}, "01 03 06 12 34 56 78 9A BC"},
    {"ConditionRead", [] { ask(key("R_W", 10, 1)); }, "01 03 02 12 34"},
    {"FailedConditionRead", [] { ask(key("R_W", 10, 1)); }, ""},
    {"WriteOfABit", [] { writeAway("Q_bit", 5, 1); }, "01 05 08 05 FF 00"},
    {"FailedWriteOfABit", [] { writeAway("Q_bit", 5, 1); }, ""},
    {"FailedWriteOfWords", [] { writeAway("R_W", 10, 2); }, ""},
    {"Upload", [] { recipeAway(2); }, "01 03 04 12 34 56 78"},
};

class CallbackThat : public DriverTest,
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
    moment.prepare();
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
