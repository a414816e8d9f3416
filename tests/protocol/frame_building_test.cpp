#include "protocol/frame_building.h"

#include <climits>
#include <cstring>

#include <gtest/gtest.h>

#include "made_records.h"

namespace {

// The frames that a read or a write of this request appends.
QList<FRAME_PRO> readFrames(const VARIABLE& wanted)
{
    QList<FRAME_PRO> frames;
    const int result = frameRead(wanted, frames);
    EXPECT_EQ(result, frames.size());
    return frames;
}

QList<FRAME_PRO> writeFrames(const VARIABLE& wanted)
{
    QList<FRAME_PRO> frames;
    frameWrite(wanted, frames);
    return frames;
}

// A request whose data counts upwards from 1, without a 0.
VARIABLE counting(const char* regName, int address, int length, int station = 1)
{
    VARIABLE made = request(regName, address, length, station);
    for (int i = 0; i < recordDataSize; ++i) {
        made.data[i] = static_cast<unsigned char>(i % 255 + 1);
    }
    return made;
}

std::string crcEnding(const char* frame)
{
    return toHex(withCrc(frame));
}

// Little-endian CRC at the end of the bytes to transmit?
bool endsInItsCrc(const FRAME_PRO& frame)
{
    const QByteArray body(reinterpret_cast<const char*>(frame.frame), frame.sendLength - 2);
    return toHex(withCrc(body)) == frameHex(frame);
}

// --- Reads

TEST(FrameBuilding, ReadAsksForCoilsOrRegistersOfEveryType)
{
    const struct {
        const char* regName;
        int address;
        int length;
        const char* frame;
        int replyLength;
    } rows[] = {
        {"M_W", 2, 3, "01 01 10 20 00 30", 11},    {"R_W", 10, 1, "01 03 05 0A 00 01", 7},
        {"I_bit", 1, 2, "01 01 00 10 00 20", 9},   {"Q_bit", 0, 1, "01 01 08 00 00 10", 7},
        {"M_bit", 127, 1, "01 01 17 F0 00 10", 7}, {"R_bit", 2, 3, "01 03 05 02 00 03", 11},
        {"I_W", 127, 1, "01 01 07 F0 00 10", 7},   {"Q_W", 5, 8, "01 01 08 50 00 80", 21},
        {"R_W", 0, 125, "01 03 05 00 00 7D", 255}, {"R_W", 3871, 128, "01 03 14 1F 00 80", 261},
        {"M_W", 0, 128, "01 01 10 00 08 00", 261}, {"R_D", 3998, 2, "01 03 14 9E 00 02", 9},
        {"T", 3, 4, "01 03 01 83 00 04", 13},      {"C", 127, 1, "01 03 02 7F 00 01", 7},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.regName) + " as " + row.frame);
        const QList<FRAME_PRO> frames = readFrames(request(row.regName, row.address, row.length));
        ASSERT_EQ(frames.size(), 1);
        EXPECT_EQ(frameHex(frames.at(0)), crcEnding(row.frame));
        EXPECT_EQ(frames.at(0).sendLength, 8);
        EXPECT_EQ(frames.at(0).replyLength, row.replyLength);
        EXPECT_EQ(frames.at(0).dataPosition, 3);
        EXPECT_EQ(frames.at(0).dataCount, row.length);
        EXPECT_EQ(frames.at(0).spare, 0);
    }
}

TEST(FrameBuilding, ReadEndsInTheLiteralCrc)
{
    EXPECT_EQ(frameHex(readFrames(request("R_W", 10, 1)).at(0)), "01 03 05 0A 00 01 A4 C4");
    EXPECT_EQ(frameHex(readFrames(request("M_W", 2, 3)).at(0)), "01 01 10 20 00 30 39 14");
}

