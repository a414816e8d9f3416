#include "line/frame_text.h"

#include <gtest/gtest.h>

#include "line/crc16.h"

namespace dov417 {

namespace {

// The controller's areas as the register table maps them.
const std::vector<Area> areas = {
    {"I_W", true, 0, 128},      {"Q_W", true, 2048, 128}, {"M_W", true, 4096, 128},
    {"R_W", false, 1280, 4000}, {"T", false, 384, 128},   {"C", false, 512, 128},
};

QByteArray bytes(const char* hex)
{
    return QByteArray::fromHex(hex);
}

std::string request(const char* withoutCrc)
{
    return requestText(withCrc(bytes(withoutCrc)), areas);
}

std::string reply(const char* withoutCrc, const char* requestWithoutCrc)
{
    return replyText(withCrc(bytes(withoutCrc)), withCrc(bytes(requestWithoutCrc)), areas);
}

TEST(FrameText, BytesAreWrittenAsHex)
{
    EXPECT_EQ(hexText(bytes("01 0a FF")), "01 0A FF");
    EXPECT_EQ(hexText(QByteArray()), "");
}

TEST(FrameText, CrcIsThatOfModbus)
{
    EXPECT_EQ(withCrc(bytes("01 03 00 00 00 01")), bytes("01 03 00 00 00 01 84 0A"));
    EXPECT_TRUE(hasGoodCrc(bytes("01 03 00 00 00 01 84 0A")));
    EXPECT_FALSE(hasGoodCrc(bytes("01 03 00 00 00 01 0A 84")));
    EXPECT_FALSE(hasGoodCrc(bytes("FF FF")));
    EXPECT_FALSE(hasGoodCrc(withCrc(bytes("01")))) << "a station alone is no frame";
}

TEST(FrameText, ReadsAreToldWithTheirAddresses)
{
    EXPECT_EQ(request("01 03 05 64 00 08"), "station 1: read 8 registers from 1380 (R_W:100..107)");
    EXPECT_EQ(request("02 03 01 85 00 01"), "station 2: read 1 register from 389 (T:5)");
    EXPECT_EQ(request("01 01 10 20 00 30"), "station 1: read 48 coils from 4128 (M_W:2..4)");
    EXPECT_EQ(request("01 01 10 25 00 03"), "station 1: read 3 coils from 4133 (M_bit:2.5..2.7)");
    EXPECT_EQ(request("01 02 10 25 00 03"), "station 1: read 3 inputs from 4133");
}

TEST(FrameText, NumbersThatAreInNoOneAreaStandAlone)
{
    EXPECT_EQ(request("01 03 00 00 00 01"), "station 1: read 1 register from 0");
    EXPECT_EQ(request("01 03 01 FF 00 02"), "station 1: read 2 registers from 511");
    EXPECT_EQ(requestText(withCrc(bytes("01 03 05 64 00 08")), {}),
              "station 1: read 8 registers from 1380");
}

TEST(FrameText, WritesAreToldWithTheirValues)
{
    EXPECT_EQ(request("01 06 05 0A 12 34"),
              "station 1: write register 1290 (R_W:10) = 4660 (0x1234)");
    EXPECT_EQ(request("01 05 08 05 FF 00"), "station 1: write coil 2053 (Q_bit:0.5) = on");
    EXPECT_EQ(request("01 05 08 05 00 00"), "station 1: write coil 2053 (Q_bit:0.5) = off");
    EXPECT_EQ(request("01 10 05 0A 00 02 04 00 01 FF FF"),
              "station 1: write 2 registers from 1290 (R_W:10..11) = 1 65535");
    EXPECT_EQ(request("01 0F 10 10 00 10 02 05 80"),
              "station 1: write 16 coils from 4112 (M_W:1) = 0x8005");
    EXPECT_EQ(request("01 0F 00 05 00 0A 02 01 02"),
              "station 1: write 10 coils from 5 (I_bit:0.5..0.14) = 1 0 0 0 0 0 0 0 0 1");
}

TEST(FrameText, StationZeroIsTheBroadcast)
{
    EXPECT_EQ(request("00 06 05 0A 00 01"), "broadcast: write register 1290 (R_W:10) = 1 (0x0001)");
}

TEST(FrameText, BrokenRequestsSayWhatIsWrong)
{
    EXPECT_EQ(requestText(bytes("01 03 05"), areas), "3 bytes, too short for a frame");
    EXPECT_EQ(requestText(QByteArray(), areas), "0 bytes, too short for a frame");
    EXPECT_EQ(requestText(bytes("01 03 05 64 00 08 FF FF"), areas),
              "station 1: read 8 registers from 1380 (R_W:100..107), bad CRC");
    EXPECT_EQ(request("01 03 05 64"), "station 1: read registers, cut short");
    EXPECT_EQ(request("01 10 05 0A 00 02 04 00 01"),
              "station 1: write 2 registers from 1290 (R_W:10..11), 11 bytes where 13 are due");
    EXPECT_EQ(request("01 2B 0E 01 00"), "station 1: function 43");
}

TEST(FrameText, ReadRepliesAreToldWithTheirValues)
{
    EXPECT_EQ(reply("01 03 04 00 01 FF FF", "01 03 05 0A 00 02"),
              "station 1: R_W:10..11 = 1 65535");
    EXPECT_EQ(reply("01 01 04 05 80 FF 00", "01 01 10 10 00 20"),
              "station 1: M_W:1..2 = 0x8005 0x00FF");
    EXPECT_EQ(reply("01 01 01 05", "01 01 10 25 00 03"), "station 1: M_bit:2.5..2.7 = 1 0 1");
    EXPECT_EQ(reply("01 03 02 00 07", "01 03 00 00 00 01"), "station 1: register 0 = 7");
}

TEST(FrameText, EachOfTheFourTablesHasItsNameInRequestAndReply)
{
    EXPECT_EQ(request("01 04 00 0A 00 02"), "station 1: read 2 input registers from 10");
    EXPECT_EQ(reply("01 04 04 00 01 FF FF", "01 04 00 0A 00 02"),
              "station 1: input registers 10..11 = 1 65535");
    EXPECT_EQ(reply("01 04 02 00 07", "01 04 00 0A 00 01"), "station 1: input register 10 = 7");
    EXPECT_EQ(request("01 02 00 0A 00 03"), "station 1: read 3 inputs from 10");
    EXPECT_EQ(reply("01 02 01 05", "01 02 00 0A 00 03"), "station 1: inputs 10..12 = 1 0 1");
    EXPECT_EQ(reply("01 02 01 01", "01 02 00 0A 00 01"), "station 1: input 10 = 1");
    EXPECT_EQ(reply("01 01 01 05", "01 01 20 00 00 03"), "station 1: coils 8192..8194 = 1 0 1");
    EXPECT_EQ(reply("01 03 04 00 01 FF FF", "01 03 00 0A 00 02"),
              "station 1: registers 10..11 = 1 65535");
    EXPECT_EQ(reply("01 06 00 0A 00 07", "01 06 00 0A 00 07"),
              "station 1: wrote register 10 = 7 (0x0007)");
    EXPECT_EQ(reply("01 0F 20 00 00 03", "01 0F 20 00 00 03 01 05"),
              "station 1: wrote coils 8192..8194");
}

TEST(FrameText, LongRepliesShowTheirFirstSixteenValues)
{
    const QByteArray values(2 * 18, 0);
    const QByteArray answer = withCrc(bytes("01 03 24") + values);
    EXPECT_EQ(replyText(answer, withCrc(bytes("01 03 05 00 00 12")), areas),
              "station 1: R_W:0..17 = 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 and 2 more");
}

TEST(FrameText, A128RegisterReplyIsWholeAlthoughItsByteCountSaysZero)
{
    const QByteArray values(2 * 128, 0);
    const QByteArray answer = withCrc(bytes("01 03 00") + values);
    EXPECT_EQ(replyText(answer, withCrc(bytes("01 03 05 00 00 80")), areas),
              "station 1: R_W:0..127 = 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 and 112 more");
}

TEST(FrameText, WriteRepliesTellWhatWasWritten)
{
    EXPECT_EQ(reply("01 06 05 0A 12 34", "01 06 05 0A 12 34"),
              "station 1: wrote R_W:10 = 4660 (0x1234)");
    EXPECT_EQ(reply("01 05 08 05 FF 00", "01 05 08 05 FF 00"), "station 1: wrote Q_bit:0.5 = on");
    EXPECT_EQ(reply("01 10 05 0A 00 02", "01 10 05 0A 00 02 04 00 01 00 02"),
              "station 1: wrote R_W:10..11");
}

TEST(FrameText, ExceptionsHaveNames)
{
    EXPECT_EQ(reply("02 83 02", "02 03 05 0A 00 01"),
              "station 2: exception 2, illegal data address, to read registers");
    EXPECT_EQ(reply("02 90 03", "02 10 05 0A 00 01 02 00 00"),
              "station 2: exception 3, illegal data value, to write registers");
    EXPECT_EQ(exceptionName(1), "illegal function");
    EXPECT_EQ(exceptionName(6), "server device busy");
    EXPECT_EQ(exceptionName(99), "code 99");
}

TEST(FrameText, WhatDoesNotFitTheRequestIsSaid)
{
    EXPECT_EQ(reply("03 03 02 00 07", "02 03 05 0A 00 01"),
              "station 3: read registers, 2 bytes of values: 7, but station 2 was asked");
    EXPECT_EQ(reply("02 04 02 00 07", "02 03 05 0A 00 01"),
              "station 2: read input registers, 2 bytes of values: 7, but the request was to read "
              "registers");
    EXPECT_EQ(reply("02 03 02 00 07", "02 03 05 0A 00 02"),
              "station 2: reply to read registers, 7 bytes where 9 are due");
    EXPECT_EQ(reply("02 06 05 0B 00 07", "02 06 05 0A 00 07"),
              "station 2: wrote R_W:11 = 7 (0x0007), but that was not asked for");
    EXPECT_EQ(replyText(bytes("02 03 02 00 07 00 00"), withCrc(bytes("02 03 05 0A 00 01")), areas),
              "station 2: reply to read registers, bad CRC");
}

TEST(FrameText, AReplyWithoutItsRequestStillShowsItsValues)
{
    EXPECT_EQ(replyText(withCrc(bytes("02 03 02 00 07")), QByteArray(), areas),
              "station 2: read registers, 2 bytes of values: 7");
}

// Whatever the bytes are, the text is made from the bytes that are there.
TEST(FrameText, AnyBytesOfAnyLengthGetAText)
{
    for (int function = 0; function < 256; ++function)
        for (int length = 0; length < 20; ++length)
            for (const char fill : {char(0), char(0x7F), char(0xFF)}) {
                QByteArray frame(length, fill);
                if (length > 1)
                    frame[1] = static_cast<char>(function);
                const QByteArray sound = withCrc(frame);
                EXPECT_NE(requestText(frame, areas), "");
                EXPECT_NE(requestText(sound, areas), "");
                EXPECT_NE(replyText(frame, sound, areas), "");
                EXPECT_NE(replyText(sound, frame, areas), "");
                EXPECT_NE(replyText(sound, sound, areas), "");
            }
}

TEST(FrameText, NamesADiagnosticsEchoByItsNumber)
{
    EXPECT_EQ(request("01 08 00 00 01 02"), "station 1: check (diagnostics echo), number 258");
    EXPECT_EQ(reply("01 08 00 00 01 02", "01 08 00 00 01 02"),
              "station 1: check (diagnostics echo), number 258");
    EXPECT_EQ(request("01 08 00 01 01 02"), "station 1: function 8") << "another sub-function";
}

} // namespace

} // namespace dov417
