#include "panel/desk/line_worker.h"

#include <functional>
#include <utility>

#include "link/network_address.h"

namespace dov417 {

namespace {

constexpr int pulsesPerStatistics = 2;

std::set<int> stationsOf(const std::vector<Address>& addresses)
{
    std::set<int> stations;
    for (const Address& address : addresses)
        stations.insert(address.station);
    return stations;
}

// Once, where the disk is full or the stick was pulled: nobody is to look there for what happened.
void followLog(Session& session, const LiveLine& line, const QString& log,
               const std::function<void(const QString&)>& tell)
{
    auto* const timer = new QTimer(&session); // which ends before the line
    QObject::connect(timer, &QTimer::timeout, &session, [timer, &line, log, tell]() {
        if (!line.hasLostLog())
            return;
        timer->stop();
        tell(LineWorker::tr("the log %1 could not be written: it is not complete").arg(log));
    });
    timer->start(LineWorker::pulse);
}

// Screens come on a beat: a pause from the last batch on would come to fewer of them, as what is
// told is seldom there at its end.
std::chrono::milliseconds untilNextScreen()
{
    using std::chrono::milliseconds;
    const auto since = Clock::now().time_since_epoch() % LineWorker::screenPause;
    return std::chrono::duration_cast<milliseconds>(LineWorker::screenPause - since) +
           milliseconds(1); // never before the beat
}

} // namespace

LineWorker::LineWorker(const Library& library)
    : library_(library), screenTimer_(this), pulseTimer_(this), recipes_(this)
{
    // For connections that are queued, to the window's thread.
    qRegisterMetaType<LineBatch>("dov417::LineBatch");
    screenTimer_.setSingleShot(true);
    screenTimer_.setTimerType(Qt::PreciseTimer);
    pulseTimer_.setInterval(pulse);
    connect(&screenTimer_, &QTimer::timeout, this, [this]() { collected(); });
    connect(&pulseTimer_, &QTimer::timeout, this, [this]() { sendPulse(); });
    own_.onReport([this]() {
        hasNews_ = true;
        collected();
    });
}

LineWorker::~LineWorker() = default;

// ---- the line -------------------------------------------------------------------------------

void LineWorker::open(const LineOrder& order)
{
    close();
    beginLine(order.line, order.generation, order.watched.size());
    state_.isSimulated = order.setup.simulated;
    state_.isUnlocked = order.setup.simulated;
    state_.port = order.setup.port;
    pulseTimer_.start();
    try {
        makeLine(order);
    } catch (const Failure& failure) {
        refuse(failure.what());
    }
}

void LineWorker::beginLine(int line, int generation, std::size_t watched)
{
    line_ = line;
    collector_.beginLine(line);
    collector_.beginGeneration(generation, watched);
    state_ = LineState();
    cycles_ = 0;
    statistics_.reset(); // of the line before
    pulses_ = 0;
}

void LineWorker::leave(int line, int generation, std::size_t watched)
{
    close();
    beginLine(line, generation, watched);
    hasNews_ = true;
    collected();
}

void LineWorker::makeLine(const LineOrder& order)
{
    live_ = std::make_unique<LiveLine>(library_, order.setup, stationsOf(order.watched),
                                       order.setup.simulated ? own_.linked(order.controller)
                                                             : order.controller);
    own_.follow(live_->controller());
    const LineSettings& settings = live_->settings();
    state_.port = settings.device.toStdString();
    if (!parseNetworkAddress(state_.port))
        state_.wire = toText(settings.wire);
    session_ = std::make_unique<Session>(library_, sessionSettings(order.setup));
    live_->record(*session_);
    follow();
    if (!order.setup.log.empty())
        followLog(*session_, *live_, QString::fromStdString(order.setup.log),
                  [this](const QString& text) { note(text.toStdString()); });
    const Result opened = session_->open(settings);
    if (!opened.accepted) {
        refuse(opened.reason);
        return;
    }
    state_.phase = session_->statistics().portIsOpen ? LinePhase::open : LinePhase::opening;
    plan(order.watched);
}

void LineWorker::follow()
{
    connect(session_.get(), &Session::changed, this, [this](const ViewChanges& changes) {
        for (const ViewChange& change : changes)
            collector_.add(change.view);
        collected();
    });
    connect(session_.get(), &Session::cycleEnded, this, [this](long long cycles) {
        const Clock::time_point now = Clock::now();
        state_.cycle = std::chrono::duration_cast<Micros>(now - cycleBegan_);
        cycleBegan_ = now;
        cycles_ = cycles;
    });
    const auto passed = [this](Passed::What what) {
        return [this, what](const Transmission& transmission) {
            Passed each;
            each.what = what;
            each.at = Clock::now();
            each.transmission = transmission;
            each.cycle = cycles_;
            collector_.add(std::move(each));
            collected();
        };
    };
    connect(session_.get(), &Session::transmissionBegan, this, passed(Passed::What::began));
    connect(session_.get(), &Session::transmissionEnded, this, passed(Passed::What::ended));
    connect(session_.get(), &Session::strayCame, this, [this](const Stray& stray) {
        Passed each;
        each.what = Passed::What::stray;
        each.at = stray.at;
        each.stray = stray;
        collector_.add(std::move(each));
        collected();
    });
    connect(session_.get(), &Session::noticed, this,
            [this](const std::string& text) { note(text); });
    connect(session_.get(), &Session::portChanged, this,
            [this](bool open, const std::string& message) { portChanged(open, message); });
}

void LineWorker::portChanged(bool open, const std::string& message)
{
    state_.phase = open ? LinePhase::open : LinePhase::away;
    state_.reason = open ? std::string() : message;
    note(message);
    if (!open)
        endWithPort(message);
}

// What would go on with the port may go to whatever is at its end then, half of it, and with nobody
// there to see it. So may what is clicked then.
void LineWorker::endWithPort(const std::string& message)
{
    if (session_->writesUnderWay() > 0 || recipes_.isUnderWay())
        session_->endWithPort(message);
    if (!state_.isUnlocked || state_.isSimulated)
        return;
    state_.isUnlocked = false;
    note(tr("writing is locked again").toStdString());
}

void LineWorker::refuse(const std::string& reason)
{
    session_.reset();
    own_.follow(nullptr);
    live_.reset();
    state_.phase = LinePhase::refused;
    state_.reason = reason;
    hasNews_ = true;
    collected();
}

void LineWorker::close()
{
    const std::string why = tr("the line was closed").toStdString();
    if (session_)
        session_->close(why); // tells what becomes of its writes
    recipes_.end(why);
    state(); // what it has not been told of by then
    session_.reset();
    own_.follow(nullptr);
    live_.reset();
    state_.phase = LinePhase::closed;
    hasNews_ = true;
    collected();
}

void LineWorker::finish()
{
    if (!session_) {
        emit finished();
        return;
    }
    session_->finish([this]() {
        // From its own event: it is not destroyed while it tells.
        QTimer::singleShot(0, this, [this]() {
            close();
            emit finished();
        });
    });
}

// ---- what is asked for ----------------------------------------------------------------------

void LineWorker::watch(int generation, const std::vector<Address>& addresses)
{
    collector_.beginGeneration(generation, addresses.size());
    plan(addresses);
    hasNews_ = true;
    collected();
}

void LineWorker::plan(const std::vector<Address>& addresses)
{
    if (!session_)
        return;
    cycleBegan_ = Clock::now();
    const Result result = session_->watch(addresses);
    if (!result.accepted)
        note(result.reason);
    // What is known of addresses that stay is no change.
    for (const View& view : session_->views())
        collector_.add(view);
}

void LineWorker::setConditions(int line, const simulator::Conditions& conditions)
{
    if (line == line_)
        own_.setConditions(conditions);
}

// ---- telling the window ---------------------------------------------------------------------

void LineWorker::note(const std::string& text)
{
    Passed each;
    each.at = Clock::now();
    each.text = text;
    collector_.add(std::move(each));
    collected();
}

void LineWorker::batchSeen()
{
    isSeen_ = true;
    collected();
}

void LineWorker::sendPulse()
{
    hasNews_ = true;
    if (isSeen_ && session_) {
        for (const View& view : session_->views())
            collector_.add(view);
        if (++pulses_ % pulsesPerStatistics == 0)
            statistics_ = std::make_shared<const LinkStatistics>(session_->statistics());
        own_.askReport();
    }
    collected();
}

// Whenever there may be something to tell.
void LineWorker::collected()
{
    if (isSeen_ && !screenTimer_.isActive() && (hasNews_ || !collector_.isEmpty()))
        send();
}

void LineWorker::send()
{
    LineBatch batch = collector_.take();
    batch.made = Clock::now();
    batch.state = state();
    batch.statistics = std::move(statistics_);
    statistics_.reset();
    batch.controller = own_.takeReport();
    hasNews_ = false;
    isSeen_ = false;
    screenTimer_.start(untilNextScreen());
    emit batchReady(batch);
}

LineState LineWorker::state()
{
    state_.cycles = cycles_;
    state_.writesUnderWay = session_ ? session_->writesUnderWay() : 0;
    if (session_)
        state_.doubts = session_->doubts();
    state_.isGood = !session_ || session_->statistics().linkIsGood;
    return state_;
}

} // namespace dov417
