// Announcing changes of 32-bit, 8-bit and one-value units.
#include <climits>

#include "cache/change_notifiers.h"
#include "cache_world.h"

namespace {

using ChangeNotifiersOfOtherUnits = NotifierTest;

// 32-bit units

TEST_F(ChangeNotifiersOfOtherUnits, EveryBitOfADoubleWordUnitIsAnnouncedAtItsOwnAddress)
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

TEST_F(ChangeNotifiersOfOtherUnits, AMissingDoubleWordValueAnnouncesEveryWatchedBit)
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

TEST_F(ChangeNotifiersOfOtherUnits, ADoubleWordUnitAnnouncesItsBitsAndItselfAndNoWiderView)
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

TEST_F(ChangeNotifiersOfOtherUnits, ADoubleWordTimerIsAnnouncedUnderTheAreaNameAndNothingElse)
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

TEST_F(ChangeNotifiersOfOtherUnits, EveryBitOfAByteUnitIsAnnouncedAtItsOwnAddress)
{
    for (int k = 0; k < 8; ++k) {
        unitWatched(2, 0, 1u << k);
        byte(0, static_cast<unsigned char>(1 << k));
        byte(static_cast<unsigned char>(1 << k), 0);
        byte(0, static_cast<unsigned char>(0xFF ^ (1 << k)));
        EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 16 + k}, {7, 1, "X_bit", 16 + k}}));
    }
}

TEST_F(ChangeNotifiersOfOtherUnits, AByteHasEightBits)
{
    unitWatched(2, 0, 0xFFFFFF00u);
    byte(0, 0xFF);
    _byteDataChange(nullptr, nullptr, 0, 0);
    EXPECT_EQ(notices(), Notices());
}

TEST_F(ChangeNotifiersOfOtherUnits, AMissingByteValueAnnouncesEveryWatchedBit)
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

TEST_F(ChangeNotifiersOfOtherUnits, AByteUnitAnnouncesBitsThenItselfThenWordsThenDoubleWords)
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

TEST_F(ChangeNotifiersOfOtherUnits, EachViewOfAByteUnitIsAnnouncedByItsOwnMark)
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

TEST_F(ChangeNotifiersOfOtherUnits, NoViewOfAByteUnitIsAnnouncedBelowAddressZero)
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

TEST_F(ChangeNotifiersOfOtherUnits, AByteTimerIsAnnouncedUnderTheAreaNameAndNothingElse)
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

TEST_F(ChangeNotifiersOfOtherUnits, AOneValueUnitIsAnnouncedUnderTheAreaName)
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

} // namespace
