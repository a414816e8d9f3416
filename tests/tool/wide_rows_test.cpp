#include "tool/wide_rows.h"

#include <gmock/gmock.h>

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;

class WideRowsOfThree : public ::testing::Test {
protected:
    static std::vector<ViewLabel> labels()
    {
        std::vector<ViewLabel> three = {{"speed", "1/R_W:1", Format()},
                                        {"level", "1/R_W:2", Format()},
                                        {"label", "1/R_W:3", Format()}};
        three.at(1).format.scaling.unit = "bar";
        three.at(2).format.notation = Notation::text;
        return three;
    }
    // The controller has confirmed it.
    void confirm(std::size_t index, unsigned char low)
    {
        View& view = views.at(index);
        view.hasValue = true;
        view.isOld = false;
        view.value = {low, 0};
        now += milliseconds(1);
        view.lastGood = now;
    }

    Clock::time_point now = Clock::now();
    std::vector<View> views = std::vector<View>(3);
    WideRows rows{labels()};
};

TEST_F(WideRowsOfThree, HaveNamesWithUnitsAbove)
{
    EXPECT_THAT(rows.header(), ElementsAre("speed", "level (bar)", "label"));
}

TEST_F(WideRowsOfThree, HaveEachReadingOnceAndNothingWhereNoneCame)
{
    EXPECT_THAT(rows.next(views), ElementsAre("", "", ""));
    confirm(0, 7);
    confirm(1, 8);
    EXPECT_THAT(rows.next(views), ElementsAre("7", "8", ""));
    EXPECT_THAT(rows.next(views), ElementsAre("", "", "")) << "not read again";
    confirm(0, 7);
    EXPECT_THAT(rows.next(views), ElementsAre("7", "", "")) << "read again, the same";
}

TEST_F(WideRowsOfThree, AreEmptyWhereAValueIsNotGood)
{
    confirm(0, 7);
    confirm(1, 8);
    views.at(0).isOld = true;
    views.at(1).writes = 1;
    EXPECT_THAT(rows.next(views), ElementsAre("", "", ""));
    views.at(0).isOld = false;
    views.at(1).writes = 0;
    EXPECT_THAT(rows.next(views), ElementsAre("", "", "")) << "nothing was read meanwhile";
}

TEST_F(WideRowsOfThree, HaveTextsWithoutTheirQuotes)
{
    views.at(2).address.width = Width::text;
    confirm(2, 0);
    views.at(2).value = {'B', 'A'};
    EXPECT_EQ(rows.next(views).at(2), "AB");
}

} // namespace

} // namespace dov417
