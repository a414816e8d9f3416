#include "line/conversation.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

class AConversation : public testing::Test {
protected:
    std::string request(const char* hex)
    {
        return conversation.request(QByteArray::fromHex(hex));
    }
    std::string reply(const char* hex)
    {
        return conversation.reply(QByteArray::fromHex(hex));
    }
    Conversation conversation{{{"M_W", true, 4096, 128}, {"R_W", false, 1280, 4000}}};
};

TEST_F(AConversation, ExplainsAReplyByTheRequestBeforeIt)
{
    EXPECT_EQ(request("01 03 05 0A 00 01 A4 C4"), "station 1: read 1 register from 1290 (R_W:10)");
    EXPECT_EQ(reply("01 03 02 00 07 F9 86"), "station 1: R_W:10 = 7");
    EXPECT_EQ(request("01 01 10 10 00 10 38 C3"), "station 1: read 16 coils from 4112 (M_W:1)");
    EXPECT_EQ(reply("01 01 02 05 80 BB 0C"), "station 1: M_W:1 = 0x8005");
}

TEST_F(AConversation, ComparesWhatComesInWithTheRequest)
{
    request("02 03 05 0A 00 04 64 F4");
    EXPECT_EQ(conversation.stray(QByteArray::fromHex("03 03 02 00 07 80 46")),
              "station 3: reply to read registers, but station 2 was asked, 7 bytes where 13 are "
              "due");
    EXPECT_EQ(reply("03 03 02 00 07 80 46"), "station 3: reply to read registers, but station 2 "
                                             "was asked, 7 bytes where 13 are due");
    request("02 03 05 0A 00 04 64 F4");
    EXPECT_EQ(reply("02 83 02 30 F1"),
              "station 2: exception 2, illegal data address, to read registers");
}

// 8 registers of station 1: R_W:0..7, and a reply to a read of 8 registers of some station.
const char* const readEight = "01 03 05 00 00 08 44 C0";
const char* const eightValues = "01 03 10 00 01 00 02 00 03 00 04 00 05 00 06 00 07 00 08 72 98";
const char* const eightWithout = "station 1: read registers, 16 bytes of values: 1 2 3 4 5 6 7 8";
const char* const eightOfZero = "station 1: R_W:0..7 = 1 2 3 4 5 6 7 8";

LogEntry noteOf(const char* text)
{
    return {LogTime(), Direction::note, QByteArray(), text};
}

TEST_F(AConversation, TellsOneReplyUnderTheAddressesOfARequest)
{
    request(readEight);
    EXPECT_EQ(reply(eightValues), eightOfZero);
    EXPECT_EQ(reply(eightValues), eightWithout) << "the request that it answers is not known";
    request(readEight);
    request(readEight); // sent again
    EXPECT_EQ(reply(eightValues), eightOfZero);
}

TEST_F(AConversation, TellsNoReplyUnderTheAddressesOfARequestBeforeAGap)
{
    for (const char* note : {"7 frames are missing here", "1 frame is missing here",
                             "7 frames are missing here: this computer was too busy to show them",
                             "no answer within 500 ms: no byte came", "no answer was heard",
                             "port /dev/ttyUSB0 is gone", "port /dev/ttyUSB0 is open"}) {
        request(readEight);
        conversation.note(noteOf(note));
        EXPECT_EQ(reply(eightValues), eightWithout) << note;
    }
    request(readEight);
    conversation.forget();
    EXPECT_EQ(reply(eightValues), eightWithout);
    request(readEight);
    conversation.note(noteOf("station 1 is slow: it took 400 ms"));
    EXPECT_EQ(reply(eightValues), eightOfZero) << "nothing is missing";
}

TEST_F(AConversation, TellsNoReplyUnderTheAddressesThatAnotherStationWasAskedFor)
{
    request("02 03 05 00 00 08 44 F3");
    EXPECT_EQ(reply(eightValues), std::string(eightWithout) + ", but station 2 was asked");
}

TEST_F(AConversation, TellsNoReplyByARequestThatIsNotWhole)
{
    for (const char* broken : {"01 03 05 00 00 08 44 C1", "01 03 05 00 00 08", "01 03"}) {
        request(broken);
        EXPECT_EQ(reply(eightValues), eightWithout) << broken;
    }
}

TEST_F(AConversation, KnowsALateReplyAndAnEchoBehindTheReply)
{
    request(readEight);
    reply(eightValues);
    EXPECT_EQ(conversation.stray(QByteArray::fromHex(eightValues)), eightWithout);
    EXPECT_EQ(conversation.stray(QByteArray::fromHex(readEight)),
              "station 1: read 8 registers from 1280 (R_W:0..7)");
}

TEST_F(AConversation, ExplainsAReplyWithoutARequestByItsOwnBytes)
{
    EXPECT_EQ(reply("01 03 02 00 07 F9 86"), "station 1: read registers, 2 bytes of values: 7");
}

TEST_F(AConversation, NamesNoAddressForWhatIsKnownToBeNoReply)
{
    request("01 03 05 0A 00 01 A4 C4");
    const auto stray = [this](const char* frame) {
        return conversation.stray(QByteArray::fromHex(frame));
    };
    EXPECT_EQ(stray("01 03 02 00 07 F9 86"), "station 1: read registers, 2 bytes of values: 7");
    EXPECT_EQ(stray("03 03 02 00 07 80 46"), "station 3: read registers, 2 bytes of values: 7");
    EXPECT_EQ(stray("01 03 05 0A 00 01 A4 C4"), "station 1: read 1 register from 1290 (R_W:10)")
        << "an echo";
}

TEST(Conversations, WithoutAreasGiveTheNumbersOnTheLine)
{
    Conversation conversation;
    EXPECT_EQ(conversation.request(QByteArray::fromHex("01 03 05 0A 00 01 A4 C4")),
              "station 1: read 1 register from 1290");
    EXPECT_EQ(conversation.reply(QByteArray::fromHex("01 03 02 00 07 F9 86")),
              "station 1: register 1290 = 7");
}

} // namespace

} // namespace dov417
