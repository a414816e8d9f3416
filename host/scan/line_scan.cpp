#include "scan/line_scan.h"

#include <utility>

#include "line/failure.h"
#include "link/network_address.h"
#include "link/network_port.h"

namespace dov417 {

LineScan::LineScan(const QString& device, const Rs485& direction, const ScanSettings& settings,
                   const ScanQuestions& questions, const LineScanEvents& events)
    : events_(events), timer_([this]() { scan_.timerDue(Clock::now()); }),
      scan_(settings, questions,
            {[this](const SerialFormat& line) { return setLine(line); },
             [this](const QByteArray& frame) { write(frame); },
             [this](Clock::time_point when) {
                 if (!isOpen_)
                     return;
                 timer_.wakeAt(when.time_since_epoch().count());
             },
             [this](const ScanPiece& piece) { received(piece); }, events.found, events.heard,
             [this]() { end(std::string()); }})
{
    const PortEvents portEvents{
        [this]() { opened(); }, [this](const QString& reason) { end(reason.toStdString()); },
        [this](const QByteArray& bytes) {
            came(bytes);
            return true;
        },
        [this]() { end("port " + port_->name().toStdString() + " is gone"); }};
    if (const std::optional<NetworkAddress> address = parseNetworkAddress(device.toStdString())) {
        port_ = std::make_unique<NetworkPort>(device, *address, portEvents);
        if (address->isModbusTcp)
            tcp_.emplace();
    } else {
        auto serial = std::make_unique<SerialPort>(device, settings.lines.front().value(),
                                                   portEvents, PortUse::talking, direction);
        serial_ = serial.get();
        port_ = std::move(serial);
    }
    if (!timer_.isValid())
        throw Failure("the system has no timer left");
}

void LineScan::start()
{
    if (port_->opens())
        opened();
}

void LineScan::opened()
{
    isOpen_ = true;
    scan_.start(Clock::now());
}

void LineScan::stop()
{
    if (isOpen_)
        scan_.stop(Clock::now());
    else
        end(std::string());
}

void LineScan::end(const std::string& problem)
{
    isOpen_ = false;
    timer_.cancel();
    if (!std::exchange(hasEnded_, true))
        events_.ended(problem);
}

ScanProgress LineScan::progress() const
{
    return isOpen_ ? scan_.progress(Clock::now()) : ScanProgress();
}

bool LineScan::setLine(const SerialFormat& line)
{
    QString reason;
    const bool isTaken = serial_->setFormat(line, &reason);
    if (!isTaken)
        events_.notice(reason.toStdString());
    events_.passed(Direction::note, QByteArray(), "line " + toText(line));
    return isTaken;
}

void LineScan::write(const QByteArray& frame)
{
    events_.passed(Direction::sent, frame, std::string());
    if (isOpen_)
        port_->write(tcp_ ? tcp_->ask(frame) : frame);
}

void LineScan::came(const QByteArray& bytes)
{
    if (!isOpen_)
        return;
    if (!tcp_) {
        scan_.bytesCame(bytes, Clock::now());
        return;
    }
    const std::optional<std::vector<ScanReply>> replies = tcp_->take(bytes);
    if (!replies) {
        events_.passed(Direction::stray, bytes, "no Modbus TCP");
        end(port_->name().toStdString() + " sends what is no Modbus TCP");
        return;
    }
    for (const ScanReply& reply : *replies) {
        if (reply.isAnswer)
            scan_.bytesCame(reply.frame, Clock::now());
        else
            events_.passed(Direction::stray, reply.frame, "no answer to what was asked");
    }
}

void LineScan::received(const ScanPiece& piece)
{
    if (piece.kind == ScanPiece::answer || piece.kind == ScanPiece::absent)
        events_.passed(Direction::received, piece.bytes, std::string());
    else
        events_.passed(Direction::stray, piece.bytes,
                       piece.kind == ScanPiece::noise ? "no frame" : "of another program");
}

} // namespace dov417
