// Storing host writes for register types of every data width over every unit width.
#include <climits>

#include "cache_world.h"

namespace {

struct Width {
    const char* dataBits;
    const char* unitBits;
};

using GenericStoring = CacheTest;

// 16-bit values

const char* const unitsOfOneWord[] = {"16", "32", "1", "24"};

TEST_F(GenericStoring, AWordFillsTheFirstTwoBytesOfOneUnit)
{
    for (const char* unitBits : unitsOfOneWord) {
        driver.dataAreas.clear();
        putPending("X", 6, "", "A1 A2 A3 A4");
        store(registerRow("X_W", "16", unitBits), 5, 2, "01 02 03 04");
        EXPECT_EQ(written(), Units({"X6 03 04 A3 A4", "X5 01 02 00 00"})) << unitBits;
    }
}

TEST_F(GenericStoring, AWordThatChangesIsAnnouncedAsAWord)
{
    for (const char* unitBits : unitsOfOneWord) {
        driver.dataAreas.clear();
        put("X", 5, "34 12 FF FF");
        put("X", 6, "00 00");
        watchAll(127, 0xFFFFFFFFu);
        store(registerRow("X_W", "16", unitBits), 5, 2, "34 12 00 80");
        EXPECT_EQ(
            notices(),
            (Notices{{7, 1, "X_bit", 111}, {7, 1, "X_W", 6}, {7, 1, "X_D", 6}, {7, 1, "X_D", 5}}))
            << unitBits;
    }
}

TEST_F(GenericStoring, AWordOverByteUnitsFillsOneByteOfEach)
{
    store(registerRow("X_W", "16", "8"), 5, 2, "01 02 03 04");
    EXPECT_EQ(written(),
              Units({"X5 01 00 00 00", "X6 02 00 00 00", "X7 03 00 00 00", "X8 04 00 00 00"}));
}

TEST_F(GenericStoring, AWordOverByteUnitsIsAnnouncedByteByByte)
{
    put("X", 5, "01 FF");
    put("X", 6, "02 FF");
    watchAll(127, 0xFF);
    store(registerRow("X_W", "16", "8"), 5, 1, "01 06");
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 50},
                                  {7, 1, "X_B", 6},
                                  {7, 1, "X_W", 6},
                                  {7, 1, "X_W", 5},
                                  {7, 1, "X_D", 6},
                                  {7, 1, "X_D", 5},
                                  {7, 1, "X_D", 4},
                                  {7, 1, "X_D", 3}}));
    store(registerRow("X_W", "16", "8"), 5, 1, "09 06");
    EXPECT_EQ(notices().front(), (Notice{7, 1, "X_bit", 43}));
}

// 32-bit values

TEST_F(GenericStoring, ADoubleWordOverWordUnitsFillsTheSecondFirst)
{
    store(registerRow("X_D", "32", "16"), 5, 5, "01 02 03 04 05 06 07 08 09 0A");
    EXPECT_EQ(written(),
              Units({"X6 03 04 00 00", "X5 01 02 00 00", "X8 07 08 00 00", "X7 05 06 00 00"}));
}

TEST_F(GenericStoring, ADoubleWordOverWordUnitsIsComparedAndAnnouncedWordByWord)
{
    put("X", 5, "01 02");
    put("X", 6, "03 04");
    watchAll(6, 0xFFFF);
    store(registerRow("X_D", "32", "16"), 5, 2, "01 02 03 84");
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 111}, {7, 1, "X_D", 6}, {7, 1, "X_D", 5}}));
    store(registerRow("X_D", "32", "16"), 5, 2, "01 82 03 84");
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 95}, {7, 1, "X_D", 5}, {7, 1, "X_D", 4}}));
}

const char* const unitsOfOneDoubleWord[] = {"32", "8", "1", "24"};

TEST_F(GenericStoring, ADoubleWordOverAnyOtherUnitIsStoredReversedInOne)
{
    for (const char* unitBits : unitsOfOneDoubleWord) {
        driver.dataAreas.clear();
        store(registerRow("X_D", "32", unitBits), 5, 2, "01 02 03 04");
        EXPECT_EQ(written(), Units({"X5 04 03 02 01"})) << unitBits;
    }
}

// The bytes that are stored come from every second byte, those that are compared from every fourth.
TEST_F(GenericStoring, FurtherDoubleWordsOverAnyOtherUnitAreStoredFromTwoBytesOn)
{
    for (const char* unitBits : unitsOfOneDoubleWord) {
        driver.dataAreas.clear();
        store(registerRow("X_D", "32", unitBits), 5, 7,
              "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E");
        EXPECT_EQ(written(), Units({"X5 04 03 02 01", "X6 06 05 04 03", "X7 08 07 06 05"}))
            << unitBits;
    }
}

