#include "panel/desk/state_words.h"

#include <QCoreApplication>

namespace dov417 {

namespace {

struct StateTexts {
    Q_DECLARE_TR_FUNCTIONS(StateTexts)
};

} // namespace

QString symbolOf(ValueState state)
{
    switch (state) {
    case ValueState::neverRead:
        return QStringLiteral("?");
    case ValueState::good:
        return QStringLiteral("\u2713");
    case ValueState::old:
        return QStringLiteral("\u25f7");
    case ValueState::beingWritten:
        return QStringLiteral("\u270e");
    case ValueState::failed:
        return QStringLiteral("\u2717");
    }
    return QString();
}

QString wordOf(ValueState state)
{
    switch (state) {
    case ValueState::neverRead:
        return StateTexts::tr("never read");
    case ValueState::good:
        return StateTexts::tr("good");
    case ValueState::old:
        return StateTexts::tr("old");
    case ValueState::beingWritten:
        return StateTexts::tr("being written");
    case ValueState::failed:
        return StateTexts::tr("write failed");
    }
    return QString();
}

QString standingText(const ValueStanding& standing)
{
    const QString text = symbolOf(standing.state) + QLatin1Char(' ') + wordOf(standing.state);
    const bool isBoth = standing.isOld && standing.state != ValueState::old;
    if (standing.state == ValueState::failed)
        return (isBoth ? StateTexts::tr("%1, and old: %2") : StateTexts::tr("%1: %2"))
            .arg(text, QString::fromStdString(standing.reason));
    return isBoth ? StateTexts::tr("%1, and old").arg(text) : text;
}

QString shownValue(const PanelValue& value, const ValueBook& book)
{
    const View* const view = book.find(value.address);
    return view ? QString::fromStdString(shownText(*view, value.label)) : QStringLiteral("?");
}

QString ageText(const View* view, Clock::time_point now)
{
    if (!view)
        return StateTexts::tr("never");
    const double seconds = std::chrono::duration<double>(now - view->lastGood).count();
    return StateTexts::tr("%1 s").arg(seconds, 0, 'f', 1);
}

QString lineSentence(const LineState& state, bool isSilent, const LinkStatistics* statistics)
{
    const QString port = state.isSimulated ? StateTexts::tr("The simulated controller")
                                           : QString::fromStdString(state.port);
    const QString reason = QString::fromStdString(state.reason);
    if (isSilent)
        return StateTexts::tr(
                   "%1 does not let go of its port: nothing is known of it at present, and nothing "
                   "is written. Pull its plug; where that does not help, end this program.")
            .arg(port);
    switch (state.phase) {
    case LinePhase::closed:
        return StateTexts::tr("No line is open. The start page opens one.");
    case LinePhase::opening:
        return StateTexts::tr("%1 is being opened \u2026").arg(port);
    case LinePhase::away:
        if (state.isSimulated) // whose port has a name of no interest
            return StateTexts::tr("%1 is not there: its cable is pulled. It goes on as soon as it "
                                  "is plugged in again.")
                .arg(port);
        return StateTexts::tr("%1; it goes on as soon as the port is back.").arg(reason);
    case LinePhase::refused:
        return StateTexts::tr(
                   "The line could not be opened: %1. The start page opens it again, and "
                   "lists who uses each port.")
            .arg(reason);
    case LinePhase::open:
        break;
    }
    if (!state.isGood && statistics && statistics->stations.empty())
        return StateTexts::tr("%1: nobody has answered yet; the line page shows what was asked.")
            .arg(port);
    if (!state.isGood)
        return StateTexts::tr("%1: not every request is answered; the line page shows which.")
            .arg(port);
    return state.cycles == 0 ? StateTexts::tr("%1 is open; nothing has been read yet.").arg(port)
                             : StateTexts::tr("%1 answers.").arg(port);
}

} // namespace dov417
