// What happens to keys before they are joined: may they join, how are they cut, what words hold
// them.
#include <gmock/gmock.h>

#include "cache_world.h"
#include "planning/address_merging.h"
#include "protocol/register_table.h"
#include "uncalled_functions.h"

using ::testing::ElementsAre;

namespace {

class KeyPreparation : public DriverTest {
protected:
    static std::string normalised(const KEY_ADDRESS& original, const RegisterType& type, int mode)
    {
        ::Run run = runOf(original, 0);
        normalise(run, type, mode);
        return summary(key(text(run.regName).c_str(), run.address, run.length, run.stationNo));
    }
};

// May two keys join?

TEST_F(KeyPreparation, KeysOfDifferentStationsStayApart)
{
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5, 1), key("R_W", 15, 5, 2), 0), 1);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5, 1), key("R_W", 15, 5, 2), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5, 2), key("R_W", 15, 5, 2), 0), 0);
}

TEST_F(KeyPreparation, KeysOfDifferentNamesStayApartAndCaseCounts)
{
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("M_W", 15, 5), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("r_w", 15, 5), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("no such name", 10, 5), key("no such name", 15, 5), 0), 0);
}

TEST_F(KeyPreparation, WithoutTheGapOnlyTouchingOrOverlappingKeysMayJoin)
{
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 12, 1), 0), 0);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 15, 1), 0), 0);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 16, 1), 0), 1);
}

TEST_F(KeyPreparation, WithTheGapHolesUpToItMayBeBridged)
{
    configure("7#0#0#3#4");
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 19, 1), 1), 0);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 20, 1), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 19, 1), -2), 0);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 19, 1), 0), 1);
}

TEST_F(KeyPreparation, ANegativeGapKeepsEvenTouchingKeysApart)
{
    configure("7#0#0#3#-1");
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 15, 1), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 14, 1), 1), 0);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 15, 1), 0), 0);
}

TEST_F(KeyPreparation, TheHoleWrapsAroundLikeA32BitNumber)
{
    // 0x7FFFFFF8 + 100 wraps to -2147483556; 0x7FFFFFF9 minus that wraps to -99.
    EXPECT_EQ(judgeAddrMerge(key("R_W", 0x7FFFFFF8, 100), key("R_W", 0x7FFFFFF9, 1), 0), 0);
    // -2147483648 - 10 wraps to 2147483638: a huge hole.
    EXPECT_EQ(judgeAddrMerge(key("R_W", 5, 5), key("R_W", -2147483647 - 1, 1), 0), 1);
}

// Cutting one key into pieces.

TEST_F(KeyPreparation, AKeyWithinTheLimitIsOnePiece)
{
    QList<KEY_ADDRESS> pieces;
    pieces << key("T", 1, 1);
    KEY_ADDRESS whole = key("R_W", 100, 10);
    groupingKey(whole, 10, pieces, 0);
    EXPECT_THAT(summary(pieces), ElementsAre("1/T:1+1", "1/R_W:100+10"));
}

TEST_F(KeyPreparation, ALongKeyIsCutIntoPiecesOfTheLimitAndARemainder)
{
    QList<KEY_ADDRESS> pieces;
    KEY_ADDRESS whole = key("R_W", 100, 25, 3);
    groupingKey(whole, 10, pieces, 0);
    EXPECT_THAT(summary(pieces), ElementsAre("3/R_W:100+10", "3/R_W:110+10", "3/R_W:120+5"));
}

TEST_F(KeyPreparation, AMultipleOfTheLimitLeavesNoRemainder)
{
    QList<KEY_ADDRESS> pieces;
    KEY_ADDRESS whole = key("R_W", 100, 20);
    groupingKey(whole, 10, pieces, 0);
    EXPECT_THAT(summary(pieces), ElementsAre("1/R_W:100+10", "1/R_W:110+10"));
}

TEST_F(KeyPreparation, PiecesAreCopiesOfTheKey)
{
    KEY_ADDRESS whole = key("R_W", 100, 11, 1, 5);
    whole.tag = name("pump");
    whole.hostValue = 77;
    whole.userIndex = 88;
    whole.extText = name("hall 2");
    whole.data[3] = 0x5A;
    QList<KEY_ADDRESS> pieces;
    groupingKey(whole, 10, pieces, 0);
    ASSERT_EQ(pieces.size(), 2);
    EXPECT_EQ(text(pieces.at(1).tag), "pump");
    EXPECT_EQ(pieces.at(1).hostValue, 77);
    EXPECT_EQ(pieces.at(1).userIndex, 88);
    EXPECT_EQ(text(pieces.at(1).extText), "hall 2");
    EXPECT_EQ(pieces.at(1).bitFlag, 5);
    EXPECT_EQ(pieces.at(1).data[3], 0x5A);
}

