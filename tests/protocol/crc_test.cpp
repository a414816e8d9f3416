#include "protocol/crc.h"

#include <gtest/gtest.h>

#include "made_records.h"

namespace {

// One byte after the other by table or by word: the lengths around each power of two, a whole
// reply, and one more than any reply has.
const int interestingLengths[] = {0,  1,  2,  3,  4,   7,   8,   9,   15,  16,
                                  17, 31, 33, 64, 255, 256, 257, 261, 1024};

QByteArray arbitraryBytes(int length, unsigned int seed)
{
    QByteArray bytes;
    unsigned int state = seed;
    for (int i = 0; i < length; ++i) {
        state = state * 1103515245u + 12345u;
        bytes.append(static_cast<char>(state >> 16));
    }
    return bytes;
}

unsigned char* raw(QByteArray& bytes)
{
    return reinterpret_cast<unsigned char*>(bytes.data());
}

// The two bytes that the test's own, bitwise CRC puts after these.
std::string bitwise(const QByteArray& bytes)
{
    return toHex(withCrc(bytes).right(2));
}

std::string lowByteFirst(int crc)
{
    const unsigned char bytes[2] = {static_cast<unsigned char>(crc & 0xFF),
                                    static_cast<unsigned char>(crc >> 8)};
    return toHex(bytes, 2);
}

TEST(Crc, OfNothingIsTheStartValue)
{
    unsigned char none = 0;
    EXPECT_EQ(computate_check(&none, 0), 0xFFFF);
    EXPECT_EQ(computate_check(nullptr, 0), 0xFFFF);
    EXPECT_EQ(crcOf(nullptr, 0), 0xFFFF);
}

TEST(Crc, OfAOneRegisterReadIsStoredAs84Then0A)
{
    unsigned char frame[8] = {0x01, 0x03, 0x00, 0x00, 0x00, 0x01, 0, 0};
    EXPECT_EQ(computate_check(frame, 6), 0x0A84);
    appendCrc(frame, 6);
    EXPECT_EQ(toHex(frame, 8), "01 03 00 00 00 01 84 0A");
}

TEST(Crc, OfPublishedFramesIsThePublishedOne)
{
    const struct {
        const char* bytes;
        int crc;
    } rows[] = {
        {"31 32 33 34 35 36 37 38 39", 0x4B37}, // the catalogue's check value, "123456789"
        {"02 07", 0x1241},                      // the serial-line guide's example
        {"00", 0x40BF},
        {"FF", 0x00FF},
        {"11 03 00 6B 00 03", 0x8776},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        QByteArray bytes = hex(row.bytes);
        EXPECT_EQ(computate_check(raw(bytes), static_cast<unsigned short>(bytes.size())), row.crc);
    }
}

TEST(Crc, OfEverySingleByteAgreesWithTheBitwiseRule)
{
    for (int value = 0; value < 256; ++value) {
        QByteArray one(1, static_cast<char>(value));
        EXPECT_EQ(lowByteFirst(computate_check(raw(one), 1)), bitwise(one)) << value;
    }
}

TEST(Crc, OfEveryLengthAgreesWithTheBitwiseRule)
{
    for (int length : interestingLengths) {
        for (unsigned int seed = 1; seed <= 8; ++seed) {
            QByteArray bytes = arbitraryBytes(length, seed);
            const std::string expected = bitwise(bytes);
            EXPECT_EQ(
                lowByteFirst(computate_check(raw(bytes), static_cast<unsigned short>(length))),
                expected)
                << length << " bytes, seed " << seed;
            EXPECT_EQ(lowByteFirst(crcOf(raw(bytes), length)), expected)
                << length << " bytes, seed " << seed;
        }
    }
}

TEST(Crc, StartsAtAnyAddressOfTheBuffer)
{
    QByteArray bytes = arbitraryBytes(300, 5);
    for (int start = 0; start < 9; ++start) {
        EXPECT_EQ(lowByteFirst(crcOf(raw(bytes) + start, 261)), bitwise(bytes.mid(start, 261)))
            << start;
    }
}

TEST(Crc, CoversTheLongestLengthThatItsArgumentTells)
{
    QByteArray bytes = arbitraryBytes(65535, 3);
    EXPECT_EQ(lowByteFirst(computate_check(raw(bytes), 65535)), bitwise(bytes));
}

TEST(Crc, OfConstBytesHasNoLimitAt16Bits)
{
    QByteArray bytes = arbitraryBytes(70000, 4);
    EXPECT_EQ(lowByteFirst(crcOf(raw(bytes), 70000)), bitwise(bytes));
}

TEST(Crc, ReadsTheBytesAndLeavesThem)
{
    QByteArray bytes = arbitraryBytes(261, 9);
    const std::string before = toHex(bytes);
    computate_check(raw(bytes), 261);
    EXPECT_EQ(toHex(bytes), before);
}

TEST(Crc, AppendedTouchesNothingButItsTwoBytes)
{
    unsigned char frame[6] = {0xEE, 0x02, 0x07, 0xEE, 0xEE, 0xEE};
    appendCrc(frame + 1, 2);
    EXPECT_EQ(toHex(frame, 6), "EE 02 07 41 12 EE");
}

TEST(Crc, ChangesWithEveryFlippedBit)
{
    QByteArray bytes = arbitraryBytes(64, 11);
    const int whole = crcOf(raw(bytes), 64);
    for (int bit = 0; bit < 64 * 8; ++bit) {
        QByteArray flipped = bytes;
        raw(flipped)[bit / 8] = static_cast<unsigned char>(raw(flipped)[bit / 8] ^ (1 << bit % 8));
        EXPECT_NE(crcOf(raw(flipped), 64), whole) << "bit " << bit;
    }
}

} // namespace
