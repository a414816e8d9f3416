#include "link/quiet_wait.h"

#include <gtest/gtest.h>

#include "pty_slave.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;

class AWaitForQuiet : public ::testing::Test {
protected:
    void begin()
    {
        wait.begin([this]() {
            ++calls;
            calledAt = Clock::now();
        });
    }
    void expectOneCall()
    {
        ASSERT_TRUE(waitUntil([this]() { return calls > 0; }));
        wait.lookAgain();
        bool isLater = false;
        QTimer::singleShot(0, [&isLater]() { isLater = true; });
        ASSERT_TRUE(waitUntil([&isLater]() { return isLater; }));
        EXPECT_EQ(calls, 1);
        EXPECT_TRUE(wait.isUnderWay());
    }

    Clock::time_point quietAt{};
    QuietWait wait{[this]() { return quietAt; }};
    int calls = 0;
    Clock::time_point calledAt{};
};

TEST_F(AWaitForQuiet, EndsFromTheEventLoopWhereItIsQuietAlready)
{
    EXPECT_FALSE(wait.isUnderWay());
    begin();
    EXPECT_EQ(calls, 0);
    expectOneCall();
}

TEST_F(AWaitForQuiet, EndsNoSoonerThanItIsQuiet)
{
    quietAt = Clock::now() + milliseconds(30);
    begin();
    expectOneCall();
    EXPECT_GE(calledAt, quietAt);
}

TEST_F(AWaitForQuiet, TellsNobodyOnceItIsStopped)
{
    begin();
    wait.stop();
    EXPECT_FALSE(wait.isUnderWay());
    bool isLater = false;
    QTimer::singleShot(0, [&isLater]() { isLater = true; });
    ASSERT_TRUE(waitUntil([&isLater]() { return isLater; }));
    EXPECT_EQ(calls, 0);
}

} // namespace

} // namespace dov417
