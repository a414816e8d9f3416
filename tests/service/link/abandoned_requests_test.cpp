// Requests whose replies stay bad until they are given up.
#include <gmock/gmock.h>

#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class AbandonedRequests : public DriverTest {
protected:
    static void condition(const char* regName, int address, int length)
    {
        ask(key(regName, address, length));
    }
};

TEST_F(AbandonedRequests, AReadThatIsGivenUpLetsTheOthersGoOn)
{
    plan({key("R_W", 10, 1), key("R_W", 100, 1)});
    poll();
    EXPECT_EQ(abandon(), 3);
    EXPECT_EQ(poll(), frame("01 03 05 64 00 01"));
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/R_W:100+1", "1/R_W:10+1"));
}

TEST_F(AbandonedRequests, AWriteThatIsGivenUpIsReportedAndTheOldValueIsVisibleAgain)
{
    plan({key("R_W", 10, 1)});
    poll();
    reply(withCrc("01 03 02 00 11"));
    write("R_W", 10, 1, "34 12");
    notices();
    poll();
    std::string seen;
    int failedWhenTold = -1;
    size_t queuedWhenTold = 99;
    whenTold([&](const Notice&) {
        seen = read("R_W", 10, 1);
        failedWhenTold = driver.commFailed;
        queuedWhenTold = static_cast<size_t>(driver.writeList.size());
    });
    EXPECT_EQ(abandon(), 3);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}}));
    EXPECT_EQ(seen, "11 00");
    EXPECT_EQ(failedWhenTold, 1);
    EXPECT_EQ(queuedWhenTold, 1u);
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_EQ(driver.retryCount, 0);
    EXPECT_EQ(poll(), frame("01 03 05 0A 00 01"));
}

TEST_F(AbandonedRequests, ABitWriteGivenUpAtItsPreReadWritesNothingBack)
{
    write("R_bit", 35, 1, "01");
    poll();
    ASSERT_EQ(driver.sendList.size(), 2);
    EXPECT_EQ(abandon(), 3);
    EXPECT_TRUE(driver.sendList.isEmpty());
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_EQ(unit(1, "R", 2).writePending, 0);
    EXPECT_EQ(poll(), "");
}

TEST_F(AbandonedRequests, ABitWriteGivenUpAtItsWriteBackIsReported)
{
    write("R_bit", 35, 1, "01");
    poll();
    EXPECT_EQ(reply(withCrc("01 03 02 00 00")), 1);
    poll();
    EXPECT_EQ(abandon(), 3);
    EXPECT_EQ(unit(1, "R", 2).writePending, 0);
    EXPECT_EQ(read("R_bit", 35, 1), "00");
    EXPECT_TRUE(driver.writeList.isEmpty());
}

TEST_F(AbandonedRequests, AConditionReadThatIsGivenUpTakesAllOthersAlong)
{
    condition("R_W", 10, 1);
    condition("R_W", 20, 1);
    driver.retryLimit = 1;
    poll();
    EXPECT_EQ(reply(QByteArray()), 2);
    EXPECT_TRUE(driver.conditionList.isEmpty());
    EXPECT_THAT(notices(), IsEmpty());
    condition("R_W", 30, 1);
    poll();
    EXPECT_EQ(reply(QByteArray()), 2);
    EXPECT_EQ(notices(), (Notices{{-1, -1, "-1", -1}}));
}

TEST_F(AbandonedRequests, AConditionReadThatSucceedsAfterAFailureIsReportedAsGood)
{
    condition("R_W", 10, 1);
    driver.commFailed = 1;
    poll();
    EXPECT_EQ(reply(withCrc("01 03 02 00 00")), 1);
    EXPECT_EQ(notices(), (Notices{{-1, -1, "-1", 0}}));
}

TEST_F(AbandonedRequests, ARecipeDownloadGivenUpReportsNoWriteOfTheHost)
{
    setRecipe({recipeRecord(7, "R_W", 10, 1, 0)});
    write("R_W", 10, 1, "34 12");
    hostBlock[downloadFlag] = 1;
    poll();
    EXPECT_EQ(abandon(), 3);
    EXPECT_EQ(unit(1, "R", 10).writePending, 1);
    EXPECT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(hostBlock[downloadFlag], 0);
}

TEST_F(AbandonedRequests, AnUploadGivenUpCopiesNothing)
{
    recipeBuffer[0] = 0xEEEE;
    setRecipe({recipeRecord(7, "R_W", 10, 1, 0)});
    hostBlock[uploadFlag] = 1;
    poll();
    EXPECT_EQ(abandon(), 3);
    EXPECT_EQ(recipeBuffer[0], 0xEEEE);
    EXPECT_EQ(hostBlock[uploadFlag], 0);
    EXPECT_THAT(notices(), IsEmpty());
}

} // namespace
