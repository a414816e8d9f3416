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
    std::string reply(const char* hex) const
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

TEST_F(AConversation, ComparesAllThatComesInWithTheSameRequest)
{
    request("02 03 05 0A 00 04 64 F4");
    EXPECT_EQ(reply("03 03 02 00 07 80 46"), "station 3: reply to read registers, but station 2 "
                                             "was asked, 7 bytes where 13 are due");
    EXPECT_EQ(reply("02 83 02 30 F1"),
              "station 2: exception 2, illegal data address, to read registers");
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
