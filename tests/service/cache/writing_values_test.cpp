// Cutting and queueing host writes.

#include <QDebug>
#include <chrono>
#include <climits>
#include <future>

#include "cache_world.h"

namespace {

class WritingValues : public CacheTest {
protected:
    // A write of `length` values whose bytes count up from 1 (bits: 01 00 01 01 00 01 ...).
    static std::vector<unsigned char> counting(int bytes)
    {
        std::vector<unsigned char> data;
        for (int i = 0; i < bytes; ++i) {
            data.push_back(static_cast<unsigned char>(i + 1));
        }
        return data;
    }
    static int writeBytes(const char* regName, int address, int length,
                          std::vector<unsigned char> data)
    {
        DebugLines quiet;
        return intf_setData(1, name(regName), address, length, data.data(), 2);
    }
    static int writeCounting(const char* regName, int address, int length, int bytes)
    {
        return writeBytes(regName, address, length, counting(bytes));
    }
};

// What is queued

TEST_F(WritingValues, AWordWriteIsQueuedWithItsKindStationNamePlaceAndBytes)
{
    EXPECT_EQ(write("R_W", 100, 2, "34 12 78 56", 9, 77), 1);
    EXPECT_EQ(queue(), Units({"9/R_W:100+2"}));
    EXPECT_EQ(driver.writeList.at(0).kind, 77);
    EXPECT_EQ(queuedData(0, 4), "34 12 78 56");
}

TEST_F(WritingValues, ABitWriteIsQueuedWithOneByteABit)
{
    EXPECT_EQ(write("M_bit", 20, 3, "01 00 01", 1, -5), 1);
    EXPECT_EQ(queue(), Units({"1/M_bit:20+3"}));
    EXPECT_EQ(driver.writeList.at(0).kind, -5);
    EXPECT_EQ(queuedData(0, 3), "01 00 01");
}

TEST_F(WritingValues, ADoubleWordWriteIsQueuedInWords)
{
    EXPECT_EQ(write("R_D", 10, 4, "01 02 03 04 05 06 07 08"), 1);
    EXPECT_EQ(queue(), Units({"1/R_D:10+4"}));
    EXPECT_EQ(queuedData(0, 8), "01 02 03 04 05 06 07 08");
}

TEST_F(WritingValues, TheHostMayReuseItsBufferAtOnce)
{
    unsigned char data[2] = {0x34, 0x12};
    {
        DebugLines quiet;
        intf_setData(1, name("R_W"), 100, 1, data, 2);
    }
    data[0] = data[1] = 0xFF;
    EXPECT_EQ(queuedData(0, 2), "34 12");
    EXPECT_EQ(read("R_W", 100, 1), "34 12");
}

TEST_F(WritingValues, TheWrittenValueIsReadBackAtOnce)
{
    write("R_W", 100, 2, "34 12 78 56");
    EXPECT_EQ(read("R_W", 100, 2), "34 12 78 56");
    write("M_bit", 20, 2, "01 01");
    EXPECT_EQ(read("M_bit", 19, 4), "00 01 01 00");
}

TEST_F(WritingValues, AnUnknownRegisterGivesMinusOneAndChangesNothing)
{
    for (const char* regName : {"X_W", "r_w", "R", ""}) {
        EXPECT_EQ(write(regName, 0, 1, "01 00"), -1);
    }
    EXPECT_EQ(queue(), Units());
    EXPECT_EQ(units(), Units());
    EXPECT_EQ(notices(), Notices());
}

TEST_F(WritingValues, TheRequestIsQueuedBeforeTheHostIsToldOfTheChange)
{
    plan({key("R_W", 100, 1)});
    std::vector<std::string> seen;
    whenTold([&](const Notice&) { seen = queue(); });
    write("R_W", 100, 1, "34 12");
    EXPECT_EQ(seen, Units({"1/R_W:100+1"}));
}

TEST_F(WritingValues, ACallbackThatReadsBackFromWithinAWriteStillSeesTheOldValue)
{
    plan({key("R_W", 100, 1)});
    std::string seen;
    whenTold([&](const Notice&) { seen = read("R_W", 100, 1); });
    write("R_W", 100, 1, "34 12");
    EXPECT_EQ(seen, "00 00");
    EXPECT_EQ(read("R_W", 100, 1), "34 12");
}

TEST_F(WritingValues, WithoutACallbackAWriteIsQueuedAndStored)
{
    plan({key("R_W", 100, 1)});
    intf_setAddrValueChangeCallBack(nullptr);
    EXPECT_EQ(write("R_W", 100, 1, "34 12"), 1);
    EXPECT_EQ(queue(), Units({"1/R_W:100+1"}));
    EXPECT_EQ(read("R_W", 100, 1), "34 12");
}

TEST_F(WritingValues, QueueingTakesNoLock)
{
    driver.mutex.lock();
    auto writing = std::async(std::launch::async, [] {
        write("R_W", 100, 1, "34 12");
        write("R_W", 101, 1, "34 12");
        write("R_W", 101, 1, "35 12");
    });
    EXPECT_EQ(writing.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    driver.mutex.unlock();
    writing.wait();
    EXPECT_EQ(queue(), Units({"1/R_W:100+1", "1/R_W:101+1"}));
}

// Pieces

TEST_F(WritingValues, WordsAreCutIntoPiecesOfTheWordLimit)
{
    configure("7#0#0#3#2");
    writeCounting("R_W", 100, 5, 10);
    EXPECT_EQ(queue(), Units({"1/R_W:100+2", "1/R_W:102+2", "1/R_W:104+1"}));
    EXPECT_EQ(queuedData(0, 4), "01 02 03 04");
    EXPECT_EQ(queuedData(1, 4), "05 06 07 08");
    EXPECT_EQ(queuedData(2, 2), "09 0A");
    EXPECT_EQ(read("R_W", 100, 5), "01 02 03 04 05 06 07 08 09 0A");
}

TEST_F(WritingValues, AWriteOfExactlyThePieceLimitIsOnePieceAndAMultipleLeavesNoRemainder)
{
    configure("7#0#0#3#3");
    writeCounting("R_W", 100, 3, 6);
    writeCounting("R_W", 200, 6, 12);
    EXPECT_EQ(queue(), Units({"1/R_W:100+3", "1/R_W:200+3", "1/R_W:203+3"}));
}

TEST_F(WritingValues, BitsAreCutIntoPiecesOfTheBitLimit)
{
    configure("7#0#0#3#1");
    writeBytes("M_bit", 5, 10, {1, 0, 0, 0, 0, 0, 0, 1, 0, 1});
    EXPECT_EQ(queue(), Units({"1/M_bit:5+8", "1/M_bit:13+2"}));
    EXPECT_EQ(queuedData(0, 8), "01 00 00 00 00 00 00 01");
    EXPECT_EQ(queuedData(1, 2), "00 01");
    EXPECT_EQ(read("M_bit", 5, 10), "01 00 00 00 00 00 00 01 00 01");
}

TEST_F(WritingValues, DoubleWordsAreCutByTheWordLimitToo)
{
    configure("7#0#0#3#3");
    writeCounting("R_D", 100, 4, 8);
    EXPECT_EQ(queue(), Units({"1/R_D:100+3", "1/R_D:103+1"}));
    EXPECT_EQ(read("R_D", 100, 4), "01 02 03 04 05 06 07 08");
}

TEST_F(WritingValues, EveryPieceCarriesTheKindAndTheStation)
{
    configure("7#0#0#3#1");
    write("R_W", 100, 2, "34 12 78 56", 9, 77);
    EXPECT_EQ(queue(), Units({"9/R_W:100+1", "9/R_W:101+1"}));
    EXPECT_EQ(driver.writeList.at(0).kind, 77);
    EXPECT_EQ(driver.writeList.at(1).kind, 77);
}

TEST_F(WritingValues, TheLimitsOfTheDriverStateCount)
{
    driver.pieceWordLimit = 4;
    driver.pieceBitLimit = 2;
    writeCounting("T", 0, 5, 10);
    writeCounting("Q_bit", 0, 3, 3);
    EXPECT_EQ(queue(), Units({"1/T:0+4", "1/T:4+1", "1/Q_bit:0+2", "1/Q_bit:2+1"}));
}

TEST_F(WritingValues, ALimitBelowOneCutsIntoWhatOneWriteOfTheProtocolCarries)
{
    for (const char* property : {"7#0#0#3#0", "7#0#0#3#-5", "7#0#0#3#x", "7#0#0#3#"}) {
        configure(property);
        writeCounting("R_W", 0, 250, 500);
        writeCounting("M_bit", 0, 1000, 1000);
        EXPECT_EQ(queue(), Units({"1/R_W:0+123", "1/R_W:123+123", "1/R_W:246+4", "1/M_bit:0+984",
                                  "1/M_bit:984+16"}))
            << property;
        EXPECT_EQ(queuedData(1, 2), "F7 F8"); // words 0 to 122 are bytes 1 to 246
    }
}

TEST_F(WritingValues, LimitsBelowOneStayAsTheyWereComputed)
{
    configure("7#0#0#3#-5");
    writeCounting("R_W", 0, 1, 2);
    writeCounting("M_bit", 0, 1, 1);
    EXPECT_EQ(driver.pieceWordLimit, -5);
    EXPECT_EQ(driver.pieceBitLimit, -40);
}

TEST_F(WritingValues, AWordPieceIsNeverLongerThanOneFrameHolds)
{
    configure("7#0#0#3#600");
    writeCounting("R_W", 0, 507, 1014);
    writeCounting("Q_W", 0, 508, 1016);
    writeCounting("R_D", 1000, 512, 1024);
    EXPECT_EQ(queue(), Units({"1/R_W:0+507", "1/Q_W:0+507", "1/Q_W:507+1", "1/R_D:1000+507",
                              "1/R_D:1507+5"}));
    EXPECT_EQ(queuedData(2, 2), "F7 F8"); // bytes 1015 and 1016
    EXPECT_EQ(driver.pieceWordLimit, 600);
}

TEST_F(WritingValues, BitPiecesAreNotHeldToTheWordsOfAFrame)
{
    configure("7#0#0#3#600");
    writeCounting("M_bit", 0, 1024, 1024);
    EXPECT_EQ(queue(), Units({"1/M_bit:0+1024"}));
}

TEST_F(WritingValues, AHugeGapStillGivesUsableLimits)
{
    configure("7#0#0#3#2147483647");
    writeCounting("R_W", 0, 512, 1024);
    writeCounting("M_bit", 0, 1024, 1024);
    EXPECT_EQ(queue(), Units({"1/R_W:0+507", "1/R_W:507+5", "1/M_bit:0+984", "1/M_bit:984+40"}));
}

// Refused and empty writes

TEST_F(WritingValues, UpTo1024BytesAreTaken)
{
    configure("7#0#0#3#600");
    EXPECT_EQ(writeCounting("R_W", 0, 512, 1024), 1);
    EXPECT_EQ(writeCounting("M_bit", 0, 1024, 1024), 1);
    EXPECT_EQ(writeCounting("R_D", 1000, 512, 1024), 1);
    EXPECT_EQ(read("R_W", 511, 1), "FF 00"); // bytes 1023 and 1024
}

TEST_F(WritingValues, MoreThan1024BytesAreRefusedAndNothingChanges)
{
    plan({key("R_W", 0, 1), key("M_bit", 0, 1)});
    DebugLines debug;
    std::vector<unsigned char> data(1100, 1);
    EXPECT_EQ(intf_setData(1, name("R_W"), 0, 513, data.data(), 2), -1);
    EXPECT_EQ(intf_setData(1, name("T"), 0, 513, data.data(), 2), -1);
    EXPECT_EQ(intf_setData(1, name("R_D"), 0, 513, data.data(), 2), -1);
    EXPECT_EQ(intf_setData(1, name("R_D"), 0, 514, data.data(), 2), -1);
    EXPECT_EQ(intf_setData(1, name("M_bit"), 0, 1025, data.data(), 2), -1);
    EXPECT_EQ(intf_setData(1, name("R_W"), 0, INT_MAX, data.data(), 2), -1);
    EXPECT_EQ(intf_setData(1, name("R_W"), 0, 0x40000001, data.data(), 2), -1);
    EXPECT_EQ(intf_setData(1, name("M_bit"), 0, INT_MAX, data.data(), 2), -1);
    EXPECT_EQ(intf_setData(1, name("X_W"), 0, 513, data.data(), 2), -1);
    EXPECT_EQ(queue(), Units());
    EXPECT_EQ(units(), Units({"1/R 0", "1/M 0"}));
    EXPECT_FALSE(isPending("R", 0));
    EXPECT_EQ(notices(), Notices());
    EXPECT_EQ(debug.lines(), Units());
}

TEST_F(WritingValues, ANegativeLengthQueuesAndStoresNothingAndGivesOne)
{
    unsigned char data[2] = {1, 1};
    DebugLines quiet;
    for (const char* regName : {"R_W", "R_D", "M_bit", "T"}) {
        for (int length : {-1, -2, -513, INT_MIN}) {
            EXPECT_EQ(intf_setData(1, name(regName), 5, length, data, 2), 1);
        }
    }
    EXPECT_EQ(queue(), Units());
    EXPECT_EQ(units(), Units());
}

TEST_F(WritingValues, ALengthOfZeroIsQueuedAndStoresNothing)
{
    unsigned char data[2] = {1, 1};
    DebugLines debug;
    EXPECT_EQ(intf_setData(1, name("R_W"), 5, 0, data, 2), 1);
    EXPECT_EQ(intf_setData(1, name("M_bit"), 5, 0, data, 2), 1);
    EXPECT_EQ(queue(), Units({"1/R_W:5+0", "1/M_bit:5+0"}));
    EXPECT_EQ(units(), Units());
    EXPECT_EQ(debug.lines(), Units({"addVarToList 1 \"R_W\" 5 0", "addVarToList 1 \"M_bit\" 5 0"}));
}

// Writes that stay in the cache

TEST_F(WritingValues, InCacheOnlyModeAWriteIsShownAndAnnouncedButNotQueued)
{
    configure("7#1#0#3#10");
    plan({key("R_W", 100, 1), key("M_bit", 20, 1)});
    DebugLines debug;
    unsigned char word[2] = {0x34, 0x12};
    unsigned char bit = 1;
    EXPECT_EQ(intf_setData(1, name("R_W"), 100, 1, word, 2), 1);
    EXPECT_EQ(intf_setData(1, name("M_bit"), 20, 1, &bit, 2), 1);
    EXPECT_EQ(queue(), Units());
    EXPECT_EQ(debug.lines(), Units());
    EXPECT_EQ(read("R_W", 100, 1), "34 12");
    EXPECT_EQ(read("M_bit", 20, 1), "01");
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 100}, {7, 1, "M_bit", 20}}));
    driver.readList.clear();
    EXPECT_EQ(poll(), "");
}

