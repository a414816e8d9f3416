// What two threads may do to each other: each exported function waits for the call before it, none
// waits for the callback, and what was decided before a wait is looked at anew.
#include <atomic>
#include <fstream>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <memory>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// True where the thread waits for something. Without a kernel that tells, false.
bool isAsleep(long thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    std::getline(file, line);
    const size_t nameEnd = line.rfind(')');
    return nameEnd != std::string::npos && nameEnd + 2 < line.size() && line[nameEnd + 2] == 'S';
}

// A call on a thread of its own, begun at once.
class Elsewhere {
public:
    explicit Elsewhere(std::function<void()> call)
        : through_(false), id_(0), thread_([this, call] {
              id_ = syscall(SYS_gettid);
              call();
              through_ = true;
          })
    {
    }
    ~Elsewhere()
    {
        thread_.join();
    }
    // Returns once the call waits (false) or is through (true).
    bool isThrough() const
    {
        while (!through_ && (id_ == 0 || !isAsleep(id_))) {
            std::this_thread::yield();
        }
        return through_;
    }

private:
    std::atomic<bool> through_;
    std::atomic<long> id_;
    std::thread thread_;
};

struct Exported {
    const char* name;
    std::function<void()> call;
};

QString textOut;
QStringList textsOut;
int numberOut = 0;

const Exported functions[] = {
    {"getVersion", [] { textOut = intf_getVersion(); }},
    {"getProtocolType", [] { intf_getProtocolType(&numberOut); }},
    {"getDriverParameter", [] { intf_getDriverParameter(textOut); }},
    {"getDriverPropertyPage", [] { intf_getDriverPropertyPage(textOut); }},
    {"SetDriverPropertyPage", [] { intf_SetDriverPropertyPage(name("a")); }},
    {"setAddrValueChangeCallBack", [] { intf_setAddrValueChangeCallBack(nullptr); }},
    {"initProperty", [] { intf_initProperty(nullptr, 0, nullptr, nullptr, nullptr, nullptr); }},
    {"checkAddrValidity", [] { intf_checkAddrValidity(name("R_W"), name("1"), &numberOut, 1, 1); }},
    {"checkAddr", [] { intf_checkAddr(name("R_W"), name("1"), &numberOut, 1, 1, 1); }},
    {"getRegListByType", [] { intf_getRegListByType(0, &textsOut); }},
    {"getRegDiscription", [] { intf_getRegDiscription(name("R_W"), &textsOut); }},
    {"multiCopy",
     [] {
         QVector<QString> texts;
         QVector<int> addresses;
         intf_multiCopy(name("R_W"), 0, 1, 1, texts, addresses);
     }},
    {"addrMerge",
     [] {
         QList<KEY_ADDRESS> none;
         intf_addrMerge(none);
     }},
    {"addConditionRead", [] { ask(key("R_W", 1, 1)); }},
    {"setRcpAddress", [] { setRecipe({}); }},
    {"getSendFrame", [] { intf_getSendFrame(nullptr); }},
    {"dealRcvFrame", [] { intf_dealRcvFrame(nullptr, nullptr); }},
    {"getData",
     [] {
         unsigned char out[2];
         intf_getData(1, name("R_W"), 1, 1, out);
     }},
    {"setData",
     [] {
         unsigned char data[2] = {1, 0};
         intf_setData(1, name("R_W"), 1, 1, data, 2);
     }},
};

// Writes its debug line while it is at work.
void callWithDebugLine()
{
    unsigned char data[2] = {1, 0};
    intf_setData(1, name("R_W"), 500, 1, data, 2);
}

class EachFunction : public DriverTest, public ::testing::WithParamInterface<Exported> {};

TEST_P(EachFunction, WaitsForTheCallOfAnotherThread)
{
    bool through = true;
    std::unique_ptr<Elsewhere> other;
    const DebugLines lines([&] {
        other.reset(new Elsewhere(GetParam().call));
        through = other->isThrough();
    });
    callWithDebugLine();
    other.reset();
    EXPECT_FALSE(through);
}

TEST_P(EachFunction, MayBeCalledByTheMessageHandlerWithinACall)
{
    bool called = false;
    const DebugLines lines([&] {
        GetParam().call();
        called = true;
    });
    callWithDebugLine();
    EXPECT_TRUE(called);
}

// Would wait for ever if the lock were held.
TEST_P(EachFunction, IsThroughOnAnotherThreadWhileACallbackWaitsForIt)
{
    plan({key("R_W", 100, 1)});
    int waited = 0;
    whenTold([&](const Notice&) {
        whenTold(nullptr);
        const DebugLines quiet;
        std::thread(GetParam().call).join();
        ++waited;
    });
    write("R_W", 100, 1, "07 00");
    EXPECT_EQ(waited, 1);
}

