#include "session/recipe_job.h"

#include "session_world.h"

namespace dov417 {

namespace {

class RecipeJobOnALine : public SessionOnALine {
protected:
    RecipeJobOnALine()
    {
        beAController();
    }

    // What the controller holds of these, low byte first; a byte a bit.
    std::vector<std::vector<unsigned char>> uploaded(const std::vector<Address>& addresses)
    {
        std::vector<RecipeEntry> entries;
        for (const Address& address : addresses)
            entries.push_back({{"item", address, Format(), ""}, {}});
        bool ended = false;
        RecipeJob job(*session, [&]() { ended = true; });
        job.upload(entries);
        EXPECT_TRUE(waitUntil([&]() { return ended; }));
        EXPECT_EQ(job.problems(), std::vector<std::string>());
        std::vector<std::vector<unsigned char>> values;
        for (const RecipeEntry& entry : job.entries())
            values.push_back(entry.data);
        return values;
    }
};

using Values = std::vector<std::vector<unsigned char>>;

TEST_F(RecipeJobOnALine, AnUploadHoldsEachBitOfTheWordsThatWereRead)
{
    registers[0x0500 + 10] = 0x8005;
    registers[0x0500 + 11] = 0x0002;
    EXPECT_EQ(uploaded({bits("R_bit", 160, 4), bits("R_bit", 174, 4)}),
              (Values{{1, 0, 1, 0}, {0, 1, 0, 1}}));
}

TEST_F(RecipeJobOnALine, AnUploadHoldsWordsThatShareTheirRecordWithBits)
{
    registers[0x0500 + 10] = 0x1234;
    registers[0x0500 + 11] = 0x0001;
    EXPECT_EQ(uploaded({words("R_W", 10, 2), bits("R_bit", 176)}),
              (Values{{0x34, 0x12, 0x01, 0x00}, {1}}));
}

TEST_F(RecipeJobOnALine, ADownloadTellsHowManyWordsAndBitsItHasWritten)
{
    registers[0x0500 + 20] = 0x0100;
    bool ended = false;
    RecipeJob job(*session, [&]() { ended = true; });
    job.download({{{"words", words("R_W", 10, 2), Format(), ""}, {0x34, 0x12, 0x01, 0x00}},
                  {{"bits", bits("R_bit", 320, 2), Format(), ""}, {1, 1}}});
    RecipeProgress progress = job.progress();
    EXPECT_EQ(progress.words, 0U);
    EXPECT_EQ(progress.allWords, 2U);
    EXPECT_EQ(progress.bits, 0U);
    EXPECT_EQ(progress.allBits, 2U);
    ASSERT_TRUE(waitUntil([&]() { return ended; }));
    EXPECT_EQ(job.problems(), std::vector<std::string>());
    progress = job.progress();
    EXPECT_EQ(progress.words, 2U);
    EXPECT_EQ(progress.bits, 2U);
    EXPECT_EQ(registers[0x0500 + 10], 0x1234);
    EXPECT_EQ(registers[0x0500 + 11], 0x0001);
    EXPECT_EQ(registers[0x0500 + 20], 0x0103) << "its other bits are as they were";

    ended = false;
    job.upload(job.entries());
    EXPECT_EQ(job.progress().allBits, 0U) << "they come with their words";
    ASSERT_TRUE(waitUntil([&]() { return ended; }));
}

} // namespace

} // namespace dov417
