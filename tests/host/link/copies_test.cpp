// What comes twice, or is our own, on a line in the hands of the test: nothing of it is a value.
#include <gtest/gtest.h>

#include "hand_line.h"
#include "line/crc16.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

QByteArray whole(const char* frame)
{
    return withCrc(QByteArray::fromHex(frame));
}

class Copies : public ::testing::Test {
protected:
    void start()
    {
        line.start();
    }

    // One that is answered at once.
    void exchange(const char* request, const char* reply)
    {
        line.ask(request, static_cast<int>(whole(reply).size()));
        line.comeWhole(reply);
        line.pass(milliseconds(10));
        ASSERT_TRUE(line.ended.has_value());
        EXPECT_EQ(line.ended->reception.bytes, whole(reply));
    }

    void expectNothing() const
    {
        ASSERT_TRUE(line.ended.has_value());
        EXPECT_EQ(line.ended->reception.result, LineResult::timeout);
        EXPECT_EQ(line.ended->reception.bytes, QByteArray());
    }

    HandLine line;
};

// The copy of the reply before and the reply itself, in one piece as adapters hand them on.
TEST_F(Copies, OneThatArrivesTogetherWithTheReplyIsNotTakenForIt)
{
    start();
    exchange("010301000001", "01030211AA");
    line.ask("010302000001", 7);
    line.exchange->bytesCame(whole("01030211AA") + whole("01030222BB"), line.now);
    EXPECT_EQ(line.doubts, 1);
    expectNothing();
}

// It cannot be taken for the reply, but for what it is.
TEST_F(Copies, OneOfAnotherLengthIsToldAsMoreThanWasAskedFor)
{
    start();
    exchange("010301000001", "01030211AA");
    line.ask("010302000002", 9);
    line.comeWhole("01030211AA");
    line.pass(milliseconds(200)); // no more comes
    EXPECT_EQ(line.doubts, 1);
    ASSERT_EQ(line.strays.size(), 1U);
    EXPECT_EQ(line.strays.front().kind, StrayKind::surplus);
}

// The modem is the same.
TEST_F(Copies, AreExpectedOnTheNextLineOfThePortToo)
{
    start();
    exchange("010301000001", "01030211AA");
    line.ask("010302000001", 7);
    line.exchange->bytesCame(whole("01030211AA") + whole("01030222BB"), line.now);
    ASSERT_TRUE(line.exchange->isWary(line.now));

    HandLine next;
    next.now = line.now + seconds(60);
    next.exchange->awaitLate(line.exchange->books());
    next.start();
    EXPECT_TRUE(next.exchange->isWary(next.now));
    next.askRead("010301000001", 1);
    ASSERT_EQ(next.sent.size(), 1U);
    EXPECT_EQ(next.sent.front().at(1), 8) << "a marker before each request";
    EXPECT_FALSE(next.exchange->isWary(line.now + std::chrono::minutes(11)));
}

// What comes behind the answer to a marker tells that the answer may be a copy, too.
TEST_F(Copies, AMarkerBehindWhichOneComesEndsNoDoubt)
{
    line.settings.mayMark = false; // so a read of another length is the marker
    line.settings.timeout.isFixed = true;
    start();
    line.askRead("010301000002", 2);
    line.pass(milliseconds(600));
    line.askRead("010302000002", 2);
    ASSERT_EQ(line.sent.size(), 2U);
    ASSERT_EQ(line.sent.back(), whole("010302000001")) << "the marker";
    line.exchange->bytesCame(whole("01030211AA") + whole("01030211AA"), line.now);
    line.pass(milliseconds(10));
    EXPECT_EQ(line.doubts, 1);
    ASSERT_EQ(line.sent.size(), 3U);
    EXPECT_NE(line.sent.back(), whole("010302000002")) << "one more marker";
}

