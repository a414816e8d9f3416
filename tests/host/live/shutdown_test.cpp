#include "live/shutdown.h"

#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>

#include "pty_slave.h"

namespace dov417 {

namespace {

struct Signal {
    const char* name;
    int number;
};

std::ostream& operator<<(std::ostream& out, const Signal& signal)
{
    return out << signal.name;
}

auto handlerOf(int number)
{
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    return action.sa_handler;
}

class Shutdowns : public ::testing::TestWithParam<Signal> {
protected:
    Shutdowns()
    {
        std::signal(GetParam().number, SIG_DFL); // whoever runs the tests may ignore it
    }
    ~Shutdowns() override
    {
        std::signal(GetParam().number, SIG_DFL);
    }
};

TEST_P(Shutdowns, AreAskedForInTheEventLoop)
{
    int asked = 0;
    const Shutdown shutdown([&asked]() { ++asked; });
    raise(GetParam().number);
    EXPECT_EQ(asked, 0) << "a signal comes anywhere: only the event loop may act on it";
    ASSERT_TRUE(waitUntil([&asked]() { return asked > 0; }));
    EXPECT_EQ(asked, 1);
}

class RepeatedShutdowns : public Shutdowns {};

TEST_P(RepeatedShutdowns, AreAskedForAgain)
{
    int asked = 0;
    const Shutdown shutdown([&asked]() { ++asked; });
    raise(GetParam().number);
    EXPECT_EQ(handlerOf(GetParam().number), SIG_DFL)
        << "a second one ends a program that has not heard the first";
    ASSERT_TRUE(waitUntil([&asked]() { return asked == 1; }));
    raise(GetParam().number);
    EXPECT_TRUE(waitUntil([&asked]() { return asked == 2; }));
}

void sayLastWords()
{
    std::fputs("last words\n", stderr);
}

TEST_P(RepeatedShutdowns, HaveLastWordsWhereSomebodyWantsThem)
{
    const int number = GetParam().number;
    EXPECT_EXIT(
        {
            const Shutdown shutdown([]() {});
            Shutdown::setLastWords(sayLastWords);
            raise(number);
            raise(number);
        },
        ::testing::KilledBySignal(number), "last words");
}

TEST(AClosedTerminal, IsOneShutdownHoweverOftenItIsTold)
{
    std::signal(SIGHUP, SIG_DFL);
    int asked = 0;
    const Shutdown shutdown([&asked]() { ++asked; });
    raise(SIGHUP);
    raise(SIGHUP);
    ASSERT_TRUE(waitUntil([&asked]() { return asked > 0; }));
    raise(SIGHUP);
    raise(SIGTERM);
    ASSERT_TRUE(waitUntil([&asked]() { return asked > 1; })) << "for the SIGTERM behind them";
    EXPECT_EQ(asked, 2);
}

TEST_P(Shutdowns, LeaveAnIgnoredSignalIgnored)
{
    std::signal(GetParam().number, SIG_IGN);
    {
        const Shutdown shutdown([]() {});
        EXPECT_EQ(handlerOf(GetParam().number), SIG_IGN);
    }
    EXPECT_EQ(handlerOf(GetParam().number), SIG_IGN);
}

TEST_P(Shutdowns, LeaveTheProgramAsItWas)
{
    {
        const Shutdown shutdown([]() {});
        EXPECT_NE(handlerOf(GetParam().number), SIG_DFL);
    }
    EXPECT_EQ(handlerOf(GetParam().number), SIG_DFL);
}

INSTANTIATE_TEST_SUITE_P(Each, RepeatedShutdowns,
                         ::testing::Values(Signal{"SIGINT", SIGINT}, Signal{"SIGTERM", SIGTERM},
                                           Signal{"SIGQUIT", SIGQUIT}),
                         [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(Each, Shutdowns,
                         ::testing::Values(Signal{"SIGINT", SIGINT}, Signal{"SIGTERM", SIGTERM},
                                           Signal{"SIGHUP", SIGHUP}, Signal{"SIGQUIT", SIGQUIT}),
                         [](const auto& test) { return test.param.name; });

} // namespace

} // namespace dov417
