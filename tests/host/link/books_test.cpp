#include "link/books.h"

#include <gtest/gtest.h>

#include "line/crc16.h"
#include "line/frame_length.h"

namespace dov417 {

namespace {

using std::chrono::seconds;

const Clock::time_point start = Clock::time_point() + std::chrono::hours(1);

QByteArray frame(const char* withoutCrc)
{
    return withCrc(QByteArray::fromHex(withoutCrc));
}

OpenTransmission sentOut(long long number, const char* withoutCrc, int replyLength,
                         Clock::time_point at = start)
{
    return {number, frame(withoutCrc), replyLength, at};
}

class ABook : public ::testing::Test {
protected:
    // Number of the transmission that a frame belongs to; 0: none.
    long long answered(const char* withoutCrc)
    {
        const auto found = books.take(frame(withoutCrc));
        return found ? found->number : 0;
    }
    Books books{seconds(30)};
};

TEST_F(ABook, GivesAReplyToTheOldestOfItsShape)
{
    books.add(sentOut(1, "010300000001", 7));
    books.add(sentOut(2, "010300000002", 9));
    books.add(sentOut(3, "010300100001", 7));
    EXPECT_EQ(answered("0103020007"), 1);
    EXPECT_EQ(answered("0103020007"), 3);
    EXPECT_EQ(answered("0103020007"), 0);
}

TEST_F(ABook, ClosesWhatWasSentToTheStationBefore)
{
    books.add(sentOut(1, "010300000001", 7));
    books.add(sentOut(2, "020300000001", 7));
    books.add(sentOut(3, "010300000002", 9));
    EXPECT_EQ(answered("01030400070008"), 3);
    EXPECT_EQ(answered("0103020007"), 0) << "it was asked before";
    EXPECT_EQ(answered("0203020007"), 2) << "another station has its own order";
}

TEST_F(ABook, RemembersOnlyTheLastOfWhatIsOverOnALineThatIsDead)
{
    for (int i = 0; i < 100; ++i)
        books.add(sentOut(i + 1, i == 0 ? "020300000001" : "010300000001", 7));
    books.expire(start + seconds(30));
    EXPECT_TRUE(books.open().empty());
    EXPECT_FALSE(books.fitsWhatIsOver(frame("0203020007")));
    EXPECT_TRUE(books.fitsWhatIsOver(frame("0103020007")));
}

TEST_F(ABook, GivesAnExceptionToTheOldestOfItsFunction)
{
    books.add(sentOut(1, "010300000001", 7));
    books.add(sentOut(2, "010100000010", 7));
    EXPECT_EQ(answered("018102"), 2);
    EXPECT_EQ(answered("018302"), 0) << "closed with the later one";
}

TEST_F(ABook, KnowsWritesByTheirAddress)
{
    books.add(sentOut(1, "010600100001", 8));
    EXPECT_FALSE(books.couldBeMistaken(frame("010600110001"), 8));
    EXPECT_TRUE(books.couldBeMistaken(frame("010600100002"), 8));
    EXPECT_EQ(answered("010600110001"), 0);
    EXPECT_EQ(answered("010600100001"), 1);
}

TEST_F(ABook, TakesOnlyOtherRequestsOfOneShapeForMistakable)
{
    books.add(sentOut(1, "010300000001", 7));
    EXPECT_FALSE(books.couldBeMistaken(frame("010300000001"), 7)) << "the very same";
    EXPECT_TRUE(books.couldBeMistaken(frame("010300100001"), 7));
    EXPECT_FALSE(books.couldBeMistaken(frame("010300100002"), 9));
    EXPECT_FALSE(books.couldBeMistaken(frame("020300100001"), 7));
    EXPECT_EQ(books.certainAt(frame("010300100001"), 7), start + seconds(30));
}

TEST_F(ABook, ForgetsWhatIsBeyondTheHorizon)
{
    books.add(sentOut(1, "010300000001", 7));
    books.expire(start + seconds(29));
    EXPECT_TRUE(books.isOut(frame("010300000001"), 7));
    books.expire(start + seconds(30));
    EXPECT_FALSE(books.isOut(frame("010300000001"), 7));
}

TEST_F(ABook, LetsAnEarlierReplyStandForTheSameRequestUnlessSomethingWasWrittenBetween)
{
    const OpenTransmission early = sentOut(1, "010300000001", 7);
    books.add(early);
    EXPECT_TRUE(books.standsFor(early, sentOut(5, "010300000001", 7)));
    EXPECT_FALSE(books.standsFor(early, sentOut(5, "010300100001", 7)));
    books.add(sentOut(2, "020600100001", 8));
    EXPECT_TRUE(books.standsFor(early, sentOut(5, "010300000001", 7))) << "written elsewhere";
    books.add(sentOut(3, "010600100001", 8));
    EXPECT_FALSE(books.standsFor(early, sentOut(5, "010300000001", 7)));
}

TEST_F(ABook, ABroadcastIsAWriteToEveryStation)
{
    const OpenTransmission early = sentOut(1, "010300000001", 7);
    books.add(early);
    books.add(sentOut(2, "000600100001", 0));
    EXPECT_FALSE(books.standsFor(early, sentOut(5, "010300000001", 7)));
}

TEST_F(ABook, AWriteThatIsRepeatedIsConfirmedByItsFirstReply)
{
    const OpenTransmission early = sentOut(1, "010600100001", 8);
    books.add(early);
    books.add(sentOut(2, "010600100001", 8));
    EXPECT_TRUE(books.standsFor(early, sentOut(3, "010600100001", 8)));
    books.add(sentOut(3, "010600100002", 8));
    EXPECT_FALSE(books.standsFor(early, sentOut(4, "010600100001", 8)))
        << "another value was written since";
}

TEST_F(ABook, OfALineThatWasClosedIsOlderThanAllOfTheNext)
{
    books.add(sentOut(7, "010300000001", 7));
    books.add(sentOut(9, "010300000002", 9));
    Books next = books.asPast();
    next.add(sentOut(1, "010300100001", 7));
    EXPECT_LT(next.take(frame("01030400070008"))->number, 0) << "0: not sent yet";
    EXPECT_EQ(next.take(frame("0103020007"))->number, 1);
}

TEST_F(ABook, WhatWasWrittenOnALineThatWasClosedKeepsNoReplyOfTheNextFromCounting)
{
    books.add(sentOut(4, "010600050001", 8));
    books.add(sentOut(5, "010600060001", 8));
    books = books.asPast(); // the next one counts from 1 again
    const OpenTransmission read = sentOut(1, "010300000001", 7);
    EXPECT_TRUE(books.standsFor(read, sentOut(2, "010300000001", 7)));
    const OpenTransmission write = sentOut(1, "010600060001", 8);
    books.add(write);
    EXPECT_TRUE(books.standsFor(write, sentOut(2, "010600060001", 8)));
}

TEST_F(ABook, TellsWhetherAReplyCanBelongToSeveralRequests)
{
    EXPECT_FALSE(books.isOfOneRequest(frame("0103020007")));
    books.add(sentOut(1, "010300000001", 7));
    books.add(sentOut(2, "010300000001", 7));
    books.add(sentOut(3, "010300000002", 9));
    EXPECT_TRUE(books.isOfOneRequest(frame("0103020007"))) << "the same one twice";
    EXPECT_FALSE(books.isOfOneRequest(frame("018302"))) << "whichever was refused";
    books.add(sentOut(4, "010300100001", 7));
    EXPECT_FALSE(books.isOfOneRequest(frame("0103020007")));
}

TEST_F(ABook, GivesAReplyOfAnyLengthToARequestThatTellsNone)
{
    books.add(sentOut(1, "012B0E0100", untoldLength));
    EXPECT_EQ(answered("022B0E010100"), 0);
    EXPECT_EQ(answered("012B0E010100"), 1);
}

} // namespace

} // namespace dov417
