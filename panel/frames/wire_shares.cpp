#include "panel/frames/wire_shares.h"

#include <algorithm>

namespace dov417 {

double WireShares::part(Clock::duration duration) const
{
    return whole.count() == 0
               ? 0
               : static_cast<double>(duration.count()) / static_cast<double>(whole.count());
}

Micros WireShares::perCycle(WireUse use) const
{
    return std::chrono::round<Micros>(cycle * part(of(use)));
}

WireUse useOf(const WireSpan& span)
{
    switch (span.kind) {
    case SpanKind::timeOut:
        return WireUse::timeOuts;
    case SpanKind::stray:
        return WireUse::strays;
    case SpanKind::interFrame:
        return WireUse::interFrame;
    case SpanKind::idle:
        return WireUse::idle;
    case SpanKind::noLine:
        return WireUse::noLine;
    case SpanKind::missing:
        return WireUse::missing;
    case SpanKind::request:
    case SpanKind::responseTime:
    case SpanKind::reply:
        break;
    }
    return span.purpose == SpanPurpose::retry    ? WireUse::retries
           : span.purpose == SpanPurpose::marker ? WireUse::markers
           : span.kind == SpanKind::request      ? WireUse::requests
           : span.kind == SpanKind::responseTime ? WireUse::responseTime
                                                 : WireUse::replies;
}

WireShares sharesOf(const WireTimes& times, Clock::time_point begin, Clock::time_point end)
{
    WireShares shares;
    const auto add = [&shares, begin, end](const WireSpan& span) {
        const Clock::duration length = std::min(end, span.end) - std::max(begin, span.begin);
        if (length.count() <= 0)
            return;
        shares.whole += length;
        shares.used.at(static_cast<std::size_t>(useOf(span))) += length;
        if (span.kind == SpanKind::request || span.kind == SpanKind::reply ||
            span.kind == SpanKind::stray)
            shares.bytes += length;
    };
    const auto& spans = times.spans();
    for (std::size_t i = times.spanAt(begin); i < spans.size() && spans[i].begin < end; ++i)
        add(spans[i]);
    for (const WireSpan& span : times.underWay(end))
        add(span);
    const auto& cycles = times.cycles();
    const auto first = std::lower_bound(cycles.begin(), cycles.end(), begin);
    const auto after = std::upper_bound(first, cycles.end(), end);
    if (after - first > 1) {
        shares.cycles = static_cast<int>(after - first) - 1;
        shares.cycle = (*(after - 1) - *first) / shares.cycles;
    }
    return shares;
}

} // namespace dov417
