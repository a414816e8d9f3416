#include "live/recording.h"

#include "live/log_entries.h"

namespace dov417 {

Recording::Recording(const std::string& file, const std::string& header,
                     const std::vector<Area>& areas)
    : areas_(areas)
{
    log_.open(file);
    log_.remark(header);
}

void Recording::follow(const Session& session)
{
    connect(&session, &Session::transmissionBegan, this, &Recording::began);
    connect(&session, &Session::transmissionEnded, this, &Recording::ended);
    connect(&session, &Session::strayCame, this, &Recording::strayCame);
    connect(&session, &Session::noticed, this, &Recording::note);
    connect(&session, &Session::portChanged, this,
            [this](bool, const std::string& message) { note(message); });
}

bool Recording::hasFailed() const
{
    return log_.hasFailed();
}

void Recording::note(const std::string& text)
{
    log_.add(noteEntry(text));
}

void Recording::began(const Transmission& transmission)
{
    log_.add(beganEntry(transmission, areas_));
}

void Recording::ended(const Transmission& transmission)
{
    if (const std::optional<LogEntry> entry = endedEntry(transmission, areas_))
        log_.add(*entry);
}

void Recording::strayCame(const Stray& stray)
{
    log_.add(strayEntry(stray));
}

} // namespace dov417
