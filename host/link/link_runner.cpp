#include "link/link_runner.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "driver/registers.h"
#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "link/network_address.h"
#include "link/silence_words.h"

namespace dov417 {

namespace {

// Long enough to cost nothing, short enough not to be felt after a write from elsewhere.
constexpr int idleMilliseconds = 20;
const char* const patchedWrong = "not sent any more: the other bits of the word may have been read "
                                 "wrong, as a station sent more replies than it was asked for";

// As the driver does it; of a frame that it has forgotten it says nothing.
std::string describe(const Request& request)
{
    const bool isBit = areaOf(request.regName) + "_bit" == request.regName;
    const std::string place = !isBit ? std::to_string(request.address)
                                     : std::to_string(request.address / bitsPerWord) + "." +
                                           std::to_string(request.address % bitsPerWord);
    return std::to_string(request.station) + "#" + request.regName + place + "(" +
           std::to_string(request.length) + ")";
}

Transmission transmissionOf(const FRAME_PRO& frame, bool repeats)
{
    Transmission transmission;
    const VARIABLE& request = frame.request;
    transmission.request = {request.kind, request.stationNo, request.regName.toStdString(),
                            request.address, request.length};
    transmission.sent = QByteArray(reinterpret_cast<const char*>(frame.frame), frame.sendLength);
    transmission.replyLength = frame.replyLength;
    transmission.repeats = repeats;
    return transmission;
}

} // namespace

LinkRunner::LinkRunner(const Library& library, const LinkEvents& events,
                       std::function<bool(const Request&, int word)> mayCut)
    : library_(library), events_(events), mayCut_(std::move(mayCut)), leaving_([this]() {
          return line_ && line_->isOpen() ? line_->quietAt() : Clock::time_point();
      })
{
    idleTimer_.setSingleShot(true);
    idleTimer_.setInterval(idleMilliseconds);
    idleTimer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&idleTimer_, &QTimer::timeout, &idleTimer_, [this]() { poll(); });
}

Result LinkRunner::open(const LineSettings& settings)
{
    close();
    statistics_ = LinkStatistics();
    statistics_.stationNames = settings.stationNames;
    probeSettings_.maxPause = settings.maxProbePause;
    probes_ = StationProbes(probeSettings_);
    LineObserver observer;
    observer.sent = events_.began;
    observer.markerEnded = [this](const Transmission& marker) {
        ++statistics_.markers;
        events_.markerEnded(marker);
        if (isOfStation(marker.reception))
            heard(marker.request.station);
        leaving_.lookAgain();
    };
    observer.stray = [this](const Stray& stray) {
        statistics_.add(stray);
        events_.stray(stray);
        if (stray.kind != StrayKind::echo && hasGoodCrc(stray.bytes))
            heard(static_cast<unsigned char>(stray.bytes.at(0)));
        leaving_.lookAgain();
    };
    observer.notice = events_.notice;
    observer.doubt = [this]() { doubt(); };
    observer.port = [this](bool open, const QString& message) { portChanged(open, message); };
    try {
        line_ = std::make_unique<SerialLine>(settings, observer);
    } catch (const Failure& failure) {
        return Result::refused(failure.what());
    }
    carrier_ = std::make_unique<RequestCarrier>(
        CarrierLine{[this](const Transmission& frame, Exchange::Done done) {
                        line_->transact(frame, std::move(done));
                    },
                    [this](Transmission part) {
                        part.description = describe(part.request);
                        events_.partEnded(part);
                        if (isOfStation(part.reception))
                            heard(part.request.station);
                        leaving_.lookAgain();
                    },
                    events_.notice, mayCut_,
                    [this]() { return !library_.driver->sendList.isEmpty(); },
                    settings.stationNames},
        settings.maxRegisters,
        isModbusTcp(settings.device.toStdString()) ? maxWordsOfARead : noMaximum,
        settings.stationMaxRegisters);
    device_ = settings.device;
    line_->awaitLate(unanswered_[device_]);
    QString reason;
    if (line_->open(&reason))
        return Result();
    line_.reset();
    return Result::refused(reason.toStdString());
}

void LinkRunner::close()
{
    statistics(); // the line's part of the account stays
    idleTimer_.stop();
    heldUntil_ = Clock::time_point();
    leaving_.stop();
    if (line_)
        unanswered_[device_] = line_->unanswered();
    carrier_.reset();
    line_.reset();
    portIsOpen_ = false;
    repeating_ = isPatched_ = isPatchedWrong_ = false;
}

void LinkRunner::doubt()
{
    carrier_->doubt();
    isPatchedWrong_ = isPatched_;
    events_.doubt();
}

std::string LinkRunner::takenText(int kind) const
{
    return carrier_ ? carrier_->takenText(kind) : std::string();
}

bool LinkRunner::isOpen() const
{
    return line_ != nullptr;
}

bool LinkRunner::isDead(int station) const
{
    return probes_.isDead(station);
}

void LinkRunner::finish(std::function<void()> quiet)
{
    idleTimer_.stop();
    if (line_)
        line_->sendNoMore();
    leaving_.begin(std::move(quiet));
}

bool LinkRunner::isFinishing() const
{
    return line_ && leaving_.isUnderWay();
}

void LinkRunner::wake()
{
    if (idleTimer_.isActive()) {
        idleTimer_.stop();
        poll();
    }
}

void LinkRunner::holdUntil(Clock::time_point when, std::function<bool()> isWanted)
{
    heldUntil_ = when;
    isWanted_ = std::move(isWanted);
}

const LinkStatistics& LinkRunner::statistics()
{
    if (line_) {
        statistics_.wireTime = line_->wireTime();
        statistics_.portIsOpen = line_->isOpen();
        statistics_.stations = line_->stationTimes();
    }
    return statistics_;
}

