#include "panel/trends/trend_history.h"

#include <gmock/gmock.h>

#include "made_trends.h"
#include "panel/trends/trend_arrangement.h"
#include "panel/trends/trend_statistics.h"

namespace dov417 {

namespace {

const Address recordedWord = registerAt(32);

TEST(TrendHistory, KeepsEachChangeWithItsTimeAndHowLongItHeld)
{
    TrendHistory history;
    tell(history, wordView(recordedWord, 7, 0, 0));
    tell(history, wordView(recordedWord, 7, 0, 1));
    tell(history, wordView(recordedWord, 0x108, 2, 2));
    tell(history, wordView(recordedWord, 9, 3, 5));
    tell(history, wordView(recordedWord, 9, 3, 6));
    EXPECT_EQ(heldIn(history, recordedWord), "7@0 264@2 9@3 until 6");
    EXPECT_EQ(heldIn(history, recordedWord, 2.5), "264@2 9@3 until 6");
    EXPECT_EQ(heldIn(history, registerAt(33)), "until 0");
    EXPECT_FALSE(history.end(registerAt(33)));
}

TEST(TrendHistory, KnowsNothingFromTheLastGoodReplyUntilTheNext)
{
    TrendHistory history;
    tell(history, wordView(recordedWord, 7, 0, 1));
    tell(history, oldView(wordView(recordedWord, 7, 0, 2))); // it was confirmed once more before
    tell(history, oldView(wordView(recordedWord, 7, 0, 2)));
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -failed@2 until 2");
    tell(history, wordView(recordedWord, 7, 0, 9, 1)); // the same value, but nobody knew
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -failed@2 7@9 until 9");
    tell(history, oldView(wordView(recordedWord, 7, 0, 9, 1)));
    tell(history, wordView(recordedWord, 8, 12, 11.9, 2));
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -failed@2 7@9 -failed@9 8@12 until 12");
}

TEST(TrendHistory, BridgesNoGapThatNobodyWasToldOf)
{
    TrendHistory history;
    tell(history, wordView(recordedWord, 7, 0, 1));
    tell(history,
         wordView(recordedWord, 7, 0, 8, 1)); // it may have failed after that reply was sent
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -failed@1 until 1");
    tell(history, wordView(recordedWord, 7, 0, 9, 1));
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -failed@1 7@9 until 9");
    tell(history, wordView(recordedWord, 8, 12, 15, 3));
    tell(history, wordView(recordedWord, 8, 12, 16, 3));
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -failed@1 7@9 -failed@9 8@16 until 16");
    tell(history, oldView(wordView(recordedWord, 5, 17, 18, 5)));
    EXPECT_EQ(heldIn(history, recordedWord, 15.5), "-failed@9 8@16 -failed@16 until 16")
        << "nothing of 5 is certain";
}

TEST(TrendHistory, TakesALateReplyForWhatWasBeforeTheGap)
{
    TrendHistory history;
    tell(history, wordView(recordedWord, 7, 0, 1));
    history.record(oldView(wordView(recordedWord, 7, 0, 1)), second(5));
    tell(history, wordView(recordedWord, 7, 0, 2, 1)); // as it was when it was asked for
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -failed@1 until 1");
    tell(history, wordView(recordedWord, 7, 0, 6, 1));
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -failed@1 7@6 until 6");
    history.interrupt(TrendGap::lineHung, second(20));
    tell(history, wordView(recordedWord, 7, 0, 19, 1));
    tell(history, wordView(recordedWord, 7, 0, 21, 1));
    tell(history, wordView(recordedWord, 7, 0, 22, 1));
    EXPECT_EQ(heldIn(history, recordedWord, 5.5), "-failed@1 7@6 -lineHung@6 7@21 until 22");
}

TEST(TrendHistory, KnowsAHungLinesValuesOnceTheyAreReadAgain)
{
    TrendHistory history;
    tell(history, wordView(recordedWord, 7, 0, 1));
    history.interrupt(TrendGap::lineHung, 0);
    tell(history, wordView(recordedWord, 7, 0, 1)); // as it was before
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -lineHung@1 until 1");
    tell(history, wordView(recordedWord, 7, 0, 8));
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -lineHung@1 7@8 until 8");
}

TEST(TrendHistory, SaysWhereAnotherLineBegins)
{
    TrendHistory history;
    tell(history, wordView(recordedWord, 7, 0, 0.5, 4));
    tell(history, wordView(recordedWord, 7, 0, 1, 4));
    history.interrupt(TrendGap::lineGone, second(2));
    history.interrupt(TrendGap::otherLine, second(4));
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -otherLine@1 until 1");
    tell(history, wordView(recordedWord, 7, 3, 3.5, 0)); // of the line before
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -otherLine@1 until 1");
    tell(history, wordView(recordedWord, 7, 5, 6, 0));
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -otherLine@1 7@5 until 6");
}

TEST(TrendHistory, TellsWhatIsDoubtfulFromWhatFailed)
{
    TrendHistory history;
    View forgotten = wordView(recordedWord, 0, 0, 0, 1);
    forgotten.hasValue = false;
    tell(history, forgotten);
    EXPECT_FALSE(history.begin(recordedWord)) << "nothing was known";
    tell(history, wordView(recordedWord, 7, 0, 1));
    tell(history, forgotten);
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -doubtful@1 until 1");
    history.interrupt(recordedWord, TrendGap::notWatched, 0);
    EXPECT_EQ(heldIn(history, recordedWord), "7@1 -doubtful@1 until 1");
}

TEST(TrendHistory, TellsNothingOfWhatWasNeverRecorded)
{
    TrendHistory history;
    history.setKept({recordedWord}); // as of a value that is in a plot
    View forgotten = wordView(recordedWord, 0, 0, 0, 1);
    forgotten.hasValue = false;
    tell(history, forgotten);
    history.interrupt(TrendGap::lineGone, second(2));
    int events = 0;
    history.walk(recordedWord, second(-1000), [&events](const TrendEvent&) {
        ++events;
        return true;
    });
    EXPECT_EQ(events, 0);
    EXPECT_FALSE(momentOf(history, recordedWord, second(3)).raw);
}

TEST(TrendHistory, TakesNoTexts)
{
    Address text = recordedWord;
    text.width = Width::text;
    text.length = 4;
    View view = wordView(text, 7, 0, 0);
    view.value.resize(8);
    TrendHistory history;
    tell(history, view);
    EXPECT_FALSE(TrendHistory::takes(text));
    EXPECT_FALSE(history.begin(text));
}

// A change a second of each of so many values from `first`, after `history` has seen `from`.
void runChanges(TrendHistory& history, int first, int values, int from, int to)
{
    std::vector<View> views;
    for (int i = 0; i < values; ++i)
        views.push_back(wordView(registerAt(first + i), 0, from, from));
    for (int at = from; at < to; ++at)
        for (View& view : views) {
            view.value[0] = static_cast<unsigned char>(at & 0xFF);
            view.value[1] = static_cast<unsigned char>(at >> 8 & 0xFF);
            view.lastChange = view.lastGood = moment(at);
            tell(history, view);
        }
}

long long eventsOf(const TrendHistory& history, const Address& address)
{
    long long events = 0;
    TrendTime before = 0;
    bool isInOrder = true;
    history.walk(address, 0, [&](const TrendEvent& event) {
        ++events;
        isInOrder = isInOrder && before < event.at;
        before = event.at;
        return true;
    });
    EXPECT_TRUE(isInOrder);
    return events;
}

TEST(TrendHistory, TakesNoMoreMemoryForTenMillionChanges)
{
    TrendHistory history(4 * TrendHistory::mebibyte);
    history.setKept({registerAt(0), registerAt(1)});
    std::size_t most = 0;
    constexpr int values = 200;
    for (int part = 0; part < 50; ++part) {
        runChanges(history, 0, values, part * 1000, (part + 1) * 1000);
        most = std::max(most, history.bytes());
        if (part == 10) {
            EXPECT_GT(most, history.limit() * 9 / 10);
        }
    }
    EXPECT_LE(most, history.limit());
    EXPECT_EQ(history.end(registerAt(150)), second(49999));
    EXPECT_GT(eventsOf(history, registerAt(150)), 600);
    EXPECT_EQ(eventsOf(history, registerAt(0)), 50000) << "of those that are kept all is there";
}

TEST(TrendHistory, StaysWithinTheLeastMemoryWithAsManyCurvesAsThereAreAtMost)
{
    TrendHistory history(TrendHistory::mebibyte);
    std::vector<Address> kept;
    for (std::size_t i = 0; i < TrendArrangement::maxValues; ++i)
        kept.push_back(registerAt(static_cast<int>(i)));
    history.setKept(kept);
    runChanges(history, 0, static_cast<int>(kept.size()), 0, 3000);
    EXPECT_LE(history.bytes(), history.limit());
    EXPECT_GT(history.bytes(), history.limit() / 2);
    for (const Address& address : kept)
        EXPECT_GT(eventsOf(history, address), 60);
}

// A quarter of the memory for a quarter of the values.
TEST(TrendHistory, KeepsByDefaultADayOfTwentyValuesAndTenMinutesOfAllElse)
{
    TrendHistory history(TrendHistory::defaultBytes / 4);
    constexpr int day = 86400;
    constexpr int all = 1255;
    std::vector<Address> kept;
    for (int i = 0; i < 5; ++i)
        kept.push_back(registerAt(i));
    history.setKept(kept);
    runChanges(history, 0, 5, 0, day - 1200);
    runChanges(history, 0, all, day - 1200, day);
    EXPECT_LE(history.bytes(), history.limit());
    for (const int i : {0, 4})
        EXPECT_EQ(history.begin(registerAt(i)), second(0)) << i;
    for (const int i : {5, 700, all - 1})
        EXPECT_LE(history.begin(registerAt(i)), second(day - 600)) << i;
}

TEST(TrendHistory, DropsTheOldestFirst)
{
    TrendHistory history(TrendHistory::mebibyte);
    runChanges(history, 0, 1, 0, 60000);
    runChanges(history, 1, 1, 60000, 100000);
    tell(history, wordView(registerAt(2), 1, 1, 110000));
    EXPECT_GT(history.begin(registerAt(0)), second(5000));
    EXPECT_EQ(history.begin(registerAt(1)), second(60000));
    EXPECT_EQ(eventsOf(history, registerAt(1)), 40000);
    EXPECT_EQ(heldIn(history, registerAt(2)), "1@110000 until 110000")
        << "its last stays in any case";
}

TEST(TrendHistory, GivesBackWhatALowerLimitDoesNotHave)
{
    TrendHistory history(8 * TrendHistory::mebibyte);
    runChanges(history, 0, 2, 0, 200000);
    const std::size_t before = history.bytes();
    history.setLimit(TrendHistory::mebibyte);
    EXPECT_GT(before, 2 * TrendHistory::mebibyte);
    EXPECT_LE(history.bytes(), TrendHistory::mebibyte);
    EXPECT_GT(history.begin(registerAt(1)), second(100000));
    EXPECT_LT(history.begin(registerAt(1)), second(190000)) << "no more is lost than has to be";
    EXPECT_EQ(history.end(registerAt(1)), second(199999));
    runChanges(history, 0, 2, 200000, 200000 + 50000);
    EXPECT_LE(history.bytes(), TrendHistory::mebibyte);
    history.setLimit(8 * TrendHistory::mebibyte);
    runChanges(history, 0, 2, 250000, 350000);
    EXPECT_LT(history.begin(registerAt(1)), second(250000));
    EXPECT_GT(eventsOf(history, registerAt(1)), 100000);
}

} // namespace

} // namespace dov417
