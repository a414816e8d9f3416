// Recipe planning, and one planned recipe request as a request of the link.
#include "planning/recipes.h"

#include <cstring>
#include <gmock/gmock.h>

#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class Recipes : public DriverTest {
protected:
    static std::vector<int> bufferPlaces(const QVector<_RCP_VAR_PRO>& list)
    {
        std::vector<int> places;
        for (int i = 0; i < list.size(); ++i) {
            places.push_back(list.at(i).bufOffset);
        }
        return places;
    }

    static std::vector<int> openers()
    {
        return std::vector<int>(driver.groupStarts.begin(), driver.groupStarts.end());
    }
};

// Planning.

TEST_F(Recipes, OfOtherLinksAreIgnored)
{
    EXPECT_EQ(setRecipe({recipeRecord(6, "R_W", 10, 1, 0), recipeRecord(7, "R_W", 20, 1, 1),
                         recipeRecord(0, "R_W", 30, 1, 2)}),
              1);
    EXPECT_THAT(summary(driver.recipeVars), ElementsAre("1/R_W:20+1"));
    EXPECT_THAT(summary(driver.recipeRequests), ElementsAre("1/R_W:20+1"));
    EXPECT_EQ(setRecipe({recipeRecord(6, "R_W", 10, 1, 0)}), 0);
    EXPECT_THAT(summary(driver.recipeRequests), IsEmpty());
}

TEST_F(Recipes, TouchingRecordsBecomeOneRequestAtTheBufferPlaceOfTheFirst)
{
    EXPECT_EQ(setRecipe({recipeRecord(7, "R_W", 100, 4, 0), recipeRecord(7, "R_W", 104, 4, 4)}), 2);
    EXPECT_THAT(summary(driver.recipeRequests), ElementsAre("1/R_W:100+8"));
    EXPECT_THAT(bufferPlaces(driver.recipeRequests), ElementsAre(0));
    EXPECT_THAT(openers(), ElementsAre(0));
}

