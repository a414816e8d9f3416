#include "change_notifiers.h"

#include <climits>

#include "cache_world.h"

namespace {

class ChangeNotifiers : public CacheTest {
protected:
    // Announces a change of the only unit in the cache.
    static void word(int oldValue, int newValue, int timerCounter = 0)
    {
        _wordDataChange(&oldValue, &newValue, 0, timerCounter);
    }
    static void dword(int oldValue, int newValue, int timerCounter = 0)
    {
        _dwordDataChange(&oldValue, &newValue, 0, timerCounter);
    }
    static void byte(unsigned char oldValue, unsigned char newValue, int timerCounter = 0)
    {
        _byteDataChange(&oldValue, &newValue, 0, timerCounter);
    }
    static void unitWatched(int address, int viewFlags, unsigned int bitMonitor = 0)
    {
        driver.dataAreas.clear();
        put("X", address, "");
        watch("X", address, viewFlags, bitMonitor);
    }
};

// 16-bit units

TEST_F(ChangeNotifiers, AWordAnnouncesTheWatchedBitsThatDiffer)
{
    unitWatched(3, 0, 0xFFFF);
    word(0x0201, 0x1234);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 48},
                                  {7, 1, "X_bit", 50},
                                  {7, 1, "X_bit", 52},
                                  {7, 1, "X_bit", 53},
                                  {7, 1, "X_bit", 60}}));
    unitWatched(3, 0, 0x1002);
    word(0x0201, 0x1234);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 60}}));
}

TEST_F(ChangeNotifiers, EveryBitOfAWordIsAnnouncedAtItsOwnAddress)
{
    for (int k = 0; k < 16; ++k) {
        unitWatched(2, 0, 1u << k);
        word(0, 1 << k);
        word(1 << k, 0);
        word(0, 0xFFFF ^ (1 << k));
        EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 32 + k}, {7, 1, "X_bit", 32 + k}}));
    }
}

TEST_F(ChangeNotifiers, AWordHasSixteenBits)
{
    unitWatched(2, 0, 0xFFFF0000u);
    word(0, -1);
    _wordDataChange(nullptr, nullptr, 0, 0);
    EXPECT_EQ(notices(), Notices());
    unitWatched(2, 0, 0xFFFFFFFFu);
    word(0, 0x7FFF0000);
    EXPECT_EQ(notices(), Notices());
}

TEST_F(ChangeNotifiers, AMissingWordValueAnnouncesEveryWatchedBit)
{
    int value = 0x1234;
    const Notices both = {{7, 1, "X_bit", 48}, {7, 1, "X_bit", 63}};
    unitWatched(3, 0, 0x8001);
    _wordDataChange(nullptr, &value, 0, 0);
    EXPECT_EQ(notices(), both);
    _wordDataChange(&value, nullptr, 0, 0);
    EXPECT_EQ(notices(), both);
    _wordDataChange(nullptr, nullptr, 0, 0);
    EXPECT_EQ(notices(), both);
}

TEST_F(ChangeNotifiers, TheWordViewsAreAnnouncedWhetherTheValueDiffersOrNot)
{
    unitWatched(3, 1 | 2 | 4);
    word(5, 5);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_W", 3}, {7, 1, "X_D", 3}, {7, 1, "X_D", 2}}));
}

TEST_F(ChangeNotifiers, EachViewOfAWordIsAnnouncedByItsOwnMark)
{
    unitWatched(3, 1);
    word(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_W", 3}}));
    unitWatched(3, 2);
    word(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_D", 3}}));
    unitWatched(3, 4);
    word(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_D", 2}}));
    unitWatched(3, 8 | 16 | 32 | 64);
    word(0, 1);
    EXPECT_EQ(notices(), Notices());
    unitWatched(3, 0);
    word(0, 1);
    EXPECT_EQ(notices(), Notices());
}

TEST_F(ChangeNotifiers, BitsComeBeforeTheWordAndTheWordBeforeTheDoubleWords)
{
    unitWatched(3, 7, 0x8001);
    word(0, 0xFFFF);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 48},
                                  {7, 1, "X_bit", 63},
                                  {7, 1, "X_W", 3},
                                  {7, 1, "X_D", 3},
                                  {7, 1, "X_D", 2}}));
}