// A write may be made of what was read just before it, as one bit of a word is.
TEST_F(Copies, OneThatComesBeforeAWriteGoesOutHoldsItBack)
{
    start();
    line.ask("010301000001", 7);
    line.comeWhole("01030211AA");
    line.ask("010610000005", 8);
    line.comeWhole("01030211AA");
    line.pass(milliseconds(100));
    EXPECT_EQ(line.doubts, 1);
    EXPECT_EQ(line.sent.size(), 1U);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::heldBack);
    line.ask("010610000005", 8);
    line.pass(milliseconds(10));
    ASSERT_EQ(line.sent.size(), 2U);
    line.exchange->bytesCame(line.sent.back(), line.now); // to a marker
    line.pass(milliseconds(10));
    ASSERT_EQ(line.sent.size(), 3U);
    EXPECT_EQ(line.sent.back(), whole("010610000005"));
}

TEST_F(Copies, OneThatComesBeforeAReadGoesOutHasAMarkerGoBeforeIt)
{
    start();
    line.askRead("010301000002", 2);
    line.comeWhole("01030411AA22BB");
    line.askRead("010302000002", 2);
    line.comeWhole("01030411AA22BB");
    line.pass(milliseconds(100));
    EXPECT_EQ(line.doubts, 1);
    ASSERT_EQ(line.sent.size(), 2U);
    EXPECT_NE(line.sent.back(), whole("010302000002"));
}

// On a two-wire adapter that hears what it sends, as its first read shows.
class OnAnEchoingAdapter : public Copies {
protected:
    // Goes out, and is heard.
    void ask(const char* request, int replyLength)
    {
        const std::size_t before = line.sent.size();
        line.ask(request, replyLength);
        ASSERT_EQ(line.sent.size(), before + 1);
        line.exchange->bytesCame(line.sent.back(), line.now);
    }

    void start()
    {
        line.start();
        ask("010301000001", 7);
        line.comeWhole("01030211AA");
        line.pass(milliseconds(10));
        ASSERT_TRUE(line.ended.has_value());
    }

    void expectNoWriteIsConfirmedByItsEcho()
    {
        line.pass(milliseconds(10));
        ask("010610000005", 8);
        line.pass(seconds(20));
        expectNothing();
    }
};

// A reply that comes late, before anything is sent, has no echo before it, and tells nothing of the
// adapter.
TEST_F(OnAnEchoingAdapter, ALateReplyDoesNotMakeItOneThatHearsNothing)
{
    start();
    ask("010301000001", 7);
    line.pass(milliseconds(600)); // its time is over, and the station is listened to
    line.ask("010301000001", 7);
    ASSERT_EQ(line.sent.size(), 2U) << "nothing is sent yet";
    line.comeWhole("01030211AB");
    ASSERT_TRUE(line.ended.has_value());
    ASSERT_EQ(line.ended->reception.result, LineResult::reply);

    expectNoWriteIsConfirmedByItsEcho();
}

// One that comes between the echo and the reply, too.
TEST_F(OnAnEchoingAdapter, TheReplyToAnotherRequestDoesNotMakeItOneThatHearsNothing)
{
    line.settings.timeout.isFixed = true;
    start();
    ask("010301000001", 7);
    line.pass(milliseconds(600));
    ask("010302000002", 9);
    line.comeWhole("01030211AB"); // to the one before
    line.pass(milliseconds(150));
    line.comeWhole("01030411AA22BB");
    ASSERT_TRUE(line.ended.has_value());
    ASSERT_EQ(line.ended->reception.result, LineResult::reply);

    expectNoWriteIsConfirmedByItsEcho();
}

