#include "address_merging.h"

#include <gmock/gmock.h>

#include "register_table.h"
#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

RegisterType rowOf(const char* regName, const char* dataBits, const char* unitBits)
{
    const QString row[rangeFieldCount] = {name("DDD"), name("0"),      name("127"), name(dataBits),
                                          name("RW"),  name(unitBits), name("0")};
    return deriveRegisterType(name(regName), row, 3, 0);
}

std::vector<int> listed(const QList<int>& list)
{
    return std::vector<int>(list.begin(), list.end());
}

class AddressMerging : public DriverTest {
protected:
    // What the engine makes of these keys; merged() keeps the whole records.
    std::vector<std::string> merge(const QList<KEY_ADDRESS>& keys, int mode = mergeCyclic)
    {
        DebugLines quiet;
        driver.groupStarts.clear();
        merged = keys;
        addrMerge(merged, mode);
        return summary(merged);
    }

    static std::string normalised(const KEY_ADDRESS& original, const RegisterType& type, int mode)
    {
        KEY_ADDRESS changed = original;
        normaliseKey(changed, type, mode);
        return summary(QList<KEY_ADDRESS>() << changed).front();
    }

    QList<KEY_ADDRESS> merged;
};

// May two keys join?

TEST_F(AddressMerging, KeysOfDifferentStationsStayApart)
{
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5, 1), key("R_W", 15, 5, 2), 0), 1);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5, 1), key("R_W", 15, 5, 2), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5, 2), key("R_W", 15, 5, 2), 0), 0);
}

TEST_F(AddressMerging, KeysOfDifferentNamesStayApartAndCaseCounts)
{
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("M_W", 15, 5), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("r_w", 15, 5), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("no such name", 10, 5), key("no such name", 15, 5), 0), 0);
}

TEST_F(AddressMerging, WithoutTheGapOnlyTouchingOrOverlappingKeysMayJoin)
{
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 12, 1), 0), 0);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 15, 1), 0), 0);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 16, 1), 0), 1);
}

TEST_F(AddressMerging, WithTheGapHolesUpToItMayBeBridged)
{
    configure("7#0#0#3#4");
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 19, 1), 1), 0);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 20, 1), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 19, 1), 0), 1);
}

TEST_F(AddressMerging, ANegativeGapKeepsEvenTouchingKeysApart)
{
    configure("7#0#0#3#-1");
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 15, 1), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 14, 1), 1), 0);
    EXPECT_EQ(judgeAddrMerge(key("R_W", 10, 5), key("R_W", 15, 1), 0), 0);
}

TEST_F(AddressMerging, TheHoleWrapsAroundLikeA32BitNumber)
{
    // 0x7FFFFFF8 + 100 wraps to -2147483556; 0x7FFFFFF9 minus that wraps to -99.
    EXPECT_EQ(judgeAddrMerge(key("R_W", 0x7FFFFFF8, 100), key("R_W", 0x7FFFFFF9, 1), 0), 0);
    // -2147483648 - 10 wraps to 2147483638: a huge hole.
    EXPECT_EQ(judgeAddrMerge(key("R_W", 5, 5), key("R_W", -2147483647 - 1, 1), 0), 1);
}

// Cutting one key into pieces.

TEST_F(AddressMerging, AKeyWithinTheLimitIsOnePiece)
{
    QList<KEY_ADDRESS> pieces;
    pieces << key("T", 1, 1);
    KEY_ADDRESS whole = key("R_W", 100, 10);
    groupingKey(whole, 10, pieces, 0);
    EXPECT_THAT(summary(pieces), ElementsAre("1/T:1+1", "1/R_W:100+10"));
}

TEST_F(AddressMerging, ALongKeyIsCutIntoPiecesOfTheLimitAndARemainder)
{
    QList<KEY_ADDRESS> pieces;
    KEY_ADDRESS whole = key("R_W", 100, 25, 3);
    groupingKey(whole, 10, pieces, 0);
    EXPECT_THAT(summary(pieces), ElementsAre("3/R_W:100+10", "3/R_W:110+10", "3/R_W:120+5"));
}