TEST_F(ChangeNotifiers, NoDoubleWordIsAnnouncedBelowAddressZero)
{
    unitWatched(0, 7);
    word(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_W", 0}, {7, 1, "X_D", 0}}));
    unitWatched(1, 4);
    word(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_D", 0}}));
    unitWatched(-1, 7, 1);
    word(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", -16}, {7, 1, "X_W", -1}}));
}

TEST_F(ChangeNotifiers, ATimerIsAnnouncedUnderTheAreaNameAndNothingElse)
{
    unitWatched(3, 7, 0xFFFF);
    word(0, 0xFFFF, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 3}}));
    word(5, 5, 2);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 3}}));
    word(0, 1, -1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 3}}));
    _wordDataChange(nullptr, nullptr, 0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 3}}));
    unitWatched(3, 6, 0xFFFF);
    word(0, 0xFFFF, 1);
    EXPECT_EQ(notices(), Notices());
}

// The mark of the own width is the flags modulo 2: with the sign bit set that is -1, not 1.
TEST_F(ChangeNotifiers, NegativeMarksWatchNoOwnWidthButTheWiderViews)
{
    unitWatched(3, -1);
    word(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_D", 3}, {7, 1, "X_D", 2}}));
    word(0, 1, 1);
    EXPECT_EQ(notices(), Notices());
    dword(0, 1);
    EXPECT_EQ(notices(), Notices());
    dword(0, 1, 1);
    EXPECT_EQ(notices(), Notices());
    byte(0, 1, 1);
    EXPECT_EQ(notices(), Notices());
    byte(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_W", 3},
                                  {7, 1, "X_W", 2},
                                  {7, 1, "X_D", 3},
                                  {7, 1, "X_D", 2},
                                  {7, 1, "X_D", 1},
                                  {7, 1, "X_D", 0}}));
    _bitDataChange(0);
    EXPECT_EQ(notices(), Notices());
    unitWatched(3, INT_MIN);
    word(0, 1);
    EXPECT_EQ(notices(), Notices());
}

TEST_F(ChangeNotifiers, BitAddressesOfFarUnitsWrapAround)
{
    unitWatched(INT_MAX, 1, 0x8001);
    word(0, 0xFFFF);
    EXPECT_EQ(notices(),
              (Notices{{7, 1, "X_bit", -16}, {7, 1, "X_bit", -1}, {7, 1, "X_W", INT_MAX}}));
    unitWatched(INT_MIN, 7, 2);
    word(0, 0xFFFF);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 1}, {7, 1, "X_W", INT_MIN}}));
    unitWatched(INT_MAX, 0, 1);
    dword(0, 1);
    byte(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", -32}, {7, 1, "X_bit", -8}}));
}

// 32-bit units

TEST_F(ChangeNotifiers, EveryBitOfADoubleWordUnitIsAnnouncedAtItsOwnAddress)
{
    for (int k = 0; k < 32; ++k) {
        const int mask = k == 31 ? INT_MIN : 1 << k;
        unitWatched(2, 0, 1u << k);
        dword(0, mask);
        dword(mask, 0);
        dword(-1, ~mask);
        dword(0, ~mask);
        const Notice expected = {7, 1, "X_bit", 64 + k};
        EXPECT_EQ(notices(), (Notices{expected, expected, expected}));
    }
}

TEST_F(ChangeNotifiers, AMissingDoubleWordValueAnnouncesEveryWatchedBit)
{
    int value = 0;
    const Notices both = {{7, 1, "X_bit", 64}, {7, 1, "X_bit", 95}};
    unitWatched(2, 0, 0x80000001u);
    _dwordDataChange(nullptr, &value, 0, 0);
    EXPECT_EQ(notices(), both);
    _dwordDataChange(&value, nullptr, 0, 0);
    EXPECT_EQ(notices(), both);
    _dwordDataChange(nullptr, nullptr, 0, 0);
    EXPECT_EQ(notices(), both);
}

