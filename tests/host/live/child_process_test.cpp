#include "live/child_process.h"

#include <QCoreApplication>
#include <QProcess>
#include <csignal>
#include <cstdlib>
#include <gmock/gmock.h>

#include "live/controller_process.h"
#include "live/plan_process.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

constexpr int patienceMs = 300000;

TEST(AChildProcess, TellsOfItsEndWhatItHasSaidAndHowItEnded)
{
    ChildProcess child;
    std::string told;
    child.onEnded([&]() { told = child.output(); });
    child.begin(planTask, "no record");
    ASSERT_TRUE(waitUntil([&]() { return !told.empty(); }));
    EXPECT_THAT(told, testing::StartsWith(R"({"failure":)"));
    EXPECT_EQ(child.id(), 0);
    EXPECT_EQ(child.waitForEnd(), EXIT_FAILURE);
    EXPECT_EQ(child.waitForLine(patienceMs).value_or("") + "\n", told);
}

TEST(AChildProcess, SaysNothingOnceItHasEndedWithoutALine)
{
    ChildProcess child;
    child.begin("no such task", "");
    EXPECT_EQ(child.waitForLine(patienceMs), std::nullopt);
    EXPECT_EQ(child.id(), 0);
}

TEST(AChildProcess, HasNoExitCodeWhereASignalHasEndedIt)
{
    ChildProcess child;
    child.begin(controllerTask, "{}");
    kill(child.id(), SIGSTOP);
    kill(child.id(), SIGKILL);
    EXPECT_EQ(child.waitForEnd(), -1);
}

// Its own has ended before it could ask for the signal that would tell it.
TEST(AChildProcess, DoesNothingWhereItsParentIsAnother)
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {childMark, planTask, "1"});
    child.closeWriteChannel();
    ASSERT_TRUE(child.waitForFinished(patienceMs));
    EXPECT_EQ(child.exitCode(), EXIT_FAILURE);
    EXPECT_EQ(child.readAllStandardOutput().toStdString(), "");
}

} // namespace

} // namespace dov417
