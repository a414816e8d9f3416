#include "session/session.h"

#include <QMetaType>
#include <utility>

#include "session/driver_keys.h"
#include "text/address_values.h"

namespace dov417 {

namespace {

const char* const lineIsClosed = "the line is closed";
const char* const lineIsLeft = "the line is being left";

} // namespace

Session::Session(const Library& library, const SessionSettings& settings)
    : library_(library), claim_(library), settings_(settings),
      tellings_([this](const std::string& what) { listenerThrew(what); }), views_(library),
      requests_(
          library, tellings_,
          [this](const Address& address, int step) { views_.countWrite(address, step); },
          [this](int station) { return runner_.isDead(station); }),
      recipe_(library, tellings_),
      runner_(library,
              LinkEvents{[this](const Transmission& transmission) { began(transmission); },
                         [this](const Transmission& transmission) { ended(transmission); },
                         [this](const Transmission& marker) { tellEnded(marker); },
                         [this](const Transmission& part) { tellEnded(part); },
                         [this](const Stray& stray) {
                             tellings_.add([this, stray]() { emit strayCame(stray); });
                         },
                         [this](const std::string& text) {
                             tellings_.add([this, text]() { emit noticed(text); });
                         },
                         [this]() { doubt(); },
                         [this](bool open, const std::string& message) { portWas(open, message); }},
              [this](const Request& request, int word) { return mayCut(request, word); })
{
    // For connections that are queued, to another thread.
    qRegisterMetaType<ViewChanges>("dov417::ViewChanges");
    qRegisterMetaType<Transmission>("dov417::Transmission");
    qRegisterMetaType<Stray>("dov417::Stray");
    qRegisterMetaType<Reason>("dov417::Reason");
    qRegisterMetaType<std::string>("std::string");
    startDriver();
}

Session::~Session()
{
    // The driver forgets our memory.
    int result = 0;
    library_.intf_initProperty(nullptr, 0, nullptr, &result, nullptr, nullptr);
}

// ---- the line and the driver ----------------------------------------------------------------

Result Session::open(const LineSettings& line)
{
    const char* const reason = "another line is opened";
    close(reason);
    if (isOpen())
        end(reason); // opened by a listener that has just been told: this call is the later one
    views_.forget();
    tellChanges();
    return runner_.open(line);
}

void Session::close(const std::string& reason)
{
    end(reason);
    tellings_.tell();
}

void Session::finish(std::function<void()> done)
{
    runner_.finish([this, done]() { tellings_.add(done); });
}

void Session::finishAfterCycles(long long cycles, std::function<void()> done)
{
    lastCycle_ = cycles_ + cycles;
    afterLastCycle_ = std::move(done);
}

void Session::end(const std::string& reason)
{
    restartDriver(reason);
    runner_.close();
    views_.makeOld();
    tellChanges();
}

bool Session::isOpen() const
{
    return runner_.isOpen();
}

const SessionSettings& Session::settings() const
{
    return settings_;
}

void Session::setSettings(const SessionSettings& settings)
{
    settings_ = settings;
    endRequests("the settings were changed");
}

void Session::endRequests(const std::string& reason)
{
    restartDriver(reason);
    views_.makeOld();
    tellChanges();
    tellings_.tell();
    runner_.wake();
}

void Session::endWithPort(const std::string& message)
{
    const char* const unknown =
        "; whether the controller has taken what was on its way is not known";
    endRequests(message + (writesUnderWay() > 0 ? unknown : ""));
}

void Session::startDriver()
{
    const std::string property = std::to_string(driverTag) + "#0#0#" +
                                 std::to_string(settings_.retries) + "#" +
                                 std::to_string(settings_.gap);
    int result = 0;
    library_.intf_initProperty(recipe_.block(), 0, recipe_.buffer(), &result, property.c_str(),
                               recipe_.mutex());
}

// Nothing that was meant for one controller may go out to another. The place that a recipe has
// reached survives initialisation.
void Session::restartDriver(const std::string& reason)
{
    ++generation_;
    views_.driverStartedAnew();
    requests_.endAll(reason, [this](int kind) { return runner_.takenText(kind); });
    recipe_.end(reason);
    startDriver();
    library_.driver->recipeIndex = 0;
    planViews();
}

// ---- watching -------------------------------------------------------------------------------

Result Session::watch(const std::vector<Address>& addresses)
{
    Result result;
    for (const Address& address : addresses)
        if (result.accepted)
            result = usable(library_, address, Access::read);
    watched_ = result.accepted ? addresses : std::vector<Address>();
    wholeValues_ = WholeValues(watched_);
    views_.replace(watched_, requests_.writtenAddresses());
    planViews();
    feed();
    runner_.wake();
    return result;
}

// Under way, also while the port is away: it is sent again when it is back. A frame on the line
// that the driver has forgotten, started anew, is nobody's.
bool Session::driverHasAFrame() const
{
    return !library_.driver->sendList.isEmpty();
}

void Session::planViews()
{
    QList<KEY_ADDRESS> keys;
    for (const Address& address : watched_)
        for (const Address& piece : watchPieces(address))
            keys.append(keyOf(piece));
    plannedRequests_ = library_.intf_addrMerge(keys);
    requestsThisCycle_ = 0;
    isOfPlanBefore_ = driverHasAFrame();
    cycleStart_ = Clock::now();
}

const std::vector<View>& Session::views() const
{
    return views_.all();
}

void Session::tellChanges()
{
    if (views_.haveChanged())
        tellings_.add([this]() {
            const ViewChanges changes = views_.takeChanges();
            if (!changes.empty())
                emit changed(changes);
        });
}

void Session::setCycleInterval(std::chrono::milliseconds interval)
{
    cycleInterval_ = interval;
}

// ---- writing, single reads, recipes ---------------------------------------------------------

Result Session::refusal() const
{
    return !isOpen()               ? Result::refused(lineIsClosed)
           : runner_.isFinishing() ? Result::refused(lineIsLeft)
                                   : Result();
}

Result Session::refusal(const Address& address, Access access, bool isOnePiece) const
{
    Result result = refusal();
    if (!result.accepted)
        return result;
    return isOnePiece ? usable(library_, address, access)
                      : Result::refused("the driver would not make one request of it");
}

void Session::write(const Write& piece, Done done)
{
    const Result result = refusal(piece.address, Access::write, isOnePiece(piece, settings_.gap));
    if (!result.accepted) {
        tellings_.addDone(std::move(done), result);
        return;
    }
    requests_.write(piece, std::move(done));
    feed();
}

void Session::readOnce(const Address& words, Done done)
{
    const Result result = refusal(words, Access::read, isOneReadPiece(words, settings_.gap));
    if (!result.accepted) {
        tellings_.addDone(std::move(done), result);
        return;
    }
    requests_.readOnce(words, std::move(done));
    feed();
}

void Session::feed()
{
    const bool fed = requests_.feed(cycleUnderWay());
    tellChanges();
    if (fed)
        runner_.wake();
}

std::size_t Session::writesUnderWay() const
{
    return requests_.writes();
}

void Session::transferRecipe(const RecipeLayout& layout, RecipeDirection direction,
                             const RecipeWords& words, RecipeDone done)
{
    if (const Result result = refusal(); !result.accepted) {
        tellings_.addDone(std::move(done), result, RecipeWords());
        return;
    }
    recipe_.start(layout, direction, words, std::move(done));
    if (!driverHasAFrame() && recipe_.beginRound())
        runner_.wake();
}

std::size_t Session::recipeWordsMoved() const
{
    return recipe_.wordsMoved();
}

std::vector<unsigned char> Session::cachedBytes(const Address& address) const
{
    if (address.length < 1)
        return {};
    std::vector<unsigned char> bytes(static_cast<std::size_t>(byteCount(address)));
    library_.intf_getData(address.station, QString::fromStdString(address.regName), address.first,
                          address.length, bytes.data());
    return bytes;
}

void Session::tellAll()
{
    tellings_.tell();
}

const LinkStatistics& Session::statistics()
{
    return runner_.statistics();
}

} // namespace dov417