TEST(FrameBuilding, ReadCarriesTheWholeRequest)
{
    VARIABLE wanted = counting("M_W", 2, 3, 17);
    wanted.kind = 4;
    const QList<FRAME_PRO> frames = readFrames(wanted);
    ASSERT_EQ(frames.size(), 1);
    const VARIABLE& carried = frames.at(0).request;
    EXPECT_EQ(carried.kind, 4);
    EXPECT_EQ(carried.stationNo, 17);
    EXPECT_EQ(text(carried.regName), "M_W");
    EXPECT_EQ(carried.address, 2);
    EXPECT_EQ(carried.length, 3);
    EXPECT_EQ(toHex(carried.data, recordDataSize), toHex(wanted.data, recordDataSize));
}

TEST(FrameBuilding, ReadBytesAfterTheFrameAreZero)
{
    const FRAME_PRO frame = readFrames(request("R_W", 10, 1)).at(0);
    EXPECT_EQ(toHex(frame.frame + 8, recordDataSize - 8),
              toHex(QByteArray(recordDataSize - 8, '\0')));
}

TEST(FrameBuilding, ReadIsAppendedBehindTheFramesThatAreThere)
{
    QList<FRAME_PRO> frames;
    frameHandshake(frames);
    EXPECT_EQ(frameRead(request("R_W", 10, 1), frames), 1);
    ASSERT_EQ(frames.size(), 2);
    EXPECT_EQ(frames.at(0).sendLength, 0);
    EXPECT_EQ(frames.at(1).sendLength, 8);
}

TEST(FrameBuilding, ReadOfAnUnknownNameIsRefused)
{
    for (const char* regName : {"M", "R", "", "i_bit", "X_W"}) {
        EXPECT_EQ(readFrames(request(regName, 0, 1)).size(), 0) << regName;
    }
}

TEST(FrameBuilding, ReadIsNeverBroadcast)
{
    for (const char* regName : {"I_bit", "R_bit", "M_W", "R_W", "T"}) {
        EXPECT_EQ(readFrames(request(regName, 0, 1, 0)).size(), 0) << regName;
    }
}

TEST(FrameBuilding, StationGoesOutInEightBits)
{
    const struct {
        int station;
        const char* frame;
    } rows[] = {{247, "F7 03 05 0A 00 01"},
                {255, "FF 03 05 0A 00 01"},
                {257, "01 03 05 0A 00 01"},
                {-1, "FF 03 05 0A 00 01"},
                {256, "00 03 05 0A 00 01"}}; // only the number 0 itself is the broadcast
    for (const auto& row : rows) {
        SCOPED_TRACE(row.station);
        const QList<FRAME_PRO> frames = readFrames(request("R_W", 10, 1, row.station));
        ASSERT_EQ(frames.size(), 1);
        EXPECT_EQ(frameHex(frames.at(0)), crcEnding(row.frame));
    }
}

TEST(FrameBuilding, ReadOfAnyAddressAndLengthIsPlainArithmeticIn16Bits)
{
    const struct {
        const char* regName;
        int address;
        int length;
        const char* frame;
        int replyLength;
    } rows[] = {
        {"R_W", 65535, 1, "01 03 04 FF 00 01", 7},
        {"R_W", -1, 1, "01 03 04 FF 00 01", 7},
        {"R_W", INT_MAX, 1, "01 03 04 FF 00 01", 7},
        {"R_W", INT_MIN, 1, "01 03 05 00 00 01", 7},
        {"M_W", INT_MAX, 1, "01 01 0F F0 00 10", 7},
        {"M_W", INT_MIN, 1, "01 01 10 00 00 10", 7},
        {"M_W", -1, 1, "01 01 0F F0 00 10", 7},
        {"M_W", 0, 65536, "01 01 10 00 00 00", 131077},
        {"R_W", 0, 65536, "01 03 05 00 00 00", 131077},
        {"R_W", 0, 0, "01 03 05 00 00 00", 5},
        {"M_W", 0, 0, "01 01 10 00 00 00", 5},
        {"R_W", 0, -1, "01 03 05 00 FF FF", 3},
        {"M_W", 0, -1, "01 01 10 00 FF F0", 3},
        {"R_W", 0, -300, "01 03 05 00 FE D4", -595},
        {"R_W", 0, INT_MAX, "01 03 05 00 FF FF", 3},
        {"R_W", 0, INT_MIN, "01 03 05 00 00 00", 5},
        {"M_W", 0, INT_MAX, "01 01 10 00 FF F0", 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.regName << ' ' << row.address << '+' << row.length);
        const QList<FRAME_PRO> frames = readFrames(request(row.regName, row.address, row.length));
        ASSERT_EQ(frames.size(), 1);
        EXPECT_EQ(frameHex(frames.at(0)), crcEnding(row.frame));
        EXPECT_EQ(frames.at(0).replyLength, row.replyLength);
        EXPECT_EQ(frames.at(0).dataCount, row.length);
    }
}

