#include "tool/view_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

const Clock::time_point now = Clock::now();

View changedView()
{
    View view;
    view.hasValue = true;
    view.value = {7};
    view.previous = {5};
    view.changes = 3;
    view.lastGood = now - milliseconds(2500);
    return view;
}

TEST(ViewTable, HasNameAddressValuePreviousValueAgeAndChanges)
{
    const std::vector<std::string> rows =
        viewTable({changedView()}, {{"pump", "1/R_W:100", Format()}}, now);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_THAT(rows.at(0), ContainsRegex("name +address +value +previous +age +changes"));
    EXPECT_THAT(rows.at(1), ContainsRegex("pump +1/R_W:100 +7 +5 +2\\.5 s +3"));
}

TEST(ViewTable, LeavesOutNamesThatOnlyRepeatTheAddresses)
{
    const std::vector<std::string> rows =
        viewTable({changedView()}, {{"1/R_W:100", "1/R_W:100", Format()}}, now);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_THAT(rows.at(0), Not(HasSubstr("name")));
    EXPECT_THAT(rows.at(1), ContainsRegex("^1/R_W:100 +7"));
}

TEST(ViewTable, SaysWhichValueNeverCame)
{
    const std::vector<std::string> rows =
        viewTable({View()}, {{"pump", "1/R_W:100", Format()}}, now);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_THAT(rows.at(1), ContainsRegex("pump +1/R_W:100 +\\? +never +0"));
}

} // namespace

} // namespace dov417
