#include "live/child_process.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QProcess>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <spawn.h>

#include "live/controller_process.h"
#include "live/plan_process.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

constexpr int patienceMs = 300000;

std::function<void(pid_t)> onceStarted; // the parent goes on after it

// Of the file that it has as its standard input; 0 before it has read, and once it is gone.
long readSoFar(pid_t child)
{
    std::ifstream known("/proc/" + std::to_string(child) + "/fdinfo/0");
    std::string name;
    long bytes = 0;
    known >> name >> bytes;
    return bytes;
}

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

// As on a busy machine, on which the child is ahead of its parent.
TEST(AChildProcess, ReadsItsRecordOnceWhereItsParentIsSlow)
{
    onceStarted = [](pid_t id) {
        const QDeadlineTimer patience(patienceMs);
        while (readSoFar(id) == 0 && !patience.hasExpired()) {
        }
        kill(id, SIGSTOP);
    };
    ChildProcess child;
    child.begin(planTask, std::string(1000000, ' ') + "no record"); // of which it finds the place
    onceStarted = nullptr;
    kill(child.id(), SIGCONT);
    EXPECT_THAT(child.waitForLine(patienceMs).value_or("").substr(0, 120),
                testing::HasSubstr("column 1000002:"));
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

// In the place of the system's, which it calls.
int posix_spawn(pid_t* id, const char* path, const posix_spawn_file_actions_t* files,
                const posix_spawnattr_t* attributes, char* const* arguments,
                char* const* environment)
{
    static const auto start =
        reinterpret_cast<decltype(&posix_spawn)>(dlsym(RTLD_NEXT, "posix_spawn"));
    const int error = start(id, path, files, attributes, arguments, environment);
    if (error == 0 && dov417::onceStarted)
        dov417::onceStarted(*id);
    return error;
}
