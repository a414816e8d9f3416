#include "scan/scan_tcp.h"

#include <gmock/gmock.h>

#include "line/crc16.h"

namespace dov417 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ScanOverModbusTcp : public ::testing::Test {
protected:
    void ask(const char* hex)
    {
        sent = tcp.ask(withCrc(QByteArray::fromHex(hex)));
    }
    // In hex, with a "?" where it is no answer; "none" where it is no Modbus TCP.
    std::vector<std::string> coming(const char* hex)
    {
        const auto replies = tcp.take(QByteArray::fromHex(hex));
        if (!replies)
            return {"none"};
        std::vector<std::string> texts;
        for (const ScanReply& reply : *replies) {
            EXPECT_TRUE(hasGoodCrc(reply.frame));
            texts.push_back(reply.frame.left(reply.frame.size() - 2).toHex().toStdString() +
                            (reply.isAnswer ? "" : "?"));
        }
        return texts;
    }

    ScanTcp tcp;
    QByteArray sent;
};

TEST_F(ScanOverModbusTcp, NumbersItsQuestions)
{
    ask("030100000010");
    EXPECT_EQ(sent, QByteArray::fromHex("000100000006030100000010"));
    ask("040301800001");
    EXPECT_EQ(sent, QByteArray::fromHex("000200000006040301800001"));
}

TEST_F(ScanOverModbusTcp, TakesEachAnswerOnceHoweverLateItComes)
{
    ask("030100000010");
    ask("040100000010");
    ask("050100000010");
    EXPECT_THAT(coming("000300000005050102"), IsEmpty());
    EXPECT_THAT(coming("1234 000100000005030102 0000"), ElementsAre("0501021234", "0301020000"));
    EXPECT_THAT(coming("000200000003048102"), ElementsAre("048102"));
    EXPECT_THAT(coming("000200000003048102"), ElementsAre("048102?"));
}

TEST_F(ScanOverModbusTcp, TakesNothingElseForAnAnswer)
{
    ask("030100000010");
    EXPECT_THAT(coming("000200000005 0301021234"), ElementsAre("0301021234?")) << "number";
    EXPECT_THAT(coming("000100000005 0401021234"), ElementsAre("0401021234?")) << "station";
    EXPECT_THAT(coming("000100000005 0303021234"), ElementsAre("0303021234?")) << "function";
    EXPECT_THAT(coming("000100000006 030102123456"), ElementsAre("030102123456?")) << "length";
    EXPECT_THAT(coming("000100000005 0301021234"), ElementsAre("0301021234"));
}

TEST_F(ScanOverModbusTcp, SaysWhatIsNoModbusTcp)
{
    EXPECT_THAT(coming("485454502f31"), ElementsAre("none"));
}

TEST_F(ScanOverModbusTcp, ForgetsWhatWasAskedLongAgo)
{
    ask("030100000010");
    for (int i = 0; i < 255; ++i)
        ask("040100000010");
    EXPECT_THAT(coming("000100000005 0301021234"), ElementsAre("0301021234"));
    ask("030100000010"); // number 257
    for (int i = 0; i < 256; ++i)
        ask("040100000010");
    EXPECT_THAT(coming("010100000005 0301021234"), ElementsAre("0301021234?"));
}

} // namespace

} // namespace dov417
