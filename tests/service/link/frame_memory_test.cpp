// Frames are built one after the other in the same memory: none shows anything of the one before.
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

#include "world.h"

namespace {

class FrameMemory : public DriverTest {
protected:
    FrameMemory()
    {
        configure("7#0#0#3#128");
        plan({key("R_W", 100, 1)});
    }

    bool isBlankFrom(int byte) const
    {
        const unsigned char* end = polled.frame + sizeof(polled.frame);
        return std::all_of(polled.frame + byte, end, [](unsigned char each) { return each == 0; });
    }

    static bool hasZerosForValues(const VARIABLE& request)
    {
        return std::all_of(std::begin(request.data), std::end(request.data),
                           [](unsigned char each) { return each == 0; });
    }

    std::string fields() const
    {
        return std::to_string(polled.sendLength) + ' ' + std::to_string(polled.replyLength) + ' ' +
               std::to_string(polled.dataPosition) + ' ' + std::to_string(polled.dataCount) + ' ' +
               std::to_string(polled.spare);
    }
};

TEST_F(FrameMemory, AReadAfterALongerWriteEndsWithZeros)
{
    write("R_W", 0, 3, "AA AA BB BB CC CC");
    EXPECT_EQ(exchange(), frame("01 10 05 00 00 03 06 AA AA BB BB CC CC"));
    EXPECT_EQ(exchange(), cyclicRead);
    EXPECT_TRUE(isBlankFrom(8));
    EXPECT_EQ(fields(), "8 7 3 1 0");
    EXPECT_EQ(polled.request.data[0], 0);
}

TEST_F(FrameMemory, AWriteAfterAReadExpectsNoData)
{
    EXPECT_EQ(exchange(), cyclicRead);
    write("R_W", 5, 1, "34 12");
    EXPECT_EQ(exchange(), frame("01 06 05 05 12 34"));
    EXPECT_EQ(fields(), "8 8 0 0 0");
    EXPECT_EQ(polled.request.data[0], 0x34);
}

TEST_F(FrameMemory, AWriteOfRegisterBitsHasNothingOfTheWriteBeforeIt)
{
    for (int i = 0; i < 2; ++i) {
        write("R_bit", 16 * i, 1, "01");
        EXPECT_EQ(poll(), frame(i == 0 ? "01 03 05 00 00 01" : "01 03 05 01 00 01"));
        EXPECT_EQ(fields(), "8 7 3 2 0");
        EXPECT_EQ(reply(withCrc(i == 0 ? "01 03 02 AB C0" : "01 03 02 00 00")), replyAccepted);
        EXPECT_EQ(poll(),
                  frame(i == 0 ? "01 10 05 00 00 01 02 AB C1" : "01 10 05 01 00 01 02 00 01"));
        EXPECT_EQ(fields(), "11 8 7 0 0");
        EXPECT_TRUE(isBlankFrom(11));
        EXPECT_EQ(reply(goodReplyTo(polled)), replyAccepted);
    }
    EXPECT_EQ(exchange(), cyclicRead);
    EXPECT_EQ(fields(), "8 7 3 1 0");
}

TEST_F(FrameMemory, AHandshakeIsEmptyWhateverWentBefore)
{
    EXPECT_EQ(exchange(), cyclicRead);
    driver.handshakeRequest = 1;
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(driver.sendKind, sendHandshake);
    EXPECT_TRUE(isBlankFrom(0));
    EXPECT_EQ(fields(), "0 0 0 0 0");
    EXPECT_EQ(polled.request.stationNo, 0);
    EXPECT_TRUE(polled.request.regName.isEmpty());
}

// What a host left in the frame on the line goes with it.
TEST_F(FrameMemory, WhatWasChangedInAFrameFromOutsideIsGoneInTheNext)
{
    poll();
    driver.sendList[0].frame[1000] = 9;
    driver.sendList[0].spare = 9;
    EXPECT_EQ(exchange(), cyclicRead);
    EXPECT_EQ(exchange(), cyclicRead);
    EXPECT_TRUE(isBlankFrom(8));
    EXPECT_EQ(fields(), "8 7 3 1 0");
}

TEST_F(FrameMemory, ACopyOfTheSendListKeepsItsFrame)
{
    poll();
    const QList<FRAME_PRO> kept = driver.sendList;
    exchange();
    write("R_W", 5, 1, "34 12");
    exchange();
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(kept.at(0).frame[1], 3);
}

// The values of a request: zeros for every read, whatever was written before.
TEST_F(FrameMemory, ReadsHaveZerosForValuesWhateverWentBefore)
{
    plan({key("R_W", 100, 1), key("T", 5, 1)});
    const std::vector<std::function<void()>> others = {
        [] { write("R_W", 5, 2, "34 12 78 56"); },
        [] { write("R_bit", 17, 1, "01"); },
        [] { ask(key("C", 3, 1)); },
        [] { driver.handshakeRequest = 1; },
        [] { write("R_W", 6, 1, "FF FF", 0); }, // broadcast
    };
    for (const auto& other : others) {
        other();
        for (int i = 0; i < 6; ++i) { // the other's frames, then each read twice
            exchange();
            driver.handshakeRequest = 0;
            if (driver.sendKind == sendCyclicRead) {
                EXPECT_TRUE(hasZerosForValues(polled.request));
                EXPECT_TRUE(hasZerosForValues(driver.currentVar));
                EXPECT_TRUE(hasZerosForValues(driver.currentVars.at(0)));
            }
        }
        EXPECT_EQ(driver.sendKind, sendCyclicRead);
    }
}

TEST_F(FrameMemory, AWriteAfterReadsBringsItsValues)
{
    exchange();
    exchange();
    write("R_bit", 17, 1, "01");
    exchange();
    EXPECT_EQ(polled.request.data[0], 1);
    exchange();
    EXPECT_EQ(polled.request.data[0], 1);
    EXPECT_EQ(driver.currentVar.data[0], 1);
}

// The read behind a write that cannot be framed either way.
TEST_F(FrameMemory, AReadThatIsRefusedLeavesTheValuesOfTheWriteForTheNextToClear)
{
    write("R_W", 5, 1, "34 12");
    plan({key("R_W", 100, 1, 0)});
    exchange();
    EXPECT_EQ(poll(), ""); // of the broadcast station nothing is read
    plan({key("R_W", 100, 1)});
    EXPECT_EQ(exchange(), cyclicRead);
    EXPECT_TRUE(hasZerosForValues(polled.request));
    EXPECT_TRUE(hasZerosForValues(driver.currentVar));
}

// A request that cannot be framed leaves the list empty, and the next one is framed as ever.
TEST_F(FrameMemory, ARefusedRequestLeavesNoFrame)
{
    EXPECT_EQ(exchange(), cyclicRead);
    plan({key("R_W", 100, 1, 0)});
    EXPECT_EQ(poll(), "");
    EXPECT_TRUE(driver.sendList.isEmpty());
    plan({key("R_W", 100, 1)});
    EXPECT_EQ(exchange(), cyclicRead);
}

} // namespace
