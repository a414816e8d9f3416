// An exception says of which function it is, and nothing else.
#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const char* const readA = "010300640001";
const char* const readB = "010303E80002";
const char* const refusal = "018302";

class AnException : public ::testing::Test {
protected:
    AnException()
    {
        line.settings.timeout.isFixed = true; // nothing is listened to
    }
    void askA()
    {
        line.askRead(readA, 1);
    }
    void askB()
    {
        line.askRead(readB, 2);
    }
    void giveUp()
    {
        line.pass(milliseconds(600));
        ASSERT_TRUE(line.ended.has_value());
        EXPECT_EQ(line.ended->reception.result, LineResult::timeout);
    }
    // A's reply is lost, B's is late.
    void leaveBothOpen()
    {
        line.start();
        askA();
        giveUp();
        askB();
        giveUp();
    }
    bool wasRefused() const
    {
        return line.ended && line.ended->reception.result == LineResult::exception;
    }
    HandLine line;
};

TEST_F(AnException, IsNotHandedOnWhereItMayBeAnothers)
{
    leaveBothOpen();
    askA();
    line.comeWhole(refusal);
    EXPECT_FALSE(line.ended.has_value()) << "it is B that was refused";
    ASSERT_EQ(line.strays.size(), 1U);
    EXPECT_EQ(line.strays.front().kind, StrayKind::late);
    line.pass(milliseconds(5));
    line.comeWhole("0103020064");
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
}

TEST_F(AnException, IsHandedOnWhereOnlyTheSameRequestIsOpen)
{
    line.start();
    askA();
    giveUp();
    askA();
    line.comeWhole(refusal);
    EXPECT_TRUE(wasRefused());
}

// It refuses both, and one reply was lost: each is told after some repetitions.
TEST_F(AnException, IsTakenInTheEndFromAStationThatRefusesAll)
{
    leaveBothOpen();
    for (int round = 0; round < 10; ++round) {
        for (int attempt = 0; attempt < 3; ++attempt) {
            round % 2 == 0 ? askA() : askB();
            line.comeWhole(refusal);
            if (line.ended)
                break;
            giveUp();
        }
        EXPECT_TRUE(wasRefused()) << round;
    }
}

} // namespace

} // namespace dov417