TEST_F(KeyPreparation, PiecesOfWordsCarryTwoBytesAUnit)
{
    KEY_ADDRESS whole = key("R_W", 0, 5);
    for (int i = 0; i < 10; ++i) {
        whole.data[i] = static_cast<unsigned char>(0x10 + i);
    }
    QList<KEY_ADDRESS> pieces;
    groupingKey(whole, 2, pieces, 1);
    ASSERT_EQ(pieces.size(), 3);
    EXPECT_EQ(toHex(pieces.at(0).data, 4), "10 11 12 13");
    EXPECT_EQ(toHex(pieces.at(1).data, 4), "14 15 16 17");
    EXPECT_EQ(toHex(pieces.at(2).data, 2), "18 19");
}

TEST_F(KeyPreparation, PiecesCarryTheirOwnValuesForTheFlagOneOnly)
{
    KEY_ADDRESS whole = key("R_W", 0, 2);
    whole.data[0] = 0x10;
    whole.data[2] = 0x20;
    QList<KEY_ADDRESS> pieces;
    groupingKey(whole, 1, pieces, 2);
    ASSERT_EQ(pieces.size(), 2);
    EXPECT_EQ(pieces.at(1).data[0], 0x10); // a copy of the whole
    pieces.clear();
    groupingKey(whole, 1, pieces, 1);
    EXPECT_EQ(pieces.at(1).data[0], 0x20);
}

TEST_F(KeyPreparation, PiecesOfBitsCarryOneByteAUnit)
{
    KEY_ADDRESS whole = key("M_bit", 0, 5, 1, -1);
    for (int i = 0; i < 5; ++i) {
        whole.data[i] = static_cast<unsigned char>(0x10 + i);
    }
    QList<KEY_ADDRESS> pieces;
    groupingKey(whole, 2, pieces, 1);
    ASSERT_EQ(pieces.size(), 3);
    EXPECT_EQ(toHex(pieces.at(0).data, 2), "10 11");
    EXPECT_EQ(toHex(pieces.at(1).data, 2), "12 13");
    EXPECT_EQ(toHex(pieces.at(2).data, 1), "14");
}

TEST_F(KeyPreparation, CuttingNeverReadsPastTheValuesOfTheKey)
{
    KEY_ADDRESS whole = key("R_W", 0, 3000);
    whole.data[1020] = 0x21;
    whole.data[1023] = 0x24;
    QList<KEY_ADDRESS> pieces;
    groupingKey(whole, 510, pieces, 1);
    ASSERT_EQ(pieces.size(), 6);
    EXPECT_EQ(summary(pieces).back(), "1/R_W:2550+450");
    EXPECT_EQ(toHex(pieces.at(1).data, 4), "21 00 00 24");
}

TEST_F(KeyPreparation, ALimitBelowOneCutsIntoWhatOneWriteCarries)
{
    for (const int limit : {0, -1, -2147483647}) {
        QList<KEY_ADDRESS> words;
        KEY_ADDRESS wordKey = key("R_W", 0, 250);
        groupingKey(wordKey, limit, words, 0);
        EXPECT_THAT(summary(words), ElementsAre("1/R_W:0+123", "1/R_W:123+123", "1/R_W:246+4"));
        QList<KEY_ADDRESS> bits;
        KEY_ADDRESS bitKey = key("M_bit", 0, 1000, 1, -1);
        groupingKey(bitKey, limit, bits, 0);
        EXPECT_THAT(summary(bits), ElementsAre("1/M_bit:0+984", "1/M_bit:984+16"));
    }
}

TEST_F(KeyPreparation, ANegativeLengthIsOnePiece)
{
    QList<KEY_ADDRESS> pieces;
    KEY_ADDRESS whole = key("R_W", 100, -5);
    groupingKey(whole, 10, pieces, 1);
    EXPECT_THAT(summary(pieces), ElementsAre("1/R_W:100+-5"));
}

// Normalising one key.

TEST_F(KeyPreparation, BitsBecomeTheWordsThatHoldThem)
{
    const RegisterType& bits = registerType(2);
    EXPECT_EQ(normalised(key("M_bit", 20, 5), bits, mergeCyclic), "1/M_W:1+1");
    EXPECT_EQ(normalised(key("M_bit", 15, 2), bits, mergeCyclic), "1/M_W:0+2");
    EXPECT_EQ(normalised(key("M_bit", 0, 16), bits, mergeCyclic), "1/M_W:0+1");
    EXPECT_EQ(normalised(key("M_bit", 0, 17), bits, mergeCyclic), "1/M_W:0+2");
    EXPECT_EQ(normalised(key("M_bit", 31, 1), bits, mergeCyclic), "1/M_W:1+1");
    EXPECT_EQ(normalised(key("M_bit", 32, 0), bits, mergeCyclic), "1/M_W:2+0");
    // -20 is bit -4 of word -1: -4 + 5 = 1 bit.
    EXPECT_EQ(normalised(key("M_bit", -20, 5), bits, mergeCyclic), "1/M_W:-1+1");
    // Bit -5 lies in word 0 as divisions go: -5 + 3 leaves a remainder, so one word.
    EXPECT_EQ(normalised(key("M_bit", -5, 3), bits, mergeCyclic), "1/M_W:0+1");
}

