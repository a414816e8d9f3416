#include "session/single_reads.h"

#include <tuple>
#include <utility>

namespace dov417 {

SingleReads::SingleReads(Session& session, int gap, std::function<void()> done)
    : session_(session), gap_(gap), done_(std::move(done))
{
}

void SingleReads::start(const std::vector<Address>& addresses)
{
    using Place = std::tuple<int, std::string, int, int>;
    std::map<Place, std::pair<Address, std::vector<std::size_t>>> needed;
    std::vector<Place> order;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        for (const Address& piece : readPieces(addresses.at(i), gap_)) {
            const Place place{piece.station, piece.regName, piece.first, piece.length};
            const auto [entry, isNew] = needed.try_emplace(place);
            if (isNew) {
                entry->second.first = piece;
                order.push_back(place);
            }
            entry->second.second.push_back(i);
        }
    }
    problems_.assign(addresses.size(), std::string());
    for (const Place& place : order) {
        const auto& [piece, users] = needed.at(place);
        underWay_.emplace(session_.readOnce(piece), users);
    }
    if (underWay_.empty())
        done_();
}

void SingleReads::settle(int number, bool accepted, const std::string& reason)
{
    const auto found = underWay_.find(number);
    if (found == underWay_.end())
        return;
    if (!accepted)
        for (const std::size_t index : found->second)
            problems_.at(index) = reason;
    underWay_.erase(found);
    if (underWay_.empty())
        done_();
}

const std::string& SingleReads::problem(std::size_t index) const
{
    return problems_.at(index);
}

bool SingleReads::isDone() const
{
    return underWay_.empty();
}

} // namespace dov417