TEST_F(ChangeNotifiers, ADoubleWordUnitAnnouncesItsBitsAndItselfAndNoWiderView)
{
    unitWatched(2, 127, 1);
    dword(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 64}, {7, 1, "X_D", 2}}));
    dword(1, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_D", 2}}));
    unitWatched(2, 126);
    dword(0, 1);
    EXPECT_EQ(notices(), Notices());
    unitWatched(-2, 1);
    dword(0, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_D", -2}}));
}

TEST_F(ChangeNotifiers, ADoubleWordTimerIsAnnouncedUnderTheAreaNameAndNothingElse)
{
    unitWatched(2, 1, 0xFFFFFFFFu);
    dword(0, -1, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 2}}));
    dword(0, -1, 3);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 2}}));
    unitWatched(2, 2, 0xFFFFFFFFu);
    dword(0, -1, 1);
    EXPECT_EQ(notices(), Notices());
}

// 8-bit units

TEST_F(ChangeNotifiers, EveryBitOfAByteUnitIsAnnouncedAtItsOwnAddress)
{
    for (int k = 0; k < 8; ++k) {
        unitWatched(2, 0, 1u << k);
        byte(0, static_cast<unsigned char>(1 << k));
        byte(static_cast<unsigned char>(1 << k), 0);
        byte(0, static_cast<unsigned char>(0xFF ^ (1 << k)));
        EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 16 + k}, {7, 1, "X_bit", 16 + k}}));
    }
}

TEST_F(ChangeNotifiers, AByteHasEightBits)
{
    unitWatched(2, 0, 0xFFFFFF00u);
    byte(0, 0xFF);
    _byteDataChange(nullptr, nullptr, 0, 0);
    EXPECT_EQ(notices(), Notices());
}

TEST_F(ChangeNotifiers, AMissingByteValueAnnouncesEveryWatchedBit)
{
    unsigned char value = 0;
    const Notices both = {{7, 1, "X_bit", 16}, {7, 1, "X_bit", 23}};
    unitWatched(2, 0, 0x81);
    _byteDataChange(nullptr, &value, 0, 0);
    EXPECT_EQ(notices(), both);
    _byteDataChange(&value, nullptr, 0, 0);
    EXPECT_EQ(notices(), both);
    _byteDataChange(nullptr, nullptr, 0, 0);
    EXPECT_EQ(notices(), both);
}

TEST_F(ChangeNotifiers, AByteUnitAnnouncesBitsThenItselfThenWordsThenDoubleWords)
{
    unitWatched(5, 127, 0x81);
    byte(0, 0xFF);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 40},
                                  {7, 1, "X_bit", 47},
                                  {7, 1, "X_B", 5},
                                  {7, 1, "X_W", 5},
                                  {7, 1, "X_W", 4},
                                  {7, 1, "X_D", 5},
                                  {7, 1, "X_D", 4},
                                  {7, 1, "X_D", 3},
                                  {7, 1, "X_D", 2}}));
}

TEST_F(ChangeNotifiers, EachViewOfAByteUnitIsAnnouncedByItsOwnMark)
{
    const struct {
        int mark;
        Notice expected;
    } rows[] = {{1, {7, 1, "X_B", 5}}, {2, {7, 1, "X_W", 5}},  {4, {7, 1, "X_W", 4}},
                {8, {7, 1, "X_D", 5}}, {16, {7, 1, "X_D", 4}}, {32, {7, 1, "X_D", 3}},
                {64, {7, 1, "X_D", 2}}};
    for (const auto& row : rows) {
        unitWatched(5, row.mark);
        byte(9, 9);
        EXPECT_EQ(notices(), Notices{row.expected});
    }
    unitWatched(5, 128);
    byte(0, 1);
    EXPECT_EQ(notices(), Notices());
}

TEST_F(ChangeNotifiers, NoViewOfAByteUnitIsAnnouncedBelowAddressZero)
{
    const struct {
        int address;
        Notices expected;
    } rows[] = {{2,
                 {{7, 1, "X_W", 2},
                  {7, 1, "X_W", 1},
                  {7, 1, "X_D", 2},
                  {7, 1, "X_D", 1},
                  {7, 1, "X_D", 0}}},
                {1, {{7, 1, "X_W", 1}, {7, 1, "X_W", 0}, {7, 1, "X_D", 1}, {7, 1, "X_D", 0}}},
                {0, {{7, 1, "X_W", 0}, {7, 1, "X_D", 0}}},
                {-1, {}}};
    for (const auto& row : rows) {
        unitWatched(row.address, 126);
        byte(0, 1);
        EXPECT_EQ(notices(), row.expected);
    }
}

