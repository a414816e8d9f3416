// One request that no register type names, on a line of its own: through the same exchange as
// everything else, so that no late reply is taken for its answer.
#ifndef DOV417_SESSION_SINGLE_REQUEST_H
#define DOV417_SESSION_SINGLE_REQUEST_H

#include <QByteArray>
#include <functional>
#include <optional>
#include <string>

#include "link/quiet_wait.h"
#include "link/serial_line.h"

namespace dov417 {

// The record of this frame, as the line is to transmit it.
Transmission transmissionOf(const QByteArray& frame);

class SingleRequest {
public:
    // Done once, from the event loop or from within start(): the request has ended, or the port has
    // gone, and the line is quiet.
    SingleRequest(const QByteArray& frame, const LineSettings& settings,
                  const LineObserver& observer, std::function<void()> done);
    SingleRequest(const SingleRequest&) = delete;
    SingleRequest& operator=(const SingleRequest&) = delete;

    // Throws a Failure if the port cannot be had.
    void start();
    // Sends nothing more, and ends once the line is quiet.
    void leave();

    // Nothing if it has not gone out, or its end is not known.
    const std::optional<Transmission>& ended() const;
    // The request, when it has ended: to be set before start().
    std::function<void(const Transmission&)> told;

private:
    void portChanged(bool open);

    Transmission request_;
    std::function<void()> done_;
    std::function<void(bool, const QString&)> port_;
    bool hasBegun_ = false;
    std::optional<Transmission> ended_;
    SerialLine line_;
    QuietWait leaving_;
};

} // namespace dov417

#endif
