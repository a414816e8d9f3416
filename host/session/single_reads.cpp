#include "session/single_reads.h"

#include <QTimer>
#include <map>
#include <memory>
#include <tuple>
#include <utility>

namespace dov417 {

const char* const changedMeanwhile = "the line or its settings were changed meanwhile";

namespace {

struct Reads {
    int generation = 0;
    int doubts = 0;
    std::size_t underWay = 0;
    ReadProblems problems;
    std::function<void(const ReadProblems&)> done;
};

// Pieces in the order in which they are first needed, each with the addresses that need it.
std::vector<std::pair<Address, std::vector<std::size_t>>>
piecesOf(const std::vector<Address>& addresses, int gap)
{
    using Place = std::tuple<int, std::string, int, int>;
    std::map<Place, std::size_t> places;
    std::vector<std::pair<Address, std::vector<std::size_t>>> pieces;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        for (const Address& piece : readPieces(addresses.at(i), gap)) {
            const Place place{piece.station, piece.regName, piece.first, piece.length};
            const auto [entry, isNew] = places.try_emplace(place, pieces.size());
            if (isNew)
                pieces.push_back({piece, {}});
            pieces.at(entry->second).second.push_back(i);
        }
    }
    return pieces;
}

} // namespace

void readAll(Session& session, const std::vector<Address>& addresses,
             std::function<void(const ReadProblems&)> done)
{
    const auto pieces = piecesOf(addresses, session.settings().gap);
    const auto reads = std::make_shared<Reads>();
    reads->generation = session.generation();
    reads->doubts = session.doubts();
    reads->underWay = pieces.size();
    reads->problems.resize(addresses.size());
    reads->done = std::move(done);
    if (pieces.empty())
        QTimer::singleShot(0, &session, [reads]() { reads->done(reads->problems); });
    for (const auto& [piece, users] : pieces) {
        session.readOnce(piece, [&session, reads, users = users](const Result& result) {
            if (!result.accepted)
                for (const std::size_t index : users)
                    reads->problems.at(index) = result.reason;
            if (--reads->underWay > 0)
                return;
            for (std::string& problem : reads->problems)
                if (problem.empty() && session.generation() != reads->generation)
                    problem = changedMeanwhile;
                else if (problem.empty() && session.doubts() != reads->doubts)
                    problem = repliesAreDoubtful;
            reads->done(reads->problems);
        });
    }
}

} // namespace dov417
