#include "session/session.h"

#include <algorithm>
#include <cassert>
#include <stdexcept>

#include "line/failure.h"
#include "text/values.h"

namespace dov417 {

namespace {

constexpr int tag = 1;                    // first property field: names this link in recipe records
constexpr int cyclicKind = 4;             // what planned reads carry
constexpr int firstTicket = 1000;         // above every kind that the driver itself uses
constexpr std::size_t mostHandedIn = 200; // far below the 513 at which the driver drops writes
constexpr int doubleWordLength = 2;
constexpr int bitItems = -1;

constexpr std::size_t downloadFlag = 60115;
constexpr std::size_t uploadFlag = 60116;
constexpr std::size_t blockSize = uploadFlag + 1;
constexpr std::size_t mostRecipeWords = 65536;

constexpr int functionIndex = 1;

constexpr int queued = 1; // result of intf_setData() and intf_addConditionRead()

Session* current = nullptr; // the driver's callback carries no pointer of ours

bool isReadFrame(const FRAME_PRO& frame)
{
    return frame.frame[functionIndex] == 1 || frame.frame[functionIndex] == 3;
}

KEY_ADDRESS keyOf(const Address& address)
{
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = address.station;
    key.regName = QString::fromStdString(address.regName);
    key.address = address.first;
    key.length = address.length;
    key.bitFlag = address.width == Width::bit ? bitItems : 0;
    return key;
}

} // namespace

Session::Session(const Library& library, const SessionSettings& settings, const LineSettings& line,
                 const SessionEvents& events, const RunnerEvents& runnerEvents)
    : library_(library), settings_(settings), events_(events), nextTicket_(firstTicket),
      block_(blockSize), recipeWords_(mostRecipeWords),
      runner_(library, line, [this, runnerEvents]() {
          RunnerEvents own = runnerEvents;
          own.port = [this, further = runnerEvents.port](bool open, const std::string& message) {
              cycleStart_ = Clock::now();
              if (further)
                  further(open, message);
          };
          own.outcome = [this, further = runnerEvents.outcome](const Outcome& event) {
              outcome(event);
              if (further)
                  further(event);
          };
          return own;
      }())
{
    if (current != nullptr)
        throw std::logic_error("the library has one driver: one session at a time");
    current = this;
    library_.intf_setAddrValueChangeCallBack(&Session::valueChanged);
    initialise();
}

Session::~Session()
{
    library_.intf_setAddrValueChangeCallBack(nullptr);
    // The driver forgets our memory.
    int result = 0;
    library_.intf_initProperty(nullptr, 0, nullptr, &result, nullptr, nullptr);
    current = nullptr;
}

void Session::initialise()
{
    const std::string property = std::to_string(tag) + "#0#0#" + std::to_string(settings_.retries) +
                                 "#" + std::to_string(settings_.gap);
    int result = 0;
    library_.intf_initProperty(block_.data(), 0, recipeWords_.data(), &result, property.c_str(),
                               &blockMutex_);
}

LinkRunner& Session::runner()
{
    return runner_;
}

const std::vector<View>& Session::views() const
{
    return views_;
}

std::size_t Session::writesUnderWay() const
{
    return waitingWrites_.size() + handedInWrites_.size();
}

// ---- watching -------------------------------------------------------------------------------

void Session::show(const std::vector<Address>& addresses)
{
    for (const Address& range : addresses) {
        const int step = range.width == Width::doubleWord ? doubleWordLength : 1;
        for (int unit = 0; unit + step <= range.length; unit += step) {
            View view;
            view.address = range;
            view.address.first = range.first + unit;
            view.address.length = step;
            const std::size_t index = views_.size();
            viewsByName_[{range.station, range.regName, view.address.first}].push_back(index);
            const Words words = wordsOf(range.width, view.address.first, step);
            for (int word = words.first; word < words.first + words.count; ++word)
                viewsByWord_[{range.station, areaOf(range.regName), word}].push_back(index);
            views_.push_back(view);
        }
    }
}

void Session::watch(const std::vector<Address>& addresses)
{
    show(addresses);
    QList<KEY_ADDRESS> keys;
    for (const Address& address : addresses)
        for (const Address& piece : watchPieces(address))
            keys.append(keyOf(piece));
    plannedRequests_ = library_.intf_addrMerge(keys);
    requestsThisCycle_ = 0;
    cycleStart_ = Clock::now();
    runner_.wake();
}

void Session::valueChanged(int changedTag, int station, QString& regName, int address)
{
    if (changedTag != tag)
        return; // recipe items and served single reads: the outcome tells the same
    const auto found = current->viewsByName_.find({station, regName.toStdString(), address});
    if (found != current->viewsByName_.end())
        current->changed_.insert(current->changed_.end(), found->second.begin(),
                                 found->second.end());
}

void Session::refreshChanged()
{
    std::vector<std::size_t> changed;
    changed.swap(changed_);
    for (const std::size_t index : changed)
        readView(index);
}

void Session::readView(std::size_t index)
{
    View& view = views_.at(index);
    ValueBytes value{};
    library_.intf_getData(view.address.station, QString::fromStdString(view.address.regName),
                          view.address.first, view.address.length, value.data());
    if (!view.arrived || value == view.value)
        return;
    view.previous = view.value;
    view.value = value;
    ++view.changes;
    if (events_.changed)
        events_.changed(view, index);
}

// The controller has just confirmed the words of this reply.
void Session::refresh(const FRAME_PRO& frame)
{
    const VARIABLE& request = frame.request;
    const std::string area = areaOf(request.regName.toStdString());
    const Clock::time_point now = Clock::now();
    for (int word = request.address; word < request.address + request.length; ++word) {
        const auto found = viewsByWord_.find({request.stationNo, area, word});
        if (found == viewsByWord_.end())
            continue;
        for (const std::size_t index : found->second) {
            View& view = views_.at(index);
            view.refreshed = now;
            if (view.arrived)
                continue;
            // The first value is none that the driver announces: it may be what the cache held.
            library_.intf_getData(view.address.station,
                                  QString::fromStdString(view.address.regName), view.address.first,
                                  view.address.length, view.value.data());
            view.arrived = true;
            if (events_.changed)
                events_.changed(view, index);
        }
    }
}

// ---- outcomes -------------------------------------------------------------------------------

void Session::outcome(const Outcome& event)
{
    const bool preRead =
        isReadFrame(event.frame) && handedInWrites_.count(event.frame.request.kind);
    if (event.result == replyAccepted && isReadFrame(event.frame) && !preRead)
        refresh(event.frame);
    refreshChanged();

    const bool ended =
        event.result == replyAbandoned || (event.result == replyAccepted && !preRead);
    if (event.result == replyAbandoned && events_.abandoned)
        events_.abandoned(event.errorText, event.reason);
    if (!ended)
        return;
    if (recipeRuns_)
        settleRecipe(event);
    else if (event.frame.request.kind == cyclicKind)
        countCycle();
    else
        settleTicket(event);
    // Nothing is on the line now: only here is it certain whose the next frame is.
    nextRecipeRound();
    feed();
}

void Session::countCycle()
{
    if (++requestsThisCycle_ < plannedRequests_)
        return;
    const Clock::time_point now = Clock::now();
    runner_.cycleEnded(std::chrono::duration_cast<Micros>(now - cycleStart_));
    cycleStart_ = now;
    requestsThisCycle_ = 0;
    ++cycles_;
    if (events_.cycleEnded)
        events_.cycleEnded(cycles_);
}

void Session::settleTicket(const Outcome& event)
{
    const int number = event.frame.request.kind;
    const bool accepted = event.result == replyAccepted;
    if (handedInWrites_.erase(number) != 0) {
        if (events_.written)
            events_.written(number, accepted, event.reason);
    } else if (!waitingReads_.empty() && waitingReads_.front().number == number) {
        waitingReads_.pop_front();
        readHandedIn_ = false;
        if (events_.readOnce)
            events_.readOnce(number, accepted, event.reason);
    }
}

// ---- writing and single reads ---------------------------------------------------------------

int Session::write(const Write& piece)
{
    const bool registerBit =
        piece.address.width == Width::bit && areaOf(piece.address.regName) == "R";
    if (piece.address.station == 0 && registerBit)
        throw UsageFailure("a bit of a register cannot be written as a broadcast");
    const int number = nextTicket_++;
    waitingWrites_.push_back({number, piece.address, piece.data});
    feed();
    return number;
}

int Session::readOnce(const Address& words)
{
    const int number = nextTicket_++;
    waitingReads_.push_back({number, words, {}});
    feed();
    return number;
}

void Session::feed()
{
    const bool fedWrites = feedWrites();
    const bool fedRead = feedSingleRead();
    if (!fedWrites && !fedRead)
        return;
    refreshChanged();
    runner_.wake();
}

bool Session::feedWrites()
{
    bool fed = false;
    while (!waitingWrites_.empty() && handedInWrites_.size() < mostHandedIn) {
        Ticket next = waitingWrites_.front();
        const bool equalUnderWay =
            std::any_of(handedInWrites_.begin(), handedInWrites_.end(), [&next](const auto& entry) {
                return entry.second.address == next.address;
            });
        if (equalUnderWay)
            break;
        waitingWrites_.pop_front();
        if (library_.intf_setData(next.address.station,
                                  QString::fromStdString(next.address.regName), next.address.first,
                                  next.address.length, next.data.data(), next.number) == queued) {
            handedInWrites_.emplace(next.number, next);
            fed = true;
        } else {
            refuse(events_.written, next.number);
        }
    }
    return fed;
}

bool Session::feedSingleRead()
{
    while (!waitingReads_.empty() && !readHandedIn_) {
        const Ticket next = waitingReads_.front();
        KEY_ADDRESS key = keyOf(next.address);
        readHandedIn_ = library_.intf_addConditionRead(key, next.number) == queued;
        if (readHandedIn_)
            return true;
        waitingReads_.pop_front();
        refuse(events_.readOnce, next.number);
    }
    return false;
}

// Told later: whoever queued it does not know its number yet.
void Session::refuse(const TicketEvent& event, int number)
{
    if (event)
        QTimer::singleShot(
            0, &later_, [event, number]() { event(number, false, "the driver does not take it"); });
}

// ---- recipes --------------------------------------------------------------------------------

std::vector<std::uint16_t>& Session::recipeBuffer()
{
    return recipeWords_;
}

void Session::transferRecipe(const RecipeLayout& layout, RecipeTransfer transfer)
{
    if (layout.bufferWords > recipeWords_.size())
        throw UsageFailure("the recipe has " + std::to_string(layout.bufferWords) +
                           " words; the buffer holds " + std::to_string(recipeWords_.size()));
    recipeFlag_ = transfer == RecipeTransfer::upload ? uploadFlag : downloadFlag;
    recipeRounds_.assign(layout.rounds.begin(), layout.rounds.end());
    if (recipeRounds_.empty())
        endRecipe(true, std::string()); // nothing to move
    else if (runner_.isIdle())
        nextRecipeRound();
}

// Called only while no frame is under way, so that the frames from here on are the recipe's.
void Session::nextRecipeRound()
{
    if (recipeRuns_ || recipeRounds_.empty())
        return;
    QVector<_RCP_VAR_PRO> records;
    for (const RecipeRecord& place : recipeRounds_.front()) {
        _RCP_VAR_PRO record = _RCP_VAR_PRO();
        record.linkId = tag;
        record.stationNo = place.address.station;
        record.regName = QString::fromStdString(place.address.regName);
        record.address = place.address.first;
        record.length = place.address.length;
        record.bufOffset = place.bufferOffset;
        records.append(record);
    }
    // With the flag set and nothing to move the driver would repeat its last request for ever.
    if (library_.intf_setRcpAddress(records) == 0) {
        endRecipe(false, "the driver took none of the recipe's addresses");
        return;
    }
    QMutexLocker lock(&blockMutex_);
    block_.at(recipeFlag_) = 1;
    recipeRuns_ = true;
    lock.unlock();
    runner_.wake();
}

void Session::settleRecipe(const Outcome& event)
{
    QMutexLocker lock(&blockMutex_);
    const bool ended = block_.at(recipeFlag_) == 0;
    lock.unlock();
    if (!ended)
        return;
    recipeRuns_ = false;
    if (event.result != replyAccepted) {
        endRecipe(false, event.errorText + ": " + event.reason);
        return;
    }
    recipeRounds_.pop_front();
    if (recipeRounds_.empty())
        endRecipe(true, std::string());
}

void Session::endRecipe(bool accepted, const std::string& reason)
{
    recipeRounds_.clear();
    if (events_.recipeEnded)
        events_.recipeEnded(accepted, reason);
}

std::vector<unsigned char> cachedBytes(const Library& library, const Address& address)
{
    std::vector<unsigned char> bytes(
        static_cast<std::size_t>(byteCount(address.width, valueCount(address))));
    library.intf_getData(address.station, QString::fromStdString(address.regName), address.first,
                         address.length, bytes.data());
    return bytes;
}

} // namespace dov417
