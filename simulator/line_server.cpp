#include "simulator/line_server.h"

#include <QSocketNotifier>
#include <algorithm>
#include <deque>
#include <limits>

#include "line/failure.h"
#include "line/terminal_speed.h"
#include "line/wake_timer.h"
#include "simulator/frame_collector.h"
#include "simulator/line_port.h"
#include "simulator/other_speed.h"
#include "simulator/wire_clock.h"

namespace dov417::simulator {

namespace {

constexpr std::int64_t nanosecondsPerMillisecond = 1000000;
constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

// Paced bytes are handed over in lumps of about this long, as serial adapters do.
constexpr std::int64_t lumpTime = nanosecondsPerMillisecond;

} // namespace

class LineServer::Private {
public:
    Private(LineServer& server, Controller& controller, Faults& faults,
            const LineServerOptions& options)
        : options_(options), server_(server), controller_(controller), faults_(faults),
          inward_(options.line), outward_(options.line)
    {
    }

    void open();
    void close();
    void forget();

    LineServerCounters counters_;
    LinePort port_;
    LineServerOptions options_;
    bool isOn_ = true;

private:
    struct LaterDelete {
        void operator()(QObject* object) const
        {
            object->deleteLater();
        }
    };
    using Notifier = std::unique_ptr<QSocketNotifier, LaterDelete>;

    // Bytes on their way in: on a paced line they have arrived only when their time has passed.
    struct Arrival {
        std::int64_t from;
        std::int64_t at;
        QByteArray bytes;
    };
    // A piece of a reply on its way out.
    struct Departure {
        std::int64_t at; // the first byte may leave
        QByteArray bytes;
        int sent = 0;
        bool begun = false;
        bool endsReply = true;
        QByteArray reply; // all of it, with the last piece
        std::string meaning;
    };

    void listenersChanged();
    SerialFormat lineOfTheOther() const;
    void receive();
    void run();
    void collect(const Arrival& arrival);
    void serve(const QByteArray& frame, std::int64_t arrivedAt);
    void send(const QByteArray& request, const Answer& answer, std::int64_t arrivedAt);
    bool depart(std::int64_t now);
    std::int64_t nextTime(std::int64_t now) const;
    void log(LineEvent::Kind kind, const QByteArray& bytes, const std::string& meaning);

    LineServer& server_;
    Controller& controller_;
    Faults& faults_;

