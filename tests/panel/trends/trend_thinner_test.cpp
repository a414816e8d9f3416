#include "panel/trends/trend_thinner.h"

#include <gmock/gmock.h>
#include <limits>

#include "made_trends.h"
#include "panel/trends/trend_statistics.h"
#include "text/address_values.h"
#include "text/raw_values.h"

namespace dov417 {

namespace {

const Address drawnWord = registerAt(32);
constexpr std::size_t plenty = std::numeric_limits<std::size_t>::max();

TrendWindow windowOf(double from, double to, double step)
{
    return {second(from), second(to), static_cast<TrendTime>(step * 1e6)};
}

// "0:7 2:7 2:9 | 8:9": points, a bar where a stretch begins.
std::string pointsOf(const TrendLine& line)
{
    std::string text;
    auto begin = line.begins.begin();
    for (std::size_t i = 0; i < line.points.size(); ++i) {
        if (begin != line.begins.end() && *begin == i) {
            text += "| ";
            ++begin;
        }
        char point[64];
        std::snprintf(point, sizeof point, "%g:%g ",
                      static_cast<double>(line.points[i].at) / 1e6 - trendTestStart,
                      line.points[i].value);
        text += point;
    }
    return text;
}

class TheThinner : public testing::Test {
protected:
    TheThinner()
    {
        thinner.choose(drawnWord, TrendNumbers(Width::word, Format()));
    }
    std::string drawn(const TrendWindow& window)
    {
        std::size_t budget = plenty;
        EXPECT_TRUE(thinner.update(history, window, budget));
        return pointsOf(thinner.line());
    }

