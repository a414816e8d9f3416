#include "simulator/line_server.h"

#include <QSocketNotifier>
#include <algorithm>
#include <deque>
#include <limits>

#include "line/wake_timer.h"
#include "simulator/frame_collector.h"
#include "simulator/line_port.h"
#include "simulator/wire_clock.h"

namespace dov417::simulator {

namespace {

constexpr std::int64_t nanosecondsPerMillisecond = 1000000;
constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

// Paced bytes are handed over in lumps of about this long, as serial adapters do.
constexpr std::int64_t lumpTime = nanosecondsPerMillisecond;

struct LaterDelete {
    void operator()(QObject* object) const
    {
        object->deleteLater();
    }
};
using Notifier = std::unique_ptr<QSocketNotifier, LaterDelete>;

} // namespace

class LineServer::Private {
public:
    Private(LineServer& server, Controller& theController, Faults& theFaults,
            const LineServerOptions& theOptions)
        : q(server), controller(theController), faults(theFaults), options(theOptions),
          inward(theOptions.line), outward(theOptions.line)
    {
    }

    bool open(QString* error);
    void close();

    LineServerCounters counters;
    LinePort port;

private:
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
        QString meaning;
    };

    void listenersChanged();
    void receive();
    void run();
    void collect(const Arrival& arrival);
    void serve(const QByteArray& frame, std::int64_t arrivedAt);
    void send(const QByteArray& request, const Answer& answer, std::int64_t arrivedAt);
    bool depart(std::int64_t now);
    std::int64_t nextTime(std::int64_t now) const;
    std::int64_t sinceOpen() const;
    void log(LineEvent::Kind kind, const QByteArray& bytes, const QString& meaning);

    LineServer& q;
    Controller& controller;
    Faults& faults;
    LineServerOptions options;

    std::int64_t openedAt = 0;
    WireClock inward;
    WireClock outward;
    FrameCollector collector;
    std::int64_t lastByteAt = 0;   // of what is in the collector
    std::int64_t silentAt = never; // when the unfinished frame in the collector is given up
    std::deque<Arrival> arrivals;
    std::deque<Departure> departures;
    std::unique_ptr<WakeTimer> timer;
    Notifier readable;
    Notifier listeners;
};

bool LineServer::Private::open(QString* error)
{
    close();
    const bool opened = options.device.isEmpty()
                            ? port.openPseudoTerminal(options.link, error)
                            : port.openDevice(options.device, options.line, error);
    if (!opened)
        return false;
    timer = std::make_unique<WakeTimer>([this]() { run(); });
    if (!timer->isValid()) {
        if (error)
            *error = QStringLiteral("the system gives no timer");
        close();
        return false;
    }
    openedAt = monotonicNow();
    inward = WireClock(options.line);
    outward = WireClock(options.line);
    readable.reset(new QSocketNotifier(port.descriptor(), QSocketNotifier::Read));
    QObject::connect(readable.get(), &QSocketNotifier::activated, &q, [this]() { receive(); });
    if (port.watchDescriptor() >= 0) {
        listeners.reset(new QSocketNotifier(port.watchDescriptor(), QSocketNotifier::Read));
        QObject::connect(listeners.get(), &QSocketNotifier::activated, &q,
                         [this]() { listenersChanged(); });
    }
    log(LineEvent::notice, QByteArray(), QStringLiteral("open: ") + port.name());
    return true;
}

void LineServer::Private::close()
{
    if (!port.isOpen())
        return;
    for (Notifier* notifier : {&readable, &listeners}) {
        if (*notifier)
            (*notifier)->setEnabled(false);
        notifier->reset();
    }
    timer.reset();
    port.close();
    arrivals.clear();
    departures.clear();
    collector.takeRest();
    silentAt = never;
    log(LineEvent::notice, QByteArray(), QStringLiteral("closed"));
}

void LineServer::Private::listenersChanged()
{
    const bool before = port.hasListener();
    if (port.updateListeners()) {
        // Replies to the one that went; nothing of the next one's requests has been read yet.
        departures.clear();
        log(LineEvent::notice, QByteArray(), QStringLiteral("the other side closed the line"));
    }
    if (port.hasListener() && !before)
        log(LineEvent::notice, QByteArray(), QStringLiteral("the other side opened the line"));
}

void LineServer::Private::receive()
{
    listenersChanged();
    if (!port.isOpen())
        return;
    bool lost = false;
    const QByteArray bytes = port.read(&lost);
    if (!bytes.isEmpty()) {
        counters.bytesReceived += static_cast<std::uint64_t>(bytes.size());
        const std::int64_t now = monotonicNow();
        Arrival arrival{now, now, bytes};
        if (options.paced) {
            arrival.at = inward.transmit(now, bytes.size());
            arrival.from = arrival.at - options.line.characters(bytes.size()).count();
        }
        arrivals.push_back(arrival);
        if (arrival.from < silentAt)
            silentAt = never; // the frame goes on; collect() sets the next limit
        run();
    }
    if (lost && port.isOpen()) {
        const QString name = port.name();
        close();
        emit q.lost(QStringLiteral("%1 is gone").arg(name));
    }
}

// Does everything that is due and sets the timer for what is not. Slots that see the signals may
// close the line.
void LineServer::Private::run()
{
    while (port.isOpen()) {
        const std::int64_t now = monotonicNow();
        if (silentAt <= now) {
            silentAt = never;
            serve(collector.takeRest(), lastByteAt);
        } else if (!arrivals.empty() && arrivals.front().at <= now) {
            const Arrival arrival = arrivals.front();
            arrivals.pop_front();
            collect(arrival);
        } else if (!depart(now)) {
            const std::int64_t next = nextTime(now);
            if (next == never)
                timer->cancel();
            else
                timer->wakeAt(next);
            return;
        }
    }
}

