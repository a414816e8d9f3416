#include "tool/troubles.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

using std::chrono::seconds;
using Lines = std::vector<std::string>;

const Clock::time_point start = Clock::time_point() + std::chrono::hours(1);

class SomeTroubles : public ::testing::Test {
protected:
    bool isNews(const char* what, Reason why, int second)
    {
        return troubles.isNews(what, why, nameOf(why), start + seconds(second));
    }
    Troubles troubles{3};
};

TEST_F(SomeTroubles, AreSaidOnceAndCounted)
{
    EXPECT_TRUE(isNews("a", Reason::exception, 0));
    EXPECT_FALSE(isNews("a", Reason::exception, 1));
    EXPECT_FALSE(isNews("a", Reason::exception, 60)) << "it has never stopped";
    const std::vector<Trouble> unsaid = troubles.unsaid();
    ASSERT_EQ(unsaid.size(), 1U);
    EXPECT_EQ(unsaid.front().what, "a");
    EXPECT_EQ(unsaid.front().reason, "exception");
    EXPECT_EQ(unsaid.front().times, 3);
    EXPECT_EQ(troubles.times("a", Reason::exception), 3);
    EXPECT_EQ(troubles.times("a", Reason::silence), 0);
}

TEST_F(SomeTroubles, AreSaidAgainForAnotherReason)
{
    EXPECT_TRUE(isNews("a", Reason::exception, 0));
    EXPECT_TRUE(isNews("a", Reason::silence, 1));
    EXPECT_TRUE(troubles.unsaid().empty());
}

TEST_F(SomeTroubles, AreSaidAgainWhereTheyComeBack)
{
    EXPECT_TRUE(isNews("a", Reason::exception, 0));
    EXPECT_TRUE(isNews("a", Reason::exception, 61));
    EXPECT_TRUE(troubles.unsaid().empty());
}

TEST_F(SomeTroubles, AreSoManyLinesAMinuteAtMost)
{
    EXPECT_TRUE(isNews("a", Reason::silence, 0));
    EXPECT_TRUE(isNews("b", Reason::silence, 0));
    EXPECT_FALSE(troubles.isFull());
    EXPECT_TRUE(isNews("c", Reason::silence, 0));
    EXPECT_TRUE(troubles.isFull());
    EXPECT_FALSE(isNews("d", Reason::silence, 59));
    EXPECT_TRUE(isNews("e", Reason::silence, 60));
    ASSERT_EQ(troubles.unsaid().size(), 1U);
    EXPECT_EQ(troubles.unsaid().front().what, "d");
}

TEST(ThingsWithOneProblem, AreOneLine)
{
    EXPECT_EQ(grouped({{"a", "late"}, {"b", "bad CRC"}, {"c", "late"}}),
              (Lines{"a, c: late", "b: bad CRC"}));
    EXPECT_EQ(grouped({}), Lines());
}

TEST(ManyThings, AreCut)
{
    EXPECT_EQ(listed({"a", "b", "c", "d", "e"}), "a, b, c, d, e");
    EXPECT_EQ(listed({"a", "b", "c", "d", "e", "f"}), "a, b, c, d and 2 more");
}

} // namespace

} // namespace dov417
