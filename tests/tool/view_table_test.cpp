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
    view.value = {7, 0};
    view.previous = {5, 0};
    view.changes = 3;
    view.lastGood = now - milliseconds(2500);
    return view;
}

TEST(ViewTable, HasNameAddressValueQualityPreviousValueAgeAndChanges)
{
    const std::vector<std::string> rows =
        viewTable({changedView()}, {{"pump", "1/R_W:100", Format()}}, now);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_THAT(rows.at(0), ContainsRegex("name +address +value +quality +previous +age +changes"));
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
    EXPECT_THAT(rows.at(1), ContainsRegex("pump +1/R_W:100 +\\? +never read +never +0"));
}

TEST(ViewTable, MarksAValueThatIsNotKnownToBeTheControllers)
{
    View old = changedView();
    old.isOld = true;
    View written = changedView();
    written.writes = 1;
    const ViewLabel label = {"pump", "1/R_W:100", Format()};
    const std::vector<std::string> rows = viewTable({old, written}, {label, label}, now);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_THAT(rows.at(1), ContainsRegex("1/R_W:100 +7 +old +5"));
    EXPECT_THAT(rows.at(2), ContainsRegex("1/R_W:100 +7 +being written +5"));
}

Item wordsNamed(const char* name, int first, int length)
{
    Item item;
    item.name = name;
    item.address.regName = "R_W";
    item.address.first = first;
    item.address.length = length;
    return item;
}

TEST(DoubtfulValues, AreAnItemWhereAllOfItsValuesAreAlike)
{
    View old = changedView();
    old.isOld = true;
    const std::vector<Item> items = {wordsNamed("pump", 1, 2), wordsNamed("fan", 3, 2),
                                     wordsNamed("lamp", 5, 1), wordsNamed("speed", 6, 1)};
    const std::vector<ViewLabel> labels = {{"pump[0]", "", {}}, {"pump[1]", "", {}},
                                           {"fan[0]", "", {}},  {"fan[1]", "", {}},
                                           {"lamp", "", {}},    {"speed", "", {}}};
    EXPECT_EQ(
        doubtfulValues({View(), View(), changedView(), old, View(), changedView()}, items, labels),
        (std::vector<std::string>{"pump, lamp: no value came", "fan[1]: the value is old"}));
}

} // namespace

} // namespace dov417
