// Recipe transfers among the other work: flags, cursor, and what goes out when none is left.
#include <gmock/gmock.h>

#include "send_scheduling.h"
#include "world.h"

using ::testing::ElementsAre;

namespace {

const int downloadFlag = 60115;
const int uploadFlag = 60116;

std::string frame(const char* bytes)
{
    return toHex(withCrc(bytes));
}

class RecipeScheduling : public DriverTest {
protected:
    RecipeScheduling()
    {
        for (size_t i = 0; i < recipeBuffer.size(); ++i) {
            recipeBuffer[i] = static_cast<unsigned short>(0x1100 + i);
        }
    }

    std::string exchange()
    {
        const std::string sent = poll();
        if (driver.sendList.size() > 0) {
            reply(goodReplyTo(polled));
        }
        return sent;
    }

    // Spoils replies until the request is given up.
    void abandon()
    {
        int result = 8;
        for (int i = 0; i < 100 && result == 8; ++i) {
            result = reply(QByteArray());
        }
        EXPECT_EQ(result, 2);
    }

    static int setRecipe(QVector<_RCP_VAR_PRO> records)
    {
        return intf_setRcpAddress(records);
    }

    static int setThreeRecords()
    {
        return setRecipe({recipeRecord(7, "R_W", 200, 1, 0), recipeRecord(7, "R_W", 210, 1, 1),
                          recipeRecord(7, "R_W", 220, 1, 2)});
    }
};

const std::string cyclicRead = frame("01 03 05 64 00 01"); // "R_W" 100

// Downloads.

TEST_F(RecipeScheduling, ADownloadSendsEachRequestAndThenClearsItsFlag)
{
    setThreeRecords();
    hostBlock[downloadFlag] = 1;
    hostBlock[uploadFlag] = 0;
    EXPECT_EQ(exchange(), frame("01 06 05 C8 11 00"));
    EXPECT_EQ(driver.recipeIndex, 1);
    EXPECT_EQ(hostBlock[downloadFlag], 1);
    EXPECT_EQ(exchange(), frame("01 06 05 D2 11 01"));
    EXPECT_EQ(driver.recipeIndex, 2);
    EXPECT_EQ(hostBlock[downloadFlag], 1);
    EXPECT_EQ(exchange(), frame("01 06 05 DC 11 02"));
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(hostBlock[downloadFlag], 0);
    EXPECT_EQ(exchange(), "");
}

TEST_F(RecipeScheduling, ADownloadMergesAndTakesTheWordsFromTheBufferPlaceOfTheFirst)
{
    setRecipe({recipeRecord(7, "R_W", 100, 4, 0), recipeRecord(7, "R_W", 104, 4, 4)});
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(poll(),
              frame("01 10 05 64 00 08 10 11 00 11 01 11 02 11 03 11 04 11 05 11 06 11 07"));
    EXPECT_EQ(driver.frameVarCount, 1);
}

TEST_F(RecipeScheduling, EachPieceOfALongDownloadCarriesTheValuesFromTheRecordsBufferPlace)
{
    setRecipe({recipeRecord(7, "R_W", 0, 130, 5)});
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(exchange().substr(0, 32), "01 10 05 00 00 80 00 11 05 11 06");
    EXPECT_EQ(exchange(), frame("01 10 05 80 00 02 04 11 05 11 06"));
}

TEST_F(RecipeScheduling, ALinkFailureEndsADownloadAtOnce)
{
    setThreeRecords();
    hostBlock[downloadFlag] = 1;
    exchange();
    poll();
    abandon();
    EXPECT_EQ(driver.commFailed, 1);
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(hostBlock[downloadFlag], 0);
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(poll(), frame("01 06 05 C8 11 00")); // from the first again
}

TEST_F(RecipeScheduling, OtherWorkWaitsForADownload)
{
    plan({key("R_W", 100, 1)});
    write("R_W", 1, 1, "07 00");
    setThreeRecords();
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(exchange(), frame("01 06 05 C8 11 00"));
    EXPECT_EQ(exchange(), frame("01 06 05 D2 11 01"));
    EXPECT_EQ(exchange(), frame("01 06 05 DC 11 02"));
    EXPECT_EQ(exchange(), frame("01 06 05 01 00 07"));
}

TEST_F(RecipeScheduling, ADownloadOfRBitsIsAReadAndAWriteBackAndCountsOnce)
{
    recipeBuffer[0] = 1;
    hostBlock[downloadFlag] = 1;
    setRecipe({recipeRecord(7, "R_bit", 35, 1, 0), recipeRecord(7, "R_W", 210, 1, 1)});
    EXPECT_EQ(exchange(), frame("01 03 05 02 00 01"));
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(exchange(), frame("01 10 05 02 00 01 02 00 08"));
    EXPECT_EQ(driver.recipeIndex, 1);
}

TEST_F(RecipeScheduling, ABroadcastDownloadAwaitsNoReply)
{
    setRecipe({recipeRecord(7, "R_W", 200, 1, 0, 0)});
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(poll(), frame("00 06 05 C8 11 00"));
    EXPECT_EQ(polled.replyLength, 0);
    EXPECT_EQ(reply(QByteArray()), 1);
    EXPECT_EQ(hostBlock[downloadFlag], 0);
}

TEST_F(RecipeScheduling, ARequestThatCannotBeFramedHoldsTheCursor)
{
    plan({key("R_W", 100, 1)});
    setRecipe({recipeRecord(7, "odd", 5, 1, 0), recipeRecord(7, "R_W", 200, 1, 0)});
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(exchange(), "");
    EXPECT_EQ(exchange(), "");
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(driver.sendKind, 5);
    hostBlock[downloadFlag] = 0;
    hostBlock[uploadFlag] = 1;
    EXPECT_EQ(exchange(), "");
    EXPECT_EQ(driver.sendKind, 6);
    EXPECT_EQ(driver.frameVarCount, 0);
    hostBlock[uploadFlag] = 0;
    EXPECT_EQ(exchange(), cyclicRead);
}

TEST_F(RecipeScheduling, RequestsKeepTheKindOfTheRequestBefore)
{
    write("R_W", 1, 1, "07 00", 1, 42);
    exchange();
    setThreeRecords();
    hostBlock[uploadFlag] = 1;
    poll();
    EXPECT_EQ(polled.request.kind, 42);
}

TEST_F(RecipeScheduling, WithoutABufferADownloadSendsNothing)
{
    plan({key("R_W", 100, 1)});
    intf_initProperty(hostBlock.data(), 0, nullptr, nullptr, "7#0#0#3#10", &hostMutex);
    setThreeRecords();
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(hostBlock[downloadFlag], 1);
    // Nor does it when the plan goes away meanwhile.
    setRecipe({});
    EXPECT_EQ(poll(), "");
    driver.recipeBuffer = recipeBuffer.data();
    EXPECT_EQ(poll(), "");
    setThreeRecords();
    EXPECT_EQ(poll(), frame("01 06 05 C8 11 00"));
}

// Uploads.

TEST_F(RecipeScheduling, AnUploadReadsEachRequestAndThenClearsItsFlag)
{
    setThreeRecords();
    hostBlock[uploadFlag] = 1;
    EXPECT_EQ(exchange(), frame("01 03 05 C8 00 01"));
    EXPECT_EQ(driver.frameVarCount, 1);
    EXPECT_THAT(summary(driver.currentVars), ElementsAre("1/R_W:200+1"));
    EXPECT_EQ(exchange(), frame("01 03 05 D2 00 01"));
    EXPECT_EQ(driver.recipeIndex, 2);
    EXPECT_EQ(hostBlock[uploadFlag], 1);
    EXPECT_EQ(exchange(), frame("01 03 05 DC 00 01"));
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(hostBlock[uploadFlag], 0);
}

TEST_F(RecipeScheduling, ALinkFailureEndsAnUploadAtOnce)
{
    setThreeRecords();
    hostBlock[uploadFlag] = 1;
    exchange();
    poll();
    abandon();
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(hostBlock[uploadFlag], 0);
}

TEST_F(RecipeScheduling, BothFlagsMeanDownloadFirst)
{
    setRecipe({recipeRecord(7, "R_W", 200, 1, 0)});
    hostBlock[downloadFlag] = 1;
    hostBlock[uploadFlag] = 1;
    EXPECT_EQ(exchange(), frame("01 06 05 C8 11 00"));
    EXPECT_EQ(hostBlock[downloadFlag], 0);
    EXPECT_EQ(hostBlock[uploadFlag], 1);
    EXPECT_EQ(exchange(), frame("01 03 05 C8 00 01"));
    EXPECT_EQ(hostBlock[uploadFlag], 0);
}

TEST_F(RecipeScheduling, OnlyTheValueOneIsARequest)
{
    plan({key("R_W", 100, 1)});
    setThreeRecords();
    hostBlock[downloadFlag] = 2;
    hostBlock[uploadFlag] = 255;
    EXPECT_EQ(exchange(), cyclicRead);
}

TEST_F(RecipeScheduling, NeighbourBytesOfTheFlagsAreNoFlags)
{
    plan({key("R_W", 100, 1)});
    setThreeRecords();
    hostBlock.assign(hostBlock.size(), 1);
    hostBlock[downloadFlag] = 0;
    hostBlock[uploadFlag] = 0;
    EXPECT_EQ(exchange(), cyclicRead);
}

TEST_F(RecipeScheduling, WithoutAHostBlockThereAreNoRecipes)
{
    intf_initProperty(nullptr, 0, recipeBuffer.data(), nullptr, "7#0#0#3#10", &hostMutex);
    plan({key("R_W", 100, 1)});
    setThreeRecords();
    EXPECT_EQ(exchange(), cyclicRead);
    driver.sendKind = 5;
    driver.recipeIndex = 2;
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeIndex, 0);
}

TEST_F(RecipeScheduling, WithoutAHostMutexTheFlagsAreReadAndClearedAllTheSame)
{
    intf_initProperty(hostBlock.data(), 0, recipeBuffer.data(), nullptr, "7#0#0#3#10", nullptr);
    setRecipe({recipeRecord(7, "R_W", 200, 1, 0)});
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(exchange(), frame("01 06 05 C8 11 00"));
    EXPECT_EQ(hostBlock[downloadFlag], 0);
}

// A flag is set and no request is left: the request before goes out again.

class RecipeFlagWithoutRequests : public RecipeScheduling,
                                  public ::testing::WithParamInterface<int> {
protected:
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

TEST_P(RecipeFlagWithoutRequests, AfterAConditionReadReadsItAgain)
{
    KEY_ADDRESS wanted = key("T", 5, 1);
    intf_addConditionRead(wanted, 3);
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
    KEY_ADDRESS wanted = key("M_bit", 5, 1);
    intf_addConditionRead(wanted, 3);
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
