// The text that describes the frame on the line.
#include "link/error_text.h"

#include <climits>

#include "uncalled_functions.h"
#include "world.h"

namespace {

class ErrorText : public DriverTest {
protected:
    // The text that comes with a bad reply.
    std::string textOfBad(const QByteArray& bytes)
    {
        driver.retryLimit = 1000000;
        if (driver.sendList.isEmpty()) {
            poll();
        }
        EXPECT_EQ(reply(bytes), 8);
        return errorText();
    }

    std::string textOfRead(const char* regName, int address, int length, int station = 1)
    {
        configure();
        driver.readList << request(regName, address, length, station);
        return textOfBad(QByteArray());
    }

    std::string textOfWrite(const char* regName, int address, const char* byte, int station = 1)
    {
        configure();
        write(regName, address, 1, byte, station);
        return textOfBad(QByteArray());
    }
};

TEST_F(ErrorText, NamesStationRegisterAddressAndLength)
{
    EXPECT_EQ(textOfRead("R_W", 10, 1), "1#R_W10(1)");
    EXPECT_EQ(textOfRead("M_W", 127, 1, 247), "247#M_W127(1)");
    EXPECT_EQ(textOfRead("T", 3, 12, 2), "2#T3(12)");
    EXPECT_EQ(textOfRead("R_D", 0, 128), "1#R_D0(128)");
    EXPECT_EQ(textOfRead("R_W", -5, -3), "1#R_W-5(-3)");
}

TEST_F(ErrorText, WritesTheAddressOfABitAsWordAndBit)
{
    EXPECT_EQ(textOfWrite("R_bit", 35, "01"), "1#R_bit2.3(1)");
    EXPECT_EQ(textOfWrite("Q_bit", 5, "01"), "1#Q_bit0.5(1)");
    EXPECT_EQ(textOfWrite("M_bit", 2047, "01", 3), "3#M_bit127.15(1)");
    EXPECT_EQ(textOfWrite("I_bit", -21, "01"), "1#I_bit-1.-5(1)");
}

TEST_F(ErrorText, TakesThePlaceOfAnyTextThatTheHostHandsIn)
{
    const VARIABLE asked = request("R_bit", INT_MIN, INT_MIN, INT_MIN);
    const std::string expected = "-2147483648#R_bit-134217728.0(-2147483648)";
    QString shorter = name("x");
    describeRequest(asked, QByteArray(), shorter);
    EXPECT_EQ(text(shorter), expected);
    QString shared = name("x");
    shared.reserve(1000);
    const QString other = shared;
    describeRequest(asked, QByteArray(), shared);
    EXPECT_EQ(text(shared), expected);
    EXPECT_EQ(text(other), "x");
}

TEST_F(ErrorText, ComesWithGoodRepliesToo)
{
    plan({key("R_W", 10, 1)});
    poll();
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(errorText(), "1#R_W10(1)");
}

TEST_F(ErrorText, ComesWithTheReplyThatEndsARequest)
{
    plan({key("R_W", 10, 1)});
    driver.retryLimit = 1;
    poll();
    EXPECT_EQ(reply(QByteArray()), 2);
    EXPECT_EQ(errorText(), "1#R_W10(1)");
}

TEST_F(ErrorText, DescribesTheFrameOfARequestThatIsOnTheLine)
{
    write("R_bit", 35, 1, "01");
    poll();
    reply(withCrc("01 03 02 00 00"));
    EXPECT_EQ(errorText(), "1#R_bit2.3(1)");
    poll();
    reply(withCrc("01 10 05 02 00 01"));
    EXPECT_EQ(errorText(), "1#R_bit2.3(1)");
}

TEST_F(ErrorText, OfAHandshakeIsThatOfAnEmptyRequest)
{
    driver.handshakeRequest = 1;
    EXPECT_EQ(poll(), "");
    EXPECT_EQ(reply(QByteArray()), 1);
    EXPECT_EQ(errorText(), "0#0(0)");
}

TEST_F(ErrorText, AddsByteFiveOfATenByteReply)
{
    plan({key("R_W", 10, 1)});
    EXPECT_EQ(textOfBad(hex("01 02 03 04 05 06 07 08 09 0A")), "1#R_W10(1),error code:6");
    EXPECT_EQ(textOfBad(hex("00 00 00 00 00 C8 00 00 00 00")), "1#R_W10(1),error code:200");
    EXPECT_EQ(textOfBad(hex("00 00 00 00 00 FF 00 00 00 00")), "1#R_W10(1),error code:255");
}

TEST_F(ErrorText, AddsNothingWhereThatByteIsZero)
{
    plan({key("R_W", 10, 1)});
    EXPECT_EQ(textOfBad(hex("01 02 03 04 05 00 07 08 09 0A")), "1#R_W10(1)");
}

TEST_F(ErrorText, AddsNothingToRepliesOfOtherLengths)
{
    plan({key("R_W", 10, 1)});
    QByteArray bytes(300, '\x06');
    for (int length = 0; length <= 300; ++length) {
        if (length != 10) {
            EXPECT_EQ(textOfBad(bytes.left(length)), "1#R_W10(1)") << length;
        }
    }
}

TEST_F(ErrorText, IsMadeForTheHeadOfTheSendList)
{
    plan({key("R_W", 10, 1)});
    poll();
    EXPECT_EQ(text(getErrorInfo(QByteArray())), "1#R_W10(1)");
    driver.sendList[0].request = request("C", 7, 2, 9);
    EXPECT_EQ(text(getErrorInfo(hex("01 02 03 04 05 06 07 08 09 0A"))), "9#C7(2),error code:6");
}

} // namespace
