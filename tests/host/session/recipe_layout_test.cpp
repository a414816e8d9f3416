#include "session/recipe_layout.h"

#include <gtest/gtest.h>
#include <tuple>

namespace dov417 {

namespace {

Address wordRange(int station, const char* regName, int first, int length)
{
    Address made;
    made.station = station;
    made.regName = regName;
    made.first = first;
    made.length = length;
    return made;
}

using Place = std::tuple<int, std::string, int, int, int>; // station, name, first, length, offset

std::vector<Place> placesOf(const std::vector<RecipeRecord>& records)
{
    std::vector<Place> places;
    for (const RecipeRecord& record : records)
        places.emplace_back(record.address.station, record.address.regName, record.address.first,
                            record.address.length, record.bufferOffset);
    return places;
}

TEST(RecipeLayout, NeighboursInTheControllerAreNeighboursInTheBuffer)
{
    const RecipeLayout layout = layOutRecipe(
        {wordRange(1, "R_W", 104, 4), wordRange(1, "R_W", 100, 4), wordRange(1, "T", 0, 1)});
    ASSERT_EQ(layout.rounds.size(), 1U);
    EXPECT_EQ(placesOf(layout.rounds.front()),
              (std::vector<Place>{{1, "R_W", 100, 8, 0}, {1, "T", 0, 1, 8}}));
    EXPECT_EQ(layout.bufferWords, 9U);
    EXPECT_EQ(layout.offsetOf(wordRange(1, "R_W", 105, 1)), 5U);
    EXPECT_EQ(layout.offsetOf(wordRange(1, "T", 0, 1)), 8U);
}

TEST(RecipeLayout, AddressesThatOverlapShareTheirWords)
{
    const RecipeLayout layout =
        layOutRecipe({wordRange(1, "R_W", 100, 6), wordRange(1, "R_W", 103, 1)});
    EXPECT_EQ(placesOf(layout.rounds.front()), (std::vector<Place>{{1, "R_W", 100, 6, 0}}));
    EXPECT_EQ(layout.offsetOf(wordRange(1, "R_W", 103, 1)), 3U);
}

TEST(RecipeLayout, ALongRunIsCutIntoRecordsWithTheirOwnPlaces)
{
    const RecipeLayout layout = layOutRecipe({wordRange(1, "R_W", 0, 300)});
    ASSERT_EQ(layout.rounds.size(), 2U);
    // Records that touch go in different rounds, or the driver would join them again.
    EXPECT_EQ(placesOf(layout.rounds.at(0)),
              (std::vector<Place>{{1, "R_W", 0, 122, 0}, {1, "R_W", 244, 56, 244}}));
    EXPECT_EQ(placesOf(layout.rounds.at(1)), (std::vector<Place>{{1, "R_W", 122, 122, 122}}));
    EXPECT_EQ(layout.offsetOf(wordRange(1, "R_W", 243, 1)), 243U);
}

TEST(RecipeLayout, StationsAndTypesDoNotMix)
{
    const RecipeLayout layout = layOutRecipe(
        {wordRange(2, "R_W", 0, 2), wordRange(1, "R_W", 2, 2), wordRange(1, "M_W", 4, 2)});
    EXPECT_EQ(placesOf(layout.rounds.front()),
              (std::vector<Place>{{1, "M_W", 4, 2, 0}, {1, "R_W", 2, 2, 2}, {2, "R_W", 0, 2, 4}}));
}

TEST(RecipeLayout, NoPieceEndsWithinAValueOfFourWords)
{
    Address values = wordRange(1, "R_D", 0, 240);
    values.width = Width::quadWord;
    const RecipeLayout layout = layOutRecipe({values});
    EXPECT_EQ(placesOf(layout.rounds.at(0)), (std::vector<Place>{{1, "R_D", 0, 120, 0}}));
    EXPECT_EQ(placesOf(layout.rounds.at(1)), (std::vector<Place>{{1, "R_D", 120, 120, 120}}));
}

TEST(RecipeLayout, AWordGoesByItselfWhereEveryFurtherOneLiesWithinAValue)
{
    std::vector<Address> addresses = {wordRange(1, "R_W", 0, 1)};
    for (int first = 1; first < 122; ++first) { // each begins within the one before
        addresses.push_back(wordRange(1, "R_W", first, 2));
        addresses.back().width = Width::doubleWord;
    }
    const RecipeLayout layout = layOutRecipe(addresses);
    ASSERT_EQ(layout.rounds.size(), 2U);
    EXPECT_EQ(placesOf(layout.rounds.at(0)), (std::vector<Place>{{1, "R_W", 0, 1, 0}}));
    EXPECT_EQ(placesOf(layout.rounds.at(1)), (std::vector<Place>{{1, "R_W", 1, 122, 1}}));
}

TEST(RecipeLayout, OfNothingHasNoRound)
{
    const RecipeLayout layout = layOutRecipe({});
    EXPECT_TRUE(layout.rounds.empty());
    EXPECT_EQ(layout.bufferWords, 0U);
}

} // namespace

} // namespace dov417
