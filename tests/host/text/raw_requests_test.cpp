#include "text/raw_requests.h"

#include <gtest/gtest.h>

#include "line/crc16.h"
#include "line/failure.h"

namespace dov417 {

namespace {

std::string parsed(const std::vector<std::string>& words)
{
    const QByteArray frame = parseRequest(words);
    EXPECT_TRUE(hasGoodCrc(frame));
    return frame.left(frame.size() - 2).toHex(' ').toUpper().toStdString();
}

std::string refusal(const std::vector<std::string>& words)
{
    try {
        parseRequest(words);
    } catch (const UsageFailure& failure) {
        return failure.what();
    }
    return "taken";
}

TEST(RawRequests, OfBytesThatEndWithTheirCrcAreRefused)
{
    const auto raw = [](const std::string& text) {
        try {
            return parseRawRequest(text).toHex(' ').toStdString();
        } catch (const UsageFailure& failure) {
            return std::string(failure.what());
        }
    };
    EXPECT_EQ(raw("01 03 05 64 00 02"), "01 03 05 64 00 02 85 18");
    EXPECT_EQ(raw("01 03 05 64 00 02 85 18"),
              "'01 03 05 64 00 02 85 18': these bytes end with their CRC; leave it out, as it is "
              "appended");
}

TEST(RawRequests, HaveTheDataOfTheirFunction)
{
    EXPECT_EQ(parsed({"1", "3", "1380", "8"}), "01 03 05 64 00 08");
    EXPECT_EQ(parsed({"2", "4", "0x10", "1"}), "02 04 00 10 00 01");
    EXPECT_EQ(parsed({"1", "5", "7", "on"}), "01 05 00 07 FF 00");
    EXPECT_EQ(parsed({"1", "5", "7", "0"}), "01 05 00 07 00 00");
    EXPECT_EQ(parsed({"0", "6", "7", "65535"}), "00 06 00 07 FF FF");
    EXPECT_EQ(parsed({"1", "7"}), "01 07");
    EXPECT_EQ(parsed({"1", "8", "0", "0x1234"}), "01 08 00 00 12 34");
    EXPECT_EQ(parsed({"1", "15", "16", "1", "0", "0", "0", "0", "0", "0", "0", "1"}),
              "01 0F 00 10 00 09 02 01 01");
    EXPECT_EQ(parsed({"1", "16", "16", "1", "258"}), "01 10 00 10 00 02 04 00 01 01 02");
    EXPECT_EQ(parsed({"1", "22", "4", "0xF2", "0x25"}), "01 16 00 04 00 F2 00 25");
    EXPECT_EQ(parsed({"1", "23", "3", "6", "14", "255"}), "01 17 00 03 00 06 00 0E 00 01 02 00 FF");
    EXPECT_EQ(parsed({"1", "43", "14", "1", "0"}), "01 2B 0E 01 00");
}

TEST(RawRequests, MistakesAreNamed)
{
    EXPECT_EQ(refusal({}), "a request is STATION FUNCTION DATA..., as in 1 4 0 10");
    EXPECT_EQ(refusal({"248", "3", "0", "1"}), "station '248': out of range, 0 to 247");
    EXPECT_EQ(refusal({"1", "0"}), "function '0': out of range, 1 to 127");
    EXPECT_EQ(refusal({"1", "131"}), "function '131': out of range, 0 to 127");
    EXPECT_EQ(refusal({"1", "3", "0"}), "function 3 takes FIRST COUNT");
    EXPECT_EQ(refusal({"1", "7", "0"}), "function 7 takes no data");
    EXPECT_EQ(refusal({"1", "6", "0", "65536"}), "number '65536': out of range, 0 to 65535");
    EXPECT_EQ(refusal({"1", "6", "0", "1.5"}),
              "number '1.5': a whole number is needed, as 10 or 0x0A");
    EXPECT_EQ(refusal({"1", "6", "R_W:0", "1"}),
              "number 'R_W:0': a whole number is needed, as 10 or 0x0A");
    EXPECT_EQ(refusal({"1", "5", "0", "2"}), "value '2': a coil is on or off");
    EXPECT_EQ(refusal({"1", "15", "0", "2"}), "bit '2': out of range, 0 to 1");
    EXPECT_EQ(refusal({"1", "43", "256"}), "byte '256': out of range, 0 to 255");
    std::vector<std::string> tooLong(130, "1");
    tooLong.at(1) = "16";
    EXPECT_EQ(refusal(tooLong), "the frame has 263 bytes; Modbus RTU ends at 256");
}

TEST(RawRequests, MayBeBytes)
{
    EXPECT_EQ(parseRawRequest("01 2b 0E0100"), withCrc(QByteArray::fromHex("012B0E0100")));
    for (const char* wrong : {"", "01", "01 0", "zz zz", "F8 03", "01 00", "01 83"})
        EXPECT_THROW(parseRawRequest(wrong), UsageFailure) << wrong;
}

} // namespace

} // namespace dov417