TEST_F(Recipes, AreSortedByStationThenTypeInTableOrderThenAddress)
{
    EXPECT_EQ(setRecipe({recipeRecord(7, "C", 5, 1, 0, 1), recipeRecord(7, "R_W", 900, 1, 1, 1),
                         recipeRecord(7, "M_bit", 3, 1, 2, 2), recipeRecord(7, "R_W", 50, 1, 3, 1),
                         recipeRecord(7, "R_D", 10, 2, 4, 1), recipeRecord(7, "Q_W", 7, 1, 5, 1)}),
              6);
    EXPECT_THAT(summary(driver.recipeVars), ElementsAre("1/Q_W:7+1", "1/R_W:50+1", "1/R_W:900+1",
                                                        "1/R_D:10+2", "1/C:5+1", "2/M_bit:3+1"));
    EXPECT_THAT(bufferPlaces(driver.recipeVars), ElementsAre(5, 3, 1, 4, 0, 2));
    EXPECT_THAT(summary(driver.recipeRequests),
                ElementsAre("1/Q_W:7+1", "1/R_W:50+1", "1/R_W:900+1", "1/R_D:10+2", "1/C:5+1",
                            "2/M_bit:3+1"));
    EXPECT_THAT(bufferPlaces(driver.recipeRequests), ElementsAre(5, 3, 1, 4, 0, 2));
    EXPECT_THAT(openers(), ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST_F(Recipes, OfEqualSortKeyKeepTheOrderOfTheHost)
{
    setRecipe({recipeRecord(7, "R_W", 50, 1, 8), recipeRecord(7, "R_W", 50, 1, 2),
               recipeRecord(7, "R_W", 40, 1, 0), recipeRecord(7, "R_W", 50, 1, 5)});
    EXPECT_THAT(bufferPlaces(driver.recipeVars), ElementsAre(0, 8, 2, 5));
}

TEST_F(Recipes, AreSortedByAnUnsignedNumber)
{
    // Station 0, one type below the first: the sort key is below 0, so the greatest of all.
    setRecipe({recipeRecord(7, "odd", 5, 1, 0, 0), recipeRecord(7, "C", 5, 1, 1, 200)});
    EXPECT_THAT(summary(driver.recipeVars), ElementsAre("200/C:5+1", "0/odd:5+1"));
}

TEST_F(Recipes, KeepTheNamesOfBitsAndDoubleWords)
{
    setRecipe({recipeRecord(7, "M_bit", 20, 5, 0), recipeRecord(7, "M_bit", 25, 3, 5),
               recipeRecord(7, "R_D", 10, 4, 10), recipeRecord(7, "R_W", 14, 1, 20)});
    EXPECT_THAT(summary(driver.recipeRequests),
                ElementsAre("1/M_bit:20+8", "1/R_W:14+1", "1/R_D:10+4"));
}

TEST_F(Recipes, DoNotBridgeHoles)
{
    setRecipe({recipeRecord(7, "R_W", 10, 5, 0), recipeRecord(7, "R_W", 16, 5, 5)});
    EXPECT_THAT(summary(driver.recipeRequests), ElementsAre("1/R_W:10+5", "1/R_W:16+5"));
}

TEST_F(Recipes, OfMoreThan128UnitsAreCutAndKeepTheirBufferPlace)
{
    EXPECT_EQ(setRecipe({recipeRecord(7, "R_W", 0, 300, 10), recipeRecord(7, "T", 0, 1, 900)}), 2);
    EXPECT_THAT(summary(driver.recipeRequests),
                ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+44", "1/T:0+1"));
    EXPECT_THAT(bufferPlaces(driver.recipeRequests), ElementsAre(10, 10, 10, 900));
    EXPECT_THAT(openers(), ElementsAre(0, 1));
}

TEST_F(Recipes, RequestsCarryThisLinksNumber)
{
    _RCP_VAR_PRO record = recipeRecord(7, "R_W", 10, 1, 0);
    record.reserved = 99;
    setRecipe({record});
    ASSERT_EQ(driver.recipeRequests.size(), 1);
    EXPECT_EQ(driver.recipeRequests.at(0).linkId, 7);
    EXPECT_EQ(driver.recipeRequests.at(0).reserved, 0);
    EXPECT_EQ(driver.recipeVars.at(0).reserved, 99);
}

TEST_F(Recipes, ReplaceThePlanBefore)
{
    setRecipe({recipeRecord(7, "R_W", 10, 1, 0), recipeRecord(7, "R_W", 20, 1, 0)});
    EXPECT_EQ(setRecipe({recipeRecord(7, "T", 3, 1, 0)}), 1);
    EXPECT_THAT(summary(driver.recipeVars), ElementsAre("1/T:3+1"));
    EXPECT_THAT(summary(driver.recipeRequests), ElementsAre("1/T:3+1"));
    EXPECT_THAT(openers(), ElementsAre(0));
}

TEST_F(Recipes, OfNoRecordsLeaveNoPlan)
{
    setRecipe({recipeRecord(7, "R_W", 10, 1, 0)});
    EXPECT_EQ(setRecipe({}), 0);
    EXPECT_THAT(summary(driver.recipeVars), IsEmpty());
    EXPECT_THAT(summary(driver.recipeRequests), IsEmpty());
    EXPECT_THAT(openers(), IsEmpty());
}

TEST_F(Recipes, LeaveTheHostsRecordsAsTheyAre)
{
    QVector<_RCP_VAR_PRO> records = {recipeRecord(7, "R_W", 20, 1, 0),
                                     recipeRecord(6, "R_W", 10, 1, 0),
                                     recipeRecord(7, "R_W", 15, 5, 0)};
    intf_setRcpAddress(records);
    EXPECT_THAT(summary(records), ElementsAre("1/R_W:20+1", "1/R_W:10+1", "1/R_W:15+5"));
}

TEST_F(Recipes, MayBeSetFromTheDriversOwnList)
{
    setRecipe({recipeRecord(7, "R_W", 20, 1, 0), recipeRecord(7, "R_W", 10, 1, 1)});
    EXPECT_EQ(intf_setRcpAddress(driver.recipeVars), 2);
    EXPECT_THAT(summary(driver.recipeVars), ElementsAre("1/R_W:10+1", "1/R_W:20+1"));
    EXPECT_THAT(summary(driver.recipeRequests), ElementsAre("1/R_W:10+1", "1/R_W:20+1"));
}

TEST_F(Recipes, SurviveInitialisation)
{
    setRecipe({recipeRecord(7, "R_W", 20, 1, 3)});
    driver.recipeIndex = 1;
    configure();
    EXPECT_THAT(summary(driver.recipeVars), ElementsAre("1/R_W:20+1"));
    EXPECT_THAT(summary(driver.recipeRequests), ElementsAre("1/R_W:20+1"));
    EXPECT_EQ(driver.recipeIndex, 1);
}

TEST_F(Recipes, LeaveTheCursorWhereItIs)
{
    driver.recipeIndex = 1;
    setRecipe({recipeRecord(7, "R_W", 20, 1, 0), recipeRecord(7, "R_W", 10, 1, 1)});
    EXPECT_EQ(driver.recipeIndex, 1);
}

TEST_F(Recipes, OfUnknownNamesAndAnyLengthAreTaken)
{
    EXPECT_EQ(setRecipe({recipeRecord(7, "odd", 5, 3, 0), recipeRecord(7, "odd", 8, 1, 0),
                         recipeRecord(7, "R_W", 5, -3, 0), recipeRecord(7, "T", 5, 0, 0)}),
              4);
    EXPECT_THAT(summary(driver.recipeRequests), ElementsAre("1/odd:5+4", "1/R_W:5+-3", "1/T:5+0"));
}

// One planned request as a request of the link.

class RecipeRequest : public Recipes {
protected:
    RecipeRequest() : made(request("T", 77, 66, 55))
    {
        made.kind = 9;
        for (unsigned char& byte : made.data) {
            byte = 0xEE;
        }
        for (size_t i = 0; i < recipeBuffer.size(); ++i) {
            recipeBuffer[i] = static_cast<unsigned short>(0x1100 + i);
        }
    }

    std::string summaryOfMade() const
    {
        return summary(made);
    }

    bool onlyZerosFrom(int first) const
    {
        for (int i = first; i < recordDataSize; ++i) {
            if (made.data[i] != 0) {
                return false;
            }
        }
        return true;
    }

    VARIABLE made;
};

TEST_F(RecipeRequest, TakesItsTargetFromTheRecordAndKeepsItsKind)
{
    rcpAddrToVar(recipeRecord(7, "R_W", 10, 2, 4, 3), made, 0);
    EXPECT_EQ(summaryOfMade(), "3/R_W:10+2");
    EXPECT_EQ(made.kind, 9);
}

TEST_F(RecipeRequest, OfAnUploadCarriesZeros)
{
    rcpAddrToVar(recipeRecord(7, "R_W", 10, 2, 4), made, 0);
    EXPECT_TRUE(onlyZerosFrom(0));
}

TEST_F(RecipeRequest, OfADownloadCarriesTheBufferWordsLowByteFirst)
{
    recipeBuffer[4] = 0x1234;
    recipeBuffer[5] = 0xABCD;
    rcpAddrToVar(recipeRecord(7, "R_W", 10, 2, 4), made, 1);
    EXPECT_EQ(toHex(made.data, 4), "34 12 CD AB");
    EXPECT_TRUE(onlyZerosFrom(4));
    rcpAddrToVar(recipeRecord(7, "R_W", 10, 1, 5), made, 2);
    EXPECT_EQ(toHex(made.data, 2), "CD AB");
}

TEST_F(RecipeRequest, OfBitsTakesTwoBytesAUnitToo)
{
    rcpAddrToVar(recipeRecord(7, "M_bit", 10, 3, 0), made, 1);
    EXPECT_EQ(toHex(made.data, 8), "00 11 01 11 02 11 00 00");
}

TEST_F(RecipeRequest, OfAnUnknownNameCarriesZeros)
{
    rcpAddrToVar(recipeRecord(7, "odd", 10, 2, 4), made, 1);
    EXPECT_EQ(summaryOfMade(), "1/odd:10+2");
    EXPECT_TRUE(onlyZerosFrom(0));
}

TEST_F(RecipeRequest, CarriesNoMoreThanItHolds)
{
    rcpAddrToVar(recipeRecord(7, "R_W", 10, 512, 0), made, 1);
    EXPECT_EQ(toHex(made.data + 1022, 2), "FF 12");
    rcpAddrToVar(recipeRecord(7, "R_W", 10, 3000, 1), made, 1);
    EXPECT_EQ(made.length, 3000);
    EXPECT_EQ(toHex(made.data + 1022, 2), "00 13");
    rcpAddrToVar(recipeRecord(7, "R_W", 10, 2147483647, 0), made, 1);
    EXPECT_EQ(toHex(made.data + 1022, 2), "FF 12");
}

TEST_F(RecipeRequest, OfNegativeLengthCarriesZeros)
{
    rcpAddrToVar(recipeRecord(7, "R_W", 10, -2, 4), made, 1);
    EXPECT_EQ(made.length, -2);
    EXPECT_TRUE(onlyZerosFrom(0));
}

TEST_F(RecipeRequest, WithoutABufferCarriesZeros)
{
    intf_initProperty(hostBlock.data(), 0, nullptr, nullptr, "7#0#0#3#10", &hostMutex);
    rcpAddrToVar(recipeRecord(7, "R_W", 10, 2, 4), made, 1);
    EXPECT_EQ(summaryOfMade(), "1/R_W:10+2");
    EXPECT_TRUE(onlyZerosFrom(0));
}

// AddressSanitizer sees a read in front of the buffer.
TEST_F(RecipeRequest, FromBeforeTheBuffersStartCarriesZeros)
{
    for (int bufOffset : {-1, -2, -1000, -2147483647}) {
        std::memset(made.data, 0xFF, sizeof made.data);
        rcpAddrToVar(recipeRecord(7, "R_W", 10, 2, bufOffset), made, 1);
        EXPECT_TRUE(onlyZerosFrom(0)) << bufOffset;
    }
}

} // namespace