INSTANTIATE_TEST_SUITE_P(Exported, EachFunction, ::testing::ValuesIn(functions),
                         [](const auto& tested) { return std::string(tested.param.name); });

// ---- looked at anew ----------------------------------------------------------------------------

class TwoThreads : public DriverTest {
protected:
    // Hands a reply in on another thread, which waits for `mutex` in the end; meanwhile does this.
    void whileAReplyWaitsFor(QMutex& mutex, const QByteArray& bytes,
                             const std::function<void()>& meanwhile)
    {
        mutex.lock();
        {
            QByteArray received = bytes;
            const Elsewhere reply([&received] { intf_dealRcvFrame(&received, nullptr); });
            EXPECT_FALSE(reply.isThrough());
            meanwhile();
            mutex.unlock();
        }
    }

    void recipeAtItsEnd()
    {
        setRecipe({recipeRecord(7, "R_W", 200, 1, 0)});
        hostBlock[uploadFlag] = 1;
        EXPECT_EQ(poll(), frame("01 03 05 C8 00 01"));
    }
};

TEST_F(TwoThreads, AWriteThatIsEndingIsNotHandedOutAgain)
{
    plan({key("R_W", 100, 1)});
    write("R_W", 10, 1, "01 00");
    write("R_W", 11, 1, "02 00");
    const QByteArray echo = withCrc("01 06 05 0A 00 01");
    EXPECT_EQ(poll(), frame("01 06 05 0A 00 01"));
    whileAReplyWaitsFor(driver.mutex, echo, [&] { EXPECT_EQ(poll(), ""); });
    EXPECT_THAT(summary(driver.writeList), ElementsAre("1/R_W:11+1"));
    EXPECT_EQ(poll(), frame("01 06 05 0B 00 02"));
}

TEST_F(TwoThreads, AWriteQueuedAfterAResetStaysWhenTheOneBeforeTheResetEnds)
{
    write("R_W", 10, 1, "01 00");
    poll();
    whileAReplyWaitsFor(driver.mutex, withCrc("01 06 05 0A 00 01"), [&] {
        configure();
        write("R_W", 11, 1, "02 00");
    });
    EXPECT_THAT(summary(driver.writeList), ElementsAre("1/R_W:11+1"));
    EXPECT_EQ(poll(), frame("01 06 05 0B 00 02"));
}

TEST_F(TwoThreads, AConditionReadThatIsEndingIsNotHandedOutAgain)
{
    plan({key("R_W", 100, 1)});
    ask(key("R_W", 10, 1));
    EXPECT_EQ(poll(), frame("01 03 05 0A 00 01"));
    std::string meanwhile = "nothing";
    whenTold([&](const Notice&) {
        whenTold(nullptr);
        std::thread([&] { meanwhile = poll(); }).join();
    });
    reply(withCrc("01 03 02 00 00"));
    EXPECT_EQ(meanwhile, "");
    EXPECT_EQ(poll(), cyclicRead);
}

TEST_F(TwoThreads, ABitWriteThatWaitedOverAResetIsNotStored)
{
    write("M_bit", 18, 1, "01");
    driver.mutex.lock();
    {
        const Elsewhere writing([] { write("M_bit", 18, 1, "01"); });
        EXPECT_FALSE(writing.isThrough());
        configure();
        driver.mutex.unlock();
    }
    EXPECT_TRUE(driver.dataAreas.isEmpty());
    EXPECT_EQ(read("M_bit", 18, 1), "00");
}

TEST_F(TwoThreads, ABitWriteThatWaitedOverAResetIsNotStoredInTheNewCacheEither)
{
    write("M_bit", 18, 1, "01");
    driver.mutex.lock();
    {
        const Elsewhere writing([] { write("M_bit", 18, 1, "01"); });
        EXPECT_FALSE(writing.isThrough());
        configure();
        plan({key("M_bit", 18, 1)}); // the same unit, in the same place
        driver.mutex.unlock();
    }
    EXPECT_THAT(summary(driver.writeList), IsEmpty()) << "nothing would ever take it back";
    EXPECT_EQ(read("M_bit", 18, 1), "00");
}

