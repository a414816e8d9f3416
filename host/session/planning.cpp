#include "session/planning.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <tuple>
#include <utility>

#include "driver/registers.h"
#include "line/crc16.h"
#include "line/failure.h"
#include "line/frame_bytes.h"
#include "session/driver_keys.h"

namespace dov417 {

namespace {

using std::chrono::microseconds;

const int readReplyHead = 3;
// A merged request spans at most this many words, so that no wider hole can be bridged.
const int maxRequest = 128;

// One station's one area.
using RegisterOfStation = std::pair<int, std::string>;

RegisterOfStation registerOfStation(int station, const std::string& regName)
{
    return {station, areaOf(regName)};
}

void configure(const Library& library, int gap)
{
    int result = 0;
    const std::string property = "0#0#0#1#" + std::to_string(gap);
    library.intf_setAddrValueChangeCallBack(nullptr);
    library.intf_initProperty(nullptr, 0, nullptr, &result, property.c_str(), nullptr);
}

QList<KEY_ADDRESS> keysOf(const std::vector<Address>& addresses)
{
    QList<KEY_ADDRESS> keys;
    for (const Address& address : addresses)
        keys.append(keyOf(address));
    return keys;
}

// A good reply to a read, all zero.
QByteArray madeUpReply(const FRAME_PRO& frame)
{
    QByteArray reply(frame.replyLength - crcLength, 0);
    const int values = frame.replyLength - readReplyHead - crcLength;
    reply[0] = static_cast<char>(frame.frame[0]);
    reply[1] = static_cast<char>(frame.frame[1]);
    reply[2] = static_cast<char>(values & 0xFF);
    return withCrc(reply);
}

PlannedRequest plannedRequest(const FRAME_PRO& frame, const SerialFormat& wire,
                              microseconds responseTime)
{
    PlannedRequest request;
    request.station = frame.request.stationNo;
    request.regName = frame.request.regName.toStdString();
    request.address = frame.request.address;
    request.length = frame.request.length;
    request.bytes = QByteArray(reinterpret_cast<const char*>(frame.frame), frame.sendLength);
    request.replyLength = frame.replyLength;
    request.time = std::chrono::round<microseconds>(
        wire.transaction(frame.sendLength, frame.replyLength, responseTime));
    return request;
}

// Which requests read a word.
class Coverage {
public:
    explicit Coverage(const Plan& plan)
    {
        for (const PlannedRequest& request : plan.requests)
            spans_[registerOfStation(request.station, request.regName)].push_back(
                {request.address, request.address + request.length});
    }

