#include "link/request_parts.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <set>

#include "exchange.h"
#include "line/crc16.h"
#include "simulator/controller.h"

namespace dov417 {

namespace {

using simulator::Controller;
using simulator::Memory;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int longestRequest = 128;

bool anywhere(int)
{
    return true;
}

// Values of so many words each, the first of them beginning at word `from`.
MayCut between(int length, int from = 0)
{
    return [length, from](int word) { return (word - from) % length == 0; };
}

// As few as can be: each as long as it may be. -1: it cannot be done.
int fewest(int words, int maximum, const MayCut& mayCut)
{
    int parts = 0;
    for (int from = 0; from < words; ++parts) {
        int to = std::min(words, from + maximum);
        while (to > from && to < words && !mayCut(to))
            --to;
        if (to == from)
            return -1;
        from = to;
    }
    return parts;
}

bool allDiffer(const std::vector<int>& lengths)
{
    return std::set<int>(lengths.begin(), lengths.end()).size() == lengths.size();
}

void expectAsItShouldBe(int words, int maximum, const MayCut& mayCut)
{
    const std::vector<int> lengths = partLengths(words, maximum, mayCut);
    const int parts = fewest(words, maximum, mayCut);
    ASSERT_EQ(static_cast<int>(lengths.size()), std::max(parts, 0));
    if (parts < 0)
        return;
    int end = 0;
    for (const int length : lengths) {
        ASSERT_GT(length, 0);
        ASSERT_LE(length, maximum);
        end += length;
        ASSERT_TRUE(end == words || mayCut(end)) << end;
    }
    ASSERT_EQ(end, words);
}

QByteArray framed(const char* head)
{
    return withCrc(hex(head));
}

TEST(PartLengths, AreAsFewAndAsDifferentAsCanBe)
{
    EXPECT_THAT(partLengths(128, 125, anywhere), ElementsAre(125, 3));
    EXPECT_THAT(partLengths(120, 60, anywhere), ElementsAre(60, 60)) << "no third part for it";
    EXPECT_THAT(partLengths(119, 60, anywhere), ElementsAre(60, 59));
    EXPECT_THAT(partLengths(122, 32, anywhere), ElementsAre(32, 31, 30, 29));
    EXPECT_THAT(partLengths(128, 32, anywhere), ElementsAre(32, 32, 32, 32));
    EXPECT_THAT(partLengths(60, 60, anywhere), ElementsAre(60));
}

TEST(PartLengths, EndBetweenValues)
{
    EXPECT_THAT(partLengths(128, 125, between(2)), ElementsAre(124, 4));
    EXPECT_THAT(partLengths(128, 125, between(2, 1)), ElementsAre(125, 3));
    EXPECT_THAT(partLengths(128, 60, between(4)), ElementsAre(60, 56, 12));
    EXPECT_THAT(partLengths(6, 3, between(2)), ElementsAre(2, 2, 2));
    // One value over all the words from 2 on: there is no place to cut.
    EXPECT_THAT(partLengths(10, 4, [](int word) { return word <= 2; }), IsEmpty());
}

TEST(PartLengths, HoldForEveryMaximumLengthAndValues)
{
    std::mt19937 chance(7);
    for (int maximum = 1; maximum <= longestRequest; ++maximum) {
        for (int words = 1; words <= longestRequest; ++words) {
            SCOPED_TRACE(std::to_string(words) + " over " + std::to_string(maximum));
            // Values of one, two and four words, in any order.
            std::set<int> begins;
            for (int word = 0; word < words;
                 word += 1 << std::uniform_int_distribution<>(0, 2)(chance))
                begins.insert(word);
            expectAsItShouldBe(words, maximum, anywhere);
            expectAsItShouldBe(words, maximum, between(2));
            expectAsItShouldBe(words, maximum, between(2, 1));
            expectAsItShouldBe(words, maximum, between(4, words % 4));
            expectAsItShouldBe(words, maximum,
                               [&begins](int word) { return begins.count(word) != 0; });
            ASSERT_FALSE(HasFatalFailure());
        }
    }
}

TEST(PartLengths, DifferWhereverAsManyPartsCan)
{
    for (int maximum = 1; maximum <= longestRequest; ++maximum) {
        for (int words = 1; words <= longestRequest; ++words) {
            SCOPED_TRACE(std::to_string(words) + " over " + std::to_string(maximum));
            const std::vector<int> lengths = partLengths(words, maximum, anywhere);
            const int parts = static_cast<int>(lengths.size());
            // The longest n different ones: the maximum, one less, two less.
            const bool canDiffer = words <= parts * maximum - parts * (parts - 1) / 2;
            ASSERT_EQ(allDiffer(lengths), canDiffer);

            std::vector<int> doubled = partLengths(2 * words, 2 * maximum + 1, between(2));
            for (int& length : doubled)
                length /= 2;
            ASSERT_EQ(doubled, lengths) << "32-bit values are words of twice the size";
        }
    }
}

TEST(RequestParts, KnowWhatCanBeCut)
{
    EXPECT_EQ(wordsIn(framed("010305000080")), 128);
    EXPECT_EQ(wordsIn(framed("010110000800")), 128);
    EXPECT_EQ(wordsIn(framed("0110050000020400010002")), 2);
    EXPECT_EQ(wordsIn(framed("010F100000200401020304")), 2);
    EXPECT_EQ(wordsIn(framed("010F0005000A02FF03")), 0) << "ten coils are no whole words";
    EXPECT_EQ(wordsIn(framed("01050805FF00")), 0);
    EXPECT_EQ(wordsIn(framed("010605000007")), 0);
    EXPECT_EQ(wordsIn(framed("01080000000A")), 0);
    EXPECT_FALSE(isWrite(framed("010305000080")));
    EXPECT_TRUE(isWrite(framed("010F100000200401020304")));
}

TEST(RequestParts, AreFramesOfTheirOwn)
{
    EXPECT_EQ(partOf(framed("010305000080"), 125, 3), framed("0103057D0003"));
    EXPECT_EQ(partReplyLength(framed("010305000080"), 3), 11);
    // 125 words of coils are 2000.
    EXPECT_EQ(partOf(framed("010110000800"), 125, 3), framed("010117D00030"));
    EXPECT_EQ(partOf(framed("01100500000306000100020003"), 1, 2), framed("0110050100020400020003"));
    EXPECT_EQ(partReplyLength(framed("01100500000306000100020003"), 2), 8);
    EXPECT_EQ(partOf(framed("010F10000030060102030405060000"), 2, 1), framed("010F10200010020506"));
}

TEST(RequestParts, JoinToTheReplyThatTheDriverExpects)
{
    EXPECT_EQ(joinedReply(framed("010305000003"), {framed("01030400010002"), framed("0103020003")}),
              framed("010306000100020003"));
    EXPECT_EQ(joinedReply(framed("01100500000306000100020003"),
                          {framed("011005000002"), framed("011005020001")}),
              framed("011005000003"));
}

// A controller that takes everything says what the reply to the whole request is.
class RequestPartsOf : public ::testing::TestWithParam<int> {
protected:
    RequestPartsOf()
    {
        for (int word = 0; word < longestRequest; ++word)
            plain.answer(written(0x0500 + word, 1000 + word));
        QByteArray coils = hex("010F1000080000");
        for (int byte = 0; byte < 2 * longestRequest; ++byte)
            coils.append(static_cast<char>(byte * 37));
        plain.answer(withCrc(coils));
    }