TEST_F(TwoThreads, ARecipeThatIsEndingIsNotBegunAgain)
{
    plan({key("R_W", 100, 1)});
    recipeAtItsEnd();
    QMutex otherMutex;
    whileAReplyWaitsFor(hostMutex, withCrc("01 03 02 00 05"), [&] {
        driver.hostMutex = &otherMutex; // that this poll gets, with the flag still set
        EXPECT_EQ(poll(), "");
    });
    EXPECT_EQ(hostBlock[uploadFlag], 0);
    EXPECT_EQ(poll(), cyclicRead);
}

TEST_F(TwoThreads, ARecipeAskedForAfterAResetStaysWhenTheOneBeforeTheResetEnds)
{
    recipeAtItsEnd();
    whileAReplyWaitsFor(hostMutex, withCrc("01 03 02 00 05"), [&] {
        configure();
        hostBlock[uploadFlag] = 1;
    });
    EXPECT_EQ(hostBlock[uploadFlag], 1);
}

TEST_F(TwoThreads, APollThatWaitedForAReplacedMutexReadsTheFlagsOfTheNewBlock)
{
    setRecipe({recipeRecord(7, "R_W", 200, 1, 0)});
    std::vector<unsigned char> otherBlock(hostBlock.size(), 0);
    otherBlock[uploadFlag] = 1;
    QMutex otherMutex;
    std::string sent;
    bool waitedForTheOther = false;
    hostMutex.lock();
    otherMutex.lock();
    {
        const Elsewhere polling([&] { sent = poll(); });
        EXPECT_FALSE(polling.isThrough());
        intf_initProperty(otherBlock.data(), 0, recipeBuffer.data(), nullptr, "7#0#0#3#10",
                          &otherMutex);
        hostMutex.unlock();
        while (!hostMutex.tryLock()) { // until the poll has let it go again
            std::this_thread::yield();
        }
        waitedForTheOther = !polling.isThrough();
        hostMutex.unlock();
        otherMutex.unlock();
    }
    EXPECT_TRUE(waitedForTheOther);
    EXPECT_EQ(sent, frame("01 03 05 C8 00 01"));
}

TEST_F(TwoThreads, APollThatWaitedHandsOutWhatAnotherOneFramedMeanwhile)
{
    plan({key("R_W", 100, 1), key("T", 1, 1)});
    std::string first;
    FRAME_PRO second = FRAME_PRO();
    hostMutex.lock();
    {
        const Elsewhere polling([&] { first = poll(); });
        EXPECT_FALSE(polling.isThrough());
        const Elsewhere pollingToo([&] { intf_getSendFrame(&second); });
        EXPECT_FALSE(pollingToo.isThrough());
        hostMutex.unlock();
    }
    EXPECT_EQ(first, cyclicRead);
    EXPECT_EQ(summary(second.request), "1/R_W:100+1");
    EXPECT_EQ(driver.sendList.size(), 1);
}

TEST_F(TwoThreads, AWriteIsNotHandedOutBeforeItIsAnnouncedAndStored)
{
    plan({key("R_W", 100, 1)});
    std::string meanwhile = "nothing";
    whenTold([&](const Notice&) {
        whenTold(nullptr);
        std::thread([&] { meanwhile = poll(); }).join();
    });
    write("R_W", 100, 1, "07 00");
    EXPECT_EQ(meanwhile, cyclicRead);
    reply(withCrc("01 03 02 00 00"));
    EXPECT_EQ(poll(), frame("01 06 05 64 00 07"));
}

TEST_F(TwoThreads, AWriteThatIsStillAnnouncedOutlastsTheReplyThatWasBegunBeforeIt)
{
    plan({key("R_W", 11, 1)});
    write("R_W", 10, 1, "01 00");
    EXPECT_EQ(poll(), frame("01 06 05 0A 00 01"));
    std::promise<void> mayReturn;
    whenTold([&](const Notice&) { mayReturn.get_future().wait(); });
    std::unique_ptr<Elsewhere> writing;
    whileAReplyWaitsFor(driver.mutex, withCrc("01 06 05 0A 00 01"), [&] {
        writing = std::make_unique<Elsewhere>([] { write("R_W", 11, 1, "02 00"); });
        EXPECT_FALSE(writing->isThrough());
    });
    mayReturn.set_value();
    writing.reset();
    EXPECT_EQ(poll(), frame("01 06 05 0B 00 02"));
}

TEST_F(TwoThreads, BitsOfOneWordThatBothWriteAreBothInTheCache)
{
    plan({key("M_bit", 16, 16)});
    whenTold([&](const Notice&) {
        whenTold(nullptr);
        std::thread([] { write("M_bit", 18, 1, "01"); }).join();
    });
    write("M_bit", 17, 1, "01");
    EXPECT_EQ(read("M_bit", 16, 4), "00 01 01 00");
}

} // namespace
