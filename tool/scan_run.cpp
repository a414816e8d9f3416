#include "tool/scan_run.h"

#include <utility>

#include "line/failure.h"
#include "live/line_setup.h"
#include "scan/range_search.h"
#include "tool/scan_words.h"

namespace dov417 {

namespace {

constexpr std::chrono::milliseconds connectionPatience(5000);

} // namespace

ScanRun::ScanRun(const std::string& port, const Rs485& direction, ScanTeller& teller)
    : port_(QString::fromStdString(port)), direction_(direction), teller_(teller),
      shutdown_([this]() { interrupt(); })
{
    patience_.setSingleShot(true);
    patience_.setInterval(connectionPatience);
    QObject::connect(&patience_, &QTimer::timeout, &patience_, [this]() { giveUp(); });
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
    const ScanLine& where = teller_.whereFound().at(run.station);
    LineSettings settings;
    settings.device = port_;
    settings.direction = direction_;
    if (where)
        settings.wire = *where;
    else
        settings.replyGap = std::chrono::milliseconds(defaultNetworkReplyGapMs);
    isOverNetwork_ = !where;
    SerialLine line(settings, observer());
    RangeSearchEvents events;
    events.found = [&](const WordRange& range) { teller_.tellRange(run, range); };
    events.ended = [this](const Transmission& each) { recordEnd(each); };
    events.done = [&]() {
        isDone = true;
        loop_.quit();
    };
    RangeSearch search(line, run, events);
    begin_ = [&search]() { search.start(); };
    QString reason;
    if (!line.open(&reason))
        throw Failure(reason.toStdString());
    teller_.showBar([&]() {
        return barText(static_cast<double>(search.known()) / run.count,
                       rangeText(run, run.first, run.count) + atText(where));
    });
    wait([&isDone]() { return isDone; },
         [&]() {
             if (begin_)
                 loop_.quit();
             else
                 search.stop();
         });
    patience_.stop();
    begin_ = nullptr;
    if (!teller_.isInterrupted())
        return;
    search.end();
    teller_.tellRest(run, search.known());
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
        portChanged(isOpen, message.toStdString());
    };
    return observer;
}

void ScanRun::portChanged(bool isOpen, const std::string& message)
{
    if (isOpen) {
        patience_.stop();
        if (const auto begin = std::exchange(begin_, nullptr))
            begin();
        return;
    }
    refusal_ = message;
    // A server of one client may not have seen yet that the last connection has ended; the line
    // tries again.
    if (begin_ && isOverNetwork_)
        patience_.start();
    else
        giveUp();
}

void ScanRun::giveUp()
{
    teller_.fail(refusal_);
    loop_.quit();
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