TEST_F(AddressMerging, AMultipleOfTheLimitLeavesNoRemainder)
{
    QList<KEY_ADDRESS> pieces;
    KEY_ADDRESS whole = key("R_W", 100, 20);
    groupingKey(whole, 10, pieces, 0);
    EXPECT_THAT(summary(pieces), ElementsAre("1/R_W:100+10", "1/R_W:110+10"));
}

TEST_F(AddressMerging, PiecesAreCopiesOfTheKey)
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

TEST_F(AddressMerging, PiecesOfWordsCarryTwoBytesAUnit)
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

TEST_F(AddressMerging, PiecesOfBitsCarryOneByteAUnit)
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

TEST_F(AddressMerging, CuttingNeverReadsPastTheValuesOfTheKey)
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

TEST_F(AddressMerging, ALimitBelowOneCutsIntoWhatOneWriteCarries)
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

TEST_F(AddressMerging, ANegativeLengthIsOnePiece)
{
    QList<KEY_ADDRESS> pieces;
    KEY_ADDRESS whole = key("R_W", 100, -5);
    groupingKey(whole, 10, pieces, 1);
    EXPECT_THAT(summary(pieces), ElementsAre("1/R_W:100+-5"));
}

// Normalising one key.

TEST_F(AddressMerging, BitsBecomeTheWordsThatHoldThem)
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
}

TEST_F(AddressMerging, WordsAndDoubleWordsTakeTheWordNameWithTheirLengthAsItIs)
{
    EXPECT_EQ(normalised(key("R_D", 10, 5), registerType(8), mergeCyclic), "1/R_W:10+5");
    EXPECT_EQ(normalised(key("I_W", 10, 5), registerType(4), mergeCyclic), "1/I_W:10+5");
    EXPECT_EQ(normalised(key("T", 10, 5), registerType(9), mergeCyclic), "1/T:10+5");
    EXPECT_EQ(normalised(key("C", 10, 5), registerType(10), mergeCyclic), "1/C:10+5");
}

TEST_F(AddressMerging, RecipeKeysKeepTheirNamesAndTheirBits)
{
    EXPECT_EQ(normalised(key("M_bit", 20, 5), registerType(2), mergeRecipe), "1/M_bit:20+5");
    EXPECT_EQ(normalised(key("R_D", 10, 5), registerType(8), mergeRecipe), "1/R_D:10+5");
    EXPECT_EQ(normalised(key("R_W", 10, 5), registerType(7), mergeRecipe), "1/R_W:10+5");
}

TEST_F(AddressMerging, BitsOfByteUnitsBecomeBytesAndAreNotScaledFurther)
{
    const RegisterType bits = rowOf("B_bit", "1", "8");
    EXPECT_EQ(normalised(key("B_bit", 20, 5), bits, mergeCyclic), "1/B_W:2+2");
    EXPECT_EQ(normalised(key("B_bit", 20, 4), bits, mergeCyclic), "1/B_W:2+1");
    EXPECT_EQ(normalised(key("B_bit", 20, 5), bits, mergeRecipe), "1/B_bit:20+5");
}

TEST_F(AddressMerging, OnlyANameThatEndsInBitIsABitName)
{
    EXPECT_EQ(normalised(key("M_bits", 20, 5), rowOf("M_bits", "16", "16"), mergeCyclic),
              "1/M_W:20+5");
    EXPECT_EQ(normalised(key("M_2_bit", 20, 5), rowOf("M_2_bit", "1", "16"), mergeCyclic),
              "1/M_W:1+1");
    EXPECT_EQ(normalised(key("bit", 20, 5), rowOf("bit", "16", "16"), mergeCyclic), "1/bit:20+5");
}

TEST_F(AddressMerging, LengthsAreScaledToSixteenBitUnits)
{
    EXPECT_EQ(normalised(key("B_W", 4, 5), rowOf("B_W", "16", "8"), mergeCyclic), "1/B_W:4+10");
    EXPECT_EQ(normalised(key("B_W", 4, 5), rowOf("B_W", "16", "32"), mergeCyclic), "1/B_W:4+2");
    EXPECT_EQ(normalised(key("B", 4, 5), rowOf("B", "16", "32"), mergeCyclic), "1/B:4+2");
    EXPECT_EQ(normalised(key("B_W", 4, -5), rowOf("B_W", "16", "32"), mergeCyclic), "1/B_W:4+-2");
    EXPECT_EQ(normalised(key("B_D", 4, 5), rowOf("B_D", "32", "8"), mergeRecipe), "1/B_D:4+10");
    EXPECT_EQ(normalised(key("B_D", 4, 5), rowOf("B_D", "32", "32"), mergeRecipe), "1/B_D:4+2");
}