TEST_F(GenericStoring, FurtherDoubleWordsOverAnyOtherUnitAreComparedFromFourBytesOn)
{
    for (const char* unitBits : unitsOfOneDoubleWord) {
        driver.dataAreas.clear();
        put("X", 5, "04 03 02 01");
        put("X", 6, "08 07 06 05");
        watchAll(1, 0);
        store(registerRow("X_D", "32", unitBits), 5, 4, "01 02 03 04 05 06 07 08");
        EXPECT_EQ(notices(), Notices()) << unitBits;
        EXPECT_EQ(written(), Units({"X5 04 03 02 01", "X6 06 05 04 03"}));
        store(registerRow("X_D", "32", unitBits), 5, 4, "01 02 03 04 05 06 07 08");
        EXPECT_EQ(notices(), (Notices{{7, 1, "X_D", 6}})) << unitBits;
    }
}

TEST_F(GenericStoring, ADoubleWordOverAnyOtherUnitIsComparedByteForByte)
{
    for (const char* unitBits : unitsOfOneDoubleWord) {
        for (const char* changed : {"81 02 03 04", "01 82 03 04", "01 02 83 04", "01 02 03 84"}) {
            driver.dataAreas.clear();
            put("X", 5, "04 03 02 01");
            watchAll(1, 0);
            store(registerRow("X_D", "32", unitBits), 5, 2, changed);
            EXPECT_EQ(notices(), (Notices{{7, 1, "X_D", 5}})) << unitBits << ": " << changed;
        }
    }
}

TEST_F(GenericStoring, ADoubleWordOverAnyOtherUnitIsAnnouncedAsADoubleWord)
{
    for (const char* unitBits : unitsOfOneDoubleWord) {
        driver.dataAreas.clear();
        put("X", 5, "04 03 02 01");
        watchAll(127, 0xFFFFFFFFu);
        store(registerRow("X_D", "32", unitBits), 5, 2, "81 02 43 05");
        EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 160},
                                      {7, 1, "X_bit", 174},
                                      {7, 1, "X_bit", 191},
                                      {7, 1, "X_D", 5}}))
            << unitBits;
    }
}

TEST_F(GenericStoring, AnOddTrailingWordOfADoubleWordIsNotStored)
{
    for (const char* unitBits : {"32", "16", "8", "1"}) {
        driver.dataAreas.clear();
        store(registerRow("X_D", "32", unitBits), 5, 1, "01 02");
        EXPECT_EQ(units(), Units()) << unitBits;
    }
}

// One value a unit

const Width oneValueWidths[] = {{"8", "8"}, {"8", "16"}, {"8", "32"}, {"8", "1"},
                                {"1", "8"}, {"1", "16"}, {"1", "32"}, {"1", "1"}};

TEST_F(GenericStoring, AOneValueUnitTakesItsByteAndTheHostIsToldUnderTheFullName)
{
    for (const Width& width : oneValueWidths) {
        driver.dataAreas.clear();
        putPending("X", 6, "", "A1 A2 A3 A4");
        put("X", 7, "03 FF");
        store(registerRow("X_Y", width.dataBits, width.unitBits), 5, 3, "01 02 03");
        EXPECT_EQ(written(), Units({"X6 02 A2 A3 A4", "X7 03 00 00 00", "X5 01 00 00 00"}));
        // watched or not
        EXPECT_EQ(notices(), (Notices{{7, 1, "X_Y", 5}, {7, 1, "X_Y", 6}}))
            << width.dataBits << " over " << width.unitBits;
    }
}

TEST_F(GenericStoring, AOneValueTimerIsAnnouncedUnderTheFullNameToo)
{
    for (const Width& width : oneValueWidths) {
        driver.dataAreas.clear();
        put("X", 5, "");
        watchAll(1, 0xFF);
        store(registerRow("X_Y", width.dataBits, width.unitBits, "1"), 5, 1, "07", 1);
        EXPECT_EQ(notices(), (Notices{{7, 1, "X_Y", 5}}));
    }
}

TEST_F(GenericStoring, OneValueUnitsOfAnotherStationAreAnnouncedForIt)
{
    store(registerRow("X", "8", "8"), 5, 1, "07", 9);
    EXPECT_EQ(notices(), (Notices{{7, 9, "X", 5}}));
}

TEST_F(GenericStoring, AOneValueUnitIsAnnouncedBeforeItIsStored)
{
    put("X", 5, "01");
    std::string seen;
    whenTold([&](const Notice&) { seen += readRow(registerRow("X", "8", "8"), 5, 2) + ";"; });
    store(registerRow("X", "8", "8"), 5, 2, "07 08");
    EXPECT_EQ(seen, "01 00;07 00;");
}

// Order and comparison

