#include "link/link_runner.h"

#include "line/failure.h"
#include "line/frame_text.h"

namespace dov417 {

namespace {

// Long enough to cost nothing, short enough not to be felt after a write from elsewhere.
constexpr int idleMilliseconds = 20;

constexpr int functionIndex = 1;
constexpr int exceptionCodeIndex = 2;

std::string describe(const FRAME_PRO& frame, const std::string& errorText)
{
    const bool read = frame.frame[functionIndex] <= 4;
    return (read ? "read  " : "write ") + errorText;
}

std::string reasonOf(const Reception& reception, int expected)
{
    switch (reception.result) {
    case LineResult::timeout:
        return "no answer";
    case LineResult::exception: {
        const int code = static_cast<unsigned char>(reception.bytes.at(exceptionCodeIndex));
        return "exception " + std::to_string(code) + " (" + exceptionName(code) + ")";
    }
    case LineResult::reply:
        if (reception.bytes.size() < expected)
            return "reply cut short: " + std::to_string(reception.bytes.size()) + " of " +
                   std::to_string(expected) + " bytes";
        return "bad CRC";
    case LineResult::broadcast:
        return "nobody answers a broadcast";
    }
    return std::string();
}

} // namespace

LinkRunner::LinkRunner(const Library& library, const LineSettings& settings,
                       const RunnerEvents& events)
    : library_(library), events_(events),
      line_(settings,
            LineObserver{[this](const QByteArray& bytes) {
                             if (events_.sent)
                                 events_.sent(bytes);
                         },
                         [this](const Reception& reception) {
                             if (events_.received)
                                 events_.received(reception);
                         },
                         [this](const Stray& stray) {
                             ++statistics_.strays.at(static_cast<std::size_t>(stray.kind));
                             if (events_.stray)
                                 events_.stray(stray);
                         },
                         [this](bool open, const QString& message) { portChanged(open, message); }})
{
    idleTimer_.setSingleShot(true);
    idleTimer_.setInterval(idleMilliseconds);
    QObject::connect(&idleTimer_, &QTimer::timeout, &idleTimer_, [this]() { poll(); });
}

void LinkRunner::start()
{
    running_ = true;
    QString reason;
    if (!line_.open(&reason))
        throw Failure(reason.toStdString());
}

void LinkRunner::stop()
{
    running_ = false;
    idleTimer_.stop();
}

void LinkRunner::wake()
{
    if (idleTimer_.isActive()) {
        idleTimer_.stop();
        poll();
    }
}

bool LinkRunner::isIdle() const
{
    return idle_;
}

const LinkStatistics& LinkRunner::statistics()
{
    statistics_.wireTime = line_.wireTime();
    statistics_.state = !line_.isOpen() ? LinkState::portClosed
                        : linkIsGood_   ? LinkState::good
                                        : LinkState::failed;
    return statistics_;
}

void LinkRunner::cycleEnded(Micros duration)
{
    statistics_.cycles.add(duration);
}

void LinkRunner::portChanged(bool open, const QString& message)
{
    if (events_.port)
        events_.port(open, message.toStdString());
    // Why it cannot be opened again is told too, and is no further loss.
    if (portIsOpen_ && !open)
        ++statistics_.portLosses;
    portIsOpen_ = open;
    if (!open) {
        idleTimer_.stop();
    } else if (running_) {
        // The frame that was on the line when the port went is handed out again.
        idleTimer_.start(0);
    }
}

void LinkRunner::poll()
{
    if (!running_ || !line_.isOpen())
        return;
    for (;;) {
        // 0 also ends a burst of writes or single reads: the poll after it may have more.
        int due = library_.intf_getSendFrame(&frame_);
        if (due != 1)
            due = library_.intf_getSendFrame(&frame_);
        idle_ = due != 1;
        if (idle_) {
            idleTimer_.start(idleMilliseconds);
            return;
        }
        if (frame_.sendLength > 0)
            break;
        Reception nothing;
        nothing.result = LineResult::broadcast;
        deal(nothing);
    }
    const QByteArray bytes(reinterpret_cast<const char*>(frame_.frame), frame_.sendLength);
    line_.transact(bytes, frame_.replyLength, [this](const Reception& reception) {
        deal(reception);
        poll();
    });
}

void LinkRunner::deal(const Reception& reception)
{
    QByteArray bytes = reception.bytes;
    QString errorText;
    const auto result = static_cast<ReplyResult>(library_.intf_dealRcvFrame(&bytes, &errorText));
    const std::string description = errorText.toStdString();
    const std::string request = describe(frame_, description);
    count(request, reception, result);
    if (result == replyAccepted)
        linkIsGood_ = true;
    else if (result == replyAbandoned)
        linkIsGood_ = false;
    repeating_ = result == replyBad;
    const std::string reason =
        result == replyAccepted ? std::string() : reasonOf(reception, frame_.replyLength);
    if (result == replyAbandoned)
        statistics_.of(request).givenUp = reason;
    if (events_.outcome)
        events_.outcome({frame_, reception, result, description, reason});
}

void LinkRunner::count(const std::string& request, const Reception& reception, ReplyResult result)
{
    RequestCounters& counters = statistics_.of(request);
    ++counters.sent;
    if (repeating_)
        ++counters.retries;
    if (result == replyAccepted) {
        ++counters.good;
        return;
    }
    if (result == replyAbandoned)
        ++counters.abandoned;
    switch (reception.result) {
    case LineResult::timeout:
    case LineResult::broadcast:
        ++counters.timeouts;
        break;
    case LineResult::exception:
        ++counters.exceptions[static_cast<unsigned char>(reception.bytes.at(exceptionCodeIndex))];
        break;
    case LineResult::reply:
        ++(reception.bytes.size() < frame_.replyLength ? counters.shortReplies : counters.badCrc);
        break;
    }
}

} // namespace dov417