// --- Writes

TEST(FrameBuilding, WriteOfEveryTypeAndLength)
{
    const struct {
        const char* regName;
        int address;
        int length;
        std::vector<int> data;
        const char* frame;
    } rows[] = {
        // Function 5: one coil.
        {"Q_bit", 5, 1, {1}, "01 05 08 05 FF 00"},
        {"Q_bit", 5, 1, {0}, "01 05 08 05 00 00"},
        {"Q_bit", 5, 1, {2}, "01 05 08 05 00 00"}, // only 1 sets a coil
        {"Q_bit", 5, 1, {255}, "01 05 08 05 00 00"},
        {"I_bit", 2047, 1, {1}, "01 05 07 FF FF 00"},
        {"M_bit", 35, 1, {1}, "01 05 10 23 FF 00"},
        // Function 15 for bits: the controllers take the bit address without the area's base.
        {"Q_bit", 5, 10, {1, 0, 1, 1, 0, 0, 1, 1, 1, 0}, "01 0F 00 05 00 0A 02 CD 01"},
        {"M_bit", 300, 8, {1, 0, 0, 0, 0, 0, 0, 1}, "01 0F 01 2C 00 08 01 81"},
        {"I_bit",
         0,
         16,
         {1, 1, 1, 1, 1, 1, 1, 1, 0, 1, 0, 1, 0, 1, 0, 1},
         "01 0F 00 00 00 10 02 FF AA"},
        {"M_bit", 0, 2, {0, 1}, "01 0F 00 00 00 02 01 02"},
        {"M_bit", 0, 7, {1, 1, 1, 1, 1, 1, 1, 1, 1}, "01 0F 00 00 00 07 01 7F"},
        {"M_bit", 0, 9, {0, 0, 0, 0, 0, 0, 0, 0, 1, 1}, "01 0F 00 00 00 09 02 00 01"},
        // Each value is added at its place, whatever it is, and kept to eight bits.
        {"M_bit", 0, 2, {3, 0}, "01 0F 00 00 00 02 01 03"},
        {"M_bit", 0, 2, {3, 1}, "01 0F 00 00 00 02 01 05"},
        {"M_bit", 0, 8, {0, 0, 0, 0, 0, 0, 0, 3}, "01 0F 00 00 00 08 01 80"},
        // Function 15 for words of coils, the low byte first.
        {"I_W", 1, 1, {0x34, 0x12}, "01 0F 00 10 00 10 02 34 12"},
        {"Q_W", 0, 1, {0x01, 0x00}, "01 0F 08 00 00 10 02 01 00"},
        {"M_W", 2, 3, {1, 2, 3, 4, 5, 6}, "01 0F 10 20 00 30 06 01 02 03 04 05 06"},
        // Function 6: one register, the high byte first.
        {"R_W", 10, 1, {0x34, 0x12}, "01 06 05 0A 12 34"},
        {"R_D", 3998, 1, {0x34, 0x12, 0x78, 0x56}, "01 06 14 9E 12 34"},
        {"T", 3, 1, {0x01, 0x80}, "01 06 01 83 80 01"},
        {"C", 127, 1, {0xFF, 0x00}, "01 06 02 7F 00 FF"},
        // Function 16: registers, the high byte of each first.
        {"R_W", 10, 2, {0x34, 0x12, 0x78, 0x56}, "01 10 05 0A 00 02 04 12 34 56 78"},
        {"T", 0, 3, {1, 2, 3, 4, 5, 6}, "01 10 01 80 00 03 06 02 01 04 03 06 05"},
        {"C", 0, 2, {1, 2, 3, 4}, "01 10 02 00 00 02 04 02 01 04 03"},
        // Double words: the low register first; an odd register at the end goes alone.
        {"R_D", 0, 2, {0x78, 0x56, 0x34, 0x12}, "01 10 05 00 00 02 04 56 78 12 34"},
        {"R_D", 0, 4, {1, 2, 3, 4, 5, 6, 7, 8}, "01 10 05 00 00 04 08 02 01 04 03 06 05 08 07"},
        {"R_D", 0, 3, {1, 2, 3, 4, 5, 6}, "01 10 05 00 00 03 06 02 01 04 03 06 05"},
        {"R_D",
         6,
         5,
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10},
         "01 10 05 06 00 05 0A 02 01 04 03 06 05 08 07 0A 09"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.regName) + " as " + row.frame);
        const QList<FRAME_PRO> frames =
            writeFrames(request(row.regName, row.address, row.length, 1, row.data));
        ASSERT_EQ(frames.size(), 1);
        EXPECT_EQ(frameHex(frames.at(0)), crcEnding(row.frame));
        EXPECT_EQ(frames.at(0).replyLength, 8);
        EXPECT_EQ(frames.at(0).dataPosition, 0);
        EXPECT_EQ(frames.at(0).dataCount, 0);
        EXPECT_EQ(frames.at(0).spare, 0);
    }
}