TEST_F(AddressMerging, AUnitOfOneBitIsScaledForRecipesOnly)
{
    EXPECT_EQ(normalised(key("B_W", 4, 5), rowOf("B_W", "16", "1"), mergeCyclic), "1/B_W:4+5");
    EXPECT_EQ(normalised(key("B_W", 4, 5), rowOf("B_W", "16", "1"), mergeRecipe), "1/B_W:4+80");
    EXPECT_EQ(normalised(key("B_W", 4, 5), rowOf("B_W", "1", "8"), mergeRecipe), "1/B_W:4+5");
}

TEST_F(AddressMerging, CyclicLengthsAreScaledInSinglePrecisionAndRecipesInDouble)
{
    // 16777217 = 2^24 + 1 has no single-precision number of its own.
    const RegisterType type = rowOf("B_W", "16", "8");
    EXPECT_EQ(normalised(key("B_W", 0, 16777217), type, mergeCyclic), "1/B_W:0+33554432");
    EXPECT_EQ(normalised(key("B_W", 0, 16777217), type, mergeRecipe), "1/B_W:0+33554434");
}

// The engine: sorting.

TEST_F(AddressMerging, CyclicKeysAreSortedByStationThenTypeInTableOrderThenAddress)
{
    EXPECT_THAT(
        merge({key("C", 5, 1, 2), key("R_W", 900, 1, 1), key("T", 3, 1, 1), key("R_W", 50, 1, 1),
               key("I_W", 7, 1, 1), key("I_W", 100, 1, 2), key("M_bit", 160, 1, 1)}),
        ElementsAre("1/I_W:7+1", "1/M_W:10+1", "1/R_W:50+1", "1/R_W:900+1", "1/T:3+1",
                    "2/I_W:100+1", "2/C:5+1"));
}

TEST_F(AddressMerging, AnUnknownNameSortsOneTypeBelowTheFirst)
{
    // 720885 - 65535 + 3 = 655353: between C 2 and C 4 of the station before.
    EXPECT_THAT(
        merge({key("I_W", 0, 1, 1), key("C", 4, 1, 0), key("odd", 3, 1, 1), key("C", 2, 1, 0)}),
        ElementsAre("0/C:2+1", "1/odd:3+1", "0/C:4+1", "1/I_W:0+1"));
}

TEST_F(AddressMerging, SortKeysCompareAsUnsignedNumbers)
{
    // At station 0 an unknown name's key is -65535 + 3: as an unsigned number the greatest of all.
    EXPECT_THAT(merge({key("odd", 3, 1, 0), key("C", 127, 1, 200)}),
                ElementsAre("200/C:127+1", "0/odd:3+1"));
}

TEST_F(AddressMerging, EqualSortKeysKeepTheirOrder)
{
    KEY_ADDRESS first = key("R_W", 10, 1);
    first.userIndex = 1;
    KEY_ADDRESS second = key("R_W", 10, 2);
    second.userIndex = 2;
    EXPECT_THAT(merge({key("R_W", 20, 1), second, first}), ElementsAre("1/R_W:10+11"));
    EXPECT_EQ(merged.at(0).userIndex, 2);
    EXPECT_THAT(merge({key("R_W", 20, 1), first, second}), ElementsAre("1/R_W:10+11"));
    EXPECT_EQ(merged.at(0).userIndex, 1);
}

TEST_F(AddressMerging, RecipeKeysAreNotSorted)
{
    EXPECT_THAT(merge({key("R_W", 200, 2), key("M_W", 5, 1), key("I_W", 5, 1)}, mergeRecipe),
                ElementsAre("1/R_W:200+2", "1/M_W:5+1", "1/I_W:5+1"));
}

