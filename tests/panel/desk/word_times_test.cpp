#include "panel/desk/word_times.h"

#include "loaded_library.h"
#include "session/items.h"

namespace dov417 {

namespace {

Clock::time_point afterSeconds(int count)
{
    return Clock::time_point(std::chrono::seconds(count));
}

Request readOf(const char* regName, int first, int words, int station = 1)
{
    Request request;
    request.station = station;
    request.regName = regName;
    request.address = first;
    request.length = words;
    return request;
}

class TheWordTimes : public LoadedLibrary {
protected:
    std::optional<Clock::time_point> of(const char* address) const
    {
        return times.of(Items(library, ItemSource()).find(address, Access::read).address);
    }

    WordTimes times;
};

TEST_F(TheWordTimes, AreThoseOfTheOldestWordOfAValue)
{
    times.add(readOf("R_W", 100, 3), afterSeconds(10));
    times.add(readOf("R_W", 103, 2), afterSeconds(12));
    EXPECT_EQ(of("R_W:100..102"), afterSeconds(10));
    EXPECT_EQ(of("R_W:103..104"), afterSeconds(12));
    EXPECT_EQ(of("R_W:101..104"), afterSeconds(10));
    EXPECT_EQ(of("R_D:103"), afterSeconds(12));
}

TEST_F(TheWordTimes, AreNotKnownWhereNotAllOfItWasReadThere)
{
    times.add(readOf("R_W", 100, 3), afterSeconds(10));
    EXPECT_EQ(of("R_W:102..103"), std::nullopt);
    EXPECT_EQ(of("2/R_W:100"), std::nullopt);
    EXPECT_EQ(of("M_W:100"), std::nullopt);
    times.clear();
    EXPECT_EQ(of("R_W:100"), std::nullopt);
}

TEST_F(TheWordTimes, AreThoseOfTheFirstReadOfAWordAsABitIsRead)
{
    times.add(readOf("M_W", 1, 1), afterSeconds(10));
    times.add(readOf("M_W", 1, 1), afterSeconds(20)); // a value told meanwhile may be of the first
    EXPECT_EQ(of("M_bit:1.5"), afterSeconds(10));
}

} // namespace

} // namespace dov417
