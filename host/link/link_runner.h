// The poll cycle of a panel: ask the driver for a frame, put it on the line, hand the reply back.
//
// Everything goes through the library's exported functions. The driver decides what is sent and
// when to give up; the runner times it, counts it and tells what became of it.
#ifndef DOV417_LINK_LINK_RUNNER_H
#define DOV417_LINK_LINK_RUNNER_H

#include <QTimer>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "driver/library.h"
#include "line/failure.h"
#include "link/link_statistics.h"
#include "link/quiet_wait.h"
#include "link/request_carrier.h"
#include "link/serial_line.h"
#include "link/station_probes.h"
#include "link/transmission.h"

namespace dov417 {

// Called from the event loop, in the middle of the runner's work: to note, not to act upon.
struct LinkEvents {
    std::function<void(const Transmission&)> began;
    std::function<void(const Transmission&)> ended; // before the driver is asked for the next frame
    std::function<void(const Transmission&)> markerEnded;
    std::function<void(const Transmission&)> partEnded; // of a request that is carried in parts
    std::function<void(const Stray&)> stray;
    std::function<void(const std::string&)> notice; // what a person should know, said once
    std::function<void()> doubt; // what was taken for a reply so far may have been another's
    std::function<void(bool open, const std::string& message)> port;
};

class LinkRunner {
public:
    // mayCut: a request may be cut in two before this word, by its address.
    LinkRunner(
        const Library& library, const LinkEvents& events,
        std::function<bool(const Request&, int word)> mayCut = [](const Request&, int) {
            return true;
        });

    // Opens the port, counts from zero, and begins to poll.
    Result open(const LineSettings& settings);
    // No frame is begun any more, and what comes for one on the line is nobody's.
    void close();
    bool isOpen() const; // also while the port is away
    // Has it been silent since a request to it was given up?
    bool isDead(int station) const;
    // Polls no more. Calls quiet once, from the event loop, when the replies that are out have
    // come, or have had the time that their stations take, and no later than after two seconds.
    // What comes meanwhile is dealt with as ever. With a line that is not open it is quiet at once.
    void finish(std::function<void()> quiet);
    bool isFinishing() const;
    // What the station has taken of a write of this kind that has no outcome yet; empty: nothing
    // that is known.
    std::string takenText(int kind) const;
    // There is something new to send: an idle runner polls at once.
    void wake();
    // Until then only what somebody waits for is sent: isWanted says whether there is any.
    void holdUntil(Clock::time_point when, std::function<bool()> isWanted);

    const LinkStatistics& statistics();
    void cycleEnded(Micros duration);

private:
    void portChanged(bool open, const QString& message);
    void poll();
    void deal(Transmission transmission);
    bool goesOut(Transmission& next);
    void answerLocally(Transmission transmission, const std::string& reason);
    void doubt();
    void heard(int station);
    void tell(StationProbes::News news, const Transmission& transmission);

    const Library& library_;
    LinkEvents events_;
    LinkStatistics statistics_;
    std::function<bool(const Request&, int word)> mayCut_;
    std::unique_ptr<SerialLine> line_;
    std::unique_ptr<RequestCarrier> carrier_; // on the line
    QString device_;                          // of the line
    std::map<QString, Books> unanswered_;     // by device, of lines that were closed
    ProbeSettings probeSettings_;
    StationProbes probes_;
    int notAsked_ = 0;              // cyclic reads in a row that were answered without the line
    Clock::time_point nextProbe_{}; // when a silent station may be asked again
    QTimer idleTimer_;
    QuietWait leaving_;
    FRAME_PRO frame_ = FRAME_PRO();
    bool portIsOpen_ = false;
    bool repeating_ = false; // the driver will hand out the same frame again
    // A write of bits is under way that takes the other bits of its word from the read before it.
    bool isPatched_ = false;
    bool isPatchedWrong_ = false; // and what was read may have been another's reply
    Clock::time_point heldUntil_{};
    std::function<bool()> isWanted_;
};

} // namespace dov417

#endif
