#include "cache/change_notifiers.h"

#include <climits>

#include "cache_world.h"

namespace {

using ChangeNotifiers = NotifierTest;

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

TEST_F(ChangeNotifiers, EveryAreaIsAnnouncedUnderItsOwnNames)
{
    for (const char* area : {"I", "Q", "M", "R", "T", "C", "X", "RR", "r", ""}) {
        driver.dataAreas.clear();
        put(area, 2, "");
        watch(area, 2, 3, 1);
        const std::string letter = area;
        word(0, 1);
        EXPECT_EQ(notices(), (Notices{{7, 1, letter + "_bit", 32},
                                      {7, 1, letter + "_W", 2},
                                      {7, 1, letter + "_D", 2}}));
        dword(0, 1);
        EXPECT_EQ(notices(), (Notices{{7, 1, letter + "_bit", 64}, {7, 1, letter + "_D", 2}}));
        byte(0, 1);
        EXPECT_EQ(notices(), (Notices{{7, 1, letter + "_bit", 16},
                                      {7, 1, letter + "_B", 2},
                                      {7, 1, letter + "_W", 2}}));
        word(0, 1, 1);
        dword(0, 1, 1);
        byte(0, 1, 1);
        _bitDataChange(0);
        const Notice plain = {7, 1, letter, 2};
        EXPECT_EQ(notices(), (Notices{plain, plain, plain, plain}));
    }
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
    intf_setAddrValueChangeCallBack(keepAndChange);
    for (const char* area : {"X", "R"}) {
        driver.dataAreas.clear();
        put(area, 3, "");
        watch(area, 3, 7, 0x0003);
        keptNames.clear();
        word(0, 0xFFFF);
        word(0, 0xFFFF, 1);
        const std::string letter = area;
        EXPECT_EQ(text(keptNames.join(name(" "))), letter + "_bit " + letter + "_bit " + letter +
                                                       "_W " + letter + "_D " + letter + "_D " +
                                                       letter);
        EXPECT_EQ(units(), Units({"1/" + letter + " 3"}));
    }
    const QString own = name("R_W");
    callHost(0, 1, own, 1);
    EXPECT_EQ(text(own), "R_W");
    keptNames.clear();
}

TEST_F(ChangeNotifiers, TheHostMayChangeTheNameOfADirectlyAnnouncedView)
{
    keptNames.clear();
    intf_setAddrValueChangeCallBack(keepAndChange);
    const RegisterType type = registerRow("X_Y", "1", "1");
    store(type, 5, 2, "07 08");
    settle(type, 5, 2, false);
    EXPECT_EQ(text(keptNames.join(name(" "))), "X_Y X_Y X_Y X_Y");
    EXPECT_EQ(text(type.name), "X_Y");
    keptNames.clear();
}

} // namespace
