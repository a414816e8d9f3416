#include "link/marker.h"

#include <gtest/gtest.h>

#include "line/crc16.h"

namespace dov417 {

namespace {

QByteArray readOf(int words)
{
    return withCrc(QByteArray::fromHex("0103050000").append(static_cast<char>(words)));
}

// What is to be told apart from late replies must not look like them.
TEST(AMarker, IsLongerThanTheRequestWhereRepliesOfEveryShorterOneAreOut)
{
    constexpr int words = 17;
    Transmission request;
    request.request.length = words;
    request.sent = readOf(words);
    request.replyLength = 5 + 2 * words;
    Books books(std::chrono::seconds(30));
    for (int shorter = 1; shorter < words; ++shorter)
        books.add({shorter, readOf(shorter), 5 + 2 * shorter, Clock::time_point()});
    unsigned short next = 1;
    const Transmission marker =
        makeMarker(request, books, OpenTransmission(), MarkerKind::read, next);
    EXPECT_EQ(marker.sent.toHex(), readOf(words + 1).toHex());
    EXPECT_EQ(marker.replyLength, 5 + 2 * (words + 1));
    EXPECT_TRUE(marker.isMarker);
}

// A word less is 16 coils or inputs less.
TEST(AMarker, OfAReadIsAReadOfTheSameUnits)
{
    struct {
        const char* request;
        const char* marker;
    } const rows[] = {{"010100050020", "010100050010"},
                      {"010200050020", "010200050010"},
                      {"010300050002", "010300050001"},
                      {"010400050002", "010400050001"}};
    for (const auto& row : rows) {
        Transmission request;
        request.request.length = 2;
        request.sent = withCrc(QByteArray::fromHex(row.request));
        request.replyLength = 9;
        unsigned short next = 1;
        const Transmission marker =
            makeMarker(request, Books(), OpenTransmission(), MarkerKind::read, next);
        EXPECT_EQ(marker.sent.toHex(), withCrc(QByteArray::fromHex(row.marker)).toHex());
        EXPECT_EQ(marker.replyLength, 7);
    }
}

// The adapter's echo of it is not mistaken for its reply.
TEST(AMarker, OfAWriteIsAReadOfWhatIsWrittenWhereAnEchoWouldTellNothing)
{
    struct {
        const char* request;
        const char* marker;
        int replyLength;
    } const rows[] = {{"010605000007", "010305000001", 7},
                      {"0110050000020400010002", "010305000001", 7},
                      {"01050805FF00", "010108050010", 7},
                      {"012B0E0100", "010300000001", 7}};
    for (const auto& row : rows) {
        Transmission request;
        request.sent = withCrc(QByteArray::fromHex(row.request));
        request.replyLength = 8;
        unsigned short next = 1;
        const auto make = [&](MarkerKind kind) {
            return makeMarker(request, Books(), OpenTransmission(), kind, next);
        };
        const Transmission marker = make(MarkerKind::readAlso);
        EXPECT_EQ(marker.sent.toHex(), withCrc(QByteArray::fromHex(row.marker)).toHex());
        EXPECT_EQ(marker.replyLength, row.replyLength);
        EXPECT_EQ(make(MarkerKind::read).replyLength, 0) << row.request;
    }
}

} // namespace

} // namespace dov417
