// From the bytes of a good read reply to the cache and to what the host is told.
#include <cstdio>
#include <gmock/gmock.h>

#include "link/decoding.h"
#include "link/response_handling.h"
#include "uncalled_functions.h"
#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class ResponseDecoding : public DriverTest {};

// Byte order.

TEST_F(ResponseDecoding, RegistersComeHighByteFirstAndAreKeptLowByteFirst)
{
    plan({key("R_W", 10, 2)});
    EXPECT_EQ(answer("01 03 04 12 34 56 78"), 1);
    EXPECT_EQ(device("R", 10), "34 12");
    EXPECT_EQ(device("R", 11), "78 56");
    EXPECT_EQ(read("R_W", 10, 2), "34 12 78 56");
    EXPECT_EQ(read("R_D", 10, 2), "34 12 78 56");
}

TEST_F(ResponseDecoding, TimersAndCountersComeHighByteFirst)
{
    plan({key("T", 3, 1), key("C", 127, 1)});
    EXPECT_EQ(answer("01 03 02 12 34"), 1);
    EXPECT_EQ(answer("01 03 02 56 78"), 1);
    EXPECT_EQ(device("T", 3), "34 12");
    EXPECT_EQ(device("C", 127), "78 56");
}

TEST_F(ResponseDecoding, CoilsComeLowByteFirst)
{
    for (const char* area : {"I", "Q", "M"}) {
        const std::string word = std::string(area) + "_W";
        plan({key(word.c_str(), 2, 2)});
        EXPECT_EQ(answer("01 01 04 34 12 78 56"), 1);
        EXPECT_EQ(device(area, 2), "34 12");
        EXPECT_EQ(device(area, 3), "78 56");
    }
}

TEST_F(ResponseDecoding, AWordThatComesWithItsBytesExchangedHasChanged)
{
    plan({key("M_W", 2, 2), key("R_W", 10, 2)});
    EXPECT_EQ(answer("01 01 04 34 12 78 56"), 1);
    EXPECT_EQ(answer("01 03 04 12 34 56 78"), 1);
    EXPECT_EQ(answer("01 01 04 12 34 56 78"), 1);
    EXPECT_EQ(answer("01 03 04 34 12 78 56"), 1);
    EXPECT_EQ(read("M_W", 2, 2), "12 34 56 78");
    EXPECT_EQ(read("R_W", 10, 2), "12 34 56 78");
}

// As many bits of one word stand beside those of the next: none may be taken for another's.
TEST_F(ResponseDecoding, EachBitOfARunIsComparedByItself)
{
    const struct {
        const char* regName;
        const char* header;
        int low; // place of the low byte in a word on the line
    } types[] = {{"R_W", "01 03 08", 1}, {"M_W", "01 01 08", 0}};
    const auto wordsWith = [](int bit, int low) {
        std::string text;
        for (int place = 0; place < 8; ++place) {
            const bool isLow = place % 2 == low;
            const int first = 16 * (place / 2) + (isLow ? 0 : 8);
            const int value = bit >= first && bit < first + 8 ? 1 << (bit - first) : 0;
            char byte[4];
            std::snprintf(byte, sizeof byte, " %02X", static_cast<unsigned int>(value));
            text += byte;
        }
        return text;
    };
    for (const auto& type : types) {
        for (int before = 0; before < 64; ++before) {
            for (int after = 0; after < 64; ++after) {
                plan({key(type.regName, 0, 4)});
                ASSERT_EQ(answer((type.header + wordsWith(before, type.low)).c_str()), 1);
                ASSERT_EQ(answer((type.header + wordsWith(after, type.low)).c_str()), 1);
                ASSERT_EQ(read(type.regName, 0, 4), wordsWith(after, 0).substr(1))
                    << type.regName << " " << before << " " << after;
            }
        }
    }
}