void LineServer::Private::collect(const Arrival& arrival)
{
    collector.append(arrival.bytes);
    lastByteAt = arrival.at;
    for (QByteArray frame; !(frame = collector.takeFrame()).isEmpty();) {
        serve(frame, arrival.at);
        if (!port.isOpen())
            return;
    }
    if (collector.isFlooded()) {
        ++counters.dropped;
        log(LineEvent::garbage, collector.takeRest(), QStringLiteral("bytes without a pause"));
    }
    const std::int64_t limit =
        arrival.at + std::max(options.line.interFrameDelay().count(),
                              options.leastSilenceMs * nanosecondsPerMillisecond);
    const bool goesOn = !arrivals.empty() && arrivals.front().from < limit;
    silentAt = collector.isEmpty() || goesOn ? never : limit;
}

void LineServer::Private::serve(const QByteArray& frame, std::int64_t arrivedAt)
{
    const Answer answer = controller.serve(frame);
    if (answer.outcome == Outcome::badFrame) {
        ++counters.dropped;
        log(LineEvent::garbage, frame, describe(answer));
        return;
    }
    ++counters.requests;
    log(LineEvent::received, frame, describe(answer));
    const std::int64_t opening = openedAt;
    emit q.served(answer);
    const bool sameLine = port.isOpen() && openedAt == opening;
    if (!answer.reply.isEmpty() && sameLine)
        send(frame, answer, arrivedAt);
}

void LineServer::Private::send(const QByteArray& request, const Answer& answer,
                               std::int64_t arrivedAt)
{
    const Transmission transmission = faults.apply(request, answer.reply);
    const QString meaning = replyText(answer, transmission.faults);
    if (!transmission.echo.isEmpty())
        counters.bytesSent += static_cast<std::uint64_t>(port.write(transmission.echo));
    if (transmission.pieces.empty()) {
        log(LineEvent::withheld, answer.reply, meaning);
        return;
    }
    std::int64_t at = arrivedAt + options.turnaroundMs * nanosecondsPerMillisecond;
    if (options.paced)
        at += options.line.interFrameDelay().count();
    for (const Piece& piece : transmission.pieces) {
        at += piece.delayMs * nanosecondsPerMillisecond;
        Departure departure;
        departure.at = at;
        departure.bytes = piece.bytes;
        departure.endsReply = false;
        departures.push_back(departure);
        if (options.paced)
            at += options.line.characters(piece.bytes.size()).count();
    }
    Departure& last = departures.back();
    last.endsReply = true;
    last.reply = transmission.bytes();
    last.meaning = meaning;
}

// Moves what may leave now. False when nothing did.
bool LineServer::Private::depart(std::int64_t now)
{
    if (departures.empty() || departures.front().at > now)
        return false;
    Departure& departure = departures.front();
    if (!departure.begun) {
        departure.begun = true;
        if (departure.endsReply)
            ++counters.replies;
        if (options.paced)
            outward.transmit(departure.at, departure.bytes.size());
    }
    int due = static_cast<int>(departure.bytes.size());
    if (options.paced) {
        due = departure.sent;
        while (due < departure.bytes.size() && outward.passedAt(due) <= now)
            ++due;
    }
    if (due == departure.sent)
        return false;
    // Nobody there: the bytes pass unheard, as on a line.
    if (port.hasListener()) {
        const QByteArray lump = departure.bytes.mid(departure.sent, due - departure.sent);
        counters.bytesSent += static_cast<std::uint64_t>(port.write(lump));
    }
    departure.sent = due;
    if (due < departure.bytes.size())
        return true;
    const Departure finished = departure;
    departures.pop_front();
    if (finished.endsReply) {
        if (port.hasListener()) {
            log(LineEvent::sent, finished.reply, finished.meaning);
        } else {
            ++counters.unheard;
            log(LineEvent::withheld, finished.reply,
                finished.meaning + QStringLiteral(", unheard"));
        }
    }
    return true;
}

std::int64_t LineServer::Private::nextTime(std::int64_t now) const
{
    std::int64_t next = silentAt;
    if (!arrivals.empty())
        next = std::min(next, arrivals.front().at);
    if (!departures.empty()) {
        const Departure& departure = departures.front();
        std::int64_t at = departure.at;
        if (departure.begun) { // paced; the last byte exactly, those before it in lumps
            const std::int64_t end = outward.passedAt(departure.bytes.size() - 1);
            at = std::min(end, std::max(outward.passedAt(departure.sent), now + lumpTime));
        }
        next = std::min(next, at);
    }
    return next;
}

void LineServer::Private::log(LineEvent::Kind kind, const QByteArray& bytes, const QString& meaning)
{
    LineEvent event;
    event.kind = kind;
    event.timeNs = monotonicNow() - openedAt;
    event.bytes = bytes;
    event.meaning = meaning;
    emit q.logged(event);
}

LineServer::LineServer(Controller& controller, Faults& faults, const LineServerOptions& options,
                       QObject* parent)
    : QObject(parent), d(std::make_unique<Private>(*this, controller, faults, options))
{
    qRegisterMetaType<simulator::LineEvent>();
    qRegisterMetaType<simulator::Answer>();
}

LineServer::~LineServer()
{
    // Nobody wants to hear about it from a half destroyed object.
    blockSignals(true);
    d->close();
}

bool LineServer::open(QString* error)
{
    return d->open(error);
}

void LineServer::close()
{
    d->close();
}

bool LineServer::isOpen() const
{
    return d->port.isOpen();
}

QString LineServer::portName() const
{
    return d->port.name();
}

const LineServerCounters& LineServer::counters() const
{
    return d->counters;
}

} // namespace dov417::simulator
