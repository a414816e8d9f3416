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
