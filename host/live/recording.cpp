#include "live/recording.h"

#include "line/frame_text.h"

namespace dov417 {

namespace {

long long milliseconds(Micros duration)
{
    return std::chrono::round<std::chrono::milliseconds>(duration).count();
}

} // namespace

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
    log_.add({logTime(Clock::now()), Direction::note, QByteArray(), text});
}

void Recording::began(const Transmission& transmission)
{
    log_.add({logTime(transmission.sendBegin), Direction::sent, transmission.sent,
              requestText(transmission.sent, areas_)});
}

void Recording::ended(const Transmission& transmission)
{
    const Reception& reception = transmission.reception;
    switch (reception.result) {
    case LineResult::reply:
    case LineResult::exception:
        log_.add({logTime(reception.lastByte), Direction::received, reception.bytes,
                  replyText(reception.bytes, transmission.sent, areas_)});
        break;
    case LineResult::timeout:
        note(reasonText(reception, transmission.replyLength,
                        " within " + std::to_string(milliseconds(transmission.timeout)) + " ms"));
        break;
    case LineResult::heldBack:
        note(reasonText(reception, transmission.replyLength));
        break;
    case LineResult::broadcast:
        break;
    }
}

void Recording::strayCame(const Stray& stray)
{
    log_.add({logTime(stray.at), Direction::stray, stray.bytes,
              std::string(nameOf(stray.kind)) + ", not handed on"});
}

} // namespace dov417