    // Is there one request that reads all of these words?
    bool covers(const RegisterOfStation& place, int first, int count) const
    {
        const auto spans = spans_.find(place);
        if (spans == spans_.end())
            return false;
        return std::any_of(spans->second.begin(), spans->second.end(), [=](const auto& span) {
            return span.first <= first && first + count <= span.second;
        });
    }

private:
    std::map<RegisterOfStation, std::vector<std::pair<int, int>>> spans_; // first, behind the last
};

// The next gap at which another plan may come out. Requests stay apart because the hole between
// them is too wide, which a gap as wide as the hole changes, or because together they would be too
// long, which no gap changes. Requests that overlap were moved by the merging, and what kept them
// apart cannot be seen any more: there every gap is tried.
int nextGap(const Plan& plan, int gap)
{
    int next = maxRequest;
    for (std::size_t i = 1; i < plan.requests.size(); ++i) {
        const PlannedRequest& a = plan.requests[i - 1];
        const PlannedRequest& b = plan.requests[i];
        if (a.station != b.station || a.regName != b.regName)
            continue;
        const int hole = b.address - (a.address + a.length);
        if (hole < 0)
            return gap + 1;
        if (hole > gap)
            next = std::min(next, hole);
    }
    return next;
}

bool samePlan(const Plan& a, const Plan& b)
{
    return std::equal(
        a.requests.begin(), a.requests.end(), b.requests.begin(), b.requests.end(),
        [](const PlannedRequest& x, const PlannedRequest& y) { return x.bytes == y.bytes; });
}

// Two addresses may name the same word.
int distinctWords(const std::vector<Stretch>& stretches)
{
    std::set<std::pair<RegisterOfStation, int>> words;
    for (const Stretch& stretch : stretches)
        for (int i = 0; i < stretch.count; ++i)
            words.insert({registerOfStation(stretch.station, stretch.regName), stretch.first + i});
    return static_cast<int>(words.size());
}

} // namespace

int PlannedRequest::coils() const
{
    return bytes.size() > 1 && bytes.at(1) == readCoils ? maxWords() * bitsPerWord : 0;
}

int PlannedRequest::maxWords() const
{
    int words = parts.empty() ? length : 0;
    for (const PlannedPart& part : parts)
        words = std::max(words, part.length);
    return words;
}

bool PlannedRequest::isAboveLimit() const
{
    return coils() > 0 ? coils() > maxCoils : maxWords() > maxWordsOfARead;
}

Planner::Planner(const Library& library, const std::vector<Address>& addresses,
                 const SerialFormat& wire, microseconds responseTime, int maximum,
                 std::map<int, int> ofStations)
    : library_(library), addresses_(addresses), wire_(wire), responseTime_(responseTime),
      maximum_(maximum), ofStations_(std::move(ofStations)), wholeValues_(addresses)
{
}

int Planner::maximumOf(int station) const
{
    const auto own = ofStations_.find(station);
    return own == ofStations_.end() ? maximum_ : own->second;
}

void Planner::cut(PlannedRequest& request) const
{
    const int maximum = maximumOf(request.station);
    if (request.length <= maximum)
        return;
    const MayCut mayCut = [this, &request](int word) {
        return !wholeValues_.goOn(request.station, request.regName, request.address + word);
    };
    int first = 0;
    for (const int words : partLengths(request.length, maximum, mayCut)) {
        PlannedPart part;
        part.address = request.address + first;
        part.length = words;
        part.bytes = partOf(request.bytes, first, words);
        part.replyLength = partReplyLength(request.bytes, words);
        part.time = std::chrono::round<microseconds>(wire_.transaction(
            static_cast<int>(part.bytes.size()), part.replyLength, responseTime_));
        request.parts.push_back(part);
        first += words;
    }
    if (!request.parts.empty())
        request.time = std::accumulate(
            request.parts.begin(), request.parts.end(), microseconds(0),
            [](microseconds sum, const PlannedPart& part) { return sum + part.time; });
}

Plan Planner::plan(int gap) const
{
    const DriverClaim claim(library_);
    configure(library_, gap);
    QList<KEY_ADDRESS> keys = keysOf(addresses_);
    const int requests = library_.intf_addrMerge(keys);
    Plan plan;
    for (int i = 0; i < requests; ++i) {
        FRAME_PRO frame = FRAME_PRO();
        if (library_.intf_getSendFrame(&frame) != 1)
            throw Failure("the library plans " + std::to_string(requests) +
                          " requests and frames only " + std::to_string(i));
        plan.requests.push_back(plannedRequest(frame, wire_, responseTime_));
        cut(plan.requests.back());
        plan.cycle += plan.requests.back().time;
        QByteArray reply = madeUpReply(frame);
        QString text;
        if (library_.intf_dealRcvFrame(&reply, &text) != replyAccepted)
            throw Failure("the library does not accept a good reply to " + text.toStdString());
    }
    configure(library_, gap);
    return plan;
}

std::vector<GapOutcome> Planner::outcomes() const
{
    std::vector<GapOutcome> outcomes;
    Plan before;
    for (int gap = 0; gap < maxRequest;) {
        const Plan now = plan(gap);
        if (outcomes.empty() || !samePlan(before, now)) {
            GapOutcome outcome;
            outcome.firstGap = gap;
            outcome.requests = static_cast<int>(now.requests.size());
            outcome.aboveLimit = static_cast<int>(std::count_if(
                now.requests.begin(), now.requests.end(),
                [](const PlannedRequest& request) { return request.isAboveLimit(); }));
            outcome.uncoveredWords = distinctWords(uncovered(now));
            outcome.cycle = now.cycle;
            if (!outcomes.empty())
                outcomes.back().lastGap = gap - 1;
            outcome.lastGap = -1;
            outcomes.push_back(outcome);
        }
        gap = nextGap(now, gap);
        before = now;
    }
    return outcomes;
}

std::vector<Stretch> Planner::uncovered(const Plan& plan) const
{
    const Coverage coverage(plan);
    std::vector<Stretch> missing;
    for (const Address& address : addresses_) {
        const RegisterOfStation place = registerOfStation(address.station, address.regName);
        const Words words = wordsOf(address.width, address.first, address.length);
        bool open = false;
        for (int word = words.first; word < words.first + words.count; ++word) {
            const bool covered = coverage.covers(place, word, 1);
            if (!covered && !open)
                missing.push_back({address.station, address.regName, word, 0});
            if (!covered)
                ++missing.back().count;
            open = !covered;
        }
    }
    return missing;
}

std::vector<Stretch> Planner::divided(const Plan& plan) const
{
    const Coverage coverage(plan);
    std::vector<Stretch> values;
    for (const Address& address : addresses_) {
        const int units = unitsOf(address);
        if (units == 1)
            continue;
        const RegisterOfStation place = registerOfStation(address.station, address.regName);
        for (int word = address.first; word < address.first + address.length; word += units) {
            bool isRead = true;
            for (int i = 0; i < units; ++i)
                isRead = isRead && coverage.covers(place, word + i, 1);
            if (isRead && !coverage.covers(place, word, units))
                values.push_back({address.station, address.regName, word, units});
        }
    }
    return values;
}

int bestOutcome(const std::vector<GapOutcome>& outcomes)
{
    const auto best = std::min_element(
        outcomes.begin(), outcomes.end(), [](const GapOutcome& a, const GapOutcome& b) {
            return std::tie(a.uncoveredWords, a.cycle) < std::tie(b.uncoveredWords, b.cycle);
        });
    return best == outcomes.end() ? -1 : static_cast<int>(best - outcomes.begin());
}

} // namespace dov417
