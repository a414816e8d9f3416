#include "link/link_statistics.h"

#include <algorithm>
#include <cstdio>

#include "line/frame_text.h"

namespace dov417 {

namespace {

std::string text(const char* format, double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return buffer;
}

std::string milliseconds(Micros duration)
{
    return text("%.1f ms", static_cast<double>(duration.count()) / 1000.0);
}

double secondsSince(const LinkStatistics& statistics, Clock::time_point now)
{
    return std::max(1e-6, std::chrono::duration<double>(now - statistics.started).count());
}

std::string reasonsText(const RequestCounters& counters)
{
    std::string result;
    for (int i = 0; i < reasonCount; ++i) {
        const Reason reason = static_cast<Reason>(i);
        if (counters.badFor(reason) > 0 && reason != Reason::exception)
            result += ", " + std::to_string(counters.badFor(reason)) + " x " + nameOf(reason);
    }
    for (const auto& [code, times] : counters.exceptions)
        result += ", " + std::to_string(times) + " x exception " + std::to_string(code) + " (" +
                  exceptionName(code) + ")";
    return result;
}

std::string countersText(const RequestCounters& counters)
{
    std::string result = std::to_string(counters.sent) + " sent, " + std::to_string(counters.good) +
                         " good" + reasonsText(counters);
    const std::pair<long long, const char*> rare[] = {{counters.notSent, "not sent"},
                                                      {counters.retries, "retries"},
                                                      {counters.abandoned, "given up"},
                                                      {counters.forgotten, "forgotten"},
                                                      {counters.parts, "parts"}};
    for (const auto& [times, name] : rare)
        if (times > 0)
            result += ", " + std::to_string(times) + " " + name;
    if (counters.notAsked > 0)
        result += ", " + std::to_string(counters.notAsked) + " " +
                  (counters.whyNotAsked.empty() ? "not asked" : counters.whyNotAsked);
    return counters.givenUp.empty() ? result : result + "; given up last: " + counters.givenUp;
}

std::string cyclesText(const Durations& cycles)
{
    if (cycles.count() == 0)
        return "no whole cycle";
    return "cycle " + milliseconds(cycles.minimum()) + " / " + milliseconds(cycles.median()) +
           " / " + milliseconds(cycles.maximum()) + " (min / median / max)";
}

const char* stateText(const LinkStatistics& statistics)
{
    return !statistics.portIsOpen  ? "port closed"
           : statistics.linkIsGood ? "link good"
                                   : "link FAILED";
}

std::string straysText(const LinkStatistics& statistics)
{
    std::string result;
    for (std::size_t kind = 0; kind < statistics.strays.size(); ++kind)
        if (statistics.strays.at(kind) > 0)
            result += (result.empty() ? "" : ", ") + std::to_string(statistics.strays.at(kind)) +
                      " x " + nameOf(static_cast<StrayKind>(kind));
    return result;
}

// Bytes cross a pseudo-terminal faster than the line's settings say; what they take on the line
// behind a network is not known.
std::string usedText(double share)
{
    return share <= 0  ? ""
           : share > 1 ? ", bytes come faster than the line's speed"
                       : text(", line %.1f %% used by bytes", 100 * share);
}

} // namespace

void Durations::add(Micros duration)
{
    minimum_ = count_ == 0 ? duration : std::min(minimum_, duration);
    maximum_ = std::max(maximum_, duration);
    ++counts_[(duration + binWidth / 2) / binWidth];
    ++count_;
}

long long Durations::count() const
{
    return count_;
}

Micros Durations::minimum() const
{
    return minimum_;
}

Micros Durations::median() const
{
    long long below = 0;
    for (const auto& [bin, times] : counts_) {
        below += times;
        if (2 * below >= count_)
            return bin * binWidth;
    }
    return Micros(0);
}

Micros Durations::maximum() const
{
    return maximum_;
}

long long& RequestCounters::badFor(Reason reason)
{
    return bad.at(static_cast<std::size_t>(reason));
}

long long RequestCounters::badFor(Reason reason) const
{
    return bad.at(static_cast<std::size_t>(reason));
}

void RequestCounters::add(const RequestCounters& other)
{
    sent += other.sent;
    notSent += other.notSent;
    good += other.good;
    for (std::size_t reason = 0; reason < bad.size(); ++reason)
        bad.at(reason) += other.bad.at(reason);
    retries += other.retries;
    abandoned += other.abandoned;
    forgotten += other.forgotten;
    parts += other.parts;
    notAsked += other.notAsked;
    for (const auto& [code, times] : other.exceptions)
        exceptions[code] += times;
}

void LinkStatistics::add(const Transmission& transmission)
{
    RequestCounters& counters = of(transmission.name());
    counters.station = transmission.request.station;
    if (transmission.isLocal) {
        if (!transmission.repeats) { // else it was a probe, and is counted as that
            ++counters.notAsked;
            counters.whyNotAsked = transmission.reason;
        }
        return;
    }
    ++(transmission.wasSent() ? counters.sent : counters.notSent);
    counters.parts += transmission.frames;
    if (transmission.repeats && transmission.wasSent())
        ++counters.retries;
    if (transmission.verdict == replyNothingOutstanding) {
        ++counters.forgotten;
        return;
    }
    if (transmission.verdict == replyAccepted) {
        ++counters.good;
        linkIsGood = true;
        return;
    }
    if (transmission.isAbandoned()) {
        ++counters.abandoned;
        counters.givenUp = transmission.reason;
        linkIsGood = false;
    }
    ++counters.badFor(transmission.why);
    if (transmission.why == Reason::exception)
        ++counters.exceptions[exceptionCode(transmission.reception)];
}

void LinkStatistics::add(const Stray& stray)
{
    ++strays.at(static_cast<std::size_t>(stray.kind));
}

RequestCounters& LinkStatistics::of(const std::string& request)
{
    const auto [entry, isNew] = requests.try_emplace(request);
    if (isNew)
        order.push_back(request);
    return entry->second;
}

RequestCounters LinkStatistics::total() const
{
    RequestCounters sum;
    for (const auto& [name, counters] : requests)
        sum.add(counters);
    return sum;
}

std::vector<std::string> briefStatistics(const LinkStatistics& statistics, Clock::time_point now)
{
    const double seconds = secondsSince(statistics, now);
    const RequestCounters total = statistics.total();
    const double used = static_cast<double>(statistics.wireTime.count()) / 1e6 / seconds;
    return {"all requests: " + countersText(total) +
                text(", %.1f polls/s", static_cast<double>(total.sent) / seconds),
            cyclesText(statistics.cycles) + usedText(used), stateText(statistics)};
}

std::vector<std::string> stationStatistics(const LinkStatistics& statistics)
{
    std::vector<std::string> lines;
    for (const StationTime& each : statistics.stations)
        lines.push_back(stationText(each.station, statistics.stationNames) + ": answers after " +
                        milliseconds(each.last) + ", " + milliseconds(each.slowest) +
                        " at the slowest; is waited for " + milliseconds(each.timeout));
    return lines;
}

std::vector<std::string> requestStatistics(const LinkStatistics& statistics)
{
    std::vector<std::string> lines;
    for (const std::string& request : statistics.order)
        lines.push_back(request + ": " + countersText(statistics.requests.at(request)));
    return lines;
}

std::string fullStatistics(const LinkStatistics& statistics, Clock::time_point now)
{
    const double seconds = secondsSince(statistics, now);
    std::string result = "Link statistics over" + text(" %.1f s\n", seconds);
    for (const std::string& line : briefStatistics(statistics, now))
        result += "  " + line + "\n";
    result += "  " + std::to_string(statistics.cycles.count()) + " cycles\n";
    const std::string strays = straysText(statistics);
    if (!strays.empty())
        result += "  bytes that were no reply: " + strays + "\n";
    if (statistics.markers > 0)
        result +=
            "  sent besides, to tell late replies: " + std::to_string(statistics.markers) + "\n";
    if (statistics.portLosses > 0)
        result += "  times that the port was lost: " + std::to_string(statistics.portLosses) + "\n";
    for (const std::string& line : stationStatistics(statistics))
        result += "  " + line + "\n";
    for (const std::string& line : requestStatistics(statistics))
        result += "  " + line + "\n";
    return result;
}

} // namespace dov417
