// Settling host writes, and cutting them, for register types of every data width over every unit
// width.
#include <climits>

#include "cache/write_queue.h"
#include "cache_world.h"

namespace {

// Units X 4 to X 14 are pending: device bytes 01 02 03 04, written 05 06 07 08.
struct SettleRow {
    const char* label;
    const char* regName;
    const char* dataBits;
    const char* unitBits;
    int address;
    int length;
    int firstUnit;
    int lastUnit;
    const char* device; // of a settled unit, when the controller accepted the write
    Notices failed;     // with views 127 and bits 0 and 3 watched
};

std::ostream& operator<<(std::ostream& out, const SettleRow& row)
{
    return out << row.regName << ", data " << row.dataBits << ", unit " << row.unitBits << ", "
               << row.address << '+' << row.length;
}

// 05 06 back to 01 02 changes bits 2 and 10, which are not watched.
Notices word(int address)
{
    return {{7, 1, "X_W", address}, {7, 1, "X_D", address}, {7, 1, "X_D", address - 1}};
}

Notices dword(int address)
{
    return {
        {7, 1, "X_bit", address * 32}, {7, 1, "X_bit", address * 32 + 3}, {7, 1, "X_D", address}};
}

Notices byte(int address)
{
    return {
        {7, 1, "X_bit", address * 8}, {7, 1, "X_bit", address * 8 + 3}, {7, 1, "X_B", address},
        {7, 1, "X_W", address},       {7, 1, "X_W", address - 1},       {7, 1, "X_D", address},
        {7, 1, "X_D", address - 1},   {7, 1, "X_D", address - 2},       {7, 1, "X_D", address - 3}};
}

Notices wholeWord(int address)
{
    Notices all = {{7, 1, "X_bit", address * 16}, {7, 1, "X_bit", address * 16 + 3}};
    for (const Notice& notice : word(address)) {
        all.push_back(notice);
    }
    return all;
}

Notices operator+(Notices all, const Notices& more)
{
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

class GenericSettling : public CacheTest, public ::testing::WithParamInterface<SettleRow> {
protected:
    GenericSettling()
    {
        for (int address = 4; address <= 14; ++address) {
            putPending("X", address, "01 02 03 04", "05 06 07 08");
            watch("X", address, 127, 9);
        }
    }
    static void settleTheRow(bool accepted, const char* timerCounter = "0")
    {
        const SettleRow& row = GetParam();
        settle(registerRow(row.regName, row.dataBits, row.unitBits, timerCounter), row.address,
               row.length, accepted);
    }
};

TEST_P(GenericSettling, AnAcceptedWriteCopiesTheRowsBytesOfTheRowsUnits)
{
    const SettleRow& row = GetParam();
    settleTheRow(true);
    for (int address = 4; address <= 14; ++address) {
        const bool settled = address >= row.firstUnit && address <= row.lastUnit;
        EXPECT_EQ(isPending("X", address), !settled) << address;
        EXPECT_EQ(device("X", address), settled ? row.device : "01 02 03 04") << address;
        EXPECT_EQ(pending("X", address), "05 06 07 08") << address;
    }
    EXPECT_EQ(driver.dataAreas.size(), 11);
}

TEST_P(GenericSettling, AFailedWriteKeepsTheDeviceBytesAndAnnouncesTheRowsUnits)
{
    const SettleRow& row = GetParam();
    settleTheRow(false);
    for (int address = 4; address <= 14; ++address) {
        const bool settled = address >= row.firstUnit && address <= row.lastUnit;
        EXPECT_EQ(isPending("X", address), !settled) << address;
        EXPECT_EQ(device("X", address), "01 02 03 04") << address;
    }
    EXPECT_EQ(notices(), row.failed);
}

TEST_P(GenericSettling, AnAcceptedWriteIsAnnouncedOnlyForBits)
{
    settleTheRow(true);
    const bool bits = std::string(GetParam().regName) == "X_bit";
    EXPECT_EQ(notices(), bits ? GetParam().failed : Notices());
}

TEST_P(GenericSettling, ReadingBackFromTheAnnouncementShowsTheDeviceValue)
{
    const SettleRow& row = GetParam();
    std::string seen;
    whenTold([&](const Notice&) {
        if (seen.empty()) {
            seen = readRow(registerRow("X_D", "32", "32"), row.firstUnit, 2);
        }
    });
    settleTheRow(false);
    EXPECT_EQ(seen, row.failed.empty() ? "" : "01 02 03 04");
}

TEST_P(GenericSettling, LengthsOfZeroAndBelowSettleNothing)
{
    const SettleRow& row = GetParam();
    for (int length : {0, -1, -2, -3, INT_MIN, INT_MIN + 1}) {
        const RegisterType type = registerRow(row.regName, row.dataBits, row.unitBits);
        settle(type, 5, length, true);
        settle(type, 5, length, false);
    }
    EXPECT_EQ(notices(), Notices());
    EXPECT_EQ(driver.dataAreas.size(), 11);
}

const Notices twoWords = word(5) + word(6);
const Notices twoDwords = dword(5) + dword(6);
const Notices twoBytes = byte(5) + byte(6);
const Notices twoNamed = {{7, 1, "X", 5}, {7, 1, "X", 6}};

const SettleRow settleRows[] = {
    {"Data16Unit16", "X_W", "16", "16", 5, 2, 5, 6, "05 06 03 04", twoWords},
    {"Data16Unit32", "X_W", "16", "32", 5, 2, 5, 6, "05 06 03 04", twoWords},
    {"Data16Unit1", "X_W", "16", "1", 5, 2, 5, 6, "05 06 03 04", twoWords},
    {"Data16Unit24", "X_W", "16", "24", 5, 2, 5, 6, "05 06 03 04", twoWords},
    {"Data16Unit8", "X_W", "16", "8", 5, 1, 5, 6, "05 02 03 04", twoBytes},
    {"Data16Unit8Two", "X_W", "16", "8", 5, 2, 5, 8, "05 02 03 04", twoBytes + byte(7) + byte(8)},
    {"Data32Unit16", "X_D", "32", "16", 5, 2, 5, 6, "05 06 03 04", twoWords},
    {"Data32Unit16Odd", "X_D", "32", "16", 5, 1, 5, 5, "05 06 03 04", word(5)},
    {"Data32Unit32", "X_D", "32", "32", 5, 2, 5, 6, "05 06 07 08", twoDwords},
    {"Data32Unit32Odd", "X_D", "32", "32", 5, 1, 5, 5, "05 06 07 08", dword(5)},
    {"Data32Unit1", "X_D", "32", "1", 5, 2, 5, 6, "05 06 07 08", twoDwords},
    {"Data32Unit24", "X_D", "32", "24", 5, 2, 5, 6, "05 06 07 08", twoDwords},
    // what storing touched: one unit a value
    {"Data32Unit8", "X_D", "32", "8", 5, 4, 5, 6, "05 02 03 04", twoBytes},
    {"Data32Unit8Odd", "X_D", "32", "8", 5, 5, 5, 6, "05 02 03 04", twoBytes},
    {"Data32Unit8One", "X_D", "32", "8", 5, 1, 0, -1, "", {}},
    {"Data8Unit8", "X_B", "8", "8", 5, 2, 5, 6, "05 02 03 04", twoBytes},
    {"Data8Unit16", "X_B", "8", "16", 5, 2, 5, 6, "05 02 03 04", twoBytes},
    {"Data8Unit32", "X_B", "8", "32", 5, 2, 5, 6, "05 02 03 04", twoBytes},
    {"Data8Unit1", "X_B", "8", "1", 5, 2, 5, 6, "05 02 03 04", twoBytes},
    {"Data1Unit1", "X", "1", "1", 5, 2, 5, 6, "05 02 03 04", twoNamed},
    {"Data1Unit8", "X", "1", "8", 5, 2, 5, 6, "05 02 03 04", twoNamed},
    {"Data1Unit16", "X", "1", "16", 5, 2, 5, 6, "05 02 03 04", twoNamed},
    {"Data1Unit32", "X", "1", "32", 5, 2, 5, 6, "05 02 03 04", twoNamed},
    // bit 2 of unit 5 was written as 1 and is 0 in the controller
    {"Data1BitUnit16", "X_bit", "1", "16", 82, 1, 5, 5, "05 02 03 04", wholeWord(5)},
    {"Data1BitUnit16High", "X_bit", "1", "16", 90, 1, 5, 5, "01 06 03 04", wholeWord(5)},
    {"Data8BitUnit16", "X_bit", "8", "16", 82, 1, 5, 5, "05 02 03 04", wholeWord(5)},
    {"Data1BitUnit8", "X_bit", "1", "8", 42, 1, 5, 5, "05 02 03 04", byte(5)},
    {"Data8BitUnit8", "X_bit", "8", "8", 42, 1, 5, 5, "05 02 03 04", byte(5)},
    {"Data1BitUnit32", "X_bit", "1", "32", 5, 2, 0, -1, "", {}},
    {"Data1BitUnit1", "X_bit", "1", "1", 5, 2, 0, -1, "", {}},
    {"Data8BitUnit32", "X_bit", "8", "32", 5, 2, 0, -1, "", {}},
    {"Data64Unit16", "X_L", "64", "16", 5, 2, 0, -1, "", {}},
    {"Data64Unit8", "X_L", "64", "8", 5, 2, 0, -1, "", {}},
    {"DataNoNumber", "X_L", "", "16", 5, 2, 0, -1, "", {}},
};

INSTANTIATE_TEST_SUITE_P(Rows, GenericSettling, ::testing::ValuesIn(settleRows),
                         [](const auto& tested) { return tested.param.label; });

using GenericSettlingRules = CacheTest;

TEST_F(GenericSettlingRules, FailedTimersOfEveryUnitWidthAreAnnouncedUnderTheAreaName)
{
    const struct {
        const char* regName;
        const char* dataBits;
        const char* unitBits;
        int address;
        int length;
    } rows[] = {
        {"X", "16", "16", 5, 1},     {"X", "16", "32", 5, 1},    {"X", "32", "16", 5, 1},
        {"X", "32", "32", 5, 1},     {"X", "32", "8", 5, 2},     {"X", "8", "8", 5, 1},
        {"X_bit", "1", "16", 82, 1}, {"X_bit", "1", "8", 42, 1}, {"X_bit", "8", "8", 42, 1}};
    for (const auto& row : rows) {
        driver.dataAreas.clear();
        putPending("X", 5, "01 02 03 04", "05 06 07 08");
        watch("X", 5, 127, 0xFF);
        settle(registerRow(row.regName, row.dataBits, row.unitBits, "1"), row.address, row.length,
               false);
        EXPECT_EQ(notices(), (Notices{{7, 1, "X", 5}})) << row.dataBits << " over " << row.unitBits;
    }
    driver.dataAreas.clear();
    putPending("X", 5, "01", "05");
    putPending("X", 6, "01", "05");
    watch("X", 5, 127, 0xFF);
    watch("X", 6, 127, 0xFF);
    settle(registerRow("X", "16", "8", "1"), 5, 1, false);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 5}, {7, 1, "X", 6}}));
}

