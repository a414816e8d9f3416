#include "session/recipe_layout.h"

#include <algorithm>
#include <stdexcept>
#include <tuple>

#include "session/pieces.h"

namespace dov417 {

namespace {

auto placeOf(const Address& address)
{
    return std::tie(address.station, address.regName, address.first);
}

std::vector<Address> joinTouching(std::vector<Address> addresses)
{
    std::sort(addresses.begin(), addresses.end(),
              [](const Address& a, const Address& b) { return placeOf(a) < placeOf(b); });
    std::vector<Address> runs;
    for (const Address& address : addresses) {
        const bool touches = !runs.empty() && runs.back().station == address.station &&
                             runs.back().regName == address.regName &&
                             address.first <= runs.back().first + runs.back().length;
        if (!touches) {
            runs.push_back(address);
            continue;
        }
        Address& run = runs.back();
        run.length = std::max(run.length, address.first + address.length - run.first);
    }
    return runs;
}

} // namespace

RecipeLayout layOutRecipe(const std::vector<Address>& addresses)
{
    RecipeLayout layout;
    for (const Address& run : joinTouching(addresses)) {
        // Even pieces, so that no 32-bit value is cut in two.
        const int piece = maxWordsOfAWrite - maxWordsOfAWrite % 2;
        for (int done = 0; done < run.length; done += piece) {
            RecipeRecord record;
            record.address = run;
            record.address.first = run.first + done;
            record.address.length = std::min(piece, run.length - done);
            record.bufferOffset = static_cast<int>(layout.bufferWords);
            layout.bufferWords += static_cast<std::size_t>(record.address.length);
            const std::size_t round = static_cast<std::size_t>(done / piece % 2);
            if (layout.rounds.size() <= round)
                layout.rounds.resize(round + 1);
            layout.rounds.at(round).push_back(record);
        }
    }
    return layout;
}

std::size_t RecipeLayout::offsetOf(const Address& address) const
{
    for (const std::vector<RecipeRecord>& round : rounds)
        for (const RecipeRecord& record : round)
            if (record.address.station == address.station &&
                record.address.regName == address.regName &&
                record.address.first <= address.first &&
                address.first < record.address.first + record.address.length)
                return static_cast<std::size_t>(record.bufferOffset + address.first -
                                                record.address.first);
    throw std::logic_error("address outside its recipe");
}

} // namespace dov417
