#include "panel/desk/batch_collector.h"

#include <gmock/gmock.h>

#include "made_views.h"

namespace dov417 {

namespace {

using testing::ElementsAre;

std::vector<int> valuesOf(const LineBatch& batch)
{
    std::vector<int> values;
    for (const View& view : batch.values)
        values.push_back(view.value.at(0));
    return values;
}

Passed frame(long long number)
{
    Passed passed;
    passed.what = Passed::What::began;
    passed.transmission.number = number;
    return passed;
}

TEST(BatchCollector, TellsEachChangeInItsOrderAndOnce)
{
    BatchCollector collector;
    collector.beginGeneration(3, 2);
    collector.add(goodView(registerAt(0), 1));
    collector.add(goodView(registerAt(1), 9));
    collector.add(goodView(registerAt(0), 2));
    const LineBatch batch = collector.take();
    EXPECT_EQ(batch.generation, 3);
    EXPECT_THAT(valuesOf(batch), ElementsAre(1, 9, 2));
    EXPECT_TRUE(collector.isEmpty());
    EXPECT_TRUE(collector.take().values.empty());
    EXPECT_EQ(collector.take().generation, 3);
}

TEST(BatchCollector, MergesToTheLatestOfEachWhereTheWindowIsSlow)
{
    BatchCollector collector;
    collector.beginGeneration(1, 2);
    for (int i = 0; i < 100000; ++i) {
        collector.add(goodView(registerAt(0), static_cast<unsigned char>(i % 200)));
        if (i < 5)
            collector.add(goodView(registerAt(1), 77));
    }
    const LineBatch batch = collector.take();
    EXPECT_LE(batch.values.size(), BatchCollector::minChanges);
    EXPECT_EQ(batch.values.back().value.at(0), 99999 % 200);
    int others = 0;
    for (const View& view : batch.values)
        others += view.address == registerAt(1) ? 1 : 0;
    EXPECT_EQ(others, 1);
}

TEST(BatchCollector, KeepsTheLatestOfEachWhenItMerges)
{
    BatchCollector collector;
    collector.beginGeneration(1, 2);
    collector.add(goodView(registerAt(1), 77));
    for (std::size_t i = 1; i <= BatchCollector::minChanges; ++i)
        collector.add(goodView(registerAt(0), static_cast<unsigned char>(i % 199)));
    EXPECT_THAT(valuesOf(collector.take()),
                ElementsAre(77, static_cast<int>(BatchCollector::minChanges % 199)));
}

TEST(BatchCollector, DropsTheValuesOfWhatWasWatchedBefore)
{
    BatchCollector collector;
    collector.beginGeneration(1, 1);
    collector.add(goodView(registerAt(0), 1));
    collector.add(frame(1));
    collector.beginGeneration(2, 1);
    collector.add(goodView(registerAt(5), 5));
    const LineBatch batch = collector.take();
    EXPECT_EQ(batch.generation, 2);
    EXPECT_THAT(valuesOf(batch), ElementsAre(5));
    EXPECT_EQ(batch.passed.size(), 1U); // what was on the line stays so
}

TEST(BatchCollector, KeepsOutcomesOfWritesWhenAnotherLineBegins)
{
    BatchCollector collector;
    collector.beginLine(1);
    collector.add(goodView(registerAt(0), 1));
    collector.add(frame(1));
    collector.add(WriteOutcome{7, Result::refused("another line is opened")});
    collector.beginLine(2);
    const LineBatch batch = collector.take();
    EXPECT_EQ(batch.line, 2);
    EXPECT_TRUE(batch.values.empty());
    EXPECT_TRUE(batch.passed.empty());
    ASSERT_EQ(batch.outcomes.size(), 1U);
    EXPECT_EQ(batch.outcomes.front().number, 7);
}

TEST(BatchCollector, DropsTheOldestFramesAndCountsThem)
{
    BatchCollector collector;
    const long long frames = 50000;
    for (long long i = 1; i <= frames; ++i)
        collector.add(frame(i));
    const LineBatch batch = collector.take();
    EXPECT_LE(batch.passed.size(), BatchCollector::maxPassed);
    EXPECT_EQ(static_cast<long long>(batch.passed.size()) + batch.notTold, frames);
    EXPECT_EQ(batch.passed.back().transmission.number, frames);
    EXPECT_EQ(batch.passed.front().transmission.number, batch.notTold + 1);
}

} // namespace

} // namespace dov417