// The units of a one-bit type without "_bit" are settled under the full register name, though they
// are stored under the area.
TEST_F(GenericSettlingRules, AOneBitTypeIsSettledUnderItsFullName)
{
    const RegisterType type = registerRow("X_Y", "1", "1");
    store(type, 5, 1, "07");
    notices();
    settle(type, 5, 1, true);
    EXPECT_EQ(units(), Units({"1/X 5", "1/X_Y 5"}));
    EXPECT_TRUE(isPending("X", 5));

    putPending("X_Y", 6, "01 02", "03 04");
    settle(type, 6, 1, true);
    EXPECT_FALSE(isPending("X_Y", 6));
    EXPECT_EQ(device("X_Y", 6), "03 02 00 00");
    EXPECT_EQ(notices(), Notices());
    settle(type, 6, 1, false);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_Y", 6}}));
}

TEST_F(GenericSettlingRules, AnEightBitTypeIsSettledUnderItsArea)
{
    const RegisterType type = registerRow("X_Y", "8", "8");
    store(type, 5, 1, "07");
    settle(type, 5, 1, true);
    EXPECT_EQ(units(), Units({"1/X 5"}));
    EXPECT_EQ(device("X", 5), "07 00 00 00");
}

TEST_F(GenericSettlingRules, AFailedOneBitTypeIsAnnouncedForItsStationWatchedOrNot)
{
    settle(registerRow("X", "1", "1"), 5, 2, false, 9);
    EXPECT_EQ(notices(), (Notices{{7, 9, "X", 5}, {7, 9, "X", 6}}));
}

