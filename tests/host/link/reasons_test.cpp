#include "link/reasons.h"

#include <gtest/gtest.h>
#include <set>

#include "hand_line.h"
#include "line/frame_bytes.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// One register of station 1, of which this is the reply.
const char* const wholeRead = "0103050A0001";
const char* const wholeReply = "0103020007";
constexpr int dueBytes = 7;

struct Case {
    const char* name;
    std::vector<const char*> frames; // whole, without their CRC
    std::vector<const char*> bytes;
    Reason why;
    const char* words;
};

const Case cases[] = {
    {"Nothing", {}, {}, Reason::silence, "no answer: no byte came"},
    {"Noise", {}, {"FF01AA"}, Reason::noFrame, "no answer: 3 bytes came, but no frame"},
    {"OneByte", {}, {"FF"}, Reason::noFrame, "no answer: 1 byte came, but no frame"},
    {"AnotherStation",
     {"0203020007"},
     {},
     Reason::otherStation,
     "no answer: another station answered (2)"},
    {"AnotherStationInNoise",
     {"0203020007"},
     {"FF01AA"},
     Reason::otherStation,
     "no answer: another station answered (2)"},
    {"AnotherFunction",
     {"0104020007"},
     {},
     Reason::otherFunction,
     "no answer: another function was answered (4)"},
    {"AnotherFunctionRefused",
     {"018402"},
     {},
     Reason::otherFunction,
     "no answer: another function was answered (4)"},
    {"AnotherQuantity",
     {"01030400010002"},
     {},
     Reason::otherRequest,
     "no answer: another request was answered"},
    {"TheEchoOfTheRequestAlone", {wholeRead}, {}, Reason::silence, "no answer: no byte came"},
    {"Garbled", {}, {"01030200070000"}, Reason::badCrc, "bad CRC"},
    {"Short", {}, {"01030200"}, Reason::cutShort, "reply cut short: 4 of 7 bytes"},
    {"Refusal", {"018302"}, {}, Reason::exception, "exception 2 (illegal data address)"},
};

class ARequestThatIsAnsweredBy : public ::testing::TestWithParam<Case> {};

TEST_P(ARequestThatIsAnsweredBy, HasItsReason)
{
    HandLine line;
    line.start();
    line.ask(wholeRead, dueBytes); // the line is a good one
    line.pass(milliseconds(20));
    line.comeWhole(wholeReply);
    ASSERT_EQ(line.ended->reception.result, LineResult::reply);
    line.pass(milliseconds(20));

    line.ask(wholeRead, dueBytes);
    line.pass(milliseconds(20));
    for (const char* const frame : GetParam().frames) {
        line.comeWhole(frame);
        line.pass(milliseconds(120));
    }
    for (const char* const bytes : GetParam().bytes)
        line.come(bytes);
    line.pass(seconds(1));
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(reasonOf(line.ended->reception, dueBytes), GetParam().why);
    EXPECT_EQ(line.reason(), GetParam().words);
    EXPECT_NE(line.reason().find(nameOf(GetParam().why)), std::string::npos)
        << "messages and counters have the same words";
}

