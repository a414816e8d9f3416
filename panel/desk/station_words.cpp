#include "panel/desk/station_words.h"

#include <QCoreApplication>

namespace dov417 {

namespace {

struct StationTexts {
    Q_DECLARE_TR_FUNCTIONS(StationTexts)
};

} // namespace

QString stationText(const StationNames& names, int station)
{
    constexpr int maxLetters = 24; // it stands beside rows and lanes
    QString name = QString::fromStdString(nameOf(station, names)).simplified();
    if (name.isEmpty())
        return StationTexts::tr("station %1").arg(station);
    if (name.size() > maxLetters)
        name = name.left(maxLetters - 1) + QChar(0x2026);
    return StationTexts::tr("%1 %2", "number and name of a station")
        .arg(QString::number(station), name);
}

} // namespace dov417
