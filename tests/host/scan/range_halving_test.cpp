#include "scan/range_halving.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dov417 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string refusal = "exception 2 (illegal data address)";

class RangeHalvingTest : public ::testing::Test {
protected:
    std::function<void(const WordRange&)> note()
    {
        return [this](const WordRange& range) {
            static const char* const names[] = {"answered", "refused", "unknown"};
            found.push_back(std::to_string(range.first) + "+" + std::to_string(range.count) + " " +
                            names[range.kind]);
        };
    }

    // A controller with these words, which takes so many at once.
    void search(int first, int count, const std::vector<std::pair<int, int>>& there,
                int maxWords = 125)
    {
        RangeHalving halving(first, count, note());
        while (const auto block = halving.block()) {
            ++asked;
            EXPECT_LE(block->count, 125);
            bool isThere = block->count <= maxWords;
            for (int word = block->first; word < block->first + block->count; ++word) {
                bool has = false;
                for (const auto& [from, to] : there)
                    has = has || (word >= from && word <= to);
                isThere = isThere && has;
            }
            if (isThere)
                halving.isAnswered();
            else
                halving.isRefused(refusal);
        }
    }

    std::vector<std::string> found;
    int asked = 0;
};

TEST_F(RangeHalvingTest, AsksInBlocksWhereEverythingIsThere)
{
    search(0, 4000, {{0, 3999}});
    EXPECT_THAT(found, ElementsAre("0+4000 answered"));
    EXPECT_EQ(asked, 32);
}

TEST_F(RangeHalvingTest, FindsWhereTheWordsEnd)
{
    search(0, 4000, {{0, 1777}});
    EXPECT_THAT(found, ElementsAre("0+1778 answered", "1778+2222 refused"));
}

TEST_F(RangeHalvingTest, FindsHolesAndSingleWords)
{
    search(100, 300, {{100, 100}, {120, 249}, {251, 398}});
    EXPECT_THAT(found, ElementsAre("100+1 answered", "101+19 refused", "120+130 answered",
                                   "250+1 refused", "251+148 answered", "399+1 refused"));
}

TEST_F(RangeHalvingTest, FindsWordsOfAControllerThatTakesFewAtOnce)
{
    search(0, 250, {{0, 199}}, 10);
    EXPECT_THAT(found, ElementsAre("0+200 answered", "200+50 refused"));
}

TEST_F(RangeHalvingTest, IsOneWord)
{
    search(7, 1, {});
    EXPECT_THAT(found, ElementsAre("7+1 refused"));
    EXPECT_EQ(asked, 1);
}

TEST_F(RangeHalvingTest, HalvesNothingWhereNothingIsKnownOrTheFunctionIs)
{
    RangeHalving halving(0, 375, note());
    halving.isUnknown("no answer: no byte came");
    halving.isRefusedWhole("exception 1 (illegal function)");
    halving.isAnswered();
    EXPECT_FALSE(halving.block());
    EXPECT_THAT(found, ElementsAre("0+125 unknown", "125+125 refused", "250+125 answered"));
}

TEST_F(RangeHalvingTest, KeepsReasonsApart)
{
    RangeHalving halving(0, 250, note());
    halving.isUnknown("no answer: no byte came");
    halving.isUnknown("bad CRC");
    EXPECT_THAT(found, ElementsAre("0+125 unknown", "125+125 unknown"));
}

TEST_F(RangeHalvingTest, TellsWhatIsKnownWhenItIsEnded)
{
    RangeHalving halving(0, 375, note());
    halving.isAnswered();
    halving.isAnswered();
    EXPECT_THAT(found, IsEmpty()) << "the next may belong to it";
    halving.end();
    EXPECT_THAT(found, ElementsAre("0+250 answered"));
}

} // namespace

} // namespace dov417
