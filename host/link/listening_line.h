// A serial port that is only listened to: not a byte is written.
#ifndef DOV417_LINK_LISTENING_LINE_H
#define DOV417_LINK_LISTENING_LINE_H

#include <QTimer>
#include <functional>
#include <string>

#include "line/wake_timer.h"
#include "link/listener.h"
#include "link/serial_line.h"
#include "link/serial_port.h"

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
    void gone();
    void reopen();

    ListeningEvents events_;
    Micros gap_;
    Listener listener_;
    WakeTimer silence_;
    QTimer reopenTimer_;
    SerialPort port_;
};

} // namespace dov417

#endif
