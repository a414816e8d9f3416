// What the desk refuses, it refuses in the panel's language.
#include "panel_world.h"
#include "window_walk.h"

namespace dov417 {

namespace {

using testing::StartsWith;

class TheDeskInAnotherLanguage : private InstalledLanguage, public PanelWorld {};

TEST_F(TheDeskInAnotherLanguage, RefusesInIt)
{
    const std::string mark = beginMark.toStdString();
    watch({"R_W:100"});
    const PanelValue value = desk.tags().values.front();
    EXPECT_THAT(complaint([&]() { desk.write(value, "1"); }), StartsWith(mark + "no line is open"));
    EXPECT_THAT(complaint([&]() { desk.moveRecipe(0, RecipeKind::upload, {}); }),
                StartsWith(mark + "no line is open"));
    open();
    EXPECT_THAT(complaint([&]() { desk.write(value, "1"); }),
                StartsWith(mark + "writing is locked"));
    EXPECT_THAT(complaint([&]() { desk.moveRecipe(desk.lineNumber(), RecipeKind::download, {}); }),
                StartsWith(mark + "writing is locked"));
    EXPECT_THAT(complaint([&]() { desk.moveRecipe(-1, RecipeKind::upload, {}); }),
                StartsWith(mark + "another line"));
}

TEST_F(TheDeskInAnotherLanguage, SaysInItWhatIsAllowed)
{
    watch({"R_W:100", "M_bit:1.0"});
    EXPECT_EQ(allowedRange(desk.tags().values.at(0)), "\u27e60 to 65535oooo\u27e7");
    EXPECT_EQ(allowedRange(desk.tags().values.at(1)), "\u27e60 or 1ooo\u27e7");
    EXPECT_THAT(complaint([this]() { pastedItems(library, "nonsense"); }),
                testing::HasSubstr(beginMark.toStdString() + "'nonsense' is no address"));
}

} // namespace

} // namespace dov417
