#include "link/listener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "line/crc16.h"
#include "link/heard_table.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::HasSubstr;

const std::vector<Area> heardAreas = {{"M_W", true, 4096, 128}, {"R_W", false, 1280, 4000}};

class AListener : public ::testing::Test {
protected:
    // A frame in hex, without its CRC, so many milliseconds after the one before.
    std::string hear(const char* withoutCrc, int after = 10)
    {
        now += milliseconds(after);
        told.clear();
        listener.bytesCame(withCrc(QByteArray::fromHex(withoutCrc)), now);
        std::string text;
        for (const Heard& each : told)
            text += heardText(each, heardAreas);
        return text;
    }
    HeardAs heardAs(const char* withoutCrc, int after = 10)
    {
        hear(withoutCrc, after);
        return told.size() == 1 ? told.front().as : HeardAs::noise;
    }
    std::vector<std::string> lines() const
    {
        return heardLines(table, heardAreas, names);
    }

    Clock::time_point now = Clock::time_point() + std::chrono::hours(1);
    std::vector<Heard> told;
    HeardTable table;
    StationNames names;
    Listener listener{SerialFormat(), seconds(30), [this](const Heard& heard) {
                          told.push_back(heard);
                          table.add(heard);
                      }};
};

TEST_F(AListener, ExplainsAReplyByItsRequest)
{
    EXPECT_EQ(hear("01 03 05 0A 00 01"), "station 1: read 1 register from 1290 (R_W:10)");
    EXPECT_EQ(hear("01 03 02 00 2A"), "station 1: R_W:10 = 42");
    EXPECT_EQ(told.front().request, withCrc(QByteArray::fromHex("0103050A0001")));
}

// A request may be hidden in it, and the reply is that one's.
TEST_F(AListener, ExplainsNoReplyByARequestOfBeforeALotOfNoise)
{
    for (const bool isLong : {true, false}) {
        hear("01 03 05 0A 00 01");
        now += milliseconds(10);
        listener.bytesCame(QByteArray::fromHex(isLong ? "0103027F0013A20103056400FF" : "FF"), now);
        listener.silence();
        EXPECT_EQ(heardAs("01 03 02 00 2A"), isLong ? HeardAs::unclear : HeardAs::reply);
    }
    hear("01 03 05 64 00 01");
    EXPECT_EQ(hear("01 03 02 00 2A"), "station 1: R_W:100 = 42") << "what is heard since is clear";
}

TEST_F(AListener, ExplainsNoReplyByARequestOfBeforeThePortWasAway)
{
    hear("01 03 05 0A 00 01");
    listener.missed();
    EXPECT_EQ(heardAs("01 03 02 00 2A"), HeardAs::unclear);
}

TEST_F(AListener, WaitsForAReplyThatBeganWithinTheHorizon)
{
    hear("01 03 05 00 00 01");
    hear("01 03 05 0A 00 01", 29900);
    EXPECT_EQ(heardAs("01 03 02 00 2A", 101), HeardAs::unclear) << "of either";
}

TEST_F(AListener, CountsTheBytesThatAreNoFrame)
{
    table.add({HeardAs::noise, QByteArray(3, 0), {}, {}});
    table.add({HeardAs::noise, QByteArray(2, 0), {}, {}});
    EXPECT_EQ(table.noise(), 5);
    EXPECT_THAT(lines(), ::testing::Contains(HasSubstr("5 bytes that are no frame")));
}

TEST_F(AListener, NamesNoAddressForAReplyWhoseRequestItHasNotHeard)
{
    EXPECT_EQ(hear("01 03 02 00 2A"),
              "station 1: read registers, 2 bytes of values: 42, to no request that was heard");
}

TEST_F(AListener, ShowsAStationWithItsNameInTheTable)
{
    names = {{1, "oven \xC3\xB6stlich"}, {2, ""}};
    hear("01 03 05 0A 00 01");
    hear("02 03 05 0A 00 01");
    EXPECT_THAT(lines().at(0), HasSubstr("station         function "));
    EXPECT_THAT(lines().at(1), HasSubstr("1 oven \xC3\xB6stlich  read registers "));
    EXPECT_THAT(lines().at(2), HasSubstr("2               read registers "));
}

TEST_F(AListener, NamesNoAddressForASecondReply)
{
    hear("01 03 05 0A 00 01");
    hear("01 03 02 00 2A");
    EXPECT_EQ(heardAs("01 03 02 00 2B"), HeardAs::unasked);
}

TEST_F(AListener, NamesNoAddressWhereOneOfTwoLikeRequestsWasNotAnswered)
{
    hear("01 03 05 00 00 01");
    EXPECT_EQ(hear("01 03 05 0A 00 01"), "station 1: read 1 register from 1290 (R_W:10)");
    EXPECT_TRUE(told.front().isUnanswered);
    EXPECT_EQ(hear("01 03 02 00 2A"), "station 1: read registers, 2 bytes of values: 42, to one of "
                                      "several requests: one was not answered, or not heard");
    EXPECT_EQ(told.front().request, QByteArray());
    // A reply of another length tells that nothing older is to come.
    hear("01 03 05 0A 00 02");
    EXPECT_EQ(hear("01 03 04 00 2A 00 2B"), "station 1: R_W:10..11 = 42 43");
    hear("01 03 05 00 00 01");
    EXPECT_EQ(hear("01 03 02 00 07"), "station 1: R_W:0 = 7");
}

TEST_F(AListener, AsksNothingOfARepeatedRequest)
{
    hear("01 03 05 0A 00 01");
    hear("01 03 05 0A 00 01", 500);
    EXPECT_EQ(hear("01 03 02 00 2A"), "station 1: R_W:10 = 42");
}