TEST_F(GenericSettlingRules, EveryBitOfAByteUnitIsSettledAndAnnouncedByItself)
{
    const RegisterType type = registerRow("X_bit", "1", "8");
    put("X", 0, "00 77");
    watch("X", 0, 1);
    store(type, 6, 3, "01 01 01");
    notices();
    settle(type, 6, 3, true);
    EXPECT_EQ(device("X", 0), "C0 77 00 00");
    EXPECT_EQ(device("X", 1), "01 00 00 00");
    EXPECT_FALSE(isPending("X", 0));
    EXPECT_FALSE(isPending("X", 1));
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_B", 0}, {7, 1, "X_B", 0}}));
}

TEST_F(GenericSettlingRules, BitsOfAByteUnitAreCountedDownInTheirOwnPlace)
{
    putPending("X", 1, "", "");
    driver.dataAreas[0].pendingBits = 0xC000; // both counts of bit 7
    settle(registerRow("X_bit", "1", "8"), 15, 1, true);
    EXPECT_EQ(pendingBits("X", 1), 0x8000u);
    EXPECT_TRUE(isPending("X", 1));
    settle(registerRow("X_bit", "1", "8"), 15, 1, true);
    EXPECT_EQ(pendingBits("X", 1), 0u);
    EXPECT_FALSE(isPending("X", 1));
}

