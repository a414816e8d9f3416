#include "session/single_reads.h"

#include <QTimer>
#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <tuple>
#include <utility>

namespace dov417 {

const char* const changedMeanwhile = "the line or its settings were changed meanwhile";

namespace {

struct Reads {
    int generation = 0;
    int doubts = 0;
    std::size_t underWay = 0;
    std::vector<Address> addresses;
    ReadResults results;
    std::function<void(const ReadResults&)> done;
};

// Pieces in the order in which they are first needed, those of the widest values last, each with
// the addresses that need it.
std::vector<std::pair<Address, std::vector<std::size_t>>>
piecesOf(const std::vector<Address>& addresses, int gap)
{
    using PieceKey = std::tuple<int, std::string, int, int, int>;
    std::map<PieceKey, std::size_t> places;
    std::vector<std::pair<Address, std::vector<std::size_t>>> pieces;
    std::vector<std::size_t> order(addresses.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&addresses](std::size_t a, std::size_t b) {
        return unitsOf(addresses.at(a)) < unitsOf(addresses.at(b));
    });
    for (const std::size_t i : order) {
        for (const Address& piece : readPieces(addresses.at(i), gap)) {
            const PieceKey place{piece.station, piece.regName, piece.first, piece.length,
                                 unitsOf(addresses.at(i))};
            const auto [entry, isNew] = places.try_emplace(place, pieces.size());
            if (isNew)
                pieces.push_back({piece, {}});
            pieces.at(entry->second).second.push_back(i);
        }
    }
    return pieces;
}

// Does a value of so many words from `first` on overlap `with` without lying inside one of its
// values?
bool isAcross(int first, int units, const Address& with)
{
    const int begin = first - with.first;
    const int end = begin + units;
    if (end <= 0 || begin >= with.length)
        return false;
    return begin < 0 || end > with.length || begin / unitsOf(with) != (end - 1) / unitsOf(with);
}

bool isTornBy(const Address& values, const Address& with)
{
    const int units = unitsOf(values);
    if (units > unitsOf(with) || values.station != with.station ||
        areaOf(values.regName) != areaOf(with.regName))
        return false;
    for (int unit = 0; unit < values.length; unit += units)
        if (isAcross(values.first + unit, units, with))
            return true;
    return false;
}

// A value of several words is to be of one reply. The widest are read last, so that of values
// within one of them nothing is read after it; what lies across the end of one is not known.
void markTorn(const std::vector<Address>& addresses, ReadResults& results)
{
    std::vector<std::size_t> wide;
    for (std::size_t i = 0; i < addresses.size(); ++i)
        if (unitsOf(addresses.at(i)) > 1)
            wide.push_back(i);
    for (const std::size_t i : wide)
        for (const std::size_t other : wide)
            if (results.at(i).accepted && isTornBy(addresses.at(i), addresses.at(other)))
                results.at(i) =
                    Result::refused("its words belong to two values of others: read it alone");
}

} // namespace

void readAll(Session& session, const std::vector<Address>& addresses,
             std::function<void(const ReadResults&)> done)
{
    const auto pieces = piecesOf(addresses, session.settings().gap);
    const auto reads = std::make_shared<Reads>();
    reads->generation = session.generation();
    reads->doubts = session.doubts();
    reads->underWay = pieces.size();
    reads->addresses = addresses;
    reads->results.resize(addresses.size());
    reads->done = std::move(done);
    if (pieces.empty())
        QTimer::singleShot(0, &session, [reads]() { reads->done(reads->results); });
    for (const auto& [piece, users] : pieces) {
        session.readOnce(piece, [&session, reads, users = users](const Result& result) {
            if (!result.accepted)
                for (const std::size_t index : users)
                    reads->results.at(index) = result;
            if (--reads->underWay > 0)
                return;
            for (Result& each : reads->results)
                if (each.accepted && session.generation() != reads->generation)
                    each = Result::refused(changedMeanwhile);
                else if (each.accepted && session.doubts() != reads->doubts)
                    each = Result::refused(repliesAreDoubtful);
            markTorn(reads->addresses, reads->results);
            reads->done(reads->results);
        });
    }
}

} // namespace dov417
