#include "panel/desk/panel_tags.h"

#include "loaded_library.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class PanelTagTexts : public LoadedLibrary {
protected:
    Item item(const std::string& text) const
    {
        return Items(library, ItemSource()).find(text, Access::read);
    }
    PanelValue value(const Item& of) const
    {
        return panelTags(library, {of}).values.front();
    }
    std::vector<std::string> addressesOf(const std::vector<Item>& items) const
    {
        std::vector<std::string> texts;
        for (const Item& each : items)
            texts.push_back(each.name + " " + toText(library, each.address));
        return texts;
    }
};

TEST_F(PanelTagTexts, AreOneForEachValue)
{
    const PanelTags tags =
        panelTags(library, {item("R_W:5"), item("2/R_D:10..13"), item("M_bit:1.15")});
    std::vector<std::string> labels;
    for (const PanelValue& each : tags.values)
        labels.push_back(each.label.address + " " + toText(library, each.address) + " " +
                         std::to_string(each.place));
    EXPECT_THAT(labels, ElementsAre("1/R_W:5 1/R_W:5 0", "2/R_D:10 2/R_D:10..11 1",
                                    "2/R_D:12 2/R_D:12..13 1", "1/M_bit:1.15 1/M_bit:1.15 2"));
}

TEST_F(PanelTagTexts, SayWhatMayBeWritten)
{
    EXPECT_EQ(allowedRange(value(item("R_W:5"))), "0 to 65535");
    EXPECT_EQ(allowedRange(value(item("R_W:5@signed"))), "-32768 to 32767");
    EXPECT_EQ(allowedRange(value(item("R_W:5@bcd"))), "0 to 9999");
    EXPECT_EQ(allowedRange(value(item("M_bit:1.0"))), "0 or 1");
    EXPECT_EQ(allowedRange(value(item("R_D:6@float"))), "");
    Item scaled = item("R_W:5");
    scaled.format.scaling = Scaling{0.1, -40, 1, "K"};
    EXPECT_EQ(allowedRange(value(scaled)), "-40 to 6513.5 K");
    scaled.ofLimits = scaled.format;
    scaled.limits.max = 80;
    EXPECT_EQ(allowedRange(value(scaled)), "-40 to 80 K");
    Item falling = item("R_W:5@signed");
    falling.format.scaling = Scaling{-0.5, 10, 1, "K"};
    EXPECT_EQ(allowedRange(value(falling)), "-16373.5 to 16394 K");
}

TEST_F(PanelTagTexts, SayLimitsInTheNotationThatTheyAreOf)
{
    Item temperature = item("R_W:5");
    temperature.format.scaling = Scaling{0.5, 0, 1, "K"};
    temperature.ofLimits = temperature.format;
    temperature.limits = {10, 90};
    EXPECT_EQ(allowedRange(value(temperature)), "10 to 90 K");
    temperature.format = item("R_W:5@hex").format;
    EXPECT_EQ(allowedRange(value(temperature)), "10 to 90 K, as unsigned");
    EXPECT_THAT(complaint([&]() { bytesToWrite(value(temperature), "0x10"); }),
                HasSubstr("'8.0': below the minimum"));
    temperature.limits.min.reset();
    EXPECT_EQ(allowedRange(value(temperature)), "up to 90 K, as unsigned");
    temperature.format = item("R_W:5@signed").format;
    temperature.format.scaling = temperature.ofLimits.scaling;
    EXPECT_EQ(allowedRange(value(temperature)), "up to 90 K, as unsigned") << "-1 is above it";
    temperature.format = item("R_W:5").format;
    EXPECT_EQ(allowedRange(value(temperature)), "up to 90 K, as unsigned") << "of another scale";
    temperature.limits = {};
    EXPECT_EQ(allowedRange(value(temperature)), "0 to 65535") << "of no limits, but of its field";
}

TEST_F(PanelTagTexts, AreRefusedOutsideOfTheirLimits)
{
    Item limited = item("R_W:5");
    limited.limits = {10, 20};
    limited.ofLimits = limited.format;
    EXPECT_THAT(bytesToWrite(value(limited), "15"), ElementsAre(15, 0));
    EXPECT_THAT(complaint([&]() { bytesToWrite(value(limited), "21"); }), HasSubstr("above"));
    EXPECT_THAT(complaint([&]() { bytesToWrite(value(limited), "fast"); }), HasSubstr("fast"));
}

