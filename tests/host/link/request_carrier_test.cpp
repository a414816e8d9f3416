#include "link/request_carrier.h"

#include <gmock/gmock.h>
#include <map>

#include "exchange.h"
#include "line/crc16.h"
#include "simulator/controller.h"

namespace dov417 {

namespace {

using simulator::Controller;
using simulator::Limits;
using simulator::Memory;
using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

Limits upTo(int words)
{
    Limits limits;
    limits.readRegisters = words;
    limits.readCoils = 16 * words;
    limits.writeRegisters = words;
    limits.writeCoils = 16 * words;
    return limits;
}

Transmission read(const char* regName, int address, int length, int station = 1)
{
    Transmission request;
    request.request = {4, station, regName, address, length};
    const bool coils = request.request.regName == "M_W";
    const int number = coils ? 4096 + 16 * address : 1280 + address;
    const int quantity = coils ? 16 * length : length;
    request.sent.append(static_cast<char>(station)).append(coils ? '\1' : '\3');
    for (const int each : {number, quantity})
        request.sent.append(static_cast<char>(each >> 8)).append(static_cast<char>(each & 0xFF));
    request.sent = withCrc(request.sent);
    request.replyLength = 5 + 2 * length;
    return request;
}

// Word i of it is 100 + i.
Transmission write(int address, int length, int station = 1)
{
    Transmission request = read("R_W", address, length, station);
    request.sent[1] = 16;
    request.sent.chop(2);
    request.sent.append(static_cast<char>(2 * length & 0xFF));
    for (int word = 0; word < length; ++word)
        request.sent.append('\0').append(static_cast<char>(100 + word));
    request.sent = withCrc(request.sent);
    request.replyLength = station == 0 ? 0 : 8;
    return request;
}

Transmission again(Transmission request)
{
    request.repeats = true;
    return request;
}

// A line on which a controller answers each frame when answerNext() is called.
class ACarrier : public ::testing::Test {
protected:
    ACarrier()
    {
        line.transact = [this](const Transmission& frame, Exchange::Done done) {
            underWay = frame;
            whenDone = std::move(done);
        };
        line.partEnded = [this](const Transmission& part) { parts.push_back(part); };
        line.notice = [this](const std::string& text) { notices.push_back(text); };
        line.mayCut = [this](const Request&, int word) { return inside.count(word) == 0; };
        line.isWanted = [this]() { return isWanted; };
    }

    void carry(const Transmission& request, int maxRegisters = learnedMaximum)
    {
        if (!carrier)
            carrier = std::make_unique<RequestCarrier>(line, maxRegisters);
        asked.clear();
        parts.clear();
        outcome = Transmission();
        isDone = false;
        carrier->carry(request, [this](const Transmission& record) {
            outcome = record;
            isDone = true;
        });
    }

    // The frame on the line gets the controller's reply, or this one, or none.
    void answerNext()
    {
        Transmission frame = underWay;
        const int words = frame.request.length;
        asked.push_back(words);
        frame.number = ++transmissions;
        frame.sendBegin = Clock::time_point(milliseconds(100 * transmissions));
        frame.sendEnd = frame.sendBegin + milliseconds(10);
        frame.reception.firstByte = frame.sendBegin + milliseconds(20);
        frame.reception.lastByte = frame.sendBegin + milliseconds(30);
        frame.asOf = frame.reception.lastByte;
        frame.reception.bytes = replies.count(transmissions) != 0
                                    ? replies.at(transmissions)
                                    : Controller(memory, limits).answer(frame.sent);
        const QByteArray& bytes = frame.reception.bytes;
        frame.reception.result = frame.replyLength == 0      ? LineResult::broadcast
                                 : bytes.isEmpty()           ? LineResult::timeout
                                 : (bytes.at(1) & 0x80) != 0 ? LineResult::exception
                                                             : LineResult::reply;
        const Exchange::Done done = std::move(whenDone);
        done(frame);
    }

    void complete(const Transmission& request, int maxRegisters = learnedMaximum)
    {
        carry(request, maxRegisters);
        while (!isDone)
            answerNext();
    }

    QByteArray wholeReply(const Transmission& request)
    {
        return Controller(memory).answer(request.sent);
    }

