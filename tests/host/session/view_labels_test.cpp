#include "session/view_labels.h"

#include "loaded_library.h"

namespace dov417 {

namespace {

class LabelsOfViews : public LoadedLibrary {
protected:
    std::vector<std::string> namesOf(const std::vector<std::string>& texts) const
    {
        std::vector<Item> items;
        for (const std::string& text : texts)
            items.push_back(Items(library, ItemSource()).find(text, Access::read));
        std::vector<ViewLabel> labels = labelViews(library, items);
        tellApart(labels);
        std::vector<std::string> names;
        for (const ViewLabel& label : labels)
            names.push_back(label.name);
        return names;
    }
};

TEST_F(LabelsOfViews, TellTheFormatWhereOneAddressIsWrittenTwice)
{
    EXPECT_THAT(namesOf({"R_D:10", "R_D:10@float", "R_D:10@float:high-first", "R_D:10@int64"}),
                ::testing::ElementsAre("1/R_D:10", "1/R_D:10@float", "1/R_D:10@float:high-first",
                                       "1/R_D:10@int64"));
    EXPECT_THAT(namesOf({"R_D:10..13", "R_D:12@float"}),
                ::testing::ElementsAre("1/R_D:10", "1/R_D:12", "1/R_D:12@float"));
}

TEST_F(LabelsOfViews, AreAddressesOtherwise)
{
    EXPECT_THAT(namesOf({"R_D:10@float", "R_D:12", "R_D:10@float", "2/R_D:10"}),
                ::testing::ElementsAre("1/R_D:10", "1/R_D:12", "1/R_D:10", "2/R_D:10"));
}

} // namespace

} // namespace dov417
