// How the link has been, one stretch after the other. Pure; fixed memory: the oldest go first.
#ifndef DOV417_PANEL_LINK_HISTORY_H
#define DOV417_PANEL_LINK_HISTORY_H

#include <QString>
#include <array>
#include <deque>

#include "panel/desk/line_batch.h"

namespace dov417 {

enum class LinkStanding {
    closed,
    opening,
    good,    // every request is answered
    failing, // one was given up, and no good reply has come since
    away,    // the port
    hanging  // in the port: nothing is known
};
constexpr int linkStandings = 6;

LinkStanding standingOf(const LineState& state, bool isSilent);
QString wordOf(LinkStanding standing);

struct LinkStretch {
    Clock::time_point begin{};
    Clock::time_point end{}; // as far as it is known
    LinkStanding standing = LinkStanding::closed;
};

class LinkHistory {
public:
    static constexpr std::size_t maxStretches = 5000;

    void clear();
    void add(Clock::time_point now, LinkStanding standing);
    const std::deque<LinkStretch>& stretches() const
    {
        return stretches_;
    }
    // How long each was, since then.
    std::array<Clock::duration, linkStandings> sumsSince(Clock::time_point begin) const;

private:
    std::deque<LinkStretch> stretches_;
};

// "good 58 s, failing 2 s (3 times)"
QString historyText(const LinkHistory& history, Clock::time_point begin);

} // namespace dov417

#endif
