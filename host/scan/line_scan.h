// A scan on a serial port.
#ifndef DOV417_SCAN_LINE_SCAN_H
#define DOV417_SCAN_LINE_SCAN_H

#include <QString>
#include <functional>
#include <memory>
#include <string>

#include "line/line_log.h"
#include "line/wake_timer.h"
#include "link/serial_port.h"
#include "scan/station_scan.h"

namespace dov417 {

// Called from the event loop.
struct LineScanEvents {
    std::function<void(const Found&)> found;
    std::function<void(const ScanHeard&)> heard;
    std::function<void(const std::string&)> notice; // what a person should know
    // Its bytes, or what is to be remarked.
    std::function<void(Direction, const QByteArray&, const std::string& remark)> passed;
    // Once. The problem is empty where everything was asked, or it was stopped.
    std::function<void(const std::string& problem)> ended;
};

class LineScan {
public:
    LineScan(const QString& device, const Rs485& direction, const ScanSettings& settings,
             const ScanQuestions& questions, const LineScanEvents& events);

    // Throws a Failure if the port cannot be had.
    void start();
    void stop();

    ScanProgress progress() const;

private:
    void write(const QByteArray& frame);
    void received(const ScanPiece& piece);

    LineScanEvents events_;
    SerialPort port_;
    WakeTimer timer_;
    StationScan scan_;
    bool isOpen_ = false;
};

} // namespace dov417

#endif
