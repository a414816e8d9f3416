#include "live/log_entries.h"

#include "line/frame_text.h"

namespace dov417 {

namespace {

long long wholeMilliseconds(Micros duration)
{
    return std::chrono::round<std::chrono::milliseconds>(duration).count();
}

} // namespace

LogEntry noteEntry(const std::string& text)
{
    return {logTime(Clock::now()), Direction::note, QByteArray(), text};
}

LogEntry beganEntry(const Transmission& transmission, const std::vector<Area>& areas)
{
    return {logTime(transmission.sendBegin), Direction::sent, transmission.sent,
            requestText(transmission.sent, areas)};
}

std::optional<LogEntry> endedEntry(const Transmission& transmission, const std::vector<Area>& areas)
{
    const Reception& reception = transmission.reception;
    switch (reception.result) {
    case LineResult::reply:
    case LineResult::exception:
        return LogEntry{logTime(reception.lastByte), Direction::received, reception.bytes,
                        replyText(reception.bytes, transmission.sent, areas)};
    case LineResult::timeout:
        return noteEntry(reasonText(
            reception, transmission.replyLength,
            " within " + std::to_string(wholeMilliseconds(transmission.timeout)) + " ms"));
    case LineResult::heldBack:
        return noteEntry(reasonText(reception, transmission.replyLength));
    case LineResult::broadcast:
        return std::nullopt;
    }
    return std::nullopt;
}

LogEntry strayEntry(const Stray& stray)
{
    return {logTime(stray.at), Direction::stray, stray.bytes,
            std::string(nameOf(stray.kind)) + ", not handed on"};
}

} // namespace dov417