// Neighbours that hold the same must not hide one that does not.
TEST_F(ResponseDecoding, EachWordOfARunIsComparedByItself)
{
    const struct {
        const char* regName;
        const char* header;
        const char* word; // on the line
    } types[] = {{"R_W", "01 03 12", " 12 34"}, {"M_W", "01 01 12", " 34 12"}};
    for (const auto& type : types) {
        std::string whole;
        for (int i = 0; i < 9; ++i) {
            whole += type.word;
        }
        for (size_t other = 0; other < 9; ++other) {
            plan({key(type.regName, 0, 9)});
            std::string stale = whole;
            stale.replace(6 * other, 6, " 00 00");
            ASSERT_EQ(answer((type.header + stale).c_str()), 1);
            ASSERT_EQ(answer((type.header + whole).c_str()), 1);
            EXPECT_EQ(read(type.regName, static_cast<int>(other), 1), "34 12") << other;
        }
    }
}

TEST_F(ResponseDecoding, TheFirstCoilIsBitZeroOfTheWord)
{
    plan({key("M_bit", 32, 16)});
    EXPECT_EQ(answer("01 01 02 01 80"), 1);
    EXPECT_EQ(read("M_bit", 32, 16), "01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01");
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_bit", 32}, {7, 1, "M_bit", 47}}));
}

TEST_F(ResponseDecoding, BitsOfRegistersAreThoseOfTheWord)
{
    plan({key("R_bit", 32, 16)});
    EXPECT_EQ(answer("01 03 02 80 01"), 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_bit", 32}, {7, 1, "R_bit", 47}}));
}

// What the host is told.

TEST_F(ResponseDecoding, EachChangedViewIsAnnouncedUnderItsOwnName)
{
    plan({key("R_W", 10, 2), key("R_D", 10, 2), key("R_bit", 160, 1), key("T", 3, 1)});
    EXPECT_EQ(answer("01 03 04 00 01 00 01"), 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_bit", 160},
                                  {7, 1, "R_W", 10},
                                  {7, 1, "R_D", 10},
                                  {7, 1, "R_W", 11},
                                  {7, 1, "R_D", 10}}));
    EXPECT_EQ(answer("01 03 02 00 01"), 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "T", 3}}));
}

TEST_F(ResponseDecoding, WhatDidNotChangeIsNotAnnounced)
{
    plan({key("R_W", 10, 3)});
    answer("01 03 06 00 01 00 02 00 03");
    notices();
    EXPECT_EQ(answer("01 03 06 00 01 00 02 00 03"), 1);
    EXPECT_THAT(notices(), IsEmpty());
    EXPECT_EQ(answer("01 03 06 00 01 01 02 00 03"), 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 11}}));
    EXPECT_EQ(answer("01 03 06 00 01 01 FF 00 03"), 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 11}}));
}

TEST_F(ResponseDecoding, WhatNobodyWatchesIsStoredAndNotAnnounced)
{
    plan({key("R_W", 10, 1), key("R_W", 12, 1)}); // the plan reads 11 too, across the hole
    EXPECT_EQ(answer("01 03 06 00 01 00 02 00 03"), 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}, {7, 1, "R_W", 12}}));
    EXPECT_EQ(read("R_W", 11, 1), "02 00");
}

TEST_F(ResponseDecoding, StationsAndAreasAreKeptApart)
{
    plan({key("R_W", 10, 1, 1), key("R_W", 10, 1, 2), key("M_W", 10, 1, 2)});
    EXPECT_EQ(answer("01 03 02 00 01"), 1);
    EXPECT_EQ(answer("02 01 02 02 00"), 1);
    EXPECT_EQ(answer("02 03 02 00 03"), 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}, {7, 2, "M_W", 10}, {7, 2, "R_W", 10}}));
    EXPECT_EQ(read("R_W", 10, 1, 1), "01 00");
    EXPECT_EQ(read("M_W", 10, 1, 2), "02 00");
    EXPECT_EQ(read("R_W", 10, 1, 2), "03 00");
}

