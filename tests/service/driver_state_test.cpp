#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "protocol.h"
#include "world.h"

namespace {

// A driver constructed in memory that held something else before.
class FreshDriver : public ::testing::Test {
protected:
    FreshDriver() : memory(new Memory)
    {
        std::memset(memory.get(), 0xA5, sizeof(Memory));
        fresh = new (memory.get()) Protocol;
    }
    ~FreshDriver() override
    {
        fresh->~Protocol();
    }
    using Memory = std::aligned_storage<sizeof(Protocol), alignof(Protocol)>::type;
    std::unique_ptr<Memory> memory;
    Protocol* fresh;
};

TEST_F(FreshDriver, HasTheElevenRegisterNamesInTableOrder)
{
    EXPECT_EQ(text(fresh->regNames.join(name(","))),
              "I_bit,Q_bit,M_bit,R_bit,I_W,Q_W,M_W,R_W,R_D,T,C");
}

TEST_F(FreshDriver, HasEmptyListsAndTexts)
{
    EXPECT_TRUE(fresh->readList.isEmpty());
    EXPECT_TRUE(fresh->writeList.isEmpty());
    EXPECT_TRUE(fresh->conditionList.isEmpty());
    EXPECT_TRUE(fresh->dataAreas.isEmpty());
    EXPECT_TRUE(fresh->recipeVars.isEmpty());
    EXPECT_TRUE(fresh->recipeRequests.isEmpty());
    EXPECT_TRUE(fresh->groupStarts.isEmpty());
    EXPECT_TRUE(fresh->currentVars.isEmpty());
    EXPECT_TRUE(fresh->sendList.isEmpty());
    EXPECT_TRUE(fresh->spareList.isEmpty());
    EXPECT_TRUE(fresh->propertyPage.isEmpty());
    EXPECT_TRUE(fresh->lastConditionVar.regName.isEmpty());
}

TEST_F(FreshDriver, HasItsCountersAtZero)
{
    EXPECT_EQ(fresh->burstCount, 0);
    EXPECT_EQ(fresh->commFailed, 0);
    EXPECT_EQ(fresh->spareWord, 0);
    EXPECT_EQ(fresh->recipeIndex, 0);
}

TEST_F(FreshDriver, HasAnEmptyCurrentRequest)
{
    EXPECT_EQ(fresh->currentVar.stationNo, 0);
    EXPECT_EQ(text(fresh->currentVar.regName), "");
    EXPECT_EQ(fresh->currentVar.address, 0);
    EXPECT_EQ(fresh->currentVar.length, 0);
}

TEST_F(FreshDriver, HasAMutexThatOneThreadTakesOnceOnly)
{
    ASSERT_TRUE(fresh->mutex.tryLock());
    EXPECT_FALSE(fresh->mutex.tryLock());
    fresh->mutex.unlock();
}

TEST_F(FreshDriver, FreesItsListsAndNothingThatBelongsToTheHost)
{
    // Under the sanitizers a lost list or a freed buffer of the host shows.
    std::vector<unsigned char> block(16, 1);
    std::vector<unsigned short> words(16, 2);
    QMutex hostMutex;
    fresh->hostBlock = block.data();
    fresh->recipeBuffer = words.data();
    fresh->hostMutex = &hostMutex;
    for (int i = 0; i < 20; ++i) {
        fresh->readList.append(request("R_W", i, 1));
        fresh->recipeVars.append(recipeRecord(1, "R_W", i, 1, 0));
        fresh->groupStarts.append(i);
    }
    fresh->propertyPage = QString(100, QLatin1Char('x'));
    fresh->~Protocol();
    EXPECT_EQ(block, std::vector<unsigned char>(16, 1));
    EXPECT_EQ(words, std::vector<unsigned short>(16, 2));
    EXPECT_TRUE(hostMutex.tryLock());
    hostMutex.unlock();
    fresh = new (memory.get()) Protocol;
}

template <typename Member, typename Expected>
constexpr bool is()
{
    return std::is_same<Member, Expected>::value;
}

TEST(DriverLayout, IsAPlainClassWithoutBaseOrVirtualFunctions)
{
    EXPECT_FALSE(std::is_polymorphic<Protocol>::value);
    EXPECT_TRUE((is<VALUE_CHANGE_CALLBACK, void (*)(int, int, QString&, int)>()));
}

struct Member {
    const char* name;
    std::ptrdiff_t offset;
    size_t size;
    bool hasItsType;
};

template <typename Expected, typename Actual>
Member memberAt(const char* name, const Actual& member)
{
    return {name, reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&driver),
            sizeof(member), std::is_same<Expected, Actual>::value};
}

#define MEMBER(member, type) memberAt<type>(#member, driver.member)

