#include "panel/health/link_history.h"

#include <QCoreApplication>
#include <QStringList>
#include <algorithm>

namespace dov417 {

namespace {

struct LinkTexts {
    Q_DECLARE_TR_FUNCTIONS(LinkTexts)
};

QString lengthText(Clock::duration duration)
{
    const double seconds = std::chrono::duration<double>(duration).count();
    constexpr double minute = 60;
    return seconds < 2 * minute ? LinkTexts::tr("%1 s").arg(seconds, 0, 'f', 1)
                                : LinkTexts::tr("%1 min").arg(seconds / minute, 0, 'f', 1);
}

} // namespace

LinkStanding standingOf(const LineState& state, bool isSilent)
{
    if (isSilent)
        return LinkStanding::hanging;
    switch (state.phase) {
    case LinePhase::closed:
    case LinePhase::refused:
        return LinkStanding::closed;
    case LinePhase::opening:
        return LinkStanding::opening;
    case LinePhase::away:
        return LinkStanding::away;
    case LinePhase::open:
        break;
    }
    return !state.isGood       ? LinkStanding::failing
           : state.cycles == 0 ? LinkStanding::opening // nothing is known of it yet
                               : LinkStanding::good;
}

QString wordOf(LinkStanding standing)
{
    switch (standing) {
    case LinkStanding::closed:
        return LinkTexts::tr("closed");
    case LinkStanding::opening:
        return LinkTexts::tr("not known yet");
    case LinkStanding::good:
        return LinkTexts::tr("\u2713 good");
    case LinkStanding::failing:
        return LinkTexts::tr("\u2717 failing");
    case LinkStanding::away:
        return LinkTexts::tr("port away");
    case LinkStanding::hanging:
        return LinkTexts::tr("? port hangs");
    }
    return QString();
}

void LinkHistory::clear()
{
    stretches_.clear();
}

void LinkHistory::add(Clock::time_point now, LinkStanding standing)
{
    if (!stretches_.empty()) {
        stretches_.back().end = now;
        if (stretches_.back().standing == standing)
            return;
    }
    stretches_.push_back({now, now, standing});
    if (stretches_.size() > maxStretches)
        stretches_.pop_front();
}

std::array<Clock::duration, linkStandings> LinkHistory::sumsSince(Clock::time_point begin) const
{
    std::array<Clock::duration, linkStandings> sums{};
    for (const LinkStretch& each : stretches_)
        if (each.end > begin)
            sums.at(static_cast<std::size_t>(each.standing)) +=
                each.end - std::max(begin, each.begin);
    return sums;
}

QString historyText(const LinkHistory& history, Clock::time_point begin)
{
    const auto sums = history.sumsSince(begin);
    QStringList texts;
    for (int i = 0; i < linkStandings; ++i) {
        const LinkStanding standing = static_cast<LinkStanding>(i);
        const Clock::duration sum = sums.at(static_cast<std::size_t>(i));
        // Between a project and its line there are some milliseconds.
        const bool isShownAsNothing = sum < std::chrono::milliseconds(50);
        if (sum.count() == 0 || (isShownAsNothing && history.stretches().size() > 1))
            continue;
        const auto times = std::count_if(
            history.stretches().begin(), history.stretches().end(),
            [&](const LinkStretch& each) { return each.standing == standing && each.end > begin; });
        const QString text = LinkTexts::tr("%1 for %2").arg(wordOf(standing), lengthText(sum));
        texts.append(
            times < 2 ? text
                      : LinkTexts::tr("%1 (%n times)", nullptr, static_cast<int>(times)).arg(text));
    }
    return texts.join(QStringLiteral(", "));
}

} // namespace dov417