TEST_F(AddressMerging, AnUnknownNamePassesThroughUnconverted)
{
    EXPECT_THAT(merge({key("X_bit", 20, 5), key("X_bit", 25, 5), key("x_bit", 30, 5)}),
                ElementsAre("1/X_bit:20+10", "1/x_bit:30+5"));
}

// The engine: joining touching runs.

TEST_F(AddressMerging, TouchingKeysJoin)
{
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 15, 3)}, mergeRecipe),
                ElementsAre("1/R_W:10+8"));
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 15, 3)}), ElementsAre("1/R_W:10+8"));
}

TEST_F(AddressMerging, OverlappingKeysJoinAndAContainedOneAddsNothing)
{
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 12, 10)}), ElementsAre("1/R_W:10+12"));
    EXPECT_THAT(merge({key("R_W", 10, 50), key("R_W", 12, 10)}), ElementsAre("1/R_W:10+50"));
}

TEST_F(AddressMerging, AHoleStaysInTheRecipePlanAndIsBridgedInTheCyclicOne)
{
    configure("7#0#0#3#2");
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 17, 3)}, mergeRecipe),
                ElementsAre("1/R_W:10+5", "1/R_W:17+3"));
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 17, 3)}), ElementsAre("1/R_W:10+10"));
    configure("7#0#0#3#1");
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 17, 3)}),
                ElementsAre("1/R_W:10+5", "1/R_W:17+3"));
}

TEST_F(AddressMerging, OtherStationsAndOtherAreasNeverJoin)
{
    configure("7#0#0#3#1000");
    EXPECT_THAT(merge({key("R_W", 10, 5, 1), key("R_W", 15, 3, 2), key("M_W", 15, 3, 1)}),
                ElementsAre("1/M_W:15+3", "1/R_W:10+5", "2/R_W:15+3"));
    EXPECT_THAT(merge({key("T", 10, 5), key("C", 15, 5)}), ElementsAre("1/T:10+5", "1/C:15+5"));
}

TEST_F(AddressMerging, BitsWordsAndDoubleWordsOfOneAreaJoin)
{
    EXPECT_THAT(merge({key("R_W", 14, 1), key("R_D", 10, 4), key("R_bit", 240, 16)}),
                ElementsAre("1/R_W:10+6"));
}

TEST_F(AddressMerging, ARunGoesUpTo128UnitsAndNotOneFurther)
{
    for (const int mode : {mergeCyclic, mergeRecipe}) {
        EXPECT_THAT(merge({key("R_W", 0, 100), key("R_W", 100, 28)}, mode),
                    ElementsAre("1/R_W:0+128"));
        EXPECT_THAT(merge({key("R_W", 0, 100), key("R_W", 100, 29)}, mode),
                    ElementsAre("1/R_W:0+100", "1/R_W:100+29"));
    }
}

