#include "session_player.h"

#include <QCoreApplication>

#include "panel/desk/panel_clock.h"

namespace dov417 {

SessionPlayer::SessionPlayer(PanelDesk& desk, const RecordedSession& session)
    : desk_(desk), session_(session)
{
    standAt(RecordedSession::begin);
}

void SessionPlayer::standAt(Clock::time_point now)
{
    const auto since = std::chrono::round<std::chrono::milliseconds>(now - RecordedSession::begin);
    const QDateTime began =
        QDateTime::fromString(QString::fromStdString(session_.timeOfDay), Qt::ISODateWithMs);
    setPanelTime(now, began.addMSecs(since.count()));
}

void SessionPlayer::write(const RecordedWrite& write)
{
    for (const PanelValue& value : desk_.tags().values)
        if (value.label.name == write.name)
            desk_.write(value, write.text);
}

void SessionPlayer::playUntil(std::chrono::milliseconds moment)
{
    const Clock::time_point end = RecordedSession::begin + moment;
    while (batches_ < session_.batches.size() && session_.batches.at(batches_).made <= end) {
        const LineBatch& batch = session_.batches.at(batches_++);
        for (; writes_ < session_.writes.size() && session_.writes.at(writes_).at <= batch.made;
             ++writes_) {
            standAt(session_.writes.at(writes_).at);
            write(session_.writes.at(writes_));
        }
        standAt(batch.made);
        desk_.play(batch);
        QCoreApplication::processEvents();
    }
    standAt(end);
}

} // namespace dov417