    Memory memory{{1, 2}};
    Limits limits;
    CarrierLine line;
    std::unique_ptr<RequestCarrier> carrier;
    Transmission underWay;
    Exchange::Done whenDone;
    int transmissions = 0;
    std::map<int, QByteArray> replies; // by the number of the transmission; the controller's else
    std::set<int> inside;              // words before which no part may end
    bool isWanted = true;

    std::vector<int> asked; // words of each frame since carry()
    std::vector<Transmission> parts;
    std::vector<std::string> notices;
    Transmission outcome;
    bool isDone = false;
};

TEST_F(ACarrier, HandsOnWhatIsAnsweredWhole)
{
    complete(read("R_W", 0, 128));
    EXPECT_THAT(asked, ElementsAre(128));
    EXPECT_THAT(parts, IsEmpty());
    EXPECT_EQ(outcome.frames, 0);
    EXPECT_EQ(outcome.number, 1);
    EXPECT_EQ(outcome.reception.bytes, wholeReply(outcome));
}

TEST_F(ACarrier, JoinsThePartsIntoTheReplyThatTheDriverExpects)
{
    complete(write(0, 128));
    complete(read("R_W", 0, 128));
    const QByteArray reply = outcome.reception.bytes;
    carrier.reset();
    for (const int maximum : {2, 16, 32, 60, 125, 127}) {
        limits = upTo(maximum);
        complete(read("R_W", 0, 128), maximum);
        EXPECT_EQ(outcome.reception.bytes, reply);
        EXPECT_EQ(outcome.reception.result, LineResult::reply);
        EXPECT_EQ(outcome.frames, static_cast<int>(asked.size()));
        EXPECT_EQ(asked.size(), parts.size());
        carrier.reset();
    }
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(ACarrier, TellsEachPartAsATransmissionOfItsOwn)
{
    complete(read("R_W", 100, 70), 60);
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_TRUE(parts.at(1).isPart);
    EXPECT_EQ(parts.at(1).request.regName, "R_W");
    EXPECT_EQ(parts.at(1).request.address, 160);
    EXPECT_EQ(parts.at(1).request.length, 10);
    EXPECT_EQ(parts.at(1).replyLength, 25);
    EXPECT_EQ(parts.at(1).number, 2);
    EXPECT_FALSE(outcome.isPart);
    EXPECT_EQ(outcome.request.length, 70);
    EXPECT_EQ(outcome.replyLength, 145);
}

TEST_F(ACarrier, GivesTheJoinedReplyTheTimesOfItsParts)
{
    complete(read("R_W", 0, 128), 125);
    EXPECT_EQ(outcome.sendBegin, parts.front().sendBegin);
    EXPECT_EQ(outcome.sendEnd, parts.back().sendEnd);
    EXPECT_EQ(outcome.reception.firstByte, parts.front().reception.firstByte);
    EXPECT_EQ(outcome.reception.lastByte, parts.back().reception.lastByte);
    EXPECT_EQ(outcome.asOf, parts.front().asOf) << "at the earliest";
    ASSERT_EQ(outcome.parts.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(outcome.parts.at(i).words.address, parts.at(i).request.address);
        EXPECT_EQ(outcome.parts.at(i).words.length, parts.at(i).request.length);
        EXPECT_EQ(outcome.parts.at(i).asOf, parts.at(i).asOf);
    }
}

TEST_F(ACarrier, LearnsOnceWhatAStationTakes)
{
    limits = Limits::strict();
    complete(read("R_W", 0, 128));
    EXPECT_THAT(asked, ElementsAre(128, 125, 3));
    ASSERT_EQ(parts.size(), 3U) << "the refused one was on the line as well";
    EXPECT_TRUE(parts.at(0).isPart);
    EXPECT_EQ(outcome.frames, 3);
    EXPECT_EQ(outcome.reception.bytes, wholeReply(outcome));
    EXPECT_THAT(notices, ElementsAre("station 1 refuses 128 registers in one request: they go out "
                                     "in parts of at most 125 from now on"));
    complete(read("R_W", 0, 127));
    EXPECT_THAT(asked, ElementsAre(125, 2));
    complete(read("M_W", 0, 128));
    EXPECT_THAT(asked, ElementsAre(125, 3));
    complete(write(0, 125));
    EXPECT_THAT(asked, ElementsAre(123, 2)) << "the protocol lets a write carry less";
    complete(read("R_W", 0, 125));
    EXPECT_THAT(asked, ElementsAre(125));
    complete(read("R_W", 0, 128, 2));
    EXPECT_THAT(asked, ElementsAre(128, 125, 3)) << "another station";
    EXPECT_EQ(notices.size(), 2U);
}

TEST_F(ACarrier, CountsCoilsAsTheProtocolDoes)
{
    limits = Limits::strict();
    complete(read("M_W", 0, 128));
    EXPECT_THAT(asked, ElementsAre(128, 125, 3));
    EXPECT_THAT(notices, ElementsAre("station 1 refuses 2048 coils in one request: they go out in "
                                     "parts of at most 2000 from now on"));
}

TEST_F(ACarrier, FindsOutHowLittleASmallControllerTakes)
{
    limits = upTo(40);
    complete(read("R_W", 0, 128));
    EXPECT_THAT(asked, ElementsAre(128, 125, 60, 32, 32, 32, 32));
    complete(read("R_W", 0, 64));
    EXPECT_THAT(asked, ElementsAre(32, 32));
    EXPECT_EQ(notices.size(), 1U);
    // It turns out smaller still, for writes.
    limits = upTo(20);
    complete(write(0, 30));
    EXPECT_THAT(asked, ElementsAre(30, 16, 14));
    EXPECT_EQ(outcome.reception.bytes, wholeReply(outcome));
    EXPECT_EQ(notices.size(), 2U);
    complete(read("R_W", 0, 17));
    EXPECT_THAT(asked, ElementsAre(16, 1));
}

TEST_F(ACarrier, TriesARequestOnceThatIsRefusedInAnyLength)
{
    // R_W ends at 3999.
    complete(read("R_W", 3990, 64));
    EXPECT_THAT(asked, ElementsAre(64, 60, 32, 16));
    EXPECT_EQ(outcome.reception.result, LineResult::exception);
    EXPECT_EQ(exceptionCode(outcome.reception), 2);
    complete(again(read("R_W", 3990, 64)));
    EXPECT_THAT(asked, ElementsAre(64));
    EXPECT_EQ(exceptionCode(outcome.reception), 2);
    EXPECT_EQ(outcome.frames, 0);
    EXPECT_EQ(outcome.where, "in parts: exception 2 (illegal data address) in R_W:3990..4005, part "
                             "1 of 4");
    complete(read("R_W", 0, 64));
    EXPECT_THAT(asked, ElementsAre(64)) << "nothing was learned";
    EXPECT_THAT(notices, IsEmpty());
}

// As it is while it starts, or is stopped.
TEST_F(ACarrier, TriesAgainWhatWasRefusedInAnyLengthAMinuteBefore)
{
    limits = upTo(0);
    complete(read("R_W", 0, 128));
    ASSERT_EQ(outcome.reception.result, LineResult::exception);
    limits = upTo(125);
    complete(read("R_W", 0, 128));
    EXPECT_THAT(asked, ElementsAre(128));
    transmissions += 600; // a minute of them
    complete(read("R_W", 0, 128));
    EXPECT_EQ(outcome.reception.bytes, wholeReply(outcome));
}

TEST_F(ACarrier, TriesAShorterRequestThatBeginsWhereALongerOneWasRefusedInAnyLength)
{
    limits = upTo(40);
    complete(read("R_W", 3900, 120)); // R_W ends at 3999
    EXPECT_EQ(exceptionCode(outcome.reception), 2);
    complete(read("R_W", 3900, 64));
    EXPECT_THAT(asked, ElementsAre(64, 60, 32, 32));
    EXPECT_EQ(outcome.reception.bytes, wholeReply(outcome));
}

TEST_F(ACarrier, DoesNotTryWhereAsLongAnAnswerCameBefore)
{
    complete(read("R_W", 0, 64));
    complete(read("R_W", 3990, 64));
    EXPECT_THAT(asked, ElementsAre(64));
    EXPECT_EQ(outcome.where, "");
    // The first part is answered, so that the length is not what is wrong with the second.
    complete(read("R_W", 3900, 128));
    EXPECT_THAT(asked, ElementsAre(128, 125, 60, 59)) << "longer than anything before";
    EXPECT_EQ(outcome.where, "in R_W:3960..4018, part 2 of 3");
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(ACarrier, TakesOtherExceptionsForWhatTheyAre)
{
    replies[1] = withCrc(hex("018306"));
    complete(read("R_W", 0, 128));
    EXPECT_THAT(asked, ElementsAre(128));
    EXPECT_EQ(exceptionCode(outcome.reception), 6);
}

TEST_F(ACarrier, TriesAgainWhereATrialHadNoAnswer)
{
    limits = Limits::strict();
    replies[3] = QByteArray();
    complete(read("R_W", 0, 128));
    EXPECT_THAT(asked, ElementsAre(128, 125, 3));
    EXPECT_EQ(outcome.reception.result, LineResult::timeout);
    EXPECT_THAT(notices, IsEmpty());
    complete(again(read("R_W", 0, 128)));
    EXPECT_THAT(asked, ElementsAre(128, 125, 3));
    EXPECT_EQ(outcome.reception.bytes, wholeReply(outcome));
    EXPECT_EQ(notices.size(), 1U);
}

TEST_F(ACarrier, NeverCutsWhereThatIsForbidden)
{
    limits = Limits::strict();
    complete(read("R_W", 0, 128), noMaximum);
    EXPECT_THAT(asked, ElementsAre(128));
    EXPECT_EQ(exceptionCode(outcome.reception), 3);
    limits = Limits();
    complete(write(0, 128));
    EXPECT_THAT(asked, ElementsAre(128));
}

TEST_F(ACarrier, LooksForNoOtherMaximumThanTheOneGiven)
{
    limits = upTo(20);
    complete(read("R_W", 0, 70), 60);
    EXPECT_THAT(asked, ElementsAre(60));
    EXPECT_EQ(exceptionCode(outcome.reception), 3);
    EXPECT_EQ(outcome.where, "in R_W:0..59, part 1 of 2");
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(ACarrier, AStationsOwnMaximumWinsOverThatOfAll)
{
    const Transmission request = read("R_W", 0, 70); // of station 1
    const auto asks = [&](int ofAll, const std::map<int, int>& ofStations) {
        carrier = std::make_unique<RequestCarrier>(line, ofAll, noMaximum, ofStations);
        complete(request);
        EXPECT_EQ(outcome.reception.bytes, wholeReply(request));
        return asked;
    };
    EXPECT_THAT(asks(60, {{1, 40}}), ElementsAre(40, 30));
    EXPECT_THAT(asks(60, {{2, 40}}), ElementsAre(60, 10));
    EXPECT_THAT(asks(60, {{1, noMaximum}}), ElementsAre(70));
    EXPECT_THAT(asks(learnedMaximum, {{1, 40}}), ElementsAre(40, 30));
    limits = upTo(20);
    carrier = std::make_unique<RequestCarrier>(line, learnedMaximum, noMaximum,
                                               std::map<int, int>{{1, 40}});
    complete(request);
    EXPECT_THAT(asked, ElementsAre(40)) << "it looks for no other";
}

TEST_F(ACarrier, CutsBetweenValuesOrNotAtAll)
{
    for (int word = 1; word < 128; word += 2)
        inside.insert(word);
    complete(read("R_W", 0, 128), 125);
    EXPECT_THAT(asked, ElementsAre(124, 4));
    complete(read("R_W", 1, 127));
    EXPECT_THAT(asked, ElementsAre(125, 2)) << "by the words' own addresses";
    for (int word = 0; word < 128; ++word)
        inside.insert(word);
    complete(read("R_W", 0, 128));
    EXPECT_THAT(asked, ElementsAre(128));
}

TEST_F(ACarrier, TriesNothingThatWouldCutAValue)
{
    limits = upTo(40);
    for (int word = 1; word < 64; ++word)
        if (word != 50)
            inside.insert(word);
    complete(read("R_W", 0, 64));
    EXPECT_THAT(asked, ElementsAre(64, 50)) << "no way to cut it at 32";
    EXPECT_EQ(exceptionCode(outcome.reception), 3);
}

TEST_F(ACarrier, TellsWhatBecameOfThePartThatFailed)
{
    replies[2] = QByteArray();
    complete(read("R_W", 100, 128), 60);
    EXPECT_THAT(asked, ElementsAre(60, 59)) << "nothing is sent after it";
    EXPECT_EQ(outcome.reception.result, LineResult::timeout);
    EXPECT_EQ(outcome.reception.bytes, QByteArray());
    EXPECT_EQ(outcome.where, "in R_W:160..218, part 2 of 3");
    EXPECT_EQ(outcome.request.length, 128);
    EXPECT_EQ(outcome.sent, read("R_W", 100, 128).sent);
    EXPECT_EQ(outcome.frames, 2);

    replies[3] = hex("010378") + QByteArray(122, '\1'); // as long as the part's
    complete(again(read("R_W", 100, 128)));
    EXPECT_EQ(outcome.reception.bytes, replies[3]);
    EXPECT_EQ(outcome.replyLength, 125) << "garbled, and not cut short";

    replies[4] = withCrc(hex("018302"));
    complete(again(read("R_W", 100, 128)));
    EXPECT_EQ(outcome.reception.bytes, replies[4]);
    EXPECT_EQ(outcome.reception.result, LineResult::exception);
}

TEST_F(ACarrier, SaysWhichWordsOfAWriteWereTaken)
{
    replies[3] = QByteArray();
    complete(write(100, 100), 40);
    EXPECT_THAT(asked, ElementsAre(40, 39, 21));
    EXPECT_EQ(outcome.where, "in R_W:179..199, part 3 of 3; R_W:100..178 was taken");
    replies[4] = withCrc(hex("019002"));
    complete(again(write(100, 100)));
    EXPECT_EQ(outcome.where, "in R_W:100..139, part 1 of 3; R_W:100..178 was taken")
        << "by the attempt before";
    replies[6] = QByteArray();
    complete(again(write(100, 100)));
    EXPECT_EQ(outcome.where, "in R_W:140..178, part 2 of 3; R_W:100..178 was taken");
    replies[7] = QByteArray();
    complete(write(100, 100));
    EXPECT_EQ(outcome.where, "in R_W:100..139, part 1 of 3") << "another write of the same";
    complete(again(write(100, 100)));
    EXPECT_EQ(outcome.reception.bytes, wholeReply(write(100, 100)));
}

// Some controllers take less than they were sent, and say so.
TEST_F(ACarrier, TakesAPartThatWasTakenOtherwiseForAFailure)
{
    const Transmission request = write(0, 20);
    replies[2] = withCrc(QByteArray::fromHex("011005100002")); // two of four
    complete(request, 16);
    EXPECT_THAT(asked, ElementsAre(16, 4));
    EXPECT_EQ(outcome.reception.result, LineResult::timeout);
    EXPECT_TRUE(outcome.reception.bytes.isEmpty());
    EXPECT_EQ(reasonOf(outcome.reception, outcome.replyLength), Reason::otherRequest);
    EXPECT_EQ(outcome.where,
              "in R_W:16..19, part 2 of 2: it was answered with another quantity: 2; "
              "R_W:0..15 was taken");
}

TEST_F(ACarrier, SaysWhatARefusedTrialHasWritten)
{
    complete(write(3950, 64));
    EXPECT_THAT(asked, ElementsAre(64, 60, 32, 32));
    EXPECT_EQ(outcome.where, "in R_W:3982..4013, part 2 of 2; R_W:3950..3981 was taken");
    complete(again(write(3950, 64)));
    EXPECT_THAT(asked, ElementsAre(64));
    EXPECT_EQ(outcome.where, "in parts: exception 2 (illegal data address) in R_W:3982..4013, part "
                             "2 of 2; R_W:3950..3981 was taken");
}

TEST_F(ACarrier, SplitsABroadcastToo)
{
    complete(write(0, 100, 0), 60);
    EXPECT_THAT(asked, ElementsAre(60, 40));
    EXPECT_EQ(parts.at(0).replyLength, 0);
    EXPECT_EQ(outcome.reception.result, LineResult::broadcast);
    EXPECT_EQ(outcome.reception.bytes, QByteArray());
    complete(read("R_W", 0, 100, 2));
    EXPECT_EQ(outcome.reception.bytes.mid(3, 4), hex("00640065"));
    EXPECT_EQ(outcome.reception.bytes.mid(201, 2), hex("00C7"));
}

TEST_F(ACarrier, SendsNoFurtherPartOfARequestThatTheDriverHasForgotten)
{
    carry(write(0, 100), 60);
    isWanted = false;
    answerNext();
    ASSERT_TRUE(isDone);
    EXPECT_THAT(asked, ElementsAre(60));
    EXPECT_EQ(outcome.frames, 1);
    EXPECT_EQ(outcome.request.length, 100);
}

TEST_F(ACarrier, BeginsAnewWhereThePortWasLost)
{
    carry(write(0, 100), 60);
    answerNext();
    // Handed out again when the port is back: nothing was told of the first attempt.
    replies[2] = QByteArray();
    complete(write(0, 100));
    EXPECT_EQ(outcome.where, "in R_W:0..59, part 1 of 2; R_W:0..59 was taken");
    complete(again(write(0, 100)));
    EXPECT_THAT(asked, ElementsAre(60, 40));
    EXPECT_EQ(outcome.reception.bytes, wholeReply(write(0, 100)));

    carry(write(0, 100));
    answerNext();
    replies[6] = QByteArray();
    complete(write(200, 100));
    EXPECT_EQ(outcome.where, "in R_W:200..259, part 1 of 2") << "the first is forgotten";
}

// What was answered before may have been the replies to other requests.
TEST_F(ACarrier, AsksForThePartsAgainThatWereAnsweredBeforeADoubt)
{
    carry(read("R_W", 0, 90), 60);
    answerNext();
    carrier->doubt();
    answerNext();
    EXPECT_FALSE(isDone);
    answerNext();
    answerNext();
    ASSERT_TRUE(isDone);
    EXPECT_EQ(outcome.frames, 4);
    ASSERT_EQ(outcome.parts.size(), 2U);
    EXPECT_GE(outcome.asOf, Clock::time_point(milliseconds(300))) << "nothing of before";
    carry(read("R_W", 0, 90), 60);
    carrier->doubt();
    answerNext();
    answerNext();
    EXPECT_TRUE(isDone) << "nothing was answered before it";
}

TEST_F(ACarrier, DoesNotSayThatWordsWereTakenBeforeADoubt)
{
    carry(write(0, 90), 60);
    answerNext();
    carrier->doubt();
    EXPECT_EQ(carrier->takenText(4), "");
    answerNext();
    EXPECT_EQ(carrier->takenText(4), "");
    answerNext();
    EXPECT_THAT(carrier->takenText(4), HasSubstr("was taken"));
}

TEST_F(ACarrier, LeavesBitsAlone)
{
    Transmission bits = read("M_W", 0, 4);
    bits.request.regName = "M_bit";
    bits.request.length = 64;
    complete(bits, 2);
    EXPECT_THAT(asked, ElementsAre(64));
    EXPECT_THAT(parts, IsEmpty());
}

TEST_F(ACarrier, NeverSendsMoreThanTheLineHasRoomFor)
{
    limits = upTo(128); // the station would take it
    constexpr int room = 125;
    for (const int told : {learnedMaximum, noMaximum}) {
        carrier = std::make_unique<RequestCarrier>(line, told, room);
        complete(read("R_W", 0, 128));
        EXPECT_THAT(asked, ElementsAre(125, 3));
        EXPECT_EQ(outcome.reception.bytes, wholeReply(read("R_W", 0, 128)));
        complete(read("M_W", 0, 128));
        EXPECT_THAT(asked, ElementsAre(125, 3));
        complete(write(0, 125));
        EXPECT_THAT(asked, ElementsAre(123, 2));
    }
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(ACarrier, LearnsLessThanTheLineHasRoomFor)
{
    limits = upTo(60);
    carrier = std::make_unique<RequestCarrier>(line, learnedMaximum, 125);
    complete(read("R_W", 0, 128));
    EXPECT_EQ(asked.front(), 125);
    EXPECT_EQ(outcome.reception.bytes, wholeReply(read("R_W", 0, 128)));
    complete(read("R_W", 0, 128));
    for (const int words : asked)
        EXPECT_LE(words, 60);
}

} // namespace

} // namespace dov417