TEST(FrameBuilding, WriteEndsInTheLiteralCrc)
{
    EXPECT_EQ(frameHex(writeFrames(request("Q_bit", 5, 1, 1, {1})).at(0)),
              "01 05 08 05 FF 00 9E 5B");
    EXPECT_EQ(frameHex(writeFrames(request("R_W", 10, 1, 1, {0x34, 0x12})).at(0)),
              "01 06 05 0A 12 34 A4 73");
}

TEST(FrameBuilding, WriteCarriesTheWholeRequest)
{
    for (const char* regName : {"Q_bit", "R_bit", "M_W", "R_W", "R_D", "C"}) {
        for (int length : {1, 20}) {
            SCOPED_TRACE(testing::Message() << regName << " length " << length);
            VARIABLE wanted = counting(regName, 33, length, 9);
            wanted.kind = 77;
            const QList<FRAME_PRO> frames = writeFrames(wanted);
            ASSERT_GE(frames.size(), 1);
            for (int i = 0; i < frames.size(); ++i) {
                const VARIABLE& carried = frames.at(i).request;
                EXPECT_EQ(carried.kind, 77);
                EXPECT_EQ(carried.stationNo, 9);
                EXPECT_EQ(text(carried.regName), regName);
                EXPECT_EQ(carried.address, 33);
                EXPECT_EQ(carried.length, length);
                EXPECT_EQ(toHex(carried.data, recordDataSize), toHex(wanted.data, recordDataSize));
            }
        }
    }
}

TEST(FrameBuilding, WriteLeavesTheRequestAsItWas)
{
    const VARIABLE wanted = counting("R_bit", 33, 20, 9);
    const QList<FRAME_PRO> frames = writeFrames(wanted);
    EXPECT_EQ(frames.size(), 2);
    EXPECT_EQ(toHex(wanted.data, recordDataSize),
              toHex(counting("R_bit", 33, 20, 9).data, recordDataSize));
    EXPECT_EQ(wanted.address, 33);
    EXPECT_EQ(wanted.length, 20);
}

TEST(FrameBuilding, WriteIsAppendedBehindTheFramesThatAreThere)
{
    QList<FRAME_PRO> frames;
    frameHandshake(frames);
    frameWrite(request("R_W", 10, 1, 1, {1, 0}), frames);
    ASSERT_EQ(frames.size(), 2);
    EXPECT_EQ(frames.at(0).sendLength, 0);
    EXPECT_EQ(frames.at(1).sendLength, 8);
}

TEST(FrameBuilding, WriteOfAnUnknownNameAppendsNothing)
{
    for (const char* regName : {"M", "", "r_w", "X_bit"}) {
        EXPECT_EQ(writeFrames(request(regName, 0, 1)).size(), 0) << regName;
    }
}

