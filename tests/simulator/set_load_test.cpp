#include "simulator/set_load.h"

#include <QFile>
#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support.h"

namespace dov417::simulator {
namespace {

using ::testing::HasSubstr;

AddressRange rangeOf(const char* text)
{
    return parseAddressRange(text);
}

TEST(AddressRange, NamesWordsAndBitsOfAStation)
{
    const AddressRange words = rangeOf("R_W:100..107");
    EXPECT_EQ(words.station, 1);
    EXPECT_EQ(words.area, Area::R);
    EXPECT_EQ(words.first, 100);
    EXPECT_EQ(words.last, 107);
    EXPECT_EQ(words.itemCount(), 8);

    const AddressRange bits = rangeOf("M_bit:1.0..1.15");
    EXPECT_EQ(bits.area, Area::M);
    EXPECT_EQ(bits.first, 16);
    EXPECT_EQ(bits.last, 31);
    EXPECT_EQ(bits.firstWord(), 1);
    EXPECT_EQ(bits.lastWord(), 1);
    EXPECT_EQ(bits.itemCount(), 16);

    const AddressRange doubles = rangeOf("2/R_D:10..13");
    EXPECT_EQ(doubles.station, 2);
    EXPECT_EQ(doubles.itemCount(), 2);
    EXPECT_EQ(rangeOf("R_D:10").last, 11);
    EXPECT_EQ(rangeOf("R_D:3998").last, 3999);
    EXPECT_EQ(rangeOf("T:5").area, Area::T);
    EXPECT_EQ(rangeOf("R_bit:3999.15").first, 63999);
    EXPECT_EQ(rangeOf("247/C:127").station, 247);
}

TEST(AddressRange, IsRefusedWithAReasonWhereItIsNone)
{
    for (const char* bad : {"",
                            "R_W",
                            "R_W:",
                            "R_W:-1",
                            "R_W:4000",
                            "R_W:3999..4000",
                            "R_W:7..6",
                            "R_W:1.5",
                            "r_w:1",
                            "X:1",
                            "M_bit:1",
                            "M_bit:1.16",
                            "M_bit:128.0",
                            "M_bit:1.0.0",
                            "M_bit:1.",
                            "R_D:3999",
                            "R_D:10..12",
                            "0/R_W:1",
                            "248/R_W:1",
                            "a/R_W:1",
                            "/R_W:1",
                            "R_W:1..",
                            "R_W:..2",
                            "R_W: 1",
                            "R_W:99999999999",
                            "M_bit:99999999.0",
                            "T:128",
                            "C:128",
                            "I_W:128"}) {
        EXPECT_NE(complaint([&] { parseAddressRange(bad); }), "") << bad;
    }
}

class SetLoadTest : public testing::Test {
protected:
    bool set(const char* assignment)
    {
        error = complaint([&] { setValues(memory, assignment); });
        return error.empty();
    }
    std::string fileWith(const char* content)
    {
        const std::string name = inFolder("values.json");
        QFile file(QString::fromStdString(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return name;
    }
    bool load(const char* content)
    {
        const std::string file = fileWith(content);
        error = complaint([&] { loadValues(memory, file); });
        return error.empty();
    }

    std::string inFolder(const char* name) const
    {
        return folder.filePath(QLatin1String(name)).toStdString();
    }

    QTemporaryDir folder;
    std::string error; // of the latest call
    Memory memory{{1, 2}};
    StationMemory& one = *memory.station(1);
    StationMemory& two = *memory.station(2);
};

TEST_F(SetLoadTest, SetsWordsInEveryNotation)
{
    EXPECT_TRUE(set("R_W:100=5"));
    EXPECT_TRUE(set("R_W:101=0xBEEF"));
    EXPECT_TRUE(set("R_W:102=-1"));
    EXPECT_TRUE(set("R_W:103=65535"));
    EXPECT_TRUE(set("2/T:5=77"));
    EXPECT_EQ(one.word(Area::R, 100), 5);
    EXPECT_EQ(one.word(Area::R, 101), 0xBEEF);
    EXPECT_EQ(one.word(Area::R, 102), 0xFFFF);
    EXPECT_EQ(one.word(Area::R, 103), 0xFFFF);
    EXPECT_EQ(two.word(Area::T, 5), 77);
}

TEST_F(SetLoadTest, SetsBitsAndLeavesTheirNeighbours)
{
    one.setWord(Area::M, 1, 0x8001);
    EXPECT_TRUE(set("M_bit:1.5=1"));
    EXPECT_TRUE(set("M_bit:1.15=0"));
    EXPECT_EQ(one.word(Area::M, 1), 0x0021);
    EXPECT_TRUE(set("R_bit:3999.15=1"));
    EXPECT_EQ(one.word(Area::R, 3999), 0x8000);
}

TEST_F(SetLoadTest, SetsDoubleWordsLowOrderWordFirst)
{
    EXPECT_TRUE(set("R_D:10=0x12345678"));
    EXPECT_EQ(one.word(Area::R, 10), 0x5678);
    EXPECT_EQ(one.word(Area::R, 11), 0x1234);
    EXPECT_TRUE(set("R_D:10..13=-2,4294967295"));
    EXPECT_EQ(one.word(Area::R, 10), 0xFFFE);
    EXPECT_EQ(one.word(Area::R, 13), 0xFFFF);
}

TEST_F(SetLoadTest, SetsSinglesWhereADoubleWordHasAPointOrAnExponent)
{
    EXPECT_TRUE(set("R_D:10=12.5")); // 0x41480000
    EXPECT_EQ(one.word(Area::R, 10), 0x0000);
    EXPECT_EQ(one.word(Area::R, 11), 0x4148);
    EXPECT_TRUE(set("R_D:10=-1e3")); // 0xC47A0000
    EXPECT_EQ(one.word(Area::R, 11), 0xC47A);
    EXPECT_TRUE(set("R_D:10=0xE")); // hexadecimal, no exponent
    EXPECT_EQ(one.word(Area::R, 10), 14);
}

TEST_F(SetLoadTest, FillsARangeWithOneValueOrGivesEachPlaceItsOwn)
{
    EXPECT_TRUE(set("R_W:100..102=7"));
    EXPECT_EQ(one.word(Area::R, 102), 7);
    EXPECT_TRUE(set("R_W:100..102=1,2,3"));
    EXPECT_EQ(one.word(Area::R, 101), 2);
    EXPECT_TRUE(set("R_W:200=4,5,6"));
    EXPECT_EQ(one.word(Area::R, 202), 6);
    EXPECT_EQ(one.word(Area::R, 203), 0);
    EXPECT_TRUE(set("M_bit:0.14..1.1=1,0,1,1"));
    EXPECT_EQ(one.word(Area::M, 0), 0x4000);
    EXPECT_EQ(one.word(Area::M, 1), 0x0003);
    EXPECT_TRUE(set("R_D:300=1,2"));
    EXPECT_EQ(one.word(Area::R, 302), 2);
}

TEST_F(SetLoadTest, TellsWhatWasSet)
{
    const AddressRange where = setValues(memory, "2/R_W:200=4,5,6");
    EXPECT_EQ(where.station, 2);
    EXPECT_EQ(where.first, 200);
    EXPECT_EQ(where.last, 202);
}

TEST_F(SetLoadTest, RefusesWithAReasonAndChangesNothing)
{
    for (const char* bad :
         {"R_W:100", "R_W:100=", "R_W:100=x", "R_W:100=65536", "R_W:100=-32769", "R_W:100=1.5",
          "R_W:100=0x10000", "R_W:100=0x-1", "M_bit:1.5=2", "M_bit:1.5=-1", "R_D:100=4294967296",
          "R_D:100=1e99", "R_W:100..102=1,2", "R_W:100..101=1,2,3", "R_W:3999=1,2", "R_W:100=1,,3",
          "3/R_W:100=1", "R_W:100=1 2"}) {
        EXPECT_FALSE(set(bad)) << bad;
    }
    for (int word = 0; word < 4000; ++word)
        ASSERT_EQ(one.word(Area::R, word), 0) << word;
    EXPECT_EQ(one.word(Area::M, 1), 0);
}

TEST_F(SetLoadTest, RefusesAFileThatNestsTooDeep)
{
    const std::string deep(400000, '[');
    const std::string file = "{\"1\": {\"R_W\": {\"100\": " + deep + std::string(400000, ']');
    EXPECT_FALSE(load((file + "}}}").c_str()));
    EXPECT_THAT(error, HasSubstr("values.json: nested too deep"));
    EXPECT_FALSE(load(R"({"1": {"R_W": {"100": [1, [2]]}}})"));
    EXPECT_THAT(error, HasSubstr("a value is a number, a text, true or false"));
    EXPECT_FALSE(load(R"({"1": {"R_W": {"100": null}}})"));
    EXPECT_EQ(one.word(Area::R, 100), 0);
}

TEST_F(SetLoadTest, LoadsAFileAndTouchesNothingElse)
{
    one.setWord(Area::R, 103, 99);
    ASSERT_TRUE(load(R"({ "1": { "R_W": { "100": [1, 2, "0xFF"], "200": -1 },
                                 "M_bit": { "1.5": true, "2.0": [1, 0, 1] },
                                 "R_D": { "300": 12.5 } },
                          "2": { "T": { "5": 6 } } })"))
        << error;
    EXPECT_EQ(one.word(Area::R, 100), 1);
    EXPECT_EQ(one.word(Area::R, 102), 255);
    EXPECT_EQ(one.word(Area::R, 103), 99);
    EXPECT_EQ(one.word(Area::R, 200), 0xFFFF);
    EXPECT_EQ(one.word(Area::R, 301), 0x4148);
    EXPECT_EQ(one.word(Area::M, 1), 0x0020);
    EXPECT_EQ(one.word(Area::M, 2), 0x0005);
    EXPECT_EQ(two.word(Area::T, 5), 6);
}

TEST_F(SetLoadTest, RefusesAFileWithAMistakeWhole)
{
    for (const char* bad :
         {"", "[]", "7", R"({"1": 5})", R"({"1": {"R_W": [1]}})",
          R"({"1": {"R_W": {"0": 1, "4000": 1}}})", R"({"1": {"R_W": {"0": 1, "2": {}}}})",
          R"({"1": {"R_W": {"0": 1, "2": null}}})", R"({"1": {"R_W": {"0": 1, "2": 1.5}}})",
          R"({"1": {"R_W": {"0": 1}}, "3": {"R_W": {"0": 1}}})",
          R"({"1": {"R_W": {"0": [1, [2]]}}})", R"({"1": {"R_W": {"0": []}}})",
          R"({"1": {"R_W": {"0": 1}})"}) {
        EXPECT_FALSE(load(bad)) << bad;
        EXPECT_THAT(error, HasSubstr("values.json: ")) << bad;
        EXPECT_EQ(one.word(Area::R, 0), 0) << bad;
    }
}

TEST_F(SetLoadTest, SaysWhereAFileIsNoJson)
{
    EXPECT_FALSE(load("{\n  \"1\": {,}\n}"));
    EXPECT_THAT(error, HasSubstr("line 2, column 9"));
}

TEST_F(SetLoadTest, SaysWhichFileCannotBeRead)
{
    EXPECT_THAT(complaint([this] { loadValues(memory, inFolder("none")); }), HasSubstr("none: "));
}

TEST_F(SetLoadTest, DumpsRunsOfValuesThatLoadAgain)
{
    set("R_W:100=1,2,3");
    set("R_W:3999=65535");
    set("I_bit:127.15=1");
    set("2/C:0=9");
    const std::string name = inFolder("dump.json");
    ASSERT_EQ(complaint([&] { dumpValues(memory, name); }), "");

    QFile file(QString::fromStdString(name));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray content = file.readAll();
    content.replace(' ', "").replace('\n', "");
    EXPECT_EQ(content.toStdString(),
              R"({"1":{"I_W":{"127":[32768]},"R_W":{"100":[1,2,3],"3999":[65535]}},)"
              R"("2":{"C":{"0":[9]}}})");

    Memory again({1, 2});
    ASSERT_EQ(complaint([&] { loadValues(again, name); }), "");
    EXPECT_EQ(again.station(1)->word(Area::R, 102), 3);
    EXPECT_EQ(again.station(1)->word(Area::R, 3999), 65535);
    EXPECT_TRUE(again.station(1)->bit(Area::I, 127, 15));
    EXPECT_EQ(again.station(2)->word(Area::C, 0), 9);
}

TEST_F(SetLoadTest, SaysWhyADumpCannotBeWritten)
{
    EXPECT_NE(complaint([this] { dumpValues(memory, inFolder("no/such/folder")); }), "");
}

} // namespace
} // namespace dov417::simulator
