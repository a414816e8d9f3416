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
    const Transmission marker = makeMarker(request, books, OpenTransmission(), false, next);
    EXPECT_EQ(marker.sent.toHex(), readOf(words + 1).toHex());
    EXPECT_EQ(marker.replyLength, 5 + 2 * (words + 1));
    EXPECT_TRUE(marker.isMarker);
}

} // namespace

} // namespace dov417
