#include "session/items.h"

#include <fstream>

#include "loaded_library.h"

namespace dov417 {

namespace {

using ::testing::HasSubstr;

class ItemsTest : public LoadedLibrary {
protected:
    ItemsTest()
    {
        source.tags = ::testing::TempDir() + "items_test_" +
                      ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".csv";
        std::ofstream(source.tags) << "name,station,register,address,count,format,comment\n"
                                   << "speed,1,R_W,100,1,hex,\n"
                                   << "power,1,R_D,10,2,float,watts\n"
                                   << "all,0,R_W,5,1,,\n";
    }
    ~ItemsTest() override
    {
        std::remove(source.tags.c_str());
    }
    ItemSource source;
};

TEST_F(ItemsTest, ANameStandsForItsTagAndAnythingElseIsAnAddress)
{
    const Items items(library, source);
    EXPECT_EQ(items.find("power", Access::read).address,
              (Address{1, "R_D", Width::doubleWord, 10, 4}));
    EXPECT_EQ(items.find("power", Access::read).comment, "watts");
    EXPECT_EQ(items.find("T:5", Access::read).name, "1/T:5");
    EXPECT_THAT(complaint([&] { items.find("torque", Access::read); }),
                HasSubstr("has no tag 'torque'"));
}

TEST_F(ItemsTest, AnAddressMayHaveAFormatOfItsOwn)
{
    const Items items(library, source);
    EXPECT_EQ(items.find("R_D:600@float", Access::read).format.notation, Notation::real);
    EXPECT_EQ(items.find("R_W:7@hex:high-first", Access::read).format.order, WordOrder::highFirst);
    EXPECT_EQ(items.find("speed@binary", Access::read).format.notation, Notation::binary);
    EXPECT_EQ(items.find("R_D:600@double", Access::read).address,
              (Address{1, "R_D", Width::quadWord, 600, 4}));
    EXPECT_EQ(items.find("R_D:600..607@int64", Access::read).address,
              (Address{1, "R_D", Width::quadWord, 600, 8}));
    EXPECT_EQ(items.find("R_D:600@double", Access::read).name, "1/R_D:600..603");
    EXPECT_EQ(complaint([&] { items.find("R_D:600..605@double", Access::read); }),
              "1/R_D:600..605: double needs four words of a double word register");
    EXPECT_EQ(complaint([&] { items.find("R_D:600..601@double", Access::read); }),
              "1/R_D:600..601: double needs four words of a double word register");
    EXPECT_THAT(complaint([&] { items.find("R_D:3998@double", Access::read); }),
                HasSubstr("run past the highest address"));
    EXPECT_EQ(complaint([&] { items.find("R_W:1@float", Access::read); }),
              "1/R_W:1: float needs the 32 bits of a double word register");
    EXPECT_EQ(complaint([&] { items.find("R_W:1@", Access::read); }),
              "R_W:1@: the format is missing after '@'");
}

TEST_F(ItemsTest, AValueOfATagIsNamedAsItIsShown)
{
    const Items items(library, source);
    const Item value = items.find("power[1]", Access::write);
    EXPECT_EQ(value.address, (Address{1, "R_D", Width::doubleWord, 12, 2}));
    EXPECT_EQ(value.name, "power[1]");
    EXPECT_EQ(value.format.notation, Notation::real);
    EXPECT_EQ(complaint([&] { items.find("power[2]", Access::read); }),
              "'power[2]': power has the values 0 to 1");
    EXPECT_THAT(complaint([&] { items.find("power[x]", Access::read); }), HasSubstr("0 to 1"));
    EXPECT_THAT(complaint([&] { items.find("pow[0]", Access::read); }), HasSubstr("has no tag"));
}

TEST_F(ItemsTest, ATextIsOneValueOfItsWords)
{
    const Items items(library, source);
    const Item typed = items.find("R_W:0..7@text", Access::write);
    EXPECT_EQ(typed.address, (Address{1, "R_W", Width::text, 0, 8}));
    EXPECT_EQ(typed.name, "1/R_W:0..7");
    EXPECT_EQ(typed.format.byteOrder, WordOrder::highFirst);
    EXPECT_EQ(items.find("R_W:0..7@text:low-first", Access::read).format.byteOrder,
              WordOrder::lowFirst);
    EXPECT_EQ(complaint([&] { items.find("R_D:0..7@text", Access::read); }),
              "1/R_D:0..7: text needs a word register, at most 120 words of it");
    EXPECT_EQ(complaint([&] { items.find("R_W:0..120@text", Access::read); }),
              "1/R_W:0..120: text needs a word register, at most 120 words of it");
}

TEST_F(ItemsTest, ATextKeepsItsFormatAndItsByteOrder)
{
    std::ofstream(source.tags) << "name,register,address,count,format\n"
                               << "label,R_W,100,4,text:low-first\n";
    source.format = "signed";
    source.wordOrder = "high-first";
    const Items items(library, source);
    const Item label = items.find("label", Access::read);
    EXPECT_EQ(label.format.notation, Notation::text);
    EXPECT_EQ(label.format.byteOrder, WordOrder::lowFirst);
    EXPECT_EQ(valueCount(label.address), 1);
    EXPECT_EQ(items.find("label[0]", Access::read).address, label.address);
    EXPECT_EQ(complaint([&] { items.find("label@hex", Access::read); }),
              "label: hex does not fit a text");
    EXPECT_EQ(complaint([&] { requireUntornValues(library, {label}, 3); }),
              "with a gap of 3 the driver cuts writes into pieces of 3 words, and a value of "
              "1/R_W:100..103 in two; take a gap of at least 4");
}

TEST_F(ItemsTest, AWildcardStandsForTagsInTheOrderOfTheFile)
{
    std::ofstream(source.tags) << "name,register,address\n"
                               << "press.b,R_W,2\npress.a,R_W,1\npump,R_W,3\nodd*,R_W,4\n";
    const Items items(library, source);
    const auto namesOf = [&](const std::string& text) {
        std::vector<std::string> names;
        for (const Item& item : items.chosen({text}, Access::read))
            names.push_back(item.name);
        return names;
    };
    EXPECT_THAT(namesOf("press.*"), ::testing::ElementsAre("press.b", "press.a"));
    EXPECT_THAT(namesOf("p??p@hex"), ::testing::ElementsAre("pump"));
    EXPECT_THAT(namesOf("odd*"), ::testing::ElementsAre("odd*")) << "its very name";
    EXPECT_EQ(items.chosen({"*@hex"}, Access::read).at(3).format.notation, Notation::hex);
    EXPECT_EQ(complaint([&] { namesOf("press,*"); }),
              source.tags + " has no tag that 'press,*' stands for");
    EXPECT_EQ(complaint([&] { items.findAll("pump*", Access::write); }),
              "'pump*' stands for several tags; a write names each of them");
    EXPECT_EQ(items.findAll("odd*", Access::write).front().name, "odd*");
    EXPECT_EQ(complaint([&] { items.find("press.*", Access::read); }),
              source.tags + " has no tag 'press.*'");
}

TEST_F(ItemsTest, AFormatForAllLeavesWhatItDoesNotFit)
{
    source.format = "float";
    const auto chosen = Items(library, source).chosen({"R_W:1", "R_D:2", "speed"}, Access::read);
    EXPECT_EQ(chosen.at(0).format.notation, Notation::unsignedNumber);
    EXPECT_EQ(chosen.at(1).format.notation, Notation::real);
    EXPECT_EQ(chosen.at(2).format.notation, Notation::hex);
    EXPECT_EQ(complaint([&] { Items(library, source).chosen({"R_W:1"}, Access::read); }),
              "float needs the 32 bits of a double word register");
    EXPECT_EQ(complaint([&] { Items(library, source).find("R_W:1", Access::write); }),
              "1/R_W:1: float needs the 32 bits of a double word register");
}

TEST_F(ItemsTest, LimitsHoldInWhateverFormatAValueIsWritten)
{
    std::ofstream(source.tags) << "name,register,address,format,scale,unit,min,max\n"
                               << "level,R_W,100,signed,0.1,bar,0,12.3\n";
    const Items items(library, source);
    const Item level = items.find("level", Access::write);
    EXPECT_NO_THROW(requireWithinLimits(level, {0x7B, 0x00}));
    EXPECT_EQ(complaint([&] {
                  requireWithinLimits(level, {0x7C, 0x00});
              }),
              "value '12.4': above the maximum, 12.3");
    EXPECT_EQ(complaint([&] {
                  requireWithinLimits(level, {0xFF, 0xFF});
              }),
              "value '-0.1': below the minimum, 0");
    const Item inHex = items.find("level@hex", Access::write);
    EXPECT_EQ(inHex.format.scaling.unit, "");
    EXPECT_EQ(complaint([&] {
                  requireWithinLimits(inHex, {0x7C, 0x00});
              }),
              "value '12.4': above the maximum, 12.3");
}

TEST_F(ItemsTest, LimitsOfValuesAreNotThoseOfOneThatIsMadeOfThem)
{
    std::ofstream(source.tags) << "name,register,address,count,min,max\n"
                               << "preset,R_W,210,4,0,100\n"
                               << "pair,R_D,10,2,0,100\n";
    const Items items(library, source);
    for (const char* name : {"preset@text", "pair@int64"}) {
        const Item item = items.find(name, Access::write);
        EXPECT_EQ(complaint([&] { requireWithinLimits(item, std::vector<unsigned char>(8, 0)); }),
                  "its minimum and maximum are those of its own values, and in this format it has "
                  "others")
            << name;
    }
    EXPECT_NO_THROW(requireWithinLimits(items.find("preset@hex", Access::write),
                                        std::vector<unsigned char>(8, 0)));
}

TEST_F(ItemsTest, ArgumentsAreTakenInTheirOrderAndAllTagsWhereThereAreNone)
{
    const Items items(library, source);
    const auto chosen = items.chosen({"T:5", "speed"}, Access::read);
    ASSERT_EQ(chosen.size(), 2u);
    EXPECT_EQ(chosen[0].name, "1/T:5");
    EXPECT_EQ(chosen[1].name, "speed");

    const auto all = items.chosen({}, Access::write);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[2].name, "all");
}

TEST_F(ItemsTest, ABroadcastTagCanOnlyBeWritten)
{
    const Items items(library, source);
    EXPECT_EQ(items.find("all", Access::write).address.station, 0);
    EXPECT_THAT(complaint([&] { items.find("all", Access::read); }), HasSubstr("station 0"));
}

TEST_F(ItemsTest, TheCommandLinesFormatWinsOverTheTagsOwn)
{
    EXPECT_EQ(Items(library, source).find("speed", Access::read).format.notation, Notation::hex);
    source.format = "signed";
    EXPECT_EQ(Items(library, source).find("speed", Access::read).format.notation,
              Notation::signedNumber);
    source.format.clear();
    source.wordOrder = "high-first";
    const Format format = Items(library, source).find("power", Access::read).format;
    EXPECT_EQ(format.notation, Notation::real);
    EXPECT_EQ(format.order, WordOrder::highFirst);
}

TEST_F(ItemsTest, NothingAtAllIsRefused)
{
    EXPECT_THAT(complaint([&] { Items(library, ItemSource()).chosen({}, Access::read); }),
                HasSubstr("no address given"));
    std::ofstream(source.tags) << "name,station,register,address,count,format,comment\n";
    EXPECT_THAT(complaint([&] { Items(library, source).chosen({}, Access::read); }),
                HasSubstr("names no tag"));
}

TEST_F(ItemsTest, AGapThatCutsA32BitValueIsRefused)
{
    const auto refused = [this](const char* address, int gap) {
        Item item;
        item.address = parseAddress(library, address);
        return !complaint([&] { requireUntornValues(library, {item}, gap); }).empty();
    };
    EXPECT_TRUE(refused("R_D:0..3", 3));
    EXPECT_TRUE(refused("R_D:0..3", 1));
    EXPECT_TRUE(refused("R_D:0..1", 1));
    EXPECT_FALSE(refused("R_D:0..3", 2));
    EXPECT_FALSE(refused("R_D:0..3", 5));
    EXPECT_FALSE(refused("R_W:0..30", 3));
    // No gap: pieces of 123 words.
    EXPECT_FALSE(refused("R_D:0..121", 0));
    EXPECT_TRUE(refused("R_D:0..123", 0));
    EXPECT_FALSE(refused("R_D:0..3997", 20));
}

} // namespace

} // namespace dov417