    std::int64_t openedAt_ = 0;
    WireClock inward_;
    WireClock outward_;
    FrameCollector collector_;
    std::int64_t lastByteAt_ = 0;   // of what is in the collector
    std::int64_t silentAt_ = never; // when the unfinished frame in the collector is given up
    std::deque<Arrival> arrivals_;
    std::deque<Departure> departures_;
    std::unique_ptr<WakeTimer> timer_;
    Notifier readable_;
    Notifier listeners_;
};

void LineServer::Private::open()
{
    close();
    if (options_.device.empty())
        port_.openPseudoTerminal(options_.link);
    else
        port_.openDevice(options_.device, options_.line);
    timer_ = std::make_unique<WakeTimer>([this]() { run(); });
    if (!timer_->isValid()) {
        close();
        throw Failure("the system gives no timer");
    }
    openedAt_ = monotonicNow();
    inward_ = WireClock(options_.line);
    outward_ = WireClock(options_.line);
    readable_.reset(new QSocketNotifier(port_.descriptor(), QSocketNotifier::Read));
    QObject::connect(readable_.get(), &QSocketNotifier::activated, &server_,
                     [this]() { receive(); });
    if (port_.watchDescriptor() >= 0) {
        listeners_.reset(new QSocketNotifier(port_.watchDescriptor(), QSocketNotifier::Read));
        QObject::connect(listeners_.get(), &QSocketNotifier::activated, &server_,
                         [this]() { listenersChanged(); });
    }
    log(LineEvent::notice, QByteArray(), "open: " + port_.name());
}

void LineServer::Private::close()
{
    if (!port_.isOpen())
        return;
    for (Notifier* notifier : {&readable_, &listeners_}) {
        if (*notifier)
            (*notifier)->setEnabled(false);
        notifier->reset();
    }
    timer_.reset();
    port_.close();
    forget();
    log(LineEvent::notice, QByteArray(), "closed");
}

// What is on its way, in or out.
void LineServer::Private::forget()
{
    arrivals_.clear();
    departures_.clear();
    collector_.takeRest();
    silentAt_ = never;
}

void LineServer::Private::listenersChanged()
{
    const bool before = port_.hasListener();
    if (port_.updateListeners()) {
        // They answer the master that closed the line; no request of the next one has been read
        // yet.
        departures_.clear();
        log(LineEvent::notice, QByteArray(), "the other side closed the line");
    }
    if (port_.hasListener() && !before)
        log(LineEvent::notice, QByteArray(), "the other side opened the line");
}

// The present setting: the master must not change it while bytes pass.
SerialFormat LineServer::Private::lineOfTheOther() const
{
    SerialFormat other = options_.line;
    const int speed =
        options_.ownSpeedOnly && options_.device.empty() ? terminalSpeed(port_.descriptor()) : 0;
    if (speed > 0)
        other.baudRate = speed;
    return other;
}

void LineServer::Private::receive()
{
    listenersChanged();
    if (!port_.isOpen())
        return;
    bool lost = false;
    QByteArray bytes = port_.read(&lost);
    const SerialFormat other = lineOfTheOther();
    if (other.baudRate != options_.line.baudRate)
        bytes = heardAs(options_.line, bytes, other);
    counters_.bytesReceived += static_cast<std::uint64_t>(bytes.size());
    if (!bytes.isEmpty() && isOn_) {
        const std::int64_t now = monotonicNow();
        Arrival arrival{now, now, bytes};
        if (options_.paced) {
            arrival.at = inward_.transmit(now, bytes.size());
            arrival.from = arrival.at - options_.line.characters(bytes.size()).count();
        }
        arrivals_.push_back(arrival);
        if (arrival.from < silentAt_)
            silentAt_ = never; // the frame goes on; collect() sets the next limit
        run();
    }
    if (lost && port_.isOpen()) {
        const std::string name = port_.name();
        close();
        emit server_.lost(QString::fromStdString("port " + name + " is gone"));
    }
}

// Does everything that is due and sets the timer for what is not. Slots that see the signals may
// close the line.
void LineServer::Private::run()
{
    while (port_.isOpen()) {
        const std::int64_t now = monotonicNow();
        if (silentAt_ <= now) {
            silentAt_ = never;
            serve(collector_.takeRest(), lastByteAt_);
        } else if (!arrivals_.empty() && arrivals_.front().at <= now) {
            const Arrival arrival = arrivals_.front();
            arrivals_.pop_front();
            collect(arrival);
        } else if (!depart(now)) {
            const std::int64_t next = nextTime(now);
            if (next == never)
                timer_->cancel();
            else
                timer_->wakeAt(next);
            return;
        }
    }
}

void LineServer::Private::collect(const Arrival& arrival)
{
    collector_.append(arrival.bytes);
    lastByteAt_ = arrival.at;
    for (QByteArray frame; !(frame = collector_.takeFrame()).isEmpty();) {
        serve(frame, arrival.at);
        if (!port_.isOpen())
            return;
    }
    if (collector_.isFlooded()) {
        ++counters_.dropped;
        log(LineEvent::garbage, collector_.takeRest(), "bytes without a pause");
    }
    const std::int64_t limit =
        arrival.at + std::max(options_.line.interFrameDelay().count(),
                              options_.minSilenceMs * nanosecondsPerMillisecond);
    const bool goesOn = !arrivals_.empty() && arrivals_.front().from < limit;
    silentAt_ = collector_.isEmpty() || goesOn ? never : limit;
}

void LineServer::Private::serve(const QByteArray& frame, std::int64_t arrivedAt)
{
    const Answer answer = controller_.serve(frame);
    if (answer.outcome == Outcome::badFrame) {
        ++counters_.dropped;
        log(LineEvent::garbage, frame, describe(answer));
        return;
    }
    ++counters_.requests;
    log(LineEvent::received, frame, describe(answer));
    const std::int64_t opening = openedAt_;
    emit server_.served(answer);
    const bool sameLine = port_.isOpen() && openedAt_ == opening;
    if (!answer.reply.isEmpty() && sameLine)
        send(frame, answer, arrivedAt);
}

void LineServer::Private::send(const QByteArray& request, const Answer& answer,
                               std::int64_t arrivedAt)
{
    const Transmission transmission = faults_.apply(request, answer.reply);
    const std::string meaning = replyText(answer, transmission.faults);
    if (!transmission.echo.isEmpty())
        counters_.bytesSent += static_cast<std::uint64_t>(port_.write(transmission.echo));
    if (transmission.pieces.empty()) {
        log(LineEvent::withheld, answer.reply, meaning);
        return;
    }
    std::int64_t at = arrivedAt + options_.responseTimeMs * nanosecondsPerMillisecond;
    if (options_.paced)
        at += options_.line.interFrameDelay().count();
    for (const Piece& piece : transmission.pieces) {
        at += piece.delayMs * nanosecondsPerMillisecond;
        Departure departure;
        departure.at = at;
        departure.bytes = piece.bytes;
        departure.endsReply = false;
        departures_.push_back(departure);
        if (options_.paced)
            at += options_.line.characters(piece.bytes.size()).count();
    }
    Departure& last = departures_.back();
    last.endsReply = true;
    last.reply = transmission.bytes();
    last.meaning = meaning;
}

// Moves what may leave now. False when nothing did.
bool LineServer::Private::depart(std::int64_t now)
{
    if (departures_.empty() || departures_.front().at > now)
        return false;
    Departure& departure = departures_.front();
    if (!departure.begun) {
        departure.begun = true;
        if (departure.endsReply)
            ++counters_.replies;
        if (options_.paced)
            outward_.transmit(departure.at, departure.bytes.size());
    }
    int due = static_cast<int>(departure.bytes.size());
    if (options_.paced) {
        due = departure.sent;
        while (due < departure.bytes.size() && outward_.passedAt(due) <= now)
            ++due;
    }
    if (due == departure.sent)
        return false;
    // Nobody there: the bytes pass unheard, as on a line.
    if (port_.hasListener()) {
        QByteArray lump = departure.bytes.mid(departure.sent, due - departure.sent);
        const SerialFormat other = lineOfTheOther();
        if (other.baudRate != options_.line.baudRate)
            lump = heardAs(other, lump, options_.line);
        counters_.bytesSent += static_cast<std::uint64_t>(port_.write(lump));
    }
    departure.sent = due;
    if (due < departure.bytes.size())
        return true;
    const Departure finished = departure;
    departures_.pop_front();
    if (finished.endsReply) {
        if (port_.hasListener()) {
            log(LineEvent::sent, finished.reply, finished.meaning);
        } else {
            ++counters_.unheard;
            log(LineEvent::withheld, finished.reply, finished.meaning + ", unheard");
        }
    }
    return true;
}

std::int64_t LineServer::Private::nextTime(std::int64_t now) const
{
    std::int64_t next = silentAt_;
    if (!arrivals_.empty())
        next = std::min(next, arrivals_.front().at);
    if (!departures_.empty()) {
        const Departure& departure = departures_.front();
        std::int64_t at = departure.at;
        if (departure.begun) { // paced; the last byte exactly, those before it in lumps
            const std::int64_t end = outward_.passedAt(departure.bytes.size() - 1);
            at = std::min(end, std::max(outward_.passedAt(departure.sent), now + lumpTime));
        }
        next = std::min(next, at);
    }
    return next;
}

void LineServer::Private::log(LineEvent::Kind kind, const QByteArray& bytes,
                              const std::string& meaning)
{
    LineEvent event;
    event.kind = kind;
    event.timeNs = monotonicNow() - openedAt_;
    event.bytes = bytes;
    event.meaning = meaning;
    emit server_.logged(event);
}

LineServer::LineServer(Controller& controller, Faults& faults, const LineServerOptions& options,
                       QObject* parent)
    : QObject(parent), d_(std::make_unique<Private>(*this, controller, faults, options))
{
    qRegisterMetaType<simulator::LineEvent>();
    qRegisterMetaType<simulator::Answer>();
}

LineServer::~LineServer()
{
    // Nobody wants to hear about it from a half destroyed object.
    blockSignals(true);
    d_->close();
}

void LineServer::open()
{
    d_->open();
}

void LineServer::close()
{
    d_->close();
}

bool LineServer::isOpen() const
{
    return d_->port_.isOpen();
}

void LineServer::setResponseTime(int milliseconds)
{
    d_->options_.responseTimeMs = milliseconds;
}

void LineServer::setOn(bool isOn)
{
    d_->isOn_ = isOn;
    if (!isOn)
        d_->forget();
}

std::string LineServer::portName() const
{
    return d_->port_.name();
}

const LineServerCounters& LineServer::counters() const
{
    return d_->counters_;
}

} // namespace dov417::simulator
