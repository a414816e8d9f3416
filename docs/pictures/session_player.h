// Shows a desk what was recorded, as if it happened now.
#ifndef DOV417_DOCS_PICTURES_SESSION_PLAYER_H
#define DOV417_DOCS_PICTURES_SESSION_PLAYER_H

#include "panel/desk/panel_desk.h"
#include "recorded_session.h"

namespace dov417 {

class SessionPlayer {
public:
    // The desk's source is a recording; what was watched then is watched already.
    SessionPlayer(PanelDesk& desk, const RecordedSession& session);

    // On to this moment of the session, at which the panel's time stands still then.
    void playUntil(std::chrono::milliseconds moment);
    const PanelDesk& desk() const
    {
        return desk_;
    }

private:
    void standAt(Clock::time_point now);
    void write(const RecordedWrite& write);

    PanelDesk& desk_;
    const RecordedSession& session_;
    std::size_t batches_ = 0; // played
    std::size_t writes_ = 0;
};

} // namespace dov417

#endif