TEST_F(GenericSettlingRules, ABitNameDoesNotTurnAWordIntoBits)
{
    putPending("X", 5, "01 02", "05 06");
    settle(registerRow("X_bit", "16", "16"), 5, 1, true);
    EXPECT_EQ(device("X", 5), "05 06 00 00");
}

TEST_F(GenericSettlingRules, FarUnitsWrapAround)
{
    settle(registerRow("X_W", "16", "8"), INT_MAX, 1, true);
    EXPECT_EQ(units(), Units({"1/X 2147483647", "1/X -2147483648"}));
    settle(registerRow("Y_B", "8", "8"), INT_MAX, 2, true);
    settle(registerRow("Z_D", "32", "32"), INT_MAX, 2, false);
    EXPECT_EQ(driver.dataAreas.size(), 6);
}

// Cutting: pieces in units of the controller

KEY_ADDRESS rescaled(const RegisterType& type, int address, int length, int& shortened)
{
    KEY_ADDRESS piece = key("X", address, length);
    rescalePiece(piece.address, piece.length, type, shortened);
    return piece;
}

TEST(RescalePiece, PiecesOverWordUnitsStayAsTheyAre)
{
    int shortened = 0;
    const QList<KEY_ADDRESS> pieces = {rescaled(registerRow("X", "16", "16"), 100, 10, shortened),
                                       rescaled(registerRow("X", "32", "16"), 110, 3, shortened)};
    EXPECT_EQ(summary(pieces), Units({"1/X:100+10", "1/X:110+3"}));
    EXPECT_EQ(shortened, 0);
}

TEST(RescalePiece, PiecesOverDoubleWordUnitsHalveAndMoveDownByWhatTheEarlierOnesLost)
{
    int shortened = 0;
    const RegisterType type = registerRow("X_D", "32", "32");
    const QList<KEY_ADDRESS> pieces = {rescaled(type, 100, 10, shortened),
                                       rescaled(type, 110, 10, shortened),
                                       rescaled(type, 120, 5, shortened)};
    EXPECT_EQ(summary(pieces), Units({"1/X:100+5", "1/X:105+5", "1/X:110+2"}));
    EXPECT_EQ(shortened, 13);
}

TEST(RescalePiece, PiecesOverByteUnitsDoubleAndMoveUp)
{
    int shortened = 0;
    const RegisterType type = registerRow("X_W", "16", "8");
    const QList<KEY_ADDRESS> pieces = {rescaled(type, 100, 10, shortened),
                                       rescaled(type, 110, 10, shortened),
                                       rescaled(type, 120, 5, shortened)};
    EXPECT_EQ(summary(pieces), Units({"1/X:100+20", "1/X:120+20", "1/X:140+10"}));
    EXPECT_EQ(shortened, -25);
}

TEST(RescalePiece, TheLengthIsCutToAnInteger)
{
    int shortened = 0;
    EXPECT_EQ(rescaled(registerRow("X", "16", "24"), 0, 10, shortened).length, 6);
    EXPECT_EQ(shortened, 4);
    EXPECT_EQ(rescaled(registerRow("X", "16", "32"), 0, 1, shortened).length, 0);
    EXPECT_EQ(shortened, 5);
}

} // namespace
