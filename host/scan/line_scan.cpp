#include "scan/line_scan.h"

#include "line/failure.h"

namespace dov417 {

LineScan::LineScan(const QString& device, const Rs485& direction, const ScanSettings& settings,
                   const ScanQuestions& questions, const LineScanEvents& events)
    : events_(events), port_(device, settings.lines.front(),
                             {nullptr, nullptr,
                              [this](const QByteArray& bytes) {
                                  scan_.bytesCame(bytes, Clock::now());
                                  return true;
                              },
                              [this]() {
                                  isOpen_ = false;
                                  timer_.cancel();
                                  events_.ended("port " + port_.name().toStdString() + " is gone");
                              }},
                             PortUse::talking, direction),
      timer_([this]() { scan_.timerDue(Clock::now()); }),
      scan_(settings, questions,
            {[this](const SerialFormat& line) {
                 QString reason;
                 const bool isTaken = port_.setFormat(line, &reason);
                 if (!isTaken)
                     events_.notice(reason.toStdString());
                 events_.passed(Direction::note, QByteArray(), "line " + toText(line));
                 return isTaken;
             },
             [this](const QByteArray& frame) { write(frame); },
             [this](Clock::time_point when) {
                 if (!isOpen_)
                     return;
                 using std::chrono::nanoseconds; // steady_clock is the timer's clock here
                 timer_.wakeAt(
                     std::chrono::duration_cast<nanoseconds>(when.time_since_epoch()).count());
             },
             [this](const ScanPiece& piece) { received(piece); }, events.found, events.heard,
             [this]() {
                 timer_.cancel();
                 events_.ended(std::string());
             }})
{
    if (!timer_.isValid())
        throw Failure("the system has no timer left");
}

void LineScan::start()
{
    QString reason;
    if (port_.open(&reason) != Opening::done)
        throw Failure(reason.toStdString());
    isOpen_ = true;
    scan_.start(Clock::now());
}

void LineScan::stop()
{
    scan_.stop(Clock::now());
}

ScanProgress LineScan::progress() const
{
    return scan_.progress(Clock::now());
}

void LineScan::write(const QByteArray& frame)
{
    events_.passed(Direction::sent, frame, std::string());
    if (isOpen_)
        port_.write(frame);
}

void LineScan::received(const ScanPiece& piece)
{
    if (piece.kind == ScanPiece::answer)
        events_.passed(Direction::received, piece.bytes, std::string());
    else
        events_.passed(Direction::stray, piece.bytes,
                       piece.kind == ScanPiece::noise ? "no frame" : "of another program");
}

} // namespace dov417