    static QByteArray written(int number, int value)
    {
        QByteArray bytes = hex("0106");
        for (const int each : {number, value})
            bytes.append(static_cast<char>(each >> 8)).append(static_cast<char>(each & 0xFF));
        return withCrc(bytes);
    }

    static QByteArray head(const char* opening, int quantity)
    {
        return hex(opening)
            .append(static_cast<char>(quantity >> 8))
            .append(static_cast<char>(quantity & 0xFF));
    }

    static QByteArray throughParts(Controller& controller, const QByteArray& request, int maximum)
    {
        std::vector<QByteArray> replies;
        int first = 0;
        for (const int length : partLengths(wordsIn(request), maximum, anywhere)) {
            const QByteArray part = partOf(request, first, length);
            replies.push_back(controller.answer(part));
            EXPECT_EQ(replies.back().size(), partReplyLength(request, length));
            first += length;
        }
        return joinedReply(request, replies);
    }

    Memory memory{{1}};
    Controller plain{memory};
};

TEST_P(RequestPartsOf, EveryReadJoinToTheReplyOfAControllerThatTakesItWhole)
{
    for (int words = 1; words <= longestRequest; ++words) {
        for (const QByteArray& request :
             {withCrc(head("01030500", words)), withCrc(head("01011000", 16 * words))}) {
            ASSERT_EQ(throughParts(plain, request, GetParam()).toHex(),
                      plain.answer(request).toHex());
        }
    }
}

TEST_P(RequestPartsOf, EveryWriteLeaveTheSameInTheController)
{
    for (int words = 1; words <= longestRequest; ++words) {
        QByteArray data;
        for (int byte = 0; byte < 2 * words; ++byte)
            data.append(static_cast<char>(byte * 53 + words));
        data.prepend(static_cast<char>(2 * words & 0xFF));
        const QByteArray registers = withCrc(head("01100500", words) + data);
        const QByteArray coils = withCrc(head("010F1000", 16 * words) + data);

        Memory otherMemory({1});
        Controller other(otherMemory);
        ASSERT_EQ(throughParts(other, registers, GetParam()), plain.answer(registers));
        ASSERT_EQ(throughParts(other, coils, GetParam()), plain.answer(coils));
        for (const QByteArray& read :
             {withCrc(head("01030500", words)), withCrc(head("01011000", 16 * words))})
            ASSERT_EQ(other.answer(read).toHex(), plain.answer(read).toHex());
    }
}

INSTANTIATE_TEST_SUITE_P(AtMost, RequestPartsOf, ::testing::Values(1, 2, 7, 16, 32, 60, 123, 125),
                         ::testing::PrintToStringParamName());

} // namespace

} // namespace dov417