TEST_F(KeyPreparation, WordsAndDoubleWordsTakeTheWordNameWithTheirLengthAsItIs)
{
    EXPECT_EQ(normalised(key("R_D", 10, 5), registerType(8), mergeCyclic), "1/R_W:10+5");
    EXPECT_EQ(normalised(key("I_W", 10, 5), registerType(4), mergeCyclic), "1/I_W:10+5");
    EXPECT_EQ(normalised(key("T", 10, 5), registerType(9), mergeCyclic), "1/T:10+5");
    EXPECT_EQ(normalised(key("C", 10, 5), registerType(10), mergeCyclic), "1/C:10+5");
}

TEST_F(KeyPreparation, RecipeKeysKeepTheirNamesAndTheirBits)
{
    EXPECT_EQ(normalised(key("M_bit", 20, 5), registerType(2), mergeRecipe), "1/M_bit:20+5");
    EXPECT_EQ(normalised(key("R_D", 10, 5), registerType(8), mergeRecipe), "1/R_D:10+5");
    EXPECT_EQ(normalised(key("R_W", 10, 5), registerType(7), mergeRecipe), "1/R_W:10+5");
}

TEST_F(KeyPreparation, BitsOfByteUnitsBecomeBytesAndAreNotScaledFurther)
{
    const RegisterType bits = registerRow("B_bit", "1", "8");
    EXPECT_EQ(normalised(key("B_bit", 20, 5), bits, mergeCyclic), "1/B_W:2+2");
    EXPECT_EQ(normalised(key("B_bit", 20, 4), bits, mergeCyclic), "1/B_W:2+1");
    EXPECT_EQ(normalised(key("B_bit", 20, 5), bits, mergeRecipe), "1/B_bit:20+5");
}

TEST_F(KeyPreparation, OnlyANameThatEndsInBitIsABitName)
{
    EXPECT_EQ(normalised(key("M_bits", 20, 5), registerRow("M_bits", "16", "16"), mergeCyclic),
              "1/M_W:20+5");
    EXPECT_EQ(normalised(key("M_2_bit", 20, 5), registerRow("M_2_bit", "1", "16"), mergeCyclic),
              "1/M_W:1+1");
    EXPECT_EQ(normalised(key("bit", 20, 5), registerRow("bit", "16", "16"), mergeCyclic),
              "1/bit:20+5");
}

TEST_F(KeyPreparation, LengthsAreScaledToSixteenBitUnits)
{
    EXPECT_EQ(normalised(key("B_W", 4, 5), registerRow("B_W", "16", "8"), mergeCyclic),
              "1/B_W:4+10");
    EXPECT_EQ(normalised(key("B_W", 4, 5), registerRow("B_W", "16", "32"), mergeCyclic),
              "1/B_W:4+2");
    EXPECT_EQ(normalised(key("B", 4, 5), registerRow("B", "16", "32"), mergeCyclic), "1/B:4+2");
    EXPECT_EQ(normalised(key("B_W", 4, -5), registerRow("B_W", "16", "32"), mergeCyclic),
              "1/B_W:4+-2");
    EXPECT_EQ(normalised(key("B_D", 4, 5), registerRow("B_D", "32", "8"), mergeRecipe),
              "1/B_D:4+10");
    EXPECT_EQ(normalised(key("B_D", 4, 5), registerRow("B_D", "32", "32"), mergeRecipe),
              "1/B_D:4+2");
}

TEST_F(KeyPreparation, AUnitOfOneBitIsScaledForRecipesOnly)
{
    EXPECT_EQ(normalised(key("B_W", 4, 5), registerRow("B_W", "16", "1"), mergeCyclic),
              "1/B_W:4+5");
    EXPECT_EQ(normalised(key("B_W", 4, 5), registerRow("B_W", "16", "1"), mergeRecipe),
              "1/B_W:4+80");
    EXPECT_EQ(normalised(key("B_W", 4, 5), registerRow("B_W", "1", "8"), mergeRecipe), "1/B_W:4+5");
}

TEST_F(KeyPreparation, CyclicLengthsAreScaledInSinglePrecisionAndRecipesInDouble)
{
    // 16777217 = 2^24 + 1 has no single-precision number of its own.
    const RegisterType type = registerRow("B_W", "16", "8");
    EXPECT_EQ(normalised(key("B_W", 0, 16777217), type, mergeCyclic), "1/B_W:0+33554432");
    EXPECT_EQ(normalised(key("B_W", 0, 16777217), type, mergeRecipe), "1/B_W:0+33554434");
}

} // namespace