TEST_F(WritingValues, AnyNumberButZeroIsCacheOnlyMode)
{
    for (const char* property : {"7#2#0#3#10", "7#-1#0#3#10"}) {
        configure(property);
        EXPECT_EQ(write("R_W", 100, 1, "34 12"), 1);
        EXPECT_EQ(queue(), Units());
        EXPECT_EQ(read("R_W", 100, 1), "34 12");
    }
}

TEST_F(WritingValues, InCacheOnlyModeAnUnknownRegisterGivesOneAndChangesNothing)
{
    configure("7#1#0#3#10");
    EXPECT_EQ(write("X_W", 0, 1, "01 00"), 1);
    EXPECT_EQ(units(), Units());
    EXPECT_EQ(notices(), Notices());
}

TEST_F(WritingValues, InCacheOnlyModeAnyLengthIsStored)
{
    configure("7#1#0#3#10");
    EXPECT_EQ(writeBytes("R_W", 0, 2000, std::vector<unsigned char>(4000, 0x11)), 1);
    EXPECT_EQ(writeBytes("M_bit", 0, 2000, std::vector<unsigned char>(2000, 1)), 1);
    EXPECT_EQ(queue(), Units());
    EXPECT_EQ(read("R_W", 1999, 2), "11 11 00 00");
    EXPECT_EQ(read("M_bit", 1999, 2), "01 00");
    unsigned char none = 1;
    EXPECT_EQ(intf_setData(1, name("R_W"), 3000, 0, &none, 2), 1);
    EXPECT_EQ(intf_setData(1, name("R_W"), 3000, -4, &none, 2), 1);
    EXPECT_EQ(unitIndex(1, "R", 3000), -1);
}

// Debug lines

TEST_F(WritingValues, EveryPieceLeavesALineInTheDebugStream)
{
    configure("7#0#0#3#2");
    DebugLines debug;
    unsigned char data[6] = {1, 0, 1, 0, 1, 0};
    intf_setData(1, name("R_W"), 100, 2, data, 2);
    intf_setData(9, name("R_W"), 100, 3, data, 2);
    intf_setData(1, name("M_bit"), 20, 1, data, 2);
    EXPECT_EQ(debug.lines(),
              Units({"addVarToList 1 \"R_W\" 100 2", "addVarToList 9 \"R_W\" 100 2",
                     "addVarToList 9 \"R_W\" 102 1", "addVarToList 1 \"M_bit\" 20 1"}));
}

TEST_F(WritingValues, AReplacedWriteLeavesALineToo)
{
    write("R_W", 1, 1, "01 00");
    write("R_W", 2, 1, "01 00");
    DebugLines debug;
    unsigned char data[2] = {2, 0};
    intf_setData(1, name("R_W"), 2, 1, data, 2);
    EXPECT_EQ(debug.lines(), Units({"addVarToList 1 \"R_W\" 2 1"}));
}

} // namespace
