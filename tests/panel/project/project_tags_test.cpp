#include "panel/project/project_tags.h"

#include "loaded_library.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ProjectTagTexts : public LoadedLibrary {
protected:
    Item typed(const std::string& text)
    {
        return Items(library, ItemSource()).find(text, Access::read);
    }
    std::vector<std::string> written(const std::vector<Item>& items)
    {
        std::vector<std::string> texts;
        for (const JsonTag& tag : tagsOfItems(library, items, known).tags)
            texts.push_back(toJson(tag).dump());
        return texts;
    }
    // What is read of what is written.
    std::vector<Item> again(const std::vector<Item>& items)
    {
        const TagsToWrite tags = tagsOfItems(library, items, known);
        return itemsOfTags(library, tagsOf(library, tags.tags, nullptr), tags.formats).shown;
    }

    KnownTags known;
};

TEST_F(ProjectTagTexts, NameWhatWasTypedByItsAddress)
{
    EXPECT_THAT(
        written({typed("R_W:100"), typed("2/R_D:4..7"), typed("M_bit:1.5"), typed("R_W:0..2@hex")}),
        ElementsAre(
            R"({"name":"R_W.100","register":"R_W","address":"100"})",
            R"({"name":"2/R_D.4..7","station":2,"register":"R_D","address":"4","count":2})",
            R"({"name":"M_bit.1.5","register":"M_bit","address":"1.5"})",
            R"({"name":"R_W.0..2","register":"R_W","address":"0","count":3,"format":"hex"})"));
}

TEST_F(ProjectTagTexts, GiveBackWhatTheyWereMadeOf)
{
    std::vector<Item> items;
    for (const char* const text :
         {"R_W:100", "3/R_W:0..7@signed", "R_D:200@float:high-first", "R_D:600@int64",
          "R_D:610..617@double", "R_W:10..15@text", "R_W:20..23@text:low-first",
          "M_bit:1.0..1.15@bool", "T:5", "C:0@bcd"})
        items.push_back(typed(text));
    Item oven = typed("R_W:300");
    oven.name = "oven";
    oven.comment = "the large one";
    oven.format.scaling = Scaling{0.1, -40, 1, "\u00b0C"};
    oven.ofLimits = oven.format;
    oven.limits = {-10, 400.5};
    items.push_back(oven);
    // Shown otherwise than its scale and limits are written.
    oven.name = "oven.bits";
    oven.format = Format();
    oven.format.notation = Notation::hex;
    items.push_back(oven);
    Item longHex = typed("R_D:700@uint64");
    longHex.format.notation = Notation::hex;
    items.push_back(longHex);
    const std::vector<Item> read = again(items);
    ASSERT_EQ(read.size(), items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        EXPECT_EQ(read[i].name, items[i].name);
        EXPECT_EQ(read[i].address, items[i].address) << items[i].name;
        EXPECT_EQ(read[i].format, items[i].format) << items[i].name;
        EXPECT_EQ(read[i].comment, items[i].comment);
        EXPECT_EQ(read[i].limits.min, items[i].limits.min);
        EXPECT_EQ(read[i].limits.max, items[i].limits.max);
    }
}

TEST_F(ProjectTagTexts, HaveOneNameEach)
{
    Item one = typed("R_W:1");
    one.name = "a:b";
    Item other = typed("R_W:2");
    other.name = "a=b";
    EXPECT_THAT(written({typed("R_W:5"), typed("R_W:5@hex"), one, other}),
                ElementsAre(HasSubstr("\"R_W.5\""), HasSubstr("\"R_W.5_2\""), HasSubstr("\"a_b\""),
                            HasSubstr("\"a_b_2\"")));
}

TEST_F(ProjectTagTexts, StayAsTheyWereWhereNothingIsEdited)
{
    const PlacedJson file(R"({"version": 9, "tags": [
        {"name": "oven", "register": "R_W", "address": 7, "count": 1, "scale": 0.5, "sound": 1},
        {"name": "lamp", "register": "M_bit", "address": "1.5"}]})",
                          "plant.json");
    known.tags = jsonTags(file);
    known.items = itemsOfTags(library, tagsOf(library, known.tags, &file), OrderedJson()).own;
    std::vector<Item> items = known.items;
    std::swap(items[0], items[1]);
    items.push_back(typed("R_W:8"));
    EXPECT_THAT(written(items),
                ElementsAre(R"({"name":"lamp","register":"M_bit","address":"1.5"})",
                            R"({"name":"oven","register":"R_W","address":"7","count":1,)"
                            R"("scale":0.5,"sound":1})",
                            R"({"name":"R_W.8","register":"R_W","address":"8"})"));
    items[1].limits.max = 5;
    EXPECT_THAT(written(items)[1], HasSubstr("\"max\":5.0,\"sound\":1"));
}

} // namespace

} // namespace dov417