TEST(FrameBuilding, WriteToStationZeroAwaitsNoReply)
{
    const struct {
        const char* regName;
        int length;
        const char* frame;
    } rows[] = {
        {"R_W", 1, "00 06 05 00 02 01"},          {"R_W", 2, "00 10 05 00 00 02 04 02 01 04 03"},
        {"M_bit", 1, "00 05 10 00 FF 00"},        {"M_bit", 2, "00 0F 00 00 00 02 01 05"},
        {"M_W", 1, "00 0F 10 00 00 10 02 01 02"}, {"R_D", 2, "00 10 05 00 00 02 04 02 01 04 03"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.regName) + " as " + row.frame);
        const QList<FRAME_PRO> frames = writeFrames(counting(row.regName, 0, row.length, 0));
        ASSERT_EQ(frames.size(), 1);
        EXPECT_EQ(frameHex(frames.at(0)), crcEnding(row.frame));
        EXPECT_EQ(frames.at(0).replyLength, 0);
    }
}

TEST(FrameBuilding, WriteToStation256IsNoBroadcast)
{
    const QList<FRAME_PRO> frames = writeFrames(request("R_W", 10, 1, 256, {1, 0}));
    ASSERT_EQ(frames.size(), 1);
    EXPECT_EQ(frames.at(0).replyLength, 8);
}

TEST(FrameBuilding, ByteCountKeepsTheLowEightBitsOfALongWrite)
{
    const struct {
        const char* regName;
        int length;
        const char* head;
        int sendLength;
    } rows[] = {
        {"R_W", 123, "01 10 05 00 00 7B F6", 255},    {"R_W", 127, "01 10 05 00 00 7F FE", 263},
        {"R_W", 128, "01 10 05 00 00 80 00", 265},    {"R_D", 130, "01 10 05 00 00 82 04", 269},
        {"M_W", 128, "01 0F 10 00 08 00 00", 265},    {"M_W", 507, "01 0F 10 00 1F B0 F6", 1023},
        {"R_W", 507, "01 10 05 00 01 FB F6", 1023},   {"R_D", 507, "01 10 05 00 01 FB F6", 1023},
        {"M_bit", 1024, "01 0F 00 00 04 00 80", 137}, {"Q_bit", 984, "01 0F 00 00 03 D8 7B", 132},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.regName << " length " << row.length);
        const QList<FRAME_PRO> frames = writeFrames(counting(row.regName, 0, row.length));
        ASSERT_EQ(frames.size(), 1);
        EXPECT_EQ(toHex(frames.at(0).frame, 7), toHex(hex(row.head)));
        EXPECT_EQ(frames.at(0).sendLength, row.sendLength);
        EXPECT_TRUE(endsInItsCrc(frames.at(0)));
    }
}

TEST(FrameBuilding, LongestWordWriteCarriesEveryWord)
{
    const FRAME_PRO registers = writeFrames(counting("R_W", 0, 507)).at(0);
    const FRAME_PRO doubles = writeFrames(counting("R_D", 0, 507)).at(0);
    const FRAME_PRO coils = writeFrames(counting("M_W", 0, 507)).at(0);
    for (int i = 0; i < 507; ++i) {
        const unsigned char low = static_cast<unsigned char>(2 * i % 255 + 1);
        const unsigned char high = static_cast<unsigned char>((2 * i + 1) % 255 + 1);
        const unsigned char highFirst[2] = {high, low};
        const unsigned char lowFirst[2] = {low, high};
        ASSERT_EQ(toHex(registers.frame + 7 + 2 * i, 2), toHex(highFirst, 2)) << "word " << i;
        ASSERT_EQ(toHex(doubles.frame + 7 + 2 * i, 2), toHex(highFirst, 2)) << "word " << i;
        ASSERT_EQ(toHex(coils.frame + 7 + 2 * i, 2), toHex(lowFirst, 2)) << "word " << i;
    }
}

