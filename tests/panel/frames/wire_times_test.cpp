#include "panel/frames/wire_times.h"

#include <gmock/gmock.h>

#include "line/crc16.h"
#include "panel/frames/wire_shares.h"
#include "panel/frames/wire_words.h"

namespace dov417 {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;

// 10 bits a character at 10000 baud: a byte takes a millisecond, and the inter-frame delay
// 3.5 ms.
const SerialFormat millisecondBytes{10000, 8, Parity::none, 1};

Clock::time_point at(double ms)
{
    return Clock::time_point(std::chrono::hours(1)) +
           microseconds(static_cast<long long>(1000 * ms));
}

QByteArray readOf(int station)
{
    return withCrc(QByteArray::fromHex("03056400 01").prepend(static_cast<char>(station)));
}

// A read of one register that begins here: 8 ms of request, then 7 of reply.
Transmission sentAt(long long number, double ms, int station = 1)
{
    Transmission frame;
    frame.number = number;
    frame.request.station = station;
    frame.request.regName = "R_W";
    frame.request.length = 1;
    frame.sent = readOf(station);
    frame.replyLength = 7;
    frame.sendBegin = at(ms);
    frame.sendEnd = at(ms + 8);
    frame.timeout = milliseconds(100);
    frame.isCyclic = true;
    return frame;
}

Transmission answeredAt(Transmission frame, double lastByte)
{
    frame.reception.result = LineResult::reply;
    frame.reception.bytes = withCrc(QByteArray::fromHex("03020007").prepend(frame.sent.at(0)));
    frame.reception.firstByte = at(lastByte - 6);
    frame.reception.lastByte = at(lastByte);
    frame.verdict = replyAccepted;
    return frame;
}

Transmission unanswered(Transmission frame)
{
    frame.reception.result = LineResult::timeout;
    frame.verdict = replyBad;
    frame.why = Reason::silence;
    return frame;
}

Passed began(const Transmission& frame, long long cycle = 0)
{
    Passed passed;
    passed.what = Passed::What::began;
    passed.transmission = frame;
    passed.cycle = cycle;
    return passed;
}

Passed endedAt(const Transmission& frame, double ms, long long cycle = 0)
{
    Passed passed = began(frame, cycle);
    passed.what = Passed::What::ended;
    passed.at = at(ms);
    return passed;
}

Passed strayAt(double ms, int bytes)
{
    Passed passed;
    passed.what = Passed::What::stray;
    passed.stray.bytes = QByteArray(bytes, 'x');
    passed.stray.at = at(ms);
    return passed;
}

class TheTimeOnTheWire : public testing::Test {
protected:
    TheTimeOnTheWire()
    {
        times.setWire(millisecondBytes);
    }
    ~TheTimeOnTheWire() override
    {
        EXPECT_TRUE(addsUp());
    }
    void add(const std::vector<Passed>& passed, long long notTold = 0)
    {
        times.add(passed, notTold);
    }
    // Begin to end, one after the other, none of them empty.
    bool addsUp() const
    {
        Clock::time_point end = times.begin();
        for (const WireSpan& span : times.spans()) {
            if (span.begin != end || span.end <= span.begin)
                return false;
            end = span.end;
        }
        return end == times.end();
    }
    static std::string textOf(const WireSpan& span)
    {
        return wordOf(span.kind).toStdString() + " " +
               std::to_string(std::chrono::round<milliseconds>(span.end - span.begin).count());
    }
    std::vector<std::string> spans() const
    {
        std::vector<std::string> texts;
        for (const WireSpan& span : times.spans())
            texts.push_back(textOf(span));
        return texts;
    }
    WireShares shares() const
    {
        return sharesOf(times, times.begin(), times.end());
    }

