#include "session/write_words.h"

#include "loaded_library.h"

namespace dov417 {

namespace {

class WordsAboutWrites : public LoadedLibrary {
protected:
    Item item(const std::string& address, const std::string& format = "")
    {
        ItemSource source;
        source.format = format;
        return Items(library, source).find(address, Access::read);
    }
};

TEST_F(WordsAboutWrites, NameTheRangeOfWhatTheControllerHolds)
{
    EXPECT_EQ(rangeText(item("R_W:1")), "0 to 65535");
    EXPECT_EQ(rangeText(item("R_W:1", "signed")), "-32768 to 32767");
    EXPECT_EQ(rangeText(item("R_D:10")), "0 to 4294967295");
    EXPECT_EQ(rangeText(item("M_bit:1.5")), "0 or 1");
    EXPECT_EQ(rangeText(item("M_bit:1.5", "bool")), "true or false");
    EXPECT_EQ(rangeText(item("R_D:10", "float")), "");
}

TEST_F(WordsAboutWrites, NameTheRangeInTheUnit)
{
    Item temperature = item("R_W:1");
    temperature.format.scaling = {-0.5, 10, 1, "C"};
    EXPECT_EQ(rangeText(temperature), "-32757.5 to 10 C");
    temperature.ofLimits = temperature.format;
    temperature.limits.min = -20.5;
    EXPECT_EQ(rangeText(temperature), "at least -20.5 C");
    temperature.limits.max = 5;
    EXPECT_EQ(rangeText(temperature), "-20.5 to 5 C");
    temperature.limits.min.reset();
    EXPECT_EQ(rangeText(temperature), "at most 5 C");
    temperature.format = item("R_W:1", "hex").format;
    EXPECT_EQ(rangeText(temperature), "at most 5 C, as unsigned");
}

TEST_F(WordsAboutWrites, RefuseWhatLiesOutsideTheLimits)
{
    Item speed = item("R_W:1");
    speed.limits.max = 3000;
    EXPECT_EQ(complaint([&speed]() { writeTask(speed, {"3001"}); }),
              "1/R_W:1: value '3001': above the maximum, 3000");
    EXPECT_EQ(complaint([&speed]() {
                  writeTask(speed, {"1", "2"});
              }),
              "1/R_W:1: 1 value is needed, 2 given");
    EXPECT_EQ(writeTask(speed, {"3000"}).data, (std::vector<unsigned char>{0xB8, 0x0B}));
}

TEST_F(WordsAboutWrites, NeverCallAWriteGoodThatHasNoOutcome)
{
    WriteTask task = writeTask(item("R_W:1"), {"5"});
    EXPECT_EQ(writeReport(task, "interrupted"), "1/R_W:1 = 5: NOT confirmed: interrupted");
    task.result = WriteResult::different;
    task.after = {7, 0};
    EXPECT_EQ(writeReport(task, ""), "1/R_W:1 = 5: taken, but it reads back as 7");
}

} // namespace

} // namespace dov417
