#include "line/serial_format.h"

#include <gtest/gtest.h>

#include "line/failure.h"

namespace dov417 {

namespace {

using std::chrono::microseconds;
using std::chrono::nanoseconds;

SerialFormat format(const char* text)
{
    return parseSerialFormat(text);
}

TEST(SerialFormat, ACharacterHasAStartBitDataParityAndStopBits)
{
    EXPECT_EQ(format("38400,8,EVEN,1").bitsPerCharacter(), 11);
    EXPECT_EQ(format("38400,8,NONE,1").bitsPerCharacter(), 10);
    EXPECT_EQ(format("38400,8,NONE,2").bitsPerCharacter(), 11);
    EXPECT_EQ(format("38400,8,ODD,2").bitsPerCharacter(), 12);
    EXPECT_EQ(format("38400,7,ODD,1").bitsPerCharacter(), 10);
}

TEST(SerialFormat, TheTimeOfARunIsRoundedUpOnce)
{
    const SerialFormat line = format("38400,8,EVEN,1");
    EXPECT_EQ(line.characters(0), nanoseconds(0));
    EXPECT_EQ(line.characters(1), nanoseconds(286459));                         // 286 458.3
    EXPECT_EQ(line.characters(13), nanoseconds(3723959));                       // 3 723 958.3
    EXPECT_EQ(line.characters(384), nanoseconds(110000000));                    // exact
    EXPECT_EQ(format("9600,8,NONE,1").characters(3), nanoseconds(3125000));     // exact
    EXPECT_EQ(format("9600,8,NONE,1").characters(100), nanoseconds(104166667)); // 104 166 666.7
}

TEST(SerialFormat, TheInterFrameDelayIsThreeAndAHalfCharactersUpTo19200Baud)
{
    EXPECT_EQ(format("9600,8,NONE,1").interFrameDelay(), nanoseconds(3645834));  // 3 645 833.3
    EXPECT_EQ(format("9600,8,EVEN,1").interFrameDelay(), nanoseconds(4010417));  // 4 010 416.7
    EXPECT_EQ(format("19200,8,EVEN,1").interFrameDelay(), nanoseconds(2005209)); // 2 005 208.3
}

TEST(SerialFormat, TheInterFrameDelayIsFixedAbove19200Baud)
{
    EXPECT_EQ(format("19201,8,EVEN,1").interFrameDelay(), microseconds(1750));
    EXPECT_EQ(format("38400,8,EVEN,1").interFrameDelay(), microseconds(1750));
    EXPECT_EQ(format("115200,8,EVEN,1").interFrameDelay(), microseconds(1750));
}

TEST(SerialFormat, AReadTakesItsCharactersTwoDelaysAndTheResponseTime)
{
    const SerialFormat line = format("38400,8,EVEN,1");
    // 8 + 7 characters of 286 458.3 ns, 2 x 1.75 ms.
    EXPECT_EQ(line.transaction(8, 7, microseconds(0)), nanoseconds(7796875));
    EXPECT_EQ(line.transaction(8, 7, microseconds(5000)), nanoseconds(12796875));
    // 125 registers: 8 + 255 characters.
    EXPECT_EQ(line.transaction(8, 255, microseconds(0)), nanoseconds(78838542));
}

TEST(SerialFormat, ABroadcastHasNoReplyToWaitBefore)
{
    EXPECT_EQ(format("38400,8,EVEN,1").transaction(8, 0, microseconds(100000)),
              nanoseconds(2291667 + 1750000 + 100000000));
}

TEST(SerialFormat, IsReadInItsWrittenForm)
{
    const SerialFormat line = format("9600,7,ODD,2");
    EXPECT_EQ(line.baudRate, 9600);
    EXPECT_EQ(line.dataBits, 7);
    EXPECT_EQ(line.parity, Parity::odd);
    EXPECT_EQ(line.stopBits, 2);
    EXPECT_EQ(toText(line), "9600,7,ODD,2");
    EXPECT_EQ(toText(format("19200,8,odd,2")), "19200,8,ODD,2");
    EXPECT_EQ(toText(format("19200, 8, none, 1")), "19200,8,NONE,1");
    EXPECT_EQ(toText(format("9600, 8, N, 1")), "9600,8,NONE,1");
    EXPECT_EQ(toText(format("38400,8,e,1")), "38400,8,EVEN,1");
    EXPECT_EQ(toText(SerialFormat()), "38400,8,EVEN,1");
}

TEST(SerialFormat, OfAMasterHasEightDataBits)
{
    EXPECT_EQ(toText(parseRtuFormat("19200,8,ODD,2")), "19200,8,ODD,2");
}

template <typename Parser>
std::string mistake(Parser parse, const std::string& text)
{
    try {
        parse(text);
    } catch (const UsageFailure& failure) {
        const std::string whole = failure.what();
        const std::string before = "line '" + text + "': ";
        const std::string after = "; written BAUD,DATA BITS,PARITY,STOP BITS, as in 38400,8,EVEN,1";
        EXPECT_EQ(whole.compare(0, before.size(), before), 0) << whole;
        EXPECT_EQ(whole.substr(whole.size() - after.size()), after);
        return whole.substr(before.size(), whole.size() - before.size() - after.size());
    }
    return "";
}

TEST(SerialFormat, MistakesAreNamed)
{
    const struct {
        const char* text;
        const char* why;
    } rows[] = {
        {"", "four parts are needed"},
        {"38400", "four parts are needed"},
        {"38400,8,EVEN", "four parts are needed"},
        {"38400,8,EVEN,1,1", "four parts are needed"},
        {"fast,8,EVEN,1", "the baud rate must be 50 to 4000000"},
        {"0,8,EVEN,1", "the baud rate must be 50 to 4000000"},
        {"-9600,8,EVEN,1", "the baud rate must be 50 to 4000000"},
        {"38400,8,MARK,1", "the parity must be NONE, EVEN or ODD"},
        {"38400,8,,1", "the parity must be NONE, EVEN or ODD"},
        {"38400,8,EVEN,3", "stop bits must be 1 or 2"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(mistake(parseRtuFormat, row.text), row.why) << row.text;
        EXPECT_EQ(mistake(parseSerialFormat, row.text), row.why) << row.text;
    }
    EXPECT_EQ(mistake(parseRtuFormat, "38400,7,EVEN,1"), "Modbus RTU needs 8 data bits");
    EXPECT_EQ(mistake(parseRtuFormat, "38400,9,EVEN,1"), "Modbus RTU needs 8 data bits");
    EXPECT_EQ(mistake(parseSerialFormat, "38400,7,EVEN,1"), "");
    EXPECT_EQ(mistake(parseSerialFormat, "38400,9,EVEN,1"), "data bits must be 7 or 8");
}

} // namespace

} // namespace dov417
