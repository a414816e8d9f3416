#include "panel/trends/trend_absence.h"

#include <QCoreApplication>
#include <QStringList>
#include <algorithm>
#include <set>

#include "panel/desk/station_words.h"

namespace dov417 {

namespace {

struct AbsenceTexts {
    Q_DECLARE_TR_FUNCTIONS(AbsenceTexts)
};

// Those of the values that have not answered since the line was opened.
QString silentStations(const TrendGroup& group, const PanelDesk& desk)
{
    std::set<int> silent;
    for (const TrendValue& value : group.values)
        if (value.isWatched)
            silent.insert(value.at.station);
    for (const StationTime& answered : desk.statistics()->stations)
        silent.erase(answered.station);
    QStringList names;
    for (const int station : silent)
        names.append(stationText(desk.stationNames(), station));
    return names.join(QStringLiteral(", "));
}

} // namespace

QString whyNothingIsDrawn(const TrendGroup& group, const PanelDesk& desk,
                          const TrendHistory& history)
{
    const auto any = [&group](auto is) {
        return std::any_of(group.values.begin(), group.values.end(), is);
    };
    if (group.values.empty())
        return AbsenceTexts::tr("No value is in this plot yet: Values \u2026 chooses some.");
    if (any([&history](const TrendValue& value) { return history.begin(value.at).has_value(); }))
        return AbsenceTexts::tr("Nothing is known of this time.");
    if (!any([](const TrendValue& value) { return value.isWatched; }))
        return AbsenceTexts::tr("None of its values is watched.");
    if (desk.state().phase != LinePhase::open)
        return AbsenceTexts::tr("Nothing has been read yet: no line is open.");
    const QString silent = desk.statistics() ? silentStations(group, desk) : QString();
    return silent.isEmpty()
               ? AbsenceTexts::tr("Nothing has been read yet.")
               : AbsenceTexts::tr("Nothing has been read yet: no answer from %1.").arg(silent);
}

} // namespace dov417