TEST_F(ChangeNotifiers, AByteTimerIsAnnouncedUnderTheAreaNameAndNothingElse)
{
    unitWatched(5, 127, 0xFF);
    byte(0, 0xFF, 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 5}}));
    byte(0, 0xFF, 4);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 5}}));
    unitWatched(5, 126, 0xFF);
    byte(0, 0xFF, 1);
    EXPECT_EQ(notices(), Notices());
}

// One-value units

TEST_F(ChangeNotifiers, AOneValueUnitIsAnnouncedUnderTheAreaName)
{
    unitWatched(5, 1);
    _bitDataChange(0);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 5}}));
    unitWatched(5, 127, 0xFFFFFFFFu);
    _bitDataChange(0);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 5}}));
    unitWatched(5, 126, 0xFFFFFFFFu);
    _bitDataChange(0);
    EXPECT_EQ(notices(), Notices());
}

// What the host is told

TEST_F(ChangeNotifiers, TheHostIsToldTheTagOfThePropertyAndTheRecordsStationAreaAndAddress)
{
    configure("-42#0#0#3#10");
    put("Q", 5, "", 11);
    put("C", 9, "", 247);
    for (int i = 0; i < 2; ++i) {
        driver.dataAreas[i].viewFlags = 1;
    }
    _wordDataChange(nullptr, nullptr, 0, 0);
    _wordDataChange(nullptr, nullptr, 1, 1);
    _dwordDataChange(nullptr, nullptr, 1, 0);
    _byteDataChange(nullptr, nullptr, 1, 0);
    _bitDataChange(1);
    EXPECT_EQ(notices(), (Notices{{-42, 11, "Q_W", 5},
                                  {-42, 247, "C", 9},
                                  {-42, 247, "C_D", 9},
                                  {-42, 247, "C_B", 9},
                                  {-42, 247, "C", 9}}));
}

TEST_F(ChangeNotifiers, AnnouncingChangesNothingInTheRecord)
{
    putPending("X", 5, "01 02 03 04", "05 06 07 08");
    watch("X", 5, 127, 0xFFFFFFFFu);
    driver.dataAreas[0].pendingBits = 0x55;
    word(0, 1);
    dword(0, 1);
    byte(0, 1);
    _bitDataChange(0);
    EXPECT_EQ(device("X", 5), "01 02 03 04");
    EXPECT_EQ(pending("X", 5), "05 06 07 08");
    EXPECT_TRUE(isPending("X", 5));
    EXPECT_EQ(pendingBits("X", 5), 0x55u);
    EXPECT_EQ(marks(), Units({"X5 views 127 bits FFFFFFFF"}));
}

TEST_F(ChangeNotifiers, CallingTheHostPassesEverythingOn)
{
    callHost(-1, 247, name("R_W"), INT_MIN);
    EXPECT_EQ(notices(), (Notices{{-1, 247, "R_W", INT_MIN}}));
}

TEST_F(ChangeNotifiers, WithoutACallbackNothingIsCalled)
{
    intf_setAddrValueChangeCallBack(nullptr);
    unitWatched(5, 127, 0xFFFFFFFFu);
    word(0, 1);
    word(0, 1, 1);
    dword(0, 1);
    byte(0, 1);
    _bitDataChange(0);
    callHost(0, 1, name("R_W"), 1);
    EXPECT_EQ(notices(), Notices());
    EXPECT_EQ(units(), Units({"1/X 5"}));
}

QStringList keptNames;

void keepAndChange(int, int, QString& regName, int)
{
    keptNames.append(regName);
    regName[0] = QLatin1Char('?');
    regName.append(QLatin1String(" changed by the host"));
}

TEST_F(ChangeNotifiers, TheHostMayKeepAndChangeTheNameItIsGiven)
{
    keptNames.clear();
    intf_setAddrValueChangeCallBack(keepAndChange);
    unitWatched(3, 7, 0x0003);
    word(0, 0xFFFF);
    word(0, 0xFFFF, 1);
    EXPECT_EQ(text(keptNames.join(name(" "))), "X_bit X_bit X_W X_D X_D X");
    EXPECT_EQ(units(), Units({"1/X 3"}));

    const QString own = name("R_W");
    callHost(0, 1, own, 1);
    EXPECT_EQ(text(own), "R_W");
    keptNames.clear();
}

} // namespace