TEST(DriverLayout, KeepsItsThirtySevenMembersInOrder)
{
    const Member members[] = {
        MEMBER(valueChangeCallBack, VALUE_CHANGE_CALLBACK),
        MEMBER(callBackTag, int),
        MEMBER(writeToCacheOnly, int),
        MEMBER(propertyField3, int),
        MEMBER(retryLimit, int),
        MEMBER(mergeGap, int),
        MEMBER(hostBlock, unsigned char*),
        MEMBER(hostArg2, int),
        MEMBER(recipeBuffer, unsigned short*),
        MEMBER(hostMutex, QMutex*),
        MEMBER(readList, QList<VARIABLE>),
        MEMBER(writeList, QList<VARIABLE>),
        MEMBER(conditionList, QList<VARIABLE>),
        MEMBER(dataAreas, QList<_DATA_>),
        MEMBER(recipeVars, QVector<_RCP_VAR_PRO>),
        MEMBER(recipeRequests, QVector<_RCP_VAR_PRO>),
        MEMBER(groupStarts, QList<int>),
        MEMBER(lastConditionVar, VARIABLE),
        MEMBER(regNames, QStringList),
        MEMBER(currentVar, VARIABLE),
        MEMBER(currentVars, QList<VARIABLE>),
        MEMBER(sendKind, int),
        MEMBER(burstCount, int),
        MEMBER(handshakeRequest, int),
        MEMBER(retryCount, int),
        MEMBER(pieceBitLimit, int),
        MEMBER(pieceWordLimit, int),
        MEMBER(commFailed, int),
        MEMBER(frameIndex, int),
        MEMBER(initDone, int),
        MEMBER(sendList, QList<FRAME_PRO>),
        MEMBER(mutex, QMutex),
        MEMBER(recipeIndex, int),
        MEMBER(propertyPage, QString),
        MEMBER(spareList, QList<int>),
        MEMBER(frameVarCount, int),
        MEMBER(spareWord, int),
    };
    ASSERT_EQ(sizeof(members) / sizeof(members[0]), 37u);
    std::ptrdiff_t end = 0;
    for (const auto& member : members) {
        EXPECT_TRUE(member.hasItsType) << member.name;
        EXPECT_GE(member.offset, end) << member.name << " starts within its predecessor";
        // Nothing of the driver's own between two members, only what alignment asks for.
        EXPECT_LT(member.offset - end, static_cast<std::ptrdiff_t>(alignof(Protocol)))
            << "something lies before " << member.name;
        end = member.offset + static_cast<std::ptrdiff_t>(member.size);
    }
    EXPECT_EQ(members[0].offset, 0);
}

#undef MEMBER

class Reinitialised : public DriverTest {
protected:
    static void fillEverything()
    {
        driver.readList.append(request("R_W", 1, 1));
        driver.writeList.append(request("R_W", 2, 1));
        driver.conditionList.append(request("R_W", 3, 1));
        driver.dataAreas.append(_DATA_());
        driver.sendList.append(FRAME_PRO());
        driver.recipeVars.append(recipeRecord(7, "R_W", 4, 1, 0));
        driver.recipeRequests.append(recipeRecord(7, "R_W", 5, 1, 0));
        driver.groupStarts.append(6);
        driver.currentVars.append(request("R_W", 7, 1));
        driver.spareList.append(8);
        driver.propertyPage = name("page");
        driver.lastConditionVar = request("R_W", 9, 1);
        driver.currentVar = request("R_W", 10, 1);
        driver.recipeIndex = 11;
        driver.frameVarCount = 12;
        driver.spareWord = 13;
        driver.sendKind = 4;
        driver.burstCount = 5;
        driver.handshakeRequest = 1;
        driver.retryCount = 2;
        driver.commFailed = 1;
        driver.frameIndex = 3;
        driver.initDone = 0;
    }
    ~Reinitialised() override
    {
        driver.spareList.clear();
        driver.frameVarCount = 0;
        driver.spareWord = 0;
    }
};

TEST_F(Reinitialised, EmptiesTheWorkListsAndTheCache)
{
    fillEverything();
    configure();
    EXPECT_TRUE(driver.readList.isEmpty());
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_TRUE(driver.conditionList.isEmpty());
    EXPECT_TRUE(driver.dataAreas.isEmpty());
    EXPECT_TRUE(driver.sendList.isEmpty());
}

TEST_F(Reinitialised, RestartsTheCounters)
{
    fillEverything();
    configure();
    EXPECT_EQ(driver.sendKind, 0);
    EXPECT_EQ(driver.burstCount, 0);
    EXPECT_EQ(driver.handshakeRequest, 0);
    EXPECT_EQ(driver.retryCount, 0);
    EXPECT_EQ(driver.commFailed, 0);
    EXPECT_EQ(driver.frameIndex, 0);
    EXPECT_EQ(driver.initDone, 1);
}

TEST_F(Reinitialised, KeepsTheRecipeAddresses)
{
    fillEverything();
    configure();
    EXPECT_EQ(summary(driver.recipeVars), std::vector<std::string>{"1/R_W:4+1"});
    EXPECT_EQ(summary(driver.recipeRequests), std::vector<std::string>{"1/R_W:5+1"});
    EXPECT_EQ(driver.groupStarts, QList<int>() << 6);
    EXPECT_EQ(driver.recipeIndex, 11);
}

TEST_F(Reinitialised, KeepsWhatBelongsToNoCycle)
{
    fillEverything();
    configure();
    EXPECT_EQ(text(driver.regNames.join(name(","))),
              "I_bit,Q_bit,M_bit,R_bit,I_W,Q_W,M_W,R_W,R_D,T,C");
    EXPECT_EQ(text(driver.propertyPage), "page");
    EXPECT_EQ(summary(driver.currentVars), std::vector<std::string>{"1/R_W:7+1"});
    EXPECT_EQ(driver.lastConditionVar.address, 9);
    EXPECT_EQ(driver.currentVar.address, 10);
    EXPECT_EQ(driver.frameVarCount, 12);
    EXPECT_EQ(driver.spareWord, 13);
    EXPECT_EQ(driver.spareList, QList<int>() << 8);
}

TEST_F(Reinitialised, ForgetsPlanWritesAndFrameInTheMiddleOfACycle)
{
    plan({key("R_W", 10, 1)});
    write("R_W", 20, 1, "34 12");
    ASSERT_NE(poll(), "");
    configure();
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(reply(withCrc("01 06 05 14 12 34")), 0);
    EXPECT_EQ(read("R_W", 20, 1), "00 00");
    plan({key("R_W", 10, 1)});
    EXPECT_EQ(poll(), toHex(withCrc("01 03 05 0A 00 01")));
}

} // namespace
