// What a request leaves behind once its frames are answered or given up.
#include <atomic>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

#include "link/send_scheduling.h"
#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// True where the thread waits for something. Without a kernel that tells, false.
bool sleeps(long thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    std::getline(file, line);
    const size_t nameEnd = line.rfind(')');
    return nameEnd != std::string::npos && nameEnd + 2 < line.size() && line[nameEnd + 2] == 'S';
}

// Makes the call on a thread of its own while `mutex` is held. `whileHeld` runs once that thread
// waits for the mutex, or is through without it: the argument tells whether it is through.
void callWhileLocked(QMutex& mutex, const std::function<void()>& call,
                     const std::function<void(bool)>& whileHeld)
{
    std::atomic<long> thread(0);
    std::atomic<bool> through(false);
    mutex.lock();
    std::thread caller([&] {
        thread = syscall(SYS_gettid);
        call();
        through = true;
    });
    while (!through && (thread == 0 || !sleeps(thread))) {
        std::this_thread::yield();
    }
    whileHeld(through);
    mutex.unlock();
    caller.join();
}

class FinishedRequests : public DriverTest {
protected:
    static void finish(int sendKind)
    {
        driver.sendKind = sendKind;
        dealListWhenFinish();
    }

    // Three entries in each work list, and a recipe at its second of three requests.
    void fillEverything()
    {
        const QList<VARIABLE> three = {request("R_W", 1, 1), request("R_W", 2, 1),
                                       request("R_W", 3, 1)};
        driver.readList = three;
        driver.writeList = three;
        driver.conditionList = three;
        setRecipe({recipeRecord(7, "T", 1, 1, 0), recipeRecord(7, "T", 3, 1, 1),
                   recipeRecord(7, "T", 5, 1, 2)});
        driver.recipeIndex = 1;
        hostBlock[downloadFlag] = 1;
        hostBlock[uploadFlag] = 1;
    }

    static const std::vector<std::string>& three()
    {
        static const std::vector<std::string> all = {"1/R_W:1+1", "1/R_W:2+1", "1/R_W:3+1"};
        return all;
    }
};

TEST_F(FinishedRequests, ThatWereNothingInParticularLeaveEverythingAsItIs)
{
    fillEverything();
    for (const int kind : {0, 1, 7, -1}) {
        finish(kind);
        EXPECT_EQ(summary(driver.readList), three()) << kind;
        EXPECT_EQ(summary(driver.writeList), three()) << kind;
        EXPECT_EQ(summary(driver.conditionList), three()) << kind;
        EXPECT_EQ(driver.recipeIndex, 1) << kind;
        EXPECT_EQ(hostBlock[downloadFlag] + hostBlock[uploadFlag], 2) << kind;
    }
    EXPECT_THAT(notices(), IsEmpty());
}

// Writes.

TEST_F(FinishedRequests, AWriteLeavesItsList)
{
    fillEverything();
    finish(2);
    EXPECT_THAT(summary(driver.writeList), ElementsAre("1/R_W:2+1", "1/R_W:3+1"));
    EXPECT_EQ(summary(driver.readList), three());
    EXPECT_EQ(summary(driver.conditionList), three());
    EXPECT_EQ(driver.recipeIndex, 1);
}

TEST_F(FinishedRequests, AWriteWhoseListWasEmptiedIsNothing)
{
    finish(2);
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_TRUE(driver.mutex.tryLock());
    driver.mutex.unlock();
}

TEST_F(FinishedRequests, AWriteIsRemovedUnderTheDriversMutex)
{
    fillEverything();
    driver.sendKind = 2;
    callWhileLocked(driver.mutex, dealListWhenFinish, [&](bool through) {
        EXPECT_FALSE(through);
        EXPECT_EQ(driver.writeList.size(), 3);
    });
    EXPECT_EQ(driver.writeList.size(), 2);
}

// Condition reads.

