// Condition reads of long runs: the same list as by queueing every piece, without the time that
// would take.
#include <algorithm>
#include <gmock/gmock.h>
#include <random>

#include "world.h"

namespace {

class LongConditionReads : public DriverTest {};

TEST_F(LongConditionReads, OfTwoThousandMillionWordsLeaveTheFirstPiecesAndTheLast)
{
    EXPECT_EQ(ask(key("R_W", 0, 2000000005)), 1);
    ASSERT_EQ(driver.conditionList.size(), 513);
    EXPECT_EQ(summary(driver.conditionList.at(0)), "1/R_W:0+10");
    EXPECT_EQ(summary(driver.conditionList.at(511)), "1/R_W:5110+10");
    EXPECT_EQ(summary(driver.conditionList.at(512)), "1/R_W:2000000000+5");
    EXPECT_EQ(summary(driver.lastConditionVar), "1/R_W:2000000000+5");
}

TEST_F(LongConditionReads, OfTwoThousandMillionSingleBitsLeaveOneEntryAWord)
{
    configure("7#0#0#3#1");
    EXPECT_EQ(ask(key("M_bit", 0, 2000000000)), 1);
    ASSERT_EQ(driver.conditionList.size(), 513);
    // Bits 0 and 1 are the same word twice, as the head is never compared; then one entry a word.
    EXPECT_EQ(summary(driver.conditionList.at(0)), "1/M:0+1");
    EXPECT_EQ(summary(driver.conditionList.at(1)), "1/M:0+1");
    EXPECT_EQ(summary(driver.conditionList.at(2)), "1/M:1+1");
    EXPECT_EQ(summary(driver.conditionList.at(511)), "1/M:510+1");
    EXPECT_EQ(summary(driver.conditionList.at(512)), "1/M:124999999+1");
}

TEST_F(LongConditionReads, OfALongRunThatMeetsQueuedOnesReplaceThoseToo)
{
    fillConditionList(513);
    driver.conditionList[3] = request("R_W", 1999990, 10);
    driver.conditionList[3].kind = 1;
    driver.conditionList[3].data[1023] = 0x77;
    EXPECT_EQ(ask(key("R_W", 0, 2000000000), 9), 1);
    ASSERT_EQ(driver.conditionList.size(), 513);
    EXPECT_EQ(driver.conditionList.at(3).kind, 9);
    EXPECT_EQ(driver.conditionList.at(3).data[1023], 0);
    EXPECT_EQ(driver.conditionList.at(4).kind, 1);
    EXPECT_EQ(summary(driver.conditionList.at(512)), "1/R_W:1999999990+10");
}

struct Plain {
    int kind;
    int station;
    std::string name;
    int address;
    int length;
};

bool operator==(const Plain& a, const Plain& b)
{
    return a.kind == b.kind && a.station == b.station && a.name == b.name &&
           a.address == b.address && a.length == b.length;
}

std::ostream& operator<<(std::ostream& out, const Plain& one)
{
    return out << one.kind << ':' << one.station << '/' << one.name << ':' << one.address << '+'
               << one.length;
}

Plain plainOf(const VARIABLE& one)
{
    return {one.kind, one.stationNo, text(one.regName), one.address, one.length};
}

void queuePlainly(std::vector<Plain>& list, const Plain& wanted)
{
    if (list.empty()) {
        list.push_back(wanted);
        return;
    }
    for (size_t i = list.size() - 1; i >= 1; --i) {
        Plain& queued = list[i];
        if (queued.address == wanted.address && queued.length == wanted.length &&
            queued.station == wanted.station && queued.name == wanted.name) {
            queued = wanted;
            return;
        }
    }
    if (list.size() > 512) {
        list[512] = wanted;
    } else {
        list.push_back(wanted);
    }
}

Plain pieceOf(const KEY_ADDRESS& whole, int address, int length, int kind)
{
    Plain piece = {kind, whole.stationNo, text(whole.regName), address, length};
    const size_t underscore = piece.name.find("_bit");
    if (underscore != std::string::npos) {
        const int bits = length + address % 16;
        piece = {kind, whole.stationNo, piece.name.substr(0, underscore), address / 16,
                 bits / 16 + (bits % 16 != 0 ? 1 : 0)};
    }
    return piece;
}

TEST_F(LongConditionReads, LeaveTheListThatQueueingEveryPieceWouldLeave)
{
    std::mt19937 engine(513);
    const auto upTo = [&engine](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(engine);
    };
    const char* names[] = {"M_bit", "R_bit", "R_W", "T"};
    for (int round = 0; round < 60; ++round) {
        const int gap = upTo(1, upTo(0, 1) == 0 ? 3 : 40);
        configure(("7#0#0#3#" + std::to_string(gap)).c_str());
        std::vector<Plain> expected;
        for (int call = 0; call < 12; ++call) {
            const int maxLength = upTo(0, 3) == 0 ? 20000 : 300;
            const KEY_ADDRESS wanted =
                key(names[upTo(0, 3)], upTo(-200, 1200), upTo(-2, maxLength), 1, upTo(-1, 0));
            const int limit = wanted.bitFlag == -1 ? gap * 8 : gap;
            ASSERT_EQ(ask(wanted, call), 1);

            Plain last = pieceOf(wanted, wanted.address, wanted.length, call);
            if (wanted.length <= limit) {
                queuePlainly(expected, last);
            }
            for (int from = 0; wanted.length > limit && from < wanted.length; from += limit) {
                last = pieceOf(wanted, wanted.address + from, std::min(limit, wanted.length - from),
                               call);
                queuePlainly(expected, last);
            }
            std::vector<Plain> queued;
            for (int i = 0; i < driver.conditionList.size(); ++i) {
                queued.push_back(plainOf(driver.conditionList.at(i)));
            }
            ASSERT_EQ(queued, expected) << "round " << round << ", call " << call << ", gap " << gap
                                        << ", " << summary(wanted) << ", flag " << wanted.bitFlag;
            ASSERT_EQ(plainOf(driver.lastConditionVar), last) << "round " << round;
        }
    }
}

} // namespace