    WireTimes times;
};

TEST_F(TheTimeOnTheWire, IsRequestControllerReplySilenceAndIdle)
{
    const Transmission first = sentAt(1, 0);
    const Transmission second = sentAt(2, 40.5, 2);
    add({began(first), endedAt(answeredAt(first, 20), 20), began(second),
         endedAt(answeredAt(second, 58.5), 58.5)});
    EXPECT_THAT(spans(), ElementsAre("request 8", "the controller's time 5", "reply 7",
                                     "inter-frame delay 4", "idle 17", "request 8",
                                     "the controller's time 3", "reply 7"));
    EXPECT_EQ(times.spans().front().station, 1);
    EXPECT_EQ(times.spans().back().station, 2);
    EXPECT_EQ(times.frames().front().tookFor(SpanKind::responseTime), milliseconds(5));
    EXPECT_THAT(times.stations(), ElementsAre(1, 2));
}

TEST_F(TheTimeOnTheWire, OfAReplyWithPausesBeginsWithItsFirstByte)
{
    Transmission frame = answeredAt(sentAt(1, 0), 40);
    frame.reception.firstByte = at(11);
    add({began(frame), endedAt(frame, 40)});
    EXPECT_THAT(spans(), ElementsAre("request 8", "the controller's time 2", "reply 30"));
}

TEST_F(TheTimeOnTheWire, OfATimeOutEndsWhenItIsOverAndNotWhenThatIsTold)
{
    const Transmission frame = sentAt(1, 0);
    Transmission again = sentAt(2, 120);
    again.repeats = true;
    add({began(frame), endedAt(unanswered(frame), 500), began(again),
         endedAt(answeredAt(again, 137), 137)});
    EXPECT_THAT(spans(), ElementsAre("request 8", "waited in vain 100", "idle 12", "request 8",
                                     "the controller's time 2", "reply 7"));
    EXPECT_EQ(times.spans().back().purpose, SpanPurpose::retry);
    EXPECT_EQ(shares().of(WireUse::timeOuts), milliseconds(100));
    EXPECT_EQ(shares().of(WireUse::retries), milliseconds(17));
    EXPECT_EQ(shares().of(WireUse::requests), milliseconds(8));
}

TEST_F(TheTimeOnTheWire, IsCutWhereTheNextFrameBegins)
{
    const Transmission frame = sentAt(1, 0);
    const Transmission next = sentAt(2, 60);
    add({began(frame), endedAt(unanswered(frame), 500), began(next)});
    EXPECT_THAT(spans(), ElementsAre("request 8", "waited in vain 52"));
}

TEST_F(TheTimeOnTheWire, HoldsStrayBytesWithinAndBetweenFrames)
{
    const Transmission frame = sentAt(1, 0);
    add({began(frame), strayAt(15, 3), endedAt(answeredAt(frame, 30), 30), strayAt(40.5, 2)});
    EXPECT_THAT(spans(),
                ElementsAre("request 8", "the controller's time 4", "bytes that were no reply 3",
                            "the controller's time 8", "reply 7", "inter-frame delay 4", "idle 5",
                            "bytes that were no reply 2"));
    EXPECT_EQ(shares().of(WireUse::strays), milliseconds(5));
    EXPECT_EQ(shares().bytes, milliseconds(20));
}

TEST_F(TheTimeOnTheWire, TellsChecksForLateRepliesApart)
{
    Transmission marker = sentAt(1, 0);
    marker.isMarker = true;
    const Transmission frame = sentAt(2, 30);
    add({began(marker), endedAt(answeredAt(marker, 20), 20), began(frame),
         endedAt(answeredAt(frame, 50), 50)});
    EXPECT_EQ(shares().of(WireUse::markers), milliseconds(20));
    EXPECT_EQ(shares().of(WireUse::requests), milliseconds(8));
}

TEST_F(TheTimeOnTheWire, TakesALateReplyThatIsTakenForNoFrameOfItsOwn)
{
    const Transmission frame = sentAt(1, 0);
    add({began(frame), endedAt(unanswered(frame), 108), endedAt(answeredAt(frame, 130), 130)});
    EXPECT_THAT(spans(), ElementsAre("request 8", "waited in vain 100", "idle 15", "reply 7"));
    EXPECT_EQ(times.frames().size(), 1U);
}

TEST_F(TheTimeOnTheWire, OfWhatIsAnsweredLocallyIsNone)
{
    const Transmission frame = sentAt(1, 0);
    Transmission local = sentAt(0, 0, 3);
    local.isLocal = true;
    add({began(frame), endedAt(answeredAt(frame, 20), 20), endedAt(local, 25)});
    EXPECT_EQ(times.end(), at(20));
    EXPECT_THAT(times.stations(), ElementsAre(1));
}

TEST_F(TheTimeOnTheWire, OfAnIdleLineGoesOnWithoutAFrame)
{
    const Transmission frame = sentAt(1, 0);
    add({began(frame), endedAt(answeredAt(frame, 20), 20)});
    const std::vector<WireSpan> rest = times.underWay(at(50.5));
    ASSERT_EQ(rest.size(), 2U);
    EXPECT_EQ(textOf(rest.front()), "inter-frame delay 4");
    EXPECT_EQ(textOf(rest.back()), "idle 27");
    add({began(sentAt(2, 60))});
    const std::vector<WireSpan> open = times.underWay(at(90));
    ASSERT_EQ(open.size(), 2U);
    EXPECT_EQ(textOf(open.front()), "request 8");
    EXPECT_EQ(textOf(open.back()), "the controller's time 22");
}

TEST_F(TheTimeOnTheWire, IsSharedOutUpToNow)
{
    const Transmission frame = sentAt(1, 0);
    add({began(frame)});
    const WireShares waiting = sharesOf(times, at(-10), at(30));
    EXPECT_EQ(waiting.whole, milliseconds(30));
    EXPECT_EQ(waiting.of(WireUse::requests), milliseconds(8));
    EXPECT_EQ(waiting.of(WireUse::responseTime), milliseconds(22));
    add({endedAt(answeredAt(frame, 31), 31)});
    EXPECT_EQ(sharesOf(times, at(0), at(50)).of(WireUse::idle), microseconds(15500));
}

TEST_F(TheTimeOnTheWire, SaysWhereThePortWasAwayAndWhereItWasNotTold)
{
    const Transmission frame = sentAt(1, 0);
    add({began(frame)});
    times.lineGone();
    const Transmission second = sentAt(2, 100);
    add({began(second), endedAt(answeredAt(second, 120), 120)});
    EXPECT_THAT(spans(), ElementsAre("request 8", "the port was away 92", "request 8",
                                     "the controller's time 5", "reply 7"));
    const Transmission later = sentAt(9, 500);
    add({began(later), endedAt(answeredAt(later, 520), 520)}, 12);
    EXPECT_EQ(shares().of(WireUse::missing), milliseconds(380));
}

TEST_F(TheTimeOnTheWire, IsThatOfTheMomentsWhereBytesHaveNone)
{
    times.setWire(std::nullopt);
    Transmission frame = sentAt(1, 0);
    frame.sendEnd = frame.sendBegin;
    frame = answeredAt(frame, 20);
    frame.reception.firstByte = at(18);
    const Transmission next = sentAt(2, 25);
    add({began(frame), endedAt(frame, 20), began(next)});
    EXPECT_THAT(spans(), ElementsAre("the controller's time 18", "reply 2", "idle 5"));
    EXPECT_FALSE(times.knowsBytes());
}

TEST_F(TheTimeOnTheWire, SaysThatBytesComeFasterThanTheLineCarriesThem)
{
    Transmission frame = answeredAt(sentAt(1, 0), 7);
    frame.reception.firstByte = at(6);
    add({began(frame), endedAt(frame, 7)});
    EXPECT_TRUE(times.isFaster());
    EXPECT_THAT(spans(), ElementsAre("the controller's time 6", "reply 1"));
    const Transmission slow = sentAt(2, 20);
    add({began(slow), endedAt(answeredAt(slow, 40), 40)});
    EXPECT_FALSE(times.isFaster());
}

TEST_F(TheTimeOnTheWire, IsSharedOutByCycles)
{
    for (int i = 0; i < 4; ++i) {
        const Transmission frame = sentAt(i + 1, 50.0 * i);
        add({began(frame, i), endedAt(answeredAt(frame, 50.0 * i + 20), 50.0 * i + 20, i)});
    }
    ASSERT_EQ(times.cycles().size(), 4U);
    const WireShares all = sharesOf(times, times.cycles().front(), times.cycles().back());
    EXPECT_EQ(all.cycles, 3);
    EXPECT_EQ(all.cycle, milliseconds(50));
    EXPECT_EQ(all.whole, milliseconds(150));
    EXPECT_EQ(all.perCycle(WireUse::requests), milliseconds(8));
    EXPECT_EQ(all.perCycle(WireUse::replies), milliseconds(7));
    EXPECT_DOUBLE_EQ(all.part(all.bytes), 0.3);
    Clock::duration sum(0);
    for (const Clock::duration each : all.used)
        sum += each;
    EXPECT_EQ(sum, all.whole);
    EXPECT_EQ(sharesOf(times, at(4), at(8)).of(WireUse::requests), milliseconds(4));
}

TEST_F(TheTimeOnTheWire, KeepsItsMemory)
{
    const int count = static_cast<int>(WireTimes::maxFrames) + 1000;
    for (int i = 0; i < count; ++i) {
        const Transmission frame = sentAt(i + 1, 30.0 * i);
        add({began(frame, i), endedAt(answeredAt(frame, 30.0 * i + 20), 30.0 * i + 20, i)});
    }
    EXPECT_LE(times.frames().size(), WireTimes::maxFrames);
    EXPECT_GT(times.frames().size(), WireTimes::maxFrames / 2);
    EXPECT_EQ(times.begin(), times.frames().front().begin);
    EXPECT_EQ(times.cycles().size(), times.frames().size());
    EXPECT_EQ(times.find(1), nullptr);
    ASSERT_NE(times.find(count), nullptr);
    EXPECT_EQ(times.placeAt(times.frames()[7].begin + milliseconds(1)), 7U);
}

TEST_F(TheTimeOnTheWire, KeepsItsMemoryWhereThereIsNothingButNoise)
{
    const int count = static_cast<int>(WireTimes::maxSpans) + 1000;
    for (int i = 0; i < count; ++i)
        add({strayAt(30.0 * i, 1)});
    EXPECT_LE(times.spans().size(), WireTimes::maxSpans);
    EXPECT_GT(times.spans().size(), WireTimes::maxSpans / 2);
    EXPECT_TRUE(times.frames().empty());
}

TEST_F(TheTimeOnTheWire, IsToldInWords)
{
    const Transmission frame = sentAt(1, 0, 3);
    add({began(frame), endedAt(answeredAt(frame, 20), 20)});
    const std::vector<Area> areas = {{"R_W", false, 1280, 1000}};
    const std::string text = frameText(times.frames().front(), areas).toStdString();
    EXPECT_THAT(text, HasSubstr("station 3: read 1 register from 1380 (R_W:100)"));
    EXPECT_THAT(text, HasSubstr("station 3: R_W:100 = 7"));
    EXPECT_THAT(text, HasSubstr("request 8.000 ms \u00b7 the controller's time 5.000 ms \u00b7 "
                                "reply 7.000 ms \u00b7 together 20.000 ms"));
    EXPECT_EQ(shortFrameText(frame, areas), "R_W:100");
    EXPECT_THAT(sharesText(shares()).toStdString(),
                HasSubstr("bytes use 75.0\u00a0% of the line; for 25.0\u00a0% the controllers"));
    const Transmission silent = sentAt(2, 30, 3);
    add({began(silent), endedAt(unanswered(silent), 140)});
    EXPECT_THAT(frameText(times.frames().back(), areas).toStdString(),
                HasSubstr("no answer: no byte came"));
}

} // namespace

} // namespace dov417