TEST_F(FinishedRequests, AConditionReadLeavesItsList)
{
    fillEverything();
    finish(3);
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/R_W:2+1", "1/R_W:3+1"));
    EXPECT_EQ(summary(driver.writeList), three());
    EXPECT_EQ(summary(driver.readList), three());
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(FinishedRequests, AConditionReadWhoseListWasEmptiedIsNothing)
{
    driver.lastConditionVar = VARIABLE();
    finish(3);
    driver.commFailed = 1;
    finish(3);
    EXPECT_THAT(notices(), IsEmpty());
    EXPECT_TRUE(driver.conditionList.isEmpty());
}

TEST_F(FinishedRequests, TheConditionReadAddedLastIsAnnounced)
{
    fillEverything();
    driver.lastConditionVar = request("R_W", 1, 1);
    int queuedWhenTold = 0;
    whenTold(
        [&](const Notice&) { queuedWhenTold = static_cast<int>(driver.conditionList.size()); });
    finish(3);
    EXPECT_EQ(notices(), (Notices{{-1, -1, "-1", 0}}));
    EXPECT_EQ(queuedWhenTold, 3); // it is removed afterwards
    EXPECT_EQ(driver.conditionList.size(), 2);
}

TEST_F(FinishedRequests, AConditionReadThatDiffersFromTheOneAddedLastIsNotAnnounced)
{
    for (const VARIABLE& last : {request("R_W", 1, 1, 2), request("R_D", 1, 1),
                                 request("R_W", 2, 1), request("R_W", 1, 2)}) {
        fillEverything();
        driver.lastConditionVar = last;
        finish(3);
        EXPECT_THAT(notices(), IsEmpty()) << summary(last);
        EXPECT_EQ(driver.conditionList.size(), 2);
    }
}

TEST_F(FinishedRequests, OnlyStationNameAddressAndLengthTellWhichConditionReadWasAddedLast)
{
    fillEverything();
    driver.lastConditionVar = request("R_W", 1, 1, 1, {1, 2, 3});
    driver.lastConditionVar.kind = 99;
    finish(3);
    EXPECT_EQ(notices(), (Notices{{-1, -1, "-1", 0}}));
}

TEST_F(FinishedRequests, AFailedConditionReadDropsAllOfThem)
{
    fillEverything();
    driver.commFailed = 1;
    finish(3);
    EXPECT_TRUE(driver.conditionList.isEmpty());
    EXPECT_THAT(notices(), IsEmpty());
    EXPECT_EQ(summary(driver.writeList), three());
}

TEST_F(FinishedRequests, AFailedConditionReadThatWasAddedLastIsAnnouncedAsFailed)
{
    fillEverything();
    driver.lastConditionVar = request("R_W", 1, 1);
    driver.commFailed = 1;
    int queuedWhenTold = 0;
    whenTold(
        [&](const Notice&) { queuedWhenTold = static_cast<int>(driver.conditionList.size()); });
    finish(3);
    EXPECT_EQ(notices(), (Notices{{-1, -1, "-1", -1}}));
    EXPECT_EQ(queuedWhenTold, 3);
    EXPECT_TRUE(driver.conditionList.isEmpty());
}

TEST_F(FinishedRequests, ALongConditionReadIsAnnouncedWithItsLastPiece)
{
    ask(key("R_W", 100, 25));
    for (int piece = 0; piece < 3; ++piece) {
        EXPECT_THAT(notices(), IsEmpty());
        ASSERT_NE(poll(), "");
        ASSERT_EQ(reply(goodReplyTo(polled)), 1);
    }
    EXPECT_EQ(notices(), (Notices{{-1, -1, "-1", 0}}));
    EXPECT_TRUE(driver.conditionList.isEmpty());
}

TEST_F(FinishedRequests, ConditionReadsThatAreEqualAreEachAnnounced)
{
    KEY_ADDRESS wanted = key("R_W", 100, 1);
    intf_addConditionRead(wanted, 3);
    intf_addConditionRead(wanted, 3);
    for (int piece = 0; piece < 2; ++piece) {
        poll();
        reply(goodReplyTo(polled));
    }
    EXPECT_EQ(notices(), (Notices{{-1, -1, "-1", 0}, {-1, -1, "-1", 0}}));
}

// Cyclic reads.

TEST_F(FinishedRequests, TheOnlyCyclicReadStaysWhereItIs)
{
    driver.readList << request("R_W", 1, 1);
    finish(4);
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/R_W:1+1"));
    driver.readList.clear();
    finish(4);
    EXPECT_TRUE(driver.readList.isEmpty());
}

TEST_F(FinishedRequests, ACyclicReadGoesToTheEnd)
{
    fillEverything();
    finish(4);
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/R_W:2+1", "1/R_W:3+1", "1/R_W:1+1"));
    driver.readList.removeLast();
    finish(4);
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/R_W:3+1", "1/R_W:2+1"));
    EXPECT_EQ(summary(driver.writeList), three());
    EXPECT_EQ(summary(driver.conditionList), three());
}

TEST_F(FinishedRequests, ACyclicReadThatFailedGoesToTheEndToo)
{
    fillEverything();
    driver.commFailed = 1;
    finish(4);
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/R_W:2+1", "1/R_W:3+1", "1/R_W:1+1"));
    EXPECT_EQ(driver.conditionList.size(), 3);
}

// Recipe transfers: downloads and uploads alike, each with its own flag.

class FinishedRecipeRequests : public FinishedRequests, public ::testing::WithParamInterface<int> {
protected:
    int own() const
    {
        return GetParam() == 5 ? downloadFlag : uploadFlag;
    }
    int other() const
    {
        return GetParam() == 5 ? uploadFlag : downloadFlag;
    }
    unsigned char& flag(int offset)
    {
        return hostBlock[static_cast<size_t>(offset)];
    }
};

TEST_P(FinishedRecipeRequests, AdvanceTheCursorWhileRequestsAreLeft)
{
    fillEverything();
    finish(GetParam());
    EXPECT_EQ(driver.recipeIndex, 2);
    EXPECT_EQ(flag(own()), 1);
    EXPECT_EQ(summary(driver.writeList), three());
    EXPECT_EQ(summary(driver.readList), three());
}

TEST_P(FinishedRecipeRequests, EndWithTheLastOneAndClearTheirOwnFlag)
{
    fillEverything();
    driver.recipeIndex = 2;
    finish(GetParam());
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(flag(own()), 0);
    EXPECT_EQ(flag(other()), 1);
}

TEST_P(FinishedRecipeRequests, TouchNoOtherByteOfTheHostsBlock)
{
    fillEverything();
    driver.recipeIndex = 2;
    hostBlock.assign(hostBlock.size(), 0x5A);
    finish(GetParam());
    EXPECT_EQ(flag(own()), 0);
    EXPECT_EQ(std::count(hostBlock.begin(), hostBlock.end(), 0x5A),
              static_cast<std::ptrdiff_t>(hostBlock.size()) - 1);
}

TEST_P(FinishedRecipeRequests, EndAtOnceWhenTheLinkFailed)
{
    fillEverything();
    driver.commFailed = 1;
    finish(GetParam());
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(flag(own()), 0);
    EXPECT_EQ(flag(other()), 1);
}

TEST_P(FinishedRecipeRequests, EndWhenThePlanIsGone)
{
    fillEverything();
    driver.recipeRequests.clear();
    finish(GetParam());
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(flag(own()), 0);
}

TEST_P(FinishedRecipeRequests, ClearTheFlagUnderTheHostsMutex)
{
    fillEverything();
    driver.recipeIndex = 2;
    driver.sendKind = GetParam();
    callWhileLocked(hostMutex, dealListWhenFinish, [&](bool through) {
        EXPECT_FALSE(through);
        EXPECT_EQ(flag(own()), 1);
    });
    EXPECT_EQ(flag(own()), 0);
}

TEST_P(FinishedRecipeRequests, WithoutAHostMutexClearTheFlagAllTheSame)
{
    intf_initProperty(hostBlock.data(), 0, recipeBuffer.data(), nullptr, "7#0#0#3#10", nullptr);
    fillEverything();
    driver.recipeIndex = 2;
    finish(GetParam());
    EXPECT_EQ(flag(own()), 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, FinishedRecipeRequests, ::testing::Values(5, 6),
                         [](const ::testing::TestParamInfo<int>& kind) {
                             return kind.param == 5 ? "Download" : "Upload";
                         });

TEST_F(FinishedRequests, APollReadsTheRecipeFlagsUnderTheHostsMutex)
{
    setRecipe({recipeRecord(7, "R_W", 200, 1, 0)});
    plan({key("R_W", 100, 1)});
    std::string sent;
    callWhileLocked(
        hostMutex, [&] { sent = poll(); },
        [&](bool through) {
            EXPECT_FALSE(through);
            hostBlock[uploadFlag] = 1; // as a host does that holds its mutex
        });
    EXPECT_EQ(sent, frame("01 03 05 C8 00 01"));
    EXPECT_TRUE(hostMutex.tryLock());
    hostMutex.unlock();
}

TEST_F(FinishedRequests, APollForAHandshakeReadsTheRecipeFlagsUnderTheHostsMutexToo)
{
    driver.handshakeRequest = 1;
    callWhileLocked(
        hostMutex, [&] { poll(); }, [&](bool through) { EXPECT_FALSE(through); });
    EXPECT_EQ(driver.sendKind, 1);
}

TEST_F(FinishedRequests, APollForTheFrameOnTheLineNeedsNoMutexOfTheHost)
{
    plan({key("R_W", 100, 1)});
    const std::string first = poll();
    std::string again;
    callWhileLocked(
        hostMutex, [&] { again = poll(); }, [&](bool through) { EXPECT_TRUE(through); });
    EXPECT_EQ(again, first);
}

TEST_F(FinishedRequests, NoLockIsHeldWhenTheHostIsTold)
{
    plan({key("R_W", 1, 1)});
    write("R_W", 1, 1, "07 00");
    notices();
    int locksFree = 0;
    whenTold([&](const Notice&) {
        if (driver.mutex.tryLock()) {
            driver.mutex.unlock();
            ++locksFree;
        }
        if (hostMutex.tryLock()) {
            hostMutex.unlock();
            ++locksFree;
        }
    });
    poll();
    driver.retryLimit = 1;
    EXPECT_EQ(reply(QByteArray()), 2);
    EXPECT_EQ(notices().size(), 1u);
    EXPECT_EQ(locksFree, 2);
}

} // namespace
