// Recipe transfers among the other work: flags, cursor, and what goes out when none is left.
#include <gmock/gmock.h>

#include "link/send_scheduling.h"
#include "world.h"

using ::testing::ElementsAre;

namespace {

class RecipeScheduling : public DriverTest {
protected:
    RecipeScheduling()
    {
        for (size_t i = 0; i < recipeBuffer.size(); ++i) {
            recipeBuffer[i] = static_cast<unsigned short>(0x1100 + i);
        }
    }

    static int setThreeRecords()
    {
        return setRecipe({recipeRecord(7, "R_W", 200, 1, 0), recipeRecord(7, "R_W", 210, 1, 1),
                          recipeRecord(7, "R_W", 220, 1, 2)});
    }
};

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
    EXPECT_EQ(abandon(), 3);
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

TEST_F(RecipeScheduling, ADownloadFromBeforeTheBuffersStartSendsNothingUntilTheHostGivesUp)
{
    plan({key("R_W", 100, 1)});
    setRecipe({recipeRecord(7, "R_W", 200, 2, -1)});
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(hostBlock[downloadFlag], 1);
    EXPECT_EQ(driver.recipeIndex, 0);
    hostBlock[downloadFlag] = 0;
    EXPECT_EQ(poll(), cyclicRead);
}

// The second record's own place is in the buffer, but the request follows the first one's.
TEST_F(RecipeScheduling, AMergedDownloadIsJudgedByItsFirstValue)
{
    setRecipe({recipeRecord(7, "R_W", 200, 1, -1), recipeRecord(7, "R_W", 201, 1, 0)});
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(poll(), "");
    setRecipe({recipeRecord(7, "R_W", 200, 1, 0), recipeRecord(7, "R_W", 201, 1, -1)});
    EXPECT_EQ(poll(), frame("01 10 05 C8 00 02 04 11 00 11 01"));
}

TEST_F(RecipeScheduling, ADownloadStopsAtTheFirstRequestFromBeforeTheBuffersStart)
{
    setRecipe({recipeRecord(7, "R_W", 200, 1, 0), recipeRecord(7, "R_W", 210, 1, -5),
               recipeRecord(7, "R_W", 220, 1, 2)});
    hostBlock[downloadFlag] = 1;
    EXPECT_EQ(exchange(), frame("01 06 05 C8 11 00"));
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(hostBlock[downloadFlag], 1);
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

TEST_F(RecipeScheduling, AnUploadCarriesNoValuesOfTheBuffer)
{
    driver.currentVar = VARIABLE();
    setThreeRecords();
    hostBlock[uploadFlag] = 1;
    poll();
    EXPECT_EQ(toHex(polled.request.data, recordDataSize), toHex(QByteArray(recordDataSize, '\0')));
}

TEST_F(RecipeScheduling, ALinkFailureEndsAnUploadAtOnce)
{
    setThreeRecords();
    hostBlock[uploadFlag] = 1;
    exchange();
    poll();
    EXPECT_EQ(abandon(), 3);
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

} // namespace
