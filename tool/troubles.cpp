#include "tool/troubles.h"

#include <algorithm>

namespace dov417 {

namespace {

constexpr std::chrono::minutes newAfter(1);
constexpr std::size_t maxListed = 5;

} // namespace

bool Troubles::isNews(const std::string& what, Reason why, const std::string& reason,
                      Clock::time_point now)
{
    const auto [place, isFirst] = places_.try_emplace({what, why}, entries_.size());
    if (isFirst)
        entries_.emplace_back();
    Entry& entry = entries_.at(place->second);
    const bool isNew = isFirst || now - entry.last >= newAfter;
    entry.trouble = {what, why, reason, entry.trouble.times + 1};
    entry.last = now;
    while (!news_.empty() && now - news_.front() >= newAfter)
        news_.pop_front();
    if (!isNew || isFull())
        return false;
    news_.push_back(now);
    ++entry.said;
    return true;
}

long long Troubles::times(const std::string& what, Reason why) const
{
    const auto place = places_.find({what, why});
    return place == places_.end() ? 0 : entries_.at(place->second).trouble.times;
}

bool Troubles::isFull() const
{
    return news_.size() >= maxNews_;
}

std::vector<Trouble> Troubles::unsaid() const
{
    std::vector<Trouble> found;
    for (const Entry& entry : entries_)
        if (entry.trouble.times > entry.said)
            found.push_back(entry.trouble);
    return found;
}

std::string listed(const std::vector<std::string>& names)
{
    const bool isShort = names.size() <= maxListed;
    std::string text;
    for (std::size_t i = 0; i < names.size() && (isShort || i + 1 < maxListed); ++i)
        text += (i == 0 ? "" : ", ") + names.at(i);
    return isShort ? text : text + " and " + std::to_string(names.size() - maxListed + 1) + " more";
}

std::vector<std::string>
grouped(const std::vector<std::pair<std::string, std::string>>& thingsAndWrongs)
{
    std::vector<std::string> wrongs;
    std::map<std::string, std::vector<std::string>> things;
    for (const auto& [thing, wrong] : thingsAndWrongs) {
        std::vector<std::string>& same = things[wrong];
        if (same.empty())
            wrongs.push_back(wrong);
        same.push_back(thing);
    }
    std::vector<std::string> lines;
    lines.reserve(wrongs.size());
    for (const std::string& wrong : wrongs)
        lines.push_back(listed(things.at(wrong)) + ": " + wrong);
    return lines;
}

} // namespace dov417
