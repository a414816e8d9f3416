// What another program has written just before the line was opened: its confirmation is not ours.
#include <gtest/gtest.h>

#include "hand_line.h"
#include "late_world.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

struct Writing {
    const char* name;
    const char* ours;
    const char* reply;
    const char* others; // that comes first
};

const Writing writings[] = {
    {"TheSameValue", "010600050007", "010600050007", "010600050007"},
    {"AnotherValue", "010600050007", "010600050007", "010600050008"},
    {"SeveralRegisters", "01100005000204000100AA", "011000050002", "011000050002"},
    {"Coils", "010F000500100201AA", "010F00050010", "010F00050010"},
};

class AnotherProgramsWrite : public ::testing::TestWithParam<Writing> {
protected:
    AnotherProgramsWrite()
    {
        line.settings.isShared = true;
        line.settings.timeout.isFixed = true;
    }

    // Until the write itself goes out: a station that is late, and so is not known yet.
    void askUntilItIsSent()
    {
        for (int i = 0; i < 3 && !isSent(); ++i) {
            line.ask(GetParam().ours, 8);
            for (int passed = 0; passed < 100 && !isSent() && !line.ended; ++passed)
                line.pass(milliseconds(100));
        }
        ASSERT_TRUE(isSent());
        ASSERT_FALSE(line.ended.has_value());
        line.strays.clear();
    }

    bool isSent() const
    {
        return !line.sent.empty() &&
               line.sent.back() == withCrc(QByteArray::fromHex(GetParam().ours));
    }

    HandLine line;
};

TEST_P(AnotherProgramsWrite, DoesNotConfirmOurs)
{
    line.start();
    askUntilItIsSent();
    line.comeWhole(GetParam().others);
    line.pass(milliseconds(150));
    EXPECT_FALSE(line.ended.has_value());
    ASSERT_EQ(line.strays.size(), 1U);
    EXPECT_EQ(line.strays.front().kind, StrayKind::late);
    line.pass(seconds(1));
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.reason(), "no answer: only a late reply to an earlier request came");
    EXPECT_EQ(line.doubts, 0);
}

// Once the station has answered what nobody else has sent, ours is confirmed.
TEST_P(AnotherProgramsWrite, IsToldFromOursOnceTheStationIsKnown)
{
    line.start();
    askUntilItIsSent();
    for (const QByteArray& each : line.sent)
        if (each.at(1) == 8) {
            line.exchange->bytesCame(each, line.now); // late
            break;
        }
    line.pass(milliseconds(10));
    ASSERT_FALSE(line.ended.has_value());
    line.comeWhole(GetParam().reply);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
    EXPECT_EQ(answeredOtherwise(*line.ended), "");
}

// It may be a station that answers nothing but writes.
TEST_P(AnotherProgramsWrite, IsNoneOnceItWouldBeBeyondTheHorizon)
{
    line.start();
    line.pass(seconds(31));
    askUntilItIsSent();
    line.comeWhole(GetParam().reply);
    line.pass(seconds(1));
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
}

INSTANTIATE_TEST_SUITE_P(Writes, AnotherProgramsWrite, ::testing::ValuesIn(writings),
                         [](const auto& each) { return std::string(each.param.name); });

// Two reads of different length tell as much as an echo: no write waits for longer than these.
TEST(AWriteToAStationJustMet, IsConfirmedAtOnceWhateverItSaysToFunction8)
{
    for (const bool mayMark : {true, false})
        for (const int diagnostics : {1, 0, -1})
            for (const int words : {1, 2}) {
                SCOPED_TRACE(diagnostics);
                LateWorld world(1);
                world.settings.mayMark = mayMark;
                LateStation& station = world.bus.stations[1];
                station.delay = []() { return milliseconds(5); };
                station.diagnostics = diagnostics;
                world.start();
                const Clock::time_point begin = world.now;
                const Transmission ended = words == 1
                                               ? world.write(1, LateBus::firstWritten, 7)
                                               : world.writeWords(1, LateBus::firstWritten, {7, 8});
                EXPECT_TRUE(isGood(ended));
                EXPECT_LT(world.now - begin,
                          mayMark && diagnostics < 0 ? milliseconds(1700) : milliseconds(200));
                EXPECT_LE(world.markers, 5);
            }
}

} // namespace

} // namespace dov417
