#include "line/areas.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

const std::vector<Area> someAreas = {
    {"M_W", true, 4096, 128}, {"R_W", false, 1280, 4000}, {"T", false, 384, 128}};

TEST(AreaText, CountsRegistersFromTheirAreasFirst)
{
    EXPECT_EQ(areaText(someAreas, false, 1290, 1), "R_W:10");
    EXPECT_EQ(areaText(someAreas, false, 1380, 8), "R_W:100..107");
    EXPECT_EQ(areaText(someAreas, false, 389, 1), "T:5");
}

TEST(AreaText, ShowsCoilsInWholeWordsAsWordsAndOthersAsBits)
{
    EXPECT_EQ(areaText(someAreas, true, 4128, 48), "M_W:2..4");
    EXPECT_EQ(areaText(someAreas, true, 4112, 16), "M_W:1");
    EXPECT_EQ(areaText(someAreas, true, 4133, 1), "M_bit:2.5");
    EXPECT_EQ(areaText(someAreas, true, 4133, 16), "M_bit:2.5..3.4");
}

TEST(AreaText, IsEmptyWhereTheNumbersAreNotAllInOneArea)
{
    EXPECT_EQ(areaText(someAreas, false, 383, 1), "");
    EXPECT_EQ(areaText(someAreas, false, 511, 1), "T:127");
    EXPECT_EQ(areaText(someAreas, false, 511, 2), "");
    EXPECT_EQ(areaText(someAreas, true, 4096 + 2047, 1), "M_bit:127.15");
    EXPECT_EQ(areaText(someAreas, true, 4096 + 2047, 2), "");
    EXPECT_EQ(areaText(someAreas, true, 1290, 1), "");
    EXPECT_EQ(areaText(someAreas, false, 1290, 0), "");
    EXPECT_EQ(areaText({}, false, 1290, 1), "");
}

} // namespace

} // namespace dov417