TEST_F(ResponseDecoding, AConditionReadGoesToTheCacheLikeAnyRead)
{
    plan({key("R_W", 10, 1)});
    ask(key("R_W", 10, 1));
    EXPECT_EQ(answer("01 03 02 12 34"), 1);
    EXPECT_EQ(driver.sendKind, 3);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}, {-1, -1, "-1", 0}}));
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
}

TEST_F(ResponseDecoding, WithoutACallbackEverythingElseHappens)
{
    intf_setAddrValueChangeCallBack(nullptr);
    plan({key("R_W", 10, 1), key("R_bit", 160, 16), key("T", 3, 1)});
    EXPECT_EQ(answer("01 03 02 12 34"), 1);
    EXPECT_EQ(answer("01 03 02 12 34"), 1);
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
    ask(key("R_W", 10, 1));
    EXPECT_EQ(answer("01 03 02 12 34"), 1);
    EXPECT_TRUE(driver.conditionList.isEmpty());
}

// The order: compare with the controller's value, store, settle, announce.

TEST_F(ResponseDecoding, ACallbackThatReadsBackSeesTheNewValue)
{
    plan({key("R_W", 10, 2), key("R_D", 10, 2), key("R_bit", 160, 1)});
    std::vector<std::string> seen;
    whenTold([&](const Notice& notice) { seen.push_back(notice.name + " " + read("R_W", 10, 1)); });
    EXPECT_EQ(answer("01 03 04 12 35 00 00"), 1);
    EXPECT_THAT(seen, ElementsAre("R_bit 35 12", "R_W 35 12", "R_D 35 12"));
}

TEST_F(ResponseDecoding, LaterRegistersOfTheReplyAreNotYetThereWhenAnEarlierOneIsAnnounced)
{
    plan({key("R_W", 10, 2)});
    std::vector<std::string> seen;
    whenTold([&](const Notice&) { seen.push_back(read("R_W", 10, 2)); });
    answer("01 03 04 00 01 00 02");
    EXPECT_THAT(seen, ElementsAre("01 00 00 00", "01 00 02 00"));
}

TEST_F(ResponseDecoding, ComparesWithWhatTheControllerSaidLastAndNotWithWhatTheHostWrote)
{
    plan({key("R_W", 10, 1), key("R_W", 20, 1)});
    answer("01 03 16 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00");
    write("R_W", 10, 1, "34 12");
    driver.burstCount = 10; // the cyclic read comes before the write
    notices();
    // The controller still says 1: equal to what it said before, so nothing happens.
    answer("01 03 16 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00");
    EXPECT_THAT(notices(), IsEmpty());
    EXPECT_EQ(unit(1, "R", 10).writePending, 1);
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
    // It says what the host wrote, before the write went out: new to the cache.
    driver.burstCount = 10;
    answer("01 03 16 12 34 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00");
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}}));
    EXPECT_EQ(device("R", 10), "34 12");
}

TEST_F(ResponseDecoding, WhileAWriteIsQueuedItsValueStaysVisible)
{
    plan({key("R_W", 10, 1)});
    write("R_W", 10, 1, "34 12");
    driver.burstCount = 10;
    notices();
    EXPECT_EQ(answer("01 03 02 00 77"), 1);
    EXPECT_EQ(device("R", 10), "77 00");
    EXPECT_EQ(unit(1, "R", 10).writePending, 1);
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}}));
}

TEST_F(ResponseDecoding, AQueuedWriteToAnotherPlaceKeepsItVisibleToo)
{
    configure("7#1#0#3#10"); // cache only: the first write is not queued
    plan({key("R_W", 10, 1)});
    write("R_W", 10, 1, "34 12");
    driver.writeToCacheOnly = 0;
    write("T", 1, 1, "01 00");
    driver.burstCount = 10;
    EXPECT_EQ(answer("01 03 02 00 77"), 1);
    EXPECT_EQ(unit(1, "R", 10).writePending, 1);
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
}

