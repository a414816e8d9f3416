// A port that is only listened to: not a byte is written.
#ifndef DOV417_LINK_LISTENING_LINE_H
#define DOV417_LINK_LISTENING_LINE_H

#include <QTimer>
#include <functional>
#include <memory>
#include <string>

#include "line/wake_timer.h"
#include "link/listener.h"
#include "link/port.h"
#include "link/serial_line.h"

namespace dov417 {

struct ListeningEvents {
    std::function<void(const Heard&)> heard;
    std::function<void(bool open, const std::string& message)> port;
};

class ListeningLine {
public:
    ListeningLine(const LineSettings& settings, const ListeningEvents& events);
    ListeningLine(const ListeningLine&) = delete;
    ListeningLine& operator=(const ListeningLine&) = delete;

    // Throws a Failure if the port cannot be had. One that vanishes later is opened again.
    void open();
    // What has come of a frame will not grow.
    void end();

private:
    void came(const QByteArray& bytes);
    void opened();
    void refused(const QString& reason);
    void gone();
    void reopen();

    ListeningEvents events_;
    Micros gap_;
    Listener listener_;
    WakeTimer silence_;
    QTimer reopenTimer_;
    QString lastReason_;
    std::unique_ptr<Port> port_;
};

} // namespace dov417

#endif