TEST(FrameBuilding, WriteThatWouldNotFitItsFrameAppendsNothing)
{
    for (const char* regName : {"I_W", "Q_W", "M_W", "R_W", "R_D", "T", "C"}) {
        for (int length : {508, 509, 512, 513, 65536, INT_MAX - 3, INT_MAX}) {
            EXPECT_EQ(writeFrames(counting(regName, 0, length)).size(), 0)
                << regName << " length " << length;
        }
    }
}

TEST(FrameBuilding, WriteOfMoreBitsThanARequestCarriesAppendsNothing)
{
    for (const char* regName : {"I_bit", "Q_bit", "M_bit", "R_bit"}) {
        for (int length : {1025, 8112, 8120, 8121, 65536, INT_MAX - 15, INT_MAX}) {
            EXPECT_EQ(writeFrames(counting(regName, 15, length)).size(), 0)
                << regName << " length " << length;
        }
    }
}

TEST(FrameBuilding, WriteOfNegativeLengthAppendsNothing)
{
    for (const char* regName : {"I_bit", "R_bit", "M_W", "R_W", "R_D", "T"}) {
        for (int length : {-1, -2, -16, -65536, INT_MIN}) {
            EXPECT_EQ(writeFrames(counting(regName, 5, length)).size(), 0)
                << regName << " length " << length;
        }
    }
}

TEST(FrameBuilding, WriteOfNoLengthIsAFrameWithQuantityZero)
{
    const struct {
        const char* regName;
        const char* frame;
    } rows[] = {
        {"Q_bit", "01 0F 00 20 00 00 00"}, {"M_W", "01 0F 12 00 00 00 00"},
        {"R_W", "01 10 05 20 00 00 00"},   {"R_D", "01 10 05 20 00 00 00"},
        {"T", "01 10 01 A0 00 00 00"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.regName);
        const QList<FRAME_PRO> frames = writeFrames(counting(row.regName, 32, 0));
        ASSERT_EQ(frames.size(), 1);
        EXPECT_EQ(frameHex(frames.at(0)), crcEnding(row.frame));
        EXPECT_EQ(frames.at(0).replyLength, 8);
    }
    const QList<FRAME_PRO> pair = writeFrames(counting("R_bit", 32, 0));
    ASSERT_EQ(pair.size(), 2);
    EXPECT_EQ(frameHex(pair.at(0)), crcEnding("01 03 05 02 00 00"));
    EXPECT_EQ(frameHex(pair.at(1)), crcEnding("01 10 05 02 00 00 00"));
}

TEST(FrameBuilding, WriteToAnyAddressIsPlainArithmeticIn16Bits)
{
    const struct {
        const char* regName;
        int address;
        int length;
        const char* frame;
    } rows[] = {
        {"Q_bit", 65535, 1, "01 05 07 FF FF 00"},
        {"Q_bit", INT_MAX, 1, "01 05 07 FF FF 00"},
        {"Q_bit", INT_MIN, 1, "01 05 08 00 FF 00"},
        {"Q_bit", -1, 2, "01 0F FF FF 00 02 01 05"},
        {"Q_bit", INT_MAX, 2, "01 0F FF FF 00 02 01 05"},
        {"M_W", INT_MAX, 1, "01 0F 0F F0 00 10 02 01 02"},
        {"M_W", INT_MIN, 1, "01 0F 10 00 00 10 02 01 02"},
        {"R_W", INT_MAX, 1, "01 06 04 FF 02 01"},
        {"R_W", INT_MIN, 1, "01 06 05 00 02 01"},
        {"R_D", INT_MAX, 2, "01 10 04 FF 00 02 04 02 01 04 03"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.regName << ' ' << row.address);
        const QList<FRAME_PRO> frames = writeFrames(counting(row.regName, row.address, row.length));
        ASSERT_EQ(frames.size(), 1);
        EXPECT_EQ(frameHex(frames.at(0)), crcEnding(row.frame));
    }
}

// --- Bits of registers: the controller knows whole registers only

TEST(FrameBuilding, BitOfARegisterIsAReadAndAWriteOfItsRegister)
{
    const QList<FRAME_PRO> frames = writeFrames(request("R_bit", 35, 1, 1, {1}));
    ASSERT_EQ(frames.size(), 2);
    EXPECT_EQ(frameHex(frames.at(0)), crcEnding("01 03 05 02 00 01"));
    EXPECT_EQ(frameHex(frames.at(1)), crcEnding("01 10 05 02 00 01 02 00 01"));
}