INSTANTIATE_TEST_SUITE_P(Reasons, ARequestThatIsAnsweredBy, ::testing::ValuesIn(cases),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(AReason, IsAnotherSpeedOrParityWhereNoFrameHasEverCome)
{
    HandLine line;
    line.start();
    line.ask(wholeRead, dueBytes);
    line.come("FE01AA55");
    line.pass(seconds(1));
    EXPECT_EQ(line.reason(),
              "no answer: 4 bytes came, but no frame; looks like another speed or parity");
}

TEST(AReason, IsThatOfItsOwnRequest)
{
    HandLine line;
    line.start();
    line.ask(wholeRead, dueBytes);
    line.come("FE01AA55");
    line.pass(seconds(1));
    ASSERT_EQ(reasonOf(line.ended->reception, dueBytes), Reason::noFrame);
    line.ask("0103050B0002", dueBytes + 2);
    line.pass(seconds(10));
    EXPECT_EQ(line.reason(), "no answer: no byte came") << "and nothing of the request before";
}

TEST(AReason, IsALateReplyWhereOneToAnotherRequestCame)
{
    HandLine line;
    line.settings.timeout.isFixed = true;
    line.start();
    line.ask(wholeRead, dueBytes);
    line.pass(milliseconds(600));
    EXPECT_EQ(line.reason(), "no answer: no byte came");
    line.ask("0103050B0002", dueBytes + 2); // another length, so it need not wait
    line.comeWhole(wholeReply);
    line.pass(seconds(1));
    EXPECT_EQ(line.reason(), "no answer: only a late reply to an earlier request came");
    EXPECT_EQ(reasonOf(line.ended->reception, dueBytes + 2), Reason::late);
}

TEST(AReason, IsThatItWasHeldBackWhereALateReplyCouldBeTakenForItsOwn)
{
    HandLine line;
    line.settings.timeout.isFixed = true;
    line.settings.mayMark = false;
    line.start();
    line.ask("010600010007", 8);
    line.pass(milliseconds(600));
    line.ask("010600010008", 8); // the read before it is not answered
    line.pass(seconds(2));
    EXPECT_EQ(line.sent.size(), 2U);
    EXPECT_EQ(line.reason(), "held back: a late reply could be taken for its own");
}

// A station of which nothing is known yet is asked for a marker first, and where that comes back
// garbled the request never goes out.
TEST(AReason, IsThatOfTheMarkersWhereOnlyTheseWentOut)
{
    struct Garbled {
        int cut;
        Reason why;
        const char* ofEcho;
        const char* ofRead;
    };
    for (const Garbled& each : {Garbled{0, Reason::badCrc, "bad CRC", "bad CRC"},
                                Garbled{3, Reason::cutShort, "reply cut short: 5 of 8 bytes",
                                        "reply cut short: 6 of 9 bytes"}}) {
        HandLine line;
        line.settings.isShared = true;
        line.settings.timeout.isFixed = true;
        std::vector<Transmission> markers;
        line.ends = [&markers](const Transmission& marker) { markers.push_back(marker); };
        line.start();
        line.askRead(readOf100, 1);
        for (std::size_t answered = 0; answered < line.sent.size(); ++answered) {
            QByteArray reply = line.sent.at(answered);
            if (reply.at(1) == readRegisters)
                reply = withCrc(QByteArray::fromHex("01030400070008"));
            reply[reply.size() - 1] = static_cast<char>(reply.at(reply.size() - 1) ^ 1);
            reply.chop(each.cut);
            line.exchange->bytesCame(reply, line.now);
            line.pass(milliseconds(200));
        }
        line.pass(seconds(1));
        ASSERT_TRUE(line.ended.has_value());
        EXPECT_EQ(line.reason(), each.ofRead);
        EXPECT_EQ(reasonOf(line.ended->reception, dueBytes), each.why);
        ASSERT_EQ(markers.size(), 3U) << "two echoes, and a read of another length";
        EXPECT_EQ(line.sent.size(), markers.size());
        for (const Transmission& marker : markers) {
            const bool isRead = marker.sent.at(1) == readRegisters;
            EXPECT_EQ(reasonText(marker.reception, marker.replyLength),
                      isRead ? each.ofRead : each.ofEcho);
            EXPECT_EQ(marker.why, each.why);
            EXPECT_EQ(marker.reception.bytes.size(), (isRead ? 9 : 8) - each.cut) << "for the log";
        }
    }
}

// Of several markers for one request, each answered by something else, one tells more than others.
TEST(AReason, IsThatOfTheMarkerThatSaysMost)
{
    struct Answered {
        std::vector<const char*> by; // in turn, if it is an echo; empty: nothing
        Reason why;
        const char* words;
    };
    const Answered each[] = {
        {{"01080000FFFFFFFF"}, Reason::badCrc, "bad CRC"},
        {{"FE01AA", ""}, Reason::noFrame, "no answer: 3 bytes came, but no frame"},
        {{"01080000FFFFFFFF", "FE01AA"}, Reason::badCrc, "bad CRC"},
        {{"FE01AA", "010800"}, Reason::cutShort, "reply cut short: 3 of 8 bytes"},
    };
    for (const Answered& answered : each) {
        HandLine line;
        line.settings.isShared = true;
        line.settings.timeout.isFixed = true;
        line.start();
        line.ask("010306000001", dueBytes);
        for (std::size_t seen = 0; !line.ended && seen < 10; ++seen) {
            const bool isSaid = seen < answered.by.size() && seen < line.sent.size();
            if (isSaid && line.sent.at(seen).at(1) == 8)
                line.come(answered.by.at(seen));
            line.pass(milliseconds(600));
        }
        ASSERT_TRUE(line.ended.has_value());
        EXPECT_EQ(line.reason().substr(0, std::string(answered.words).size()), answered.words);
        EXPECT_EQ(reasonOf(line.ended->reception, dueBytes), answered.why);
    }
}

// The station is known, and after one garbled reply a marker precedes the next request.
TEST(AReason, IsThatOfTheMarkerToAStationThatIsKnown)
{
    struct Answered {
        const char* name;
        const char* by; // a frame or bytes
        bool isFrame;
        const char* words;
    };
    const Answered each[] = {
        {"garbled", "01080000FFFFFFFF", false, "bad CRC"},
        {"noise", "FF01AA", false, "no answer: 3 bytes came, but no frame"},
        {"station", "020800000001", true, "no answer: another station answered (2)"},
        {"function", "0104020007", true, "no answer: another function was answered (4)"},
        {"nothing", "", false, "no answer: no byte came"},
    };
    for (const Answered& answered : each) {
        SCOPED_TRACE(answered.name);
        HandLine line;
        line.settings.timeout.isFixed = true;
        line.start();
        line.ask(readOf100, dueBytes);
        line.comeWhole("0103021234");
        line.pass(milliseconds(20));
        line.ask(readOf100, dueBytes);
        line.come("01030212340000");
        line.pass(milliseconds(200));
        ASSERT_EQ(line.reason(), "bad CRC");
        line.ask(readOf200, dueBytes);
        ASSERT_EQ(line.sent.size(), 3U);
        ASSERT_EQ(line.sent.back().at(1), 8) << "a marker";
        if (answered.isFrame)
            line.comeWhole(answered.by);
        else
            line.come(answered.by);
        line.pass(seconds(1));
        ASSERT_TRUE(line.ended.has_value());
        EXPECT_EQ(line.reason(), answered.words);
        EXPECT_EQ(line.sent.size(), 3U);
    }
}

// What comes late and garbled is in the log and in the counters.
TEST(AReason, IsNotLostOfWhatComesGarbledWhileAStationIsListenedTo)
{
    HandLine line;
    line.start();
    line.ask(readOf100, dueBytes);
    line.pass(milliseconds(600));
    line.ask(readOf100, dueBytes);
    ASSERT_EQ(line.sent.size(), 1U) << "it is listened to";
    line.come("01030212340000");
    line.pass(milliseconds(200));
    ASSERT_EQ(line.strays.size(), 1U);
    EXPECT_EQ(line.strays.front().kind, StrayKind::noise);
    EXPECT_EQ(line.strays.front().bytes, QByteArray::fromHex("01030212340000"));
}

TEST(Reasons, HaveANameAndAKeyEach)
{
    std::set<std::string> names;
    std::set<std::string> keys;
    for (int i = 0; i < reasonCount; ++i) {
        names.insert(nameOf(static_cast<Reason>(i)));
        keys.insert(keyOf(static_cast<Reason>(i)));
    }
    EXPECT_EQ(names.size(), static_cast<std::size_t>(reasonCount));
    EXPECT_EQ(keys.size(), static_cast<std::size_t>(reasonCount));
}

TEST(Reasons, NameWhatIsNotHandedOn)
{
    struct {
        StrayKind kind;
        const char* name;
        const char* key;
    } const rows[] = {{StrayKind::noise, "no frame", "noFrame"},
                      {StrayKind::echo, "echo of the request", "echo"},
                      {StrayKind::otherStation, "another station", "anotherStation"},
                      {StrayKind::otherFunction, "another function", "anotherFunction"},
                      {StrayKind::otherRequest, "another request", "anotherRequest"},
                      {StrayKind::late, "late", "late"},
                      {StrayKind::surplus, "more than was asked for", "surplus"}};
    for (const auto& row : rows) {
        EXPECT_STREQ(nameOf(row.kind), row.name);
        EXPECT_STREQ(keyOf(row.kind), row.key);
    }
}

} // namespace

} // namespace dov417
