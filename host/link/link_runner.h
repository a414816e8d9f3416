// The poll cycle of a panel: ask the driver for a frame, put it on the line, hand the reply back.
//
// Everything goes through the library's exported functions. The driver decides what is sent and
// when to give up; the runner times it, counts it and tells what became of it.
#ifndef DOV417_LINK_LINK_RUNNER_H
#define DOV417_LINK_LINK_RUNNER_H

#include <QTimer>
#include <functional>
#include <string>

#include "driver/library.h"
#include "link/link_statistics.h"
#include "link/serial_line.h"

namespace dov417 {

// One frame and what the driver said about its reply.
struct Outcome {
    const FRAME_PRO& frame;
    const Reception& reception;
    ReplyResult result;
    std::string errorText; // the driver's words for the frame: "1#R_W10(1)"
    std::string reason; // ours for a bad reply: "no answer", "exception 2 (illegal data address)"
};

struct RunnerEvents {
    std::function<void(const Outcome&)> outcome;
    std::function<void(bool open, const std::string& message)> port;
    std::function<void(const QByteArray&)> sent;    // for the line log
    std::function<void(const Reception&)> received; // for the line log
    std::function<void(const Stray&)> stray;        // for the line log
};

class LinkRunner {
public:
    LinkRunner(const Library& library, const LineSettings& settings, const RunnerEvents& events);

    // Opens the port and begins to poll. Throws a Failure if the port cannot be opened.
    void start();
    // No frame is begun any more; one on the line may still end.
    void stop();
    // There is something new to send: an idle runner polls at once.
    void wake();

    // The driver has nothing to send, so no frame is under way.
    bool isIdle() const;
    const LinkStatistics& statistics();
    void cycleEnded(Micros duration);

private:
    void portChanged(bool open, const QString& message);
    void poll();
    void deal(const Reception& reception);
    void count(const std::string& request, const Reception& reception, ReplyResult result);

    const Library& library_;
    RunnerEvents events_;
    LinkStatistics statistics_;
    SerialLine line_;
    QTimer idleTimer_;
    FRAME_PRO frame_ = FRAME_PRO();
    bool running_ = false;
    bool portIsOpen_ = false;
    bool idle_ = true;
    bool repeating_ = false; // the driver will hand out the same frame again
    bool linkIsGood_ = true; // until a request is given up, and again with the next good reply
};

} // namespace dov417

#endif
