#include "line/frame_fields.h"

#include <gmock/gmock.h>

namespace dov417 {

namespace {

using testing::ElementsAre;

std::vector<std::string> texts(const std::vector<FrameField>& fields)
{
    std::vector<std::string> lines;
    for (const FrameField& field : fields)
        lines.push_back(std::to_string(field.first) + "+" + std::to_string(field.count) + " " +
                        field.name + (field.meaning.empty() ? "" : ": " + field.meaning));
    return lines;
}

QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

TEST(FrameFields, TakeARequestApart)
{
    EXPECT_THAT(texts(requestFields(hex("01 03 05 0A 00 02 E4 C5"))),
                ElementsAre("0+1 station: 1", "1+1 function: read registers",
                            "2+2 first register: 1290", "4+2 register count: 2", "6+2 CRC: right"));
    EXPECT_THAT(texts(requestFields(hex("01 05 00 03 FF 00 7C 3A"))),
                ElementsAre("0+1 station: 1", "1+1 function: write one coil", "2+2 first coil: 3",
                            "4+2 value: on", "6+2 CRC: right"));
    EXPECT_THAT(texts(requestFields(hex("00 10 00 01 00 02 04 00 0A 01 02 00 00"))),
                ElementsAre("0+1 station: 0, all stations", "1+1 function: write registers",
                            "2+2 first register: 1", "4+2 register count: 2", "6+1 byte count: 4",
                            "7+2 register 1: 10", "9+2 register 2: 258", "11+2 CRC: wrong"));
}

TEST(FrameFields, TakeAReplyApartByItsRequest)
{
    EXPECT_THAT(
        texts(replyFields(hex("01 03 04 00 07 00 08 8B F4"), hex("01 03 05 0A 00 02 E4 C5"))),
        ElementsAre("0+1 station: 1", "1+1 function: read registers", "2+1 byte count: 4",
                    "3+2 register 1290: 7", "5+2 register 1291: 8", "7+2 CRC: wrong"));
    EXPECT_THAT(texts(replyFields(hex("01 01 01 05 91 8B"), hex("01 01 00 10 00 03 7D CE"))),
                ElementsAre("0+1 station: 1", "1+1 function: read coils", "2+1 byte count: 1",
                            "3+1 coils from 16: 101, the first one to the left", "4+2 CRC: right"));
    EXPECT_THAT(texts(replyFields(hex("01 83 02 C0 F1"), QByteArray())),
                ElementsAre("0+1 station: 1", "1+1 function: exception to read registers",
                            "2+1 exception code: 2, illegal data address", "3+2 CRC: right"));
}

TEST(FrameFields, NumberTheValuesOfAReplyWhoseRequestIsNotKnown)
{
    const QByteArray answer = hex("01 03 04 00 07 00 08 8B F4");
    // None, of another station, of another function, of another count, cut short.
    for (const char* request : {"", "02 03 05 0A 00 02 E4 F6", "01 04 05 0A 00 02 51 05",
                                "01 03 05 0A 00 03 25 05", "01 03 05 0A 00 02"})
        EXPECT_THAT(texts(replyFields(answer, hex(request))),
                    ElementsAre("0+1 station: 1", "1+1 function: read registers",
                                "2+1 byte count: 4", "3+2 value 1: 7", "5+2 value 2: 8",
                                "7+2 CRC: wrong"))
            << request;
    EXPECT_THAT(texts(replyFields(hex("01 01 01 05 91 8B"), QByteArray())),
                ElementsAre("0+1 station: 1", "1+1 function: read coils", "2+1 byte count: 1",
                            "3+1 value byte 1: 10100000, the first one to the left",
                            "4+2 CRC: right"));
}

TEST(FrameFields, NameTheFourTables)
{
    EXPECT_THAT(texts(requestFields(hex("01 04 00 0A 00 01 11 C8"))),
                ElementsAre("0+1 station: 1", "1+1 function: read input registers",
                            "2+2 first input register: 10", "4+2 input register count: 1",
                            "6+2 CRC: right"));
    EXPECT_THAT(texts(replyFields(hex("01 04 02 00 07 F8 F2"), hex("01 04 00 0A 00 01 11 C8"))),
                ElementsAre("0+1 station: 1", "1+1 function: read input registers",
                            "2+1 byte count: 2", "3+2 input register 10: 7", "5+2 CRC: right"));
    EXPECT_THAT(texts(requestFields(hex("01 02 00 0A 00 03 18 09"))),
                ElementsAre("0+1 station: 1", "1+1 function: read inputs", "2+2 first input: 10",
                            "4+2 input count: 3", "6+2 CRC: right"));
    EXPECT_THAT(texts(replyFields(hex("01 02 01 05 61 8B"), hex("01 02 00 0A 00 03 18 09"))),
                ElementsAre("0+1 station: 1", "1+1 function: read inputs", "2+1 byte count: 1",
                            "3+1 inputs from 10: 101, the first one to the left",
                            "4+2 CRC: right"));
}

TEST(FrameFields, AreAllBytesOfWhateverCame)
{
    const QByteArray whole = hex("01 10 00 01 00 02 04 00 0A 01 02 92 30");
    for (int first = 0; first < 256; ++first)
        for (int length = 0; length <= whole.size(); ++length) {
            QByteArray frame = whole.left(length);
            if (length > 1)
                frame[1] = static_cast<char>(first);
            for (const auto& fields : {requestFields(frame), replyFields(frame, whole)}) {
                int next = 0;
                for (const FrameField& field : fields) {
                    EXPECT_EQ(field.first, next);
                    EXPECT_GT(field.count, 0);
                    next += field.count;
                }
                EXPECT_EQ(next, length);
            }
        }
}

} // namespace

} // namespace dov417
