#include "session/pieces.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

Address address(const char* regName, Width width, int first, int length)
{
    Address made;
    made.regName = regName;
    made.width = width;
    made.first = first;
    made.length = length;
    return made;
}

std::vector<unsigned char> counting(std::size_t bytes)
{
    std::vector<unsigned char> made;
    for (std::size_t i = 0; i < bytes; ++i)
        made.push_back(static_cast<unsigned char>(i));
    return made;
}

using Extent = std::pair<int, int>; // first, length

std::vector<Extent> runsOf(const std::vector<Write>& pieces)
{
    std::vector<Extent> runs;
    for (const Write& piece : pieces)
        runs.emplace_back(piece.address.first, piece.address.length);
    return runs;
}

std::vector<Extent> runsOf(const std::vector<Address>& pieces)
{
    std::vector<Extent> runs;
    for (const Address& piece : pieces)
        runs.emplace_back(piece.first, piece.length);
    return runs;
}

TEST(WritePieces, BitsGoOutOneAtATime)
{
    const auto pieces = writePieces(address("M_bit", Width::bit, 15, 3), {1, 0, 1}, 20);
    EXPECT_EQ(runsOf(pieces), (std::vector<Extent>{{15, 1}, {16, 1}, {17, 1}}));
    EXPECT_EQ(pieces.at(0).data, (std::vector<unsigned char>{1}));
    EXPECT_EQ(pieces.at(1).data, (std::vector<unsigned char>{0}));
    EXPECT_EQ(pieces.at(2).data, (std::vector<unsigned char>{1}));
}

TEST(WritePieces, WordsStayTogetherUpToTheGap)
{
    const auto pieces = writePieces(address("R_W", Width::word, 100, 5), counting(10), 2);
    EXPECT_EQ(runsOf(pieces), (std::vector<Extent>{{100, 2}, {102, 2}, {104, 1}}));
    EXPECT_EQ(pieces.at(1).data, (std::vector<unsigned char>{4, 5, 6, 7}));
    EXPECT_EQ(pieces.at(2).data, (std::vector<unsigned char>{8, 9}));
}

TEST(WritePieces, WithoutAGapAPieceIsWhatOneRequestCarries)
{
    const auto pieces = writePieces(address("R_W", Width::word, 0, 200), counting(400), 0);
    EXPECT_EQ(runsOf(pieces), (std::vector<Extent>{{0, 123}, {123, 77}}));
}

TEST(WritePieces, AWiderGapThanARequestChangesNothing)
{
    const auto pieces = writePieces(address("R_W", Width::word, 0, 200), counting(400), 5000);
    EXPECT_EQ(runsOf(pieces), (std::vector<Extent>{{0, 123}, {123, 77}}));
}

TEST(WritePieces, ThirtyTwoBitValuesAreNeverTorn)
{
    const Address values = address("R_D", Width::doubleWord, 10, 6);
    EXPECT_EQ(runsOf(writePieces(values, counting(12), 5)),
              (std::vector<Extent>{{10, 4}, {14, 2}}));
    EXPECT_EQ(runsOf(writePieces(values, counting(12), 3)),
              (std::vector<Extent>{{10, 2}, {12, 2}, {14, 2}}));
    const Address many = address("R_D", Width::doubleWord, 0, 124);
    EXPECT_EQ(runsOf(writePieces(many, counting(248), 0)),
              (std::vector<Extent>{{0, 122}, {122, 2}}));
}

TEST(WritePieces, AGapOfOneIsRefusedForThirtyTwoBitValuesWithTheReason)
{
    const Address value = address("R_D", Width::doubleWord, 10, 2);
    try {
        writePieces(value, counting(4), 1);
        FAIL() << "not refused";
    } catch (const UsageFailure& failure) {
        EXPECT_NE(std::string(failure.what()).find("cuts 32-bit values in two"), std::string::npos);
    }
    EXPECT_THROW(readPieces(value, 1), UsageFailure);
}

