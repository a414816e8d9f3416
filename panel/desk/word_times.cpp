#include "panel/desk/word_times.h"

#include <algorithm>

#include "driver/registers.h"

namespace dov417 {

void WordTimes::clear()
{
    times_.clear();
}

void WordTimes::add(const Request& read, Clock::time_point asOf)
{
    const std::string area = areaOf(read.regName);
    for (int word = read.address; word < read.address + read.length; ++word)
        times_.try_emplace({read.station, area, word}, asOf);
}

std::optional<Clock::time_point> WordTimes::of(const Address& address) const
{
    const Words words = wordsOf(address.width, address.first, address.length);
    std::optional<Clock::time_point> oldest;
    for (int word = words.first; word < words.first + words.count; ++word) {
        const auto time = times_.find({address.station, areaOf(address.regName), word});
        if (time == times_.end())
            return std::nullopt;
        oldest = std::min(oldest.value_or(time->second), time->second);
    }
    return oldest;
}

} // namespace dov417