TEST_F(GenericStoring, EveryWiderUnitIsAnnouncedBeforeItIsStored)
{
    const struct {
        const char* regName;
        const char* dataBits;
        const char* unitBits;
    } rows[] = {{"X_W", "16", "16"}, {"X_W", "16", "8"}, {"X_D", "32", "32"}, {"X_D", "32", "8"}};
    for (const auto& row : rows) {
        driver.dataAreas.clear();
        put("X", 5, "01 02 03 04");
        watchAll(1, 0);
        std::string seen;
        whenTold([&](const Notice&) { seen = readRow(registerRow("X_D", "32", "32"), 5, 2); });
        store(registerRow(row.regName, row.dataBits, row.unitBits), 5, 2, "11 12 13 14");
        EXPECT_EQ(seen, "01 02 03 04") << row.dataBits << " over " << row.unitBits;
        whenTold(nullptr);
    }
}

TEST_F(GenericStoring, EveryPendingUnitIsComparedWithWhatWasWrittenBefore)
{
    const struct {
        const char* regName;
        const char* dataBits;
        const char* unitBits;
        const char* same;
        const char* device;
    } rows[] = {{"X_W", "16", "16", "11 12", "01 02"},
                {"X_D", "32", "32", "14 13 12 11", "04 03 02 01"},
                {"X_B", "8", "8", "11", "01"}};
    for (const auto& row : rows) {
        driver.dataAreas.clear();
        putPending("X", 5, "01 02 03 04", "11 12 13 14");
        watchAll(1, 0);
        const RegisterType type = registerRow(row.regName, row.dataBits, row.unitBits);
        const int length = row.dataBits == std::string("32") ? 2 : 1;
        store(type, 5, length, row.same);
        EXPECT_EQ(notices(), Notices()) << row.dataBits << " over " << row.unitBits;
        store(type, 5, length, row.device);
        EXPECT_EQ(notices().size(), 1u) << row.dataBits << " over " << row.unitBits;
    }
    driver.dataAreas.clear();
    putPending("X", 5, "01", "11");
    putPending("X", 6, "02", "12");
    watchAll(1, 0);
    store(registerRow("X_W", "16", "8"), 5, 1, "11 12");
    EXPECT_EQ(notices(), Notices());
    store(registerRow("X_W", "16", "8"), 5, 1, "01 02");
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_B", 5}, {7, 1, "X_B", 6}}));
    store(registerRow("X_D", "32", "16"), 5, 2, "01 00 02 00");
    EXPECT_EQ(notices(), Notices());
}

TEST_F(GenericStoring, TimersOfEveryUnitWidthAreAnnouncedUnderTheAreaName)
{
    const struct {
        const char* dataBits;
        const char* unitBits;
        Notices expected;
    } rows[] = {{"16", "16", {{7, 1, "X", 5}, {7, 1, "X", 6}}},
                {"16", "32", {{7, 1, "X", 5}, {7, 1, "X", 6}}},
                {"16", "8", {{7, 1, "X", 5}, {7, 1, "X", 6}, {7, 1, "X", 7}, {7, 1, "X", 8}}},
                {"32", "16", {{7, 1, "X", 6}, {7, 1, "X", 5}}},
                {"32", "32", {{7, 1, "X", 5}}},
                {"32", "8", {{7, 1, "X", 5}}}};
    for (const auto& row : rows) {
        driver.dataAreas.clear();
        for (int address = 5; address < 9; ++address) {
            put("X", address, "");
        }
        watchAll(127, 0xFFFFFFFFu);
        store(registerRow("X", row.dataBits, row.unitBits, "1"), 5, 2, "01 02 03 04");
        EXPECT_EQ(notices(), row.expected) << row.dataBits << " over " << row.unitBits;
    }
}

// Nothing to store

TEST_F(GenericStoring, OtherWidthsStoreNothing)
{
    const Width widths[] = {{"1", "32"}, {"1", "1"},   {"8", "32"},
                            {"8", "1"},  {"64", "16"}, {"", "8"}};
    for (const Width& width : widths) {
        store(registerRow("X_bit", width.dataBits, width.unitBits), 5, 2, "01 01 01 01");
    }
    store(registerRow("X_L", "64", "16"), 5, 2, "01 01 01 01");
    store(registerRow("X_L", "64", "8"), 5, 2, "01 01 01 01");
    store(registerRow("X_L", "", "16"), 5, 2, "01 01 01 01");
    EXPECT_EQ(units(), Units());
    EXPECT_EQ(notices(), Notices());
}

TEST_F(GenericStoring, ABitNameDoesNotTurnAWordIntoBits)
{
    store(registerRow("X_bit", "16", "16"), 5, 1, "01 02");
    EXPECT_EQ(written(), Units({"X5 01 02 00 00"}));
}

TEST_F(GenericStoring, LengthsOfZeroAndBelowStoreNothing)
{
    for (const char* dataBits : {"1", "8", "16", "32"}) {
        for (const char* unitBits : {"8", "16", "32"}) {
            for (const char* regName : {"X", "X_bit"}) {
                for (int length : {0, -1, -2, -3, INT_MIN, INT_MIN + 1}) {
                    store(registerRow(regName, dataBits, unitBits), 5, length, "01");
                }
            }
        }
    }
    EXPECT_EQ(units(), Units());
}

} // namespace
