// Marking and reading for register types of every data width over every unit width.
#include <climits>

#include "cache/data_areas.h"
#include "cache_world.h"

namespace {

// Marking: what a host address of four (odd runs: three) from 5 on marks.

struct MarkRow {
    const char* label;
    const char* regName;
    const char* dataBits;
    const char* unitBits;
    int address;
    int length;
    Units marks;
};

std::ostream& operator<<(std::ostream& out, const MarkRow& row)
{
    return out << row.regName << ", data " << row.dataBits << ", unit " << row.unitBits << ", "
               << row.address << '+' << row.length;
}

const Units own5 = {"X5 views 1"};
const Units own5to6 = {"X5 views 1", "X6 views 1"};
const Units pair5 = {"X5 views 2", "X6 views 4"};
const Units pairs5to8 = {"X5 views 2", "X6 views 4", "X7 views 2", "X8 views 4"};
const Units four5to8 = {"X5 views 8", "X6 views 16", "X7 views 32", "X8 views 64"};
const Units fours5to12 = {"X5 views 8", "X6 views 16",  "X7 views 32",  "X8 views 64",
                          "X9 views 8", "X10 views 16", "X11 views 32", "X12 views 64"};
const Units bits14to17 = {"X0 bits C000", "X1 bits 0003"};
const Units bits6to9 = {"X0 bits 00C0", "X1 bits 0003"};
const Units noRecords = {};

class GenericMarking : public CacheTest, public ::testing::WithParamInterface<MarkRow> {};

TEST_P(GenericMarking, MarksTheRowsViewsAndNothingElse)
{
    const MarkRow& row = GetParam();
    markViews(registerRow(row.regName, row.dataBits, row.unitBits), 1, row.address, row.length);
    EXPECT_EQ(marks(), row.marks);
    markViews(registerRow(row.regName, row.dataBits, row.unitBits), 1, row.address, row.length);
    EXPECT_EQ(marks(), row.marks);
    EXPECT_EQ(notices(), Notices());
}

TEST_P(GenericMarking, LengthsOfZeroAndBelowMarkNothing)
{
    const MarkRow& row = GetParam();
    for (int length : {0, -1, -2, -3, INT_MIN, INT_MIN + 1}) {
        markViews(registerRow(row.regName, row.dataBits, row.unitBits), 1, row.address, length);
    }
    EXPECT_EQ(units(), Units());
}

TEST_P(GenericMarking, TheTimerMarkerChangesNothing)
{
    const MarkRow& row = GetParam();
    markViews(registerRow(row.regName, row.dataBits, row.unitBits, "1"), 1, row.address,
              row.length);
    EXPECT_EQ(marks(), row.marks);
}

const MarkRow markRows[] = {
    {"Data16Unit16", "X_W", "16", "16", 5, 2, own5to6},
    {"Data16Unit32", "X_W", "16", "32", 5, 2, own5to6},
    {"Data16Unit1", "X_W", "16", "1", 5, 2, own5to6},
    {"Data16Unit24", "X_W", "16", "24", 5, 2, own5to6},
    {"Data16Unit8", "X_W", "16", "8", 5, 2, pairs5to8},
    {"Data16Unit8One", "X_W", "16", "8", 5, 1, pair5},
    {"Data16NamedBit", "X_bit", "16", "16", 5, 2, own5to6},
    {"Data16NamedBitUnit8", "X_bit", "16", "8", 5, 2, pairs5to8},
    {"Data32Unit32", "X_D", "32", "32", 5, 4, own5to6},
    {"Data32Unit1", "X_D", "32", "1", 5, 4, own5to6},
    {"Data32Unit24", "X_D", "32", "24", 5, 4, own5to6},
    {"Data32Unit32Odd", "X_D", "32", "32", 5, 3, own5},
    {"Data32Unit32OddOne", "X_D", "32", "32", 5, 1, noRecords},
    {"Data32Unit16", "X_D", "32", "16", 5, 4, pairs5to8},
    {"Data32Unit16Odd", "X_D", "32", "16", 5, 3, pair5},
    {"Data32Unit16OddOne", "X_D", "32", "16", 5, 1, noRecords},
    {"Data32Unit8", "X_D", "32", "8", 5, 4, fours5to12},
    {"Data32Unit8Odd", "X_D", "32", "8", 5, 3, four5to8},
    {"Data32Unit8OddOne", "X_D", "32", "8", 5, 1, noRecords},
    {"Data32NamedBit", "X_bit", "32", "16", 5, 4, pairs5to8},
    {"Data8Unit8", "X_B", "8", "8", 5, 2, own5to6},
    {"Data8Unit16", "X_B", "8", "16", 5, 2, own5to6},
    {"Data8Unit32", "X_B", "8", "32", 5, 2, own5to6},
    {"Data8Unit1", "X_B", "8", "1", 5, 2, own5to6},
    {"Data1Unit1", "X", "1", "1", 5, 2, own5to6},
    {"Data1Unit8", "X", "1", "8", 5, 2, own5to6},
    {"Data1Unit16", "X", "1", "16", 5, 2, own5to6},
    {"Data1Unit32", "X", "1", "32", 5, 2, own5to6},
    {"Data1Suffixed", "X_Y", "1", "16", 5, 2, own5to6},
    {"Data1BitUnit16", "X_bit", "1", "16", 14, 4, bits14to17},
    {"Data1BitUnit8", "X_bit", "1", "8", 6, 4, bits6to9},
    {"Data1BitUnit32", "X_bit", "1", "32", 6, 4, noRecords},
    {"Data1BitUnit1", "X_bit", "1", "1", 6, 4, noRecords},
    {"Data8BitUnit16", "X_bit", "8", "16", 14, 4, bits14to17},
    {"Data8BitUnit8", "X_bit", "8", "8", 6, 4, bits6to9},
    {"Data8BitUnit32", "X_bit", "8", "32", 6, 4, noRecords},
    {"Data8BitUnit1", "X_bit", "8", "1", 6, 4, noRecords},
    {"Data1BitAnywhereInTheName", "X_bits", "1", "16", 14, 4, bits14to17},
    {"Data64Unit16", "X_L", "64", "16", 5, 4, noRecords},
    {"Data64Unit8", "X_L", "64", "8", 5, 4, noRecords},
    {"Data64NamedBit", "X_bit", "64", "16", 5, 4, noRecords},
    {"DataNoNumber", "X_L", "", "16", 5, 4, noRecords},
};

INSTANTIATE_TEST_SUITE_P(Rows, GenericMarking, ::testing::ValuesIn(markRows),
                         [](const auto& tested) { return tested.param.label; });

using GenericWidths = CacheTest;

TEST_F(GenericWidths, ViewsOfDifferentWidthsShareTheirByteUnits)
{
    markViews(registerRow("X_D", "32", "8"), 1, 4, 2);
    markViews(registerRow("X_W", "16", "8"), 1, 5, 1);
    markViews(registerRow("X_B", "8", "8"), 1, 6, 1);
    markViews(registerRow("X_bit", "1", "8"), 1, 7 * 8 + 3, 1);
    EXPECT_EQ(marks(),
              Units({"X4 views 8", "X5 views 18", "X6 views 37", "X7 views 64 bits 0008"}));
}

// Reading: units X 5 to X 12, where byte j of unit a is 0x10 + 0x30 j + a when the controller sent
// it, and 0x20 + 0x30 j + a when the host wrote it.

struct ReadRow {
    const char* label;
    const char* regName;
    const char* dataBits;
    const char* unitBits;
    int address;
    int length;
    const char* settled; // what is read when no unit is pending
    const char* second;  // when unit 6 is pending
    const char* all;     // when all are
};

std::ostream& operator<<(std::ostream& out, const ReadRow& row)
{
    return out << row.regName << ", data " << row.dataBits << ", unit " << row.unitBits << ", "
               << row.address << '+' << row.length;
}

class GenericReading : public CacheTest, public ::testing::WithParamInterface<ReadRow> {
protected:
    GenericReading()
    {
        putPending("X", 5, "15 45 75 A5", "25 55 85 B5");
        putPending("X", 6, "16 46 76 A6", "26 56 86 B6");
        putPending("X", 7, "17 47 77 A7", "27 57 87 B7");
        putPending("X", 8, "18 48 78 A8", "28 58 88 B8");
        putPending("X", 9, "19 49 79 A9", "29 59 89 B9");
        putPending("X", 10, "1A 4A 7A AA", "2A 5A 8A BA");
        putPending("X", 11, "1B 4B 7B AB", "2B 5B 8B BB");
        putPending("X", 12, "1C 4C 7C AC", "2C 5C 8C BC");
    }
    static void settleAll()
    {
        for (int i = 0; i < driver.dataAreas.size(); ++i) {
            driver.dataAreas[i].writePending = 0;
        }
    }
    static std::string readTheRow()
    {
        const ReadRow& row = GetParam();
        return readRow(registerRow(row.regName, row.dataBits, row.unitBits), row.address,
                       row.length);
    }
};

TEST_P(GenericReading, ShowsTheVisibleBytesOfTheRowsUnits)
{
    EXPECT_EQ(readTheRow(), GetParam().all);
    settleAll();
    EXPECT_EQ(readTheRow(), GetParam().settled);
    driver.dataAreas[1].writePending = 1;
    EXPECT_EQ(readTheRow(), GetParam().second);
    EXPECT_EQ(driver.dataAreas.size(), 8);
}

TEST_P(GenericReading, LengthsOfZeroAndBelowWriteNothing)
{
    const ReadRow& row = GetParam();
    driver.dataAreas.clear();
    for (int length : {0, -1, -2, -3, INT_MIN, INT_MIN + 1}) {
        EXPECT_EQ(readRow(registerRow(row.regName, row.dataBits, row.unitBits), 5, length), "");
    }
    EXPECT_EQ(units(), Units());
}

const ReadRow readRows[] = {
    {"Data16Unit16", "X_W", "16", "16", 5, 2, "15 45 16 46", "15 45 26 56", "25 55 26 56"},
    {"Data16Unit32", "X_W", "16", "32", 5, 2, "15 45 16 46", "15 45 26 56", "25 55 26 56"},
    {"Data16Unit1", "X_W", "16", "1", 5, 2, "15 45 16 46", "15 45 26 56", "25 55 26 56"},
    {"Data16Unit24", "X_W", "16", "24", 5, 2, "15 45 16 46", "15 45 26 56", "25 55 26 56"},
    {"Data16Unit8", "X_W", "16", "8", 5, 2, "15 16 17 18", "15 26 17 18", "25 26 27 28"},
    {"Data16NamedBit", "X_bit", "16", "16", 5, 2, "15 45 16 46", "15 45 26 56", "25 55 26 56"},
    {"Data32Unit16", "X_D", "32", "16", 5, 4, "15 45 16 46 17 47 18 48", "25 55 26 56 17 47 18 48",
     "25 55 26 56 27 57 28 58"},
    {"Data32Unit16Odd", "X_D", "32", "16", 5, 3, "15 45 16 46", "25 55 26 56", "25 55 26 56"},
    {"Data32Unit16OddOne", "X_D", "32", "16", 5, 1, "", "", ""},
    {"Data32Unit16FirstPending", "X_D", "32", "16", 6, 2, "16 46 17 47", "26 56 27 57",
     "26 56 27 57"},
    {"Data32Unit8", "X_D", "32", "8", 5, 4, "15 16 17 18 19 1A 1B 1C", "15 26 17 18 19 1A 1B 1C",
     "25 26 27 28 29 2A 2B 2C"},
    {"Data32Unit8Odd", "X_D", "32", "8", 5, 3, "15 16 17 18", "15 26 17 18", "25 26 27 28"},
    {"Data32Unit8OddOne", "X_D", "32", "8", 5, 1, "", "", ""},
    {"Data32Unit32", "X_D", "32", "32", 5, 4, "15 45 75 A5 16 46 76 A6", "15 45 75 A5 26 56 86 B6",
     "25 55 85 B5 26 56 86 B6"},
    {"Data32Unit32Odd", "X_D", "32", "32", 5, 3, "15 45 75 A5", "15 45 75 A5", "25 55 85 B5"},
    {"Data32Unit1", "X_D", "32", "1", 5, 4, "15 45 75 A5 16 46 76 A6", "15 45 75 A5 26 56 86 B6",
     "25 55 85 B5 26 56 86 B6"},
    {"Data32Unit24", "X_D", "32", "24", 5, 4, "15 45 75 A5 16 46 76 A6", "15 45 75 A5 26 56 86 B6",
     "25 55 85 B5 26 56 86 B6"},
    {"Data8Unit8", "X_B", "8", "8", 5, 3, "15 16 17", "15 26 17", "25 26 27"},
    {"Data8Unit16", "X_B", "8", "16", 5, 3, "15 16 17", "15 26 17", "25 26 27"},
    {"Data8Unit32", "X_B", "8", "32", 5, 3, "15 16 17", "15 26 17", "25 26 27"},
    {"Data8Unit1", "X_B", "8", "1", 5, 3, "15 16 17", "15 26 17", "25 26 27"},
    {"Data1Unit1", "X", "1", "1", 5, 3, "15 16 17", "15 26 17", "25 26 27"},
    {"Data1Unit8", "X", "1", "8", 5, 3, "15 16 17", "15 26 17", "25 26 27"},
    {"Data1Unit16", "X", "1", "16", 5, 3, "15 16 17", "15 26 17", "25 26 27"},
    {"Data1Unit32", "X", "1", "32", 5, 3, "15 16 17", "15 26 17", "25 26 27"},
    {"Data1Suffixed", "X_Y", "1", "16", 5, 3, "15 16 17", "15 26 17", "25 26 27"},
    // bits 14 and 15 of unit 5, then 0 to 7 of unit 6: 0x45, 0x16; written 0x55, 0x26
    {"Data1BitUnit16", "X_bit", "1", "16", 94, 10, "01 00 00 01 01 00 01 00 00 00",
     "01 00 00 01 01 00 00 01 00 00", "01 00 00 01 01 00 00 01 00 00"},
    {"Data8BitUnit16", "X_bit", "8", "16", 94, 10, "01 00 00 01 01 00 01 00 00 00",
     "01 00 00 01 01 00 00 01 00 00", "01 00 00 01 01 00 00 01 00 00"},
    // bits 4 to 7 of unit 5, then 0 to 5 of unit 6: 0x15, 0x16; written 0x25, 0x26
    {"Data1BitUnit8", "X_bit", "1", "8", 44, 10, "01 00 00 00 00 01 01 00 01 00",
     "01 00 00 00 00 01 01 00 00 01", "00 01 00 00 00 01 01 00 00 01"},
    {"Data8BitUnit8", "X_bit", "8", "8", 44, 10, "01 00 00 00 00 01 01 00 01 00",
     "01 00 00 00 00 01 01 00 00 01", "00 01 00 00 00 01 01 00 00 01"},
    {"Data1BitUnit32", "X_bit", "1", "32", 5, 4, "", "", ""},
    {"Data1BitUnit1", "X_bit", "1", "1", 5, 4, "", "", ""},
    {"Data8BitUnit32", "X_bit", "8", "32", 5, 4, "", "", ""},
    {"Data64Unit16", "X_L", "64", "16", 5, 4, "", "", ""},
    {"Data64Unit8", "X_L", "64", "8", 5, 4, "", "", ""},
    {"Data64NamedBit", "X_bit", "64", "16", 5, 4, "", "", ""},
    {"DataNoNumber", "X_L", "", "16", 5, 4, "", "", ""},
};

INSTANTIATE_TEST_SUITE_P(Rows, GenericReading, ::testing::ValuesIn(readRows),
                         [](const auto& tested) { return tested.param.label; });

TEST_F(GenericWidths, UnitsThatAreReadForTheFirstTimeAreZeroAndRemembered)
{
    EXPECT_EQ(readRow(registerRow("X_D", "32", "8"), 5, 2), "00 00 00 00");
    EXPECT_EQ(units(), Units({"1/X 5", "1/X 6", "1/X 7", "1/X 8"}));
    EXPECT_EQ(readRow(registerRow("Y_W", "16", "8"), 5, 1), "00 00");
    EXPECT_EQ(readRow(registerRow("Z_bit", "1", "8"), 15, 2), "00 00");
    EXPECT_EQ(units(),
              Units({"1/X 5", "1/X 6", "1/X 7", "1/X 8", "1/Y 5", "1/Y 6", "1/Z 1", "1/Z 2"}));
}

TEST_F(GenericWidths, FarByteUnitsWrapAround)
{
    markViews(registerRow("X_W", "16", "8"), 1, INT_MAX, 2);
    EXPECT_EQ(marks(), Units({"X2147483647 views 2", "X-2147483648 views 4", "X-2147483647 views 2",
                              "X-2147483646 views 4"}));
    driver.dataAreas.clear();
    put("X", INT_MAX, "01");
    put("X", INT_MIN, "02");
    put("X", INT_MIN + 1, "03");
    put("X", INT_MIN + 2, "04");
    EXPECT_EQ(readRow(registerRow("X_D", "32", "8"), INT_MAX, 2), "01 02 03 04");
    EXPECT_EQ(readRow(registerRow("X_W", "16", "8"), INT_MAX, 2), "01 02 03 04");
    EXPECT_EQ(readRow(registerRow("X_D", "32", "32"), INT_MAX, 4), "01 00 00 00 02 00 00 00");
    EXPECT_EQ(readRow(registerRow("X_B", "8", "8"), INT_MAX, 3), "01 02 03");
}

} // namespace
