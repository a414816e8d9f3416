// A recipe flag is set and no request is left: the request before goes out again.
#include <gmock/gmock.h>

#include "world.h"

using ::testing::ElementsAre;

namespace {

class RecipeFlagWithoutRequests : public DriverTest, public ::testing::WithParamInterface<int> {
protected:
    RecipeFlagWithoutRequests()
    {
        recipeBuffer[3] = 0x1103;
    }

    static int setThreeRecords()
    {
        return setRecipe({recipeRecord(7, "R_W", 200, 1, 0), recipeRecord(7, "R_W", 210, 1, 1),
                          recipeRecord(7, "R_W", 220, 1, 2)});
    }

    // Sets the one of the two flags that this run is about.
    void setFlag()
    {
        hostBlock[static_cast<size_t>(GetParam())] = 1;
    }
};

TEST_P(RecipeFlagWithoutRequests, AfterIdleSendsNothing)
{
    plan({key("R_W", 100, 1)});
    write("R_W", 1, 1, "07 00");
    setFlag();
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(driver.sendKind, 0);
    EXPECT_EQ(hostBlock[static_cast<size_t>(GetParam())], 1);
}

TEST_P(RecipeFlagWithoutRequests, AfterAKindThatIsNoneSendsNothing)
{
    setFlag();
    for (const int kind : {7, -1, 100}) {
        driver.sendKind = kind;
        driver.currentVar = request("R_W", 1, 1);
        EXPECT_EQ(poll(), "");
        EXPECT_EQ(driver.sendKind, kind);
    }
}

TEST_P(RecipeFlagWithoutRequests, AfterAWriteWritesAgain)
{
    write("R_W", 1, 1, "07 00");
    EXPECT_EQ(exchange(), frame("01 06 05 01 00 07"));
    driver.frameVarCount = 9;
    setFlag();
    EXPECT_EQ(poll(), frame("01 06 05 01 00 07"));
    EXPECT_EQ(driver.sendKind, 2);
    EXPECT_EQ(driver.frameVarCount, 1);
    EXPECT_EQ(driver.burstCount, 1);
}

TEST_P(RecipeFlagWithoutRequests, TheRequestBeforeGoesAgainNotTheNextOfItsList)
{
    write("R_W", 1, 1, "07 00");
    write("R_W", 2, 1, "08 00");
    EXPECT_EQ(exchange(), frame("01 06 05 01 00 07"));
    setFlag();
    EXPECT_EQ(poll(), frame("01 06 05 01 00 07"));
}

TEST_P(RecipeFlagWithoutRequests, TheConditionReadBeforeGoesAgainNotTheNextOfItsList)
{
    KEY_ADDRESS first = key("T", 5, 1);
    KEY_ADDRESS second = key("T", 6, 1);
    intf_addConditionRead(first, 3);
    intf_addConditionRead(second, 3);
    EXPECT_EQ(exchange(), frame("01 03 01 85 00 01"));
    setFlag();
    EXPECT_EQ(poll(), frame("01 03 01 85 00 01"));
}

TEST_P(RecipeFlagWithoutRequests, ACyclicReadAgainCountsForNoBurst)
{
    plan({key("R_W", 100, 1)});
    EXPECT_EQ(exchange(), cyclicRead);
    driver.burstCount = 5;
    setFlag();
    EXPECT_EQ(exchange(), cyclicRead);
    EXPECT_EQ(driver.burstCount, 5);
}

TEST_P(RecipeFlagWithoutRequests, AfterACyclicReadReadsItAgainAndGoesOnRoundRobin)
{
    plan({key("R_W", 100, 1), key("T", 1, 1), key("C", 1, 1)});
    EXPECT_EQ(exchange(), cyclicRead);
    driver.frameVarCount = 9;
    driver.currentVars.clear();
    setFlag();
    EXPECT_EQ(exchange(), cyclicRead);
    EXPECT_EQ(driver.sendKind, 4);
    EXPECT_EQ(driver.frameVarCount, 1);
    EXPECT_THAT(summary(driver.currentVars), ElementsAre("1/R_W:100+1"));
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/C:1+1", "1/R_W:100+1", "1/T:1+1"));
}

TEST_P(RecipeFlagWithoutRequests, NeedsNoBufferToReadAgain)
{
    plan({key("R_W", 100, 1)});
    driver.recipeBuffer = nullptr;
    EXPECT_EQ(exchange(), cyclicRead);
    setFlag();
    EXPECT_EQ(exchange(), cyclicRead);
}

TEST_P(RecipeFlagWithoutRequests, AfterAConditionReadReadsItAgain)
{
    ask(key("T", 5, 1));
    EXPECT_EQ(exchange(), frame("01 03 01 85 00 01"));
    driver.frameVarCount = 9;
    setFlag();
    EXPECT_EQ(poll(), frame("01 03 01 85 00 01"));
    EXPECT_EQ(driver.sendKind, 3);
    EXPECT_EQ(driver.frameVarCount, 1);
    EXPECT_EQ(driver.burstCount, 1);
}

TEST_P(RecipeFlagWithoutRequests, AfterAConditionReadThatCouldNotBeFramedSendsNothing)
{
    ask(key("M_bit", 5, 1));
    poll();
    driver.frameVarCount = 9;
    setFlag();
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(driver.frameVarCount, 0);
}

TEST_P(RecipeFlagWithoutRequests, AfterAHandshakeShakesHandsAgain)
{
    driver.handshakeRequest = 1;
    FRAME_PRO handed = FRAME_PRO();
    EXPECT_EQ(intf_getSendFrame(&handed), 1);
    EXPECT_EQ(reply(QByteArray()), 1);
    driver.handshakeRequest = 0;
    setFlag();
    handed.sendLength = 55;
    EXPECT_EQ(intf_getSendFrame(&handed), 1);
    EXPECT_EQ(handed.sendLength, 0);
    EXPECT_EQ(driver.sendKind, 1);
}

TEST_P(RecipeFlagWithoutRequests, AfterADownloadWritesItsLastRequestAgain)
{
    setRecipe({recipeRecord(7, "R_W", 200, 1, 3)});
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(exchange(), frame("01 06 05 C8 11 03"));
    setRecipe({});
    driver.frameVarCount = 9;
    setFlag();
    EXPECT_EQ(poll(), frame("01 06 05 C8 11 03"));
    EXPECT_EQ(driver.sendKind, 5);
    EXPECT_EQ(driver.frameVarCount, 1);
}

TEST_P(RecipeFlagWithoutRequests, AfterAnUploadReadsItsLastRequestAgain)
{
    setRecipe({recipeRecord(7, "R_W", 200, 1, 3)});
    hostBlock[uploadFlag] = 1;
    EXPECT_EQ(exchange(), frame("01 03 05 C8 00 01"));
    setRecipe({});
    driver.frameVarCount = 9;
    setFlag();
    EXPECT_EQ(poll(), frame("01 03 05 C8 00 01"));
    EXPECT_EQ(driver.sendKind, 6);
    EXPECT_EQ(driver.frameVarCount, 1);
    EXPECT_EQ(reply(goodReplyTo(polled)), 1);
    EXPECT_EQ(hostBlock[uploadFlag], 0); // this ends the upload that has nothing to read
}

TEST_P(RecipeFlagWithoutRequests, CountsACursorAtTheEndAsNoneLeft)
{
    setThreeRecords();
    driver.recipeIndex = 3;
    setFlag();
    EXPECT_EQ(poll(), "");
    driver.recipeIndex = 2;
    EXPECT_NE(poll(), "");
}

INSTANTIATE_TEST_SUITE_P(Flags, RecipeFlagWithoutRequests,
                         ::testing::Values(downloadFlag, uploadFlag),
                         [](const ::testing::TestParamInfo<int>& flag) {
                             return flag.param == downloadFlag ? "Download" : "Upload";
                         });

} // namespace