// The driver takes a byte a bit, of the one bit that a request writes.
TEST(WritePieces, ABitWithTheValuesOfSeveralOrSeveralBitsWithAValueOfOneAreNoPiece)
{
    EXPECT_TRUE(isOnePiece({address("M_bit", Width::bit, 15, 1), {1}}, 20));
    EXPECT_FALSE(isOnePiece({address("M_bit", Width::bit, 15, 1), {1, 0}}, 20));
    EXPECT_FALSE(isOnePiece({address("M_bit", Width::bit, 15, 1), {}}, 20));
    EXPECT_FALSE(isOnePiece({address("M_bit", Width::bit, 15, 2), {1}}, 20));
}

TEST(ReadPieces, OfSixtyFourBitValuesSayWhereTheyMayBeCut)
{
    EXPECT_EQ(readPieces(address("R_D", Width::quadWord, 10, 8), 20).front().width,
              Width::quadWord);
    EXPECT_EQ(readPieces(address("R_D", Width::doubleWord, 10, 8), 20).front().width, Width::word);
}

TEST(WritePieces, SixtyFourBitValuesAreNeverTorn)
{
    const Address values = address("R_D", Width::quadWord, 10, 24);
    EXPECT_EQ(runsOf(writePieces(values, counting(48), 10)),
              (std::vector<Extent>{{10, 8}, {18, 8}, {26, 8}}));
    EXPECT_THROW(writePieces(values, counting(48), 3), UsageFailure);
    EXPECT_EQ(runsOf(readPieces(values, 22)), (std::vector<Extent>{{10, 20}, {30, 4}}));
}

TEST(ReadPieces, BitsAreReadWithTheWordsThatHoldThem)
{
    const auto pieces = readPieces(address("M_bit", Width::bit, 15, 2), 20);
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_EQ(pieces.front().regName, "M_W");
    EXPECT_EQ(runsOf(pieces), (std::vector<Extent>{{0, 2}}));
    EXPECT_EQ(readPieces(address("R_bit", Width::bit, 160, 1), 20).front().regName, "R_W");
}

TEST(ReadPieces, TimersKeepTheirName)
{
    const auto pieces = readPieces(address("T", Width::word, 5, 3), 2);
    EXPECT_EQ(pieces.front().regName, "T");
    EXPECT_EQ(runsOf(pieces), (std::vector<Extent>{{5, 2}, {7, 1}}));
}

TEST(ReadPieces, ARequestStaysWithinWhatEverySlaveAnswers)
{
    EXPECT_EQ(runsOf(readPieces(address("R_W", Width::word, 0, 130), 200)),
              (std::vector<Extent>{{0, 125}, {125, 5}}));
}

TEST(ReadPieces, WithoutAGapAPieceIsWhatTheDriverMakesOneRequestOf)
{
    EXPECT_EQ(runsOf(readPieces(address("R_W", Width::word, 0, 130), 0)),
              (std::vector<Extent>{{0, 123}, {123, 7}}));
    EXPECT_TRUE(isOneReadPiece(address("R_W", Width::word, 0, 123), 0));
    EXPECT_FALSE(isOneReadPiece(address("R_W", Width::word, 0, 124), 0));
}

TEST(WatchPieces, AreNoLongerThanARequestOfThePlan)
{
    EXPECT_EQ(runsOf(watchPieces(address("R_W", Width::word, 10, 128))),
              (std::vector<Extent>{{10, 128}}));
    EXPECT_EQ(runsOf(watchPieces(address("R_D", Width::doubleWord, 0, 260))),
              (std::vector<Extent>{{0, 128}, {128, 128}, {256, 4}}));
    // 2032 bits from the last bit of a word lie in 128 words.
    EXPECT_EQ(runsOf(watchPieces(address("R_bit", Width::bit, 15, 2033))),
              (std::vector<Extent>{{15, 2032}, {2047, 1}}));
}

} // namespace

} // namespace dov417
