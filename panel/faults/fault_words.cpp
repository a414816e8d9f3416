#include "panel/faults/fault_words.h"

#include <QCoreApplication>

namespace dov417 {

namespace {

struct FaultTexts {
    Q_DECLARE_TR_FUNCTIONS(FaultTexts)
};

using simulator::FaultKind;

QString offSentence(const LineState& state)
{
    if (state.isGood)
        return FaultTexts::tr("The controller is switched off: each request waits for its "
                              "time-out, is repeated some times and is then given up. Its values "
                              "turn old then.");
    return FaultTexts::tr("The controller is switched off and its requests have been given up: "
                          "their values are old. Its stations are asked again now and then, with "
                          "longer and longer pauses. Switch it on: with the first reply they are "
                          "good again.");
}

QString cableSentence(bool isPulled)
{
    return isPulled ? FaultTexts::tr("The cable is pulled: the port is gone, nothing is sent, and "
                                     "all values are old. Plug it in: the port is opened again by "
                                     "itself, and values are good with their next reply.")
                    : FaultTexts::tr("The cable is back: the port is about to be opened again.");
}

} // namespace

const std::vector<FaultKind>& faultKinds()
{
    static const std::vector<FaultKind> kinds = {
        FaultKind::silence,   FaultKind::late,  FaultKind::flip,    FaultKind::truncate,
        FaultKind::extra,     FaultKind::noise, FaultKind::station, FaultKind::function,
        FaultKind::exception, FaultKind::echo,  FaultKind::slow,    FaultKind::any};
    return kinds;
}

QString faultEffect(FaultKind kind)
{
    switch (kind) {
    case FaultKind::silence:
        return FaultTexts::tr("no reply");
    case FaultKind::late:
        return FaultTexts::tr("the reply comes half a second later");
    case FaultKind::flip:
        return FaultTexts::tr("one of its bits is turned over: its CRC is wrong");
    case FaultKind::truncate:
        return FaultTexts::tr("only the beginning of it comes");
    case FaultKind::extra:
        return FaultTexts::tr("up to four bytes come after it");
    case FaultKind::noise:
        return FaultTexts::tr("up to four bytes come before it");
    case FaultKind::station:
        return FaultTexts::tr("it comes from another station, its CRC is right");
    case FaultKind::function:
        return FaultTexts::tr("it is for another function, its CRC is right");
    case FaultKind::exception:
        return FaultTexts::tr("an exception comes in its stead");
    case FaultKind::echo:
        return FaultTexts::tr("the request comes before it, as two-wire adapters do");
    case FaultKind::slow:
        return FaultTexts::tr("it comes in up to 8 pieces, with gaps of 5 ms");
    case FaultKind::any:
        return FaultTexts::tr("one of those above, by chance");
    }
    return QString();
}

QString faultSentence(const PanelDesk& desk, const simulator::Conditions& wanted)
{
    const LineState& state = desk.state();
    if (!desk.hasLine())
        return FaultTexts::tr("Faults are made by the panel's own simulated controller, and no "
                              "line is open: \u201cTry it\u201d on the start page starts one.");
    if (!state.isSimulated)
        return FaultTexts::tr("Faults are made by the panel's own simulated controller alone, and "
                              "this line leads to another one: \u201cTry it\u201d on the start "
                              "page starts one.");
    const auto& report = desk.controllerReport();
    if (report && !report->refused.empty())
        return FaultTexts::tr("The controller refuses: %1")
            .arg(QString::fromStdString(report->refused));
    if (state.phase == LinePhase::opening)
        return FaultTexts::tr("The controller is being started \u2026");
    if (!wanted.isPlugged || state.phase == LinePhase::away)
        return cableSentence(!wanted.isPlugged);
    if (!wanted.isOn)
        return offSentence(state);
    if (!state.isGood)
        return FaultTexts::tr("Requests have been given up: their values are old. They are asked "
                              "again after a pause of at most 30 s, and are good with the "
                              "first good reply.");
    if (!wanted.faults.empty())
        return FaultTexts::tr("Replies suffer. A request whose reply is missing or spoiled is "
                              "repeated, and its values stay good if one of the next replies is. "
                              "Only where several in a row fail is it given up, and its values "
                              "turn old.");
    return FaultTexts::tr("Nothing is wrong. Set a rate below, switch the controller off or pull "
                          "the cable, and look at the other pages.");
}

QString faultCounters(const PanelDesk& desk)
{
    const auto& report = desk.controllerReport();
    const auto& statistics = desk.statistics();
    if (!desk.state().isSimulated || !report || !statistics)
        return QString();
    const RequestCounters total = statistics->total();
    return FaultTexts::tr("Since the controller was started: %1 of its %2 replies had a fault; the "
                          "panel sent %3 requests, %4 of them repetitions, and gave up %5.")
        .arg(report->counts.faulty)
        .arg(report->counts.replies)
        .arg(total.sent)
        .arg(total.retries)
        .arg(total.abandoned);
}

} // namespace dov417