TEST_F(PanelTagTexts, AreEmptyOnlyInQuotes)
{
    const PanelValue label = value(item("R_W:5..6@text"));
    EXPECT_EQ(complaint([&]() { bytesToWrite(label, ""); }),
              "nothing is typed; an empty text is written \"\"");
    EXPECT_THAT(bytesToWrite(label, "\"\""), ElementsAre(0, 0, 0, 0));
    EXPECT_EQ(complaint([&]() { bytesToWrite(value(item("R_W:5")), ""); }), "nothing is typed");
}

TEST_F(PanelTagTexts, AreWatchedOnceEach)
{
    EXPECT_EQ(watchedAddresses({item("R_W:5"), item("R_W:5@hex"), item("R_W:6")}).size(), 2U);
}

TEST_F(PanelTagTexts, ComeFromASpreadsheet)
{
    EXPECT_THAT(addressesOf(pastedItems(library, "R_W:5\n2/T:3\n")),
                ElementsAre("1/R_W:5 1/R_W:5", "2/T:3 2/T:3"));
    EXPECT_THAT(addressesOf(pastedItems(library, "oven\tR_W:5\nbelt\tR_W:6\n")),
                ElementsAre("oven 1/R_W:5", "belt 1/R_W:6"));
    const std::vector<Item> tags =
        pastedItems(library, "name;station;register;address;unit;scale\noven;2;R_W;7;K;0.1\n");
    EXPECT_THAT(addressesOf(tags), ElementsAre("oven 2/R_W:7"));
    EXPECT_EQ(tags.front().format.scaling.unit, "K");
}

TEST_F(PanelTagTexts, AreGivenNoNameThatATagFileCouldNotHave)
{
    const auto refusal = [&](const std::string& text) {
        return complaint([&]() { pastedItems(library, text); });
    };
    EXPECT_EQ(refusal("oven\tR_W:5\nR_W:100\tR_W:200\n"),
              "what is pasted:2: the name 'R_W:100' of R_W:200: a name cannot hold ':'")
        << "it would show one address's value under another's name";
    EXPECT_THAT(refusal("2/R_W:200\tR_W:200\n"), HasSubstr("cannot hold ':'"));
    EXPECT_THAT(refusal("a=5\tR_W:200\n"), HasSubstr("cannot hold '='"));
    EXPECT_THAT(refusal("oven\tR_W:5\n\"a,b\"\tR_W:200\n"), HasSubstr("cannot hold ','"));
    EXPECT_THAT(refusal("\tR_W:200\n"), HasSubstr("what is pasted:1: "));
    EXPECT_THAT(refusal("\tR_W:200\n"), HasSubstr("a tag needs a name"));
    EXPECT_THAT(refusal("a\x01z\tR_W:200\n"), HasSubstr("control character"));
    EXPECT_THAT(addressesOf(pastedItems(library, "R_W:200\tR_W:200\n1/R_W:7\tR_W:7\n")),
                ElementsAre("1/R_W:200 1/R_W:200", "1/R_W:7 1/R_W:7"))
        << "its own address is no name";
}

TEST_F(PanelTagTexts, AreAllRefusedWhereOneRowIsWrong)
{
    EXPECT_THAT(complaint([&]() { pastedItems(library, "a\tR_W:5\nb\tQ_W:5000\n"); }),
                HasSubstr("what is pasted:2: "));
}

TEST_F(PanelTagTexts, ComeAsASeries)
{
    EXPECT_THAT(addressesOf(seriesOf(library, item("R_W:10"), 3, 5)),
                ElementsAre("1/R_W:10 1/R_W:10", "1/R_W:15 1/R_W:15", "1/R_W:20 1/R_W:20"));
    EXPECT_THAT(addressesOf(seriesOf(library, item("2/M_bit:1.15"), 2, 1)),
                ElementsAre("2/M_bit:1.15 2/M_bit:1.15", "2/M_bit:2.0 2/M_bit:2.0"));
    EXPECT_THAT(complaint([&]() { seriesOf(library, item("R_W:3999"), 2, 1); }),
                HasSubstr("past the highest address"));
}

} // namespace

} // namespace dov417
