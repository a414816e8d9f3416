// A scan on a serial port, or over a network.
#ifndef DOV417_SCAN_LINE_SCAN_H
#define DOV417_SCAN_LINE_SCAN_H

#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "line/line_log.h"
#include "line/wake_timer.h"
#include "link/rs485.h"
#include "link/serial_port.h"
#include "scan/scan_tcp.h"
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

    // Throws a Failure if the port cannot be had. A connection is under way then; that it cannot
    // be made is a problem at which the scan ends.
    void start();
    void stop();

    ScanProgress progress() const;

private:
    void opened();
    void came(const QByteArray& bytes);
    void end(const std::string& problem);
    bool setLine(const SerialFormat& line);
    void write(const QByteArray& frame);
    void received(const ScanPiece& piece);

    LineScanEvents events_;
    std::unique_ptr<Port> port_;
    SerialPort* serial_ = nullptr; // the port, if it is one of this machine
    std::optional<ScanTcp> tcp_;   // of Modbus TCP
    WakeTimer timer_;
    StationScan scan_;
    bool isOpen_ = false;
    bool hasEnded_ = false;
};

} // namespace dov417

#endif