void LinkRunner::cycleEnded(Micros duration)
{
    statistics_.cycles.add(duration);
}

void LinkRunner::portChanged(bool open, const QString& message)
{
    // Why it cannot be opened again is told too, and is no further loss.
    if (portIsOpen_ && !open)
        ++statistics_.portLosses;
    portIsOpen_ = open;
    leaving_.lookAgain();
    if (!open) {
        idleTimer_.stop();
    } else {
        probes_.portIsBack(Clock::now());
        idleTimer_.start(0); // a frame that was on the line when the port went is handed out again
    }
    events_.port(open, message.toStdString());
}

void LinkRunner::poll()
{
    if (!line_ || !line_->isOpen() || isFinishing())
        return;
    if (const auto left = heldUntil_ - Clock::now(); left.count() > 0 && !isWanted_()) {
        idleTimer_.start(
            static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count()));
        return;
    }
    for (;;) {
        // Started anew, the driver has forgotten what was to be repeated.
        if (library_.driver->sendList.isEmpty())
            repeating_ = isPatched_ = isPatchedWrong_ = false;
        // 0 also ends a burst of writes or single reads: the poll after it may have more.
        int due = library_.intf_getSendFrame(&frame_);
        if (due != 1)
            due = library_.intf_getSendFrame(&frame_);
        if (due != 1) {
            idleTimer_.start(idleMilliseconds);
            return;
        }
        Transmission next = transmissionOf(frame_, repeating_);
        if (frame_.sendLength <= 0) {
            next.reception.result = LineResult::broadcast;
            deal(next);
            continue;
        }
        next.isCyclic = library_.driver->sendKind == sendCyclicRead;
        if (goesOut(next)) {
            notAsked_ = 0;
            carrier_->carry(next, [this](const Transmission& transmission) {
                deal(transmission);
                leaving_.lookAgain();
                poll();
            });
            return;
        }
        // All round, and the driver had nothing else: nothing is to do until the next probe.
        if (notAsked_ > library_.driver->readList.size()) {
            notAsked_ = 0;
            const auto wait =
                std::chrono::ceil<std::chrono::milliseconds>(nextProbe_ - Clock::now());
            idleTimer_.start(static_cast<int>(std::max<long long>(0, wait.count())));
            return;
        }
    }
}

// If it does not go out, the driver has given it up.
bool LinkRunner::goesOut(Transmission& next)
{
    if (isPatchedWrong_ && !next.isRead()) {
        answerLocally(next, patchedWrong);
        return false;
    }
    if (!next.isCyclic) {
        next.isToSilent = probes_.isDead(next.request.station);
        return true;
    }
    const StationProbes::Answer may = probes_.mayGoOut(next.sent, Clock::now());
    if (may.turn != StationProbes::Turn::notNow) {
        next.isToSilent = may.turn == StationProbes::Turn::probe;
        return true;
    }
    nextProbe_ = notAsked_ == 0 ? may.notBefore : std::min(nextProbe_, may.notBefore);
    ++notAsked_;
    answerLocally(next, notAskedSince(may.silentSince));
    return false;
}

// Empty replies, until the driver gives it up.
void LinkRunner::answerLocally(Transmission transmission, const std::string& reason)
{
    QByteArray nothing;
    QString description;
    do {
        transmission.verdict =
            static_cast<ReplyResult>(library_.intf_dealRcvFrame(&nothing, &description));
    } while (transmission.verdict == replyBad);
    transmission.isLocal = true;
    transmission.description = description.toStdString();
    transmission.reason = reason;
    statistics_.add(transmission);
    events_.ended(transmission);
}

void LinkRunner::deal(Transmission transmission)
{
    QByteArray bytes = transmission.reception.bytes;
    QString description;
    transmission.verdict =
        static_cast<ReplyResult>(library_.intf_dealRcvFrame(&bytes, &description));
    transmission.description =
        description.isEmpty() ? describe(transmission.request) : description.toStdString();
    if (transmission.verdict == replyNothingOutstanding)
        transmission.reason = "the driver was started anew meanwhile";
    else if (transmission.verdict != replyAccepted) {
        transmission.why = reasonOf(transmission.reception, transmission.replyLength);
        transmission.reason = reasonText(transmission.reception, transmission.replyLength) +
                              (transmission.where.empty() ? "" : ", " + transmission.where);
    } else
        transmission.reason = answeredOtherwise(transmission);
    repeating_ = transmission.verdict == replyBad;
    if (!repeating_) {
        isPatched_ = transmission.isRead() && !library_.driver->sendList.isEmpty();
        isPatchedWrong_ = false;
    }
    const StationProbes::News news = probes_.ended(transmission, Clock::now());
    statistics_.add(transmission);
    events_.ended(transmission);
    tell(news, transmission);
}

void LinkRunner::heard(int station)
{
    if (!probes_.isDead(station))
        return;
    Transmission unknown;
    unknown.request.station = station;
    tell(probes_.heard(station, Clock::now()), unknown);
    if (idleTimer_.isActive())
        idleTimer_.start(0);
}

void LinkRunner::tell(StationProbes::News news, const Transmission& transmission)
{
    const bool isOfRequest = news == StationProbes::News::requestSilent;
    const int station = transmission.request.station;
    const std::string text =
        textOf(news, stationText(station, statistics_.stationNames), transmission.description,
               transmission.why,
               isOfRequest ? probes_.silentSince(transmission.sent) : probes_.silentSince(station),
               probeSettings_);
    if (!text.empty())
        events_.notice(text);
}

} // namespace dov417
