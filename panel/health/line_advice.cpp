#include "panel/health/line_advice.h"

#include <QCoreApplication>
#include <QStringList>
#include <map>
#include <optional>

#include "line/frame_text.h"
#include "panel/desk/request_words.h"

namespace dov417 {

namespace {

struct AdviceTexts {
    Q_DECLARE_TR_FUNCTIONS(AdviceTexts)
};

// Fewer tell nothing: one reply is lost on every line.
constexpr long long fewest = 4;

// What adviceOn() knows.
struct LineFacts {
    const LinkStatistics& recent;
    const std::string& wire;
    RequestCounters total;
    std::map<int, RequestCounters> stations;

    long long strays(StrayKind kind) const
    {
        return recent.strays.at(static_cast<std::size_t>(kind));
    }
    bool isNetwork() const
    {
        return wire.empty();
    }
};

// Answers of whatever kind, as long as they were sound.
long long soundOf(const RequestCounters& counters)
{
    return counters.good + counters.badFor(Reason::exception);
}

long long garbledOf(const RequestCounters& counters)
{
    return counters.badFor(Reason::badCrc) + counters.badFor(Reason::cutShort) +
           counters.badFor(Reason::noFrame);
}

long long wrongOf(const RequestCounters& counters)
{
    return counters.badFor(Reason::otherStation) + counters.badFor(Reason::otherFunction) +
           counters.badFor(Reason::otherRequest) + counters.badFor(Reason::late);
}

bool isSilent(const RequestCounters& counters)
{
    return counters.badFor(Reason::silence) + counters.notAsked >= fewest &&
           soundOf(counters) + garbledOf(counters) + wrongOf(counters) == 0;
}

QString milliseconds(Micros duration)
{
    return QString::number(static_cast<double>(duration.count()) / 1000.0, 'f', 0);
}

QString strayAdvice()
{
    return AdviceTexts::tr(
        "Bytes come that belong to no reply. A line that is not held at rest (bias resistors), "
        "lacks its termination, or a second master on it?");
}

using Sentence = std::optional<QString>;

Sentence onNoByte(const LineFacts& facts)
{
    bool hasStrays = false;
    for (const long long count : facts.recent.strays)
        hasStrays = hasStrays || count > 0;
    if (!isSilent(facts.total) || hasStrays)
        return std::nullopt;
    return facts.isNetwork()
               ? AdviceTexts::tr("The connection is there, but no byte comes. Is it the right "
                                 "network port, and is the controller behind it on, with this "
                                 "station number?")
               : AdviceTexts::tr("No byte comes. Is it the right port, is the cable plugged in, is "
                                 "the controller on, are the two wires swapped, is its station "
                                 "number another one?");
}

Sentence onNoFrame(const LineFacts& facts)
{
    if (soundOf(facts.total) + wrongOf(facts.total) > 0 || garbledOf(facts.total) < fewest)
        return std::nullopt;
    return facts.isNetwork()
               ? AdviceTexts::tr("Bytes come, but no sound frame: is what is behind this network "
                                 "port set to the controller's speed and parity?")
               : AdviceTexts::tr("Every reply has a bad CRC or is no frame: another speed or "
                                 "parity? This line is set to %1.")
                     .arg(QString::fromStdString(facts.wire));
}

// The station that takes the longest beyond what it is given tells what to give.
Sentence onLate(const LineFacts& facts)
{
    const long long missed = facts.total.badFor(Reason::silence) + facts.total.badFor(Reason::late);
    const long long come = facts.strays(StrayKind::late) + facts.total.badFor(Reason::late);
    if (missed < fewest || come < fewest)
        return std::nullopt;
    const StationTime* slowest = nullptr;
    for (const StationTime& each : facts.recent.stations)
        if (!slowest || each.slowest > slowest->slowest)
            slowest = &each;
    const QString text = AdviceTexts::tr("Replies come after the time-out: raise it.");
    return slowest ? text + QLatin1Char(' ') +
                         AdviceTexts::tr("Station %1 took %2 ms.")
                             .arg(slowest->station)
                             .arg(milliseconds(slowest->slowest))
                   : text;
}

Sentence onPortLost(const LineFacts& facts)
{
    if (facts.recent.portLosses < 2)
        return std::nullopt;
    return AdviceTexts::tr(
        "The port was lost %n time(s): a loose plug, an adapter that is switched "
        "off to save power, or a network that is interrupted?",
        nullptr, static_cast<int>(facts.recent.portLosses));
}

Sentence onSilentOnes(const LineFacts& facts)
{
    QStringList silent;
    for (const auto& [station, counters] : facts.stations)
        if (isSilent(counters))
            silent.append(QString::number(station));
    if (silent.isEmpty() || soundOf(facts.total) == 0)
        return std::nullopt;
    const QString question = AdviceTexts::tr(
        "Is it switched on, is its number right, does the cable reach it, has it the line's "
        "speed?");
    return silent.size() == 1
               ? AdviceTexts::tr("Only station %1 is silent.").arg(silent.front()) +
                     QLatin1Char(' ') + question
               : AdviceTexts::tr("Stations %1 are silent; the others answer.")
                         .arg(silent.join(QStringLiteral(", "))) +
                     QLatin1Char(' ') +
                     AdviceTexts::tr("Is the cable interrupted before them, are they switched on?");
}

Sentence onSilentRequest(const LineFacts& facts)
{
    for (const std::string& name : facts.recent.order) {
        const RequestCounters& counters = facts.recent.requests.at(name);
        if (isSilent(counters) && soundOf(facts.stations.at(counters.station)) > 0)
            return AdviceTexts::tr("Station %1 answers others, but not %2: some controllers say "
                                   "nothing where they do not have an address.")
                .arg(counters.station)
                .arg(withAddresses(name));
    }
    return std::nullopt;
}

// Of the requests that were refused so, the first is named and the others are counted.
template <typename IsMeant>
Sentence onRefused(const LineFacts& facts, const IsMeant& isMeant, const QString& why)
{
    QString first;
    int others = -1;
    for (const std::string& name : facts.recent.order) {
        const RequestCounters& counters = facts.recent.requests.at(name);
        for (const auto& [code, times] : counters.exceptions)
            if (times >= fewest && isMeant(code, counters)) {
                if (first.isEmpty())
                    first = AdviceTexts::tr("%1 is refused with exception %2 (%3).")
                                .arg(withAddresses(name))
                                .arg(code)
                                .arg(QString::fromStdString(exceptionName(code)));
                ++others;
                break;
            }
    }
    if (first.isEmpty())
        return std::nullopt;
    const QString more =
        others == 0 ? QString()
                    : QLatin1Char(' ') + AdviceTexts::tr("So are %n more.", nullptr, others);
    return first + more + QLatin1Char(' ') + why;
}

// An address that is wrong is so each time.
Sentence onAddress(const LineFacts& facts)
{
    return onRefused(
        facts,
        [](int code, const RequestCounters& counters) {
            return code >= 1 && code <= 3 && counters.good == 0;
        },
        AdviceTexts::tr("Wrong addresses, or a controller that has fewer than are asked for at "
                        "once?"));
}

Sentence onDevice(const LineFacts& facts)
{
    return onRefused(
        facts, [](int code, const RequestCounters&) { return code > 3; },
        AdviceTexts::tr(
            "The controller, or the gateway before it, cannot serve at present; its own "
            "manual tells more."));
}

Sentence onBadCrc(const LineFacts& facts)
{
    for (const auto& [station, counters] : facts.stations)
        if (counters.badFor(Reason::badCrc) >= fewest && soundOf(counters) == 0)
            return AdviceTexts::tr("Every reply of station %1 has a bad CRC; others are sound. Two "
                                   "controllers of the same number, or another parity there?")
                .arg(station);
    const long long bad = facts.total.badFor(Reason::badCrc);
    constexpr long long oneIn = 200; // fewer are on every line
    if (bad < fewest || bad * oneIn < facts.total.good + bad)
        return std::nullopt;
    return AdviceTexts::tr("%1 of %2 replies have a bad CRC: noise on the cable? Its termination, "
                           "shield and earth, and what runs beside it.")
        .arg(bad)
        .arg(facts.total.good + bad);
}

Sentence onCutShort(const LineFacts& facts)
{
    const long long times = facts.total.badFor(Reason::cutShort);
    if (times < fewest)
        return std::nullopt;
    return AdviceTexts::tr("Replies end before they are whole, %n time(s): an adapter that makes "
                           "pauses within them? A longer reply gap waits for the rest.",
                           nullptr, static_cast<int>(times));
}

Sentence onOtherStation(const LineFacts& facts)
{
    if (facts.strays(StrayKind::otherStation) + facts.strays(StrayKind::otherFunction) +
            facts.strays(StrayKind::otherRequest) <
        fewest)
        return std::nullopt;
    return AdviceTexts::tr("Replies come that nobody here has asked for: a second master on the "
                           "line, or a gateway that mixes them up?");
}

Sentence onTwice(const LineFacts& facts)
{
    if (facts.strays(StrayKind::surplus) == 0)
        return std::nullopt;
    return AdviceTexts::tr("Replies come twice, as from a radio modem that repeats them: each "
                           "request is checked now, which makes the line slower.");
}

Sentence onStrayBytes(const LineFacts& facts)
{
    const long long noise = facts.strays(StrayKind::noise) + facts.strays(StrayKind::late);
    return noise < fewest ? Sentence() : strayAdvice();
}

Sentence onEcho(const LineFacts& facts)
{
    if (facts.strays(StrayKind::echo) < fewest)
        return std::nullopt;
    return AdviceTexts::tr("What comes is longer than asked for: the adapter sends back what it is "
                           "sent (an echo). That is known here and does no harm; most adapters let "
                           "it be switched off.");
}

struct AdviceRule {
    AdviceKind kind;
    Sentence (*applies)(const LineFacts& facts);
};

// Where one of these explains all that is wrong, no other is asked.
constexpr AdviceRule wholeRules[] = {
    {AdviceKind::noByte, onNoByte}, {AdviceKind::noFrame, onNoFrame}, {AdviceKind::late, onLate}};

constexpr AdviceRule adviceRules[] = {{AdviceKind::portLost, onPortLost},
                                      {AdviceKind::silentOnes, onSilentOnes},
                                      {AdviceKind::silentRequest, onSilentRequest},
                                      {AdviceKind::address, onAddress},
                                      {AdviceKind::device, onDevice},
                                      {AdviceKind::badCrc, onBadCrc},
                                      {AdviceKind::cutShort, onCutShort},
                                      {AdviceKind::otherStation, onOtherStation},
                                      {AdviceKind::twice, onTwice},
                                      {AdviceKind::strayBytes, onStrayBytes},
                                      {AdviceKind::echo, onEcho}};

} // namespace

std::vector<LineAdvice> adviceOn(const LinkStatistics& recent, const std::string& wire)
{
    LineFacts facts{recent, wire, recent.total(), {}};
    for (const auto& [name, counters] : recent.requests)
        facts.stations[counters.station].add(counters);
    for (const AdviceRule& rule : wholeRules)
        if (const Sentence text = rule.applies(facts))
            return {{rule.kind, *text}};
    std::vector<LineAdvice> advice;
    for (const AdviceRule& rule : adviceRules)
        if (const Sentence text = rule.applies(facts))
            advice.push_back({rule.kind, *text});
    return advice;
}

} // namespace dov417