TEST_F(AddressMerging, AKeyAbove128UnitsIsCutFromTheFront)
{
    for (const int mode : {mergeCyclic, mergeRecipe}) {
        EXPECT_THAT(merge({key("R_W", 0, 300)}, mode),
                    ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+44"));
        EXPECT_THAT(merge({key("R_W", 0, 256)}, mode), ElementsAre("1/R_W:0+128", "1/R_W:128+128"));
        EXPECT_THAT(merge({key("R_W", 0, 128)}, mode), ElementsAre("1/R_W:0+128"));
        EXPECT_THAT(merge({key("R_W", 0, 129)}, mode), ElementsAre("1/R_W:0+128", "1/R_W:128+1"));
    }
}

TEST_F(AddressMerging, ALongKeyIsCutWhereverItStandsInTheList)
{
    for (const int mode : {mergeCyclic, mergeRecipe}) {
        EXPECT_THAT(merge({key("M_W", 0, 200), key("R_W", 0, 200), key("R_W", 1000, 260)}, mode),
                    ElementsAre("1/M_W:0+128", "1/M_W:128+72", "1/R_W:0+128", "1/R_W:128+72",
                                "1/R_W:1000+128", "1/R_W:1128+128", "1/R_W:1256+4"));
    }
}

TEST_F(AddressMerging, TheRestOfALongKeyGoesOnAsAnOpenRun)
{
    for (const int mode : {mergeCyclic, mergeRecipe}) {
        EXPECT_THAT(merge({key("R_W", 0, 300), key("R_W", 300, 20)}, mode),
                    ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+64"));
        EXPECT_THAT(merge({key("R_W", 0, 256), key("R_W", 256, 20)}, mode),
                    ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+20"));
    }
}

TEST_F(AddressMerging, AJoinPullsTheAddressOfTheOpenRunBackToTheLowerOne)
{
    // The rest 256+44 of the long key is open when 0+10 comes: it overlaps, and the lower address
    // wins while the length stays.
    EXPECT_THAT(merge({key("R_W", 0, 300), key("R_W", 0, 10)}, mergeRecipe),
                ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:0+44"));
    EXPECT_THAT(merge({key("R_W", 104, 4), key("R_W", 100, 4)}, mergeRecipe),
                ElementsAre("1/R_W:100+4"));
    // Bridging holes goes by the same rule: 128+128 takes 5+44 in and begins at 5.
    EXPECT_THAT(merge({key("R_W", 0, 300), key("R_W", 5, 2)}),
                ElementsAre("1/R_W:0+128", "1/R_W:5+128"));
}

TEST_F(AddressMerging, AShortKeyBeforeALongOneIsTakenInWhenHolesAreBridged)
{
    EXPECT_THAT(merge({key("R_W", 0, 10), key("R_W", 0, 300)}, mergeRecipe),
                ElementsAre("1/R_W:0+10", "1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+44"));
    EXPECT_THAT(merge({key("R_W", 0, 10), key("R_W", 0, 300)}),
                ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+44"));
}

TEST_F(AddressMerging, AMergedKeyKeepsTheOtherFieldsOfTheKeyThatOpenedItsRun)
{
    KEY_ADDRESS opener = key("R_W", 10, 5, 1, -1);
    opener.tag = name("opener");
    opener.hostValue = 11;
    opener.userIndex = 12;
    opener.extText = name("text of the opener");
    opener.data[0] = 13;
    KEY_ADDRESS joined = key("R_W", 15, 300, 1, 3);
    joined.tag = name("joined");
    joined.userIndex = 22;
    for (const int mode : {mergeCyclic, mergeRecipe}) {
        merge({opener, key("R_W", 15, 5)}, mode);
        ASSERT_EQ(merged.size(), 1);
        EXPECT_EQ(text(merged.at(0).tag), "opener");
        EXPECT_EQ(merged.at(0).hostValue, 11);
        EXPECT_EQ(merged.at(0).userIndex, 12);
        EXPECT_EQ(text(merged.at(0).extText), "text of the opener");
        EXPECT_EQ(merged.at(0).bitFlag, -1);
        EXPECT_EQ(merged.at(0).data[0], 13);
        merge({key("R_W", 0, 1), joined}, mode);
        ASSERT_EQ(merged.size(), 4);
        EXPECT_EQ(text(merged.at(3).tag), "joined");
        EXPECT_EQ(merged.at(3).userIndex, 22);
    }
}

TEST_F(AddressMerging, RecipeRunsAreListedByTheKeyThatOpenedThem)
{
    merge({key("R_W", 0, 5), key("R_W", 5, 5), key("R_W", 20, 5), key("R_W", 25, 120),
           key("M_W", 0, 1)},
          mergeRecipe);
    EXPECT_THAT(summary(merged), ElementsAre("1/R_W:0+10", "1/R_W:20+125", "1/M_W:0+1"));
    EXPECT_THAT(listed(driver.groupStarts), ElementsAre(0, 2, 4));
}

TEST_F(AddressMerging, ARunOpenedBecauseTheSpanIsFullIsListedToo)
{
    EXPECT_THAT(merge({key("R_W", 0, 100), key("R_W", 100, 100)}, mergeRecipe),
                ElementsAre("1/R_W:0+100", "1/R_W:100+100"));
    EXPECT_THAT(listed(driver.groupStarts), ElementsAre(0, 1));
}

TEST_F(AddressMerging, PiecesCutFromALongKeyAreNotListed)
{
    merge({key("R_W", 0, 300)}, mergeRecipe);
    EXPECT_THAT(listed(driver.groupStarts), ElementsAre(0));
    merge({key("M_W", 0, 300), key("R_W", 0, 300), key("R_W", 1000, 300)}, mergeRecipe);
    EXPECT_EQ(merged.size(), 9);
    EXPECT_THAT(listed(driver.groupStarts), ElementsAre(0, 1, 2));
}

TEST_F(AddressMerging, TheCyclicPlanLeavesTheRecipeRunsAlone)
{
    driver.groupStarts << 3 << 4;
    DebugLines quiet;
    QList<KEY_ADDRESS> keys = {key("R_W", 0, 5), key("M_W", 5, 5)};
    addrMerge(keys, mergeCyclic);
    EXPECT_THAT(listed(driver.groupStarts), ElementsAre(3, 4));
}

TEST_F(AddressMerging, NoKeysGiveNoRuns)
{
    EXPECT_THAT(merge({}, mergeCyclic), IsEmpty());
    EXPECT_THAT(merge({}, mergeRecipe), IsEmpty());
    EXPECT_THAT(listed(driver.groupStarts), IsEmpty());
}

// The engine: bridging holes.

TEST_F(AddressMerging, AHoleIsBridgedOnlyWithin128Units)
{
    EXPECT_THAT(merge({key("R_W", 0, 60), key("R_W", 70, 58)}), ElementsAre("1/R_W:0+128"));
    EXPECT_THAT(merge({key("R_W", 0, 60), key("R_W", 70, 59)}),
                ElementsAre("1/R_W:0+60", "1/R_W:70+59"));
}

TEST_F(AddressMerging, HolesAreBridgedOneAfterTheOther)
{
    configure("7#0#0#3#3");
    EXPECT_THAT(merge({key("R_W", 0, 1), key("R_W", 4, 1), key("R_W", 8, 1), key("R_W", 13, 1)}),
                ElementsAre("1/R_W:0+9", "1/R_W:13+1"));
}

TEST_F(AddressMerging, TheRestOfALongKeyTakesANeighbourAcrossAHole)
{
    EXPECT_THAT(merge({key("R_W", 0, 300), key("R_W", 302, 3)}),
                ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+49"));
}

TEST_F(AddressMerging, WithoutAGapOnlyTouchingRunsJoin)
{
    for (const char* property : {"7#0#0#3#0", "7#0#0#3#-1"}) {
        configure(property);
        EXPECT_THAT(merge({key("R_W", 0, 1), key("R_W", 1, 1), key("R_W", 3, 1)}),
                    ElementsAre("1/R_W:0+2", "1/R_W:3+1"));
    }
}

TEST_F(AddressMerging, LengthsOfZeroAndBelowGoThrough)
{
    EXPECT_THAT(merge({key("R_W", 10, 0)}), ElementsAre("1/R_W:10+0"));
    EXPECT_THAT(merge({key("R_W", 10, -3)}), ElementsAre("1/R_W:10+-3"));
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 12, -1)}), ElementsAre("1/R_W:10+5"));
}

TEST_F(AddressMerging, ExtremeAddressesWrapAroundAndDoNotFault)
{
    // 2147483640 + 20 wraps: the span to key 2 is 2147483640 + 4 - 2147483640 = 4.
    EXPECT_THAT(merge({key("R_W", 2147483640, 20), key("R_W", 2147483640, 4)}, mergeRecipe),
                ElementsAre("1/R_W:2147483640+20"));
    EXPECT_THAT(merge({key("R_W", 2147483640, 200)}, mergeRecipe),
                ElementsAre("1/R_W:2147483640+128", "1/R_W:-2147483528+72"));
}

TEST_F(AddressMerging, ALengthOf65536IsCutIntoFiveHundredAndTwelveRequests)
{
    const std::vector<std::string> plan = merge({key("R_W", 0, 65536)});
    ASSERT_EQ(plan.size(), 512u);
    EXPECT_EQ(plan.front(), "1/R_W:0+128");
    EXPECT_EQ(plan.back(), "1/R_W:65408+128");
}

} // namespace