TEST_F(AListener, AwaitsNothingBeyondTheHorizon)
{
    hear("01 03 05 00 00 01");
    hear("01 03 05 0A 00 01", 31000);
    EXPECT_EQ(hear("01 03 02 00 2A"), "station 1: R_W:10 = 42");
}

TEST_F(AListener, TellsAReplyOfAnotherStationFromTheAwaitedOne)
{
    hear("01 03 05 0A 00 01");
    EXPECT_EQ(heardAs("02 03 02 00 2A"), HeardAs::unasked);
    EXPECT_EQ(heardAs("01 03 02 00 2B"), HeardAs::reply);
}

TEST_F(AListener, DoesNotTakeARepeatedWriteForItsReply)
{
    // Nothing is known of the station: it may be off.
    EXPECT_EQ(heardAs("01 06 05 0A 00 07"), HeardAs::request);
    EXPECT_EQ(heardAs("01 06 05 0A 00 07", 500), HeardAs::alike);
    EXPECT_EQ(heardAs("01 06 05 0A 00 07", 10), HeardAs::alike);
    EXPECT_THAT(heardText(told.front(), heardAreas),
                ::testing::EndsWith(", once more, or the reply to it: the two look alike"));
    EXPECT_EQ(directionOf(HeardAs::alike), Direction::sent) << "it confirms nothing";
}

TEST_F(AListener, TakesAQuickCopyOfAWriteForItsReplyWhereTheStationIsKnownToAnswer)
{
    hear("01 03 05 0A 00 01");
    hear("01 03 02 00 2A");
    EXPECT_EQ(heardAs("01 06 05 0A 00 07"), HeardAs::request);
    EXPECT_EQ(hear("01 06 05 0A 00 07"), "station 1: wrote R_W:10 = 7 (0x0007)");
    EXPECT_EQ(heardAs("01 06 05 0A 00 08"), HeardAs::request);
    EXPECT_EQ(heardAs("01 06 05 0A 00 08", 500), HeardAs::alike) << "later than it answers";
}

TEST_F(AListener, TellsAReplyOfThreeBytesOfCoilsFromARequestOfItsLength)
{
    hear("01 01 10 00 00 10");
    hear("01 01 02 05 80");
    hear("01 01 10 00 00 18");
    EXPECT_EQ(hear("01 01 03 01 00 80"),
              "station 1: M_bit:0.0..1.7 = 1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 "
              "and 8 more");
    hear("01 01 10 00 00 18");
    EXPECT_EQ(heardAs("01 01 03 01 00 80", 600), HeardAs::alike) << "so late it may be a request";
}

TEST_F(AListener, AwaitsNoAnswerToABroadcast)
{
    hear("00 06 05 0A 00 01");
    hear("01 03 05 0A 00 01");
    EXPECT_FALSE(told.front().isUnanswered);
}

TEST_F(AListener, PairsFunctionsOfWhichItKnowsNoLength)
{
    EXPECT_EQ(heardAs("01 03 05 0A 00 01"), HeardAs::request);
    EXPECT_EQ(heardAs("01 03 02 00 2A"), HeardAs::reply);
    EXPECT_EQ(heardAs("01 2B 0E 01 00"), HeardAs::request);
    EXPECT_EQ(heardAs("01 2B 0E 01 01 00 00 01 00 02 41 42"), HeardAs::reply);
    EXPECT_EQ(heardAs("01 2B 0E 01 00"), HeardAs::request);
    EXPECT_EQ(heardAs("01 AB 01"), HeardAs::reply);
}

TEST_F(AListener, CountsByStationFunctionAndAddress)
{
    for (int i = 0; i < 3; ++i) {
        hear("01 03 05 0A 00 01", 100);
        hear("01 03 02 00 2A");
        hear("02 03 00 00 00 02");
    }
    hear("01 06 23 28 00 01");
    hear("01 86 02");
    const std::vector<HeardRow> rows = table.rows();
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows.at(0).asked, 3);
    EXPECT_EQ(rows.at(0).answered, 3);
    EXPECT_EQ(rows.at(0).silent, 0);
    EXPECT_EQ(rows.at(0).cycle.count(), 2);
    EXPECT_EQ(rows.at(0).cycle.median(), milliseconds(120));
    EXPECT_EQ(heardAddresses(rows.at(0), heardAreas), "R_W:10");
    EXPECT_EQ(rows.at(1).refused, 1);
    EXPECT_EQ(heardAddresses(rows.at(1), {}), "register 9000");
    EXPECT_EQ(rows.at(2).station, 2);
    EXPECT_EQ(rows.at(2).silent, 3);
    EXPECT_EQ(heardAddresses(rows.at(2), heardAreas), "registers 0..1");
    EXPECT_THAT(lines().at(1), HasSubstr("120.0 / 120.0 / 120.0"));
}

TEST_F(AListener, CountsARepetitionAsNoCycle)
{
    hear("01 03 05 0A 00 01");
    hear("01 03 05 0A 00 01", 500);
    EXPECT_EQ(table.rows().front().cycle.count(), 0);
    EXPECT_EQ(table.rows().front().silent, 1);
}

TEST_F(AListener, KeepsNoMoreRowsThanAPersonCanUse)
{
    for (int i = 0; i < 1100; ++i) {
        const QByteArray head = QByteArray::fromHex("0103") + static_cast<char>(i / 256) +
                                static_cast<char>(i % 256) + QByteArray::fromHex("0001");
        now += milliseconds(10);
        listener.bytesCame(withCrc(head), now);
    }
    EXPECT_EQ(table.rows().size(), 1000U);
    EXPECT_EQ(table.others(), 100);
    EXPECT_THAT(lines().back(), HasSubstr("100 requests to further addresses"));
}

} // namespace

} // namespace dov417