TEST(FrameBuilding, BitsOfRegistersSpanTheRegistersThatHoldThem)
{
    const struct {
        int address;
        int length;
        const char* start;
        int count;
    } rows[] = {
        {0, 1, "05 00", 1},      {15, 1, "05 00", 1},    {15, 2, "05 00", 2},
        {0, 16, "05 00", 1},     {0, 17, "05 00", 2},    {1, 16, "05 00", 2},
        {16, 16, "05 01", 1},    {35, 1, "05 02", 1},    {31, 33, "05 01", 3},
        {31, 34, "05 01", 4},    {63999, 1, "14 9F", 1}, {0, 1024, "05 00", 64},
        {15, 1024, "05 00", 65},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.address << '+' << row.length);
        const QList<FRAME_PRO> frames = writeFrames(counting("R_bit", row.address, row.length));
        ASSERT_EQ(frames.size(), 2);
        const std::string count = toHex(QByteArray(1, static_cast<char>(row.count)));
        EXPECT_EQ(toHex(frames.at(0).frame, 6), "01 03 " + std::string(row.start) + " 00 " + count);
        EXPECT_EQ(toHex(frames.at(1).frame, 6), "01 10 " + std::string(row.start) + " 00 " + count);
        EXPECT_EQ(frames.at(1).frame[6], row.count * 2);
        EXPECT_TRUE(endsInItsCrc(frames.at(0)));
        EXPECT_TRUE(endsInItsCrc(frames.at(1)));

        EXPECT_EQ(frames.at(0).sendLength, 8);
        EXPECT_EQ(frames.at(0).replyLength, 5 + 2 * row.count);
        EXPECT_EQ(frames.at(0).dataPosition, 3);
        EXPECT_EQ(frames.at(0).dataCount, 2 * row.count); // bytes, unlike any other read
        EXPECT_EQ(frames.at(0).spare, 0);

        EXPECT_EQ(frames.at(1).sendLength, 9 + 2 * row.count);
        EXPECT_EQ(frames.at(1).replyLength, 8);
        EXPECT_EQ(frames.at(1).dataPosition, 7);
        EXPECT_EQ(frames.at(1).dataCount, 0);
        EXPECT_EQ(frames.at(1).spare, 0);
    }
}

TEST(FrameBuilding, WriteHalfOfRegisterBitsCarriesTheDataUntilTheReadPatchesIt)
{
    const QList<FRAME_PRO> frames = writeFrames(request("R_bit", 15, 2, 1, {1, 2, 3, 4}));
    ASSERT_EQ(frames.size(), 2);
    EXPECT_EQ(frameHex(frames.at(1)), crcEnding("01 10 05 00 00 02 04 02 01 04 03"));
}

TEST(FrameBuilding, BitsOfRegistersAreNeverBroadcast)
{
    EXPECT_EQ(writeFrames(request("R_bit", 35, 1, 0, {1})).size(), 0);
    EXPECT_EQ(writeFrames(request("R_bit", 35, 20, 0, {1})).size(), 0);
}

// Only the number 0 is the broadcast, not every number that goes out as 0.
TEST(FrameBuilding, BitsOfRegistersOfAStationAbove255AreFramed)
{
    const QList<FRAME_PRO> frames = writeFrames(request("R_bit", 35, 1, 256, {1}));
    ASSERT_EQ(frames.size(), 2);
    EXPECT_EQ(toHex(frames.at(0).frame, 6), "00 03 05 02 00 01");
    EXPECT_EQ(toHex(frames.at(1).frame, 6), "00 10 05 02 00 01");
}

