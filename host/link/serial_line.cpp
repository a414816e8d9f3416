#include "link/serial_line.h"

#include <QFileInfo>
#include <QSerialPort>
#include <algorithm>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

#include "line/crc16.h"
#include "line/failure.h"

namespace dov417 {

namespace {

constexpr Micros blockwiseGap(20000); // USB adapters hand bytes on in blocks, up to 16 ms apart
constexpr Micros rereadDelay(200);    // bytes wait in the kernel: let the port's event come first
constexpr int reopenMilliseconds = 200;

bool isPseudoTerminal(const QString& device)
{
    return QFileInfo(device).canonicalFilePath().startsWith(QLatin1String("/dev/pts/"));
}

// Where something between the wire and us hands bytes on in blocks, a gap says nothing.
bool keepsGaps(const QString& device)
{
    const QString path = QFileInfo(device).canonicalFilePath();
    return !isPseudoTerminal(device) && !path.contains(QLatin1String("ttyUSB")) &&
           !path.contains(QLatin1String("ttyACM"));
}

QString whyNotOpened(const QString& device, const QString& systemText)
{
    const QFileInfo file(device);
    if (!file.exists())
        return QStringLiteral("there is no port %1").arg(device);
    if (access(device.toLocal8Bit().constData(), R_OK | W_OK) != 0) {
        const QString refused = QStringLiteral("permission refused on port %1").arg(device);
        const QFile::Permissions group = QFile::ReadGroup | QFile::WriteGroup;
        return (file.permissions() & group) != group
                   ? refused
                   : refused + QStringLiteral(": it belongs to group %1; 'sudo adduser $USER %1' "
                                              "and a new login let you in")
                                   .arg(file.group());
    }
    return QStringLiteral("port %1 cannot be used: %2").arg(device, systemText);
}

QSerialPort::Parity parityOf(Parity parity)
{
    return parity == Parity::even  ? QSerialPort::EvenParity
           : parity == Parity::odd ? QSerialPort::OddParity
                                   : QSerialPort::NoParity;
}

} // namespace

SerialLine::SerialLine(const LineSettings& settings, const LineObserver& observer)
    : settings_(settings), observer_(observer), timer_([this]() { timerDue(); })
{
    // A bare name is one of /dev. QSerialPort takes a relative path for one too.
    QString& device = settings_.device;
    device = device.contains(QLatin1Char('/')) ? QFileInfo(device).absoluteFilePath()
                                               : QStringLiteral("/dev/") + device;
    if (!timer_.isValid())
        throw Failure("the system has no timer left");
    reopenTimer_.setInterval(reopenMilliseconds);
    QObject::connect(&reopenTimer_, &QTimer::timeout, &reopenTimer_, [this]() { reopen(); });
}

SerialLine::~SerialLine()
{
    if (port_)
        port_->disconnect();
}

bool SerialLine::isOpen() const
{
    return state_ != State::closed;
}

Micros SerialLine::wireTime() const
{
    return wireTime_;
}

QList<Unanswered> SerialLine::unanswered() const
{
    return unanswered_;
}

void SerialLine::awaitLate(const QList<Unanswered>& earlier)
{
    for (Unanswered each : earlier) {
        each.number = 0;
        unanswered_.append(each);
    }
}

bool SerialLine::open(QString* reason)
{
    if (!tryOpen(reason))
        return false;
    observer_.port(true, QStringLiteral("port %1 is open").arg(settings_.device));
    return true;
}

void SerialLine::reopen()
{
    QString reason;
    if (open(&reason)) {
        reopenTimer_.stop();
    } else if (reason != lastReason_) {
        lastReason_ = reason;
        observer_.port(false, reason);
    }
}

bool SerialLine::tryOpen(QString* reason)
{
    auto port = std::make_unique<QSerialPort>();
    port->setPortName(settings_.device);
    if (!port->open(QIODevice::ReadWrite)) {
        *reason =
            port->error() == QSerialPort::PermissionError &&
                    access(settings_.device.toLocal8Bit().constData(), R_OK | W_OK) == 0
                ? QStringLiteral("port %1 is busy: another program uses it").arg(settings_.device)
                : whyNotOpened(settings_.device, port->errorString());
        return false;
    }
    // Exclusive access does not hold against root; the lock does, against those who ask for it.
    if (flock(port->handle(), LOCK_EX | LOCK_NB) != 0) {
        *reason = QStringLiteral("port %1 is busy: another program uses it").arg(settings_.device);
        return false;
    }
    port_ = std::move(port);
    if (!applyFormat(reason)) {
        port_.reset();
        return false;
    }
    port_->clear();
    const Micros delay = std::chrono::round<Micros>(settings_.wire.interFrameDelay());
    frameGap_ = keepsGaps(settings_.device) ? delay : std::max(blockwiseGap, delay);
    state_ = State::idle;
    lastActivity_ = Clock::now();
    QObject::connect(port_.get(), &QSerialPort::readyRead, port_.get(), [this]() { bytesCame(); });
    QObject::connect(port_.get(), &QSerialPort::errorOccurred, port_.get(),
                     [this](QSerialPort::SerialPortError error) {
                         if (error != QSerialPort::NoError && error != QSerialPort::TimeoutError)
                             lost(port_->errorString());
                     });
    return true;
}

bool SerialLine::applyFormat(QString* reason)
{
    // A pseudo-terminal has no bits on a wire; its kernel side refuses parity.
    if (isPseudoTerminal(settings_.device))
        return true;
    const bool taken =
        port_->setBaudRate(settings_.wire.baudRate) &&
        port_->setDataBits(static_cast<QSerialPort::DataBits>(settings_.wire.dataBits)) &&
        port_->setParity(parityOf(settings_.wire.parity)) &&
        port_->setStopBits(settings_.wire.stopBits == 2 ? QSerialPort::TwoStop
                                                        : QSerialPort::OneStop) &&
        port_->setFlowControl(QSerialPort::NoFlowControl);
    if (!taken)
        *reason =
            QStringLiteral("port %1 refuses %2 baud, %3 data bits, parity %4, %5 stop bits: %6")
                .arg(settings_.device)
                .arg(settings_.wire.baudRate)
                .arg(settings_.wire.dataBits)
                .arg(QLatin1Char(static_cast<char>(settings_.wire.parity)))
                .arg(settings_.wire.stopBits)
                .arg(port_->errorString());
    return taken;
}

void SerialLine::lost(const QString& reason)
{
    timer_.cancel();
    state_ = State::closed;
    done_ = nullptr;
    // The error comes from within the port's own code, so the port must outlive this call. Its lock
    // must not: the line may be opened again before the event loop comes to delete it.
    port_->disconnect();
    port_->close();
    port_.release()->deleteLater();
    lastReason_.clear();
    observer_.port(false, QStringLiteral("port %1 is gone: %2").arg(settings_.device, reason));
    reopenTimer_.start();
}

void SerialLine::transact(const Transmission& request, Done done)
{
    current_ = request;
    done_ = std::move(done);
    state_ = State::silence;
    // A line that is never silent is not waited for forever.
    babbleLimit_ = Clock::now() + 3 * settings_.timeout;
    beginSilence();
}

void SerialLine::beginSilence()
{
    const Clock::time_point start = earliestStart();
    if (start <= Clock::now())
        transmit();
    else
        wakeAt(start);
}

// After the silence; and not before the reply to an earlier transmission can no longer be taken for
// the reply to this one. Requests of the same station, function and length can be mixed up: a reply
// to a read does not name its address, an exception reply no address at all.
Clock::time_point SerialLine::earliestStart()
{
    const Clock::time_point now = Clock::now();
    const Clock::time_point silence = lastActivity_ + settings_.wire.interFrameDelay();
    Clock::time_point start = std::min(silence, babbleLimit_);
    for (auto i = unanswered_.size() - 1; i >= 0; --i) {
        const Unanswered& earlier = unanswered_.at(i);
        if (earlier.expires <= now)
            unanswered_.removeAt(i);
        else if (earlier.replyLength == current_.replyLength && earlier.request != current_.sent &&
                 earlier.request.left(2) == current_.sent.left(2))
            start = std::max(start, earlier.expires);
    }
    return start;
}

bool SerialLine::bytesWait() const
{
    int count = 0;
    return ioctl(port_->handle(), FIONREAD, &count) == 0 && count > 0;
}

void SerialLine::transmit()
{
    const Clock::time_point now = Clock::now();
    if (now < babbleLimit_ && bytesWait()) {
        wakeAt(now + rereadDelay);
        return;
    }
    collector_.begin(current_.sent, current_.replyLength);
    const Micros duration =
        std::chrono::round<Micros>(settings_.wire.characters(current_.sent.size()));
    current_.number = ++transmissions_;
    current_.sendBegin = now;
    current_.sendEnd = now + duration;
    current_.timeout = settings_.timeout;
    current_.reception = Reception();
    lastActivity_ = current_.sendEnd;
    wireTime_ += duration;
    observer_.sent(current_);
    const bool awaited = current_.replyLength > 0;
    state_ = awaited ? State::awaitingReply : State::awaitingTurnaround;
    if (awaited) {
        deadline_ = current_.sendEnd + settings_.timeout;
        unanswered_.append({current_.number, current_.sent, current_.replyLength, now,
                            deadline_ + settings_.timeout});
        armReplyTimer();
    } else {
        wakeAt(current_.sendEnd + settings_.turnaround);
    }
    // cppcheck-suppress nullPointerRedundantCheck
    port_->write(current_.sent);
    if (port_) // a failed write may have told us that the port is gone
        port_->flush();
}

void SerialLine::wakeAt(Clock::time_point when)
{
    using std::chrono::nanoseconds; // steady_clock is the timer's clock here
    timer_.wakeAt(std::chrono::duration_cast<nanoseconds>(when.time_since_epoch()).count());
}

void SerialLine::armReplyTimer()
{
    if (collector_.isEmpty())
        wakeAt(deadline_);
    else
        wakeAt(std::min(lastActivity_ + frameGap_,
                        deadline_ + settings_.wire.characters(current_.replyLength)));
}

void SerialLine::bytesCame()
{
    const QByteArray bytes = port_->readAll();
    if (bytes.isEmpty())
        return;
    lastActivity_ = Clock::now();
    wireTime_ += std::chrono::round<Micros>(settings_.wire.characters(bytes.size()));
    switch (state_) {
    case State::closed:
        break;
    case State::idle:
    case State::awaitingTurnaround:
        flushLateBytes(bytes);
        break;
    case State::silence:
        flushLateBytes(bytes);
        beginSilence();
        break;
    case State::awaitingReply:
        if (current_.reception.firstByte == Clock::time_point())
            current_.reception.firstByte = lastActivity_;
        current_.reception.lastByte = lastActivity_;
        takeArrival(collector_.add(bytes));
        break;
    }
}

void SerialLine::takeArrival(Arrival arrival)
{
    reportStrays();
    switch (arrival) {
    case Arrival::incomplete:
        armReplyTimer();
        break;
    case Arrival::reply:
        finish(LineResult::reply);
        break;
    case Arrival::exception:
        finish(LineResult::exception);
        break;
    }
}

void SerialLine::timerDue()
{
    const Clock::time_point now = Clock::now();
    switch (state_) {
    case State::closed:
    case State::idle:
        break;
    case State::silence:
        beginSilence();
        break;
    case State::awaitingTurnaround:
        finish(LineResult::broadcast);
        break;
    case State::awaitingReply:
        if (bytesWait()) {
            wakeAt(now + rereadDelay);
        } else if (!collector_.isEmpty()) {
            takeArrival(collector_.endOfFrame());
        } else if (now >= deadline_) {
            const bool almost = collector_.timeIsUp() == Arrival::reply;
            finish(almost ? LineResult::reply : LineResult::timeout);
        } else {
            armReplyTimer();
        }
        break;
    }
}

void SerialLine::finish(LineResult result)
{
    timer_.cancel();
    state_ = State::idle;
    Reception& reception = current_.reception;
    reception.result = result;
    if (result == LineResult::reply || result == LineResult::exception) {
        reception.bytes = collector_.reply();
        if (hasGoodCrc(reception.bytes))
            settle(reception.bytes);
        else if (!unanswered_.isEmpty())
            unanswered_.removeLast(); // garbled, but it was the answer
    }
    // The next transaction may be started from within.
    const Transmission ended = current_;
    const Done done = std::move(done_);
    done_ = nullptr;
    done(ended);
}

void SerialLine::reportStrays()
{
    for (Stray& stray : collector_.takeStrays()) {
        stray.at = lastActivity_;
        if (stray.kind != StrayKind::echo)
            stray.answers = settle(stray.bytes);
        observer_.stray(stray);
    }
}

void SerialLine::flushLateBytes(const QByteArray& bytes)
{
    observer_.stray({StrayKind::late, bytes, lastActivity_, settle(bytes)});
}

// A frame came: it answers the oldest transmission that it fits. If that had been repeated, the
// controller's delay is known now, and the other replies cannot come later than that. Tells which
// transmission it was; 0 for none.
long long SerialLine::settle(const QByteArray& frame)
{
    if (!hasGoodCrc(frame))
        return 0;
    const Clock::time_point now = Clock::now();
    for (int i = 0; i < unanswered_.size(); ++i) {
        const Unanswered answered = unanswered_.at(i);
        if (answered.request.at(0) != frame.at(0) ||
            ((answered.request.at(1) ^ frame.at(1)) & 0x7F) != 0)
            continue;
        unanswered_.removeAt(i);
        const Clock::duration delay = now - answered.sentAt + blockwiseGap;
        for (Unanswered& other : unanswered_)
            if (other.request == answered.request)
                other.expires = std::min(other.expires, other.sentAt + delay);
        return answered.number;
    }
    return 0;
}

} // namespace dov417