TEST_F(ResponseDecoding, WithNoWriteQueuedTheControllersValueIsVisibleAgain)
{
    configure("7#1#0#3#10");
    plan({key("R_W", 10, 1)});
    write("R_W", 10, 1, "34 12");
    notices();
    std::string seen;
    whenTold([&](const Notice&) { seen = read("R_W", 10, 1); });
    EXPECT_EQ(answer("01 03 02 00 77"), 1);
    EXPECT_EQ(seen, "77 00");
    EXPECT_EQ(unit(1, "R", 10).writePending, 0);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}}));
}

TEST_F(ResponseDecoding, AnEqualValueSettlesNothing)
{
    configure("7#1#0#3#10");
    plan({key("R_W", 10, 1)});
    write("R_W", 10, 1, "34 12");
    notices();
    EXPECT_EQ(answer("01 03 02 00 00"), 1);
    EXPECT_EQ(unit(1, "R", 10).writePending, 1);
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(ResponseDecoding, BitsAreAnnouncedByWhatTheControllerChanged)
{
    configure("7#1#0#3#10");
    plan({key("M_bit", 16, 3)});
    write("M_bit", 16, 3, "01 01 00"); // visible: 3, from the controller: 0
    notices();
    EXPECT_EQ(answer("01 01 02 06 00"), 1); // bits 1 and 2 changed since it spoke last
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_bit", 17}, {7, 1, "M_bit", 18}}));
    EXPECT_EQ(read("M_bit", 16, 3), "00 01 01");
}

// Directly: what the bytes do not hold reads as 0, and unknown names end it.

TEST_F(ResponseDecoding, BytesPastTheEndReadAsZero)
{
    plan({key("R_W", 10, 4)});
    for (int i = 0; i < 4; ++i) {
        driver.dataAreas[i].deviceValue[0] = 0x55;
    }
    analyzeFrameOfVal(hex("01 03 08 12 34 56"), 4, 3, request("R_W", 10, 4));
    EXPECT_EQ(read("R_W", 10, 4), "34 12 00 56 00 00 00 00");
    EXPECT_EQ(notices().size(), 4u);
}

TEST_F(ResponseDecoding, WhatStandsBehindTheReplyInMemoryIsNotRead)
{
    plan({key("R_W", 10, 4)});
    const char memory[] = {1, 3, 8, 0x12, 0x34, 0x56, 0x55, 0x56, 0x55, 0x56, 0x55, 0x56};
    for (int i = 0; i < 4; ++i) {
        driver.dataAreas[i].deviceValue[0] = static_cast<unsigned char>(i == 0 ? 0x34 : 0x55);
        driver.dataAreas[i].deviceValue[1] = static_cast<unsigned char>(i == 0 ? 0x12 : 0x56);
    }
    analyzeFrameOfVal(QByteArray::fromRawData(memory, 6), 4, 3, request("R_W", 10, 4));
    EXPECT_EQ(read("R_W", 10, 4), "34 12 00 56 00 00 00 00");
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 11}, {7, 1, "R_W", 12}, {7, 1, "R_W", 13}}));
}

TEST_F(ResponseDecoding, APositionOutsideTheReplyReadsZeros)
{
    plan({key("R_W", 10, 1)});
    driver.dataAreas[0].deviceValue[0] = 0x55;
    analyzeFrameOfVal(hex("01 03 02 12 34"), 1, 2000000000, request("R_W", 10, 1));
    EXPECT_EQ(read("R_W", 10, 1), "00 00");
    driver.dataAreas[0].deviceValue[0] = 0x55;
    analyzeFrameOfVal(QByteArray(), 1, 3, request("R_W", 10, 1));
    EXPECT_EQ(read("R_W", 10, 1), "00 00");
}

