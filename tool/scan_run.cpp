#include "tool/scan_run.h"

#include "line/failure.h"
#include "scan/range_search.h"
#include "tool/scan_words.h"

namespace dov417 {

ScanRun::ScanRun(const std::string& port, const Rs485& direction, ScanTeller& teller)
    : port_(QString::fromStdString(port)), direction_(direction), teller_(teller),
      shutdown_([this]() { interrupt(); })
{
}

void ScanRun::findStations(const ScanSettings& settings, const ScanQuestions& questions,
                           std::set<int> wanted)
{
    LineScanEvents events = teller_.events([this]() { loop_.quit(); });
    LineScan* running = nullptr;
    const bool endsEarly = !wanted.empty();
    events.found = [&, tell = events.found](const Found& found) {
        tell(found);
        wanted.erase(found.station);
        if (endsEarly && wanted.empty())
            running->stop();
    };
    LineScan scan(port_, direction_, settings, questions, events);
    running = &scan;
    scan.start();
    teller_.showBar([&scan]() { return progressText(scan.progress()); });
    wait([this]() { return teller_.hasEnded(); }, [&scan]() { scan.stop(); });
}

void ScanRun::findRanges(const WordRun& run)
{
    bool isDone = false;
    LineSettings settings;
    settings.device = port_;
    settings.direction = direction_;
    settings.wire = teller_.whereFound().at(run.station);
    SerialLine line(settings, observer());
    RangeSearchEvents events;
    events.found = [&](const WordRange& range) { teller_.tellRange(run, range); };
    events.ended = [this](const Transmission& each) { recordEnd(each); };
    events.done = [&]() {
        isDone = true;
        loop_.quit();
    };
    RangeSearch search(line, run, events);
    QString reason;
    if (!line.open(&reason))
        throw Failure(reason.toStdString());
    search.start();
    teller_.showBar([&]() {
        return barText(static_cast<double>(search.known()) / run.count,
                       rangeText(run, run.first, run.count) + " at " + toText(settings.wire));
    });
    wait([&isDone]() { return isDone; }, [&search]() { search.stop(); });
}

LineObserver ScanRun::observer()
{
    LineObserver observer;
    observer.sent = [this](const Transmission& each) {
        teller_.passed(Direction::sent, each.sent, std::string());
    };
    observer.markerEnded = [this](const Transmission& each) { recordEnd(each); };
    observer.stray = [this](const Stray& stray) {
        teller_.passed(Direction::stray, stray.bytes, nameOf(stray.kind));
    };
    observer.notice = [this](const std::string& text) { teller_.sayNotice(text); };
    observer.doubt = []() {};
    observer.port = [this](bool isOpen, const QString& message) {
        if (isOpen)
            return;
        teller_.fail(message.toStdString());
        loop_.quit();
    };
    return observer;
}

void ScanRun::recordEnd(const Transmission& each)
{
    const Reception& reception = each.reception;
    const bool hasBytes =
        reception.result == LineResult::reply || reception.result == LineResult::exception;
    teller_.passed(hasBytes ? Direction::received : Direction::note, reception.bytes,
                   reasonText(reception, each.replyLength));
}

// Neither what stops it nor what tells of it is called any more afterwards.
void ScanRun::wait(const std::function<bool()>& isOver, const std::function<void()>& stop)
{
    stop_ = stop;
    if (!isOver() && !teller_.isInterrupted())
        loop_.exec();
    stop_ = nullptr;
    teller_.hideBar();
}

void ScanRun::interrupt()
{
    if (!stop_ || teller_.isInterrupted())
        loop_.quit();
    else
        stop_();
    teller_.interrupt();
}

} // namespace dov417