TEST(FrameBuilding, BitsOfRegistersAtAnyAddressStayWithin16Bits)
{
    const struct {
        int address;
        const char* start;
    } rows[] = {{INT_MAX, "04 FF"}, {1048576, "05 00"}, {-16, "04 FF"}, {INT_MIN, "05 00"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.address);
        const QList<FRAME_PRO> frames = writeFrames(counting("R_bit", row.address, 1));
        ASSERT_EQ(frames.size(), 2);
        EXPECT_EQ(toHex(frames.at(0).frame, 6), "01 03 " + std::string(row.start) + " 00 01");
        EXPECT_EQ(toHex(frames.at(1).frame, 6), "01 10 " + std::string(row.start) + " 00 01");
    }
}

// --- All of them

TEST(FrameBuilding, NoRequestMakesAFrameThatIsLongerThanItsBufferOrHasAWrongCrc)
{
    const char* const names[] = {"I_bit", "Q_bit", "M_bit", "R_bit", "I_W", "Q_W",
                                 "M_W",   "R_W",   "R_D",   "T",     "C"};
    const int addresses[] = {INT_MIN, INT_MIN + 1, -65536, -33,         -16,    -15,  -1,
                             0,       1,           15,     16,          127,    2047, 3999,
                             63999,   65535,       65536,  INT_MAX - 1, INT_MAX};
    const int lengths[] = {INT_MIN, -65536, -17,  -1,   0,     1,     2,      7,
                           8,       9,      16,   17,   123,   128,   506,    507,
                           508,     1023,   1024, 1025, 65535, 65536, INT_MAX};
    int seen = 0;
    for (const char* regName : names) {
        for (int address : addresses) {
            for (int length : lengths) {
                const VARIABLE wanted = counting(regName, address, length, 3);
                for (const QList<FRAME_PRO>& frames : {readFrames(wanted), writeFrames(wanted)}) {
                    for (int i = 0; i < frames.size(); ++i) {
                        ASSERT_GE(frames.at(i).sendLength, 8)
                            << regName << address << '+' << length;
                        ASSERT_LE(frames.at(i).sendLength, recordDataSize);
                        ASSERT_EQ(frames.at(i).frame[0], 3);
                        ASSERT_TRUE(endsInItsCrc(frames.at(i)))
                            << regName << address << '+' << length;
                        ++seen;
                    }
                }
            }
        }
    }
    EXPECT_GT(seen, 11 * 19 * 23); // every read, and the writes that fit
}

// --- The registers that are written back after single bits were set in them

TEST(FrameBuilding, AWriteBackTakesNoBitsFromBehindThoseOfItsRequest)
{
    struct {
        VARIABLE request;
        unsigned char behind;
    } asked = {request("R_bit", 32, recordDataSize + 1), 1};
    memset(asked.request.data, 1, sizeof asked.request.data);
    enum {
        position = 7,
        bytes = recordDataSize / 8 + 2
    };
    FRAME_PRO writeBack = FRAME_PRO();
    writeBack.dataPosition = position;
    writeBack.sendLength = position + bytes + 2;
    patchWriteBack(writeBack, QByteArray(bytes, '\0'), bytes, 0, asked.request);
    EXPECT_EQ(toHex(writeBack.frame + position + bytes - 4, 4), "FF FF 00 00");
}

// --- Handshake

TEST(FrameBuilding, HandshakeIsAnEmptyFrameThatAwaitsNothing)
{
    QList<FRAME_PRO> frames;
    frameHandshake(frames);
    ASSERT_EQ(frames.size(), 1);
    const FRAME_PRO frame = frames.at(0);
    EXPECT_EQ(frame.sendLength, 0);
    EXPECT_EQ(frame.replyLength, 0);
    EXPECT_EQ(frame.dataPosition, 0);
    EXPECT_EQ(frame.dataCount, 0);
    EXPECT_EQ(frame.spare, 0);
    EXPECT_EQ(text(frame.request.regName), "");
    EXPECT_EQ(frame.request.kind, 0);
    EXPECT_EQ(frame.request.stationNo, 0);
    EXPECT_EQ(frame.request.address, 0);
    EXPECT_EQ(frame.request.length, 0);
    const std::string zeros = toHex(QByteArray(recordDataSize, '\0'));
    EXPECT_EQ(toHex(frame.frame, recordDataSize), zeros);
    EXPECT_EQ(toHex(frame.request.data, recordDataSize), zeros);
}

} // namespace