TEST_F(ResponseDecoding, OfAnUnknownNameStoresNothing)
{
    analyzeFrameOfVal(hex("01 03 02 12 34"), 1, 3, request("M", 10, 1));
    analyzeFrameOfVal(hex("01 03 02 12 34"), 1, 3, request("", 10, 1));
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(ResponseDecoding, OfNoValuesStoresNothing)
{
    analyzeFrameOfVal(hex("01 03 02 12 34"), 0, 3, request("R_W", 10, 1));
    analyzeFrameOfVal(hex("01 03 02 12 34"), -5, 3, request("R_W", 10, 1));
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(ResponseDecoding, TakesCountPositionAndTargetFromTheFrameOnTheLine)
{
    driver.readList << request("R_W", 10, 2);
    poll();
    driver.sendList[0].dataCount = 1;
    driver.sendList[0].dataPosition = 5;
    driver.sendList[0].request = request("T", 20, 1, 9);
    EXPECT_EQ(dealReadFrameReturnSaveData(hex("01 03 04 12 34 56 78")), 0);
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(toHex(unit(9, "T", 20).deviceValue, 2), "78 56");
}

TEST_F(ResponseDecoding, StoresUnderAnyAddress)
{
    driver.sendKind = 4;
    analyzeFrameOfVal(hex("01 03 04 12 34 56 78"), 2, 3, request("R_W", 2147483647, 2));
    ASSERT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(driver.dataAreas.at(0).address, 2147483647);
    EXPECT_EQ(driver.dataAreas.at(1).address, -2147483647 - 1);
}

// Leftovers for replies of several requests.

TEST_F(ResponseDecoding, TheStartOfAMixedReplyMovesFourBytesARequest)
{
    driver.sendList << FRAME_PRO() << FRAME_PRO();
    driver.sendList[0].dataPosition = 3;
    driver.sendList[1].dataPosition = 50;
    driver.frameVarCount = 2;
    const QList<VARIABLE> list = {request("R_W", 1, 1), request("R_W", 2, 1), request("R_W", 3, 1)};
    driver.frameIndex = 0;
    EXPECT_EQ(allMix_GetDataStartPosition(QByteArray(), list, 0), 3);
    EXPECT_EQ(allMix_GetDataStartPosition(QByteArray(), list, 1), 7);
    EXPECT_EQ(allMix_GetDataStartPosition(QByteArray(), list, 2), 11);
    EXPECT_EQ(allMix_GetDataStartPosition(QByteArray(), list, 3), 11);
    EXPECT_EQ(allMix_GetDataStartPosition(QByteArray(), list, -1), 3);
    driver.frameIndex = 1;
    EXPECT_EQ(allMix_GetDataStartPosition(QByteArray(), list, 1), 54);
    driver.frameVarCount = 0;
    EXPECT_EQ(allMix_GetDataStartPosition(QByteArray(), list, 1), 50);
}

TEST_F(ResponseDecoding, TheLengthOfAMixedReplyIsAlwaysZero)
{
    EXPECT_EQ(allMix_GetRecvLenFromReadList(QList<VARIABLE>()), 0);
    EXPECT_EQ(allMix_GetRecvLenFromReadList({request("R_W", 1, 5), request("T", 1, 5)}), 0);
}

class EdgesOfDecoding : public DriverTest {};

TEST_F(EdgesOfDecoding, TheFirstRegisterTypeOfTheTableIsDecodedLikeTheOthers)
{
    analyzeFrameOfVal(withCrc("01 01 02 CD AB"), 1, 3, request("I_bit", 4, 1));
    EXPECT_EQ(read("I_W", 4, 1), "CD AB");
}

// The second word is new, but the two bytes before it read like the word that the cache holds.
TEST_F(EdgesOfDecoding, AWordIsComparedWithItsOwnBytesBehindAChangedOne)
{
    const RegisterType& type = registerType(7);
    decodeValues(type, hex("11 11 AA BB"), 2, 0, 1, 0);
    decodeValues(type, hex("11 AA BB 22"), 2, 0, 1, 0);
    EXPECT_EQ(read("R_W", 0, 2), "AA 11 22 BB");
}

} // namespace