    TrendHistory history;
    TrendThinner thinner;
};

TEST_F(TheThinner, DrawsStepsUpToTheLastGoodReplyAndGapsAsGaps)
{
    tell(history, wordView(drawnWord, 7, 0, 0));
    tell(history, wordView(drawnWord, 9, 2, 3));
    tell(history, oldView(wordView(drawnWord, 9, 2, 3)));
    tell(history, wordView(drawnWord, 9, 2, 8, 1));
    tell(history, wordView(drawnWord, 9, 2, 9, 1));
    EXPECT_EQ(drawn(windowOf(-5, 20, 0.5)), "| 0:7 2:7 2:9 3:9 | 8:9 9:9 ");
    EXPECT_EQ(drawn(windowOf(1, 8.5, 0.5)), "| 1:7 2:7 2:9 3:9 | 8:9 8.5:9 ");
    EXPECT_EQ(drawn(windowOf(4, 6, 0.5)), "");
    EXPECT_EQ(drawn(windowOf(8.5, 30, 0.5)), "| 8.5:9 9:9 ");
    EXPECT_EQ(drawn(windowOf(12, 30, 0.5)), "") << "it is not known to hold on";
}

TEST_F(TheThinner, ShowsWhatWasGoodForOneReplyAlone)
{
    tell(history, wordView(drawnWord, 7, 0, 0));
    tell(history, oldView(wordView(drawnWord, 7, 0, 0)));
    tell(history, wordView(drawnWord, 8, 5, 5, 1));
    tell(history, oldView(wordView(drawnWord, 8, 5, 5, 1)));
    EXPECT_EQ(drawn(windowOf(-5, 20, 0.5)).substr(0, 6), "| 0:7 ") << "in a column with its gap";
    EXPECT_NE(drawn(windowOf(-5, 20, 0.5)).find("| 5:8 "), std::string::npos);
}

TEST_F(TheThinner, KeepsPeaksInsideAColumn)
{
    for (int i = 0; i < 1000; ++i)
        tell(history, wordView(drawnWord,
                               i == 500   ? 60000
                               : i == 501 ? 3
                                          : 100 + i % 2,
                               i * 0.001, i * 0.001));
    const std::string text = drawn(windowOf(0, 1, 1));
    EXPECT_THAT(text, testing::HasSubstr(":60000 "));
    EXPECT_THAT(text, testing::HasSubstr(":3 "));
    EXPECT_LE(thinner.line().points.size(), 8U);
    EXPECT_THAT(text, testing::EndsWith("0.999:101 "));
}

TEST_F(TheThinner, JoinsNothingAcrossAGapInsideAColumn)
{
    tell(history, wordView(drawnWord, 10, 0, 0));
    tell(history, oldView(wordView(drawnWord, 10, 0, 0.1)));
    tell(history, wordView(drawnWord, 20, 0.5, 0.5, 1));
    tell(history, oldView(wordView(drawnWord, 20, 0.5, 0.5, 1)));
    tell(history, wordView(drawnWord, 30, 0.9, 3, 2));
    const std::string text = drawn(windowOf(-2, 4, 2));
    EXPECT_THAT(text, testing::EndsWith("| 0.9:30 3:30 "));
    EXPECT_EQ(text.find("0.1"), std::string::npos) << text;
}

TEST_F(TheThinner, GoesOnWithWhatHasComeAsIfItHadSeenAllAtOnce)
{
    std::uint64_t chance = 1;
    double at = 0;
    long long lapses = 0;
    for (int round = 0; round < 300; ++round) {
        for (int i = 0; i < 20; ++i) {
            chance = chance * 6364136223846793005ULL + 1442695040888963407ULL;
            const int word = static_cast<int>(chance >> 48);
            at += 0.01 + static_cast<double>(chance >> 33 & 0xFF) / 1000;
            const View view = wordView(drawnWord, word, at, at, lapses);
            tell(history, view);
            if (chance >> 40 & 1 && i == 7) {
                tell(history, oldView(view));
                ++lapses;
            }
        }
        const TrendWindow now = windowOf(at - 20, at + 1, 0.5);
        TrendThinner fresh;
        fresh.choose(drawnWord, TrendNumbers(Width::word, Format()));
        std::size_t budget = plenty;
        ASSERT_TRUE(fresh.update(history, now, budget));
        ASSERT_EQ(drawn(now), pointsOf(fresh.line())) << round;
    }
}

TEST_F(TheThinner, TakesSeveralTurnsForMuchAndShowsWhatItHadMeanwhile)
{
    for (int i = 0; i < 1000; ++i)
        tell(history, wordView(drawnWord, i, i, i));
    EXPECT_EQ(drawn(windowOf(0, 2, 1)), "| 0:0 1:0 1:1 2:1 2:2 ");
    std::size_t budget = 300;
    EXPECT_FALSE(thinner.update(history, windowOf(0, 1000, 50), budget));
    EXPECT_EQ(budget, 0U);
    EXPECT_EQ(pointsOf(thinner.line()), "| 0:0 1:0 1:1 2:1 2:2 ");
    int turns = 1;
    do {
        budget = 300;
        ++turns;
    } while (!thinner.update(history, windowOf(0, 1000, 50), budget) && turns < 10);
    EXPECT_EQ(turns, 4);
    TrendThinner whole;
    whole.choose(drawnWord, TrendNumbers(Width::word, Format()));
    budget = plenty;
    whole.update(history, windowOf(0, 1000, 50), budget);
    EXPECT_EQ(pointsOf(thinner.line()), pointsOf(whole.line()));
}

TEST_F(TheThinner, DrawsInTheFormatsNumbers)
{
    Format format;
    format.notation = Notation::signedNumber;
    format.scaling.scale = 0.5;
    format.scaling.offset = 10;
    tell(history, wordView(drawnWord, 0xFFFE, 0, 0));
    tell(history, wordView(drawnWord, 0xFFFE, 0, 1));
    thinner.choose(drawnWord, TrendNumbers(Width::word, format));
    EXPECT_EQ(drawn(windowOf(-1, 5, 1)), "| 0:9 1:9 ");
    thinner.choose(drawnWord, TrendNumbers(Width::word, Format()));
    EXPECT_EQ(drawn(windowOf(-1, 5, 1)), "| 0:65534 1:65534 ");
}

struct NumbersRow {
    Width width;
    Format format;
    std::vector<unsigned char> bytes;
    double number;
};

TEST(TrendNumbers, AreThoseThatTheFormatShows)
{
    const double none = std::numeric_limits<double>::quiet_NaN();
    const Scaling tenths{0.1, -5, 1, "bar"};
    const std::vector<NumbersRow> rows = {
        {Width::bit, {}, {1}, 1},
        {Width::bit, {Notation::unsignedNumber, WordOrder::lowFirst, tenths}, {1}, 1},
        {Width::bit, {Notation::signedNumber}, {1}, 1},
        {Width::word, {}, {0xFF, 0xFF}, 65535},
        {Width::word, {Notation::signedNumber}, {0xFF, 0xFF}, -1},
        {Width::word, {Notation::hex, WordOrder::lowFirst, tenths}, {0x10, 0}, 16},
        {Width::word, {Notation::bcd}, {0x34, 0x12}, 1234},
        {Width::word, {Notation::bcd}, {0x3A, 0x12}, none},
        {Width::word, {Notation::unsignedNumber, WordOrder::lowFirst, tenths}, {100, 0}, 5},
        {Width::doubleWord, {Notation::unsignedNumber, WordOrder::highFirst}, {1, 0, 2, 0}, 65538},
        {Width::doubleWord, {Notation::signedNumber}, {0xFE, 0xFF, 0xFF, 0xFF}, -2},
        {Width::doubleWord, {Notation::real}, {0, 0, 0xC0, 0x3F}, 1.5},
        {Width::doubleWord, {Notation::real, WordOrder::highFirst}, {0xC0, 0x3F, 0, 0}, 1.5},
        {Width::doubleWord, {Notation::real}, {0, 0, 0x80, 0x7F}, none}, // infinite
        {Width::quadWord, {Notation::real64}, {0, 0, 0, 0, 0, 0, 0xF8, 0x3F}, 1.5},
        {Width::quadWord, {Notation::int64}, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, -1},
    };
    for (const NumbersRow& row : rows) {
        const TrendNumbers numbers(row.width, row.format);
        const double number = numbers(fromBytes(row.bytes.data(), row.width));
        const std::string where = testing::PrintToString(row.bytes) + " " +
                                  std::to_string(static_cast<int>(row.format.notation));
        if (std::isnan(row.number))
            EXPECT_TRUE(std::isnan(number)) << where << number;
        else
            EXPECT_DOUBLE_EQ(number, row.number) << where;
    }
}

TEST(TrendStatistics, WeighEachValueWithItsTimeAndLeaveGapsOut)
{
    TrendHistory history;
    const TrendNumbers numbers(Width::word, Format());
    tell(history, wordView(drawnWord, 10, 0, 0));
    tell(history, wordView(drawnWord, 40, 9, 10));
    tell(history, oldView(wordView(drawnWord, 40, 9, 10)));
    tell(history, wordView(drawnWord, 1000, 20, 22, 1));
    const TrendStatistics all = statisticsOf(history, drawnWord, numbers, second(0), second(20));
    EXPECT_DOUBLE_EQ(all.minimum, 10);
    EXPECT_DOUBLE_EQ(all.maximum, 40);
    EXPECT_DOUBLE_EQ(all.mean, 13); // (9 * 10 + 1 * 40) / 10
    EXPECT_EQ(all.known, 10 * trendSecond);
    EXPECT_EQ(all.whole, 20 * trendSecond);
    const TrendStatistics part = statisticsOf(history, drawnWord, numbers, second(8), second(9.5));
    EXPECT_DOUBLE_EQ(part.mean, 20);
    EXPECT_EQ(statisticsOf(history, drawnWord, numbers, second(11), second(19)).known, 0);
    EXPECT_EQ(statisticsOf(history, drawnWord, numbers, second(21), second(60)).known, trendSecond);
    EXPECT_FALSE(all.isOfTwoLines);
}

TEST(TrendStatistics, SayNothingOfTwoLinesAtOnce)
{
    TrendHistory history;
    const TrendNumbers numbers(Width::word, Format());
    tell(history, wordView(drawnWord, 10, 0, 0));
    tell(history, wordView(drawnWord, 10, 0, 5));
    history.interrupt(TrendGap::otherLine, 0);
    tell(history, wordView(drawnWord, 20, 8, 8));
    tell(history, wordView(drawnWord, 20, 8, 9));
    EXPECT_TRUE(statisticsOf(history, drawnWord, numbers, second(0), second(9)).isOfTwoLines);
    EXPECT_FALSE(statisticsOf(history, drawnWord, numbers, second(0), second(5)).isOfTwoLines);
    EXPECT_FALSE(statisticsOf(history, drawnWord, numbers, second(6), second(9)).isOfTwoLines);
}

TEST(TrendMoment, IsTheValueThatHeldOrWhyNoneIsKnown)
{
    TrendHistory history;
    tell(history, wordView(drawnWord, 10, 0, 0));
    tell(history, wordView(drawnWord, 10, 0, 5));
    tell(history, oldView(wordView(drawnWord, 10, 0, 5)));
    tell(history, wordView(drawnWord, 20, 8, 8, 1));
    tell(history, wordView(drawnWord, 20, 8, 9, 1));
    EXPECT_EQ(momentOf(history, drawnWord, second(4.9)).raw, 10U);
    EXPECT_EQ(momentOf(history, drawnWord, second(5)).gap, TrendGap::failed);
    EXPECT_EQ(momentOf(history, drawnWord, second(6)).gap, TrendGap::failed);
    EXPECT_FALSE(momentOf(history, drawnWord, second(6)).raw);
    EXPECT_EQ(momentOf(history, drawnWord, second(9)).raw, 20U);
    for (const double at : {-1.0, 9.1}) {
        EXPECT_FALSE(momentOf(history, drawnWord, second(at)).raw) << at;
        EXPECT_FALSE(momentOf(history, drawnWord, second(at)).gap) << at;
    }
}

} // namespace

} // namespace dov417