// What is heard first is the marker itself: the reply to what another program has asked is still to
// come.
TEST_F(Copies, TheEchoOfAMarkerIsNotItsAnswerToARead)
{
    const char* const request = "010302000001";
    line.settings.isShared = true;
    line.start();
    line.ask(request, 7);
    for (std::size_t heard = 0; heard < 2; ++heard) {
        ASSERT_EQ(line.sent.size(), heard + 1);
        line.exchange->bytesCame(line.sent.back(), line.now);
        line.pass(milliseconds(10));
    }
    EXPECT_EQ(line.sent.back(), whole(request));
    line.comeWhole("01030299AA"); // the other's
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::timeout);
    EXPECT_EQ(line.strays.back().kind, StrayKind::late);

    line.pass(milliseconds(10));
    line.ask(request, 7);
    ASSERT_EQ(line.sent.size(), 3U);
    EXPECT_EQ(line.sent.at(2).at(1), 8) << "an echo with a number";
    line.exchange->bytesCame(line.sent.at(2), line.now);
    line.pass(milliseconds(200));
    ASSERT_EQ(line.sent.size(), 3U) << "only the adapter was heard";
    line.exchange->bytesCame(line.sent.at(2), line.now);
    line.pass(milliseconds(10));
    ASSERT_EQ(line.sent.size(), 4U);
    EXPECT_EQ(line.sent.back(), whole(request));
    line.exchange->bytesCame(line.sent.back(), line.now);
    line.comeWhole("01030211BB");
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
}

// What came behind a reply that is dropped is dealt with then, and not behind a later one.
TEST_F(Copies, WhatComesBehindADroppedReplyIsNoSurplus)
{
    line.settings.isShared = true;
    line.start();
    line.askRead(readOf100, 1);
    line.exchange->bytesCame(line.sent.back(), line.now); // the adapter's echo
    line.pass(milliseconds(10));
    ASSERT_EQ(line.sent.size(), 2U);
    const QByteArray others = whole("01030203E8");
    line.exchange->bytesCame(line.sent.back() + others + others, line.now);
    expectNothing();
    line.askRead(readOf100, 1);
    line.pass(milliseconds(10));
    ASSERT_EQ(line.sent.size(), 3U);
    ASSERT_EQ(line.sent.back().at(1), 8);
    line.exchange->bytesCame(line.sent.back(), line.now); // heard
    line.pass(milliseconds(5));
    line.exchange->bytesCame(line.sent.back(), line.now); // the station's
    line.pass(milliseconds(10));
    EXPECT_EQ(line.doubts, 0) << "nothing was answered twice";
}

// Nor does it stand before a write, whose own echo would confirm it.
TEST_F(Copies, TheEchoOfAMarkerIsNotItsAnswerToAWrite)
{
    const char* const request = "010610000005";
    line.settings.isShared = true;
    line.start();
    line.ask(request, 8);
    ASSERT_EQ(line.sent.size(), 1U);
    EXPECT_EQ(line.sent.front().at(1), 3) << "a read, which is no write's echo";
    line.exchange->bytesCame(line.sent.front(), line.now);
    line.comeWhole("01030299AA"); // the other's
    line.pass(milliseconds(150));
    if (line.sent.size() == 1) // one of another length was the marker
        line.comeWhole("01030411AA22BB");
    line.pass(milliseconds(10));
    ASSERT_EQ(line.sent.size(), 2U);
    line.exchange->bytesCame(line.sent.at(1), line.now);
    line.pass(milliseconds(200));
    EXPECT_EQ(line.sent.size(), 2U) << "an echo with a number";
    line.exchange->bytesCame(line.sent.at(1), line.now);
    line.pass(milliseconds(10));
    ASSERT_EQ(line.sent.size(), 3U);
    EXPECT_EQ(line.sent.at(2), whole(request));
}

// There are controllers that answer with what they made of the value.
TEST_F(Copies, AWriteThatIsAnsweredWithAnotherValueIsAnsweredAndNoCopy)
{
    start();
    exchange("010301000001", "01030211AA");
    line.ask("010610001388", 8);
    line.comeWhole("010610000FA0");
    line.pass(milliseconds(600));
    EXPECT_EQ(line.doubts, 0);
    EXPECT_TRUE(line.strays.empty());
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
    EXPECT_EQ(answeredOtherwise(*line.ended), "it was answered with another value: 4000");
}

} // namespace

} // namespace dov417
